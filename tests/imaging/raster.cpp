// Pixel memory: what is stored, what is shared, what is refused.
#include <QtTest>
#include <algorithm>
#include <climits>
#include <functional>

#include "basic/error.h"
#include "imaging/palette.h"
#include "imaging/raster.h"
#include "reference/pictures.h"

using namespace kvn::imaging;
using namespace reference;

namespace {

constexpr Rgba orange{250, 120, 10, 128};

// The colour as the type can hold it, where it needs no palette.
Rgba stored(ImageType type, Rgba color) {
    const std::uint8_t gray = luma(color.r, color.g, color.b);
    switch (type) {
    case ImageType::Gray8:
        return {gray, gray, gray, 255};
    case ImageType::GrayAlpha16:
        return {gray, gray, gray, color.a};
    case ImageType::Rgba32:
        return color;
    default:
        return {color.r, color.g, color.b, 255};
    }
}

int errorOf(const std::function<void()>& work) {
    try {
        work();
    } catch (const kvn::RuntimeError& error) {
        return error.number();
    }
    return 0;
}

} // namespace

class RasterTest : public QObject {
    Q_OBJECT

  private slots:
    void startsBlackAndClear();
    void fillsWithTheNearestColor();
    void setsOnePixelAndNoOther();
    void cropsAtEveryOffset();
    void copiesOnlyWhenWritten();
    void comparesPixelsNotPadding();
    void refusesBadSizes();
    void neverShowsOldMemory();
    void keepsPaletteRules();
    void turnsHslAndBack();
};

void RasterTest::startsBlackAndClear() {
    for (const ImageType type : everyType) {
        const Raster picture(type, 9, 3);
        if (!hasPalette(type))
            QCOMPARE(picture.pixel(8, 2), (Rgba{0, 0, 0, hasAlpha(type) ? uchar{0} : uchar{255}}));
        QCOMPARE(picture.index(8, 2), 0);
        QCOMPARE(picture.pixel(9, 0), (Rgba{0, 0, 0, 0}));
        QCOMPARE(picture.pixel(0, -1), (Rgba{0, 0, 0, 0}));
    }
    QCOMPARE(Raster(ImageType::Bit1, 1, 1).palette(), Palette::blackAndWhite());
}

void RasterTest::fillsWithTheNearestColor() {
    for (const ImageType type : everyType)
        for (const Size size : awkwardSizes) {
            const Raster picture = Raster::filled(type, size.width, size.height, orange);
            Rgba expected = stored(type, orange);
            if (type == ImageType::Indexed8Alpha) expected = orange;
            if (type == ImageType::Bit1) expected = {0, 0, 0, 255};
            for (int y = 0; y < size.height; ++y)
                for (int x = 0; x < size.width; ++x)
                    QCOMPARE(picture.pixel(x, y), expected);
        }
    QCOMPARE(Raster::filled(ImageType::Bit1, 11, 2, {200, 200, 200, 255}).index(10, 1), 1);
}

void RasterTest::setsOnePixelAndNoOther() {
    for (const ImageType type : everyType) {
        const Raster before = noise(type, {13, 4});
        Raster picture = before;
        picture.setPixel(10, 2, orange);
        picture.setPixel(13, 2, orange);
        picture.setPixel(-1, 0, orange);
        for (int y = 0; y < 4; ++y)
            for (int x = 0; x < 13; ++x)
                if (x != 10 || y != 2) QCOMPARE(picture.pixel(x, y), before.pixel(x, y));
        if (!hasPalette(type)) {
            QCOMPARE(picture.pixel(10, 2), stored(type, orange));
        } else {
            const Rgba wanted = hasAlpha(type) ? orange : stored(type, orange);
            QCOMPARE(int{picture.index(10, 2)}, picture.palette().nearest(wanted));
        }
    }
}

void RasterTest::cropsAtEveryOffset() {
    std::mt19937 random(3);
    for (const ImageType type : everyType) {
        const Raster picture = noise(type, {61, 7});
        for (int round = 0; round < 200; ++round) {
            const Rect rect{static_cast<int>(random() % 70) - 5, static_cast<int>(random() % 9) - 1,
                            1 + static_cast<int>(random() % 40),
                            1 + static_cast<int>(random() % 5)};
            const Rect part = rect.intersected(picture.rect());
            if (part.isEmpty()) {
                QCOMPARE(errorOf([&] { picture.cropped(rect); }), kvn::errors::invalidCall);
                continue;
            }
            const Raster cut = picture.cropped(rect);
            QCOMPARE(cut.size(), (Size{part.width, part.height}));
            for (int y = 0; y < part.height; ++y)
                for (int x = 0; x < part.width; ++x)
                    QCOMPARE(cut.pixel(x, y), picture.pixel(part.x + x, part.y + y));
        }
    }
    const Raster whole = noise(ImageType::Rgb24, {5, 5});
    QVERIFY(whole.cropped({-9, INT_MIN / 2, INT_MAX, INT_MAX}).sharesPixelsWith(whole));
}

void RasterTest::copiesOnlyWhenWritten() {
    Raster first = noise(ImageType::Rgb24, {300, 200});
    const Raster original = deepCopy(first);
    Raster second = first;
    QVERIFY(second.sharesPixelsWith(first));
    second.setPixel(7, 7, {1, 2, 3, 255});
    QVERIFY(!second.sharesPixelsWith(first));
    QVERIFY(first.samePixels(original));

    const auto* memory = first.view().data;
    QCOMPARE(static_cast<const void*>(first.edit().data), static_cast<const void*>(memory));
    const Raster third = first;
    QVERIFY(first.edit().data != memory);
    QVERIFY(third.samePixels(original));
}

void RasterTest::comparesPixelsNotPadding() {
    for (const ImageType type : everyType) {
        const Raster picture = noise(type, {13, 5});
        Raster other = deepCopy(picture);
        const View view = other.edit();
        for (int y = 0; y < 5; ++y)
            for (std::size_t i = other.rowBytes(); i < view.stride; ++i)
                view.row(y)[i] ^= 0x55;
        if (type == ImageType::Bit1) view.row(3)[1] ^= 0x07; // the bits behind the 13th
        QVERIFY(other.samePixels(picture));
        view.row(4)[1] ^= 0x08;
        QVERIFY(!other.samePixels(picture));
    }
}

void RasterTest::refusesBadSizes() {
    QCOMPARE(errorOf([] { Raster(ImageType::Rgb24, 0, 5); }), kvn::errors::invalidCall);
    QCOMPARE(errorOf([] { Raster(ImageType::Rgb24, 5, -1); }), kvn::errors::invalidCall);
    QCOMPARE(errorOf([] { Raster(ImageType::Rgba32, INT_MAX, INT_MAX); }),
             kvn::errors::outOfMemory);
    QCOMPARE(errorOf([] { Raster(ImageType::Bit1, INT_MAX, 1000000); }), kvn::errors::outOfMemory);

    const std::size_t before = PixelBuffer::maxBytes();
    PixelBuffer::setMaxBytes(1 << 20);
    QCOMPARE(errorOf([] { Raster(ImageType::Gray8, 1024, 1025); }), kvn::errors::outOfMemory);
    QCOMPARE(Raster(ImageType::Gray8, 1024, 1024).byteSize(), std::size_t{1 << 20});
    PixelBuffer::setMaxBytes(before);
}

void RasterTest::neverShowsOldMemory() {
    for (const int height : {40, 4000}) // small blocks, and large ones that are kept for reuse
        for (int round = 0; round < 4; ++round) {
            Raster::filled(ImageType::Rgba32, 2000, height, {0xAA, 0xAA, 0xAA, 0xAA});
            const Raster fresh(ImageType::Rgba32, 2000, height);
            for (int y = 0; y < height; ++y) {
                const auto* row = fresh.view().row(y);
                QVERIFY(std::all_of(row, row + fresh.rowBytes(), [](auto b) { return b == 0; }));
            }
        }
    PixelBuffer::trimCache();
}

void RasterTest::keepsPaletteRules() {
    Palette palette;
    QCOMPARE(palette.nearest(orange), 0);
    palette.set(2, orange);
    QCOMPARE(palette.size(), std::size_t{3});
    QCOMPARE(palette[1], (Rgba{0, 0, 0, 255}));
    QCOMPARE(palette[200], (Rgba{0, 0, 0, 255}));
    QCOMPARE(palette.nearest({0, 0, 0, 255}), 0); // the lower of two equal ones
    QVERIFY(palette.hasTransparency());
    QCOMPARE(errorOf([&] { palette.set(256, orange); }), kvn::errors::subscriptOutOfRange);
    QCOMPARE(Palette(std::vector<Rgba>(300)).size(), std::size_t{256});

    // Files hold indices that their palette lacks.
    Raster picture(ImageType::Indexed8, 2, 1);
    picture.setPalette(Palette({orange}));
    picture.edit().row(0)[1] = 77;
    QCOMPARE(picture.pixel(0, 0), (Rgba{250, 120, 10, 255})); // this type has no alpha
    QCOMPARE(picture.pixel(1, 0), (Rgba{0, 0, 0, 255}));
}

void RasterTest::turnsHslAndBack() {
    for (int r = 0; r < 256; r += 15)
        for (int g = 0; g < 256; g += 15)
            for (int b = 0; b < 256; b += 5) {
                const Hsl hsl = hslFromRgb(r, g, b);
                QVERIFY(hsl.h >= 0 && hsl.h < 255 && hsl.s >= 0 && hsl.s <= 255.0000001);
                const RgbReal back = rgbFromHsl(hsl);
                QVERIFY(std::abs(back.r - r) < 1e-6 && std::abs(back.g - g) < 1e-6 &&
                        std::abs(back.b - b) < 1e-6);
            }
    QCOMPARE(hslFromRgb(0, 255, 0).h, 85.0);
    QCOMPARE(hslFromRgb(0, 0, 255).h, 170.0);
    QCOMPARE(hslFromRgb(90, 90, 90).s, 0.0);
    const RgbReal wrapped = rgbFromHsl({255 + 85, 300, 127.5});
    QCOMPARE(wrapped.g, 255.0);
    QCOMPARE(wrapped.r, 0.0);
}

QTEST_GUILESS_MAIN(RasterTest)
#include "raster.moc"
