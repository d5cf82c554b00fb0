// BMP files of every kind, made byte by byte, and what our own writer makes.
#include <QtTest>

#include "imaging/codec_pages.h"
#include "imaging/codecs/all.h"
#include "imaging/convert.h"

using namespace kvn;
using namespace kvn::test;

namespace {

using File = std::vector<std::uint8_t>;

// A BMP file with a 40-byte header unless told otherwise; little-endian fields.
struct BmpBuilder {
    std::uint32_t headerSize = 40;
    int width = 1, height = 1, bits = 24;
    std::uint32_t compression = 0, colors = 0;
    File extra{};   // between the header's first 40 bytes and the palette
    File palette{}; // blue, green, red, (0)
    File pixels{};
    std::uint32_t offset = 0; // 0: right behind the palette

    static void put(File& file, std::uint32_t value, int size) {
        for (int i = 0; i < size; ++i)
            file.push_back(static_cast<std::uint8_t>(value >> 8 * i));
    }
    File file() const {
        File out{'B', 'M', 0, 0, 0, 0, 0, 0, 0, 0};
        const auto start = static_cast<std::uint32_t>(14 + std::min(headerSize, 40u) +
                                                      extra.size() + palette.size());
        put(out, offset ? offset : start, 4);
        put(out, headerSize, 4);
        const int side = headerSize == 12 ? 2 : 4;
        put(out, static_cast<std::uint32_t>(width), side);
        put(out, static_cast<std::uint32_t>(height), side);
        put(out, 1, 2);
        put(out, static_cast<std::uint32_t>(bits), 2);
        if (headerSize > 12) {
            put(out, compression, 4);
            put(out, static_cast<std::uint32_t>(pixels.size()), 4);
            put(out, 11811, 4); // 300 dots per inch
            put(out, 5906, 4);
            put(out, colors, 4);
            put(out, 0, 4);
        }
        for (const File* part : {&extra, &palette, &pixels})
            out.insert(out.end(), part->begin(), part->end());
        return out;
    }
};

File masks(std::initializer_list<std::uint32_t> list) {
    File bytes;
    for (const std::uint32_t mask : list)
        BmpBuilder::put(bytes, mask, 4);
    return bytes;
}

const File threeColors{0, 0, 0, 0, 0x30, 0x20, 0x10, 0, 0xff, 0xff, 0xff, 0};

Raster decoded(const BmpBuilder& builder) {
    const Picture picture = reread(bmpCodec(), builder.file());
    return picture.pages.front().raster;
}

Rgba opaque(int r, int g, int b) {
    return {static_cast<std::uint8_t>(r), static_cast<std::uint8_t>(g),
            static_cast<std::uint8_t>(b), 255};
}

} // namespace

class BmpTest : public QObject {
    Q_OBJECT
  private slots:
    void roundTrip_data();
    void roundTrip();
    void metadata();
    void fewBits();
    void masksOfSixteenBits();
    void masksOfThirtyTwoBits();
    void spareByteIsAlphaIfUsed();
    void runLengths();
    void oldHeadersAndRowOrder();
    void wrongPaletteAndOffset();
    void missingRowsAreBlack();
    void embeddedPicture();
    void refused();
    void damaged();
};

void BmpTest::roundTrip_data() {
    QTest::addColumn<int>("type");
    QTest::addColumn<bool>("rle");
    for (const ImageType type : everyType)
        for (const bool rle : {false, true})
            QTest::addRow("%s%s", typeName(type), rle ? " rle" : "")
                << static_cast<int>(type) << rle;
}

void BmpTest::roundTrip() {
    QFETCH(const int, type);
    QFETCH(const bool, rle);
    WriteOptions options;
    options.bmpRle = rle;
    Task task;
    // Widths about the padding, and lines longer than the longest run.
    for (const int width : {1, 7, 8, 9, 30, 611}) {
        const Raster source = patterned(static_cast<ImageType>(type), width, 37);
        const File file = written(bmpCodec(), {{source, nullptr, {}}}, options);
        const Raster back = reread(bmpCodec(), file).pages.front().raster;
        const bool wide = hasAlpha(source.type());
        QVERIFY(back.samePixels(wide ? convertType(source, ImageType::Rgba32, task) : source));
        const PageFacts facts = bmpCodec().facts(file, {}).front();
        QCOMPARE(facts.type, back.type());
        QCOMPARE(facts.width, width);
    }
    // Flat parts must really shrink.
    const Raster flat(ImageType::Gray8, 1000, 100);
    if (rle) QVERIFY(written(bmpCodec(), {{flat, nullptr, {}}}, options).size() < 5000);
}

void BmpTest::metadata() {
    Metadata meta;
    meta.xDpi = 300;
    meta.yDpi = 150;
    meta.icc = {1, 2, 3, 4, 5};
    for (const ImageType type : {ImageType::Indexed8, ImageType::Rgba32}) {
        const Page page{patterned(type, 5, 4), std::make_shared<const Metadata>(meta), {}};
        const Page back = reread(bmpCodec(), written(bmpCodec(), {page})).pages.front();
        QVERIFY(back.raster.samePixels(page.raster));
        QCOMPARE(back.metadata->icc, meta.icc);
        // The file counts per metre; whole numbers come back whole.
        QCOMPARE(back.metadata->xDpi, 300.0);
        QCOMPARE(back.metadata->yDpi, 150.0);
    }
}

void BmpTest::fewBits() {
    BmpBuilder two{.width = 5, .height = 1, .bits = 2, .colors = 3, .palette = threeColors};
    two.pixels = {0b00011000, 0b01000000, 0, 0};
    QCOMPARE(allIndices(decoded(two)), File({0, 1, 2, 0, 1}));
    QCOMPARE(decoded(two).palette().size(), std::size_t{3});
    BmpBuilder four{.width = 3, .height = 1, .bits = 4, .colors = 3, .palette = threeColors};
    four.pixels = {0x21, 0x70, 0, 0};
    // An index past the palette is black.
    QCOMPARE(allIndices(decoded(four)), File({2, 1, 7}));
    QCOMPARE(decoded(four).pixel(0, 0), opaque(255, 255, 255));
    QCOMPARE(decoded(four).pixel(1, 0), opaque(0x10, 0x20, 0x30));
    QCOMPARE(decoded(four).pixel(2, 0), opaque(0, 0, 0));
}

void BmpTest::masksOfSixteenBits() {
    // Widened by repeating the bits: the largest value is white, not 248.
    BmpBuilder plain{.width = 2, .bits = 16};
    plain.pixels = {0xff, 0x7f, 0x03, 0x0c};
    QCOMPARE(decoded(plain).pixel(0, 0), opaque(255, 255, 255));
    QCOMPARE(decoded(plain).pixel(1, 0), opaque(24, 0, 24));
    BmpBuilder green{.width = 2, .bits = 16, .compression = 3};
    green.extra = masks({0xf800, 0x07e0, 0x001f});
    green.pixels = {0xe0, 0x07, 0x21, 0x00};
    QCOMPARE(decoded(green).pixel(0, 0), opaque(0, 255, 0));
    QCOMPARE(decoded(green).pixel(1, 0), opaque(0, 4, 8));
    // Alpha of one bit, from a longer header.
    BmpBuilder alpha{.headerSize = 56, .width = 2, .bits = 16, .compression = 3};
    alpha.extra = masks({0x7c00, 0x03e0, 0x001f, 0x8000});
    alpha.pixels = {0x00, 0xfc, 0x00, 0x7c};
    QCOMPARE(decoded(alpha).pixel(0, 0), opaque(255, 0, 0));
    QCOMPARE(decoded(alpha).pixel(1, 0), (Rgba{255, 0, 0, 0}));
}

void BmpTest::masksOfThirtyTwoBits() {
    BmpBuilder ten{.width = 1, .bits = 32, .compression = 3};
    ten.extra = masks({0x3ff00000, 0x000ffc00, 0x000003ff});
    ten.pixels = {0x01, 0xfc, 0x0f, 0x20}; // red 512, green 1023, blue 1 of 1023
    QCOMPARE(decoded(ten).pixel(0, 0), opaque(128, 255, 0));
    // Byte order turned round, a channel missing, and a mask with a hole.
    BmpBuilder turned = ten;
    turned.extra = masks({0xff, 0, 0x00f50000});
    turned.pixels = {0x80, 0x77, 0xff, 0x00};
    QCOMPARE(decoded(turned).pixel(0, 0), opaque(128, 0, 255));
    // Masks of all 32 bits at once.
    BmpBuilder whole = ten;
    whole.extra = masks({0xffffffff, 0xffffffff, 0xffffffff});
    whole.pixels = {0, 0, 0, 0x80};
    QCOMPARE(decoded(whole).pixel(0, 0), opaque(128, 128, 128));
}

void BmpTest::spareByteIsAlphaIfUsed() {
    BmpBuilder builder{.width = 2, .bits = 32, .pixels = {1, 2, 3, 0, 4, 5, 6, 0}};
    QCOMPARE(decoded(builder).type(), ImageType::Rgb24);
    QCOMPARE(decoded(builder).pixel(1, 0), opaque(6, 5, 4));
    builder.pixels[7] = 9;
    QCOMPARE(decoded(builder).pixel(0, 0), (Rgba{3, 2, 1, 0}));
    QCOMPARE(decoded(builder).pixel(1, 0), (Rgba{6, 5, 4, 9}));
    // Declared alpha counts even if it is clear everywhere.
    BmpBuilder declared = builder;
    declared.headerSize = 56;
    declared.compression = 3;
    declared.extra = masks({0xff0000, 0xff00, 0xff, 0xff000000});
    declared.pixels = {1, 2, 3, 0, 4, 5, 6, 0};
    QCOMPARE(decoded(declared).pixel(0, 0), (Rgba{3, 2, 1, 0}));
}

void BmpTest::runLengths() {
    BmpBuilder eight{.width = 6, .height = 3, .bits = 8, .compression = 1, .colors = 3};
    eight.palette = threeColors;
    // The bottom line: a run beyond its end; then right 2 up 1; literals of odd length; the end.
    eight.pixels = {9, 1, 0, 0, 0, 2, 2, 1, 0, 3, 2, 1, 2, 0, 0, 1};
    QCOMPARE(allIndices(decoded(eight)),
             File({0, 0, 2, 1, 2, 0, 0, 0, 0, 0, 0, 0, 1, 1, 1, 1, 1, 1}));
    BmpBuilder four = eight;
    four.bits = 4;
    four.compression = 2;
    four.height = 2;
    four.pixels = {5, 0x12, 0, 0, 0, 5, 0x21, 0x21, 0x20, 0, 0, 1};
    QCOMPARE(allIndices(decoded(four)), File({2, 1, 2, 1, 2, 0, 1, 2, 1, 2, 1, 0}));
    BmpBuilder color = eight;
    color.headerSize = 64;
    color.bits = 24;
    color.compression = 4;
    color.height = 1;
    color.extra = File(24);
    color.palette.clear();
    color.pixels = {4, 10, 20, 30, 0, 3, 1, 2, 3, 4, 5, 6, 7, 8, 9, 0, 0, 1};
    QCOMPARE(decoded(color).pixel(3, 0), opaque(30, 20, 10));
    QCOMPARE(decoded(color).pixel(5, 0), opaque(6, 5, 4));
}

void BmpTest::oldHeadersAndRowOrder() {
    BmpBuilder old{.headerSize = 12, .width = 2, .height = 2, .bits = 8};
    old.palette = File(768);
    old.palette[3] = 7; // blue of the second entry: three bytes each
    old.pixels = {0, 1, 0, 0, 1, 0, 0, 0};
    QCOMPARE(decoded(old).pixel(1, 1), opaque(0, 0, 7));
    QCOMPARE(allIndices(decoded(old)), File({1, 0, 0, 1}));
    // The first of several forms of one picture; offsets count from the start of the file.
    File array = old.file();
    array[10] += 14;
    array.insert(array.begin(), {'B', 'A', 14, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0});
    QVERIFY(codecForContent(array, "") == &bmpCodec());
    QCOMPARE(allIndices(reread(bmpCodec(), array).pages.front().raster), File({1, 0, 0, 1}));
    BmpBuilder down{.width = 1, .height = -2, .pixels = {1, 2, 3, 0, 4, 5, 6, 0}};
    QCOMPARE(decoded(down).pixel(0, 0), opaque(3, 2, 1));
    BmpBuilder shortOs2{.headerSize = 40, .width = 1, .height = 1, .pixels = {1, 2, 3, 0}};
    File file = shortOs2.file();
    file[14] = 16; // the header ends with the depth
    file.erase(file.begin() + 30, file.begin() + 54);
    file[10] = 30;
    QCOMPARE(reread(bmpCodec(), file).pages.front().raster.pixel(0, 0), opaque(3, 2, 1));
}

void BmpTest::wrongPaletteAndOffset() {
    BmpBuilder builder{.width = 2, .height = 1, .bits = 8, .colors = 3, .palette = threeColors};
    builder.pixels = {2, 1, 0, 0};
    builder.offset = 54; // leaves no room for the palette: it is the offset that is wrong
    QCOMPARE(allIndices(decoded(builder)), File({2, 1}));
    builder.offset = 62; // two entries, then pixels
    QCOMPARE(decoded(builder).palette().size(), std::size_t{2});
    builder.offset = 0x7fffffff;
    QCOMPARE(allIndices(decoded(builder)), File({2, 1}));
    builder.offset = 0;
    builder.colors = 0xffffffff; // as if the pixels were palette: nothing is left for them
    QCOMPARE(decoded(builder).width(), 2);
}

void BmpTest::missingRowsAreBlack() {
    BmpBuilder builder{.width = 1, .height = 3, .bits = 24, .pixels = {9, 8, 7, 0, 6, 5, 4}};
    const Picture picture = reread(bmpCodec(), builder.file());
    QCOMPARE(picture.warnings.size(), std::size_t{1});
    const Raster& raster = picture.pages.front().raster;
    QCOMPARE(raster.pixel(0, 2), opaque(7, 8, 9));
    QCOMPARE(raster.pixel(0, 1), opaque(4, 5, 6));
    QCOMPARE(raster.pixel(0, 0), opaque(0, 0, 0));
    // With a palette, black is where the palette has it.
    BmpBuilder runs{.width = 2, .height = 2, .bits = 8, .compression = 1, .colors = 3};
    runs.palette = {0xff, 0xff, 0xff, 0, 1, 1, 1, 0, 0x80, 0x80, 0x80, 0};
    runs.pixels = {2, 2};
    QCOMPARE(allIndices(decoded(runs)), File({1, 1, 2, 2}));
}

void BmpTest::embeddedPicture() {
    const Raster source = patterned(ImageType::Rgb24, 9, 5);
    BmpBuilder builder{.width = 9, .height = 5, .bits = 0, .compression = 5};
    builder.pixels = written(pngCodec(), {{source, nullptr, {}}});
    const Picture picture = reread(bmpCodec(), builder.file());
    QVERIFY(picture.pages.front().raster.samePixels(source));
    QCOMPARE(picture.type, FileType::Bmp);
    builder.pixels.resize(10);
    QCOMPARE(errorOf(bmpCodec(), builder.file()), errors::invalidPicture);
}

void BmpTest::refused() {
    const auto error = [](const BmpBuilder& builder) {
        return errorOf(bmpCodec(), builder.file());
    };
    QCOMPARE(error({.width = 0}), errors::invalidPicture);
    QCOMPARE(error({.height = 0}), errors::invalidPicture);
    QCOMPARE(error({.width = -5}), errors::invalidPicture);
    QCOMPARE(error({.bits = 13}), errors::invalidPicture);
    QCOMPARE(error({.bits = 8, .compression = 2}), errors::invalidPicture);
    QCOMPARE(error({.compression = 99}), errors::invalidPicture);
    QCOMPARE(error({.bits = 32, .compression = 3, .extra = masks({0, 0, 0})}),
             errors::invalidPicture);
    QCOMPARE(error({.width = 60000, .height = 60000}), errors::outOfMemory);
    // Within the limit, but with next to no data.
    QCOMPARE(error({.width = 20000, .height = 20000}), errors::invalidPicture);
    ReadLimits small;
    small.pixelBytes = 100;
    QCOMPARE(errorOf(bmpCodec(), BmpBuilder{.width = 6, .height = 6}.file(), small),
             errors::outOfMemory);
}

void BmpTest::damaged() {
    for (const ImageType type : {ImageType::Bit1, ImageType::Indexed8, ImageType::Rgba32})
        for (const bool rle : {false, true}) {
            WriteOptions options;
            options.bmpRle = rle;
            readDamaged(bmpCodec(),
                        written(bmpCodec(), {{patterned(type, 23, 9), nullptr, {}}}, options));
        }
}

QTEST_GUILESS_MAIN(BmpTest)
#include "bmp.moc"
