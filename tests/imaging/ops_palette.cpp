// Few colours, as the menus ask for them. How well colours are chosen is the quantiser's own test.
#include <QtTest>
#include <algorithm>

#include "basic/error.h"
#include "imaging/operation.h"
#include "imaging/palette_presets.h"
#include "reference/pictures.h"

using namespace kvn::imaging;
using namespace reference;

namespace {

Raster run(const char* name, const Raster& source, std::vector<Value> values) {
    Task task;
    return runOperation(*findOperation(name), source, std::move(values), task).front();
}

Raster dithered(const Raster& source, std::int64_t colors, bool dither = true) {
    return run("Geometry.Dither", source, {colors, dither, true});
}

double meanOf(const Raster& picture, int channel) {
    double sum = 0;
    for (int y = 0; y < picture.height(); ++y)
        for (int x = 0; x < picture.width(); ++x) {
            const Rgba c = picture.pixel(x, y);
            sum += channel == 0 ? c.r : channel == 1 ? c.g : c.b;
        }
    return sum / (picture.width() * picture.height());
}

} // namespace

class PaletteOperationsTest : public QObject {
    Q_OBJECT

  private slots:
    void ditherKeepsToItsNumber();
    void twoColorsAreDarkAndLight();
    void fewColorsStay();
    void clearPixelsStayClear();
    void appliesPalettes();
    void presetsAreTheKnownSets();
    void entriesChangeColorsOnly();
};

void PaletteOperationsTest::ditherKeepsToItsNumber() {
    const Raster source = waves({160, 120});
    for (const std::int64_t colors : {2, 4, 16, 255, 256, -3, 9999}) {
        const Raster result = dithered(source, colors);
        QCOMPARE(result.type(), ImageType::Indexed8);
        QVERIFY(result.palette().size() <=
                static_cast<std::size_t>(std::clamp<std::int64_t>(colors, 2, 256)));
        const auto& entries = result.palette().colors();
        QVERIFY(
            std::ranges::is_sorted(entries, {}, [](const Rgba& c) { return luma(c.r, c.g, c.b); }));
        // Diffused errors keep the mean.
        if (colors >= 16)
            for (int c = 0; c < 3; ++c)
                QVERIFY(std::abs(meanOf(result, c) - meanOf(source, c)) < 1.5);
    }
}

// Whoever overwrites the two entries with black and white must get the picture, not its negative.
void PaletteOperationsTest::twoColorsAreDarkAndLight() {
    Raster source(ImageType::Gray8, 64, 32);
    for (int y = 0; y < 32; ++y)
        for (int x = 0; x < 64; ++x)
            source.setPixel(x, y, x < 32 ? Rgba{200, 200, 200, 255} : Rgba{60, 60, 60, 255});
    const Raster result = dithered(source, 2);
    QCOMPARE(int{result.index(0, 0)}, 1);
    QCOMPARE(int{result.index(63, 31)}, 0);
}

void PaletteOperationsTest::fewColorsStay() {
    for (const ImageType type : everyType) {
        Raster source = noise(type, {9, 9});
        if (!hasAlpha(type))
            for (const bool dither : {true, false}) {
                const Raster result = dithered(source, 256, dither);
                for (int y = 0; y < 9; ++y)
                    for (int x = 0; x < 9; ++x)
                        QCOMPARE(result.pixel(x, y), source.pixel(x, y));
            }
    }
}

void PaletteOperationsTest::clearPixelsStayClear() {
    Raster source = waves({64, 64}, true);
    for (int y = 0; y < 64; ++y)
        for (int x = 0; x < 20; ++x)
            source.setPixel(x, y, {200, 10, 10, 0});
    const Raster result = dithered(source, 32);
    QCOMPARE(result.type(), ImageType::Indexed8Alpha);
    for (int y = 0; y < 64; ++y)
        for (int x = 0; x < 20; ++x)
            QVERIFY(result.pixel(x, y).a < 8);
}

void PaletteOperationsTest::appliesPalettes() {
    const Palette palette({{255, 255, 255, 255}, {0, 0, 0, 255}, {200, 0, 0, 255}});
    const Raster source = waves({50, 30});
    const Raster nearest = run("Geometry.ApplyPalette", source, {palette, false});
    QCOMPARE(nearest.palette(), palette);
    for (int y = 0; y < 30; ++y)
        for (int x = 0; x < 50; ++x)
            QCOMPARE(int{nearest.index(x, y)}, palette.nearest(source.pixel(x, y)));
    const Raster gray = Raster::filled(ImageType::Rgb24, 64, 64, {96, 96, 96, 255});
    const Raster mixed = run("Geometry.ApplyPalette", gray, {Palette::blackAndWhite(), true});
    QVERIFY(std::abs(meanOf(mixed, 0) - 96) < 3);
    QVERIFY_EXCEPTION_THROWN(run("Geometry.ApplyPalette", gray, {Palette(), true}),
                             kvn::RuntimeError);
}

void PaletteOperationsTest::presetsAreTheKnownSets() {
    const auto has = [](const Palette& palette, Rgba color) {
        return std::ranges::find(palette.colors(), color) != palette.colors().end();
    };
    const Palette system = presetPalette(1), web = presetPalette(2), few = presetPalette(3);
    QCOMPARE(system.size(), 256u);
    QCOMPARE(web.size(), 216u);
    QCOMPARE(few.size(), 16u);
    QCOMPARE(presetPalette(4), Palette::blackAndWhite());
    for (const Rgba& color : web.colors()) {
        QVERIFY(color.r % 51 == 0 && color.g % 51 == 0 && color.b % 51 == 0);
        QCOMPARE(std::ranges::count(web.colors(), color), 1);
        QVERIFY(has(system, color));
    }
    for (const Rgba& color : few.colors()) {
        QCOMPARE(std::ranges::count(few.colors(), color), 1);
        QVERIFY(has(system, color));
    }
    QCOMPARE(system[8], (Rgba{192, 220, 192}));
    QCOMPARE(system[246], (Rgba{255, 251, 240}));
    for (const int wrong : {-1, 0, 5})
        QVERIFY_EXCEPTION_THROWN(presetPalette(wrong), kvn::RuntimeError);
}

void PaletteOperationsTest::entriesChangeColorsOnly() {
    const Rgba clear{9, 8, 7, 6};
    for (const ImageType type : everyType) {
        const Raster source = noise(type, {9, 5});
        const auto set = [&](std::int64_t index) {
            return run("Palette.Entry", source, {index, clear});
        };
        if (!hasPalette(type)) {
            QVERIFY_EXCEPTION_THROWN(set(0), kvn::RuntimeError);
            continue;
        }
        const Raster changed = set(1);
        QVERIFY(changed.sharesPixelsWith(source));
        QCOMPARE(changed.palette()[1], (Rgba{9, 8, 7, hasAlpha(type) ? clear.a : uchar{255}}));
        QCOMPARE(changed.palette()[0].r, source.palette()[0].r);
        if (type == ImageType::Bit1) {
            QVERIFY_EXCEPTION_THROWN(set(2), kvn::RuntimeError);
            QVERIFY_EXCEPTION_THROWN(run("Palette.LoadPreset", source, {std::int64_t{2}}),
                                     kvn::RuntimeError);
        } else {
            QCOMPARE(run("Palette.LoadPreset", source, {std::int64_t{3}}).palette(),
                     presetPalette(3));
        }
    }
}

QTEST_GUILESS_MAIN(PaletteOperationsTest)
#include "ops_palette.moc"
