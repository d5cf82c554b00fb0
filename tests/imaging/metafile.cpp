// WMF and EMF: records drawn, held against the pixels that they must give; sizes, resolutions,
// recognition, and files that ask for too much.
#include <QtTest>
#include <ctime>

#include "imaging/codec_pages.h"
#include "imaging/codecs/all.h"
#include "imaging/support/metafile_maker.h"

using namespace kvn;
using namespace kvn::test;

namespace {

constexpr std::uint32_t red = 0x0000ff, green = 0x00ff00, blue = 0xff0000; // as files have them
const Rgba white{255, 255, 255}, black{0, 0, 0}, redInk{255, 0, 0}, greenInk{0, 255, 0},
    blueInk{0, 0, 255};

Raster drawn(const Bytes& file) {
    const Codec* codec = codecForContent(file, "");
    return codec ? reread(*codec, file).pages.front().raster : Raster();
}

struct Spot {
    int x, y;
    Rgba color;
};
struct Case {
    const char* name;
    Bytes file;
    std::vector<Spot> spots;
};

void check(const std::vector<Case>& cases) {
    for (const Case& c : cases) {
        const Raster raster = drawn(c.file);
        for (const Spot& s : c.spots) {
            const Rgba is = raster.pixel(s.x, s.y);
            QVERIFY2(is == s.color, qPrintable(QString("%1 at %2,%3: %4 %5 %6")
                                                   .arg(c.name)
                                                   .arg(s.x)
                                                   .arg(s.y)
                                                   .arg(is.r)
                                                   .arg(is.g)
                                                   .arg(is.b)));
        }
    }
}

int darkPixels(const Raster& raster, const Rect& rect) {
    int count = 0;
    for (int y = rect.y; y < rect.bottom(); ++y)
        for (int x = rect.x; x < rect.right(); ++x)
            count += raster.pixel(x, y).r < 128;
    return count;
}

} // namespace

class MetafileTest : public QObject {
    Q_OBJECT
  private slots:
    void figures();
    void statesAndMappings();
    void bitmapsAndCombinations();
    void windowsRecords();
    void text();
    void sizesAndResolutions();
    void refusals();
    void unreasonable();
};

void MetafileTest::figures() {
    const auto emf = [](auto&& add) {
        EmfMaker maker;
        add(maker);
        return maker.file(40, 30);
    };
    const auto path = [](EmfMaker& m) {
        m.add(59)
            .add(27, {10, 5})
            .add(54, {30, 5})
            .add(54, {30, 20})
            .add(54, {10, 20})
            .add(61)
            .add(60);
    };
    const std::initializer_list<int> star = {0, 0, -1, -1, 5, 20, 2, 30, 28, 4, 11, 36, 11, 10, 28};
    check({
        {"a pen runs around a rectangle, whose last row and column are not its own",
         emf([](EmfMaker& m) { m.brush(1, red).rectangle(5, 5, 15, 15); }),
         {{5, 5, black},
          {14, 14, black},
          {15, 15, white},
          {4, 9, white},
          {6, 6, redInk},
          {13, 13, redInk}}},
        {"without a pen",
         emf([](EmfMaker& m) { m.noPen().brush(1, red).rectangle(5, 5, 15, 15); }),
         {{5, 5, redInk}, {14, 14, redInk}, {15, 15, white}}},
        {"a wide pen",
         emf([](EmfMaker& m) {
             m.pen(1, 0, 5, blue).add(27, {10, 10}).add(54, {30, 10});
         }),
         {{20, 8, blueInk}, {20, 12, blueInk}, {20, 6, white}, {20, 14, white}}},
        {"an ellipse",
         emf([](EmfMaker& m) {
             m.noPen().brush(1, green).add(42, {10, 5, 30, 25});
         }),
         {{20, 15, greenInk}, {11, 6, white}, {20, 6, greenInk}, {29, 24, white}}},
        {"a star, even-odd",
         emf([&](EmfMaker& m) { m.noPen().brush(1, red).add(3, star); }),
         {{20, 16, white}, {20, 6, redInk}}},
        {"a star, winding",
         emf([&](EmfMaker& m) { m.add(19, {2}).noPen().brush(1, red).add(3, star); }),
         {{20, 16, redInk}, {20, 6, redInk}}},
        {"a pie of the upper right quarter, anticlockwise",
         emf([](EmfMaker& m) {
             m.noPen().brush(1, red).add(47, {0, 0, 30, 30, 30, 15, 15, 0});
         }),
         {{20, 10, redInk}, {10, 10, white}, {20, 20, white}}},
        {"the same clockwise: the other three",
         emf([](EmfMaker& m) {
             m.add(57, {2}).noPen().brush(1, red).add(47, {0, 0, 30, 30, 30, 15, 15, 0});
         }),
         {{20, 10, white}, {10, 10, redInk}, {20, 20, redInk}}},
        {"a path filled",
         emf([&](EmfMaker& m) {
             m.brush(1, red);
             path(m);
             m.add(62);
         }),
         {{10, 5, redInk}, {29, 19, redInk}, {30, 20, white}}},
        {"a path as a clip",
         emf([&](EmfMaker& m) {
             path(m);
             m.add(67, {1}).noPen().brush(1, red).rectangle(0, 0, 40, 30);
         }),
         {{10, 5, redInk}, {29, 19, redInk}, {30, 20, white}, {2, 2, white}}},
        {"two rectangles of a region as a clip",
         emf([](EmfMaker& m) {
             m.add(75, {64, 5, 32, 1, 2, 32, 0, 0, 0, 0, 5, 5, 10, 10, 20, 5, 25, 10})
                 .noPen()
                 .brush(1, red)
                 .rectangle(0, 0, 40, 30);
         }),
         {{5, 5, redInk}, {12, 7, white}, {24, 9, redInk}, {25, 9, white}}},
        {"a slope of colours",
         emf([](EmfMaker& m) {
             m.add(118, {0, 0, -1, -1, 2, 1, 0, 0, 0, 0, 0, 32, 30, 0xff00, 0, 0, 1});
         }),
         {{0, 5, {4, 0, 0}}, {31, 5, {251, 0, 0}}, {32, 5, white}}},
    });
    // A hatch is a line in eight, and lets the background through unless it is opaque.
    const Raster hatch = drawn(
        emf([](EmfMaker& m) { m.add(18, {1}).noPen().brush(1, 0, 2, 0).rectangle(0, 0, 40, 24); }));
    QCOMPARE(darkPixels(hatch, hatch.rect()), 3 * 40);
    // Dots of three pixels and gaps of three.
    const Raster dots = drawn(emf([](EmfMaker& m) {
        m.add(18, {1}).pen(1, 2, 0, 0).add(27, {2, 10}).add(54, {38, 10});
    }));
    QCOMPARE(darkPixels(dots, {0, 10, 40, 1}), 18);
}

void MetafileTest::statesAndMappings() {
    const auto box = [](EmfMaker m) {
        return m.noPen().brush(1, red).rectangle(5, 5, 10, 10).file(40, 30);
    };
    const std::vector<Spot> doubled{
        {10, 10, redInk}, {19, 19, redInk}, {20, 20, white}, {9, 9, white}};
    constexpr int two = 0x40000000;
    check({
        {"a world twice as large", box(EmfMaker().add(35, {two, 0, 0, two, 0, 0})), doubled},
        {"the same by a change", box(EmfMaker().add(36, {two, 0, 0, two, 0, 0, 2})), doubled},
        {"window and viewport", box(EmfMaker().add(17, {8}).add(9, {20, 15}).add(11, {40, 30})),
         doubled},
        {"the lesser scale of both",
         box(EmfMaker().add(17, {7}).add(9, {20, 15}).add(11, {80, 30})), doubled},
        {"y upwards",
         box(EmfMaker().add(17, {8}).add(9, {20, -15}).add(11, {40, 30}).add(12, {0, 30})),
         {{10, 19, redInk}, {19, 10, redInk}, {10, 9, white}, {10, 20, white}}},
        {"extents do nothing in pixels",
         box(EmfMaker().add(9, {20, 15}).add(11, {40, 30})),
         {{5, 5, redInk}, {10, 10, white}}},
        {"tenths of millimetres, y upwards",
         EmfMaker().add(17, {2}).noPen().brush(1, red).rectangle(0, 0, 26, -26).file(40, 30),
         {{9, 9, redInk}, {12, 12, white}}},
        {"restored",
         EmfMaker()
             .noPen()
             .brush(1, red)
             .add(33)
             .brush(2, green)
             .add(35, {two, 0, 0, two, 0, 0})
             .add(34, {-1})
             .rectangle(0, 0, 5, 5)
             .file(40, 30),
         {{2, 2, redInk}, {6, 6, white}}},
        {"clips meet, and are left out",
         EmfMaker()
             .add(30, {5, 5, 20, 20})
             .add(30, {10, 0, 40, 30})
             .add(29, {12, 12, 14, 14})
             .noPen()
             .brush(1, red)
             .rectangle(0, 0, 40, 30)
             .file(40, 30),
         {{9, 9, white}, {10, 10, redInk}, {12, 12, white}, {14, 14, redInk}, {20, 19, white}}},
        {"a clip moved",
         EmfMaker()
             .add(26, {9, 9})
             .add(30, {5, 5, 20, 20})
             .add(26, {10, -3})
             .noPen()
             .brush(1, red)
             .rectangle(0, 0, 40, 30)
             .file(40, 30),
         {{14, 10, white}, {15, 2, redInk}, {29, 16, redInk}, {29, 17, white}}},
        {"drawn twice with exclusive or",
         EmfMaker()
             .add(20, {7})
             .noPen()
             .brush(1, red)
             .rectangle(0, 0, 20, 20)
             .rectangle(10, 10, 30, 30)
             .file(40, 30),
         {{5, 5, {0, 255, 255}}, {15, 15, white}, {25, 25, {0, 255, 255}}}},
        {"numbers that no object has",
         EmfMaker()
             .noPen()
             .brush(1, red)
             .add(37, {70000})
             .add(40, {-5})
             .add(34, {-9})
             .rectangle(0, 0, 5, 5)
             .file(40, 30),
         {{2, 2, redInk}}},
    });
}

void MetafileTest::bitmapsAndCombinations() {
    const auto on = [](auto&& add) {
        EmfMaker m;
        m.noPen().brush(1, green).rectangle(0, 0, 1, 1);
        add(m);
        return m.file(40, 30);
    };
    const Bytes half = joined(dib(1, 1, 32, {}), {128, 0, 0, 128}); // half of blue
    check({
        {"enlarged",
         on([](EmfMaker& m) { m.bitmap(10, 10, 8, 8, fourColors()); }),
         {{10, 10, redInk},
          {17, 10, greenInk},
          {10, 17, blueInk},
          {13, 13, redInk},
          {14, 14, white},
          {18, 12, white}}},
        {"mirrored",
         on([](EmfMaker& m) { m.bitmap(18, 18, -8, -8, fourColors()); }),
         {{17, 17, redInk}, {10, 17, greenInk}, {17, 10, blueInk}}},
        {"made smaller: the mean",
         on([](EmfMaker& m) { m.bitmap(10, 10, 1, 1, fourColors()); }),
         {{10, 10, {128, 128, 128}}}},
        {"inverting what is there",
         on([](EmfMaker& m) { m.bitmap(0, 0, 2, 2, fourColors(), 0x660046); }),
         {{0, 0, {255, 255, 0}}, {1, 0, {255, 0, 255}}, {1, 1, black}}},
        {"with the brush",
         on([](EmfMaker& m) { m.bitmap(4, 4, 2, 2, fourColors(), 0xc000ca); }),
         {{4, 4, black}, {5, 4, greenInk}, {5, 5, greenInk}}},
        {"half clear",
         on([&](EmfMaker& m) {
             m.add(114, {0, 0,          -1, -1, 10, 10, 4,   4,  0x01ff0000, 0, 0, 0x3f800000, 0,
                         0, 0x3f800000, 0,  0,  0,  0,  108, 40, 148,        4, 1, 1},
                   half);
         }),
         {{10, 10, {127, 127, 255}}, {14, 14, white}}},
        {"a colour left out",
         on([](EmfMaker& m) {
             m.add(116, {0, 0,          -1, -1, 10, 10, 2,   2,  int(red), 0,  0, 0x3f800000, 0,
                         0, 0x3f800000, 0,  0,  0,  0,  108, 40, 148,      16, 2, 2},
                   fourColors());
         }),
         {{10, 10, white}, {11, 10, greenInk}, {10, 11, blueInk}}},
        {"the lower row of two alone",
         on([](EmfMaker& m) {
             m.add(80, {0, 0, -1, -1, 10, 10, 0, 0, 2, 2, 76, 40, 116, 16, 0, 0, 1}, fourColors());
         }),
         {{10, 10, white}, {10, 11, blueInk}}},
        {"as a pattern",
         EmfMaker()
             .add(94, {1, 0, 32, 40, 72, 16}, fourColors())
             .add(37, {1})
             .noPen()
             .rectangle(0, 0, 40, 30)
             .file(40, 30),
         {{0, 0, redInk}, {1, 0, greenInk}, {38, 29, blueInk}, {39, 29, white}}},
    });
}

void MetafileTest::windowsRecords() {
    const auto wmf = [](auto&& add) {
        WmfMaker m;
        m.window(40, 30).pen(5, 0, 0).select(0).brush(red).select(1);
        add(m);
        return m.file();
    };
    check({
        {"rectangle",
         wmf([](WmfMaker& m) {
             m.add(0x41b, {20, 30, 5, 10});
         }),
         {{10, 5, redInk}, {29, 19, redInk}, {30, 20, white}}},
        {"polygons",
         wmf([](WmfMaker& m) {
             m.add(0x538, {2, 4, 4, 0, 0, 20, 0, 20, 20, 0, 20, 5, 5, 15, 5, 15, 15, 5, 15});
         }),
         {{2, 2, redInk}, {10, 10, white}, {17, 17, redInk}}},
        {"objects take the first free number",
         wmf([](WmfMaker& m) {
             m.add(0x1f0, {0}).brush(green).select(0).add(0x41b, {20, 30, 5, 10});
         }),
         {{15, 10, greenInk}}},
        {"a moved window",
         wmf([](WmfMaker& m) {
             m.add(0x20f, {-5, -10}).add(0x41b, {5, 5, 0, 0});
         }),
         {{10, 5, redInk}, {9, 4, white}}},
        {"a bitmap",
         wmf([](WmfMaker& m) {
             m.add(0xf43, {0x20, 0xcc, 0, 2, 2, 0, 0, 4, 4, 10, 20}, fourColors());
         }),
         {{20, 10, redInk}, {23, 13, white}, {23, 10, greenInk}, {20, 13, blueInk}}},
        {"a bitmap of the device",
         wmf([](WmfMaker& m) {
             m.add(0x940, {0x20, 0xcc, 0, 1, 2, 1, 10, 20}, fourColors());
         }),
         {{20, 10, greenInk}, {20, 11, white}, {21, 10, white}}},
        {"inverted",
         wmf([](WmfMaker& m) {
             m.add(0x61d, {9, 0x55, 5, 5, 2, 3});
         }),
         {{3, 2, black}, {7, 6, black}, {8, 7, white}}},
        {"a region",
         wmf([](WmfMaker& m) {
             m.add(0x6ff, {0, 6, 0, 0, 0, 1, 4, 0, 0, 9, 9, 4, 3, 8, 5, 10, 20, 25, 4})
                 .add(0x12b, {2});
         }),
         {{5, 3, redInk}, {9, 7, redInk}, {12, 5, white}, {24, 5, redInk}}},
        {"a pixel",
         wmf([](WmfMaker& m) {
             m.add(0x41f, {int(blue & 0xffff), int(blue >> 16), 7, 9});
         }),
         {{9, 7, blueInk}, {10, 7, white}}},
    });
}

// Which pixels letters cover depends on the fonts of the machine; where they are does not.
void MetafileTest::text() {
    const auto line = [](int align, auto&& before) {
        EmfMaker m;
        before(m);
        return drawn(m.add(18, {1}).add(22, {align}).text(50, 40, "HHH").file(100, 80));
    };
    const auto plain = [](EmfMaker&) {};
    const Rect leftAbove{0, 0, 50, 40}, rightAbove{50, 0, 50, 40}, rightBelow{50, 40, 50, 40},
        leftBelow{0, 40, 50, 40};
    const auto only = [&](const Raster& raster, const Rect& where) {
        return darkPixels(raster, where) > 20 &&
               darkPixels(raster, where) == darkPixels(raster, raster.rect());
    };
    QVERIFY(only(line(0, plain), rightBelow));
    QVERIFY(only(line(24, plain), rightAbove));
    QVERIFY(only(line(8, plain), rightAbove));
    QVERIFY(only(line(2, plain), leftBelow));
    QVERIFY(only(line(26, plain), leftAbove));
    const auto turned = [](EmfMaker& m) {
        Bytes name(64 + 16);
        m.add(82, {1, -14, 0, 900, 900, 400, 0, 0}, name).add(37, {1});
    };
    QVERIFY(only(line(24, turned), leftAbove));
    // Symbols are letters of their own: alpha is no a, and is not left out.
    const auto symbol = [](const char* face) {
        Bytes font;
        for (const int word : {-30, 0, 0, 0, 400, 0, 0, 0, 0})
            putNumber(font, static_cast<std::uint16_t>(word), 2);
        font = joined(font, Bytes(face, face + std::strlen(face) + 1));
        return drawn(WmfMaker()
                         .window(60, 60)
                         .add(0x102, {1})
                         .add(0x2fb, {}, font)
                         .select(0)
                         .add(0x521, {1, 'a', 5, 5})
                         .file());
    };
    QVERIFY(darkPixels(symbol("Symbol"), {0, 0, 60, 60}) > 20);
    QVERIFY(!symbol("Symbol").samePixels(symbol("Serif")));
}

void MetafileTest::sizesAndResolutions() {
    struct Expected {
        const char* name;
        Bytes file;
        int width, height;
        double dpi;
    };
    const auto box = [](WmfMaker m) { return m.add(0x41b, {200, 300, 100, 100}); };
    const Expected sizes[] = {
        {"placeable: inches at 96 dpi",
         box(WmfMaker().window(2880, 1440)).placeable(2880, 1440, 1440), 192, 96, 96},
        {"placeable without a window", box(WmfMaker()).placeable(500, 250, 240), 200, 100, 96},
        {"plain: the window's units", box(WmfMaker().window(400, 300)).file(), 400, 300, 96},
        {"plain and fine: a usual size", box(WmfMaker().window(20000, 10000)).file(), 1024, 512,
         96},
        {"plain without a window: what is drawn", box(WmfMaker()).file(), 200, 100, 96},
        {"a screen's pixels", EmfMaker().rectangle(0, 0, 50, 50).file(120, 80), 120, 80, 100},
    };
    for (const Expected& size : sizes) {
        const Codec& codec = *codecForContent(size.file, "");
        const Page page = reread(codec, size.file).pages.front();
        QVERIFY2(page.raster.width() == size.width && page.raster.height() == size.height,
                 size.name);
        QCOMPARE(page.metadata->xDpi, size.dpi);
        QCOMPARE(codec.facts(size.file, {}).front().width, size.width);
    }
    // A printer's fine pixels are not the picture's: 96 dpi.
    Bytes printed = EmfMaker().rectangle(0, 0, 1200, 600).file(100, 50);
    for (const std::size_t at : {72, 76})
        for (int i = 0; i < 4; ++i)
            printed[at + std::size_t(i)] = static_cast<std::uint8_t>(12000 >> 8 * i);
    QCOMPARE(drawn(printed).size(), (imaging::Size{96, 48}));
}

void MetafileTest::refusals() {
    QCOMPARE(errorOf(wmfCodec(), WmfMaker().window(40, 30).file()),
             errors::invalidPicture); // nothing drawn
    QCOMPARE(errorOf(emfCodec(), EmfMaker().file(40, 30)), errors::invalidPicture);
    QVERIFY(codecForContent(WmfMaker().file(), "tga") == &wmfCodec());
    const Bytes plus = EmfMaker().add(70, {20, 0x2b464d45, 0x4001, 12, 0}).file(40, 30);
    try {
        reread(emfCodec(), plus);
        QFAIL("nothing was drawn");
    } catch (const RuntimeError& error) {
        QVERIFY(error.description().find("EMF+") != std::string::npos);
    }
    // Cut off: what stands before it is drawn, with a warning.
    Bytes cut = EmfMaker()
                    .noPen()
                    .brush(1, red)
                    .rectangle(0, 0, 9, 9)
                    .rectangle(20, 20, 30, 30)
                    .file(40, 30);
    cut.resize(cut.size() - 26);
    const Picture picture = reread(emfCodec(), cut);
    QCOMPARE(picture.warnings.size(), std::size_t{1});
    QCOMPARE(picture.pages.front().raster.pixel(5, 5), redInk);
}

// Files that ask for far more than they are worth end soon, within the limits.
void MetafileTest::unreasonable() {
    ReadLimits limits;
    limits.pixelBytes = 4 << 20;
    WmfMaker large;
    large.brush(0, 2, 5).select(0);
    for (int i = 0; i < 800; ++i)
        large.add(0x418, {32767, 32767, -32768, -32768})
            .add(0x61c, {9000, 9000, 32000, 32000, -1, -1});
    EmfMaker dashes;
    dashes.pen(1, 2, 1, 0);
    for (int i = 0; i < 1000; ++i)
        dashes.add(27, {-2000000000, i}).add(54, {2000000000, 2000000000 - i});
    EmfMaker deep;
    for (int i = 0; i < 5000; ++i)
        deep.add(33).add(36, {0x7f000000, 0, 0, 0x7f000000, 0, 0, 2}).rectangle(0, 0, 40, 30);
    const Bytes huge = WmfMaker()
                           .window(32767, 32767)
                           .brush(red)
                           .select(0)
                           .add(0x41b, {9, 9, 0, 0})
                           .placeable(32767, 32767, 1);
    for (const Bytes& file :
         {large.placeable(30000, 30000, 100), dashes.file(900, 900), deep.file(40, 30), huge}) {
        // Processor time: the machine may be busy with other things.
        const std::clock_t start = std::clock();
        const Picture picture = reread(*codecForContent(file, ""), file, limits);
        const double seconds = double(std::clock() - start) / CLOCKS_PER_SEC;
        QVERIFY(picture.pages.front().raster.byteSize() <= limits.pixelBytes);
        QVERIFY2(seconds < 8, qPrintable(QString::number(seconds))); // a sanitizer takes four times
    }
    for (const Bytes& file : {drawnWmf(), drawnEmf()})
        readDamaged(*codecForContent(file, ""), file, 7);
}

QTEST_GUILESS_MAIN(MetafileTest)
#include "metafile.moc"
