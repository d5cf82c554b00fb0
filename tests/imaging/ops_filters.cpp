// Filters of ranks, means, tables and edges against the obvious way to compute them, over all image
// types and awkward sizes, and for every instruction set of this machine.
#include <QtTest>
#include <array>
#include <tuple>

#include "basic/error.h"
#include "imaging/operations/support/hidden_colors.h"
#include "imaging/support/filter_reference.h"
#include "reference/instruction_sets.h"
#include "reference/pictures.h"

using namespace kvn::imaging;
using namespace reference;

namespace {

// The same, seen as by filters that do not weigh colours by their alpha.
void onEveryVisiblePicture(
    const std::function<void(const Raster& picture, const Raster& seen)>& work) {
    onEveryPicture([&](const Raster& picture, const Raster& seen) {
        Task task;
        work(picture, withoutHiddenColors(seen, task));
    });
}

} // namespace

class FiltersTest : public QObject {
    Q_OBJECT

  private slots:
    void medianIsExact();
    void extremesAreExact();
    void brightestPixelIsTakenWhole();
    void meansFollowTheirDefinitions();
    void tablesLieAsTheyAreRead();
    void matrixWorksAgainstThePicture();
    void matrixDrawsLines();
    void edgesAreGradients();
    void despeckleSparesLines();
    void morphologyTakesTheKernel();
    void embossLightsTheGround();
    void cannyOutlinesAreThinAndConnected();
    void neutralArgumentsChangeNothing();
    void flatStaysFlat();
    void hiddenColorsDoNotShow();
};

void FiltersTest::medianIsExact() {
    const auto check = [](const Raster& picture, const Raster& seen) {
        for (const int size : {3, 5, 9, 15, 19})
            for (const bool ignore : {false, true}) {
                const Raster result = runOne("Effects.MedianCut", picture, {whole(size), ignore});
                const auto expected = [&](int x, int y, int c) {
                    if (size > 9 && (x + y) % 7) return -1.0;
                    if (ignore && c == 3) return double(channelAt(seen, x, y, 3));
                    Window window = windowAt(seen, x, y, c, size / 2);
                    const auto middle = window.begin() + size * size / 2;
                    std::ranges::nth_element(window, middle, {}, &Item::value);
                    return middle->value;
                };
                QCOMPARE(largestDifference(result, expected), 0.0);
            }
    };
    onEveryPicture(check);
    const Raster picture = noise(ImageType::Rgb24, {47, 9}), narrow = noise(picture.type(), {2, 9});
    onEveryInstructionSet([&] {
        check(picture, picture);
        check(narrow, narrow);
    });
}

void FiltersTest::extremesAreExact() {
    onEveryPicture([](const Raster& picture, const Raster& seen) {
        for (const int size : {2, 3, 5, 15, 27})
            for (const bool ignore : {false, true}) {
                const std::vector<Value> values{whole(size), ignore};
                const Raster least = runOne("Effects.Minimum", picture, values);
                const Raster greatest = runOne("Effects.Maximum", picture, values);
                const auto expected = [&](bool most) {
                    return [&, most](int x, int y, int c) {
                        if (ignore && c == 3) return double(channelAt(seen, x, y, 3));
                        const Window window = windowAt(seen, x, y, c, (size | 1) / 2);
                        const auto [low, high] =
                            std::ranges::minmax_element(window, {}, &Item::value);
                        return most ? high->value : low->value;
                    };
                };
                QCOMPARE(largestDifference(least, expected(false)), 0.0);
                QCOMPARE(largestDifference(greatest, expected(true)), 0.0);
            }
    });
    // Wide enough for several stripes, one of which ends at column 1024.
    const Raster wide = noise(ImageType::Rgb24, {2500, 40});
    onEveryInstructionSet([&] {
        for (const int size : {3, 15}) {
            const std::vector<Value> values{whole(size), false};
            const Raster part = runOne("Effects.Maximum", wide.cropped({980, 0, 100, 40}), values);
            QVERIFY(runOne("Effects.Maximum", wide, values)
                        .cropped({1000, 0, 60, 40})
                        .samePixels(part.cropped({20, 0, 60, 40})));
        }
    });
}

void FiltersTest::brightestPixelIsTakenWhole() {
    onEveryPicture([](const Raster& picture, const Raster& seen) {
        for (const int size : {3, 6, 15, 37})
            for (const bool ignore : {false, true}) {
                const Raster result = runOne("Effects.Maximum2", picture, {whole(size), ignore});
                const auto key = [&](Rgba c) {
                    const int light = luma(c.r, c.g, c.b);
                    return std::array<int, 5>{ignore ? light : light * c.a, c.r, c.g, c.b,
                                              ignore ? 0 : c.a};
                };
                const int side = (size | 1) / 2, right = seen.width() - 1;
                for (int y = 0; y < seen.height(); ++y)
                    for (int x = y % 3; x <= right; x += 3) {
                        Rgba best = seen.pixel(x, y);
                        for (int j = y - side; j <= y + side; ++j)
                            for (int i = x - side; i <= x + side; ++i) {
                                const Rgba c = seen.pixel(std::clamp(i, 0, right),
                                                          std::clamp(j, 0, seen.height() - 1));
                                if (key(c) > key(best)) best = c;
                            }
                        if (ignore) best.a = seen.pixel(x, y).a;
                        QCOMPARE(result.pixel(x, y), best);
                    }
            }
    });
}

void FiltersTest::meansFollowTheirDefinitions() {
    struct Mean {
        const char* name;
        std::vector<Value> before; // arguments between size and "ignore alpha"
        double (*term)(double);
        double (*value)(double);
    };
    const auto square = [](double v) { return v * v; };
    const auto same = [](double v) { return v; };
    const auto inverse = [](double v) { return 1 / v; };
    const Mean means[] = {
        {"Effects.ArithmeticMean", {}, same, same},
        {"Effects.GeometricMean",
         {},
         [](double v) { return std::log(v); },
         [](double m) { return std::exp(m); }},
        {"Effects.HarmonicMean", {}, inverse, inverse},
        {"Effects.YpMean", {false}, square, [](double m) { return std::sqrt(m); }},
        {"Effects.YpMean",
         {true},
         [](double v) { return 1 / (v * v); },
         [](double m) { return 1 / std::sqrt(m); }},
    };
    const auto check = [&](const Raster& picture, const Raster& seen) {
        for (const Mean& mean : means)
            for (const int size : {3, 35})
                for (const bool ignore : {false, true}) {
                    std::vector<Value> values{whole(size)};
                    values.insert(values.end(), mean.before.begin(), mean.before.end());
                    values.push_back(ignore);
                    const Raster result = runOne(mean.name, picture, values);
                    const auto expected = [&](int x, int y, int c) {
                        if (size > 9 && (x + y) % 7) return -1.0;
                        Window window = windowAt(seen, x, y, c, size / 2);
                        if (c == 3)
                            return ignore ? channelAt(seen, x, y, 3) : visibleMean(window, false);
                        if (std::ranges::all_of(window, [&](const Item& item) {
                                return !ignore && item.alpha == 0;
                            }))
                            return -1.0;
                        std::erase_if(window,
                                      [&](const Item& item) { return !ignore && item.alpha == 0; });
                        for (Item& item : window)
                            item.value = mean.term(item.value);
                        return mean.value(visibleMean(window, !ignore));
                    };
                    // Large windows weigh by 16 steps of alpha.
                    const double limit = size > 31 && !ignore && hasAlpha(seen.type()) ? 7 : 0.55;
                    const double worst = largestDifference(result, expected);
                    QVERIFY2(worst <= limit,
                             (std::string(mean.name) + " " + std::to_string(size) + " " +
                              nameOf(picture.type()) + ": " + std::to_string(worst))
                                 .c_str());
                }
    };
    onEveryPicture(check);
    // Without zeros, which end most of the means early.
    Raster bright = noise(ImageType::Rgba32, {50, 40});
    for (int y = 0; y < 40; ++y)
        for (int x = 0; x < 50; ++x) {
            const Rgba p = bright.pixel(x, y);
            const auto up = [](int v) { return static_cast<std::uint8_t>(std::max(v, 1)); };
            bright.setPixel(x, y, {up(p.r), up(p.g), up(p.b), p.a});
        }
    check(bright, bright);
    const Raster opaque = convertType(bright, ImageType::Rgb24, *std::make_unique<Task>());
    onEveryInstructionSet([&] { check(opaque, opaque); });
}

namespace {

double correlated(const Raster& seen, const Matrix& matrix, int x, int y, int c) {
    double sum = 0;
    for (int j = 0; j < matrix.rows; ++j)
        for (int i = 0; i < 3; ++i)
            sum += matrix.at(j, i) * channelAt(seen, x + i - 1, y + j - matrix.rows / 2, c);
    return sum;
}

} // namespace

void FiltersTest::tablesLieAsTheyAreRead() {
    const Matrix smooth{3, 3, {0, 1, 2, 3, 4, 5, 6, 7, 8}},
        high{5, 3, {1, 0, 0, 0, 0, 0, 0, 2, 0, 0, 0, 0, 0, 0, 3}};
    const Matrix flat{2, 3, {1, 0, 0, 0, 0, 2}}, relief{3, 3, {3, 2, 1, 2, 0, -2, 1, -2, -5}};
    const auto check = [&](const Raster& picture, const Raster& seen) {
        for (const auto& [matrix, divisor, bias] : {std::tuple{smooth, 36.0, 0},
                                                    {high, -3.0, 300},
                                                    {flat, 3.0, -20},
                                                    {relief, 4.0, 9},
                                                    {relief, 4.0, 0}}) {
            const Raster result =
                runOne("Effects.ApplyFilter", picture, {matrix, divisor, whole(bias)});
            const auto expected = [&](int x, int y, int c) {
                const double own = channelAt(seen, x, y, c);
                const double sum = correlated(seen, matrix, x, y, c) / divisor + bias;
                if (c == 3 || !(matrix == relief) || bias != 0) return c == 3 ? own : clamped(sum);
                // Half of its coefficients' sizes is 9.
                const double over = 8 * std::max(0.0, std::abs(sum) - 3 * 9 / divisor);
                return clamped(own + std::copysign(over / (1 + over / 70), sum));
            };
            QCOMPARE_LE(largestDifference(result, expected), 0.51);
        }
    };
    onEveryVisiblePicture(check);
    const Raster picture = noise(ImageType::Rgb24, {63, 11});
    onEveryInstructionSet([&] { check(picture, picture); });
    Task task;
    const Matrix wide{1, 5, {1, 1, 1, 1, 1}};
    for (const char* name : {"Effects.ApplyFilter", "Effects.ApplyMatrix"})
        QVERIFY_EXCEPTION_THROWN(
            runOperation(*findOperation(name), picture, {wide, 1.0, whole(0), true, true}, task),
            kvn::RuntimeError);
}

void FiltersTest::matrixWorksAgainstThePicture() {
    const Matrix matrix{3, 3, {0, 0, 1, -1, -2, -1, 0, 0, 1}};
    onEveryVisiblePicture([&](const Raster& picture, const Raster& seen) {
        for (const bool difference : {false, true})
            for (const bool opposed : {false, true}) {
                const Raster result = runOne("Effects.ApplyMatrix", picture,
                                             {matrix, -7.0, whole(5), difference, opposed});
                const auto expected = [&](int x, int y, int c) {
                    const double own = channelAt(seen, x, y, c);
                    if (c == 3) return own;
                    const double m = correlated(seen, matrix, x, y, c) / -7 + 5;
                    const bool turned = opposed && c == 1;
                    if (difference) return clamped(turned ? own + m : own - m);
                    return clamped(turned ? 255 - m : m);
                };
                QCOMPARE_LE(largestDifference(result, expected), 0.51);
            }
    });
}

// A matrix of differences: bright lines whichever side is the brighter one, on the bias.
void FiltersTest::matrixDrawsLines() {
    const Matrix matrix{3, 3, {-0.5, 0, -0.5, 0, 2, 0, -0.5, 0, -0.5}};
    onEveryVisiblePicture([&](const Raster& picture, const Raster& seen) {
        const Raster result =
            runOne("Effects.ApplyMatrix", picture, {matrix, 50.0, whole(7), false, false});
        const auto expected = [&](int x, int y, int c) {
            const double line = 24 * std::abs(correlated(seen, matrix, x, y, c)) / 50;
            return c == 3 ? double(channelAt(seen, x, y, c)) : clamped(7 + line / (1 + line / 340));
        };
        QCOMPARE_LE(largestDifference(result, expected), 0.51);
    });
}

void FiltersTest::edgesAreGradients() {
    const Matrix across{3, 3, {-1, 0, 1, -2, 0, 2, -1, 0, 1}},
        down{3, 3, {-1, -2, -1, 0, 0, 0, 1, 2, 1}};
    onEveryVisiblePicture([&](const Raster& picture, const Raster& seen) {
        const Raster result = runOne("Effects.EdgeDetection", picture, {whole(30)});
        const auto expected = [&](int x, int y, int c) {
            if (c == 3) return double(channelAt(seen, x, y, 3));
            return clamped(0.3 * std::hypot(correlated(seen, across, x, y, c),
                                            correlated(seen, down, x, y, c)));
        };
        QCOMPARE_LE(largestDifference(result, expected), 0.51);
    });
}

void FiltersTest::despeckleSparesLines() {
    const Rgba back{90, 120, 200}, mark{250, 10, 60};
    Raster clean = Raster::filled(ImageType::Rgb24, 40, 30, back);
    for (int y = 3; y < 27; ++y) {
        clean.setPixel(5, y, mark);     // a line down
        clean.setPixel(8 + y, y, mark); // a slanting one
    }
    Raster dirty = clean;
    for (const Point speck : {Point{12, 25}, Point{2, 10}, Point{3, 10}, Point{22, 4}})
        dirty.setPixel(speck.x, speck.y, {0, 255, 90});
    Raster result = runOne("Effects.Despeckle", dirty, {});
    for (const Point end : {Point{5, 3}, Point{5, 26}, Point{11, 3}, Point{34, 26}})
        result.setPixel(end.x, end.y, mark); // the ends of lines have one neighbour only
    QVERIFY(result.samePixels(clean));
}

void FiltersTest::morphologyTakesTheKernel() {
    // Lopsided, so that a dilation whose kernel is not turned shows.
    const Matrix kernel{3, 3, {0, 1, 1, 0, 2, 0, 0, 0, 7}};
    const Point offsets[] = {{0, -1}, {1, -1}, {0, 0}, {1, 1}};
    const auto extreme = [&](const Raster& seen, int x, int y, int c, int sign) {
        int result = channelAt(seen, x, y, c);
        for (const Point& p : offsets) {
            const int v = channelAt(seen, x - sign * p.x, y - sign * p.y, c);
            result = sign > 0 ? std::max(result, v) : std::min(result, v);
        }
        return result;
    };
    onEveryVisiblePicture([&](const Raster& picture, const Raster& seen) {
        std::vector<Raster> results;
        for (int operation = 0; operation < 5; ++operation)
            results.push_back(runOne("Effects.Morphology", picture, {kernel, whole(operation)}));
        const auto check = [&](int operation, auto expected) {
            QCOMPARE(largestDifference(results[static_cast<std::size_t>(operation)],
                                       [&](int x, int y, int c) {
                                           return c == 3 ? double(channelAt(seen, x, y, 3))
                                                         : double(expected(x, y, c));
                                       }),
                     0.0);
        };
        check(0, [&](int x, int y, int c) { return extreme(seen, x, y, c, 1); });
        check(1, [&](int x, int y, int c) { return extreme(seen, x, y, c, -1); });
        check(2, [&](int x, int y, int c) { return extreme(results[1], x, y, c, 1); });
        check(3, [&](int x, int y, int c) { return extreme(results[0], x, y, c, -1); });
        check(4, [&](int x, int y, int c) {
            return channelAt(seen, x, y, c) - channelAt(results[2], x, y, c);
        });
    });
}

void FiltersTest::embossLightsTheGround() {
    const auto check = [](const Raster& picture, const Raster& seen) {
        for (const bool texture : {false, true}) {
            const double turn = std::atan(1.0) * 4 / 180, rise = 30 * turn;
            const Raster result =
                runOne("Effects.Emboss", picture, {whole(120), whole(30), whole(3), texture});
            const auto height = [&](int x, int y) {
                return double(luma(channelAt(seen, x, y, 0), channelAt(seen, x, y, 1),
                                   channelAt(seen, x, y, 2)));
            };
            const auto expected = [&](int x, int y, int c) {
                const double own = channelAt(seen, x, y, c);
                if (c == 3) return own;
                const double dx = height(x - 2, y) - height(x + 2, y);
                const double dy = height(x, y + 2) - height(x, y - 2);
                const double lit =
                    (dx * std::cos(120 * turn) * std::cos(rise) +
                     dy * std::sin(120 * turn) * std::cos(rise) + 96 * std::sin(rise)) /
                    std::sqrt(dx * dx + dy * dy + 96 * 96);
                return clamped(texture ? own * std::max(0.0, lit) / std::sin(rise) : 255 * lit);
            };
            QCOMPARE_LE(largestDifference(result, expected), 0.51);
        }
    };
    onEveryVisiblePicture(check);
    const Raster picture = noise(ImageType::Rgb24, {50, 12});
    onEveryInstructionSet([&] { check(picture, picture); });
}

void FiltersTest::cannyOutlinesAreThinAndConnected() {
    // A disc, and beside it a bar whose contrast fades away to the right.
    Raster drawing = Raster::filled(ImageType::Rgb24, 160, 90, {0, 0, 0});
    for (int y = 0; y < 90; ++y)
        for (int x = 0; x < 160; ++x) {
            const auto fading = static_cast<std::uint8_t>(std::max(0, 160 - x));
            if (std::hypot(x - 40, y - 45) < 30) drawing.setPixel(x, y, {200, 200, 200});
            if (x > 85 && std::abs(y - 45) < 12) drawing.setPixel(x, y, {fading, fading, fading});
        }
    const auto edges = [&](int low, int high) {
        return runOne("Effects.CannyEdge", drawing, {whole(100), whole(low), whole(high)});
    };
    const auto isEdge = [](const Raster& r, int x, int y) { return r.pixel(x, y).r == 255; };
    const Raster both = edges(15, 40), strong = edges(40, 40), weak = edges(15, 15);
    int ring = 0, fadedBoth = 0, fadedStrong = 0;
    for (int y = 0; y < 90; ++y)
        for (int x = 0; x < 160; ++x) {
            const Rgba p = both.pixel(x, y);
            QVERIFY(p == (Rgba{0, 0, 0}) || p == (Rgba{255, 255, 255}));
            QVERIFY(!isEdge(both, x, y) || isEdge(weak, x, y));
            if (x < 80 && isEdge(both, x, y)) {
                ++ring;
                QVERIFY(std::abs(std::hypot(x - 40, y - 45) - 30) < 1.6);
            }
            fadedBoth += x > 100 && isEdge(both, x, y);
            fadedStrong += x > 100 && isEdge(strong, x, y);
        }
    QVERIFY(ring > 150 && ring < 260);     // about the circumference, one pixel thick
    QVERIFY(fadedBoth > fadedStrong + 30); // the weak part goes on with the strong one
    QCOMPARE(
        runOne("Effects.CannyEdge", drawing, {whole(20), whole(40), whole(15)}).pixel(10, 45).r,
        both.pixel(10, 45).r ? 51 : 0);
    // Weak edges alone are none.
    const Raster faint = Raster::filled(ImageType::Gray8, 40, 40, {0, 0, 0});
    Raster step = faint;
    for (int y = 0; y < 40; ++y)
        for (int x = 20; x < 40; ++x)
            step.setPixel(x, y, {20, 20, 20});
    QVERIFY(
        runOne("Effects.CannyEdge", step, {whole(100), whole(10), whole(60)}).samePixels(faint));
    QVERIFY(
        !runOne("Effects.CannyEdge", step, {whole(100), whole(10), whole(11)}).samePixels(faint));
}

void FiltersTest::neutralArgumentsChangeNothing() {
    const std::pair<const char*, std::vector<Value>> neutral[] = {
        {"Effects.Blur", {whole(0), whole(7), false}},
        {"Effects.Blur", {whole(80), whole(1), true}},
        {"Effects.GaussianBlur", {whole(0)}},
        {"Effects.Soften", {whole(0)}},
        {"Effects.Sharpen", {whole(0), whole(3), true}},
        {"Effects.MedianCut", {whole(1), false}},
        {"Effects.UnsharpMask", {whole(0), 0.0, 5.0}},
        {"Effects.UnsharpMask", {whole(0), 5.0, 0.0}},
        {"Effects.EdgeDetection", {whole(0)}},
        {"Effects.Emboss", {whole(45), whole(45), whole(0), false}},
        {"Effects.Vibration", {whole(0)}},
        {"Effects.Minimum", {whole(1), false}},
        {"Effects.ArithmeticMean", {whole(1), false}},
        {"Effects.GeometricMean", {whole(1), true}},
    };
    onEveryPicture([&](const Raster& picture, const Raster&) {
        for (const auto& [name, values] : neutral)
            QVERIFY2(runOne(name, picture, values).samePixels(picture), name);
    });
}

void FiltersTest::flatStaysFlat() {
    const std::pair<const char*, std::vector<Value>> filters[] = {
        {"Effects.Blur", {whole(100), whole(31), false}},
        {"Effects.GaussianBlur", {whole(60)}},
        {"Effects.GaussianBlur", {whole(700)}},
        {"Effects.Soften", {whole(100)}},
        {"Effects.Sharpen", {whole(100), whole(3), true}},
        {"Effects.MedianCut", {whole(21), false}},
        {"Effects.UnsharpMask", {whole(0), 29.0, 1.5}},
        {"Effects.Despeckle", {}},
        {"Effects.Emboss", {whole(45), whole(45), whole(4), true}},
        {"Effects.Vibration", {whole(100)}},
        {"Effects.GeometricMean", {whole(5), false}},
        {"Effects.HarmonicMean", {whole(101), false}},
        {"Effects.YpMean", {whole(7), true, false}},
    };
    for (const ImageType type : {ImageType::Gray8, ImageType::Rgb24, ImageType::Rgba32})
        for (const std::uint8_t level : {1, 77, 254, 255}) {
            const Raster flat = Raster::filled(type, 40, 30, {level, level, level, 90});
            for (const auto& [name, values] : filters)
                QVERIFY2(runOne(name, flat, values).samePixels(flat), name);
        }
}

// What lies under alpha 0 must not show in what is visible, nor must the rim of a cut-out.
void FiltersTest::hiddenColorsDoNotShow() {
    const Matrix kernel{3, 3, {1, 1, 1, 1, 2, 1, 1, 1, 1}},
        table{3, 3, {1, 2, 3, 0, 0, 0, 3, 0, 1}};
    const std::pair<const char*, std::vector<Value>> filters[] = {
        {"Effects.ApplyFilter", {table, 10.0, whole(0)}},
        {"Effects.ApplyMatrix", {table, 10.0, whole(0), true, false}},
        {"Effects.CannyEdge", {whole(100), whole(10), whole(20)}},
        {"Effects.Despeckle", {}},
        {"Effects.EdgeDetection", {whole(100)}},
        {"Effects.Emboss", {whole(45), whole(45), whole(4), true}},
        {"Effects.Morphology", {kernel, whole(2)}},
        {"Geometry.Crackle", {whole(80), whole(3)}},
        {"Geometry.Scribble", {whole(60), whole(1), true}},
        {"Geometry.Stipple", {whole(80), whole(2), false}},
    };
    Raster cut = waves({53, 41}, true), flat = cut;
    for (int y = 0; y < cut.height(); ++y)
        for (int x = 0; x < cut.width(); ++x) {
            const bool clear = (x - 30) * (x - 30) + (y - 15) * (y - 15) > 140;
            if (clear) cut.setPixel(x, y, {0, 0, 0, 0});
            flat.setPixel(x, y, clear ? Rgba{0, 0, 0, 0} : Rgba{200, 120, 40, 255});
        }
    Raster other = cut;
    for (int y = 0; y < cut.height(); ++y)
        for (int x = 0; x < cut.width(); ++x)
            if (cut.pixel(x, y).a == 0) other.setPixel(x, y, {255, 0, std::uint8_t(7 * x), 0});
    for (const auto& [name, values] : filters) {
        const Raster one = runOne(name, cut, values), two = runOne(name, other, values);
        for (int y = 0; y < cut.height(); ++y)
            for (int x = 0; x < cut.width(); ++x)
                if (one.pixel(x, y).a > 0 || two.pixel(x, y).a > 0)
                    QVERIFY2(one.pixel(x, y) == two.pixel(x, y), name);
    }
    const Raster edges = runOne("Effects.EdgeDetection", flat, {whole(100)});
    QCOMPARE(edges.pixel(30, 15 - 11), (Rgba{0, 0, 0, 255}));
    QCOMPARE(edges.pixel(30 + 11, 15), (Rgba{0, 0, 0, 255}));
}

QTEST_GUILESS_MAIN(FiltersTest)
#include "ops_filters.moc"
