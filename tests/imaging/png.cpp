// PNG files, held against libpng in both directions.
#include <QtTest>

#include <png.h>

#include "imaging/codec_pages.h"
#include "imaging/codecs/all.h"
#include "imaging/codecs/png_chunks.h"
#include "imaging/support/exif_maker.h"

using namespace kvn;
using namespace kvn::test;
using namespace std::string_view_literals;

namespace {

using File = std::vector<std::uint8_t>;

// What libpng makes of a file, as red, green, blue and alpha.
std::vector<std::uint8_t> byLibrary(const File& file) {
    png_image image{};
    image.version = PNG_IMAGE_VERSION;
    if (!png_image_begin_read_from_memory(&image, file.data(), file.size())) return {};
    image.format = PNG_FORMAT_RGBA;
    std::vector<std::uint8_t> pixels(PNG_IMAGE_SIZE(image));
    if (!png_image_finish_read(&image, nullptr, pixels.data(), 0, nullptr)) return {};
    return pixels;
}

std::vector<std::uint8_t> allPixels(const Raster& raster) {
    std::vector<std::uint8_t> pixels;
    for (int y = 0; y < raster.height(); ++y)
        for (int x = 0; x < raster.width(); ++x) {
            const Rgba c = raster.pixel(x, y);
            pixels.insert(pixels.end(), {c.r, c.g, c.b, c.a});
        }
    return pixels;
}

// A file of random samples written by libpng.
struct Stored {
    int color = 0;
    int depth = 8;
    bool interlaced = false;
    bool transparent = false;
    int width = 37;
    int height = 23;
    std::vector<std::vector<std::uint8_t>> rows{};

    int channels() const { return color == 2 ? 3 : color == 4 ? 2 : color == 6 ? 4 : 1; }
    int sample(int x, int y, int channel) const {
        const int index = x * channels() + channel;
        const auto& row = rows[static_cast<std::size_t>(y)];
        if (depth == 16) return row[2 * index] << 8 | row[2 * index + 1];
        const int bit = index * depth;
        return row[bit / 8] >> (8 - depth - bit % 8) & ((1 << depth) - 1);
    }
};

void append(png_structp png, png_bytep data, std::size_t size) {
    auto* file = static_cast<File*>(png_get_io_ptr(png));
    file->insert(file->end(), data, data + size);
}

File stored(Stored& picture) {
    std::mt19937 random(11);
    File file;
    png_structp png = png_create_write_struct(PNG_LIBPNG_VER_STRING, nullptr, nullptr, nullptr);
    png_infop info = png_create_info_struct(png);
    png_set_write_fn(png, &file, append, [](png_structp) {});
    png_set_IHDR(png, info, picture.width, picture.height, picture.depth, picture.color,
                 picture.interlaced ? PNG_INTERLACE_ADAM7 : PNG_INTERLACE_NONE, 0, 0);
    if (picture.color == 3) {
        std::vector<png_color> colors(static_cast<std::size_t>(1 << picture.depth));
        for (std::size_t i = 0; i < colors.size(); ++i)
            colors[i] = {static_cast<png_byte>(200 - i / 2), static_cast<png_byte>(i * 37), 9};
        png_set_PLTE(png, info, colors.data(), static_cast<int>(colors.size()));
    }
    const std::size_t rowBytes =
        static_cast<std::size_t>(picture.width * picture.channels() * picture.depth + 7) / 8;
    picture.rows.assign(static_cast<std::size_t>(picture.height), {});
    for (auto& row : picture.rows)
        for (std::size_t i = 0; i < rowBytes; ++i)
            // Few different values, so that the transparent colour occurs.
            row.push_back(static_cast<std::uint8_t>(random() % 3 * 85));
    if (picture.transparent) {
        png_byte alphas[] = {0, 128};
        png_color_16 key{};
        key.gray = key.red = static_cast<png_uint_16>(picture.sample(5, 5, 0));
        key.green = static_cast<png_uint_16>(picture.color == 2 ? picture.sample(5, 5, 1) : 0);
        key.blue = static_cast<png_uint_16>(picture.color == 2 ? picture.sample(5, 5, 2) : 0);
        png_set_tRNS(png, info, alphas, 2, &key);
    }
    std::vector<png_bytep> rows;
    for (auto& row : picture.rows)
        rows.push_back(row.data());
    png_set_rows(png, info, rows.data());
    png_write_png(png, info, PNG_TRANSFORM_IDENTITY, nullptr);
    png_destroy_write_struct(&png, &info);
    return file;
}

File withChunk(std::string_view name, const File& data, const File& file) {
    constexpr std::ptrdiff_t behindHeader = 33;
    File result(file.begin(), file.begin() + behindHeader);
    appendPngChunk(result, name, data);
    result.insert(result.end(), file.begin() + behindHeader, file.end());
    return result;
}

} // namespace

class PngTest : public QObject {
    Q_OBJECT

  private slots:
    void everyTypeComesBackExactly_data() {
        QTest::addColumn<int>("type");
        QTest::addColumn<int>("width");
        QTest::addColumn<int>("height");
        for (const ImageType type : everyType)
            for (const auto& [width, height] : {std::pair{1, 1}, {7, 5}, {257, 129}, {901, 800}})
                QTest::addRow("%s %dx%d", typeName(type), width, height)
                    << static_cast<int>(type) << width << height;
    }
    void everyTypeComesBackExactly() {
        QFETCH(int, type);
        QFETCH(int, width);
        QFETCH(int, height);
        const Raster raster = patterned(static_cast<ImageType>(type), width, height);
        const File file = written(pngCodec(), {{raster, nullptr, {}}});
        const Picture picture = reread(pngCodec(), file);
        QVERIFY(picture.warnings.empty());
        QVERIFY(picture.pages.front().raster.samePixels(raster));
        QCOMPARE(byLibrary(file), allPixels(raster));
        const PageFacts facts = pngCodec().facts(file, {}).front();
        QCOMPARE(facts.type, raster.type());
        QCOMPARE(facts.width, width);
    }

    void oddPalettesComeBackExactly() {
        Raster bits = patterned(ImageType::Bit1, 19, 4);
        bits.setPalette(Palette({{255, 255, 255}, {0, 0, 0}})); // white is 0, as in faxes
        Raster opaque = patterned(ImageType::Indexed8Alpha, 9, 9);
        for (int i = 0; i < 201; ++i)
            opaque.paletteForEdit().set(static_cast<std::size_t>(i),
                                        {1, 2, static_cast<std::uint8_t>(i), 255});
        Raster two = Raster(ImageType::Indexed8, 3, 3);
        two.setPalette(Palette({{9, 9, 9}, {8, 8, 8}}));
        for (const Raster& raster : {bits, opaque, two})
            QVERIFY(reread(pngCodec(), written(pngCodec(), {{raster, nullptr, {}}}))
                        .pages.front()
                        .raster.samePixels(raster));
        // Pixels past the end of the palette are black everywhere, also for other readers.
        two.edit().row(1)[1] = 200;
        const File file = written(pngCodec(), {{two, nullptr, {}}});
        QCOMPARE(byLibrary(file), allPixels(two));
    }

    void everyStoredFormIsRead_data() {
        QTest::addColumn<int>("color");
        QTest::addColumn<int>("depth");
        QTest::addColumn<bool>("interlaced");
        QTest::addColumn<bool>("transparent");
        for (const auto& [color, deepest] : {std::pair{0, 16}, {2, 16}, {3, 8}, {4, 16}, {6, 16}})
            for (int depth = color == 0 || color == 3 ? 1 : 8; depth <= deepest; depth *= 2)
                for (const bool interlaced : {false, true})
                    for (const bool transparent : {false, true})
                        if (!transparent || color < 4)
                            QTest::addRow("colour %d, %d bits%s%s", color, depth,
                                          interlaced ? ", interlaced" : "",
                                          transparent ? ", transparent" : "")
                                << color << depth << interlaced << transparent;
    }
    void everyStoredFormIsRead() {
        QFETCH(int, color);
        QFETCH(int, depth);
        Stored picture{.color = color, .depth = depth};
        QFETCH(bool, interlaced);
        QFETCH(bool, transparent);
        picture.interlaced = interlaced;
        picture.transparent = transparent;
        const File file = stored(picture);
        const Picture read = reread(pngCodec(), file);
        QVERIFY(read.warnings.empty());
        const Raster& raster = read.pages.front().raster;
        QCOMPARE(pngCodec().facts(file, {}).front().type, raster.type());
        if (color == 3) {
            QCOMPARE(raster.palette().size(), std::size_t{1} << depth);
            QCOMPARE(byLibrary(file), allPixels(raster));
            return;
        }
        const double most = (1 << depth) - 1;
        const auto scaled = [&](int x, int y, int channel) {
            return static_cast<int>(std::lround(picture.sample(x, y, channel) * 255 / most));
        };
        int clear = 0;
        for (int y = 0; y < picture.height; ++y)
            for (int x = 0; x < picture.width; ++x) {
                const Rgba c = raster.pixel(x, y);
                QCOMPARE(int{c.r}, scaled(x, y, 0));
                if (color == 2 || color == 6) QCOMPARE(int{c.b}, scaled(x, y, 2));
                if (color >= 4) QCOMPARE(int{c.a}, scaled(x, y, picture.channels() - 1));
                clear += c.a == 0;
            }
        if (transparent) QVERIFY(clear > 0 && clear < picture.width * picture.height);
    }

    void metadataIsCarried() {
        Metadata meta;
        meta.exif = ExifMaker(true).make({{0x0112, 3, 1}}, {{0xa002, 4, 7}, {0xa003, 3, 5}}, {});
        meta.xmp = bytesOf("<x:xmpmeta>\xc3\xa4</x:xmpmeta>");
        meta.icc = Bytes(5000, 7);
        std::copy_n("RGB ", 4, meta.icc.begin() + 16);
        meta.photoshop = bytesOf("8BIM\x04\x04\0\0\0\0\0\x08\x1c\x02\x05\0\x03"
                                 "abc"sv);
        meta.iptc = iptcRecord(5, "abc");
        meta.comment = "a comment, \xc3\xbc"
                       "ber alles";
        meta.text = {{"Title", "plain"}, {"Author", "\xce\xa9mega"}, {"Empty", ""}};
        meta.gamma = 0.45455;
        meta.xDpi = 300 / 2.54 * 2.54;
        meta.yDpi = 150;
        meta.pngChunks = {
            {"cHRM", Bytes(32, 1)},
            {"prVt", {1, 2, 3}},
            {"iTXt", bytesOf("Title\0\0\0de\0Titel\0a text that names its language"sv)}};
        const Page page{patterned(ImageType::Rgb24, 7, 5), std::make_shared<Metadata>(meta), {}};
        const File file = written(pngCodec(), {page});
        Metadata read = *reread(pngCodec(), file).pages.front().metadata;
        QVERIFY(std::abs(read.xDpi - 300) < 0.02 && std::abs(read.yDpi - 150) < 0.02);
        read.xDpi = meta.xDpi;
        read.yDpi = meta.yDpi;
        QCOMPARE(read.text, meta.text);
        QVERIFY(read == meta);
        QVERIFY(!byLibrary(file).empty());
    }

    void textsThatOthersWriteAreUnderstood() {
        const File file = written(pngCodec(), {{patterned(ImageType::Gray8, 3, 3), nullptr, {}}});
        const auto metadataWith = [&](std::string_view chunk, std::string_view data) {
            return *reread(pngCodec(), withChunk(chunk, bytesOf(data), file))
                        .pages.front()
                        .metadata;
        };
        QCOMPARE(metadataWith("tEXt", "Name\0\xe4"sv).text.front().second, std::string("\xc3\xa4"));
        const auto exif = metadataWith(
            "tEXt", "Raw profile type exif\0\nexif\n      10\n4578696600004d4d\n002a\n"sv);
        QCOMPARE(exif.exif, (Bytes{'M', 'M', 0, 42}));
        // Damaged ones are left out, and the picture is read all the same.
        for (const std::string_view data : {"no end"sv, "k\0\0xx"sv})
            for (const std::string_view chunk : {"zTXt", "iTXt", "iCCP"})
                QVERIFY(metadataWith(chunk, data).text.empty());
    }

    void picturesAreTurnedUpright() {
        Raster raster(ImageType::Rgb24, 3, 2);
        raster.setPixel(0, 0, {255, 0, 0});
        File file = written(pngCodec(), {{raster, nullptr, {}}});
        file = withChunk("eXIf", ExifMaker(false).make({{0x0112, 3, 6}}, {}, {}), file);
        const Page page = reread(pngCodec(), file).pages.front();
        QCOMPARE(page.raster.size(), (Size{2, 3}));
        QCOMPARE(page.raster.pixel(1, 0), (Rgba{255, 0, 0}));
        QCOMPARE(pngCodec().facts(file, {}).front().width, 2);
        // Written again it says that it stands upright, and reads the same.
        QVERIFY(reread(pngCodec(), written(pngCodec(), {page}))
                    .pages.front()
                    .raster.samePixels(page.raster));
    }

    // Of a file that is cut, the upper rows are right and the others blank.
    void cutFilesGiveTheirUpperRows() {
        for (const ImageType type : {ImageType::Rgb24, ImageType::Rgba32, ImageType::Indexed8}) {
            const Raster raster = patterned(type, 300, 400);
            File file = written(pngCodec(), {{raster, nullptr, {}}});
            file.resize(file.size() / 2);
            const Picture picture = reread(pngCodec(), file);
            QCOMPARE(picture.warnings.size(), std::size_t{1});
            const Raster& read = picture.pages.front().raster;
            QVERIFY(read.cropped({0, 0, 300, 100}).samePixels(raster.cropped({0, 0, 300, 100})));
            const Rgba missing = read.pixel(150, 399);
            QVERIFY(missing.a == 0 || luma(missing.r, missing.g, missing.b) < 60);
        }
    }

    void damagedFilesNeverHarm() {
        for (const bool interlaced : {false, true}) {
            Stored picture{.color = 3, .depth = 4, .interlaced = interlaced, .transparent = true};
            readDamaged(pngCodec(), stored(picture));
        }
        Metadata meta;
        meta.exif = ExifMaker(true).make({{0x0112, 3, 8}}, {}, {});
        meta.text = {{"a", "b"}};
        meta.icc = Bytes(40, 1);
        const Page page{patterned(ImageType::Rgba32, 9, 9), std::make_shared<Metadata>(meta), {}};
        readDamaged(pngCodec(), written(pngCodec(), {page}));
    }

    void claimsWithoutPixelsAreRefused() {
        const auto headed = [](std::uint32_t width, std::uint32_t height) {
            File file(pngSignature.begin(), pngSignature.end());
            File header;
            for (const std::uint32_t side : {width, height})
                for (int shift = 24; shift >= 0; shift -= 8)
                    header.push_back(static_cast<std::uint8_t>(side >> shift));
            header.insert(header.end(), {8, 2, 0, 0, 0});
            appendPngChunk(file, "IHDR", header);
            appendPngChunk(file, "IDAT", File(20, 0));
            appendPngChunk(file, "IEND", {});
            return file;
        };
        QCOMPARE(errorOf(pngCodec(), headed(2'000'000'000, 2'000'000'000)), errors::outOfMemory);
        QCOMPARE(errorOf(pngCodec(), headed(20'000, 20'000)), errors::invalidPicture);
        QCOMPARE(errorOf(pngCodec(), headed(0, 5)), errors::invalidPicture);
        QCOMPARE(errorOf(pngCodec(), headed(0xffffffff, 1)), errors::invalidPicture);
        QCOMPARE(errorOf(pngCodec(), headed(100, 100), {.pixelBytes = 29'999}),
                 errors::outOfMemory);
    }

    void stopsWhenTold() {
        const std::vector<Page> pages{{patterned(ImageType::Rgb24, 600, 600), nullptr, {}}};
        const File file = written(pngCodec(), pages);
        Task stopped([](double) { return false; });
        QVERIFY_EXCEPTION_THROWN(pngCodec().read(file, {}, stopped), Cancelled);
        MemorySink sink;
        Task stopped2([](double) { return false; });
        QVERIFY_EXCEPTION_THROWN(pngCodec().write(pages, {}, sink, stopped2), Cancelled);
    }
};

QTEST_GUILESS_MAIN(PngTest)
#include "png.moc"
