// Tone and colour, against their formulas written out pixel by pixel, and against their own laws.
#include <QtTest>
#include <array>
#include <cmath>
#include <functional>

#include "basic/error.h"
#include "imaging/operation.h"
#include "reference/instruction_sets.h"
#include "reference/pictures.h"

using namespace kvn::imaging;
using namespace reference;

namespace {

Raster run(const char* name, const Raster& source, std::vector<Value> values = {}) {
    Task task;
    return runOperation(*findOperation(name), source, std::move(values), task).front();
}

Value whole(std::int64_t number) {
    return number;
}

int byteOf(double value) {
    return static_cast<int>(std::lround(std::min(255.0, std::max(0.0, value))));
}

Rgba rgba(int r, int g, int b, int a) {
    const auto byte = [](int v) { return static_cast<std::uint8_t>(v); };
    return {byte(r), byte(g), byte(b), byte(a)};
}

int grayOf(const Rgba& c) {
    return luma(c.r, c.g, c.b);
}

bool near(const Rgba& a, const Rgba& b, int tolerance) {
    return std::abs(a.r - b.r) <= tolerance && std::abs(a.g - b.g) <= tolerance &&
           std::abs(a.b - b.b) <= tolerance && a.a == b.a;
}

using PixelRule = std::function<Rgba(Rgba)>;

// Whether every pixel is what the rule makes of the source's, over all types and a few sizes.
QString differs(const char* name, const std::vector<Value>& values, const PixelRule& rule,
                int tolerance = 0) {
    for (const ImageType type : everyType)
        for (const Size size : {Size{1, 1}, Size{7, 5}, Size{600, 3}}) {
            const Raster source = noise(type, size);
            const Raster result = run(name, source, values);
            for (int y = 0; y < size.height; ++y)
                for (int x = 0; x < size.width; ++x)
                    if (!near(result.pixel(x, y), rule(source.pixel(x, y)), tolerance))
                        return QString("%1, %2, at %3, %4")
                            .arg(name, nameOf(type).c_str())
                            .arg(x)
                            .arg(y);
        }
    return {};
}

Value colorValue(int r, int g, int b) {
    return rgba(r, g, b, 255);
}

std::array<int, 256> counts(const Raster& picture, int channel) {
    std::array<int, 256> result{};
    for (int y = 0; y < picture.height(); ++y)
        for (int x = 0; x < picture.width(); ++x) {
            const Rgba c = picture.pixel(x, y);
            ++result[channel == 0 ? c.r : channel == 1 ? c.g : c.b];
        }
    return result;
}

// Levels `low` to `high`, each as often as the others but for rounding.
Raster ramp(ImageType type, int low, int high) {
    Raster picture(type, 256, 20);
    for (int y = 0; y < 20; ++y)
        for (int x = 0; x < 256; ++x) {
            const int v = low + (high - low) * x / 255;
            picture.setPixel(x, y, rgba(v, (v + 20) / 2, low, 255));
        }
    return picture;
}

} // namespace

class ToneTest : public QObject {
    Q_OBJECT

  private slots:
    void neutralChangesNothing();
    void colorsByFormula();
    void onEveryMachine();
    void colorize();
    void duotoneKeepsLuma();
    void replacesColor();
    void normalizedDifference();
    void stretchFillsTheLimits();
    void findsTheEnds();
    void equalizeIsEven();
    void autoBrightness();
    void clearPixelsDoNotCount();
};

void ToneTest::neutralChangesNothing() {
    for (const ImageType type : everyType) {
        const Raster source = noise(type, {67, 9});
        QVERIFY(run("Effects.Saturation", source, {1.0}).sharesPixelsWith(source));
        QVERIFY(run("Effects.Tint", source, {whole(0)}).sharesPixelsWith(source));
        QVERIFY(run("Effects.Colorize", source, {Rgba{}, false, false, false}).samePixels(source));
        for (const char* name : {"Geometry.HistogramStretch", "Geometry.HistogramEqualize"}) {
            QVERIFY(run(name, source, {whole(0), whole(255), whole(0)}).samePixels(source));
            const Raster flat = Raster::filled(type, 5, 5, {9, 9, 9, 255});
            QVERIFY(run(name, flat, {whole(0), whole(255), whole(7)}).samePixels(flat));
        }
    }
}

void ToneTest::colorsByFormula() {
    for (const double level : {0.0, 0.5, 2.0, 10.0})
        QCOMPARE(differs("Effects.Saturation", {level},
                         [level](Rgba c) {
                             const int l = grayOf(c);
                             const auto away = [&](int v) { return byteOf(l + level * (v - l)); };
                             return rgba(away(c.r), away(c.g), away(c.b), c.a);
                         }),
                 QString());
    for (const bool ignoreAlpha : {true, false})
        QCOMPARE(differs("Effects.Threshold", {whole(60), whole(255), ignoreAlpha},
                         [ignoreAlpha](Rgba c) {
                             const auto cut = [](int v) { return v >= 60 ? 255 : 0; };
                             const int v = cut(grayOf(c));
                             return rgba(v, v, v, ignoreAlpha ? c.a : cut(c.a));
                         }),
                 QString());
    // Green and magenta are each other's opposites, and brightness stays.
    const Raster source = Raster::filled(ImageType::Rgb24, 2, 2, {120, 110, 100, 255});
    const Rgba magenta = run("Effects.Tint", source, {whole(80)}).pixel(0, 0);
    const Rgba green = run("Effects.Tint", source, {whole(-80)}).pixel(0, 0);
    QVERIFY(magenta.r > 140 && magenta.g < 95 && magenta.b > 120);
    QVERIFY(green.r < 100 && green.g > 125 && green.b < 80);
    for (const Rgba& c : {magenta, green})
        QVERIFY(std::abs(grayOf(c) - 112) <= 1);
}

void ToneTest::onEveryMachine() {
    onEveryInstructionSet([this] {
        colorsByFormula();
        duotoneKeepsLuma();
        replacesColor();
        findsTheEnds();
    });
}

void ToneTest::colorize() {
    const Rgba ink{200, 90, 20, 255};
    const Hsl own = hslFromRgb(ink.r, ink.g, ink.b);
    for (int flags = 1; flags < 8; ++flags) {
        const bool hue = flags & 1, saturation = flags & 2, luminance = flags & 4;
        QCOMPARE(differs(
                     "Effects.Colorize", {ink, hue, saturation, luminance},
                     [&](Rgba c) {
                         Hsl hsl = hslFromRgb(c.r, c.g, c.b);
                         const bool gray = hsl.s <= 0;
                         if (hue) hsl.h = own.h;
                         if (saturation && (hue || !gray)) hsl.s = own.s;
                         if (luminance) hsl.l = own.l;
                         const RgbReal rgb = rgbFromHsl(hsl);
                         return rgba(byteOf(rgb.r), byteOf(rgb.g), byteOf(rgb.b), c.a);
                     },
                     1),
                 QString());
    }
}

void ToneTest::duotoneKeepsLuma() {
    for (const Rgba ink : {Rgba{160, 60, 20, 255}, Rgba{0, 0, 0, 255}, Rgba{255, 255, 255, 255}})
        for (const ImageType type : everyType) {
            const Raster source = noise(type, {67, 9});
            const Raster result = run("Effects.Duotone", source, {ink});
            for (int y = 0; y < 9; ++y)
                for (int x = 0; x < 67; ++x) {
                    const Rgba before = source.pixel(x, y), after = result.pixel(x, y);
                    QVERIFY(std::abs(grayOf(before) - grayOf(after)) <= 1);
                    QCOMPARE(after.a, before.a);
                    if (grayOf(before) == grayOf(ink))
                        QVERIFY(near(rgba(after.r, after.g, after.b, 255), ink, 1));
                }
        }
}

void ToneTest::replacesColor() {
    const auto matches = [](const Rgba& c, int reach) {
        return std::abs(c.r - 120) <= reach && std::abs(c.g - 90) <= reach &&
               std::abs(c.b - 150) <= reach;
    };
    for (const bool opaque : {true, false})
        for (const double tolerance : {0.0, 30.0, 100.0})
            QCOMPARE(differs("Geometry.ReplaceColor",
                             {colorValue(120, 90, 150), colorValue(1, 2, 3), tolerance, opaque},
                             [&](Rgba c) {
                                 const int reach = static_cast<int>(tolerance * 2.55 + 1e-6);
                                 return matches(c, reach) ? rgba(1, 2, 3, opaque ? c.a : 0) : c;
                             }),
                     QString());
}

void ToneTest::normalizedDifference() {
    for (const ImageType type : everyType) {
        const Raster a = noise(type, {201, 5});
        const auto b = std::make_shared<const Raster>(noise(type, {201, 5}, 8));
        const Raster result =
            run("Effects.NormalizedDifference", a, {RasterRef(b), whole(0), 0.7, 0.1});
        for (int y = 0; y < 5; ++y)
            for (int x = 0; x < 201; ++x) {
                const Rgba p = a.pixel(x, y), q = b->pixel(x, y);
                const auto share = [](double v, double w) {
                    return byteOf(127.5 +
                                  127.5 * ((v + w > 0 ? (v - w) / (v + w) : 0) * 0.7 + 0.1));
                };
                QVERIFY(near(result.pixel(x, y),
                             rgba(share(p.r, q.r), share(p.g, q.g), share(p.b, q.b), p.a), 1));
            }
        const auto small = std::make_shared<const Raster>(noise(type, {9, 9}));
        QVERIFY_EXCEPTION_THROWN(
            run("Effects.NormalizedDifference", a, {RasterRef(small), whole(0), 1.0, 0.0}),
            kvn::RuntimeError);
    }
}

void ToneTest::stretchFillsTheLimits() {
    const Raster source = ramp(ImageType::Rgb24, 60, 160);
    const Raster result =
        run("Geometry.HistogramStretch", source, {whole(10), whole(240), whole(1)});
    const auto red = counts(result, 0);
    QVERIFY(red[10] > 0 && red[240] > 0);
    for (int x = 0; x < 256; ++x) {
        const Rgba before = source.pixel(x, 3), after = result.pixel(x, 3);
        QVERIFY(std::abs(after.r - (10 + (before.r - 60) * 2.3)) < 0.501);
        QCOMPARE(after.g, before.g); // not of the mask
    }
    const Raster gray = run("Geometry.HistogramStretch", ramp(ImageType::Gray8, 90, 91),
                            {whole(0), whole(255), whole(7)});
    QCOMPARE(gray.type(), ImageType::Gray8);
    // A single bright speck among many pixels does not keep the rest dark.
    Raster speck = Raster::filled(ImageType::Gray8, 100, 100, {20, 20, 20, 255});
    for (int x = 0; x < 100; ++x)
        speck.setPixel(x, 50, {100, 100, 100, 255});
    speck.setPixel(5, 5, {255, 255, 255, 255});
    QCOMPARE(
        int{run("Geometry.HistogramStretch", speck, {whole(0), whole(255), whole(7)}).index(9, 50)},
        255);
}

// Large pictures have the ends of their ranges found without counting all values; the result is
// that of counting.
void ToneTest::findsTheEnds() {
    std::mt19937 random(5);
    for (const ImageType type : {ImageType::Rgb24, ImageType::Gray8})
        for (const int kind : {0, 1, 2, 3}) {
            Raster source(type, 531, 521);
            const View view = source.edit();
            for (int y = 0; y < source.height(); ++y)
                for (std::size_t i = 0; i < source.rowBytes(); ++i) {
                    const auto n = static_cast<int>(random() % 1000);
                    const int smooth = 60 + static_cast<int>(i % 3) * 20 + n % 90;
                    const int values[] = {n % 256, n == 0 ? y % 30 : smooth, n < 2 ? 255 : 7,
                                          y < 5 ? y : 200 + n % 8};
                    view.row(y)[i] = static_cast<std::uint8_t>(values[kind]);
                }
            const std::int64_t spare = std::int64_t{source.width()} * source.height() / 1000;
            const Raster result =
                run("Geometry.HistogramStretch", source, {whole(0), whole(255), whole(7)});
            for (int c = 0; c < 3; ++c) {
                const auto counted = counts(source, c);
                int low = 0, high = 255;
                for (std::int64_t left = spare; (left -= counted[low]) >= 0;)
                    ++low;
                for (std::int64_t left = spare; (left -= counted[high]) >= 0;)
                    --high;
                for (int x = 0; x < source.width(); ++x) {
                    const auto channel = [c](const Rgba& p) {
                        return c == 0 ? p.r : c == 1 ? p.g : p.b;
                    };
                    const int v = channel(source.pixel(x, x));
                    const int wanted = low < high ? byteOf(255.0 * (v - low) / (high - low)) : v;
                    QCOMPARE(int{channel(result.pixel(x, x))}, wanted);
                }
            }
        }
}

void ToneTest::equalizeIsEven() {
    Raster source(ImageType::Gray8, 256, 64);
    for (int y = 0; y < 64; ++y)
        for (int x = 0; x < 256; ++x) {
            const int v = x * x / 255; // most of it dark
            source.setPixel(x, y, rgba(v, v, v, 255));
        }
    const Raster result =
        run("Geometry.HistogramEqualize", source, {whole(0), whole(255), whole(7)});
    const auto after = counts(result, 0);
    int below = 0;
    for (int v = 0; v < 256; ++v) {
        below += after[static_cast<std::size_t>(v)];
        if (after[static_cast<std::size_t>(v)] > 0)
            QVERIFY(std::abs(below / (256.0 * 64) - v / 255.0) < 0.07);
    }
    // Outside the limits nothing moves; inside, nothing leaves them and the order stays.
    const Raster part =
        run("Geometry.HistogramEqualize", source, {whole(200), whole(50), whole(7)});
    for (int x = 0; x < 256; ++x) {
        const int v = source.index(x, 0), w = part.index(x, 0);
        if (v < 50 || v > 200)
            QCOMPARE(w, v);
        else
            QVERIFY(w >= 50 && w <= 200);
        if (x > 0) QVERIFY(w >= part.index(x - 1, 0));
    }
}

void ToneTest::autoBrightness() {
    for (const ImageType type : {ImageType::Gray8, ImageType::Rgb24, ImageType::Indexed8}) {
        Raster source = ramp(ImageType::Gray8, 70, 130);
        if (type == ImageType::Rgb24)
            source = run("Effects.Duotone", source, {colorValue(9, 9, 9)});
        if (type == ImageType::Indexed8)
            source = run("Geometry.Dither", source, {whole(64), false, false});
        for (const bool even : {false, true}) {
            const Raster result =
                run("Effects.AutoBrightness", source, {whole(8), whole(248), even});
            QCOMPARE(result.type(), source.type());
            QVERIFY(result.pixel(0, 0).r < 4 && result.pixel(255, 0).r > 251);
            QVERIFY(std::abs(result.pixel(128, 0).r - 127) < 6);
        }
    }
    const Raster dark = Raster::filled(ImageType::Gray8, 9, 9, {3, 3, 3, 255});
    QVERIFY(run("Effects.AutoBrightness", dark, {whole(8), whole(248), true}).samePixels(dark));
}

void ToneTest::clearPixelsDoNotCount() {
    Raster source = Raster::filled(ImageType::Rgba32, 30, 30, {255, 0, 255, 0});
    for (int y = 0; y < 30; ++y)
        for (int x = 0; x < 15; ++x)
            source.setPixel(x, y, rgba(100 + x, 100 + x, 100 + x, 200));
    const Raster result =
        run("Geometry.HistogramStretch", source, {whole(0), whole(255), whole(7)});
    QCOMPARE(result.pixel(0, 4), rgba(0, 0, 0, 200));
    QCOMPARE(result.pixel(14, 4), rgba(255, 255, 255, 200));
}

QTEST_GUILESS_MAIN(ToneTest)
#include "ops_tone.moc"
