// Frames, shadows, cracks, strokes and motion: against the obvious way to compute them where there
// is one, and against what each must hold for any picture where there is none.
#include <QtTest>

#include "basic/error.h"
#include "imaging/support/filter_reference.h"
#include "reference/pictures.h"

using namespace kvn::imaging;
using namespace reference;

namespace {

const Value black = Rgba{0, 0, 0, 255}, white = Rgba{255, 255, 255, 255};

double meanOf(const Raster& picture, int c) {
    double sum = 0;
    for (int y = 0; y < picture.height(); ++y)
        for (int x = 0; x < picture.width(); ++x)
            sum += channelAt(picture, x, y, c);
    return sum / picture.width() / picture.height();
}

double distanceOf(const Raster& a, const Raster& b) {
    return largestDifference(a,
                             [&](int x, int y, int c) -> double { return channelAt(b, x, y, c); });
}

// A value between the pixels.
double linearAt(const Raster& picture, double x, double y, int c) {
    const int left = static_cast<int>(std::floor(x)), top = static_cast<int>(std::floor(y));
    const double u = x - left, v = y - top;
    const auto at = [&](int i, int j) { return channelAt(picture, left + i, top + j, c); };
    return (at(0, 0) * (1 - u) + at(1, 0) * u) * (1 - v) + (at(0, 1) * (1 - u) + at(1, 1) * u) * v;
}

// Patches of random colours.
Raster patches(Size size) {
    const Raster colors = noise(ImageType::Rgb24, {size.width / 9 + 1, size.height / 9 + 1});
    Raster picture(ImageType::Rgb24, size.width, size.height);
    for (int y = 0; y < size.height; ++y)
        for (int x = 0; x < size.width; ++x)
            picture.setPixel(x, y, colors.pixel(x / 9, y / 9));
    return picture;
}

// A disc on nothing.
Raster disc(Rgba color, int side) {
    Raster picture(ImageType::Rgba32, side, side);
    const double middle = (side - 1) / 2.0;
    for (int y = 0; y < side; ++y)
        for (int x = 0; x < side; ++x)
            if (std::hypot(x - middle, y - middle) < side / 4.0) picture.setPixel(x, y, color);
    return picture;
}

} // namespace

class ArtTest : public QObject {
    Q_OBJECT

  private slots:
    void neutralArgumentsChangeNothing();
    void bevelLightsItsSides();
    void shadowLiesBesideTheRectangle();
    void shadowFollowsTheShape();
    void shapeIsLitFromItsAngle();
    void linearMotionIsTheMeanOfALine();
    void turningAndZoomingKeepTheirCentre();
    void motionLeavesNoFringes();
    void modesDiffer();
    void gauzeMovesTheLight();
};

void ArtTest::neutralArgumentsChangeNothing() {
    const struct {
        const char* name;
        std::vector<Value> values;
    } cases[] = {
        {"Geometry.BevelEdge", {whole(0), whole(140), whole(140), whole(80), whole(80), 100.0}},
        {"Geometry.BevelEdge", {whole(9), whole(100), whole(100), whole(100), whole(100), 0.0}},
        {"Geometry.Crackle", {whole(0), whole(2)}},
        {"Geometry.DropShadow", {whole(5), whole(5), Rgba{9, 9, 9, 0}, 255.0, true}},
        {"Geometry.EmbossShape", {whole(0), whole(45), whole(100), black, white}},
        {"Geometry.MotionBlur", {0.0, whole(2), 90.0, whole(0)}},
        {"Geometry.Stipple", {whole(0), whole(0), true}},
    };
    for (const ImageType type : everyType) {
        const Raster picture = noise(type, {33, 21});
        for (const auto& c : cases)
            QVERIFY2(runOne(c.name, picture, c.values).samePixels(picture), c.name);
    }
}

void ArtTest::bevelLightsItsSides() {
    const Raster flat = Raster::filled(ImageType::Rgba32, 60, 40, {100, 100, 100, 90});
    const Raster result = runOne("Geometry.BevelEdge", flat,
                                 {whole(8), whole(150), whole(120), whole(80), whole(50), 0.0});
    // v + (f - 1) * (3 v + 255) / 4, flat to the inner edge.
    const auto lit = [](int percent) { return 100 + (percent / 100.0 - 1) * (300 + 255) / 4; };
    for (const int depth : {0, 7}) {
        QVERIFY(std::abs(channelAt(result, depth, 20, 0) - lit(150)) <= 1);
        QVERIFY(std::abs(channelAt(result, 30, depth, 0) - lit(120)) <= 1);
        QVERIFY(std::abs(channelAt(result, 59 - depth, 20, 0) - lit(80)) <= 1);
        QVERIFY(std::abs(channelAt(result, 30, 39 - depth, 0) - lit(50)) <= 1);
    }
    QVERIFY(result.cropped({8, 8, 44, 24}).samePixels(flat.cropped({8, 8, 44, 24})));
    QCOMPARE(result.pixel(0, 0).a, flat.pixel(0, 0).a);
}

void ArtTest::shadowLiesBesideTheRectangle() {
    const Raster picture = noise(ImageType::Rgb24, {50, 30});
    const Rgba color{10, 20, 30, 200};
    const Raster sharp =
        runOne("Geometry.DropShadow", picture, {whole(7), whole(-4), color, 0.0, true});
    QCOMPARE(sharp.size(), (Size{57, 34}));
    const Rect own{0, 4, 50, 30}, shadow{7, 0, 50, 30};
    const auto covers = [](const Rect& rect, int x, int y) {
        return !rect.intersected({x, y, 1, 1}).isEmpty();
    };
    for (int y = 0; y < 34; ++y)
        for (int x = 0; x < 57; ++x)
            QCOMPARE(sharp.pixel(x, y), covers(own, x, y)      ? picture.pixel(x, y - 4)
                                        : covers(shadow, x, y) ? color
                                                               : (Rgba{0, 0, 0, 0}));
    // Kept in its size, an opaque picture gives room; a grey one stays grey.
    const Raster kept = runOne("Geometry.DropShadow", noise(ImageType::Gray8, {50, 30}),
                               {whole(3), whole(3), Nothing{}, 255.0, false});
    QCOMPARE(kept.size(), picture.size());
    QCOMPARE(kept.type(), ImageType::GrayAlpha16);
    QVERIFY(kept.pixel(49, 15).a < 255 && kept.pixel(0, 0).a == 255);
    QVERIFY_EXCEPTION_THROWN(
        runOne("Geometry.DropShadow", picture, {whole(2000000000), whole(0), Nothing{}, 0.0, true}),
        kvn::RuntimeError);
}

void ArtTest::shadowFollowsTheShape() {
    const Raster picture = disc({200, 90, 10, 255}, 64);
    const Raster result =
        runOne("Geometry.DropShadow", picture, {whole(6), whole(9), black, 51.0, false});
    QCOMPARE(result.pixel(32, 32), picture.pixel(32, 32));
    QVERIFY(result.pixel(32 + 6, 32 + 9 + 13).a > 200); // under the shifted disc
    QVERIFY(result.pixel(32 - 16, 32 - 14).a < 12);     // the side of the light
    // The blur loses nothing of the shadow: its weight is the disc's own.
    const Raster alone = runOne("Geometry.DropShadow", disc({0, 0, 0, 255}, 64),
                                {whole(64), whole(0), black, 51.0, true});
    QVERIFY(std::abs(meanOf(alone, 3) * alone.width() * alone.height() /
                         (2 * meanOf(picture, 3) * 64 * 64) -
                     1) < 0.01);
}

void ArtTest::shapeIsLitFromItsAngle() {
    const Raster picture = disc({120, 120, 120, 255}, 80);
    for (int angle = 0; angle < 360; angle += 45) {
        const Raster result = runOne("Geometry.EmbossShape", picture,
                                     {whole(6), whole(angle), whole(80), black, white});
        const double turn = angle * 3.14159265 / 180;
        const auto rim = [&](int side) {
            return channelAt(result,
                             static_cast<int>(std::lround(39.5 + side * 17 * std::cos(turn))),
                             static_cast<int>(std::lround(39.5 - side * 17 * std::sin(turn))), 0);
        };
        QVERIFY(rim(1) > 140 && rim(-1) < 100);
        QCOMPARE(result.pixel(40, 40), picture.pixel(40, 40));
    }
}

void ArtTest::linearMotionIsTheMeanOfALine() {
    const Raster picture = waves({90, 70}), rough = noise(ImageType::Rgb24, {90, 70});
    for (const double length : {2.0, 5.0, 11.5, 31.0, 64.0})
        for (const double angle : {0.0, 90.0, 30.0, 200.0, -75.0}) {
            const std::vector<Value> values{length, whole(1), angle, whole(0)};
            const double turn = angle * 3.14159265358979 / 180;
            const double across = std::cos(turn), down = -std::sin(turn);
            const auto expected = [&](int x, int y, int c) {
                double sum = 0;
                constexpr int places = 64;
                for (int k = 0; k < places; ++k) {
                    const double way = ((k + 0.5) / places - 0.5) * length;
                    sum += linearAt(picture, x + way * across, y + way * down, c);
                }
                return sum / places;
            };
            const Raster result = runOne("Geometry.MotionBlur", picture, values);
            QVERIFY2(largestDifference(result, expected) < 4.5,
                     qPrintable(QString("%1 %2").arg(length).arg(angle)));
            // Along whole pixels the window is exact.
            if (length != 31 || angle > 90 || static_cast<int>(angle) % 90 != 0) continue;
            const Raster box = runOne("Geometry.MotionBlur", rough, values);
            const auto exact = [&](int x, int y, int c) {
                double sum = 0;
                for (int k = -15; k <= 15; ++k)
                    sum +=
                        angle == 0 ? channelAt(rough, x + k, y, c) : channelAt(rough, x, y + k, c);
                return sum / 31;
            };
            QVERIFY(largestDifference(box, exact) < 0.75);
        }
    // Whole pieces of a row are done another way than the rest of it.
    const Raster wide = noise(ImageType::Rgb24, {700, 40});
    const std::vector<Value> values{10.0, whole(2), 30.0, whole(0)};
    const Raster part = runOne("Geometry.MotionBlur", wide.cropped({280, 0, 120, 40}), values);
    QVERIFY(runOne("Geometry.MotionBlur", wide, values)
                .cropped({310, 0, 60, 40})
                .samePixels(part.cropped({30, 0, 60, 40})));
}

void ArtTest::turningAndZoomingKeepTheirCentre() {
    // Rings turn into themselves, rays grow into themselves.
    Raster rings(ImageType::Rgb24, 121, 121), rays = rings;
    for (int y = 0; y < 121; ++y)
        for (int x = 0; x < 121; ++x) {
            const double radius = std::hypot(x - 60, y - 60), turn = std::atan2(y - 60, x - 60);
            const auto level = [](double v) { return static_cast<std::uint8_t>(127 + 100 * v); };
            const auto ring = level(std::sin(radius / 5)), ray = level(std::sin(turn * 6));
            rings.setPixel(x, y, {ring, ring, ring, 255});
            rays.setPixel(x, y, {ray, ray, ray, 255});
        }
    const auto blurred = [](const Raster& picture, int style) {
        return runOne("Geometry.MotionBlur", picture, {20.0, whole(1), 0.0, whole(style)})
            .cropped({20, 20, 81, 81});
    };
    const Rect middle{20, 20, 81, 81}, corner{0, 0, 25, 81};
    QVERIFY(distanceOf(blurred(rings, 1), rings.cropped(middle)) < 16);
    QVERIFY(distanceOf(blurred(rays, 2).cropped(corner), rays.cropped(middle).cropped(corner)) < 8);
    QVERIFY(distanceOf(blurred(rings, 2), rings.cropped(middle)) > 25);
    QVERIFY(distanceOf(blurred(rays, 1), rays.cropped(middle)) > 25);
}

void ArtTest::motionLeavesNoFringes() {
    const Raster picture = disc({250, 240, 230, 255}, 64); // on clear black
    for (const int style : {0, 1, 2}) {
        const Raster result =
            runOne("Geometry.MotionBlur", picture, {9.0, whole(2), 33.0, whole(style)});
        for (int y = 0; y < 64; ++y)
            for (int x = 0; x < 64; ++x)
                if (result.pixel(x, y).a > 40) QVERIFY(result.pixel(x, y).g > 230);
        QVERIFY(std::abs(meanOf(result, 3) / meanOf(picture, 3) - 1) < 0.03);
    }
}

// Every mode changes the picture, and none like another one.
void ArtTest::modesDiffer() {
    const Raster picture = patches({160, 120});
    std::vector<Raster> results{picture};
    for (int mode = 0; mode < 5; ++mode) {
        results.push_back(runOne("Geometry.Crackle", picture, {whole(50), whole(mode)}));
        results.push_back(runOne("Geometry.Stipple", picture, {whole(50), whole(mode), true}));
        results.push_back(runOne("Geometry.Stipple", picture, {whole(50), whole(mode), false}));
        results.push_back(
            runOne("Geometry.Gauzy", picture, {whole(50), whole(60), whole(50), whole(mode)}));
    }
    for (int filter = 0; filter < 4; ++filter)
        for (const bool first : {false, true})
            results.push_back(
                runOne("Geometry.Scribble", picture, {whole(50), whole(filter), first}));
    for (std::size_t i = 0; i < results.size(); ++i)
        for (std::size_t j = 0; j < i; ++j)
            QVERIFY2(distanceOf(results[i], results[j]) > 8,
                     qPrintable(QString("%1 and %2 look alike").arg(i).arg(j)));
    // Grey stays grey, also where there is gold.
    const Raster gray =
        runOne("Geometry.Crackle", noise(ImageType::Gray8, {90, 60}), {whole(80), whole(4)});
    QCOMPARE(gray.type(), ImageType::Gray8);
}

void ArtTest::gauzeMovesTheLight() {
    const Raster picture = patches({160, 120});
    const auto veiled = [&](int mode) {
        return runOne("Geometry.Gauzy", picture, {whole(80), whole(0), whole(0), whole(mode)});
    };
    QVERIFY(meanOf(veiled(3), 1) > meanOf(picture, 1) + 1);
    QVERIFY(meanOf(veiled(4), 1) < meanOf(picture, 1) - 1);
    QVERIFY(std::abs(meanOf(veiled(1), 1) - meanOf(picture, 1)) < 1);
    QVERIFY(veiled(1).samePixels(veiled(-1)));
    const Raster faded = veiled(0);
    double color = 0, before = 0;
    for (int y = 0; y < 120; ++y)
        for (int x = 0; x < 160; ++x) {
            color += std::abs(channelAt(faded, x, y, 0) - channelAt(faded, x, y, 2));
            before += std::abs(channelAt(picture, x, y, 0) - channelAt(picture, x, y, 2));
        }
    QVERIFY(color < before / 2);
}

QTEST_GUILESS_MAIN(ArtTest)
#include "ops_art.moc"
