// TGA files of every kind, made byte by byte, and what our own writer makes.
#include <QtTest>

#include "imaging/codec_pages.h"
#include "imaging/codecs/all.h"
#include "imaging/convert.h"

using namespace kvn;
using namespace kvn::test;

namespace {

using File = std::vector<std::uint8_t>;

struct TgaBuilder {
    int type = 2, width = 1, height = 1, bits = 24, descriptor = 0x20;
    int paletteFirst = 0, paletteSize = 0, paletteBits = 0;
    File palette{};
    File data{};
    int attributes = -1; // of the extension area; none if below 0

    File file() const {
        File out(18);
        out[0] = 3; // an identification of three bytes, to be skipped
        out[1] = paletteSize > 0;
        out[2] = static_cast<std::uint8_t>(type);
        put(out, 3, paletteFirst);
        put(out, 5, paletteSize);
        out[7] = static_cast<std::uint8_t>(paletteBits);
        put(out, 12, width);
        put(out, 14, height);
        out[16] = static_cast<std::uint8_t>(bits);
        out[17] = static_cast<std::uint8_t>(descriptor);
        out.resize(out.size() + 3, 0xee);
        for (const File* part : {&palette, &data})
            out.insert(out.end(), part->begin(), part->end());
        if (attributes < 0) return out;
        File extension(495);
        put(extension, 0, 495);
        extension[494] = static_cast<std::uint8_t>(attributes);
        const std::size_t position = out.size();
        out.insert(out.end(), extension.begin(), extension.end());
        out.resize(out.size() + 8);
        put(out, out.size() - 8, static_cast<int>(position));
        constexpr std::string_view signature("TRUEVISION-XFILE.\0", 18);
        out.insert(out.end(), signature.begin(), signature.end());
        return out;
    }

  private:
    static void put(File& file, std::size_t at, int value) {
        file[at] = static_cast<std::uint8_t>(value);
        file[at + 1] = static_cast<std::uint8_t>(value >> 8);
    }
};

Raster decoded(const TgaBuilder& builder) {
    const File file = builder.file();
    const Raster raster = reread(tgaCodec(), file).pages.front().raster;
    if (tgaCodec().facts(file, {}).front().type != raster.type()) return {};
    return raster;
}

} // namespace

class TgaTest : public QObject {
    Q_OBJECT
  private slots:
    void roundTrip_data();
    void roundTrip();
    void runsOnlyWhereSmaller();
    void comments();
    void origins();
    void sixteenBits();
    void grey();
    void palettes();
    void alphaRule();
    void packets();
    void missingRowsAreBlack();
    void refused();
    void damaged();
};

void TgaTest::roundTrip_data() {
    QTest::addColumn<int>("type");
    for (const ImageType type : everyType)
        QTest::addRow("%s", typeName(type)) << static_cast<int>(type);
}

void TgaTest::roundTrip() {
    QFETCH(const int, type);
    Task task;
    // Lines shorter and longer than a packet.
    for (const int width : {1, 2, 127, 128, 129, 611}) {
        const Raster source = patterned(static_cast<ImageType>(type), width, 37);
        const ImageType form = source.type() == ImageType::Bit1 ? ImageType::Indexed8
                               : hasAlpha(source.type())        ? ImageType::Rgba32
                                                                : source.type();
        const File file = written(tgaCodec(), {{source, nullptr, {}}});
        QVERIFY(codecForContent(file, "") == &tgaCodec());
        const Raster back = reread(tgaCodec(), file).pages.front().raster;
        QVERIFY(back.samePixels(convertType(source, form, task)));
        QCOMPARE(tgaCodec().facts(file, {}).front().type, form);
    }
    // Clear everywhere is still alpha, since the extension area says so.
    const Raster clear(ImageType::Rgba32, 5, 5);
    QVERIFY(reread(tgaCodec(), written(tgaCodec(), {{clear, nullptr, {}}}))
                .pages.front()
                .raster.samePixels(clear));
}

void TgaTest::runsOnlyWhereSmaller() {
    Raster noise(ImageType::Gray8, 500, 20);
    const View view = noise.edit();
    for (int y = 0; y < 20; ++y)
        for (int x = 0; x < 500; ++x)
            view.row(y)[x] = static_cast<std::uint8_t>(x * 7 + y);
    QCOMPARE(written(tgaCodec(), {{noise, nullptr, {}}})[2], std::uint8_t{3});
    const File flat = written(tgaCodec(), {{Raster(ImageType::Rgb24, 500, 20), nullptr, {}}});
    QCOMPARE(flat[2], std::uint8_t{10});
    QVERIFY(flat.size() < 1000);
}

void TgaTest::comments() {
    const auto through = [](const std::string& comment) {
        Metadata meta;
        meta.comment = comment;
        const File file = written(
            tgaCodec(),
            {{patterned(ImageType::Gray8, 3, 3), std::make_shared<const Metadata>(meta), {}}});
        return reread(tgaCodec(), file).pages.front().metadata->comment;
    };
    for (const std::string& kept : {std::string("Two\nlines, caf\xc3\xa9"), std::string(200, 'x')})
        QCOMPARE(through(kept), kept);
    // What has no place is left out as a whole.
    QCOMPARE(through(std::string(330, 'x')), std::string());
    QCOMPARE(through("\xe2\x82\xac"), std::string());
}

void TgaTest::origins() {
    // Four pixels in the file's order, told by their blue.
    TgaBuilder builder{.width = 2, .height = 2, .data = {1, 0, 0, 2, 0, 0, 3, 0, 0, 4, 0, 0}};
    const auto order = [&](int descriptor) {
        builder.descriptor = descriptor;
        const Raster raster = decoded(builder);
        return File{raster.pixel(0, 0).b, raster.pixel(1, 0).b, raster.pixel(0, 1).b,
                    raster.pixel(1, 1).b};
    };
    QCOMPARE(order(0x20), File({1, 2, 3, 4}));
    QCOMPARE(order(0x00), File({3, 4, 1, 2}));
    QCOMPARE(order(0x30), File({2, 1, 4, 3}));
    QCOMPARE(order(0x10), File({4, 3, 2, 1}));
}

void TgaTest::sixteenBits() {
    TgaBuilder builder{.width = 2, .bits = 16, .data = {0xff, 0x7f, 0x01, 0x84}};
    QCOMPARE(decoded(builder).pixel(0, 0), (Rgba{255, 255, 255, 255}));
    QCOMPARE(decoded(builder).pixel(1, 0), (Rgba{8, 0, 8, 255}));
    builder.descriptor = 0x21; // one attribute bit
    QCOMPARE(decoded(builder).pixel(0, 0), (Rgba{255, 255, 255, 0}));
    QCOMPARE(decoded(builder).pixel(1, 0), (Rgba{8, 0, 8, 255}));
    builder.data[3] = 4; // and none is set
    QCOMPARE(decoded(builder).type(), ImageType::Rgb24);
    builder.bits = 15;
    QCOMPARE(decoded(builder).pixel(1, 0), (Rgba{8, 0, 8, 255}));
}

void TgaTest::grey() {
    TgaBuilder builder{.type = 3, .width = 2, .bits = 8, .data = {7, 9}};
    QCOMPARE(decoded(builder).type(), ImageType::Gray8);
    QCOMPARE(allIndices(decoded(builder)), File({7, 9}));
    builder.bits = 16;
    builder.data = {7, 100, 9, 0};
    QCOMPARE(decoded(builder).pixel(0, 0), (Rgba{7, 7, 7, 100}));
    QCOMPARE(decoded(builder).pixel(1, 0), (Rgba{9, 9, 9, 0}));
}

void TgaTest::palettes() {
    TgaBuilder builder{.type = 1, .width = 3, .bits = 8, .paletteFirst = 1, .paletteSize = 2};
    builder.paletteBits = 24;
    builder.palette = {1, 2, 3, 4, 5, 6};
    builder.data = {1, 2, 200};
    QCOMPARE(decoded(builder).pixel(0, 0), (Rgba{3, 2, 1, 255}));
    QCOMPARE(decoded(builder).pixel(1, 0), (Rgba{6, 5, 4, 255}));
    QCOMPARE(decoded(builder).pixel(2, 0), (Rgba{0, 0, 0, 255}));
    builder.paletteBits = 16;
    builder.palette = {0x00, 0x7c, 0x1f, 0x00};
    QCOMPARE(decoded(builder).pixel(0, 0), (Rgba{255, 0, 0, 255}));
    builder.paletteBits = 32;
    builder.palette = {1, 2, 3, 0, 4, 5, 6, 0};
    QCOMPARE(decoded(builder).pixel(1, 0), (Rgba{6, 5, 4, 255}));
    builder.palette[7] = 50;
    QCOMPARE(decoded(builder).type(), ImageType::Indexed8Alpha);
    QCOMPARE(decoded(builder).pixel(1, 0), (Rgba{6, 5, 4, 50}));
    // Indices of 16 bits reach further than a palette in memory.
    builder = {.type = 1, .width = 3, .bits = 16, .paletteFirst = 300, .paletteSize = 2};
    builder.paletteBits = 32;
    builder.palette = {1, 2, 3, 255, 4, 5, 6, 50};
    builder.data = {44, 1, 45, 1, 0, 0};
    QCOMPARE(decoded(builder).pixel(0, 0), (Rgba{3, 2, 1, 255}));
    QCOMPARE(decoded(builder).pixel(1, 0), (Rgba{6, 5, 4, 50}));
    QCOMPARE(decoded(builder).pixel(2, 0), (Rgba{0, 0, 0, 255}));
    // A palette before true colour is stepped over.
    TgaBuilder color{.paletteSize = 1, .paletteBits = 24, .palette = {9, 9, 9}, .data = {1, 2, 3}};
    QCOMPARE(decoded(color).pixel(0, 0), (Rgba{3, 2, 1, 255}));
}

void TgaTest::alphaRule() {
    TgaBuilder builder{.width = 2, .bits = 32, .data = {1, 2, 3, 0, 4, 5, 6, 0}};
    for (const int descriptor : {0x20, 0x28}) {
        builder.descriptor = descriptor;
        builder.data[7] = 0;
        QCOMPARE(decoded(builder).type(), ImageType::Rgb24);
        builder.data[7] = 85;
        QCOMPARE(decoded(builder).pixel(1, 0), (Rgba{6, 5, 4, 85}));
    }
    builder.attributes = 1; // to be ignored
    QCOMPARE(decoded(builder).type(), ImageType::Rgb24);
    builder.attributes = 4; // premultiplied
    QCOMPARE(decoded(builder).pixel(1, 0), (Rgba{18, 15, 12, 85}));
    builder.attributes = 3;
    builder.data[7] = 0;
    QCOMPARE(decoded(builder).pixel(1, 0), (Rgba{6, 5, 4, 0}));
    builder.attributes = 0;
    builder.descriptor = 0x20;
    builder.data[7] = 85;
    QCOMPARE(decoded(builder).type(), ImageType::Rgb24);
}

void TgaTest::packets() {
    // A run over the end of the line, a literal over the next one, and a run beyond the picture.
    TgaBuilder builder{.type = 11, .width = 2, .height = 3, .bits = 8};
    builder.data = {0x82, 7, 0x01, 1, 2, 0x90, 3};
    QCOMPARE(allIndices(decoded(builder)), File({7, 7, 7, 1, 2, 3}));
    TgaBuilder color{.type = 10, .width = 3, .data = {0x81, 1, 2, 3, 0x00, 4, 5, 6}};
    QCOMPARE(decoded(color).pixel(1, 0), (Rgba{3, 2, 1, 255}));
    QCOMPARE(decoded(color).pixel(2, 0), (Rgba{6, 5, 4, 255}));
}

void TgaTest::missingRowsAreBlack() {
    // The first row of the file is the bottom one; of the second there is one pixel.
    TgaBuilder builder{.type = 3, .width = 2, .height = 3, .bits = 8, .descriptor = 0};
    builder.data = {1, 2, 3};
    const Picture picture = reread(tgaCodec(), builder.file());
    QCOMPARE(allIndices(picture.pages.front().raster), File({0, 0, 3, 0, 1, 2}));
    QCOMPARE(picture.warnings.size(), std::size_t{1});
}

void TgaTest::refused() {
    const auto error = [](TgaBuilder builder) {
        if (builder.data.empty()) builder.data = {1};
        return errorOf(tgaCodec(), builder.file());
    };
    QCOMPARE(error({.type = 32}), errors::invalidPicture);
    QCOMPARE(error({.width = 0}), errors::invalidPicture);
    QCOMPARE(error({.bits = 8}), errors::invalidPicture);
    QCOMPARE(error({.type = 1, .bits = 8}), errors::invalidPicture);
    TgaBuilder nineBits{.type = 1, .bits = 8, .paletteSize = 2}; // which a footer lets through
    nineBits.paletteBits = 9;
    nineBits.palette = {1, 2, 3, 4};
    nineBits.attributes = 0;
    QCOMPARE(error(nineBits), errors::invalidPicture);
    QCOMPARE(error({.width = 60000, .height = 60000}), errors::outOfMemory);
    QCOMPARE(error({.width = 20000, .height = 20000}), errors::invalidPicture);
    try {
        written(tgaCodec(), {{Raster(ImageType::Gray8, 65536, 1), nullptr, {}}});
        QFAIL("a side that the field cannot hold was written");
    } catch (const RuntimeError& failure) {
        QCOMPARE(failure.number(), errors::invalidCall);
    }
}

void TgaTest::damaged() {
    for (const ImageType type :
         {ImageType::Indexed8, ImageType::Gray8, ImageType::Rgb24, ImageType::Rgba32})
        readDamaged(tgaCodec(), written(tgaCodec(), {{patterned(type, 23, 9), nullptr, {}}}));
}

QTEST_GUILESS_MAIN(TgaTest)
#include "tga.moc"
