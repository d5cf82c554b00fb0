// PCX files of every depth, made byte by byte, and what our own writer makes.
#include <QtTest>

#include "imaging/codec_pages.h"
#include "imaging/codecs/all.h"
#include "imaging/convert.h"

using namespace kvn;
using namespace kvn::test;

namespace {

using File = std::vector<std::uint8_t>;

struct PcxBuilder {
    int width = 1, height = 1, bits = 8, planes = 1, lineBytes = 2;
    int version = 5, packed = 1;
    File palette{}; // of the header
    File data{};

    File file() const {
        File out(128);
        out[0] = 10;
        out[1] = static_cast<std::uint8_t>(version);
        out[2] = static_cast<std::uint8_t>(packed);
        out[3] = static_cast<std::uint8_t>(bits);
        put(out, 4, 100); // the window need not start at 0
        put(out, 6, 50);
        put(out, 8, 100 + width - 1);
        put(out, 10, 50 + height - 1);
        put(out, 12, 300);
        put(out, 14, 150);
        std::ranges::copy(palette, out.begin() + 16);
        out[65] = static_cast<std::uint8_t>(planes);
        put(out, 66, lineBytes);
        out.insert(out.end(), data.begin(), data.end());
        return out;
    }

  private:
    static void put(File& file, std::size_t at, int value) {
        file[at] = static_cast<std::uint8_t>(value);
        file[at + 1] = static_cast<std::uint8_t>(value >> 8);
    }
};

Raster decoded(const PcxBuilder& builder) {
    return reread(pcxCodec(), builder.file()).pages.front().raster;
}

// The nearest form without alpha.
Raster opaque(const Raster& raster) {
    Task task;
    switch (raster.type()) {
    case ImageType::Indexed8Alpha:
        return convertType(raster, ImageType::Indexed8, task);
    case ImageType::GrayAlpha16:
        return convertType(raster, ImageType::Gray8, task);
    case ImageType::Rgba32:
        return convertType(raster, ImageType::Rgb24, task);
    default:
        return raster;
    }
}

bool sameColors(const Raster& a, const Raster& b) {
    if (a.size() != b.size() || a.type() != b.type()) return false;
    for (int y = 0; y < a.height(); ++y)
        for (int x = 0; x < a.width(); ++x)
            if (a.pixel(x, y) != b.pixel(x, y)) return false;
    return true;
}

} // namespace

class PcxTest : public QObject {
    Q_OBJECT
  private slots:
    void roundTrip_data();
    void roundTrip();
    void longestSides();
    void bitmapsStartDark();
    void planesAndPackedPixels();
    void colorPlanes();
    void palettes();
    void runsCrossLines();
    void largeFiles();
    void missingRowsAreBlack();
    void refused();
    void damaged();
};

void PcxTest::roundTrip_data() {
    QTest::addColumn<int>("type");
    for (const ImageType type : everyType)
        QTest::addRow("%s", typeName(type)) << static_cast<int>(type);
}

void PcxTest::roundTrip() {
    QFETCH(const int, type);
    Metadata meta;
    meta.xDpi = 300;
    meta.yDpi = 72;
    for (const int width : {1, 7, 8, 9, 611}) {
        const Raster source = patterned(static_cast<ImageType>(type), width, 37);
        const File file =
            written(pcxCodec(), {{source, std::make_shared<const Metadata>(meta), {}}});
        QVERIFY(codecForContent(file, "") == &pcxCodec());
        const Page back = reread(pcxCodec(), file).pages.front();
        QVERIFY(sameColors(back.raster, opaque(source)));
        QCOMPARE(back.metadata->xDpi, 300.0);
        QCOMPARE(back.metadata->yDpi, 72.0);
        QCOMPARE(pcxCodec().facts(file, {}).front().type, back.raster.type());
    }
}

void PcxTest::longestSides() {
    // The length of the widest line has just room in its field, and is odd.
    const Raster wide = patterned(ImageType::Gray8, 65535, 2);
    QVERIFY(reread(pcxCodec(), written(pcxCodec(), {{wide, nullptr, {}}}))
                .pages.front()
                .raster.samePixels(wide));
    for (const Raster& raster :
         {Raster(ImageType::Bit1, 65536, 1), Raster(ImageType::Rgb24, 1, 65536)}) {
        try {
            written(pcxCodec(), {{raster, nullptr, {}}});
            QFAIL("a side that the field cannot hold was written");
        } catch (const RuntimeError& error) {
            QCOMPARE(error.number(), errors::invalidCall);
        }
    }
}

void PcxTest::bitmapsStartDark() {
    // Readers that know no palette for one bit show 0 as black.
    Raster white(ImageType::Bit1, 10, 1);
    white.setPalette(Palette({{255, 255, 255}, {0, 0, 0}}));
    white.setPixel(0, 0, {0, 0, 0});
    const File file = written(pcxCodec(), {{white, nullptr, {}}});
    QCOMPARE(file[128], std::uint8_t{0x7f});
    QVERIFY(sameColors(decoded({.width = 10,
                                .bits = 1,
                                .palette = {0, 0, 0, 255, 255, 255},
                                .data = {0x7f, 0xc1, 0xc0}}),
                       reread(pcxCodec(), file).pages.front().raster));
    // An untouched palette does not make a bitmap blue.
    const PcxBuilder blue{.width = 8, .bits = 1, .palette = {0, 0, 0, 0, 0, 0xaa}, .data = {1, 0}};
    QCOMPARE(decoded(blue).pixel(7, 0), (Rgba{255, 255, 255, 255}));
    const PcxBuilder red{.width = 8, .bits = 1, .palette = {0, 0, 0, 200, 0, 0}, .data = {1, 0}};
    QCOMPARE(decoded(red).pixel(7, 0), (Rgba{200, 0, 0, 255}));
}

void PcxTest::planesAndPackedPixels() {
    File colors(48);
    for (std::size_t i = 0; i < colors.size(); ++i)
        colors[i] = static_cast<std::uint8_t>(i + 1);
    PcxBuilder planes{.width = 3, .bits = 1, .planes = 4, .lineBytes = 2, .palette = colors};
    planes.packed = 0;
    planes.data = {0x80, 0, 0x40, 0, 0x80, 0, 0x20, 0};
    QCOMPARE(allIndices(decoded(planes)), File({5, 2, 8}));
    QCOMPARE(decoded(planes).pixel(1, 0), (Rgba{7, 8, 9, 255}));
    PcxBuilder four{.width = 3, .bits = 4, .palette = colors, .data = {0x1f, 0x30}};
    QCOMPARE(allIndices(decoded(four)), File({1, 15, 3}));
    PcxBuilder two{.width = 5, .bits = 2, .palette = colors, .data = {0x1b, 0x40}};
    QCOMPARE(allIndices(decoded(two)), File({0, 1, 2, 3, 1}));
}

void PcxTest::colorPlanes() {
    PcxBuilder color{.width = 2, .planes = 3, .data = {1, 2, 3, 4, 5, 6}};
    QCOMPARE(decoded(color).pixel(1, 0), (Rgba{2, 4, 6, 255}));
    color.planes = 4;
    color.data = {1, 2, 3, 4, 5, 6, 7, 8};
    QCOMPARE(decoded(color).pixel(0, 0), (Rgba{1, 3, 5, 7}));
}

void PcxTest::palettes() {
    // Without the one at the end, 8 bits are grey.
    PcxBuilder eight{.width = 2, .data = {3, 0xc1, 0xc8}};
    QCOMPARE(decoded(eight).type(), ImageType::Gray8);
    QCOMPARE(allIndices(decoded(eight)), File({3, 0xc8}));
    eight.data.push_back(12);
    eight.data.resize(eight.data.size() + 768, 9);
    QCOMPARE(decoded(eight).type(), ImageType::Indexed8);
    QCOMPARE(decoded(eight).pixel(0, 0), (Rgba{9, 9, 9, 255}));
    // The version that has no palette takes the standard one.
    PcxBuilder old{.width = 2, .bits = 4, .version = 3, .data = {0x6f, 0}};
    QCOMPARE(decoded(old).pixel(0, 0), (Rgba{0xaa, 0x55, 0, 255}));
    QCOMPARE(decoded(old).pixel(1, 0), (Rgba{255, 255, 255, 255}));
}

void PcxTest::runsCrossLines() {
    PcxBuilder builder{.width = 2, .height = 3, .data = {0xc5, 7, 0xc0, 99, 1}};
    QCOMPARE(allIndices(decoded(builder)), File({7, 7, 7, 7, 7, 1}));
}

void PcxTest::largeFiles() {
    // Decoded from several places; half of it are bytes that look like the start of a run.
    PcxBuilder builder{.width = 1022, .height = 1500, .lineBytes = 1022};
    File indices;
    for (std::uint32_t noise = 1; indices.size() < 1022 * 1500;) {
        noise = noise * 1664525 + 1013904223;
        const int high = indices.size() > 700000 ? 0xc0 : 0;
        const auto value = static_cast<std::uint8_t>(noise >> 24 | static_cast<unsigned>(high));
        const std::size_t run = noise >> 8 & 3 ? 1 : (noise >> 10) % 63 + 1;
        if (run > 1 || value >= 0xc0) builder.data.push_back(static_cast<std::uint8_t>(0xc0 | run));
        builder.data.push_back(value);
        indices.insert(indices.end(), run, value);
    }
    indices.resize(1022 * 1500);
    // The palette is found though it does not end the file.
    builder.data.push_back(12);
    builder.data.resize(builder.data.size() + 768 + 5, 9);
    const Raster raster = decoded(builder);
    QCOMPARE(raster.palette()[7], (Rgba{9, 9, 9, 255}));
    QVERIFY(allIndices(raster) == indices);
}

void PcxTest::missingRowsAreBlack() {
    PcxBuilder builder{.width = 2, .height = 3, .data = {1, 2, 3}};
    const Picture picture = reread(pcxCodec(), builder.file());
    QCOMPARE(allIndices(picture.pages.front().raster), File({1, 2, 3, 0, 0, 0}));
    QCOMPARE(picture.warnings.size(), std::size_t{1});
    // Lines that are too short for the width, by a wrong header.
    builder.width = 3;
    QCOMPARE(allIndices(decoded(builder)), File({1, 2, 0, 3, 0, 0, 0, 0, 0}));
}

void PcxTest::refused() {
    const auto error = [](PcxBuilder builder) {
        builder.data = {1};
        return errorOf(pcxCodec(), builder.file());
    };
    QCOMPARE(error({.width = -5}), errors::invalidPicture);
    QCOMPARE(error({.lineBytes = 0}), errors::invalidPicture);
    QCOMPARE(error({.bits = 3}), errors::invalidPicture);
    QCOMPARE(error({.planes = 2}), errors::invalidPicture);
    QCOMPARE(error({.bits = 4, .planes = 4}), errors::invalidPicture);
    QCOMPARE(error({.width = 60000, .height = 60000, .planes = 3, .lineBytes = 60000}),
             errors::outOfMemory);
    QCOMPARE(error({.width = 20000, .height = 20000, .planes = 3, .lineBytes = 20000}),
             errors::invalidPicture);
}

void PcxTest::damaged() {
    for (const ImageType type : {ImageType::Bit1, ImageType::Gray8, ImageType::Rgb24})
        readDamaged(pcxCodec(), written(pcxCodec(), {{patterned(type, 23, 9), nullptr, {}}}));
}

QTEST_GUILESS_MAIN(PcxTest)
#include "pcx.moc"
