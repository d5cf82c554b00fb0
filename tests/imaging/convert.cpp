// Every image type to every other, held against the rules pixel by pixel.
#include <QtTest>
#include <numeric>
#include <set>

#include "imaging/convert.h"
#include "imaging/convert_rows.h"
#include "reference/instruction_sets.h"
#include "reference/pictures.h"

using namespace kvn::imaging;
using namespace reference;

namespace {

Raster converted(const Raster& source, ImageType type, int threads = 0) {
    Task task;
    task.threads = threads;
    return convertType(source, type, task);
}

// What a colour becomes in a type that stores colours directly.
Rgba inForm(ImageType type, Rgba color) {
    const std::uint8_t gray = luma(color.r, color.g, color.b);
    if (type == ImageType::Gray8 || type == ImageType::GrayAlpha16)
        color = {gray, gray, gray, color.a};
    if (!hasAlpha(type)) color.a = 255;
    return color;
}

// The different colours in order of first appearance.
std::vector<Rgba> colorsOf(const Raster& picture, bool withAlpha) {
    std::vector<Rgba> colors;
    for (int y = 0; y < picture.height(); ++y)
        for (int x = 0; x < picture.width(); ++x) {
            Rgba color = picture.pixel(x, y);
            if (!withAlpha) color.a = 255;
            if (std::ranges::find(colors, color) == colors.end()) colors.push_back(color);
        }
    return colors;
}

double whiteShare(const Raster& picture) {
    double white = 0;
    for (int y = 0; y < picture.height(); ++y)
        for (int x = 0; x < picture.width(); ++x)
            white += picture.index(x, y);
    return white / (picture.width() * picture.height());
}

// A picture of a few colours with and without alpha, in any type that can hold them.
Raster fewColors(ImageType type, Size size) {
    const Palette palette({{9, 8, 7, 255}, {200, 10, 30, 255}, {9, 8, 7, 0}, {1, 255, 2, 100}});
    std::mt19937 random(11);
    Raster picture(type, size.width, size.height);
    for (int y = 0; y < size.height; ++y)
        for (int x = 0; x < size.width; ++x)
            picture.setPixel(x, y, palette[random() % 4]);
    return picture;
}

} // namespace

class ConvertTest : public QObject {
    Q_OBJECT

  private slots:
    void keepsEveryColorWhereItCan();
    void keepsFewColorsExactly();
    void keepsIndices();
    void keepsTwoColorsInOneBit();
    void dithersToBlackAndWhite();
    void choosesColorsForManyColors();
    void doesNotDependOnThreads();
    void leavesNothingWhenCancelled();
    void convertsRowsAlikeOnEveryMachine();
};

void ConvertTest::keepsEveryColorWhereItCan() {
    for (const ImageType from : everyType)
        for (const ImageType to : everyType)
            for (const Size size : awkwardSizes) {
                const Raster source = noise(from, size);
                const Raster result = converted(source, to);
                QCOMPARE(result.type(), to);
                QCOMPARE(result.size(), size);
                if (from == to) QVERIFY(result.sharesPixelsWith(source));
                if (hasPalette(to)) continue;
                for (int y = 0; y < size.height; ++y)
                    for (int x = 0; x < size.width; ++x)
                        QCOMPARE(result.pixel(x, y), inForm(to, source.pixel(x, y)));
            }
    // An index that the palette lacks is black.
    Raster stray(ImageType::Indexed8Alpha, 5, 1);
    stray.setPalette(Palette({{1, 2, 3, 4}}));
    stray.edit().row(0)[4] = 99;
    QCOMPARE(converted(stray, ImageType::Rgba32).pixel(4, 0), (Rgba{0, 0, 0, 255}));
}

void ConvertTest::keepsFewColorsExactly() {
    for (const ImageType from :
         {ImageType::GrayAlpha16, ImageType::Rgb24, ImageType::Rgba32, ImageType::Gray8})
        for (const ImageType to : {ImageType::Indexed8, ImageType::Indexed8Alpha})
            for (const Size size : awkwardSizes) {
                const Raster source = fewColors(from, size);
                const Raster result = converted(source, to);
                for (int y = 0; y < size.height; ++y)
                    for (int x = 0; x < size.width; ++x)
                        QCOMPARE(result.pixel(x, y), inForm(to, source.pixel(x, y)));
                if (from == ImageType::Rgb24 || from == ImageType::Rgba32)
                    QCOMPARE(result.palette().colors(), colorsOf(source, hasAlpha(to)));
            }
    // The limit itself: 256 colours are kept, one more makes a choice necessary.
    Raster ramp(ImageType::Rgb24, 256, 30);
    for (int y = 0; y < 30; ++y)
        for (int x = 0; x < 256; ++x)
            ramp.setPixel(x, y, {static_cast<std::uint8_t>(255 - x), 7, 70, 255});
    const Raster kept = converted(ramp, ImageType::Indexed8);
    QCOMPARE(kept.palette().colors(), colorsOf(ramp, false));
    ramp.setPixel(255, 29, {1, 1, 1, 255});
    const Raster chosen = converted(ramp, ImageType::Indexed8);
    QVERIFY(chosen.palette().size() <= 256);
    QVERIFY(std::abs(chosen.pixel(200, 15).r - ramp.pixel(200, 15).r) < 8);
}

void ConvertTest::keepsIndices() {
    const Size size{33, 9};
    const auto sameIndices = [&](const Raster& a, const Raster& b) {
        for (int y = 0; y < size.height; ++y)
            for (int x = 0; x < size.width; ++x)
                if (a.index(x, y) != b.index(x, y)) return false;
        return true;
    };
    const auto opaque = [](std::vector<Rgba> colors) {
        for (Rgba& color : colors)
            color.a = 255;
        return colors;
    };
    for (const ImageType from : {ImageType::Bit1, ImageType::Indexed8, ImageType::Indexed8Alpha})
        for (const ImageType to : {ImageType::Indexed8, ImageType::Indexed8Alpha}) {
            const Raster source = noise(from, size);
            const Raster result = converted(source, to);
            QVERIFY(sameIndices(source, result));
            const auto& colors = source.palette().colors();
            QCOMPARE(result.palette().colors(),
                     hasAlpha(from) && hasAlpha(to) ? colors : opaque(colors));
        }
    for (const ImageType from : {ImageType::Gray8, ImageType::GrayAlpha16}) {
        const Raster source = noise(from, size);
        const Raster result = converted(source, ImageType::Indexed8);
        QVERIFY(sameIndices(source, result));
        QCOMPARE(result.palette(), Palette::grayRamp());
    }
}

void ConvertTest::keepsTwoColorsInOneBit() {
    const Rgba dark{120, 0, 0, 255}, light{0, 0, 255, 255}, bright{255, 250, 0, 255};
    for (const auto& [one, two] : {std::pair(dark, bright), std::pair(bright, light)})
        for (const Size size : awkwardSizes) {
            Raster source(ImageType::Rgb24, size.width, size.height);
            std::mt19937 random(4);
            for (int y = 0; y < size.height; ++y)
                for (int x = 0; x < size.width; ++x)
                    source.setPixel(x, y, random() % 2 ? one : two);
            if (colorsOf(source, false).size() != 2) continue;
            const Raster result = converted(source, ImageType::Bit1);
            const auto& colors = result.palette().colors();
            QCOMPARE(colors.size(), std::size_t{2});
            QVERIFY(luma(colors[0].r, colors[0].g, colors[0].b) <
                    luma(colors[1].r, colors[1].g, colors[1].b));
            for (int y = 0; y < size.height; ++y)
                for (int x = 0; x < size.width; ++x)
                    QCOMPARE(result.pixel(x, y), source.pixel(x, y));
        }
}

void ConvertTest::dithersToBlackAndWhite() {
    for (const int gray : {0, 3, 64, 127, 128, 200, 252, 255}) {
        const auto level = static_cast<std::uint8_t>(gray);
        const Raster flat = Raster::filled(ImageType::Rgb24, 256, 256, {level, level, level, 255});
        const Raster result = converted(flat, ImageType::Bit1);
        QCOMPARE(result.palette(), Palette::blackAndWhite());
        QVERIFY2(std::abs(whiteShare(result) - gray / 255.0) < 0.006,
                 qPrintable(QString::number(gray)));
    }
    // The tone is kept from place to place, not only as a whole: columns of a gradient.
    Raster gradient(ImageType::Gray8, 256, 128);
    for (int y = 0; y < 128; ++y)
        std::iota(gradient.edit().row(y), gradient.edit().row(y) + 256, std::uint8_t{0});
    const Raster result = converted(gradient, ImageType::Bit1);
    for (int x = 0; x + 16 <= 256; x += 16)
        QVERIFY(std::abs(whiteShare(result.cropped({x, 0, 16, 128})) - (x + 7.5) / 255) < 0.03);
}

void ConvertTest::choosesColorsForManyColors() {
    for (const bool withAlpha : {false, true}) {
        const Raster source = waves({300, 220}, withAlpha);
        const Raster result =
            converted(source, withAlpha ? ImageType::Indexed8Alpha : ImageType::Indexed8);
        double error = 0;
        for (int y = 0; y < source.height(); ++y)
            for (int x = 0; x < source.width(); ++x) {
                const Rgba a = source.pixel(x, y), b = result.pixel(x, y);
                // As seen over black.
                error += std::pow(mul255(a.g, a.a) - mul255(b.g, b.a), 2) + std::pow(a.a - b.a, 2);
            }
        QVERIFY(error / (300 * 220) < (withAlpha ? 220 : 60));
        QVERIFY(result.palette().size() > 200);
    }
}

void ConvertTest::doesNotDependOnThreads() {
    const Raster start = waves({150, 600}, true);
    for (const ImageType from : everyType) {
        const Raster source = converted(start, from, 1);
        for (const ImageType to : everyType)
            QVERIFY(converted(source, to, 1).samePixels(converted(source, to, 5)));
    }
}

void ConvertTest::leavesNothingWhenCancelled() {
    for (const ImageType from : everyType)
        for (const ImageType to : everyType) {
            if (from == to) continue;
            const Raster source = noise(from, {90, 700});
            const Raster before = deepCopy(source);
            Task task([](double fraction) { return fraction < 0.3; });
            QVERIFY_EXCEPTION_THROWN(convertType(source, to, task), Cancelled);
            QVERIFY(source.samePixels(before));
        }
}

void ConvertTest::convertsRowsAlikeOnEveryMachine() {
    onEveryInstructionSet([] {
        for (const ImageType from : everyType)
            for (const ImageType to : everyType) {
                if (hasPalette(from) || hasPalette(to)) continue;
                for (int width = 1; width < 150; ++width) {
                    const Raster source = noise(from, {width, 1}, static_cast<unsigned>(width));
                    // A byte too many behind the row, to see that it is left alone.
                    std::vector<std::uint8_t> row(rowBytes(to, width) + 1, 0xEE);
                    convertRow(from, to, source.view().row(0), row.data(), width);
                    QCOMPARE(int{row.back()}, 0xEE);
                    Raster result(to, width, 1);
                    std::copy(row.begin(), row.end() - 1, result.edit().row(0));
                    for (int x = 0; x < width; ++x)
                        QCOMPARE(result.pixel(x, 0), inForm(to, source.pixel(x, 0)));
                }
            }
    });
}

QTEST_GUILESS_MAIN(ConvertTest)
#include "convert.moc"
