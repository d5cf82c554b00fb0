// Red eyes on a drawn face: both pupils go dark, everything else stays as it is.
#include <QtTest>
#include <cmath>

#include "imaging/convert.h"
#include "imaging/operation.h"
#include "reference/pictures.h"

using namespace kvn::imaging;
using namespace reference;

namespace {

struct Tint {
    double r, g, b;
};

// 1 inside an ellipse, 0 outside, soft over about a pixel.
double inside(double x, double y, double cx, double cy, double rx, double ry) {
    const double distance = std::hypot((x - cx) / rx, (y - cy) / ry);
    return std::clamp((1 - distance) * std::min(rx, ry) + 0.5, 0.0, 1.0);
}

void paint(Tint& below, const Tint& tint, double share) {
    below = {below.r + share * (tint.r - below.r), below.g + share * (tint.g - below.g),
             below.b + share * (tint.b - below.b)};
}

struct Face {
    int size = 400;
    Tint skin{222, 172, 145}, lips{188, 82, 88}, pupil{196, 38, 44};
};

constexpr double eyeX[] = {0.36, 0.64};
constexpr double eyeY = 0.42, pupilRadius = 0.024;

Raster drawn(const Face& face) {
    std::mt19937 random(4);
    Raster picture(ImageType::Rgb24, face.size, face.size);
    for (int j = 0; j < face.size; ++j)
        for (int i = 0; i < face.size; ++i) {
            const double x = (i + 0.5) / face.size, y = (j + 0.5) / face.size, s = face.size;
            const auto disc = [&](double cx, double cy, double rx, double ry) {
                return inside(x * s, y * s, cx * s, cy * s, rx * s, ry * s);
            };
            Tint tint{70, 90, 110};
            paint(tint, {178, 24, 36}, disc(0.5, 1.15, 0.6, 0.3)); // a red shirt
            paint(tint, face.skin, disc(0.5, 0.5, 0.34, 0.44));
            const double shade = 1 - 0.35 * std::hypot(x - 0.45, y - 0.4);
            tint = {tint.r * shade, tint.g * shade, tint.b * shade};
            for (const double cheek : {0.3, 0.7}) // rosy
                paint(tint, {215, 128, 118}, 0.8 * disc(cheek, 0.6, 0.07, 0.06));
            paint(tint, face.lips, disc(0.5, 0.74, 0.11, 0.035));
            for (const double cx : eyeX) {
                paint(tint, {232, 226, 222}, disc(cx, eyeY, 0.085, 0.045));
                paint(tint, {84, 92, 70}, disc(cx, eyeY, 0.042, 0.042));
                paint(tint, face.pupil, disc(cx, eyeY, pupilRadius, pupilRadius));
                paint(tint, {250, 245, 246}, disc(cx - 0.006, eyeY - 0.008, 0.006, 0.006));
            }
            const auto level = [&](double v) {
                return static_cast<std::uint8_t>(
                    std::clamp(v + static_cast<int>(random() % 9) - 4.0, 0.0, 255.0));
            };
            picture.setPixel(i, j, {level(tint.r), level(tint.g), level(tint.b), 255});
        }
    return picture;
}

Raster reduced(const Raster& source, const Rect& area, int saturation = 50, int range = 50) {
    Task task;
    return runOperation(*findOperation("Effects.RedEyeReduction"), source,
                        {std::int64_t{area.x}, std::int64_t{area.y}, std::int64_t{area.right()},
                         std::int64_t{area.bottom()}, std::int64_t{saturation},
                         std::int64_t{range}},
                        task)
        .front();
}

double distanceToPupils(int x, int y, int size) {
    double least = 1e9;
    for (const double cx : eyeX)
        least = std::min(least, std::hypot((x + 0.5) / size - cx, (y + 0.5) / size - eyeY));
    return least * size;
}

// Pupils have lost their red and kept their glint; beyond them no pixel is another.
void verifyReduced(const Raster& source, const Raster& result) {
    const int size = source.width();
    const double radius = pupilRadius * size;
    for (int y = 0; y < size; ++y)
        for (int x = 0; x < size; ++x) {
            const double distance = distanceToPupils(x, y, size);
            const Rgba before = source.pixel(x, y), after = result.pixel(x, y);
            if (distance > 1.3 * radius + 2) QCOMPARE(after, before);
            if (distance < radius - 1 && before.g < 90)
                QVERIFY(after.r <= std::max(after.g, after.b) + 16);
            if (before.g > 235) QCOMPARE(after, before);
        }
}

} // namespace

class RetouchTest : public QObject {
    Q_OBJECT

  private slots:
    void pupilsGoDarkAndNothingElse();
    void argumentsCount();
    void emptyRectanglesChangeNothing();
    void everyType();
};

void RetouchTest::pupilsGoDarkAndNothingElse() {
    const Face faces[] = {{},
                          {.size = 130},
                          {.size = 900},
                          {.lips = {176, 26, 44}}, // lipstick as red as the pupils
                          {.skin = {128, 84, 62}, .lips = {130, 58, 60}},
                          {.skin = {240, 205, 190}, .pupil = {235, 70, 60}},
                          {.pupil = {96, 14, 22}}};
    for (const Face& face : faces) {
        const Raster source = drawn(face);
        verifyReduced(source, reduced(source, source.rect()));
    }
    // A rectangle around one eye, and one around one pupil.
    const Raster source = drawn({});
    for (const Rect& area : {Rect{100, 140, 90, 60}, Rect{132, 156, 24, 24}}) {
        const Raster result = reduced(source, area);
        QVERIFY(result.pixel(146, 171).r < 60);
        for (int y = 0; y < 400; ++y)
            for (int x = 200; x < 400; ++x)
                QCOMPARE(result.pixel(x, y), source.pixel(x, y));
    }
}

void RetouchTest::argumentsCount() {
    // A pale pupil of a doubtful hue counts only if it may.
    const Raster source = drawn({.pupil = {190, 112, 60}});
    QVERIFY(reduced(source, source.rect(), 50, 50).samePixels(source));
    QVERIFY(reduced(source, source.rect(), 20, 20).samePixels(source));
    QVERIFY(!reduced(source, source.rect(), 20, 90).samePixels(source));
}

void RetouchTest::emptyRectanglesChangeNothing() {
    const Raster source = drawn({.size = 130});
    for (const Rect& area : {Rect{0, 0, 0, 0}, Rect{40, 90, 50, 30}, Rect{500, 500, 10, 10},
                             Rect{-50, -50, 20, 20}, Rect{0, 100, 130, 30}})
        QVERIFY(reduced(source, area).sharesPixelsWith(source));
}

void RetouchTest::everyType() {
    Task task;
    const Raster face = drawn({});
    for (const ImageType type :
         {ImageType::Indexed8, ImageType::Indexed8Alpha, ImageType::Rgba32}) {
        const Raster source = convertType(face, type, task);
        const Raster result = reduced(source, source.rect());
        QCOMPARE(result.type(), hasAlpha(type) ? ImageType::Rgba32 : ImageType::Rgb24);
        QVERIFY(result.pixel(146, 171).r < 80);
    }
    const Raster gray = convertType(face, ImageType::Gray8, task);
    QVERIFY(reduced(gray, gray.rect()).sharesPixelsWith(gray));
}

QTEST_GUILESS_MAIN(RetouchTest)
#include "ops_retouch.moc"
