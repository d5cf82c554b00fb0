// Scanned pages straightened: the angle is found on pages turned by known ones, with noise,
// pictures and black margins on them, and blank or wild pages are left alone.
#include <QtTest>
#include <cmath>
#include <numbers>

#include "imaging/convert.h"
#include "imaging/operation.h"
#include "imaging/operations/resample/skew_angle.h"
#include "imaging/operations/resample/turned_bits.h"
#include "reference/pictures.h"

using namespace kvn::imaging;
using namespace reference;

namespace {

unsigned hashed(int a, int b) {
    unsigned h = static_cast<unsigned>(a) * 0x9E3779B1u + static_cast<unsigned>(b) * 0x85EBCA77u;
    h = (h ^ h >> 15) * 0x2C1B3C6Du;
    return h ^ h >> 13;
}

// Paragraphs of words of letters of strokes. `size` is the height of a small letter.
bool isText(double u, double v, double size) {
    const double pitch = 2.4 * size;
    const int line = static_cast<int>(std::floor(v / pitch));
    const double y = v / size - line * 2.4, x = u / (0.7 * size);
    const int letter = static_cast<int>(std::floor(x));
    const double across = x - letter;
    const unsigned paragraph = hashed(line / 7, -3) % 9, h = hashed(line, letter);
    if (line % 7 == 6 && letter > static_cast<int>(paragraph) * 3) return false;
    if (h % 6 == 0 || across > 0.8) return false;
    const double top = h & 64 ? 0.2 : 0.75, bottom = h & 128 ? 2.1 : 1.75;
    if (y < top || y > bottom) return false;
    const bool stem = (across < 0.2 && (h & 256)) || (across > 0.6 && (h & 512));
    const bool bar = (y > 1.6 && y < 1.75 && (h & 1024)) || (y > 0.75 && y < 0.9 && (h & 2048));
    return stem || bar || (h & 3584) == 0;
}

struct Scan {
    Size size{1000, 1400};
    double angle = 0; // degrees clockwise
    double letters = 12;
    double noise = 0;     // share of the pixels
    bool picture = false; // a dithered one, and a solid one
    bool margin = false;  // black at the left and the bottom, straight
    bool negative = false;
};

Raster scanned(const Scan& scan) {
    std::mt19937 random(11);
    Raster page(ImageType::Bit1, scan.size.width, scan.size.height);
    const View view = page.edit();
    const double w = scan.size.width, h = scan.size.height;
    const double angle = scan.angle * std::numbers::pi / 180;
    const double c = std::cos(angle), s = std::sin(angle);
    for (int y = 0; y < scan.size.height; ++y)
        for (int x = 0; x < scan.size.width; ++x) {
            const double dx = x - (w - 1) / 2, dy = y - (h - 1) / 2;
            const double u = c * dx + s * dy, v = c * dy - s * dx;
            bool ink =
                std::abs(u) < 0.4 * w && std::abs(v) < 0.42 * h && isText(u, v, scan.letters);
            if (scan.picture && u > -0.3 * w && u < 0.1 * w && v > -0.35 * h && v < -0.05 * h)
                ink = random() % 256 < 128 + 100 * std::sin(u * 0.02) * std::cos(v * 0.03);
            if (scan.picture && u > 0.15 * w && u < 0.3 * w && v > 0.1 * h && v < 0.3 * h)
                ink = true;
            if (scan.margin && (x < 0.04 * w || y > 0.97 * h)) ink = true;
            if (random() % 10000 < scan.noise * 10000) ink = !ink;
            if (ink == scan.negative)
                view.row(y)[x / 8] |= static_cast<std::uint8_t>(0x80 >> x % 8);
        }
    return page;
}

double angleOf(const Raster& page, const Rect& area = {0, 0, 1 << 20, 1 << 20}) {
    Task task;
    return skewAngle(page.view(), area.intersected(page.rect()), {}, task);
}

Raster straightened(const Raster& page) {
    const std::int64_t all[] = {2, 4, 1, 0, 0, 0, 0};
    Task task;
    return runOperation(*findOperation("Geometry.AutoDeskew"), page,
                        {std::begin(all), std::end(all)}, task)
        .front();
}

} // namespace

class DeskewTest : public QObject {
    Q_OBJECT

  private slots:
    void findsKnownAngles();
    void noiseAndPicturesDoNotMatter();
    void looksWhereItIsTold();
    void leavesOthersAlone();
    void turnsByTheNearestPixel();
    void straightensEveryType();
};

void DeskewTest::findsKnownAngles() {
    for (const double angle :
         {-15.0, -11.27, -4.5, -1.0, -0.33, -0.1, 0.0, 0.07, 0.52, 2.0, 6.66, 9.99, 14.95}) {
        const double found = angleOf(scanned({.angle = angle}));
        QVERIFY2(std::abs(found - angle) < 0.075, qPrintable(QString::number(found - angle)));
    }
    // Small pages, small letters, wide lines, few lines.
    for (const Scan& scan : {Scan{.size = {500, 700}, .angle = 3.21, .letters = 8},
                             Scan{.size = {620, 400}, .angle = -8.4, .letters = 7},
                             Scan{.size = {1600, 900}, .angle = 12.5, .letters = 30},
                             Scan{.size = {2000, 300}, .angle = -0.7, .letters = 16}}) {
        const double found = angleOf(scanned(scan));
        QVERIFY2(std::abs(found - scan.angle) < 0.1, qPrintable(QString::number(found)));
    }
}

void DeskewTest::noiseAndPicturesDoNotMatter() {
    for (const double angle : {-12.4, -2.22, 0.9, 7.77})
        for (const Scan& scan : {Scan{.noise = 0.05}, Scan{.picture = true}, Scan{.margin = true},
                                 Scan{.noise = 0.02, .picture = true, .margin = true},
                                 Scan{.picture = true, .negative = true}}) {
            Scan turned = scan;
            turned.angle = angle;
            const double found = angleOf(scanned(turned));
            QVERIFY2(std::abs(found - angle) < 0.1, qPrintable(QString::number(found - angle)));
        }
}

void DeskewTest::looksWhereItIsTold() {
    // Two halves turned differently.
    Raster page = scanned({.angle = 5});
    const Raster other = scanned({.angle = -3});
    const View view = page.edit();
    for (int y = 700; y < 1400; ++y)
        std::copy_n(other.view().row(y), page.rowBytes(), view.row(y));
    QVERIFY(std::abs(angleOf(page, {103, 0, 850, 690}) - 5) < 0.15);
    QVERIFY(std::abs(angleOf(page, {30, 710, 950, 690}) + 3) < 0.15);
}

void DeskewTest::leavesOthersAlone() {
    const Raster blank = Raster::filled(ImageType::Bit1, 300, 400, {255, 255, 255, 255});
    for (const Raster& page : {blank, noise(ImageType::Bit1, {700, 500}), scanned({}),
                               Raster(ImageType::Bit1, 1, 1), Raster(ImageType::Bit1, 20000, 3)})
        QVERIFY2(straightened(page).sharesPixelsWith(page),
                 qPrintable(QString::number(angleOf(page))));
}

void DeskewTest::turnsByTheNearestPixel() {
    const Raster source = noise(ImageType::Bit1, {131, 77});
    for (const double degrees : {-40.0, -15.0, -0.9, 0.01, 3.0, 12.0})
        for (const int outside : {0, 1}) {
            Task task;
            const Raster result = turnedBits(source, degrees, outside, task);
            const double angle = degrees * std::numbers::pi / 180;
            int wrong = 0;
            for (int y = 0; y < 77; ++y)
                for (int x = 0; x < 131; ++x) {
                    const double u = std::cos(angle) * (x - 65) - std::sin(angle) * (y - 38) + 65;
                    const double v = std::sin(angle) * (x - 65) + std::cos(angle) * (y - 38) + 38;
                    const int fromX = static_cast<int>(std::floor(u + 0.5));
                    const int fromY = static_cast<int>(std::floor(v + 0.5));
                    const bool inside = fromX >= 0 && fromX < 131 && fromY >= 0 && fromY < 77;
                    wrong += result.index(x, y) != (inside ? source.index(fromX, fromY) : outside);
                }
            QVERIFY(wrong <= 2); // places on the very border between two pixels
        }
}

void DeskewTest::straightensEveryType() {
    const Raster page = scanned({.size = {700, 900}, .angle = 4.2, .picture = true});
    for (const ImageType type : everyType) {
        Task task;
        const Raster result = straightened(convertType(page, type, task));
        QCOMPARE(result.size(), page.size());
        QCOMPARE(result.type(), !hasPalette(type) || type == ImageType::Bit1 ? type
                                : hasAlpha(type)                             ? ImageType::Rgba32
                                                                             : ImageType::Rgb24);
        const Raster gray = convertType(result, ImageType::Gray8, task);
        QCOMPARE(int{gray.index(0, 0)}, 255); // paper comes in
        Raster bits(ImageType::Bit1, 700, 900);
        for (int y = 0; y < 900; ++y)
            for (int x = 0; x < 700; ++x)
                if (gray.index(x, y) > 127) bits.setPixel(x, y, {255, 255, 255, 255});
        QVERIFY(std::abs(angleOf(bits)) < 0.1);
    }
}

QTEST_GUILESS_MAIN(DeskewTest)
#include "deskew.moc"
