// Other sizes, angles and outlines, against plain double arithmetic and against their own laws.
#include <QtTest>
#include <algorithm>
#include <cmath>
#include <numbers>

#include "basic/error.h"
#include "imaging/convert.h"
#include "imaging/operation.h"
#include "imaging/operations/resample/reconstruction.h"
#include "reference/instruction_sets.h"
#include "reference/pictures.h"

using namespace kvn::imaging;
using namespace reference;

namespace {

Raster run(const char* name, const Raster& source, std::vector<Value> values) {
    Task task;
    return runOperation(*findOperation(name), source, std::move(values), task).front();
}

Value whole(std::int64_t number) {
    return number;
}

Raster resized(const Raster& source, int width, int height, int method) {
    return run("Geometry.Resize", source, {whole(width), whole(height), whole(method)});
}

// A pixel as colours times alpha, and alpha, 0..1.
struct Mixed {
    double c[4] = {};
    void add(double weight, const Rgba& pixel) {
        const double a = pixel.a / 255.0;
        const double values[4] = {pixel.r * a, pixel.g * a, pixel.b * a, a};
        for (int i = 0; i < 4; ++i)
            c[i] += weight * values[i];
    }
};

double weightAt(const Reconstruction& by, double x, double scale) {
    if (by.scaled) return by.scaled(x, scale);
    const double t = x / std::max(1.0, scale);
    return std::abs(t) <= by.radius ? by.kernel(t) : 0;
}

std::vector<double> lineWeights(int method, int from, int to, int i, int margin) {
    std::vector<double> weights;
    const double scale = static_cast<double>(from) / to;
    double sum = 0;
    for (int j = -margin; j < from + margin; ++j) {
        const double x = j - ((i + 0.5) * scale - 0.5);
        weights.push_back(from == to ? (j == i)
                                     : weightAt(reconstructionFor(method, scale), x, scale));
        sum += weights.back();
    }
    for (double& w : weights)
        w /= sum;
    return weights;
}

// Every pixel of the source, and a margin of repeated ones, in double arithmetic.
Mixed mixedAt(const Raster& source, const std::vector<double>& across,
              const std::vector<double>& down, int margin) {
    Mixed sum;
    for (std::size_t j = 0; j < down.size(); ++j)
        for (std::size_t i = 0; i < across.size(); ++i)
            if (const double w = across[i] * down[j]; w != 0)
                sum.add(w, source.pixel(
                               std::clamp(static_cast<int>(i) - margin, 0, source.width() - 1),
                               std::clamp(static_cast<int>(j) - margin, 0, source.height() - 1)));
    return sum;
}

int differenceFrom(const Mixed& expected, const Rgba& actual) {
    const double alpha = std::clamp(expected.c[3], 0.0, 1.0);
    double worst = std::abs(alpha * 255 - actual.a);
    const std::uint8_t colors[3] = {actual.r, actual.g, actual.b};
    // Of a pixel that is all but clear the colour means nothing.
    for (int i = 0; i < 3 && expected.c[3] > 0.02; ++i)
        worst = std::max(
            worst, std::abs(std::clamp(expected.c[i] / expected.c[3], 0.0, 255.0) - colors[i]));
    return static_cast<int>(std::ceil(worst - 1e-2));
}

bool near(const Rgba& a, const Rgba& b, int tolerance) {
    return std::abs(a.r - b.r) <= tolerance && std::abs(a.g - b.g) <= tolerance &&
           std::abs(a.b - b.b) <= tolerance && std::abs(a.a - b.a) <= tolerance;
}

} // namespace

class ResampleTest : public QObject {
    Q_OBJECT

  private slots:
    void kernelsAreTheirFormulas();
    void boxCountsEveryPixelOnce();
    void resizeIsTheKernel_data();
    void resizeIsTheKernel();
    void resizeKeepsFlatAndCentred();
    void resizeSizes();
    void simplePicks();
    void decimateAverages();
    void quarterTurnsAreExact();
    void smallTurnsAreTrue();
    void skewSlants();
    void clearPixelsLendNoColor();
    void autoCropFindsContent();
    void perspectivePlacesCorners();
};

void ResampleTest::kernelsAreTheirFormulas() {
    const auto at = [](int method, double x) { return reconstructionFor(method, 1).kernel(x); };
    const auto sinc = [](double x) {
        return std::sin(std::numbers::pi * x) / (std::numbers::pi * x);
    };
    QVERIFY(std::abs(at(15, 1.3) - sinc(1.3) * sinc(1.3 / 3)) < 1e-12);
    QVERIFY(std::abs(at(21, 0.5) - 0.5625) < 1e-12 && std::abs(at(21, 1.5) + 0.0625) < 1e-12);
    QVERIFY(std::abs(at(11, 0) - 2.0 / 3) < 1e-12 && std::abs(at(16, 0) - 8.0 / 9) < 1e-12);
    for (int method = 0; method < resizeMethodCount; ++method) {
        const Reconstruction by = reconstructionFor(method, 1);
        if (by.kind == Resampling::Pick) continue;
        for (const double x : {0.0, 0.3, 0.7, 1.4, 2.6})
            QVERIFY2(std::abs(by.kernel(x) - by.kernel(-x)) < 1e-12,
                     qPrintable(QString::number(method)));
        const bool interpolates = method != 9 && method != 10 && method != 11 && method != 16;
        if (interpolates)
            QVERIFY(std::abs(by.kernel(1)) < 1e-12 && std::abs(by.kernel(0) - 1) < 1e-12);
    }
    // No two rows of the list are alike, but the four triangles.
    const auto print = [&](int method) {
        std::vector<double> values;
        for (const double scale : {0.5, 2.5})
            for (double x = 0.05; x < 6; x += 0.3)
                values.push_back(weightAt(reconstructionFor(method, scale), x, scale));
        return values;
    };
    for (int a = 0; a < resizeMethodCount; ++a)
        for (int b = a + 1; b < resizeMethodCount; ++b) {
            if (a == 2 || b == 2) continue;
            const auto isTriangle = [](int m) { return m == 6 || m == 8 || m == 14 || m == 19; };
            QCOMPARE(print(a) == print(b), isTriangle(a) && isTriangle(b));
        }
}

// A pixel whose centre lies on the border of two results of the box filter counts in one of them.
void ResampleTest::boxCountsEveryPixelOnce() {
    for (int from = 2; from < 60; ++from)
        for (int to = 1; to < from; ++to) {
            const AxisWeights axis =
                axisWeights(reconstructionFor(5, static_cast<double>(from) / to), from, to);
            std::vector<int> counts(static_cast<std::size_t>(from));
            for (int i = 0; i < to * axis.width; ++i)
                if (axis.weight[static_cast<std::size_t>(i)] > 0)
                    ++counts[static_cast<std::size_t>(
                        axis.first[static_cast<std::size_t>(i / axis.width)] + i % axis.width)];
            QCOMPARE(counts, std::vector<int>(static_cast<std::size_t>(from), 1));
        }
}

void ResampleTest::resizeIsTheKernel_data() {
    QTest::addColumn<int>("method");
    for (int method = 0; method < resizeMethodCount; ++method)
        if (method != 2) QTest::addRow("%d", method) << method;
}

void ResampleTest::resizeIsTheKernel() {
    QFETCH(int, method);
    constexpr int margin = 40;
    for (const ImageType type : everyType)
        for (const Size from : {Size{31, 19}, Size{1, 9}, Size{9, 1}}) {
            const Raster source = noise(type, from, 5);
            const Size twice{2 * from.width, 2 * from.height};
            for (const Size to :
                 {Size{29, 7}, Size{12, 40}, Size{5, 3}, Size{67, 43}, from, twice}) {
                const Raster result = resized(source, to.width, to.height, method);
                QCOMPARE(result.size(), to);
                if (to == from) continue;
                std::vector<std::vector<double>> across;
                for (int x = 0; x < to.width; ++x)
                    across.push_back(lineWeights(method, from.width, to.width, x, margin));
                for (int y = 0; y < to.height; y += 3) {
                    const auto down = lineWeights(method, from.height, to.height, y, margin);
                    for (int x = y % 2; x < to.width; x += 2) {
                        const Mixed expected =
                            mixedAt(source, across[static_cast<std::size_t>(x)], down, margin);
                        QVERIFY2(differenceFrom(expected, result.pixel(x, y)) <= 1,
                                 nameOf(type).c_str());
                    }
                }
            }
        }
}

void ResampleTest::resizeKeepsFlatAndCentred() {
    const Rgba color{13, 200, 97, 255};
    Raster mirror(ImageType::Rgb24, 40, 30);
    for (int y = 0; y < 30; ++y)
        for (int x = 0; x < 40; ++x) {
            const auto v = static_cast<std::uint8_t>(
                (std::min(x, 39 - x) * 13 + std::min(y, 29 - y) * 7) % 256);
            mirror.setPixel(x, y, {v, v, v, 255});
        }
    for (int method = 0; method < resizeMethodCount; ++method)
        for (const Size size : {Size{7, 90}, Size{111, 4}}) {
            const Raster flat = resized(Raster::filled(ImageType::Rgb24, 33, 21, color), size.width,
                                        size.height, method);
            const Raster even = resized(mirror, size.width, size.height, method);
            for (int y = 0; y < size.height; ++y)
                for (int x = 0; x < size.width; ++x) {
                    QCOMPARE(flat.pixel(x, y), color);
                    // A picture that is its own mirror image stays one: the phase is right. The
                    // box has to decide to which side a pixel on its edge belongs.
                    if (method != 5 && method != 2)
                        QVERIFY(near(even.pixel(x, y),
                                     even.pixel(size.width - 1 - x, size.height - 1 - y), 1));
                }
        }
}

void ResampleTest::resizeSizes() {
    const Raster source = noise(ImageType::Rgb24, {30, 20});
    QCOMPARE(resized(source, 15, 0, 4).size(), (Size{15, 10}));
    QCOMPARE(resized(source, 0, 7, 4).size(), (Size{11, 7}));
    QCOMPARE(resized(source, 1, 0, 4).size(), (Size{1, 1}));
    for (int method = 0; method < resizeMethodCount; ++method)
        QVERIFY(resized(source, 30, 20, method).sharesPixelsWith(source));
    for (const Size bad : {Size{-1, 5}, Size{5, -1}, Size{0, 0}, Size{200'000, 1}, Size{90'000, 0}})
        QVERIFY_EXCEPTION_THROWN(resized(noise(ImageType::Gray8, {1, 9}), bad.width, bad.height, 4),
                                 kvn::RuntimeError);
    QVERIFY_EXCEPTION_THROWN(resized(source, 5, 5, 22), kvn::RuntimeError);
}

void ResampleTest::simplePicks() {
    for (const ImageType type : everyType)
        for (const Size to : {Size{13, 40}, Size{100, 6}, Size{8, 8}}) {
            const Raster source = noise(type, {37, 23});
            const Raster result = resized(source, to.width, to.height, 2);
            QCOMPARE(result.type(), type);
            for (int y = 0; y < to.height; ++y)
                for (int x = 0; x < to.width; ++x)
                    QCOMPARE(result.pixel(x, y), source.pixel((2 * x + 1) * 37 / (2 * to.width),
                                                              (2 * y + 1) * 23 / (2 * to.height)));
        }
}

void ResampleTest::decimateAverages() {
    const Raster source = noise(ImageType::Gray8, {12, 6});
    const Raster result = resized(source, 4, 3, 3);
    for (int y = 0; y < 3; ++y)
        for (int x = 0; x < 4; ++x) {
            int sum = 0;
            for (int i = 0; i < 6; ++i)
                sum += source.index(x * 3 + i % 3, y * 2 + i / 3);
            QVERIFY(std::abs(sum / 6.0 - result.index(x, y)) <= 0.51);
        }
}

void ResampleTest::quarterTurnsAreExact() {
    const Rgba white{255, 255, 255, 255};
    for (const ImageType type : everyType)
        for (const Size size : awkwardSizes) {
            const Raster source = noise(type, size);
            const Raster once = run("Geometry.Rotate", source, {90.0, white, whole(0)});
            const Raster twice = run("Geometry.Rotate", source, {-180.0, white, whole(0)});
            const Raster thrice = run("Geometry.Rotate", source, {-90.0, white, whole(0)});
            QCOMPARE(once.type(), type);
            QCOMPARE(once.size(), (Size{size.height, size.width}));
            const int right = size.width - 1, bottom = size.height - 1;
            for (int y = 0; y < size.height; ++y)
                for (int x = 0; x < size.width; ++x) {
                    const Rgba pixel = source.pixel(x, y);
                    QCOMPARE(once.pixel(bottom - y, x), pixel);
                    QCOMPARE(twice.pixel(right - x, bottom - y), pixel);
                    QCOMPARE(thrice.pixel(y, right - x), pixel);
                }
            QVERIFY(
                run("Geometry.Rotate", source, {720.0, white, whole(0)}).sharesPixelsWith(source));
        }
    // High enough for whole tiles, and the rest of one.
    onEveryInstructionSet([&] {
        for (const ImageType type : everyType) {
            const Raster source = noise(type, {70, 531});
            const Raster once = run("Geometry.Rotate", source, {90.0, white, whole(0)});
            for (int y = 0; y < 531; ++y)
                for (int x = y % 3; x < 70; x += 3)
                    QCOMPARE(once.pixel(530 - y, x), source.pixel(x, y));
            QVERIFY(run("Geometry.Rotate", once, {-90.0, white, whole(0)}).samePixels(source));
        }
    });
}

// A slow wave of grey, known between the pixels too.
double waveAt(double x, double y) {
    return 127 + 60 * std::sin(x * 0.11) + 50 * std::cos(y * 0.09);
}

Raster wavePicture(Size size) {
    Raster picture(ImageType::Gray8, size.width, size.height);
    for (int y = 0; y < size.height; ++y)
        for (int x = 0; x < size.width; ++x) {
            const auto v = static_cast<std::uint8_t>(std::lround(waveAt(x, y)));
            picture.setPixel(x, y, {v, v, v, 255});
        }
    return picture;
}

void ResampleTest::smallTurnsAreTrue() {
    const Raster source = wavePicture({90, 60});
    const double radians = 30 * std::numbers::pi / 180;
    const Raster result = run("Geometry.Rotate", source, {30.0, Rgba{0, 0, 0, 255}, whole(0)});
    QCOMPARE(result.size(), (Size{108, 97}));
    int compared = 0;
    for (int y = 0; y < result.height(); ++y)
        for (int x = 0; x < result.width(); ++x) {
            const double dx = x - 53.5, dy = y - 48.0;
            const double sx = 44.5 + dx * std::cos(radians) + dy * std::sin(radians);
            const double sy = 29.5 - dx * std::sin(radians) + dy * std::cos(radians);
            if (sx > 2 && sy > 2 && sx < 87 && sy < 57) {
                ++compared;
                QVERIFY(std::abs(result.index(x, y) - waveAt(sx, sy)) < 1.6);
            } else if (sx < -2 || sy < -2 || sx > 91 || sy > 61) {
                QCOMPARE(int{result.index(x, y)}, 0);
            }
        }
    QVERIFY(compared > 4000);
    // A coloured background makes grey pictures colour ones.
    QCOMPARE(run("Geometry.Rotate", source, {10.0, Rgba{9, 0, 0, 255}, whole(0)}).type(),
             ImageType::Rgb24);
    // A flat picture on its own colour shows no edge.
    const Rgba teal{0, 128, 128, 255};
    const Raster flat = run("Geometry.Rotate", Raster::filled(ImageType::Rgb24, 50, 40, teal),
                            {17.0, teal, whole(0)});
    for (int y = 0; y < flat.height(); ++y)
        for (int x = 0; x < flat.width(); ++x)
            QCOMPARE(flat.pixel(x, y), teal);
}

void ResampleTest::skewSlants() {
    const Raster source = wavePicture({60, 41});
    const Rgba black{0, 0, 0, 255};
    for (const int offset : {20, -33}) {
        const Raster across = run("Geometry.Skew", source, {whole(0), whole(offset), black, false});
        const Raster down = run("Geometry.Skew", source, {whole(1), whole(offset), black, false});
        QCOMPARE(across.size(), (Size{60 + std::abs(offset), 41}));
        QCOMPARE(down.size(), (Size{60, 41 + std::abs(offset)}));
        const auto moved = [&](int place, int last) {
            return std::max(0, offset) - static_cast<double>(offset) * place / last;
        };
        for (int y = 3; y < 38; ++y)
            for (int x = 3; x < 57; ++x) {
                const int toX = static_cast<int>(std::ceil(x + moved(y, 40)));
                QVERIFY(std::abs(across.index(toX, y) - waveAt(toX - moved(y, 40), y)) < 1.6);
                const int toY = static_cast<int>(std::ceil(y + moved(x, 59)));
                QVERIFY(std::abs(down.index(x, toY) - waveAt(x, toY - moved(x, 59))) < 1.6);
            }
        const Raster fast = run("Geometry.Skew", source, {whole(0), whole(offset), black, true});
        QCOMPARE(fast.index(std::max(0, offset) + 7, 0), source.index(7, 0));
        QCOMPARE(fast.index(std::max(0, -offset) + 7, 40), source.index(7, 40));
    }
    // Pictures that may be clear go another way, to the same result.
    Task task;
    const Raster colored = waves({61, 43}),
                 clearable = convertType(colored, ImageType::Rgba32, task);
    for (const int direction : {0, 1})
        for (const int offset : {13, -30, 1, -2})
            for (const bool fast : {false, true}) {
                const auto slant = [&](const Raster& picture, uchar alpha) {
                    return run("Geometry.Skew", picture,
                               {whole(direction), whole(offset), Rgba{9, 200, 90, alpha}, fast});
                };
                const Raster one = slant(colored, 255), other = slant(clearable, 254);
                QCOMPARE(one.size(), other.size());
                for (int y = 0; y < one.height(); ++y)
                    for (int x = 0; x < one.width(); ++x) {
                        const Rgba a = one.pixel(x, y), b = other.pixel(x, y);
                        QVERIFY(std::abs(a.r - b.r) <= 2 && std::abs(a.g - b.g) <= 2 &&
                                std::abs(a.b - b.b) <= 2);
                    }
            }
}

void ResampleTest::clearPixelsLendNoColor() {
    // A red disc on clear green: whatever is done, no green may come out.
    Raster source(ImageType::Rgba32, 41, 41);
    for (int y = 0; y < 41; ++y)
        for (int x = 0; x < 41; ++x)
            source.setPixel(
                x, y, std::hypot(x - 20, y - 20) < 14 ? Rgba{255, 0, 0, 255} : Rgba{0, 255, 0, 0});
    const Rgba clear{0, 0, 0, 0};
    std::vector<Raster> results{
        resized(source, 17, 0, 15), resized(source, 90, 70, 21),
        run("Geometry.Rotate", source, {33.0, clear, whole(0)}),
        run("Geometry.Skew", source, {whole(0), whole(25), clear, false}),
        run("Geometry.Perspective", source,
            {Point{3, 30}, Point{0, 0}, Point{20, 6}, Point{25, 22}, whole(1)})};
    for (const Raster& result : results)
        for (int y = 0; y < result.height(); ++y)
            for (int x = 0; x < result.width(); ++x) {
                const Rgba pixel = result.pixel(x, y);
                QVERIFY(pixel.a < 3 || (pixel.r > 250 && pixel.g < 5));
            }
}

void ResampleTest::autoCropFindsContent() {
    for (const ImageType type : everyType) {
        Raster source = Raster::filled(ImageType::Rgba32, 40, 30, {250, 250, 250, 255});
        for (int y = 7; y < 21; ++y)
            for (int x = 5; x < 33; ++x)
                source.setPixel(x, y, {10, 10, 10, 255});
        source.setPixel(0, 29, {249, 251, 250, 255});
        Task task;
        const Raster picture = convertType(source, type, task);
        const Raster result = run("Geometry.AutoCrop", picture, {1.0, Nothing{}});
        QCOMPARE(result.type(), type);
        QCOMPARE(result.size(), (Size{28, 14}));
        QVERIFY(result.samePixels(picture.cropped({5, 7, 28, 14})));
        QVERIFY(run("Geometry.AutoCrop", picture, {1.0, Rgba{0, 0, 255, 255}})
                    .sharesPixelsWith(picture));
    }
    const Raster flat = Raster::filled(ImageType::Gray8, 9, 9, {3, 3, 3, 255});
    QVERIFY(run("Geometry.AutoCrop", flat, {1.0, Nothing{}}).sharesPixelsWith(flat));
}

void ResampleTest::perspectivePlacesCorners() {
    const Raster source = wavePicture({80, 60});
    const std::vector<Value> points{Point{10, 55}, Point{4, 3}, Point{70, 12}, Point{60, 44}};
    auto values = points;
    values.push_back(whole(1));
    const Raster result = run("Geometry.Perspective", source, values);
    QCOMPARE(result.size(), source.size());
    QCOMPARE(int{result.index(2, 30)}, 0);
    // The way there and back.
    std::vector<Value> map{Point{0, 59}, Point{0, 0}, Point{79, 0}, Point{79, 59}};
    map.insert(map.end(), points.begin(), points.end());
    map.push_back(whole(0));
    QVERIFY(run("Geometry.PerspectiveMap", source, map).samePixels(result));
    std::rotate(map.begin(), map.begin() + 4, map.begin() + 8);
    const Raster again = run("Geometry.PerspectiveMap", result, map);
    for (int y = 10; y < 50; ++y)
        for (int x = 10; x < 70; ++x)
            QVERIFY(std::abs(again.index(x, y) - source.index(x, y)) < 6);
    QVERIFY_EXCEPTION_THROWN(run("Geometry.Perspective", source,
                                 {Point{0, 0}, Point{1, 1}, Point{2, 2}, Point{5, 0}, whole(1)}),
                             kvn::RuntimeError);
}

QTEST_GUILESS_MAIN(ResampleTest)
#include "ops_resample.moc"
