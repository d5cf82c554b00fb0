// Distortions, against their formulas on a picture that is known between its pixels, and against
// their own laws.
#include <QtTest>
#include <algorithm>
#include <cmath>
#include <numbers>

#include "basic/error.h"
#include "imaging/operation.h"
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

constexpr Size size{161, 121};
constexpr double middleX = 80, middleY = 60;
constexpr double pi = std::numbers::pi;

double toneAt(double x, double y) {
    return 127 + 55 * std::sin(x * 0.083) + 55 * std::cos(y * 0.071 + 0.4);
}

Raster smoothPicture() {
    Raster picture(ImageType::Gray8, size.width, size.height);
    for (int y = 0; y < size.height; ++y)
        for (int x = 0; x < size.width; ++x) {
            const auto v = static_cast<std::uint8_t>(std::lround(toneAt(x, y)));
            picture.setPixel(x, y, {v, v, v, 255});
        }
    return picture;
}

struct Place {
    double x, y;
};

// Compares every pixel whose place is well within the picture. False: `where` says which differs.
template <typename Law>
bool follows(const Raster& result, double tolerance, Law law) {
    int compared = 0;
    for (int y = 0; y < size.height; ++y)
        for (int x = 0; x < size.width; ++x) {
            const Place from = law(x, y);
            if (!(from.x > 2 && from.y > 2 && from.x < size.width - 3 && from.y < size.height - 3))
                continue;
            ++compared;
            const double expected = toneAt(from.x, from.y);
            if (std::abs(result.index(x, y) - expected) > tolerance) {
                qWarning("%d, %d: %d, not %f", x, y, result.index(x, y), expected);
                return false;
            }
        }
    return compared > size.width * size.height / 2;
}

// The place at another distance and angle from a centre.
Place around(double x, double y, double centreX, double centreY, double distance, double angle) {
    const double r = std::hypot(x - centreX, y - centreY);
    if (r == 0) return {x, y};
    const double dx = (x - centreX) * distance / r, dy = (y - centreY) * distance / r;
    return {centreX + dx * std::cos(angle) + dy * std::sin(angle),
            centreY - dx * std::sin(angle) + dy * std::cos(angle)};
}

struct Call {
    const char* name;
    std::vector<Value> values;
};

std::vector<Call> mildCalls() {
    const Value bump =
        std::make_shared<const Raster>(Raster::filled(ImageType::Gray8, 3, 3, {9, 9, 9, 255}));
    return {{"Transforms.Spin", {40.0, 90.0, whole(5), whole(-3)}},
            {"Transforms.SpinWave", {40.0, 45.0, 3.0, whole(5), whole(-3)}},
            {"Transforms.Lens", {40.0, whole(5), whole(-3)}},
            {"Transforms.Pinch", {40.0, 10.0, whole(5), whole(-3)}},
            {"Transforms.Ripple", {whole(1), whole(40), whole(3), 2.0, whole(5), whole(-3)}},
            {"Transforms.Wow", {whole(0), whole(30)}},
            {"Transforms.Wow", {whole(1), whole(30)}},
            {"Transforms.Wave", {whole(0), 12.0, 2.0}},
            {"Transforms.ZigZag", {whole(1), whole(12), 3.0}},
            {"Transforms.Marble", {8.0, 15.0, 15.0}},
            {"Transforms.Perlin", {8.0, 15.0, 25.0}},
            {"Transforms.Random", {6.0}},
            {"Transforms.Custom", {}},
            {"Transforms.BumpMap", {10.0, bump}},
            {"Geometry.Warp", {whole(60), whole(50), whole(85), whole(60)}}};
}

} // namespace

class TransformsTest : public QObject {
    Q_OBJECT

  private slots:
    void flatStaysFlat();
    void nothingMovesNothing();
    void radialLaws();
    void beyondTheRadiusNothingChanges();
    void lineLaws();
    void beyondItsEdgesThePictureIsMirrored();
    void offsetMovesExactly();
    void lineSliceMovesExactly();
    void noisesDiffer();
    void randomStaysNear();
    void kaleidoscopeIsSymmetric();
    void warpCarriesTheStartToTheEnd();
    void bumpLights();
    void clearPixelsLendNoColor();
    void shrunkPartsAreMeans();
    void hugeNumbersDoNoHarm();
};

void TransformsTest::flatStaysFlat() {
    for (const Call& call : mildCalls())
        for (const Rgba color : {Rgba{77, 200, 13, 255}, Rgba{0, 255, 254, 100}}) {
            const Raster flat = Raster::filled(ImageType::Rgba32, 131, 97, color);
            const Raster result = run(call.name, flat, call.values);
            QCOMPARE(result.size(), flat.size());
            for (int y = 0; y < 97; ++y)
                for (int x = 0; x < 131; ++x) {
                    const Rgba pixel = result.pixel(x, y);
                    QVERIFY2(std::abs(pixel.r - color.r) <= 1 && std::abs(pixel.g - color.g) <= 1 &&
                                 std::abs(pixel.b - color.b) <= 1 && pixel.a == color.a,
                             call.name);
                }
        }
}

void TransformsTest::nothingMovesNothing() {
    const Raster source = noise(ImageType::Indexed8, {40, 30});
    const Value bump = std::make_shared<const Raster>(noise(ImageType::Rgb24, {5, 5}));
    const Call still[] = {
        {"Transforms.Spin", {40.0, 0.0, whole(0), whole(0)}},
        {"Transforms.Spin", {0.0, 90.0, whole(0), whole(0)}},
        {"Transforms.Spin", {40.0, 90.0, whole(900), whole(0)}},
        {"Transforms.SpinWave", {40.0, 0.0, 3.0, whole(0), whole(0)}},
        {"Transforms.Lens", {0.0, whole(0), whole(0)}},
        {"Transforms.Pinch", {40.0, 0.0, whole(0), whole(0)}},
        {"Transforms.Ripple", {whole(0), whole(40), whole(0), 2.0, whole(0), whole(0)}},
        {"Transforms.Wave", {whole(3), 0.0, 2.0}},
        {"Transforms.ZigZag", {whole(1), whole(0), 3.0}},
        {"Transforms.Marble", {0.0, 15.0, 15.0}},
        {"Transforms.Perlin", {0.0, 15.0, 25.0}},
        {"Transforms.Random", {0.0}},
        {"Transforms.BumpMap", {0.0, bump}},
        {"Geometry.Warp", {whole(6), whole(5), whole(6), whole(5)}}};
    for (const Call& call : still)
        QVERIFY2(run(call.name, source, call.values).sharesPixelsWith(source), call.name);
}

void TransformsTest::radialLaws() {
    const Raster source = smoothPicture();
    const double cx = middleX + 6, cy = middleY - 4, radius = 50;
    const auto law = [&](auto rule) {
        return [=](double x, double y) {
            const double r = std::hypot(x - cx, y - cy);
            if (r >= radius) return Place{x, y};
            if (r > 0.97 * radius) return Place{-1, -1}; // the lens squeezes all into its rim
            const auto [distance, angle] = rule(r);
            return around(x, y, cx, cy, distance, angle);
        };
    };
    const Raster spin = run("Transforms.Spin", source, {radius, 60.0, whole(6), whole(-4)});
    QVERIFY(follows(spin, 2, law([&](double r) {
                        const double u = r / radius;
                        return std::pair{r, pi / 3 * (1 - 3 * u * u + 2 * u * u * u)};
                    })));
    const Raster swung =
        run("Transforms.SpinWave", source, {radius, 30.0, 2.0, whole(6), whole(-4)});
    QVERIFY(
        follows(swung, 2, law([&](double r) {
                    return std::pair{r, pi / 6 * (1 - r / radius) * std::sin(4 * pi * r / radius)};
                })));
    const Raster lens = run("Transforms.Lens", source, {radius, whole(6), whole(-4)});
    QVERIFY(follows(lens, 3, law([&](double r) {
                        return std::pair{radius * 2 / pi * std::asin(r / radius), 0.0};
                    })));
    const Raster pinch = run("Transforms.Pinch", source, {radius, -20.0, whole(6), whole(-4)});
    QVERIFY(follows(pinch, 2, law([&](double r) { return std::pair{r * r / radius, 0.0}; })));
    const Raster ripple =
        run("Transforms.Ripple", source, {whole(3), whole(50), whole(6), 2.0, whole(6), whole(-4)});
    QVERIFY(follows(ripple, 2, law([&](double r) {
                        const double u = r / radius;
                        return std::pair{r + 3 * std::sin(pi * u) * std::sin(4 * pi * u), 0.0};
                    })));
    const Raster rays = run("Transforms.Wow", source, {whole(0), whole(40)});
    QVERIFY(follows(rays, 2, [](double x, double y) {
        return around(x, y, middleX, middleY, std::min(40.0, std::hypot(x - middleX, y - middleY)),
                      0);
    }));
    const Raster rings = run("Transforms.Wow", source, {whole(1), whole(40)});
    QVERIFY(std::abs(rings.index(80 + 60, 60) - toneAt(80 + 20, 60)) < 2);
}

void TransformsTest::beyondTheRadiusNothingChanges() {
    const Raster source = noise(ImageType::Rgb24, size);
    for (const Call& call : mildCalls()) {
        if (call.values.size() < 3 || call.values.back() != whole(-3)) continue;
        const Raster result = run(call.name, source, call.values);
        int changed = 0;
        for (int y = 0; y < size.height; ++y)
            for (int x = 0; x < size.width; ++x) {
                // The mean over a pixel at the rim may reach a pixel across it.
                const double r = std::hypot(x - middleX - 5, y - middleY + 3);
                if (r < 40)
                    changed += result.pixel(x, y) != source.pixel(x, y);
                else if (r > 41.5)
                    QCOMPARE(result.pixel(x, y), source.pixel(x, y));
            }
        QVERIFY2(changed > 1000, call.name);
    }
}

void TransformsTest::lineLaws() {
    const Raster source = smoothPicture();
    for (int style = 0; style < 4; ++style) {
        const bool columns = style % 2 == 1;
        const auto offset = [&](double at) {
            const double phase = 4 * pi * at / (columns ? size.width : size.height);
            return 9 * (style < 2 ? std::sin(phase) : std::cos(phase));
        };
        QVERIFY(follows(run("Transforms.Wave", source, {whole(style), 9.0, 2.0}), 2,
                        [&](double x, double y) {
                            return columns ? Place{x, y - offset(x)} : Place{x - offset(y), y};
                        }));
    }
    const Raster zigZag = run("Transforms.ZigZag", source, {whole(0), whole(10), 1.0});
    QVERIFY(follows(zigZag, 2, [&](double x, double y) {
        const double t = y / size.height;
        const double line = t < 0.25 ? 4 * t : t < 0.75 ? 2 - 4 * t : 4 * t - 4;
        return Place{x - 10 * line, y};
    }));
}

// A wave without periods moves all rows by its height.
void TransformsTest::beyondItsEdgesThePictureIsMirrored() {
    const Raster source = noise(ImageType::Rgb24, {37, 5});
    for (const int by : {9, -30, 100}) {
        const Raster moved =
            run("Transforms.Wave", source, {whole(2), static_cast<double>(by), 0.0});
        for (int x = 0; x < 37; ++x) {
            const int lap = (((x - by) % 72) + 72) % 72;
            QCOMPARE(moved.pixel(x, 3), source.pixel(std::min(lap, 72 - lap), 3));
        }
    }
}

void TransformsTest::offsetMovesExactly() {
    for (const ImageType type : everyType)
        for (const Point by : {Point{3, 5}, Point{-60, 4}, Point{7, -90}})
            for (int style = 0; style < 4; ++style) {
                Raster source = noise(type, {37, 29});
                if (type != ImageType::Bit1 && hasPalette(type)) { // one with room
                    const View pixels = source.edit();
                    for (int y = 0; y < 29; ++y)
                        for (int x = 0; x < 37; ++x)
                            pixels.row(y)[x] &= 127;
                    source.setPalette(Palette(std::vector<Rgba>(128, {9, 9, 9, 255})));
                }
                const Raster result =
                    run("Transforms.Offset", source, {whole(style), whole(by.x), whole(by.y)});
                QCOMPARE(result.type(), type);
                for (int y = 0; y < 29; ++y)
                    for (int x = 0; x < 37; ++x) {
                        int fromX = x - by.x, fromY = y - by.y;
                        if (style == 1 || style == 2) fromX = ((fromX % 37) + 37) % 37;
                        if (style == 1 || style == 3) fromY = ((fromY % 29) + 29) % 29;
                        if (fromX >= 0 && fromY >= 0 && fromX < 37 && fromY < 29)
                            QCOMPARE(result.pixel(x, y), source.pixel(fromX, fromY));
                        else if (type != ImageType::Bit1)
                            QCOMPARE(result.pixel(x, y),
                                     (Rgba{0, 0, 0, std::uint8_t(hasAlpha(type) ? 0 : 255)}));
                    }
            }
}

void TransformsTest::lineSliceMovesExactly() {
    for (const ImageType type : everyType)
        for (const int style : {0, 1}) {
            const Raster source = noise(type, {37, 29});
            const Raster result =
                run("Transforms.LineSlice", source, {whole(style), whole(100), whole(-7)});
            for (int y = 0; y < 29; ++y)
                for (int x = 0; x < 37; ++x) {
                    const int by = (style == 0 ? y : x) % 2 ? -7 : 100;
                    const Rgba expected = style == 0 ? source.pixel(((x - by) % 37 + 37) % 37, y)
                                                     : source.pixel(x, ((y - by) % 29 + 29) % 29);
                    QCOMPARE(result.pixel(x, y), expected);
                }
        }
}

void TransformsTest::noisesDiffer() {
    const Raster source = smoothPicture();
    const Raster marble = run("Transforms.Marble", source, {8.0, 15.0, 15.0});
    const Raster perlin = run("Transforms.Perlin", source, {8.0, 15.0, 15.0});
    double marbleMoves = 0, perlinMoves = 0, apart = 0;
    for (int y = 0; y < size.height; ++y)
        for (int x = 0; x < size.width; ++x) {
            const int before = source.index(x, y);
            marbleMoves += std::abs(marble.index(x, y) - before);
            perlinMoves += std::abs(perlin.index(x, y) - before);
            apart += std::abs(marble.index(x, y) - perlin.index(x, y));
            // No place is further away than the amount; the tone rises by at most 6 a pixel.
            QVERIFY(std::abs(marble.index(x, y) - before) < 8 * 6.1 + 2);
        }
    const double pixels = size.width * size.height;
    QVERIFY(marbleMoves / pixels > 3 && perlinMoves / pixels > 3 && apart / pixels > 3);
    QVERIFY(marble.samePixels(run("Transforms.Marble", source, {8.0, 15.0, 15.0})));
}

void TransformsTest::randomStaysNear() {
    Raster source(ImageType::Rgb24, 90, 80);
    for (int y = 0; y < 80; ++y)
        for (int x = 0; x < 90; ++x)
            source.setPixel(x, y,
                            {static_cast<std::uint8_t>(x), static_cast<std::uint8_t>(y), 0, 255});
    const Raster result = run("Transforms.Random", source, {4.0});
    int moved[9] = {};
    for (int y = 5; y < 75; ++y)
        for (int x = 5; x < 85; ++x) {
            const Rgba pixel = result.pixel(x, y);
            QVERIFY(std::abs(pixel.r - x) <= 4 && std::abs(pixel.g - y) <= 4);
            ++moved[pixel.r - x + 4];
        }
    // Every way is taken about as often; the two ends by half.
    for (int i = 1; i < 8; ++i)
        QVERIFY(std::abs(moved[i] - 700) < 150);
}

void TransformsTest::kaleidoscopeIsSymmetric() {
    const Raster result = run("Transforms.Custom", smoothPicture(), {});
    for (int y = 0; y < size.height; ++y)
        for (int x = 0; x < size.width; ++x) {
            QVERIFY(std::abs(result.index(x, y) - result.index(size.width - 1 - x, y)) <= 1);
            // A sixth of a turn changes nothing.
            const Place turned =
                around(x, y, middleX, middleY, std::hypot(x - middleX, y - middleY), pi / 3);
            const auto toX = static_cast<int>(std::lround(turned.x)),
                       toY = static_cast<int>(std::lround(turned.y));
            if (toX >= 0 && toY >= 0 && toX < size.width && toY < size.height)
                QVERIFY(std::abs(result.index(x, y) - result.index(toX, toY)) <= 10);
        }
    // The sector with something in it is the one that all of them show.
    Raster spot = Raster::filled(ImageType::Gray8, size.width, size.height, {90, 90, 90, 255});
    const auto inSector = [](int sector) {
        const double angle = (sector + 0.5) * pi / 6;
        return Point{static_cast<int>(std::lround(middleX + 40 * std::sin(angle))),
                     static_cast<int>(std::lround(middleY - 40 * std::cos(angle)))};
    };
    const Point place = inSector(7);
    for (int y = -4; y <= 4; ++y)
        for (int x = -4; x <= 4; ++x)
            spot.setPixel(place.x + x, place.y + y, {200, 200, 200, 255});
    const Raster shown = run("Transforms.Custom", spot, {});
    for (int sector = 0; sector < 12; ++sector)
        QCOMPARE(shown.index(inSector(sector).x, inSector(sector).y), 200);
}

void TransformsTest::warpCarriesTheStartToTheEnd() {
    const Raster source = noise(ImageType::Rgb24, size);
    const Raster result =
        run("Geometry.Warp", source, {whole(60), whole(50), whole(72), whole(59)});
    QCOMPARE(result.pixel(72, 59), source.pixel(60, 50));
    for (int y = 0; y < size.height; ++y)
        for (int x = 0; x < size.width; ++x)
            if (std::hypot(x - 72, y - 59) > 2.5 * 15)
                QCOMPARE(result.pixel(x, y), source.pixel(x, y));
    // However far the push goes, the edges hold; exactly so where nothing shrinks.
    const Raster far = run("Geometry.Warp", source, {whole(30), whole(90), whole(130), whole(20)});
    QCOMPARE(far.pixel(130, 20), source.pixel(30, 90));
    for (int x = 0; x < size.width; ++x)
        QCOMPARE(far.pixel(x, size.height - 1), source.pixel(x, size.height - 1));
    for (int y = 0; y < size.height; ++y)
        QCOMPARE(far.pixel(0, y), source.pixel(0, y));
}

void TransformsTest::bumpLights() {
    // A dome: its upper left side faces the lamp.
    Raster dome(ImageType::Gray8, 61, 61);
    for (int y = 0; y < 61; ++y)
        for (int x = 0; x < 61; ++x) {
            const auto v =
                static_cast<std::uint8_t>(std::max(0.0, 200 - 8 * std::hypot(x - 30, y - 30)));
            dome.setPixel(x, y, {v, v, v, 255});
        }
    const Raster flat = Raster::filled(ImageType::Rgba32, 61, 61, {120, 100, 80, 90});
    const auto lit = [&](double amount) {
        return run("Transforms.BumpMap", flat, {amount, std::make_shared<const Raster>(dome)});
    };
    const Raster high = lit(10), deep = lit(-10);
    QVERIFY(high.pixel(22, 22).r > 130 && high.pixel(38, 38).r < 100);
    QVERIFY(deep.pixel(22, 22).r < 100 && deep.pixel(38, 38).r > 130);
    QCOMPARE(high.pixel(1, 1), (Rgba{120, 100, 80, 90})); // outside it is flat
}

void TransformsTest::clearPixelsLendNoColor() {
    Raster source(ImageType::Rgba32, 81, 81);
    for (int y = 0; y < 81; ++y)
        for (int x = 0; x < 81; ++x)
            source.setPixel(
                x, y, std::hypot(x - 40, y - 40) < 20 ? Rgba{255, 0, 0, 255} : Rgba{0, 255, 0, 0});
    for (const Call& call : mildCalls()) {
        if (std::string_view(call.name) == "Transforms.BumpMap") continue;
        const Raster result = run(call.name, source, call.values);
        for (int y = 0; y < 81; ++y)
            for (int x = 0; x < 81; ++x) {
                const Rgba pixel = result.pixel(x, y);
                QVERIFY2(pixel.a < 3 || (pixel.r > 250 && pixel.g < 5), call.name);
            }
    }
}

void TransformsTest::shrunkPartsAreMeans() {
    // Fine stripes that a strong pinch draws together must become grey, not moire.
    Raster stripes(ImageType::Gray8, 201, 201);
    for (int y = 0; y < 201; ++y)
        for (int x = 0; x < 201; ++x) {
            const std::uint8_t v = x % 2 ? 255 : 0;
            stripes.setPixel(x, y, {v, v, v, 255});
        }
    const Raster result = run("Transforms.Pinch", stripes, {100.0, 40.0, whole(0), whole(0)});
    for (int y = 90; y < 111; ++y)
        for (int x = 90; x < 111; ++x)
            if (const double r = std::hypot(x - 100, y - 100); r > 3 && r < 8)
                QVERIFY(std::abs(result.index(x, y) - 127) < 70);
}

void TransformsTest::hugeNumbersDoNoHarm() {
    const Raster source = noise(ImageType::Rgba32, {9, 7});
    const Value most = whole(std::int64_t{1} << 40), least = whole(-(std::int64_t{1} << 40));
    for (const Value& far : {most, least}) {
        for (const double radius : {1e300, -1e300}) {
            run("Transforms.Spin", source, {radius, 1e300, far, far});
            run("Transforms.SpinWave", source, {radius, 45.0, 1e300, far, whole(0)});
            run("Transforms.Lens", source, {radius, far, far});
            run("Transforms.Pinch", source, {radius, radius, far, far});
            run("Transforms.Wave", source, {whole(1), radius, radius});
            run("Transforms.Marble", source, {radius, radius, -radius});
            run("Transforms.Random", source, {radius});
        }
        run("Transforms.Ripple", source, {whole(0), far, far, 1e300, far, far});
        run("Transforms.Wow", source, {whole(1), far});
        run("Transforms.Offset", source, {whole(1), far, far});
        run("Transforms.LineSlice", source, {whole(1), far, far});
        run("Geometry.Warp", source, {far, whole(0), whole(0), far});
        QVERIFY_EXCEPTION_THROWN(run("Geometry.Skew", source, {whole(0), far, Rgba{}, false}),
                                 kvn::RuntimeError);
    }
    run("Geometry.Rotate", source, {1e300, Rgba{}, whole(0)});
    run("Geometry.Perspective", source,
        {Point{-2147483647, 2147483647}, Point{0, 0}, Point{2147483647, 5}, Point{9, 9}, whole(1)});
}

QTEST_GUILESS_MAIN(TransformsTest)
#include "ops_transforms.moc"
