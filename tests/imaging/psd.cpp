// PSD files of every mode and depth, made byte by byte, and what our own writer makes.
#include <algorithm>
#include <bit>
#include <cmath>

#include <QtTest>

#include "imaging/codec_pages.h"
#include "imaging/codecs/all.h"
#include "imaging/codecs/zlib_data.h"
#include "imaging/convert.h"
#include "imaging/support/exif_maker.h"

using namespace kvn;
using namespace kvn::test;

namespace {

using File = std::vector<std::uint8_t>;

void put(File& out, std::uint64_t value, int size) {
    for (int i = size - 1; i >= 0; --i)
        out.push_back(static_cast<std::uint8_t>(value >> 8 * i));
}

void append(File& out, const File& more) {
    out.insert(out.end(), more.begin(), more.end());
}

File resource(int number, const File& content, bool named = false) {
    File out{'8', 'B', 'I', 'M'};
    put(out, static_cast<std::uint64_t>(number), 2);
    append(out, named ? File{2, 'a', 'b', 0} : File{0, 0});
    put(out, content.size(), 4);
    append(out, content);
    if (content.size() % 2 != 0) out.push_back(0);
    return out;
}

struct PsdBuilder {
    int version = 1, channels = 3, width = 1, height = 1, bits = 8, mode = 3;
    File colors{};
    File resources{};
    File layers{};
    int compression = 0;
    File pixels{};

    File file() const {
        File out{'8', 'B', 'P', 'S'};
        put(out, static_cast<std::uint64_t>(version), 2);
        put(out, 0, 6);
        for (const auto& [value, size] :
             {std::pair{channels, 2}, {height, 4}, {width, 4}, {bits, 2}, {mode, 2}})
            put(out, static_cast<std::uint64_t>(value), size);
        put(out, colors.size(), 4);
        append(out, colors);
        put(out, resources.size(), 4);
        append(out, resources);
        put(out, layers.size(), version == 2 ? 8 : 4);
        append(out, layers);
        put(out, static_cast<std::uint64_t>(compression), 2);
        append(out, pixels);
        return out;
    }
};

Raster decoded(const PsdBuilder& builder) {
    const File file = builder.file();
    const Raster raster = reread(psdCodec(), file).pages.front().raster;
    if (psdCodec().facts(file, {}).front().type != raster.type()) return {};
    return raster;
}

File floats(std::initializer_list<float> values) {
    File out;
    for (const float value : values)
        put(out, std::bit_cast<std::uint32_t>(value), 4);
    return out;
}

// 8-bit samples as deeper ones of the same light.
File deepened(const File& samples, int bits) {
    File out;
    for (const std::uint8_t sample : samples)
        if (bits == 32)
            put(out, std::bit_cast<std::uint32_t>(static_cast<float>(sample) / 255), 4);
        else
            put(out, bits == 16 ? sample * 257u : sample, bits / 8);
    return out;
}

// Rows of `width` samples as their differences; those of floats byte by byte.
File differences(const File& rows, std::size_t width, int bits) {
    const std::size_t bytes = static_cast<std::size_t>(bits) / 8, size = width * bytes;
    File out;
    for (std::size_t row = 0; row < rows.size(); row += size)
        if (bits == 16) {
            int before = 0;
            for (std::size_t i = row; i < row + size; i += 2) {
                const int sample = rows[i] << 8 | rows[i + 1];
                put(out, static_cast<std::uint16_t>(sample - before), 2);
                before = sample;
            }
        } else {
            std::uint8_t before = 0;
            for (std::size_t i = 0; i < size; ++i) {
                const std::uint8_t byte = rows[row + i % width * bytes + i / width];
                out.push_back(static_cast<std::uint8_t>(byte - before));
                before = byte;
            }
        }
    return out;
}

int farthest(const Raster& a, const Raster& b) {
    int most = 0;
    for (int y = 0; y < a.height(); ++y)
        for (int x = 0; x < a.width(); ++x) {
            const Rgba p = a.pixel(x, y), q = b.pixel(x, y);
            most = std::max({most, std::abs(p.r - q.r), std::abs(p.g - q.g), std::abs(p.b - q.b),
                             std::abs(p.a - q.a)});
        }
    return most;
}

// A layer section that names so many layers and has nothing of them.
File layerCount(int count) {
    File out;
    put(out, 2, 4);
    put(out, static_cast<std::uint16_t>(count), 2);
    return out;
}

} // namespace

class PsdTest : public QObject {
    Q_OBJECT
  private slots:
    void roundTrip_data();
    void roundTrip();
    void formsThatThereAreNot();
    void metadata();
    void upright();
    void deepSamples();
    void modes();
    void everyDepthAndPacking();
    void cutZipIsReadAsFarAsItGoes();
    void indexed();
    void alphaRule();
    void oneLayer();
    void packed();
    void largeVariant();
    void missingIsBlackOrClear();
    void refused();
    void damaged();
};

void PsdTest::roundTrip_data() {
    QTest::addColumn<int>("type");
    for (const ImageType type : everyType)
        QTest::addRow("%s", typeName(type)) << static_cast<int>(type);
}

void PsdTest::roundTrip() {
    QFETCH(const int, type);
    Task task;
    // Lines shorter and longer than a packet.
    for (const int width : {1, 9, 127, 128, 129, 611}) {
        const Raster source = patterned(static_cast<ImageType>(type), width, 37);
        const ImageType form =
            source.type() == ImageType::Indexed8Alpha ? ImageType::Rgba32 : source.type();
        const File file = written(psdCodec(), {{source, nullptr, {}}});
        QVERIFY(codecForContent(file, "") == &psdCodec());
        const Raster back = reread(psdCodec(), file).pages.front().raster;
        QCOMPARE(back.type(), form);
        QCOMPARE(psdCodec().facts(file, {}).front().type, form);
        for (int y = 0; y < 37; ++y)
            for (int x = 0; x < width; ++x)
                QVERIFY(back.pixel(x, y) == source.pixel(x, y));
        if (form != ImageType::Bit1) QVERIFY(back.samePixels(convertType(source, form, task)));
    }
    const File flat = written(psdCodec(), {{Raster(ImageType::Rgb24, 1000, 100), nullptr, {}}});
    QVERIFY(flat.size() < 6000);
}

void PsdTest::formsThatThereAreNot() {
    Raster bitmap(ImageType::Bit1, 9, 1);
    bitmap.setPalette(Palette({{255, 0, 0}, {0, 0, 255}}));
    bitmap.setPixel(8, 0, {0, 0, 255});
    const Raster colored =
        reread(psdCodec(), written(psdCodec(), {{bitmap, nullptr, {}}})).pages.front().raster;
    QCOMPARE(colored.type(), ImageType::Indexed8);
    QCOMPARE(colored.pixel(8, 0), (Rgba{0, 0, 255, 255}));
    // One clear colour has a place of its own.
    Raster indexed(ImageType::Indexed8Alpha, 2, 1);
    indexed.setPalette(Palette({{1, 2, 3}, {4, 5, 6, 0}, {7, 8, 9}}));
    QVERIFY(reread(psdCodec(), written(psdCodec(), {{indexed, nullptr, {}}}))
                .pages.front()
                .raster.samePixels(indexed));
    try {
        written(psdCodec(), {{Raster(ImageType::Bit1, 30001, 1), nullptr, {}}});
        QFAIL("a side that the format does not have was written");
    } catch (const RuntimeError& error) {
        QCOMPARE(error.number(), errors::invalidCall);
    }
}

void PsdTest::metadata() {
    Metadata meta;
    meta.xDpi = 300;
    meta.yDpi = 72.5;
    meta.exif = ExifMaker(true).make({{0x0112, 3, 6}}, {{0xa002, 4, 7}}, {});
    meta.xmp = bytesOf("<x/>");
    meta.iptc = iptcRecord(5, "Title");
    meta.icc = Bytes(40);
    std::ranges::copy(bytesOf("RGB "), meta.icc.begin() + 16);
    meta.photoshop = resource(1034, {1, 2, 3}, true); // something of other programs
    append(meta.photoshop, resource(1028, iptcRecord(5, "Old title")));
    append(meta.photoshop, resource(1005, File(16, 9)));
    append(meta.photoshop, resource(1036, File(100)));
    const Page page{patterned(ImageType::Rgb24, 5, 4), std::make_shared<const Metadata>(meta), {}};
    const Metadata back = *reread(psdCodec(), written(psdCodec(), {page})).pages.front().metadata;
    QCOMPARE(back.xDpi, 300.0);
    QCOMPARE(back.yDpi, 72.5);
    QCOMPARE(back.xmp, meta.xmp);
    QCOMPARE(back.iptc, meta.iptc);
    QCOMPARE(back.icc, meta.icc);
    // The picture stands upright and is five pixels wide.
    QCOMPARE(back.exif, ExifMaker(true).make({{0x0112, 3, 1}}, {{0xa002, 4, 5}}, {}));
    // The resolution and the thumbnail of elsewhere are gone, the rest stays in order.
    File kept = resource(1034, {1, 2, 3});
    append(kept, resource(1028, meta.iptc));
    QCOMPARE(back.photoshop, kept);
}

void PsdTest::upright() {
    File size;
    put(size, 100 << 16, 4);
    put(size, 1, 4);
    put(size, 50 << 16, 4);
    put(size, 1, 4);
    PsdBuilder builder{.channels = 1, .width = 2, .height = 1, .mode = 1, .pixels = {10, 20}};
    builder.resources = resource(1005, size);
    append(builder.resources, resource(1058, ExifMaker(false).make({{0x0112, 3, 6}}, {}, {})));
    const Page page = reread(psdCodec(), builder.file()).pages.front();
    QCOMPARE(page.raster.size(), (Size{1, 2}));
    QCOMPARE(allIndices(page.raster), File({10, 20}));
    QCOMPARE(page.metadata->xDpi, 50.0);
    QCOMPARE(psdCodec().facts(builder.file(), {}).front().height, 2);
}

void PsdTest::deepSamples() {
    PsdBuilder builder{.width = 2, .bits = 16};
    builder.pixels = {0xff, 0xff, 0x80, 0x80, 0, 0x7f, 0, 0x81, 0x7f, 0xff, 0, 0};
    QCOMPARE(decoded(builder).pixel(0, 0), (Rgba{255, 0, 127, 255}));
    QCOMPARE(decoded(builder).pixel(1, 0), (Rgba{128, 1, 0, 255}));
    builder.bits = 32;
    builder.pixels = floats({1.0f, 0.5f, -1.0f, 9.0f, std::nanf(""), 0.001f});
    QCOMPARE(decoded(builder).pixel(0, 0), (Rgba{255, 0, 0, 255}));
    QCOMPARE(decoded(builder).pixel(1, 0), (Rgba{128, 255, 0, 255}));
}

void PsdTest::modes() {
    const PsdBuilder bitmap{
        .channels = 1, .width = 9, .bits = 1, .mode = 0, .pixels = {0x80, 0x80}};
    QCOMPARE(decoded(bitmap).pixel(0, 0), (Rgba{0, 0, 0, 255}));
    QCOMPARE(decoded(bitmap).pixel(1, 0), (Rgba{255, 255, 255, 255}));
    // Inks are stored turned round.
    const PsdBuilder cmyk{.channels = 4, .mode = 4, .pixels = {255, 100, 0, 51}};
    QCOMPARE(decoded(cmyk).pixel(0, 0), (Rgba{51, 20, 0, 255}));
    const PsdBuilder duotone{.channels = 1, .mode = 8, .colors = File(500), .pixels = {77}};
    QCOMPARE(decoded(duotone).type(), ImageType::Gray8);
    QCOMPARE(decoded(duotone).pixel(0, 0), (Rgba{77, 77, 77, 255}));
    PsdBuilder multichannel{.channels = 1, .mode = 7, .pixels = {77, 88, 99, 11, 22}};
    QCOMPARE(decoded(multichannel).type(), ImageType::Gray8);
    multichannel.channels = 5;
    QCOMPARE(decoded(multichannel).pixel(0, 0), (Rgba{77, 88, 99, 255}));
    // Neutral, and the red of sRGB (CIE L*a*b* for D50: 54.3, 80.8, 69.9).
    PsdBuilder lab{.mode = 9, .pixels = {255, 128, 128}};
    QCOMPARE(decoded(lab).pixel(0, 0), (Rgba{255, 255, 255, 255}));
    lab.pixels = {138, 209, 198};
    const Rgba red = decoded(lab).pixel(0, 0);
    QVERIFY(red.r > 250 && red.g < 12 && red.b < 12);
}

// The same samples, 8, 16 and 32 bits deep, raw and zipped, give the same picture in every mode.
void PsdTest::everyDepthAndPacking() {
    struct Mode {
        int number, colors;
    };
    for (const auto [mode, colors] : {Mode{1, 1}, Mode{3, 3}, Mode{4, 4}, Mode{8, 1}, Mode{9, 3}})
        for (const int channels : {colors, colors + 1}) {
            PsdBuilder builder{.channels = channels, .width = 5, .height = 3, .mode = mode};
            for (int i = 0; i < channels * 15; ++i)
                builder.pixels.push_back(static_cast<std::uint8_t>(31 * i * i + 7));
            const File samples = builder.pixels;
            const Raster plain = decoded(builder);
            QCOMPARE(hasAlpha(plain.type()), channels > colors);
            for (builder.bits = 8; builder.bits <= 32; builder.bits *= 2)
                for (builder.compression = 0; builder.compression <= 3; ++builder.compression) {
                    if (builder.compression == 1) continue;
                    const File deep = deepened(samples, builder.bits);
                    builder.pixels = builder.compression == 0 ? deep
                                     : builder.compression == 2
                                         ? deflateZlib(deep)
                                         : deflateZlib(differences(deep, 5, builder.bits));
                    const Raster raster = decoded(builder);
                    QCOMPARE(raster.type(), plain.type());
                    // Rounding on the way from L*a*b*.
                    const int tolerance = mode == 9 && builder.bits == 32 ? 1 : 0;
                    QVERIFY2(farthest(raster, plain) <= tolerance,
                             qPrintable(QString("mode %1, %2 bits, compression %3")
                                            .arg(mode)
                                            .arg(builder.bits)
                                            .arg(builder.compression)));
                }
        }
    const PsdBuilder bits{.channels = 1,
                          .width = 9,
                          .bits = 1,
                          .mode = 0,
                          .compression = 2,
                          .pixels = deflateZlib(File{0x80, 0x80})};
    QCOMPARE(decoded(bits).pixel(0, 0), (Rgba{0, 0, 0, 255}));
    QCOMPARE(decoded(bits).pixel(7, 0), (Rgba{255, 255, 255, 255}));
}

void PsdTest::cutZipIsReadAsFarAsItGoes() {
    PsdBuilder builder{
        .channels = 1, .width = 400, .height = 40, .mode = 1, .compression = 3, .pixels = {}};
    File noise;
    std::mt19937 random(3);
    for (int i = 0; i < 400 * 40; ++i)
        noise.push_back(static_cast<std::uint8_t>(random()));
    builder.pixels = deflateZlib(noise);
    builder.pixels.resize(builder.pixels.size() / 2);
    const Picture picture = reread(psdCodec(), builder.file());
    QCOMPARE(picture.warnings.size(), std::size_t{1});
    QCOMPARE(picture.pages.front().raster.pixel(0, 10).r, noise[4000]);
    QCOMPARE(picture.pages.front().raster.pixel(0, 39).r, std::uint8_t{0});
}

void PsdTest::indexed() {
    PsdBuilder builder{.channels = 1, .width = 3, .mode = 2, .colors = File(768)};
    builder.colors[1] = 10;
    builder.colors[257] = 20;
    builder.colors[513] = 30;
    builder.pixels = {1, 2, 200};
    QCOMPARE(decoded(builder).palette().size(), std::size_t{256});
    QCOMPARE(decoded(builder).pixel(0, 0), (Rgba{10, 20, 30, 255}));
    builder.resources = resource(1046, {0, 3});
    append(builder.resources, resource(1047, {0, 2}));
    QCOMPARE(decoded(builder).type(), ImageType::Indexed8Alpha);
    QCOMPARE(decoded(builder).palette().size(), std::size_t{3});
    QCOMPARE(decoded(builder).pixel(1, 0), (Rgba{0, 0, 0, 0}));
    QCOMPARE(decoded(builder).pixel(2, 0), (Rgba{0, 0, 0, 255}));
}

void PsdTest::alphaRule() {
    PsdBuilder builder{.channels = 4, .pixels = {200, 255, 155, 51}};
    QCOMPARE(decoded(builder).pixel(0, 0), (Rgba{200, 255, 155, 51}));
    // With layers and no transparency it is one saved selection, shown likewise.
    builder.layers = layerCount(1);
    QCOMPARE(decoded(builder).pixel(0, 0), (Rgba{200, 255, 155, 51}));
    // Merged transparency: the colours were blended with white.
    builder.layers = layerCount(-1);
    QCOMPARE(decoded(builder).pixel(0, 0), (Rgba{0, 255, 0, 51}));
    builder.pixels = {229, 255, 204, 51};
    QCOMPARE(decoded(builder).pixel(0, 0), (Rgba{125, 255, 0, 51}));
    // Deep pictures say it elsewhere.
    builder.layers = File(8);
    append(builder.layers, {'8', 'B', 'I', 'M', 'M', 't', '1', '6', 0, 0, 0, 0});
    QCOMPARE(decoded(builder).pixel(0, 0), (Rgba{125, 255, 0, 51}));
    builder.layers = File(8);
    append(builder.layers, {'8', 'B', 'I', 'M', 'a', 'b', 'c', 'd', 0, 0, 0, 1, 0, 0, 0, 0});
    append(builder.layers, {'8', 'B', 'I', 'M', 'L', 'r', '1', '6', 0, 0, 0, 2, 0xff, 0xff});
    QCOMPARE(decoded(builder).pixel(0, 0), (Rgba{125, 255, 0, 51}));
    // Several channels are saved selections, unless the first is the transparency.
    builder.layers.clear();
    builder.channels = 5;
    builder.pixels = {200, 255, 155, 51, 1};
    QCOMPARE(decoded(builder).type(), ImageType::Rgb24);
    builder.layers = layerCount(-2);
    QCOMPARE(decoded(builder).type(), ImageType::Rgba32);
    const PsdBuilder grey{.channels = 2, .mode = 1, .pixels = {70, 20}};
    QCOMPARE(decoded(grey).pixel(0, 0), (Rgba{70, 70, 70, 20}));
}

void PsdTest::oneLayer() {
    // The layer has the colours as they are, the merged picture has them blended with white.
    const Raster source = Raster::filled(ImageType::Rgba32, 3, 2, {201, 7, 99, 2});
    File file = written(psdCodec(), {{source, nullptr, {}}});
    QVERIFY(reread(psdCodec(), file).pages.front().raster.samePixels(source));
    QCOMPARE(file.back(), std::uint8_t{2}); // a run of alpha ends the file
    const File normal{'8', 'B', 'I', 'M', 'n', 'o', 'r', 'm', 255, 0, 0};
    const auto blend = std::search(file.begin(), file.end(), normal.begin(), normal.end());
    QVERIFY(blend != file.end());
    // A layer that is not all that is seen does not count: the merged picture does.
    File hidden = file, faint = file, moved = file;
    hidden[static_cast<std::size_t>(blend - file.begin()) + 10] = 2;
    faint[static_cast<std::size_t>(blend - file.begin()) + 8] = 100;
    moved[static_cast<std::size_t>(blend - file.begin()) - 4 * 6 - 2 - 1] = 2;
    for (const File& other : {hidden, faint, moved}) {
        const Rgba seen = reread(psdCodec(), other).pages.front().raster.pixel(2, 1);
        QCOMPARE(seen.a, std::uint8_t{2});
        QVERIFY(seen != source.pixel(2, 1) && seen.g < 70 && seen.r > 130);
    }
}

void PsdTest::packed() {
    PsdBuilder builder{.channels = 1, .width = 5, .height = 2, .mode = 1, .compression = 1};
    // A literal and a run with a filler between; a run beyond the line.
    builder.pixels = {0, 6, 0, 2, 1, 1, 2, 128, 0xfe, 3, 0x90, 9};
    QCOMPARE(allIndices(decoded(builder)), File({1, 2, 3, 3, 3, 9, 9, 9, 9, 9}));
}

void PsdTest::largeVariant() {
    PsdBuilder builder{.version = 2, .channels = 4, .width = 2, .compression = 1};
    builder.layers = {0, 0, 0, 0, 0, 0, 0, 2, 0xff, 0xff};
    builder.pixels = {0, 0, 0, 2, 0,    0,   0,    2,   0,    0,   0,    2,
                      0, 0, 0, 2, 0xff, 200, 0xff, 255, 0xff, 155, 0xff, 51};
    QCOMPARE(decoded(builder).pixel(1, 0), (Rgba{0, 255, 0, 51}));
}

void PsdTest::missingIsBlackOrClear() {
    PsdBuilder builder{.channels = 4, .width = 2, .height = 2, .pixels = {1, 2, 3, 4, 5, 6, 7}};
    const Picture picture = reread(psdCodec(), builder.file());
    QCOMPARE(picture.warnings.size(), std::size_t{1});
    QCOMPARE(picture.pages.front().raster.pixel(0, 1), (Rgba{3, 7, 0, 0}));
    const PsdBuilder bitmap{
        .channels = 1, .width = 8, .height = 2, .bits = 1, .mode = 0, .pixels = {0}};
    QCOMPARE(decoded(bitmap).pixel(0, 0), (Rgba{255, 255, 255, 255}));
    QCOMPARE(decoded(bitmap).pixel(0, 1), (Rgba{0, 0, 0, 255}));
    // Rows whose lengths lead out of the file.
    PsdBuilder runs{.channels = 1, .width = 2, .height = 2, .mode = 1, .compression = 1};
    runs.pixels = {0, 2, 0xff, 0xff, 0xff, 9};
    QCOMPARE(allIndices(decoded(runs)), File({9, 9, 0, 0}));
}

void PsdTest::refused() {
    const auto error = [](const PsdBuilder& builder) {
        return errorOf(psdCodec(), builder.file());
    };
    QCOMPARE(error({.version = 3}), errors::invalidPicture);
    QCOMPARE(error({.width = 0}), errors::invalidPicture);
    QCOMPARE(error({.channels = 2}), errors::invalidPicture);
    QCOMPARE(error({.mode = 6}), errors::invalidPicture);
    QCOMPARE(error({.bits = 12}), errors::invalidPicture);
    QCOMPARE(error({.channels = 1, .mode = 2}), errors::invalidPicture); // no palette
    QCOMPARE(error({.compression = 7}), errors::invalidPicture);
    QCOMPARE(error({.width = 300000, .height = 300000}), errors::outOfMemory);
    QCOMPARE(error({.width = 20000, .height = 20000}), errors::invalidPicture);
}

void PsdTest::damaged() {
    for (const ImageType type :
         {ImageType::Bit1, ImageType::Indexed8, ImageType::GrayAlpha16, ImageType::Rgba32})
        readDamaged(psdCodec(), written(psdCodec(), {{patterned(type, 23, 9), nullptr, {}}}));
}

QTEST_GUILESS_MAIN(PsdTest)
#include "psd.moc"
