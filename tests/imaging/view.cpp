// Scaling for the screen, held against a slow and plain reference over random pictures.
#include <QtTest>
#include <cmath>
#include <random>

#include "imaging/view/picture_view.h"
#include "imaging/view/scaling.h"
#include "reference/instruction_sets.h"

using namespace kvn::imaging;

namespace {

constexpr ImageType everyType[] = {
    ImageType::Bit1,        ImageType::Indexed8, ImageType::Indexed8Alpha, ImageType::Gray8,
    ImageType::GrayAlpha16, ImageType::Rgb24,    ImageType::Rgba32};

struct Real {
    double r = 0, g = 0, b = 0, a = 0; // premultiplied, 0..255
};
Real operator+(Real p, Real q) {
    return {p.r + q.r, p.g + q.g, p.b + q.b, p.a + q.a};
}
Real operator*(Real p, double f) {
    return {p.r * f, p.g * f, p.b * f, p.a * f};
}

// A picture in real numbers, premultiplied.
struct Plane {
    int width, height;
    std::vector<Real> pixels;
    Real at(int x, int y) const {
        return pixels[static_cast<std::size_t>(std::min(y, height - 1) * width +
                                               std::min(x, width - 1))];
    }
};

Plane planeOf(const Raster& picture) {
    Plane plane{picture.width(), picture.height(), {}};
    for (int y = 0; y < plane.height; ++y)
        for (int x = 0; x < plane.width; ++x) {
            const Rgba c = picture.pixel(x, y);
            const double a = c.a / 255.0;
            plane.pixels.push_back({c.r * a, c.g * a, c.b * a, double(c.a)});
        }
    return plane;
}

// Means of two by two; at the end of an odd side, of what there is.
Plane halved(const Plane& from) {
    Plane to{(from.width + 1) / 2, (from.height + 1) / 2, {}};
    for (int y = 0; y < to.height; ++y)
        for (int x = 0; x < to.width; ++x)
            to.pixels.push_back((from.at(2 * x, 2 * y) + from.at(2 * x + 1, 2 * y) +
                                 from.at(2 * x, 2 * y + 1) + from.at(2 * x + 1, 2 * y + 1)) *
                                0.25);
    return to;
}

// The mean over x0..x1, y0..y1, where the plane reaches to width and height.
Real meanOver(const Plane& plane, double x0, double x1, double y0, double y1, double width,
              double height) {
    x1 = std::min(x1, width);
    y1 = std::min(y1, height);
    Real sum;
    double total = 0;
    for (int y = int(y0); y < y1; ++y)
        for (int x = int(x0); x < x1; ++x) {
            const double part = (std::min(x + 1.0, x1) - std::max<double>(x, x0)) *
                                (std::min(y + 1.0, y1) - std::max<double>(y, y0));
            sum = sum + plane.at(x, y) * part;
            total += part;
        }
    return sum * (1 / total);
}

struct Reference {
    explicit Reference(const Raster& picture) : levels{planeOf(picture)} {}
    std::vector<Plane> levels;

    Real pixel(int x, int y, double zoom) {
        double factor = 1 / zoom, width = levels[0].width, height = levels[0].height;
        std::size_t level = 0;
        for (; factor >= 2; factor /= 2, width /= 2, height /= 2)
            if (++level == levels.size()) levels.push_back(halved(levels.back()));
        const Plane& from = levels[level];
        if (factor <= 1)
            return from.at(int(sourceIndex(x, 1 / factor)), int(sourceIndex(y, 1 / factor)));
        return meanOver(from, x * factor, (x + 1) * factor, y * factor, (y + 1) * factor, width,
                        height);
    }
};

std::mt19937& dice() {
    static std::mt19937 generator(20261124);
    return generator;
}
std::uint8_t byte() {
    return static_cast<std::uint8_t>(dice()());
}

Raster noise(ImageType type, int width, int height) {
    Raster picture(type, width, height);
    if (type == ImageType::Indexed8 || type == ImageType::Indexed8Alpha) {
        std::vector<Rgba> colors;
        for (int i = 0; i < 200; ++i) // indexes beyond the palette occur
            colors.push_back(
                {byte(), byte(), byte(), type == ImageType::Indexed8 ? std::uint8_t{255} : byte()});
        picture.setPalette(Palette(colors));
    }
    const View view = picture.edit();
    for (int y = 0; y < height; ++y)
        std::generate_n(view.row(y), picture.rowBytes(), byte);
    return picture;
}

struct Screen {
    Screen(int width, int height)
        : width(width), height(height), pixels(std::size_t(width * height), 0x12345678u) {}
    int width, height;
    std::vector<std::uint32_t> pixels;
    ScreenView view() { return {pixels.data(), std::size_t(width), width, height}; }
    std::uint32_t at(int x, int y) const { return pixels[std::size_t(y * width + x)]; }
};

CanvasScene sceneAt(double zoom, int x = 0, int y = 0) {
    CanvasScene scene;
    scene.zoom = zoom;
    scene.originX = x;
    scene.originY = y;
    scene.back = {40, 80, 120, 255};
    return scene;
}
constexpr std::uint32_t backPixel = 0xFF285078u;

Screen rendered(PictureView& view, const CanvasScene& scene, int width, int height) {
    Screen screen(width, height);
    view.render(scene, {0, 0, width, height}, screen.view());
    return screen;
}

// The largest difference of any channel to `above` laid over the opaque pixel `below`.
double distance(std::uint32_t pixel, const Real& above, std::uint32_t below) {
    const double clear = 1 - above.a / 255;
    const double r = above.r + (below >> 16 & 255) * clear;
    const double g = above.g + (below >> 8 & 255) * clear;
    const double b = above.b + (below & 255) * clear;
    return std::max({std::abs(r - (pixel >> 16 & 255)), std::abs(g - (pixel >> 8 & 255)),
                     std::abs(b - (pixel & 255)), pixel >> 24 == 255 ? 0.0 : 1000.0});
}

} // namespace

class ViewTest : public QObject {
    Q_OBJECT

  private slots:
    void matchesTheReference_data();
    void matchesTheReference() {
        reference::onEveryInstructionSet([this] { compareAll(); });
    }
    void scaledLengthsAndSurroundings();
    void mirroredPicturesLookMirrored();
    void flatColoursStayExact();
    void smallCopiesKeepTheBrightness();
    void scrolledAndPiecewiseAreTheSame();
    void changedPartEqualsRebuild();
    void tileMovesWithThePicture();
    void thinAndTinyPictures();
    void nothingIsKeptBeforeItIsNeeded();

  private:
    void compareAll();
};

void ViewTest::matchesTheReference_data() {
    QTest::addColumn<double>("zoom");
    QTest::addColumn<double>("tolerance");
    QTest::newRow("1600") << 16.0 << 0.0;
    QTest::newRow("300") << 3.0 << 0.0;
    QTest::newRow("150") << 1.5 << 0.0;
    QTest::newRow("101") << 1.01 << 0.0;
    QTest::newRow("100") << 1.0 << 0.0;
    QTest::newRow("99") << 0.99 << 0.55;
    QTest::newRow("75") << 0.75 << 0.55;
    QTest::newRow("50") << 0.5 << 0.55;
    QTest::newRow("33") << 0.33 << 1.3;
    QTest::newRow("30") << 0.3 << 1.3;
    QTest::newRow("12.5") << 0.125 << 1.3;
    QTest::newRow("7") << 0.07 << 1.8;
}

// Laying over rounds once more, and premultiplied samples are rounded ones.
void ViewTest::compareAll() {
    QFETCH(double, zoom);
    QFETCH(double, tolerance);
    for (const ImageType type : everyType) {
        const Raster picture = noise(type, 203, 119);
        PictureView view;
        view.setPicture(picture, {});
        Reference plain(picture);
        const double allowed = tolerance + (hasAlpha(type) ? 1.6 : 0.001);
        const int w = scaledLength(203, zoom), h = scaledLength(119, zoom);
        const int width = std::min(31, w), height = std::min(17, h);
        double worst = 0;
        // A part of the middle, and the corner where the last pixels may be parts of one.
        for (const Point from :
             {Point{(w - width) / 3, (h - height) / 3}, Point{w - width, h - height}}) {
            const Screen screen = rendered(view, sceneAt(zoom, from.x, from.y), width, height);
            for (int y = 0; y < height; ++y)
                for (int x = 0; x < width; ++x)
                    worst = std::max(worst, distance(screen.at(x, y),
                                                     plain.pixel(from.x + x, from.y + y, zoom),
                                                     backPixel));
        }
        QVERIFY2(worst <= allowed,
                 qPrintable(QStringLiteral("type %1: off by %2").arg(int(type)).arg(worst)));
    }
}

void ViewTest::scaledLengthsAndSurroundings() {
    QCOMPARE(scaledLength(6000, 0.25), 1500);
    QCOMPARE(scaledLength(3, 0.5), 2);
    QCOMPARE(scaledLength(1, 0.001), 1);
    QCOMPARE(scaledLength(1 << 30, 1000), 1 << 30);
    PictureView view;
    const Raster picture = Raster::filled(ImageType::Rgb24, 10, 6, {255, 0, 0, 255});
    view.setPicture(picture, {});
    for (const double zoom : {0.5, 0.75, 1.0, 2.5}) {
        const Screen screen = rendered(view, sceneAt(zoom), 40, 30);
        const int w = scaledLength(10, zoom), h = scaledLength(6, zoom);
        for (int y = 0; y < 30; ++y)
            for (int x = 0; x < 40; ++x)
                QCOMPARE(screen.at(x, y), x < w && y < h ? 0xFFFF0000u : backPixel);
    }
    PictureView empty;
    QCOMPARE(rendered(empty, sceneAt(1), 3, 3).at(1, 1), backPixel);
}

// A shift by a part of a pixel to one side would show here. 7/5 has no place midway between two
// pixels.
void ViewTest::mirroredPicturesLookMirrored() {
    const Raster picture = noise(ImageType::Rgb24, 240, 160);
    Raster mirrored = picture;
    for (int y = 0; y < 160; ++y)
        for (int x = 0; x < 240; ++x)
            mirrored.setPixel(239 - x, 159 - y, picture.pixel(x, y));
    for (const double zoom : {0.125, 0.25, 0.4, 0.5, 0.75, 1.0, 1.4, 3.0}) {
        PictureView one, other;
        one.setPicture(picture, {});
        other.setPicture(mirrored, {});
        const int w = scaledLength(240, zoom), h = scaledLength(160, zoom);
        const Screen a = rendered(one, sceneAt(zoom), w, h);
        const Screen b = rendered(other, sceneAt(zoom), w, h);
        for (int y = 0; y < h; ++y)
            for (int x = 0; x < w; ++x) {
                const std::uint32_t p = a.at(x, y), q = b.at(w - 1 - x, h - 1 - y);
                for (const int shift : {0, 8, 16})
                    QVERIFY(std::abs(int(p >> shift & 255) - int(q >> shift & 255)) <= 1);
            }
    }
}

void ViewTest::flatColoursStayExact() {
    for (int value = 0; value < 256; value += 5) {
        const auto v = static_cast<std::uint8_t>(value);
        PictureView view;
        const Rgba color{v, static_cast<std::uint8_t>(255 - v), 7, 255};
        view.setPicture(Raster::filled(ImageType::Rgba32, 333, 77, color), {});
        for (const double zoom : {0.01, 0.07, 0.33, 0.5, 0.77, 0.99, 1.0, 5.0}) {
            const Screen screen = rendered(view, sceneAt(zoom), scaledLength(333, zoom), 1);
            for (const std::uint32_t pixel : screen.pixels)
                QCOMPARE(pixel, 0xFF000007u | unsigned(value) << 16 | unsigned(255 - value) << 8);
        }
    }
}

void ViewTest::smallCopiesKeepTheBrightness() {
    const Raster picture = noise(ImageType::Gray8, 1024, 1024);
    double mean = 0;
    for (int y = 0; y < 1024; ++y)
        for (int x = 0; x < 1024; ++x)
            mean += picture.pixel(x, y).g / 1048576.0;
    PictureView view;
    view.setPicture(picture, {});
    const Screen screen = rendered(view, sceneAt(1 / 64.0), 16, 16);
    double shown = 0;
    for (const std::uint32_t pixel : screen.pixels)
        shown += (pixel & 255) / 256.0;
    QVERIFY2(std::abs(shown - mean) < 0.35, qPrintable(QString::number(shown - mean)));
}

void ViewTest::scrolledAndPiecewiseAreTheSame() {
    for (const ImageType type : {ImageType::Rgb24, ImageType::GrayAlpha16, ImageType::Bit1}) {
        PictureView view;
        view.setPicture(noise(type, 301, 203), {});
        view.setBackdrop(noise(ImageType::Rgb24, 7, 5));
        for (const double zoom : {0.13, 0.4, 0.5, 0.9, 1.0, 1.7, 4.0}) {
            const int w = scaledLength(301, zoom) + 9,
                      h = std::min(scaledLength(203, zoom) + 9, 300);
            const Screen whole = rendered(view, sceneAt(zoom), w, h);
            const int dx = w / 3, dy = h / 4;
            const Screen moved = rendered(view, sceneAt(zoom, dx, dy), w - dx, h - dy);
            Screen pieces(w, h);
            for (int y = 0; y < h; y += 11)
                for (int x = 0; x < w; x += 29)
                    view.render(sceneAt(zoom), {x, y, std::min(29, w - x), std::min(11, h - y)},
                                pieces.view());
            QVERIFY(pieces.pixels == whole.pixels);
            for (int y = 0; y < h - dy; ++y)
                for (int x = 0; x < w - dx; ++x)
                    QCOMPARE(moved.at(x, y), whole.at(x + dx, y + dy));
        }
    }
}

void ViewTest::changedPartEqualsRebuild() {
    for (const ImageType type : {ImageType::Rgb24, ImageType::Rgba32, ImageType::Bit1}) {
        Raster picture = noise(type, 397, 261);
        PictureView kept;
        kept.setPicture(picture, {});
        for (int turn = 0; turn < 24; ++turn) {
            const double zoom = std::exp2(-(turn % 8) * 0.9);
            rendered(kept, sceneAt(zoom), 400, 300);
            const Rect changed{int(dice()() % 380), int(dice()() % 250), 1 + int(dice()() % 90),
                               1 + int(dice()() % 70)};
            for (int y = changed.y; y < changed.bottom(); ++y)
                for (int x = changed.x; x < changed.right(); ++x)
                    picture.setPixel(x, y, {byte(), byte(), byte(), byte()});
            kept.releasePicture();
            QCOMPARE(kept.setPicture(picture, changed), changed.intersected(picture.rect()));
            PictureView fresh;
            fresh.setPicture(picture, {});
            const double other = std::exp2(-((turn + 3) % 8) * 0.9);
            QVERIFY(rendered(kept, sceneAt(other), 400, 300).pixels ==
                    rendered(fresh, sceneAt(other), 400, 300).pixels);
        }
    }
    // Another form is another picture, whatever part is named.
    PictureView view;
    const Raster gray = noise(ImageType::Gray8, 64, 64);
    view.setPicture(gray, {});
    rendered(view, sceneAt(0.25), 16, 16);
    Raster indexed = Raster::uninitialized(ImageType::Indexed8, 64, 64);
    std::copy_n(gray.view().data, gray.byteSize(), indexed.edit().data);
    indexed.setPalette(Palette({{255, 0, 0, 255}}));
    QCOMPARE(view.setPicture(indexed, {}), indexed.rect());
    indexed.setPalette(Palette(std::vector<Rgba>(256, {0, 255, 0, 255})));
    QCOMPARE(view.setPicture(indexed, {}), indexed.rect());
    QCOMPARE(rendered(view, sceneAt(0.25), 16, 16).at(3, 3), 0xFF00FF00u);
}

void ViewTest::tileMovesWithThePicture() {
    PictureView view;
    view.setPicture(Raster(ImageType::Rgba32, 50, 50), {}); // clear
    Raster tile = noise(ImageType::Rgba32, 6, 4);
    tile.setPixel(0, 0, {255, 255, 255, 255});
    tile.setPixel(1, 0, {0, 0, 0, 0});
    view.setBackdrop(tile);
    const Screen screen = rendered(view, sceneAt(2, 11, 5), 60, 40);
    for (int y = 0; y < 40; ++y)
        for (int x = 0; x < 60; ++x) {
            const Rgba c = tile.pixel((x + 11) % 6, (y + 5) % 4);
            const double a = c.a / 255.0;
            QVERIFY(distance(screen.at(x, y), {c.r * a, c.g * a, c.b * a, double(c.a)},
                             backPixel) <= 1.1);
        }
    view.setBackdrop({});
    QCOMPARE(rendered(view, sceneAt(2), 4, 4).at(2, 2), backPixel);
}

void ViewTest::thinAndTinyPictures() {
    for (const Size size : {Size{1, 1}, Size{1, 1000}, Size{1000, 1}, Size{3, 2}})
        for (const ImageType type : everyType)
            for (const double zoom : {0.001, 0.3, 0.6, 1.0, 900.0}) {
                PictureView view;
                Raster picture = Raster::filled(type, size.width, size.height, {0, 0, 0, 255});
                view.setPicture(picture, {});
                const Screen screen = rendered(view, sceneAt(zoom), 20, 20);
                QCOMPARE(screen.at(0, 0), 0xFF000000u);
            }
}

void ViewTest::nothingIsKeptBeforeItIsNeeded() {
    PictureView view;
    const Raster picture = noise(ImageType::Rgb24, 2000, 1000);
    view.setPicture(picture, {});
    rendered(view, sceneAt(1), 100, 100);
    rendered(view, sceneAt(0.6), 100, 100);
    QCOMPARE(view.copyBytes(), std::size_t{0});
    rendered(view, sceneAt(0.25), 500, 250);
    // Quarter size and below: a sixteenth and what it halves to.
    QVERIFY(view.copyBytes() > 0 && view.copyBytes() < picture.byteSize() / 10);
    view.dropCopies();
    QCOMPARE(view.copyBytes(), std::size_t{0});
}

QTEST_GUILESS_MAIN(ViewTest)
#include "view.moc"
