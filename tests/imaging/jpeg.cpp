// JPEG files, held against libjpeg-turbo's own calls.
#include <QtTest>

#include <cmath>
#include <cstdio>

#include <jpeglib.h>

#include "imaging/codec_pages.h"
#include "imaging/codecs/all.h"
#include "imaging/codecs/jpeg_segments.h"
#include "imaging/convert.h"
#include "imaging/support/exif_maker.h"

using namespace kvn;
using namespace kvn::test;

namespace {

using File = std::vector<std::uint8_t>;

struct LibraryFile {
    J_COLOR_SPACE space = JCS_RGB;
    int channels = 3;
    int quality = 75;
    int restartRows = 0;
    bool progressive = false;
    int across = 2; // pixels that share a colour sample
    int down = 2;
};

// A file of `pixels` written by the library in one go.
File byLibrary(const LibraryFile& form, int width, int height,
               const std::vector<std::uint8_t>& pixels) {
    jpeg_compress_struct info{};
    jpeg_error_mgr errors{};
    info.err = jpeg_std_error(&errors);
    jpeg_create_compress(&info);
    unsigned char* data = nullptr;
    unsigned long size = 0;
    jpeg_mem_dest(&info, &data, &size);
    info.image_width = static_cast<JDIMENSION>(width);
    info.image_height = static_cast<JDIMENSION>(height);
    info.input_components = form.channels;
    info.in_color_space = form.space;
    jpeg_set_defaults(&info);
    jpeg_set_quality(&info, form.quality, TRUE);
    info.restart_in_rows = form.restartRows;
    info.comp_info[0].h_samp_factor = form.channels == 3 ? form.across : 1;
    info.comp_info[0].v_samp_factor = form.channels == 3 ? form.down : 1;
    if (form.progressive) jpeg_simple_progression(&info);
    jpeg_start_compress(&info, TRUE);
    for (int y = 0; y < height; ++y) {
        auto* row = const_cast<JSAMPROW>(pixels.data() +
                                         static_cast<std::size_t>(y * width * form.channels));
        jpeg_write_scanlines(&info, &row, 1);
    }
    jpeg_finish_compress(&info);
    jpeg_destroy_compress(&info);
    const File file(data, data + size);
    std::free(data);
    return file;
}

std::vector<std::uint8_t> decodedByLibrary(const File& file) {
    jpeg_decompress_struct info{};
    jpeg_error_mgr errors{};
    info.err = jpeg_std_error(&errors);
    jpeg_create_decompress(&info);
    jpeg_mem_src(&info, file.data(), static_cast<unsigned long>(file.size()));
    jpeg_read_header(&info, TRUE);
    jpeg_start_decompress(&info);
    const std::size_t row = info.output_width * static_cast<std::size_t>(info.output_components);
    std::vector<std::uint8_t> pixels(row * info.output_height);
    while (info.output_scanline < info.output_height) {
        JSAMPROW to = pixels.data() + row * info.output_scanline;
        jpeg_read_scanlines(&info, &to, 1);
    }
    jpeg_finish_decompress(&info);
    jpeg_destroy_decompress(&info);
    return pixels;
}

std::vector<std::uint8_t> rgbOf(const Raster& raster) {
    std::vector<std::uint8_t> pixels;
    for (int y = 0; y < raster.height(); ++y)
        pixels.insert(pixels.end(), raster.view().row(y), raster.view().row(y) + raster.rowBytes());
    return pixels;
}

// A smooth picture, as JPEG likes it, in the given type.
Raster smooth(ImageType type, int width, int height) {
    Raster raster(ImageType::Rgba32, width, height);
    const View view = raster.edit();
    for (int y = 0; y < height; ++y)
        for (int x = 0; x < width; ++x) {
            std::uint8_t* p = view.row(y) + 4 * x;
            p[0] = static_cast<std::uint8_t>(128 + 100 * std::sin(x * 0.05));
            p[1] = static_cast<std::uint8_t>(128 + 100 * std::cos(y * 0.04));
            p[2] = static_cast<std::uint8_t>((x + y) / 4);
            p[3] = 255;
        }
    Task task;
    return convertType(raster, type, task);
}

double meanError(const Raster& a, const Raster& b) {
    double sum = 0;
    for (int y = 0; y < a.height(); ++y)
        for (int x = 0; x < a.width(); ++x) {
            const Rgba p = a.pixel(x, y), q = b.pixel(x, y);
            sum += std::abs(p.r - q.r) + std::abs(p.g - q.g) + std::abs(p.b - q.b);
        }
    return sum / 3 / a.width() / a.height();
}

File written(const Raster& raster, const Metadata& metadata, const WriteOptions& options = {}) {
    return test::written(jpegCodec(), {{raster, std::make_shared<Metadata>(metadata), {}}},
                         options);
}

Metadata metadataOf(const File& file) {
    return *reread(jpegCodec(), file).pages.front().metadata;
}

// Puts a segment behind the start mark.
File withSegment(int marker, const Bytes& data, File file) {
    const std::size_t length = data.size() + 2;
    File segment{0xff, static_cast<std::uint8_t>(marker), static_cast<std::uint8_t>(length >> 8),
                 static_cast<std::uint8_t>(length)};
    segment.insert(segment.end(), data.begin(), data.end());
    file.insert(file.begin() + 2, segment.begin(), segment.end());
    return file;
}

File withOrientation(int orientation, const File& file) {
    Bytes data = bytesOf(std::string_view("Exif\0\0", 6));
    const Bytes exif =
        ExifMaker(orientation % 2 == 0)
            .make({{0x0112, 3, static_cast<std::uint32_t>(orientation)}}, {{0xa002, 3, 9}}, {});
    data.insert(data.end(), exif.begin(), exif.end());
    return withSegment(0xe1, data, file);
}

// Where the two bytes stand, from the end.
std::size_t lastMarker(const File& file, std::uint8_t marker) {
    for (std::size_t at = file.size() - 2; at > 0; --at)
        if (file[at] == 0xff && file[at + 1] == marker) return at;
    return 0;
}

} // namespace

class JpegTest : public QObject {
    Q_OBJECT

  private slots:
    void everyTypeIsWritten_data() {
        QTest::addColumn<int>("type");
        for (const ImageType type : everyType)
            QTest::addRow("%s", typeName(type)) << static_cast<int>(type);
    }
    void everyTypeIsWritten() {
        QFETCH(int, type);
        const Raster raster = smooth(static_cast<ImageType>(type), 203, 101);
        WriteOptions options;
        options.jpegQuality = 97;
        const Raster read = reread(jpegCodec(), written(raster, {}, options)).pages.front().raster;
        const bool isGray = raster.type() == ImageType::Bit1 || raster.type() == ImageType::Gray8 ||
                            raster.type() == ImageType::GrayAlpha16;
        QCOMPARE(read.type(), isGray ? ImageType::Gray8 : ImageType::Rgb24);
        // Dither is what JPEG does worst.
        QVERIFY(meanError(raster, read) < (hasPalette(raster.type()) ? 6.0 : 1.5));
    }

    // Large pictures are coded in bands: the pixels are those of a file coded in one go.
    void bandsDoNotShow_data() {
        QTest::addColumn<int>("width");
        QTest::addColumn<int>("height");
        QTest::addColumn<int>("quality");
        QTest::addRow("halved chroma") << 1301 << 1003 << 75;
        QTest::addRow("full chroma") << 1301 << 1003 << 92;
        QTest::addRow("one block row") << 65000 << 16 << 75;
        QTest::addRow("one column") << 17 << 65500 << 60;
    }
    void bandsDoNotShow() {
        QFETCH(int, width);
        QFETCH(int, height);
        QFETCH(int, quality);
        const Raster raster = patterned(ImageType::Rgb24, width, height);
        WriteOptions options;
        options.jpegQuality = quality;
        const File file = written(raster, {}, options);
        const Picture ours = reread(jpegCodec(), file);
        QVERIFY(ours.warnings.empty());
        const File whole = byLibrary(
            {.quality = quality, .across = quality < 90 ? 2 : 1, .down = quality < 90 ? 2 : 1},
            width, height, rgbOf(raster));
        QVERIFY(
            ours.pages.front().raster.samePixels(reread(jpegCodec(), whole).pages.front().raster));
        QVERIFY(file.size() < whole.size() * 1.001 + 700);
    }

    // Large files are decoded by two threads: the pixels are the library's.
    void partsDoNotShow() {
        const int width = 1205, height = 997;
        const Raster color = patterned(ImageType::Rgb24, width, height);
        const Raster gray = patterned(ImageType::Gray8, width, height);
        for (const int restartRows : {0, 1})
            for (const auto& [across, down] :
                 {std::pair{1, 1}, {2, 1}, {1, 2}, {2, 2}, {4, 1}, {4, 2}, {3, 1}}) {
                const File file =
                    byLibrary({.restartRows = restartRows, .across = across, .down = down}, width,
                              height, rgbOf(color));
                QCOMPARE(rgbOf(reread(jpegCodec(), file).pages.front().raster),
                         decodedByLibrary(file));
            }
        const File file = byLibrary({JCS_GRAYSCALE, 1}, width, height, rgbOf(gray));
        QCOMPARE(rgbOf(reread(jpegCodec(), file).pages.front().raster), decodedByLibrary(file));
        // Damage in either part is found, and what is right is shown.
        for (const double place : {0.3, 0.9}) {
            File damaged = file;
            damaged.resize(static_cast<std::size_t>(static_cast<double>(file.size()) * place));
            const Picture picture = reread(jpegCodec(), damaged);
            QCOMPARE(picture.warnings.size(), std::size_t{1});
            const Raster& read = picture.pages.front().raster;
            QCOMPARE(read.pixel(600, 996), (Rgba{0, 0, 0}));
            const int sound = static_cast<int>(height * place) - 100;
            const auto whole = decodedByLibrary(file);
            QVERIFY(std::equal(read.view().row(sound), read.view().row(sound) + width,
                               whole.begin() + sound * width));
        }
    }

    void optionsAct() {
        const Raster raster = smooth(ImageType::Rgb24, 400, 300);
        const auto with = [&](int quality, int smoothing, bool progressive) {
            WriteOptions options;
            options.jpegQuality = quality;
            options.jpegSmoothing = smoothing;
            options.jpegProgressive = progressive;
            return written(raster, {}, options);
        };
        QVERIFY(with(20, 0, false).size() < with(75, 0, false).size());
        QVERIFY(with(75, 0, false) != with(75, 60, false));
        QCOMPARE(outlineJpeg(with(75, 0, false)).frame->process, 0);
        QCOMPARE(outlineJpeg(with(75, 0, true)).frame->process, 2);
        // Out of range counts as the nearest.
        QCOMPARE(with(-5, -1, false), with(1, 0, false));
        QCOMPARE(with(300, 900, false), with(100, 100, false));
    }

    void markersFollowTheMask() {
        Metadata meta;
        meta.exif = ExifMaker(true).make({{0x0112, 3, 1}}, {}, {});
        meta.xmp = bytesOf("<x/>");
        meta.icc = Bytes(150'000, 3); // three segments
        std::copy_n("RGB ", 4, meta.icc.begin() + 16);
        meta.photoshop = Bytes(80'000, 1); // two
        meta.comment = "kept whatever the mask";
        meta.xDpi = meta.yDpi = 300;
        for (int i = 1; i <= 15; ++i)
            meta.jpegMarkers.push_back({i, Bytes(40, static_cast<std::uint8_t>(i))});
        const Raster raster(ImageType::Rgb24, 9, 9);

        const Metadata all = metadataOf(written(raster, meta));
        QCOMPARE(all.exif, meta.exif);
        QCOMPARE(all.xmp, meta.xmp);
        QCOMPARE(all.icc, meta.icc);
        QCOMPARE(all.photoshop, meta.photoshop);
        QCOMPARE(all.jpegMarkers.size(), meta.jpegMarkers.size() + 1); // and JFIF
        for (int bit = 1; bit <= 14; ++bit) {
            WriteOptions options;
            options.jpegMarkers = 0x3fff & ~(1u << (bit - 1));
            const Metadata cleared = metadataOf(written(raster, meta, options));
            options.jpegMarkers = 1u << (bit - 1);
            const Metadata alone = metadataOf(written(raster, meta, options));
            const auto has = [&](const Metadata& m, int i) {
                return std::ranges::any_of(m.jpegMarkers, [i](auto& marker) {
                    return marker.number == i &&
                           marker.data == Bytes(40, static_cast<std::uint8_t>(i));
                });
            };
            for (int i = 1; i <= 14; ++i) {
                QCOMPARE(has(cleared, i), i != bit);
                QCOMPARE(has(alone, i), i == bit);
            }
            QCOMPARE(alone.exif.empty(), bit != 1);
            QCOMPARE(alone.xmp.empty(), bit != 1);
            QCOMPARE(alone.icc.empty(), bit != 2);
            QCOMPARE(alone.photoshop.empty(), bit != 13);
            QCOMPARE(alone.comment, meta.comment);
            QCOMPARE(alone.xDpi, 300.0);
        }
    }

    void commentsStayAsTheyStood() {
        const Raster raster(ImageType::Gray8, 4, 4);
        std::vector<std::uint8_t> file = written(raster, {});
        const Bytes comments = bytesOf(std::string_view("\xff\xfe\0\4ab\xff\xfe\0\4c\0", 12));
        file.insert(file.begin() + 2, comments.begin(), comments.end());
        Metadata meta = metadataOf(file);
        QCOMPARE(meta.comment, std::string("ab\nc"));
        const auto holds = [&](const Bytes& bytes) {
            const auto made = written(raster, meta);
            return !std::ranges::search(made, bytes).empty();
        };
        QVERIFY(holds(comments));
        meta.comment = "another";
        QVERIFY(!holds({0, 4, 'a', 'b'}) && holds(bytesOf("another")));
    }

    void archivesFindTheirTexts() {
        const auto block = [](std::uint8_t kind, std::string_view content) {
            Bytes bytes = bytesOf(content);
            const auto length = static_cast<std::uint8_t>(content.size() + 10);
            for (const std::uint8_t byte :
                 {0, int{kind}, 0, 0, 0, int{length}, 0xa1, 0xb2, 0xc3, 0xd4})
                bytes.push_back(byte);
            return bytes;
        };
        const Bytes texts = block(1, "texts"), preview = block(4, "preview"),
                    facts = block(2, std::string_view("\0\0\0\4\0\0\0\4 more", 13));
        std::vector<std::uint8_t> file = written(Raster(ImageType::Gray8, 4, 4), {});
        for (const Bytes& part : {texts, preview, facts})
            file.insert(file.end(), part.begin(), part.end());
        const Metadata meta = metadataOf(file);
        const auto behind = [&](int width, std::uint32_t mask) {
            WriteOptions options;
            options.jpegMarkers = mask;
            const auto made = written(Raster(ImageType::Gray8, width, 4), meta, options);
            const auto last = std::ranges::find_end(made, Bytes{0xff, 0xd9});
            return Bytes(last.end(), made.end());
        };
        Bytes both = texts;
        both.insert(both.end(), facts.begin(), facts.end());
        QCOMPARE(behind(4, 0x3fff), both);
        QCOMPARE(behind(5, 0x3fff), texts);
        QCOMPARE(behind(4, 1), facts);
    }

    void iptcMakesItsOwnBlock() {
        Metadata meta;
        meta.iptc = iptcRecord(25, "word");
        QCOMPARE(metadataOf(written(Raster(ImageType::Gray8, 4, 4), meta)).iptc, meta.iptc);
    }

    void resolutionIsKept() {
        const Raster raster(ImageType::Gray8, 4, 4);
        for (const auto& [x, y] :
             {std::pair{72.0, 72.0}, {299.72, 299.72}, {44.0, 300.0}, {0.0, 0.0}}) {
            Metadata meta;
            meta.xDpi = x;
            meta.yDpi = y;
            const Metadata read = metadataOf(written(raster, meta));
            QVERIFY(std::abs(read.xDpi - x) < 1e-6 && std::abs(read.yDpi - y) < 1e-6);
        }
        // A camera file has no JFIF header and shall not get one; one with it keeps it.
        Metadata camera;
        camera.exif = ExifMaker(false).make({{0x0112, 3, 1}}, {}, {});
        QVERIFY(metadataOf(written(raster, camera)).jpegMarkers.empty());
        camera.xDpi = camera.yDpi = 100; // which the EXIF block does not tell
        QCOMPARE(metadataOf(written(raster, camera)).xDpi, 100.0);
    }

    void picturesAreTurnedUpright_data() {
        QTest::addColumn<int>("orientation");
        QTest::addColumn<QSize>("size");
        QTest::addColumn<QPoint>("corner"); // where the dark corner of the stored picture goes
        QTest::addColumn<QPoint>("side");   // and the middle-grey top right one
        QTest::addRow("1") << 1 << QSize(64, 32) << QPoint(0, 0) << QPoint(63, 0);
        QTest::addRow("2") << 2 << QSize(64, 32) << QPoint(63, 0) << QPoint(0, 0);
        QTest::addRow("3") << 3 << QSize(64, 32) << QPoint(63, 31) << QPoint(0, 31);
        QTest::addRow("4") << 4 << QSize(64, 32) << QPoint(0, 31) << QPoint(63, 31);
        QTest::addRow("5") << 5 << QSize(32, 64) << QPoint(0, 0) << QPoint(0, 63);
        QTest::addRow("6") << 6 << QSize(32, 64) << QPoint(31, 0) << QPoint(31, 63);
        QTest::addRow("7") << 7 << QSize(32, 64) << QPoint(31, 63) << QPoint(31, 0);
        QTest::addRow("8") << 8 << QSize(32, 64) << QPoint(0, 63) << QPoint(0, 0);
        QTest::addRow("nonsense") << 99 << QSize(64, 32) << QPoint(0, 0) << QPoint(63, 0);
    }
    void picturesAreTurnedUpright() {
        QFETCH(int, orientation);
        QFETCH(QSize, size);
        QFETCH(QPoint, corner);
        QFETCH(QPoint, side);
        Raster stored = Raster::filled(ImageType::Gray8, 64, 32, {240, 240, 240});
        for (int y = 0; y < 8; ++y)
            for (int x = 0; x < 8; ++x) {
                stored.setPixel(x, y, {0, 0, 0});
                stored.setPixel(56 + x, y, {120, 120, 120});
            }
        const File file = withOrientation(orientation, written(stored, {}));
        const Page page = reread(jpegCodec(), file).pages.front();
        QCOMPARE(page.raster.size(), (Size{size.width(), size.height()}));
        QVERIFY(page.raster.pixel(corner.x(), corner.y()).r < 20);
        QVERIFY(std::abs(page.raster.pixel(side.x(), side.y()).r - 120) < 20);
        QCOMPARE(jpegCodec().facts(file, {}).front().width, size.width());
        // Saved, it says that it stands upright, and its size.
        const File saved = test::written(jpegCodec(), {page});
        QVERIFY(meanError(reread(jpegCodec(), saved).pages.front().raster, page.raster) < 3);
        QCOMPARE(metadataOf(saved).exif,
                 ExifMaker(orientation % 2 == 0)
                     .make({{0x0112, 3, 1}},
                           {{0xa002, 3, static_cast<std::uint32_t>(size.width())}}, {}));
    }

    void inksBecomeLight() {
        // Cyan, magenta, yellow, black; the library marks the file as Adobe's, so stored inverted.
        std::vector<std::uint8_t> pixels;
        for (int i = 0; i < 16 * 16; ++i)
            pixels.insert(pixels.end(), {255, 128, 0, 200});
        const File file = byLibrary({JCS_CMYK, 4, 100}, 16, 16, pixels);
        const Raster read = reread(jpegCodec(), file).pages.front().raster;
        const Rgba color = read.pixel(8, 8);
        QVERIFY(std::abs(color.r - 200) <= 2 && std::abs(color.g - 100) <= 2 && color.b <= 2);
        QCOMPARE(jpegCodec().facts(file, {}).front().fileBits, 32);
    }

    void cutFilesGiveTheirUpperRows() {
        const Raster raster = patterned(ImageType::Rgb24, 400, 400);
        for (const int restartRows : {0, 3}) {
            const File whole = byLibrary({.restartRows = restartRows}, 400, 400, rgbOf(raster));
            const Raster intact = reread(jpegCodec(), whole).pages.front().raster;
            const Picture picture =
                reread(jpegCodec(), File(whole.begin(), whole.begin() + whole.size() / 2));
            QCOMPARE(picture.warnings.size(), std::size_t{1});
            const Raster& read = picture.pages.front().raster;
            QVERIFY(read.cropped({0, 0, 400, 120}).samePixels(intact.cropped({0, 0, 400, 120})));
            for (int y = 300; y < 400; ++y)
                QCOMPARE(read.pixel(200, y), (Rgba{0, 0, 0}));
        }
        // A later scan whose beginning is cut only lacks detail.
        const File scans = byLibrary({.progressive = true}, 400, 400, rgbOf(raster));
        const File scanMark{0xff, 0xda};
        const auto first =
            std::search(scans.begin(), scans.end(), scanMark.begin(), scanMark.end());
        const auto next = std::search(first + 2, scans.end(), scanMark.begin(), scanMark.end());
        const Raster early = reread(jpegCodec(), File(scans.begin(), next)).pages.front().raster;
        for (int bytes = 1; bytes < 9; ++bytes) {
            const Picture picture = reread(jpegCodec(), File(scans.begin(), next + bytes));
            QVERIFY(picture.pages.front().raster.samePixels(early));
            QVERIFY(!picture.warnings.empty());
        }
        // A missing end mark alone costs nothing.
        File whole = byLibrary({}, 400, 400, rgbOf(raster));
        const Raster intact = reread(jpegCodec(), whole).pages.front().raster;
        whole.resize(whole.size() - 2);
        QVERIFY(reread(jpegCodec(), whole).pages.front().raster.samePixels(intact));
    }

    void damagedFilesNeverHarm() {
        const std::vector<std::uint8_t> pixels = rgbOf(patterned(ImageType::Rgb24, 40, 40));
        for (const bool progressive : {false, true})
            readDamaged(jpegCodec(),
                        withOrientation(6, byLibrary({.restartRows = 1, .progressive = progressive},
                                                     40, 40, pixels)),
                        3);
    }

    void whatCannotBeReadIsRefused() {
        const File file = byLibrary({}, 64, 64, std::vector<std::uint8_t>(64 * 64 * 3, 99));
        std::size_t frame = 2;
        while (file[frame] != 0xff || file[frame + 1] != 0xc0)
            ++frame;
        const auto changed = [&](std::size_t at, std::initializer_list<int> bytes) {
            File other = file;
            for (const int byte : bytes)
                other[at++] = static_cast<std::uint8_t>(byte);
            return other;
        };
        QCOMPARE(errorOf(jpegCodec(), changed(frame + 1, {0xc3})), errors::invalidPicture);
        QCOMPARE(errorOf(jpegCodec(), changed(frame + 4, {12})), errors::invalidPicture);
        QCOMPARE(errorOf(jpegCodec(), changed(frame + 5, {0, 0})), errors::invalidPicture);
        // More than the limit; within it, but out of nothing.
        QCOMPARE(errorOf(jpegCodec(), changed(frame + 5, {0xff, 0xdc, 0xff, 0xdc})),
                 errors::outOfMemory);
        QCOMPARE(errorOf(jpegCodec(), changed(frame + 5, {0x4e, 0x20, 0x4e, 0x20})),
                 errors::invalidPicture);
        QCOMPARE(errorOf(jpegCodec(), file, {.pixelBytes = 64 * 64 * 3 - 1}), errors::outOfMemory);
        QCOMPARE(errorOf(jpegCodec(), File(file.begin(), file.begin() + 20)),
                 errors::invalidPicture);
    }

    // Each scan of a progressive file is a pass over the whole picture.
    void endlessScansAreRefused() {
        const std::vector<std::uint8_t> pixels(2000 * 2000, 90);
        File file = byLibrary({JCS_GRAYSCALE, 1, 75, 0, true}, 2000, 2000, pixels);
        const std::size_t scan = lastMarker(file, 0xda);
        const File last(file.begin() + static_cast<std::ptrdiff_t>(scan), file.end() - 2);
        file.resize(file.size() - 2);
        for (int i = 0; i < 3000; ++i)
            file.insert(file.end(), last.begin(), last.end());
        QElapsedTimer timer;
        timer.start();
        QCOMPARE(errorOf(jpegCodec(), file), errors::invalidPicture);
        QVERIFY(timer.elapsed() < 6000); // a second where nothing else runs
    }

    void longSidesAreNotWritten() {
        try {
            written(Raster(ImageType::Gray8, 65501, 1), {});
            QFAIL("written");
        } catch (const RuntimeError& error) {
            QCOMPARE(error.number(), errors::invalidCall);
            QVERIFY(error.description().find("65500") != std::string::npos);
        }
        QCOMPARE(reread(jpegCodec(), written(Raster(ImageType::Gray8, 65500, 1), {}))
                     .pages.front()
                     .raster.width(),
                 65500);
    }

    void stopsWhenTold() {
        const std::vector<Page> pages{{patterned(ImageType::Rgb24, 1200, 1200), nullptr, {}}};
        const File file = test::written(jpegCodec(), pages);
        Task stopped([](double) { return false; });
        QVERIFY_EXCEPTION_THROWN(jpegCodec().read(file, {}, stopped), Cancelled);
        MemorySink sink;
        Task stopped2([](double) { return false; });
        QVERIFY_EXCEPTION_THROWN(jpegCodec().write(pages, {}, sink, stopped2), Cancelled);
    }

    void contentDecidesTheFormat() {
        const File jpeg = written(Raster(ImageType::Gray8, 4, 4), {});
        QCOMPARE(codecForContent(jpeg, "PNG"), &jpegCodec());
        QCOMPARE(codecForContent(File{1, 2, 3}, "jpg"), nullptr);
        QCOMPARE(codecForContent(File{}, "jpg"), nullptr);
        QCOMPARE(codecForExtension("JPeG"), &jpegCodec());
        QCOMPARE(codecForType(FileType::Png), &pngCodec());
        QCOMPARE(codecForExtension("tla"), nullptr);
    }
};

QTEST_GUILESS_MAIN(JpegTest)
#include "jpeg.moc"
