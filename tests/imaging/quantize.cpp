// Choosing palettes and drawing with them.
#include <QtTest>
#include <limits>
#include <set>

#include "basic/error.h"
#include "imaging/convert.h"
#include "imaging/convert_rows.h"
#include "imaging/quantize.h"
#include "imaging/quantize_metric.h"
#include "reference/instruction_sets.h"
#include "reference/median_cut.h"
#include "reference/pictures.h"

using namespace kvn::imaging;
using namespace reference;

namespace {

Palette chosen(const Raster& source, int colors, bool withAlpha = false, int threads = 0) {
    Task task;
    task.threads = threads;
    return choosePalette(source, colors, withAlpha, task);
}

Raster mapped(const Raster& source, const Palette& palette, bool dither, int threads = 0) {
    Task task;
    task.threads = threads;
    return mapToPalette(source, palette, dither, task);
}

// The nearest entry by trying each, in the space that the module documents.
int nearestByHand(const Palette& palette, Rgba color) {
    const bool withAlpha = palette.hasTransparency();
    if (!withAlpha) color.a = 255;
    int best = -1, least = std::numeric_limits<int>::max();
    for (std::size_t i = 0; i < palette.size(); ++i) {
        const Spot a = spotOf(color), b = spotOf(palette[i]);
        int distance = 0;
        for (std::size_t k = 0; k < 4; ++k)
            distance += (a[k] - b[k]) * (a[k] - b[k]);
        if (palette[i] == color) distance = -1;
        if (distance >= least) continue;
        least = distance;
        best = static_cast<int>(i);
    }
    return best;
}

double squaredError(const Raster& a, const Raster& b) {
    double sum = 0;
    for (int y = 0; y < a.height(); ++y)
        for (int x = 0; x < a.width(); ++x) {
            const Rgba p = a.pixel(x, y), q = b.pixel(x, y);
            sum += std::pow(p.r - q.r, 2) + std::pow(p.g - q.g, 2) + std::pow(p.b - q.b, 2);
        }
    return sum / (3.0 * a.width() * a.height());
}

double meanRed(const Raster& picture) {
    double sum = 0;
    for (int y = 0; y < picture.height(); ++y)
        for (int x = 0; x < picture.width(); ++x)
            sum += picture.pixel(x, y).r;
    return sum / (picture.width() * picture.height());
}

// As it looks from a little farther away.
Raster blurred(const Raster& source) {
    Raster result(ImageType::Rgb24, source.width() - 2, source.height() - 2);
    for (int y = 0; y < result.height(); ++y)
        for (int x = 0; x < result.width(); ++x) {
            int sums[3] = {8, 8, 8};
            for (int i = 0; i < 9; ++i) {
                const int weight = (2 - std::abs(i % 3 - 1)) * (2 - std::abs(i / 3 - 1));
                const Rgba c = source.pixel(x + i % 3, y + i / 3);
                sums[0] += weight * c.r, sums[1] += weight * c.g, sums[2] += weight * c.b;
            }
            const auto byte = [&](int k) { return static_cast<std::uint8_t>(sums[k] / 16); };
            result.setPixel(x, y, {byte(0), byte(1), byte(2), 255});
        }
    return result;
}

int lightOf(Rgba c) {
    return luma(mul255(c.r, c.a), mul255(c.g, c.a), mul255(c.b, c.a));
}

} // namespace

class QuantizeTest : public QObject {
    Q_OBJECT

  private slots:
    void keepsFewColors();
    void beatsMedianCut();
    void keepsTransparency();
    void findsTheNearestEntry_data();
    void findsTheNearestEntry();
    void ditheringKeepsToneAndExactColors();
    void fewColorsMixFromAfar();
    void fineColorsSpareTexture();
    void ditheringHasNoSeams();
    void doesNotDependOnThreads();
    void countsColors();
    void refusesWhatMakesNoSense();
    void stopsWhenTold();
};

void QuantizeTest::keepsFewColors() {
    Raster picture(ImageType::Rgba32, 40, 3);
    std::set<std::uint32_t> used;
    std::mt19937 random(2);
    const Palette source = randomPalette(random, 12, true);
    for (int x = 0; x < 40; ++x) {
        picture.setPixel(x, 1, source[static_cast<std::size_t>(x % 12)]);
        used.insert(packed(source[static_cast<std::size_t>(x % 12)]));
    }
    used.insert(packed({0, 0, 0, 0})); // the other rows
    const Palette palette = chosen(picture, static_cast<int>(used.size()), true);
    std::set<std::uint32_t> found;
    for (const Rgba color : palette.colors())
        found.insert(packed(color));
    QCOMPARE(found, used);
    const Palette fewer = chosen(picture, static_cast<int>(used.size()) - 1, true);
    QVERIFY(fewer.size() < used.size() && fewer.size() >= 2);
}

void QuantizeTest::beatsMedianCut() {
    const Raster picture = waves({320, 240});
    for (const int colors : {8, 16, 64, 256}) {
        const Palette palette = chosen(picture, colors);
        QVERIFY(static_cast<int>(palette.size()) <= colors);
        QVERIFY(std::ranges::is_sorted(palette.colors(), {}, lightOf));
        QVERIFY(!palette.hasTransparency());
        const double error = squaredError(picture, mapped(picture, palette, false));
        const double plain =
            squaredError(picture, mapped(picture, medianCut(picture, colors), false));
        QVERIFY2(error < 0.93 * plain, qPrintable(QString("%1 %2").arg(error).arg(plain)));
    }
}

void QuantizeTest::keepsTransparency() {
    Raster picture = waves({200, 150}, true);
    for (int y = 0; y < 150; ++y)
        for (int x = 0; x < 60; ++x)
            picture.setPixel(x, y, {9, 200, 77, 0});
    for (int y = 0; y < 150; ++y)
        for (int x = 140; x < 200; ++x) {
            Rgba color = picture.pixel(x, y);
            color.a = 255;
            picture.setPixel(x, y, color);
        }
    for (const bool dither : {false, true}) {
        const Raster result = mapped(picture, chosen(picture, 64, true), dither);
        QCOMPARE(result.type(), ImageType::Indexed8Alpha);
        for (int y = 0; y < 150; ++y)
            for (int x = 0; x < 200; ++x) {
                if (x < 59) QVERIFY(result.pixel(x, y).a <= 3);
                if (x > 141) QVERIFY(result.pixel(x, y).a >= 245);
            }
    }
    QVERIFY(!chosen(picture, 64, false).hasTransparency());
}

void QuantizeTest::findsTheNearestEntry_data() {
    QTest::addColumn<int>("size");
    QTest::addColumn<bool>("withAlpha");
    QTest::addColumn<bool>("crowded");
    for (const int size : {1, 2, 9, 64, 65, 256})
        for (const bool withAlpha : {false, true})
            for (const bool crowded : {false, true})
                QTest::addRow("%d %s %s", size, withAlpha ? "alpha" : "opaque",
                              crowded ? "crowded" : "spread")
                    << size << withAlpha << crowded;
}

void QuantizeTest::findsTheNearestEntry() {
    QFETCH(int, size);
    QFETCH(bool, withAlpha);
    QFETCH(bool, crowded);
    std::mt19937 random(static_cast<unsigned>(size));
    std::vector<Rgba> colors =
        randomPalette(random, static_cast<std::size_t>(size), withAlpha).colors();
    if (crowded) // many entries in one cell, some of them twice
        for (Rgba& color : colors)
            color = {static_cast<std::uint8_t>(90 + color.r % 10),
                     static_cast<std::uint8_t>(90 + color.g % 6),
                     static_cast<std::uint8_t>(90 + color.b % 6), color.a};
    const Palette palette(colors);
    const Raster picture = noise(ImageType::Rgba32, {97, 31});
    onEveryInstructionSet([&] {
        const Raster result = mapped(picture, palette, false);
        QCOMPARE(hasAlpha(result.type()), palette.hasTransparency());
        for (int y = 0; y < picture.height(); ++y)
            for (int x = 0; x < picture.width(); ++x)
                QCOMPARE(int{result.index(x, y)}, nearestByHand(palette, picture.pixel(x, y)));
    });
}

void QuantizeTest::ditheringKeepsToneAndExactColors() {
    const Palette coarse(
        {{0, 0, 0, 255}, {255, 255, 255, 255}, {255, 0, 0, 255}, {40, 90, 160, 255}});
    for (const int level : {60, 128, 190}) {
        const auto gray = static_cast<std::uint8_t>(level);
        Raster picture = Raster::filled(ImageType::Rgb24, 200, 200, {gray, gray, gray, 255});
        for (int i = 0; i < 200; ++i)
            picture.setPixel(i, (i * 7) % 200, coarse[3]);
        const Raster result = mapped(picture, coarse, true);
        for (int i = 0; i < 200; ++i)
            QCOMPARE(result.index(i, (i * 7) % 200), 3);
        QVERIFY(std::abs(meanRed(result) - meanRed(picture)) < 10);
    }
    // A plain area of a palette colour stays plain beside a dithered one.
    Raster halves = Raster::filled(ImageType::Rgb24, 100, 80, {128, 128, 128, 255});
    for (int y = 0; y < 80; ++y)
        for (int x = 50; x < 100; ++x)
            halves.setPixel(x, y, coarse[2]);
    const Raster result = mapped(halves, coarse, true);
    for (int y = 0; y < 80; ++y)
        for (int x = 50; x < 100; ++x)
            QCOMPARE(result.index(x, y), 2);

    // With a palette made for it, dithering brings a gradient nearer to the eye's average.
    Raster gradient(ImageType::Rgb24, 512, 64);
    for (int y = 0; y < 64; ++y)
        for (int x = 0; x < 512; ++x) {
            const auto v = static_cast<std::uint8_t>(x / 2);
            gradient.setPixel(x, y, {v, v, static_cast<std::uint8_t>(255 - v), 255});
        }
    const Palette eight = chosen(gradient, 8);
    double dithered = 0, plain = 0;
    for (int x = 0; x < 512; x += 8) {
        const Rect block{x, 16, 8, 32};
        const double wanted = meanRed(gradient.cropped(block));
        dithered += std::abs(meanRed(mapped(gradient, eight, true).cropped(block)) - wanted);
        plain += std::abs(meanRed(mapped(gradient, eight, false).cropped(block)) - wanted);
    }
    QVERIFY2(dithered < plain / 3, qPrintable(QString("%1 %2").arg(dithered).arg(plain)));
}

// Sixteen colours chosen to be mixed are nearer to the picture from afar than the best single ones.
void QuantizeTest::fewColorsMixFromAfar() {
    for (const bool withAlpha : {false, true}) {
        const Raster picture = waves({640, 320}, withAlpha);
        Task task;
        const Palette mixing = choosePalette(picture, 16, withAlpha, task, PaletteUse::Dithered);
        QVERIFY(mixing.size() <= 16);
        QVERIFY(std::ranges::is_sorted(mixing.colors(), {}, lightOf));
        if (withAlpha) continue;
        const auto error = [&](const Palette& palette) {
            return squaredError(blurred(picture), blurred(mapped(picture, palette, true)));
        };
        const double mixed = error(mixing), single = error(chosen(picture, 16));
        QVERIFY2(mixed < 0.7 * single, qPrintable(QString("%1 %2").arg(mixed).arg(single)));
    }
}

// Where the picture is rougher than the steps between the colours, dithering adds next to nothing.
void QuantizeTest::fineColorsSpareTexture() {
    Raster picture = noise(ImageType::Rgb24, {200, 200});
    const View view = picture.edit();
    for (int y = 0; y < 200; ++y)
        for (std::size_t i = 0; i < picture.rowBytes(); ++i)
            view.row(y)[i] = static_cast<std::uint8_t>(96 + view.row(y)[i] / 4);
    const Palette palette = chosen(picture, 256);
    const double dithered = squaredError(picture, mapped(picture, palette, true));
    const double nearest = squaredError(picture, mapped(picture, palette, false));
    QVERIFY2(dithered < 1.03 * nearest, qPrintable(QString("%1 %2").arg(dithered).arg(nearest)));
}

// Tall pictures are dithered in strips. Where two meet, the tone must not jump.
void QuantizeTest::ditheringHasNoSeams() {
    const Raster picture = Raster::filled(ImageType::Rgb24, 300, 1100, {131, 117, 126, 255});
    std::vector<Rgba> colors;
    for (int i = 0; i < 64; ++i)
        colors.push_back({static_cast<std::uint8_t>(i % 4 * 64 + 20),
                          static_cast<std::uint8_t>(i / 4 % 4 * 64 + 20),
                          static_cast<std::uint8_t>(i / 16 * 64 + 20), 255});
    const Raster result = mapped(picture, Palette(colors), true);
    const double whole = meanRed(result.cropped({0, 100, 300, 800}));
    for (int y = 16; y + 8 < 1100; y += 4)
        QVERIFY(std::abs(meanRed(result.cropped({0, y, 300, 8})) - whole) < 2.5);
}

void QuantizeTest::doesNotDependOnThreads() {
    const Raster picture = waves({120, 900}, true);
    for (const bool withAlpha : {false, true})
        for (const int colors : {3, 40, 256}) {
            const Palette palette = chosen(picture, colors, withAlpha, 1);
            QCOMPARE(chosen(picture, colors, withAlpha, 6), palette);
            for (const bool dither : {false, true})
                QVERIFY(mapped(picture, palette, dither, 1)
                            .samePixels(mapped(picture, palette, dither, 6)));
        }
}

void QuantizeTest::countsColors() {
    for (const ImageType type : everyType)
        for (const Size size : awkwardSizes) {
            const Raster picture = noise(type, size);
            std::set<std::uint32_t> colors;
            for (int y = 0; y < size.height; ++y)
                for (int x = 0; x < size.width; ++x)
                    colors.insert(packed(picture.pixel(x, y)));
            const int count = static_cast<int>(colors.size());
            QCOMPARE(countColors(picture, std::numeric_limits<int>::max()), count);
            QCOMPARE(countColors(picture, count), count);
            QCOMPARE(countColors(picture, count - 1), count);
            if (count > 3) QCOMPARE(countColors(picture, 2), 3);
        }
}

void QuantizeTest::refusesWhatMakesNoSense() {
    const Raster picture = noise(ImageType::Rgb24, {4, 4});
    QVERIFY_EXCEPTION_THROWN(chosen(picture, 1), kvn::RuntimeError);
    QVERIFY_EXCEPTION_THROWN(chosen(picture, 257), kvn::RuntimeError);
    QVERIFY_EXCEPTION_THROWN(chosen(Raster(), 16), kvn::RuntimeError);
    QVERIFY_EXCEPTION_THROWN(mapped(picture, Palette(), true), kvn::RuntimeError);
    QVERIFY_EXCEPTION_THROWN(mapped(Raster(), Palette::grayRamp(), true), kvn::RuntimeError);
}

void QuantizeTest::stopsWhenTold() {
    const Raster picture = waves({200, 800});
    for (const int colors : {2, 128}) { // whole, and in strips
        const Palette palette = chosen(picture, colors);
        for (const bool dither : {false, true}) {
            Task task([](double fraction) { return fraction < 0.5; });
            QVERIFY_EXCEPTION_THROWN(mapToPalette(picture, palette, dither, task), Cancelled);
        }
        Task task([](double fraction) { return fraction < 0.5; });
        QVERIFY_EXCEPTION_THROWN(choosePalette(picture, colors, false, task), Cancelled);
    }
}

QTEST_GUILESS_MAIN(QuantizeTest)
#include "quantize.moc"
