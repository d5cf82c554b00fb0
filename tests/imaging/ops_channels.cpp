// Channels and alpha, against their formulas written out pixel by pixel.
#include <QtTest>
#include <cmath>
#include <functional>

#include "basic/error.h"
#include "imaging/alpha_merge.h"
#include "imaging/operation.h"
#include "reference/instruction_sets.h"
#include "reference/pictures.h"

using namespace kvn::imaging;
using namespace reference;

namespace {

std::vector<Raster> pagesOf(const char* name, const Raster& source, std::vector<Value> values) {
    Task task;
    return runOperation(*findOperation(name), source, std::move(values), task);
}

Raster run(const char* name, const Raster& source, std::vector<Value> values = {}) {
    return pagesOf(name, source, std::move(values)).front();
}

Value whole(std::int64_t number) {
    return number;
}

int byteOf(double value) {
    return static_cast<int>(std::lround(std::min(255.0, std::max(0.0, value))));
}

bool near(const Rgba& a, const Rgba& b, int tolerance) {
    return std::abs(a.r - b.r) <= tolerance && std::abs(a.g - b.g) <= tolerance &&
           std::abs(a.b - b.b) <= tolerance && a.a == b.a;
}

// The first pixel that is not what `expected` makes of the source's; empty if all are.
QString differs(const Raster& source, const Raster& result,
                const std::function<Rgba(Rgba)>& expected, int tolerance = 0) {
    for (int y = 0; y < source.height(); ++y)
        for (int x = 0; x < source.width(); ++x) {
            const Rgba was = source.pixel(x, y), is = result.pixel(x, y), wanted = expected(was);
            if (!near(is, wanted, tolerance))
                return QString("%1: %2 %3 %4 %5 became %6 %7 %8 %9")
                           .arg(nameOf(source.type()).c_str())
                           .arg(was.r)
                           .arg(was.g)
                           .arg(was.b)
                           .arg(was.a)
                           .arg(is.r)
                           .arg(is.g)
                           .arg(is.b)
                           .arg(is.a) +
                       QString(", not %1 %2 %3 %4")
                           .arg(wanted.r)
                           .arg(wanted.g)
                           .arg(wanted.b)
                           .arg(wanted.a);
        }
    return {};
}

Rgba rgba(int r, int g, int b, int a) {
    const auto byte = [](int v) { return static_cast<std::uint8_t>(v); };
    return {byte(r), byte(g), byte(b), byte(a)};
}

#define QALIKE(...)                                                                                \
    do {                                                                                           \
        const QString difference = differs(__VA_ARGS__);                                           \
        QVERIFY2(difference.isEmpty(), qPrintable(difference));                                    \
    } while (false)

} // namespace

class ChannelsTest : public QObject {
    Q_OBJECT

  private slots:
    void nothingToDoChangesNothing();
    void adjusts();
    void adjustsHsl();
    void hslKeepsEveryColor();
    void alphaByColor();
    void mergesAlpha();
    void masksComeFromPictures();
    void antialiasShowsNoFringe();
    void flattens();
    void rearranges();
    void shiftsRound();
    void onEveryMachine();
};

void ChannelsTest::nothingToDoChangesNothing() {
    for (const ImageType type : everyType) {
        const Raster source = noise(type, {67, 9});
        const std::vector<Value> zeros(4, whole(0)), fewer(3, whole(0));
        for (const char* name : {"Channels.AdjustLiteral", "Channels.AdjustPercent"})
            QVERIFY(run(name, source, zeros).samePixels(source));
        for (const char* name : {"Channels.AdjustHSLLiteral", "Channels.AdjustHSLPercent"})
            QVERIFY(run(name, source, fewer).samePixels(source));
        QVERIFY(run("Channels.AdjustHSLLiteral", source, {whole(255), whole(0), whole(0)})
                    .samePixels(source));
        QVERIFY(run("Channels.Swizzle", source, {whole(0), whole(1), whole(2), whole(3)})
                    .samePixels(source));
        QVERIFY(run("Channels.Shift", source, {whole(7), whole(67), whole(-9)}).samePixels(source));
        QVERIFY(run("Channels.ConstantAlpha", source, {whole(3), whole(8)}).samePixels(source));
        QVERIFY(run("Channels.AntialiasAlpha", source, {-1.0}).samePixels(source));
    }
}

void ChannelsTest::adjusts() {
    for (const ImageType type : everyType)
        for (const Size size : awkwardSizes) {
            const Raster source = noise(type, size);
            QALIKE(source,
                   run("Channels.AdjustLiteral", source,
                       {whole(90), whole(-90), whole(999), whole(-20)}),
                   [](Rgba c) {
                       return rgba(byteOf(c.r + 90), byteOf(c.g - 90), 255, byteOf(c.a - 20));
                   });
            QALIKE(source, run("Channels.AdjustPercent", source, {50.0, -100.0, -25.0, -50.0}),
                   [](Rgba c) {
                       return rgba(byteOf(c.r * 1.5), 0, byteOf(c.b * 0.75), byteOf(c.a * 0.5));
                   });
        }
}

void ChannelsTest::adjustsHsl() {
    const auto expected = [](Rgba c, double hue, double saturation, double luminance,
                             double saturationFactor, double luminanceFactor) {
        Hsl hsl = hslFromRgb(c.r, c.g, c.b);
        if (hsl.s > 0) hsl.s = std::max(0.0, hsl.s * saturationFactor + saturation);
        hsl.l = hsl.l * luminanceFactor + luminance;
        hsl.h += hue;
        const RgbReal rgb = rgbFromHsl(hsl);
        return rgba(byteOf(rgb.r), byteOf(rgb.g), byteOf(rgb.b), c.a);
    };
    constexpr int offsets[][3] = {{85, 0, 0}, {-30, 60, -20}, {0, -255, 0}, {200, 255, 90}};
    for (const ImageType type : everyType)
        for (const auto& o : offsets) {
            const Raster source = noise(type, {67, 9});
            QALIKE(
                source,
                run("Channels.AdjustHSLLiteral", source, {whole(o[0]), whole(o[1]), whole(o[2])}),
                [&](Rgba c) { return expected(c, o[0], o[1], o[2], 1, 1); }, 1);
            const double hue = o[0] / 2.55, saturation = o[1] / 2.55, luminance = o[2] / 2.55;
            QALIKE(
                source, run("Channels.AdjustHSLPercent", source, {hue, saturation, luminance}),
                [&](Rgba c) {
                    return expected(c, o[0], 0, 0, 1 + saturation / 100, 1 + luminance / 100);
                },
                1);
        }
}

// The computation itself is exact enough to give back every colour: a turn that is all but none.
void ChannelsTest::hslKeepsEveryColor() {
    Raster all(ImageType::Rgb24, 2048, 512);
    const View view = all.edit();
    for (int i = 0; i < 2048 * 512; ++i) { // every sixteenth colour, all levels of each channel
        std::uint8_t* p = view.row(i / 2048) + i % 2048 * 3;
        p[0] = static_cast<std::uint8_t>(i);
        p[1] = static_cast<std::uint8_t>(i >> 8);
        p[2] = static_cast<std::uint8_t>((i >> 16) * 16 + i % 13);
    }
    QVERIFY(run("Channels.AdjustHSLPercent", all, {1e-6, 0.0, 0.0}).samePixels(all));
}

void ChannelsTest::alphaByColor() {
    for (const ImageType type : everyType) {
        const Raster source = noise(type, {257, 13});
        const Rgba color = source.pixel(5, 5);
        for (const double tolerance : {0.0, 20.0, 100.0})
            for (const int how : {0, 4, 7}) {
                const Raster result =
                    run("Channels.AlphaByColor", source,
                        {color, tolerance, whole(10), whole(240), whole(0), whole(0), whole(how)});
                QVERIFY(hasAlpha(result.type()) && hasPalette(result.type()) == hasPalette(type));
                QALIKE(source, result, [&](Rgba c) {
                    const int reach = static_cast<int>(std::floor(tolerance * 2.55 + 1e-6));
                    Rgba wanted = color;
                    wanted.a = c.a;
                    const bool same = near(c, wanted, reach);
                    c.a = mergedAlpha(static_cast<AlphaMerge>(how), c.a, same ? 10 : 240);
                    return c;
                });
            }
    }
}

void ChannelsTest::mergesAlpha() {
    // Present 200 and new 100: by the names of the nine ways.
    constexpr int wanted[] = {100, 200, 100, 255, 100, 200 & 100, 200 | 100, 200 ^ 100, 200};
    const Raster source = Raster::filled(ImageType::Rgba32, 3, 3, {1, 2, 3, 200});
    const auto mask = std::make_shared<const Raster>(
        Raster::filled(ImageType::Rgb24, 9, 9, {100, 100, 100, 255}));
    for (int how = 0; how < alphaMergeCount; ++how) {
        const Rgba expected = rgba(1, 2, 3, wanted[how]);
        QCOMPARE(run("Channels.ConstantAlpha", source, {whole(100), whole(how)}).pixel(1, 1),
                 expected);
        QCOMPARE(run("Channels.AlphaFromImage", source,
                     {RasterRef(mask), true, whole(0), whole(0), whole(how)})
                     .pixel(2, 2),
                 expected);
    }
    QVERIFY_EXCEPTION_THROWN(run("Channels.ConstantAlpha", source, {whole(1), whole(9)}),
                             kvn::RuntimeError);
    Matrix inverse{1, 256, {}};
    for (int i = 0; i < 256; ++i)
        inverse.values.push_back(255 - i);
    for (const ImageType type : everyType) {
        const Raster picture = noise(type, {31, 7});
        const Raster inverted = run("Channels.AlphaTable", picture, {inverse});
        QALIKE(picture, inverted, [](Rgba c) { return rgba(c.r, c.g, c.b, 255 - c.a); });
        QALIKE(picture, run("Channels.AlphaTable", inverted, {inverse}), [](Rgba c) { return c; });
        QALIKE(picture, run("Channels.ClearAlpha", picture),
               [](Rgba c) { return rgba(c.r, c.g, c.b, 255); });
    }
    QVERIFY_EXCEPTION_THROWN(run("Channels.AlphaTable", source, {Matrix{1, 2, {1, 2}}}),
                             kvn::RuntimeError);
}

void ChannelsTest::masksComeFromPictures() {
    for (const ImageType type : everyType)
        for (const ImageType maskType : everyType)
            for (const Point at : {Point{0, 0}, Point{-3, 4}, Point{600, -2}, Point{900, 0}}) {
                const Raster source = noise(type, {601, 7});
                const auto mask = std::make_shared<const Raster>(noise(maskType, {570, 5}, 9));
                const Raster result =
                    run("Channels.AlphaFromImage", source,
                        {RasterRef(mask), false, whole(at.x), whole(at.y), whole(0)});
                for (int y = 0; y < 7; ++y)
                    for (int x = 0; x < 601; ++x) {
                        Rgba expected = source.pixel(x, y);
                        if (Rect{x, y, 1, 1}.intersected({at.x, at.y, 570, 5}).width == 1) {
                            const Rgba m = mask->pixel(x - at.x, y - at.y);
                            expected.a = mul255(luma(m.r, m.g, m.b), m.a);
                        }
                        QCOMPARE(result.pixel(x, y), expected);
                    }
            }
}

void ChannelsTest::antialiasShowsNoFringe() {
    // Red beside clear green: red stays alone, alpha falls softly and evenly.
    Raster source(ImageType::Rgba32, 40, 12);
    for (int y = 0; y < 12; ++y)
        for (int x = 0; x < 40; ++x)
            source.setPixel(x, y, x < 20 ? Rgba{255, 0, 0, 255} : Rgba{0, 255, 0, 0});
    const Raster result = run("Channels.AntialiasAlpha", source, {2.0});
    for (int x = 1; x < 40; ++x) {
        const Rgba left = result.pixel(x - 1, 6), right = result.pixel(x, 6);
        QVERIFY(left.a >= right.a);
        QVERIFY(right.a < 2 || (right.r > 253 && right.g < 2));
        QVERIFY(std::abs(right.a + result.pixel(39 - x, 6).a - 255) <= 2);
    }
    QVERIFY(result.pixel(19, 6).a < 170 && result.pixel(20, 6).a > 85);
}

void ChannelsTest::flattens() {
    for (const ImageType type : everyType)
        for (const Rgba under : {Rgba{30, 30, 30, 0}, Rgba{255, 128, 0, 255}}) {
            const Raster source = noise(type, {67, 9});
            const Raster result = run("Channels.FlattenAlpha", source, {under});
            QVERIFY(!hasAlpha(result.type()));
            QALIKE(source, result, [&](Rgba c) {
                const auto mix = [&](int a, int b) {
                    return byteOf((a * c.a + b * (255 - c.a)) / 255.0);
                };
                return rgba(mix(c.r, under.r), mix(c.g, under.g), mix(c.b, under.b), 255);
            });
        }
}

void ChannelsTest::rearranges() {
    constexpr int orders[][4] = {{1, 0, 2, 3}, {2, 1, 0, 3}, {3, 3, 0, 1}, {0, 1, 2, 0}};
    for (const ImageType type : everyType)
        for (const Size size : {Size{1, 1}, Size{700, 3}}) {
            const Raster source = noise(type, size);
            for (const auto& o : orders)
                QALIKE(source,
                       run("Channels.Swizzle", source,
                           {whole(o[0]), whole(o[1]), whole(o[2]), whole(o[3])}),
                       [&](Rgba c) {
                           const int v[4] = {c.r, c.g, c.b, c.a};
                           return rgba(v[o[0]], v[o[1]], v[o[2]], v[o[3]]);
                       });
            QALIKE(source, run("Channels.Desaturate", source), [](Rgba c) {
                const int gray = luma(c.r, c.g, c.b);
                return rgba(gray, gray, gray, c.a);
            });
            const auto pages = pagesOf("Channels.Split", source, {});
            QCOMPARE(pages.size(), hasAlpha(type) ? 4u : 3u);
            for (int y = 0; y < size.height; ++y)
                for (int x = 0; x < size.width; ++x) {
                    const Rgba c = source.pixel(x, y);
                    const int v[4] = {c.r, c.g, c.b, c.a};
                    for (std::size_t i = 0; i < pages.size(); ++i)
                        QCOMPARE(int{pages[i].index(x, y)}, v[i]);
                }
        }
}

void ChannelsTest::shiftsRound() {
    for (const ImageType type : everyType)
        for (const int mask : {1, 2, 6, 7}) {
            const Raster source = noise(type, {201, 7});
            const Raster result =
                run("Channels.Shift", source, {whole(mask), whole(-70), whole(3)});
            for (int y = 0; y < 7; ++y)
                for (int x = 0; x < 201; ++x) {
                    Rgba expected = source.pixel(x, y);
                    const Rgba moved = source.pixel((x + 70) % 201, (y + 4) % 7);
                    if (mask & 1) expected.r = moved.r;
                    if (mask & 2) expected.g = moved.g;
                    if (mask & 4) expected.b = moved.b;
                    QCOMPARE(result.pixel(x, y), expected);
                }
        }
}

void ChannelsTest::onEveryMachine() {
    onEveryInstructionSet([this] {
        adjusts();
        flattens();
        rearranges();
    });
}

QTEST_GUILESS_MAIN(ChannelsTest)
#include "ops_channels.moc"
