// Icons made byte by byte: depths, masks, embedded PNG, which picture counts.
#include <QtTest>

#include "imaging/codec_pages.h"
#include "imaging/codecs/all.h"

using namespace kvn;
using namespace kvn::test;

namespace {

using File = std::vector<std::uint8_t>;

void put(File& out, std::uint64_t value, int size) {
    for (int i = 0; i < size; ++i)
        out.push_back(static_cast<std::uint8_t>(value >> 8 * i));
}

void append(File& out, const File& more) {
    out.insert(out.end(), more.begin(), more.end());
}

// A bitmap with header, palette, pixels and mask, the latter three as given.
File bitmap(int width, int height, int bits, const File& parts) {
    File out;
    put(out, 40, 4);
    put(out, static_cast<std::uint64_t>(width), 4);
    put(out, static_cast<std::uint64_t>(2 * height), 4);
    put(out, 1, 2);
    put(out, static_cast<std::uint64_t>(bits), 2);
    out.resize(40);
    append(out, parts);
    return out;
}

File icon(const std::vector<File>& pictures) {
    File out{0, 0, 1, 0};
    put(out, pictures.size(), 2);
    std::size_t at = 6 + 16 * pictures.size();
    for (const File& picture : pictures) {
        put(out, 0, 8); // sides that say nothing
        put(out, picture.size(), 4);
        put(out, at, 4);
        at += picture.size();
    }
    for (const File& picture : pictures)
        append(out, picture);
    return out;
}

Raster decoded(const std::vector<File>& pictures) {
    return reread(icoCodec(), icon(pictures)).pages.front().raster;
}

const File oneBit = bitmap(2, 2, 1, {1,    2, 3, 0, 4,    5, 6, 0, // two colours, blue first
                                     0x40, 0, 0, 0, 0x80, 0, 0, 0, 0x00, 0, 0, 0, 0x40, 0, 0, 0});

} // namespace

class IcoTest : public QObject {
    Q_OBJECT
  private slots:
    void paletteAndMask();
    void trueColor();
    void embeddedPng();
    void theLargestThenTheDeepest();
    void recognition();
    void iconsOfOs2();
    void damaged();
};

void IcoTest::paletteAndMask() {
    const Raster raster = decoded({oneBit});
    QCOMPARE(raster.pixel(0, 1), (Rgba{3, 2, 1, 255}));
    QCOMPARE(raster.pixel(1, 1), (Rgba{6, 5, 4, 255}));
    QCOMPARE(raster.pixel(0, 0), (Rgba{6, 5, 4, 255}));
    QCOMPARE(raster.pixel(1, 0), (Rgba{3, 2, 1, 0}));
    File four(64 + 8);
    four[4 * 9 + 2] = 200;
    four[64] = 0x09;
    QCOMPARE(decoded({bitmap(2, 1, 4, four)}).pixel(1, 0), (Rgba{200, 0, 0, 255}));
    File eight(1024 + 8);
    eight[4 * 77 + 1] = 200;
    eight[1024] = 77;
    eight[1028] = 0x40;
    QCOMPARE(decoded({bitmap(2, 1, 8, eight)}).pixel(0, 0), (Rgba{0, 200, 0, 255}));
    QCOMPARE(decoded({bitmap(2, 1, 8, eight)}).pixel(1, 0), (Rgba{0, 0, 0, 0}));
}

void IcoTest::trueColor() {
    QCOMPARE(decoded({bitmap(1, 1, 24, {1, 2, 3, 0, 0, 0, 0, 0})}).pixel(0, 0),
             (Rgba{3, 2, 1, 255}));
    // With alpha the mask says nothing; without any alpha, it does.
    File deep{1, 2, 3, 0, 4, 5, 6, 90, 0x80, 0, 0, 0};
    QCOMPARE(decoded({bitmap(2, 1, 32, deep)}).pixel(1, 0), (Rgba{6, 5, 4, 90}));
    deep[7] = 0;
    deep[8] = 0x40;
    QCOMPARE(decoded({bitmap(2, 1, 32, deep)}).pixel(0, 0), (Rgba{3, 2, 1, 255}));
    QCOMPARE(decoded({bitmap(2, 1, 32, deep)}).pixel(1, 0), (Rgba{6, 5, 4, 0}));
}

void IcoTest::embeddedPng() {
    const Raster source = patterned(ImageType::Rgba32, 9, 5);
    const File png = written(pngCodec(), {{source, nullptr, {}}});
    const Picture picture = reread(icoCodec(), icon({oneBit, png}));
    QVERIFY(picture.pages.front().raster.samePixels(source));
    QCOMPARE(picture.type, FileType::Ico);
    QCOMPARE(icoCodec().facts(icon({oneBit, png}), {}).front().width, 9);
}

void IcoTest::theLargestThenTheDeepest() {
    const File small = bitmap(1, 1, 32, {9, 9, 9, 255, 0, 0, 0, 0});
    const File deep = bitmap(2, 2, 24, File(16 + 8, 70));
    for (const auto& order : {std::vector{small, oneBit, deep}, std::vector{deep, oneBit, small}}) {
        QCOMPARE(decoded(order).width(), 2);
        QCOMPARE(decoded(order).pixel(0, 0).r, std::uint8_t{70});
        QCOMPARE(icoCodec().facts(icon(order), {}).front().fileBits, 24);
    }
    // Pictures of one depth, as PNG files often are: the directory tells.
    const File red = written(
        pngCodec(), {{Raster::filled(ImageType::Rgba32, 3, 3, {255, 0, 0, 255}), nullptr, {}}});
    const File blue = written(
        pngCodec(), {{Raster::filled(ImageType::Rgba32, 3, 3, {0, 0, 255, 255}), nullptr, {}}});
    File named = icon({red, blue});
    named[6 + 6] = 4;
    named[6 + 16 + 6] = 32;
    QCOMPARE(reread(icoCodec(), named).pages.front().raster.pixel(0, 0).b, std::uint8_t{255});
    // What cannot be read does not count.
    const File unknown = bitmap(50, 50, 13, File(9000));
    QCOMPARE(decoded({unknown, oneBit}).width(), 2);
    QCOMPARE(errorOf(icoCodec(), icon({unknown})), errors::invalidPicture);
}

void IcoTest::recognition() {
    QVERIFY(codecForContent(icon({oneBit}), "") == &icoCodec());
    QVERIFY(codecForContent(icon({oneBit}), "tga") == &icoCodec());
    QVERIFY(!icoCodec().recognises(icon({})));
    File cursor = icon({oneBit});
    cursor[2] = 2;
    QVERIFY(!icoCodec().recognises(cursor));
    try {
        written(icoCodec(), {{patterned(ImageType::Rgb24, 2, 2), nullptr, {}}});
        QFAIL("an icon was written");
    } catch (const RuntimeError& error) {
        QCOMPARE(error.number(), errors::invalidCall);
    }
}

// An array of a black-and-white icon of 1 by 1 and one of 2 by 2 with colours; their pixels stand
// behind all headers.
File os2Icons() {
    File out;
    const auto header = [&](const char* type, int pixelsAt, int side, int high, int bits) {
        append(out, {static_cast<std::uint8_t>(type[0]), static_cast<std::uint8_t>(type[1])});
        put(out, 26, 4);
        put(out, 0, 4);
        put(out, static_cast<std::uint64_t>(pixelsAt), 4);
        put(out, 12, 4);
        for (const int field : {side, high, 1, bits})
            put(out, static_cast<std::uint64_t>(field), 2);
        if (bits == 1) append(out, {0, 0, 0, 255, 255, 255});
    };
    const auto array = [&](int next) {
        append(out, {'B', 'A', 40, 0, 0, 0});
        put(out, static_cast<std::uint64_t>(next), 4);
        put(out, 0, 4);
    };
    array(46);
    header("IC", 118, 1, 2, 1);
    array(0);
    header("CI", 126, 2, 4, 1);
    header("CI", 142, 2, 2, 24);
    append(out, {0x80, 0, 0, 0, 0, 0, 0, 0});
    append(out, {0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0x40, 0, 0, 0});
    append(out, {1, 2, 3, 4, 5, 6, 0, 0, 7, 8, 9, 10, 11, 12, 0, 0});
    return out;
}

void IcoTest::iconsOfOs2() {
    const File file = os2Icons();
    QVERIFY(codecForContent(file, "ico") == &icoCodec());
    const Raster raster = reread(icoCodec(), file).pages.front().raster;
    QCOMPARE(raster.width(), 2);
    QCOMPARE(raster.pixel(0, 0), (Rgba{9, 8, 7, 255}));
    QCOMPARE(raster.pixel(1, 0).a, std::uint8_t{0});
    QCOMPARE(raster.pixel(1, 1), (Rgba{6, 5, 4, 255}));
    QCOMPARE(icoCodec().facts(file, {}).front().fileBits, 24);
    // The first alone, without colours: its lower half says black or white.
    const File alone(file.begin() + 14, file.begin() + 46);
    File mono = alone;
    mono[10] = 32;
    append(mono, {0x80, 0, 0, 0, 0, 0, 0, 0});
    QCOMPARE(reread(icoCodec(), mono).pages.front().raster.pixel(0, 0), (Rgba{255, 255, 255, 255}));
    readDamaged(icoCodec(), file);
}

void IcoTest::damaged() {
    const File png = written(pngCodec(), {{patterned(ImageType::Rgb24, 3, 3), nullptr, {}}});
    readDamaged(icoCodec(), icon({oneBit, bitmap(3, 3, 24, File(48))}));
    readDamaged(icoCodec(), icon({png}));
    // The rows that are missing are clear.
    File file = icon({bitmap(1, 2, 24, {1, 2, 3, 0})});
    const Picture picture = reread(icoCodec(), file);
    QCOMPARE(picture.warnings.size(), std::size_t{1});
    QCOMPARE(picture.pages.front().raster.pixel(0, 1), (Rgba{3, 2, 1, 255}));
    QCOMPARE(picture.pages.front().raster.pixel(0, 0), (Rgba{0, 0, 0, 0}));
    QCOMPARE(errorOf(icoCodec(), icon({bitmap(30000, 30000, 24, File(8))})), errors::outOfMemory);
    QCOMPARE(errorOf(icoCodec(), icon({bitmap(20000, 20000, 24, File(8))})),
             errors::invalidPicture);
}

QTEST_GUILESS_MAIN(IcoTest)
#include "ico.moc"
