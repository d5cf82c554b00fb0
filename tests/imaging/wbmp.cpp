// WBMP files made byte by byte, what our own writer makes, and what must not be taken for one.
#include <QtTest>

#include "imaging/codec_pages.h"
#include "imaging/codecs/all.h"
#include "imaging/convert.h"

using namespace kvn;
using namespace kvn::test;

namespace {

using File = std::vector<std::uint8_t>;

} // namespace

class WbmpTest : public QObject {
    Q_OBJECT
  private slots:
    void bytes();
    void everyTypeIsWritten();
    void paletteDecidesWhatIsWhite();
    void recognition();
    void damaged();
};

void WbmpTest::bytes() {
    // 200 pixels take two bytes in the header; 1 is white.
    Raster raster(ImageType::Bit1, 200, 2);
    raster.setPixel(0, 1, {255, 255, 255});
    File expected{0, 0, 0x81, 0x48, 2};
    expected.resize(5 + 50);
    expected[5 + 25] = 0x80;
    QCOMPARE(written(wbmpCodec(), {{raster, nullptr, {}}}), expected);
    QVERIFY(reread(wbmpCodec(), expected).pages.front().raster.samePixels(raster));
}

void WbmpTest::everyTypeIsWritten() {
    Task task;
    for (const ImageType type : everyType)
        for (const int width : {1, 8, 13, 300}) {
            const Raster source = patterned(type, width, 21);
            const Raster bits = convertType(source, ImageType::Bit1, task);
            const File file = written(wbmpCodec(), {{source, nullptr, {}}});
            QVERIFY(codecForContent(file, "wbmp") == &wbmpCodec());
            const Raster back = reread(wbmpCodec(), file).pages.front().raster;
            const bool flipped = bits.palette()[0].r > bits.palette()[1].r;
            for (int y = 0; y < 21; ++y)
                for (int x = 0; x < width; ++x)
                    QCOMPARE(back.index(x, y) != 0, (bits.index(x, y) != 0) != flipped);
        }
}

void WbmpTest::paletteDecidesWhatIsWhite() {
    Raster raster(ImageType::Bit1, 3, 1);
    raster.setPalette(Palette({{200, 200, 0}, {0, 0, 90}}));
    raster.setPixel(1, 0, {0, 0, 90});
    QCOMPARE(written(wbmpCodec(), {{raster, nullptr, {}}}), File({0, 0, 3, 1, 0b10100000}));
}

void WbmpTest::recognition() {
    QVERIFY(wbmpCodec().recognises(File{0, 0, 8, 2, 1, 2}));
    QVERIFY(!wbmpCodec().recognises(File{0, 0, 8, 2, 1}));
    QVERIFY(!wbmpCodec().recognises(File{0, 0, 0, 2, 1, 2}));
    QVERIFY(!wbmpCodec().recognises(File{1, 0, 8, 2, 1, 2}));
    QVERIFY(!wbmpCodec().recognises(File(1000)));
    File longer{0, 0, 8, 2, 1, 2};
    longer.resize(1000);
    QVERIFY(!wbmpCodec().recognises(longer));
    // The files of every other format are left alone.
    for (const Codec* codec : codecs()) {
        if (!codec->canWrite() || codec == &wbmpCodec()) continue;
        for (const ImageType type : everyType) {
            const File file = written(*codec, {{patterned(type, 40, 30), nullptr, {}}});
            QVERIFY(codecForContent(file, "wbmp") == codec);
            QVERIFY(codecForContent(file, "") == codec);
        }
    }
}

void WbmpTest::damaged() {
    const File file = written(wbmpCodec(), {{patterned(ImageType::Bit1, 130, 9), nullptr, {}}});
    readDamaged(wbmpCodec(), file);
    const Picture half = reread(wbmpCodec(), {0, 0, 8, 3, 0xff});
    QCOMPARE(half.warnings.size(), std::size_t{1});
    QCOMPARE(allIndices(half.pages.front().raster).at(7), std::uint8_t{1});
    QCOMPARE(allIndices(half.pages.front().raster).at(8), std::uint8_t{0});
    QCOMPARE(errorOf(wbmpCodec(), {0, 0, 0x88, 0x80, 0x80, 0x80, 0, 1}), errors::invalidPicture);
    QCOMPARE(errorOf(wbmpCodec(), {0, 0, 0x87, 0xff, 0xff, 0xff, 0x7f, 0x83, 0xff, 0x7f}),
             errors::outOfMemory);
    QCOMPARE(errorOf(wbmpCodec(), {0, 0, 0x83, 0xff, 0x7f, 0x83, 0xff, 0x7f}),
             errors::invalidPicture);
}

QTEST_GUILESS_MAIN(WbmpTest)
#include "wbmp.moc"
