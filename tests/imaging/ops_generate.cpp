// Pictures from nothing: gradients hold their formula and show no steps, noise has its scales.
#include <QtTest>
#include <cmath>
#include <numbers>

#include "basic/error.h"
#include "imaging/operation.h"
#include "reference/pictures.h"

using namespace kvn::imaging;
using namespace reference;

namespace {

Value whole(int number) {
    return std::int64_t{number};
}

Raster made(const char* name, std::vector<Value> values) {
    Task task;
    return runOperation(*findOperation(name), Raster(), std::move(values), task).front();
}

struct Way {
    Rgba start, end;
    Point from, to;
    int form = 0, repetition = 0;
    double scale = 1;
};

Raster gradient(Size size, int kind, const Way& way) {
    return made("Geometry.Gradient",
                {whole(size.width), whole(size.height), whole(kind), way.start, way.end, way.from,
                 way.to, whole(way.form), way.scale, whole(way.repetition)});
}

// The share of the way at a place, from the definitions of the forms.
double shareAt(const Way& way, double x, double y) {
    const double wx = way.to.x - way.from.x, wy = way.to.y - way.from.y;
    const double px = x - way.from.x, py = y - way.from.y;
    const double length = std::hypot(wx, wy) * way.scale;
    const double along = (px * wx + py * wy) / std::hypot(wx, wy) / length;
    const double across = (py * wx - px * wy) / std::hypot(wx, wy) / length;
    const double turn = std::atan2(across, along) / (2 * std::numbers::pi);
    const double shares[] = {along, std::hypot(px, py) / length, turn < 0 ? turn + 1 : turn,
                             std::abs(along), std::max(std::abs(along), std::abs(across))};
    const double t = shares[way.form];
    if (way.repetition == 1) return t - std::floor(t);
    if (way.repetition == 2) return std::abs(t - 2 * std::round(t / 2));
    return std::clamp(t, 0.0, 1.0);
}

double meanStep(const Raster& gray, int distance) {
    double sum = 0;
    int count = 0;
    for (int y = 0; y < gray.height(); y += 3)
        for (int x = 0; x + distance < gray.width(); x += 3, ++count)
            sum += std::abs(gray.index(x, y) - gray.index(x + distance, y));
    return sum / count;
}

} // namespace

class GenerateTest : public QObject {
    Q_OBJECT

  private slots:
    void gradientsHoldTheirFormula();
    void slowGradientsShowNoSteps();
    void clearEndsLendNoColor();
    void gradientsHaveAllTypes();
    void noiseHasItsScales();
};

void GenerateTest::gradientsHoldTheirFormula() {
    for (int form = 0; form < 5; ++form)
        for (const int repetition : {0, 1, 2})
            for (const double scale : {1.0, 0.4}) {
                const Way way{{250, 20, 99}, {10, 230, 100}, {40, 25}, {70, 41},
                              form,          repetition,     scale};
                const Raster result = gradient({130, 67}, 5, way);
                QCOMPARE(result.type(), ImageType::Rgb24);
                for (int y = 0; y < 67; ++y)
                    for (int x = 0; x < 130; ++x) {
                        const double t = shareAt(way, x, y);
                        // Where it jumps the last bit decides.
                        if (repetition == 1 && (t < 1e-4 || t > 1 - 1e-4)) continue;
                        if (form == 2 && (t < 1e-4 || t > 1 - 1e-4)) continue;
                        const Rgba c = result.pixel(x, y);
                        QVERIFY(std::abs(c.r - (250 - 240 * t)) < 1.001);
                        QVERIFY(std::abs(c.g - (20 + 210 * t)) < 1.001);
                        QVERIFY(c.b == 99 || c.b == 100);
                    }
                if (repetition == 0 && form < 2 && scale == 1) {
                    QCOMPARE(result.pixel(40, 25), way.start);
                    QCOMPARE(result.pixel(70, 41), way.end);
                    QCOMPARE(result.pixel(129, 66), way.end); // beyond the end, exactly
                }
            }
}

// From 100 to 104 over 2000 pixels: the mean of any small square is within a fraction of a level.
void GenerateTest::slowGradientsShowNoSteps() {
    const Way way{{100, 100, 100}, {104, 104, 104}, {0, 0}, {2000, 0}};
    const Raster result = gradient({2000, 24}, 3, way);
    for (int x0 = 0; x0 + 24 <= 2000; x0 += 8) {
        double sum = 0;
        for (int y = 0; y < 24; ++y)
            for (int x = x0; x < x0 + 24; ++x)
                sum += result.index(x, y);
        QVERIFY(std::abs(sum / (24 * 24) - (100 + 4 * (x0 + 11.5) / 2000)) < 0.03);
    }
}

void GenerateTest::clearEndsLendNoColor() {
    const Way way{{255, 0, 0, 255}, {0, 255, 0, 0}, {0, 0}, {99, 0}};
    const Raster result = gradient({100, 2}, 6, way);
    for (int x = 0; x < 99; ++x) {
        const Rgba c = result.pixel(x, 1);
        QCOMPARE((Rgba{c.r, c.g, c.b}), (Rgba{255, 0, 0}));
        QVERIFY(std::abs(c.a - (255 - 255 * x / 99.0)) < 1.001);
    }
    QCOMPARE(result.pixel(99, 0).a, uchar{0});
}

void GenerateTest::gradientsHaveAllTypes() {
    const Way way{{10, 60, 200, 255}, {250, 240, 30, 40}, {0, 0}, {0, 63}};
    for (int kind = 0; kind < 7; ++kind)
        QCOMPARE(static_cast<int>(gradient({32, 64}, kind, way).type()), kind);
    const Way point{{9, 9, 9}, {7, 8, 9}, {5, 5}, {5, 5}};
    QVERIFY(gradient({9, 9}, 5, point)
                .samePixels(Raster::filled(ImageType::Rgb24, 9, 9, {7, 8, 9, 255})));
    QVERIFY_EXCEPTION_THROWN(gradient({0, 9}, 5, way), kvn::RuntimeError);
    QVERIFY_EXCEPTION_THROWN(gradient({9, 2000000}, 5, way), kvn::RuntimeError);
}

void GenerateTest::noiseHasItsScales() {
    const auto hugo = [](Size size, int octaves, int smoothness, int cells) {
        return made("Geometry.HugoNoise", {whole(size.width), whole(size.height), whole(octaves),
                                           whole(smoothness), whole(cells)});
    };
    const auto perlin = [](Size size, int cells) {
        return made("Geometry.PerlinNoise", {whole(size.width), whole(size.height), whole(cells)});
    };
    for (const Raster& picture : {hugo({300, 200}, 3, 50, 50), perlin({300, 200}, 50)}) {
        QCOMPARE(picture.type(), ImageType::Gray8);
        QCOMPARE(picture.size(), (Size{300, 200}));
        const auto [low, high] =
            std::minmax_element(picture.view().row(0), picture.view().row(199) + 300);
        QVERIFY(*low < 30 && *high > 225);
    }
    // More octaves, less smoothness and smaller cells roughen it.
    QVERIFY(meanStep(hugo({256, 256}, 1, 50, 25), 1) < meanStep(hugo({256, 256}, 5, 50, 25), 1));
    QVERIFY(meanStep(hugo({256, 256}, 5, 90, 25), 1) < meanStep(hugo({256, 256}, 5, 10, 25), 1));
    QVERIFY(meanStep(perlin({256, 256}, 60), 8) < meanStep(perlin({256, 256}, 10), 8));
    // One octave of large cells is smooth: no jumps at the grid.
    const Raster smooth = hugo({256, 256}, 1, 50, 25);
    for (int y = 1; y < 256; ++y)
        for (int x = 1; x < 256; ++x) {
            QVERIFY(std::abs(smooth.index(x, y) - smooth.index(x - 1, y)) <= 9);
            QVERIFY(std::abs(smooth.index(x, y) - smooth.index(x, y - 1)) <= 9);
        }
    for (const int extreme : {-5, 0, 1000}) {
        QCOMPARE(hugo({3, 1}, extreme, extreme, extreme).size(), (Size{3, 1}));
        QCOMPARE(perlin({1, 40}, extreme).size(), (Size{1, 40}));
    }
}

QTEST_GUILESS_MAIN(GenerateTest)
#include "ops_generate.moc"
