// Tiles and grain against the obvious way to compute them, and against statistics.
#include <QtTest>

#include "imaging/support/filter_reference.h"
#include "reference/pictures.h"

using namespace kvn::imaging;
using namespace reference;

namespace {

// Moments of what a filter added to a flat grey.
struct Moments {
    double mean = 0, variance = 0, skewness = 0, kurtosis = 0;
};

Moments momentsOf(const Raster& result, int base, int channel) {
    std::vector<double> values;
    for (int y = 0; y < result.height(); ++y)
        for (int x = 0; x < result.width(); ++x)
            values.push_back(channelAt(result, x, y, channel) - base);
    Moments m;
    const auto count = static_cast<double>(values.size());
    for (const double v : values)
        m.mean += v / count;
    for (const double v : values)
        m.variance += std::pow(v - m.mean, 2) / count;
    for (const double v : values) {
        m.skewness += std::pow((v - m.mean) / std::sqrt(m.variance), 3) / count;
        m.kurtosis += std::pow((v - m.mean) / std::sqrt(m.variance), 4) / count;
    }
    return m;
}

double correlation(const Raster& result, int c, Point shift, int d) {
    double sum = 0, count = 0;
    for (int y = 0; y + shift.y < result.height(); ++y)
        for (int x = 0; x + shift.x < result.width(); ++x, ++count)
            sum += (channelAt(result, x, y, c) - 120.0) *
                   (channelAt(result, x + shift.x, y + shift.y, d) - 120.0);
    return sum / count / 100;
}

} // namespace

class TextureTest : public QObject {
    Q_OBJECT

  private slots:
    void mosaicTakesMeans();
    void noiseHasItsDistribution();
    void noiseIsIndependent();
    void noiseObeysItsFlags();
    void halftoneKeepsTheBrightness();
    void neutralArgumentsChangeNothing();
};

void TextureTest::mosaicTakesMeans() {
    for (const ImageType type : everyType)
        for (const Size size : awkwardSizes)
            for (const int mask : {1, 6, 7}) {
                if (size.width > 200 && mask == 6) continue;
                const Raster picture = noise(type, size), seen = withoutPalette(picture);
                const int width = 6, height = 4;
                const Raster result =
                    runOne("Effects.Mosaic", picture, {whole(width), whole(height), whole(mask)});
                const auto expected = [&](int x, int y, int c) -> double {
                    if (c == 3 || !(mask >> c & 1)) return channelAt(seen, x, y, c);
                    Window block;
                    const Point first{x / width * width, y / height * height};
                    for (int j = first.y; j < std::min(first.y + height, size.height); ++j)
                        for (int i = first.x; i < std::min(first.x + width, size.width); ++i)
                            block.push_back({double(channelAt(seen, i, j, c)), 1,
                                             channelAt(seen, i, j, 3) / 255.0});
                    return visibleMean(block, true);
                };
                QVERIFY2(largestDifference(result, expected) <= 0.51, nameOf(type).c_str());
            }
    // Blocks larger than the picture, and extreme numbers.
    const Raster picture = Raster::filled(ImageType::Rgb24, 9, 5, {1, 2, 3});
    QVERIFY(runOne("Effects.Mosaic", picture, {whole(2000000000), whole(2000000000), whole(7)})
                .samePixels(picture));
}

void TextureTest::noiseHasItsDistribution() {
    const Raster flat = Raster::filled(ImageType::Rgb24, 300, 200, {120, 120, 120});
    // Skewness and kurtosis of the normal, exponential, Rayleigh and uniform distribution.
    const double skewness[] = {0, 2, 0.631, 0}, kurtosis[] = {3, 9, 3.245, 1.8};
    for (int type = 0; type < 4; ++type)
        for (const int variance : {100, 400}) {
            const Raster result =
                runOne("Effects.Noise", flat, {whole(type), whole(variance), false, true});
            for (int c = 0; c < 3; ++c) {
                const Moments m = momentsOf(result, 120, c);
                // Clamping at white takes a little of the exponential's tail.
                const double loose = type == 1 ? 0.12 : 0.02;
                QVERIFY(std::abs(m.mean) < 0.02 * std::sqrt(variance));
                QVERIFY(std::abs(m.variance / variance - 1) < loose);
                QVERIFY(std::abs(m.skewness - skewness[type]) < 0.05 + 3 * (type == 1) * loose);
                QVERIFY(std::abs(m.kurtosis / kurtosis[type] - 1) < 0.04 + 3 * (type == 1) * loose);
            }
        }
}

void TextureTest::noiseIsIndependent() {
    const Raster flat = Raster::filled(ImageType::Rgb24, 300, 200, {120, 120, 120});
    const Raster result = runOne("Effects.Noise", flat, {whole(0), whole(100), false, true});
    for (const Point shift : {Point{1, 0}, Point{0, 1}, Point{1, 1}, Point{2, 0}, Point{64, 3}})
        for (int c = 0; c < 3; ++c)
            QVERIFY(std::abs(correlation(result, c, shift, c)) < 0.02);
    QVERIFY(std::abs(correlation(result, 0, {0, 0}, 1)) < 0.02);
    QVERIFY(std::abs(correlation(result, 0, {1, 0}, 2)) < 0.02);
    QVERIFY(runOne("Effects.Noise", flat, {whole(0), whole(100), false, true}).samePixels(result));
}

void TextureTest::noiseObeysItsFlags() {
    const Raster flat = Raster::filled(ImageType::Rgba32, 90, 40, {120, 100, 80, 130});
    for (const bool gray : {false, true})
        for (const bool ignore : {false, true}) {
            const Raster result =
                runOne("Effects.Noise", flat, {whole(3), whole(100), gray, ignore});
            bool same = true, kept = true;
            for (int y = 0; y < 40; ++y)
                for (int x = 0; x < 90; ++x) {
                    const Rgba p = result.pixel(x, y);
                    same = same && p.r - 120 == p.g - 100 && p.g - 100 == p.b - 80;
                    kept = kept && p.a == 130;
                }
            QCOMPARE(same, gray);
            QCOMPARE(kept, ignore);
        }
}

void TextureTest::halftoneKeepsTheBrightness() {
    for (const ImageType type : {ImageType::Gray8, ImageType::GrayAlpha16, ImageType::Rgba32})
        for (const int level : {0, 1, 40, 128, 200, 254, 255})
            for (const int size : {1, 3, 10})
                for (const bool smooth : {false, true}) {
                    const auto v = static_cast<std::uint8_t>(level);
                    const Raster flat = Raster::filled(type, 240, 240, {v, v, v, 77});
                    const Raster result = runOne("Effects.Halftone", flat, {whole(size), smooth});
                    for (int c = 0; c < 3; ++c) {
                        const Moments m = momentsOf(result, level, c);
                        // The dots at the rim are cut.
                        QVERIFY2(std::abs(m.mean) < 3,
                                 qPrintable(QString("%1 %2 %3").arg(level).arg(size).arg(m.mean)));
                        if (level == 0 || level == 255) QCOMPARE(m.variance, 0.0);
                    }
                    bool hard = true;
                    for (int y = 0; y < 240; ++y)
                        for (int x = 0; x < 240; ++x) {
                            const Rgba p = result.pixel(x, y);
                            hard = hard && (p.g == 0 || p.g == 255);
                            QCOMPARE(p.a, flat.pixel(x, y).a);
                        }
                    QVERIFY(smooth || hard);
                }
    // Each ink has its own screen.
    const Raster gray = Raster::filled(ImageType::Rgb24, 120, 120, {100, 100, 100});
    const Raster result = runOne("Effects.Halftone", gray, {whole(4), false});
    int different[3] = {};
    for (int y = 0; y < 120; ++y)
        for (int x = 0; x < 120; ++x)
            for (int c = 0; c < 3; ++c)
                different[c] += channelAt(result, x, y, c) != channelAt(result, x, y, (c + 1) % 3);
    for (const int count : different)
        QVERIFY(count > 120 * 120 / 4);
}

void TextureTest::neutralArgumentsChangeNothing() {
    for (const ImageType type : everyType) {
        const Raster picture = noise(type, {33, 21});
        QVERIFY(
            runOne("Effects.Mosaic", picture, {whole(1), whole(1), whole(7)}).samePixels(picture));
        QVERIFY(
            runOne("Effects.Mosaic", picture, {whole(9), whole(5), whole(0)}).samePixels(picture));
        QVERIFY(runOne("Effects.Halftone", picture, {whole(0), true}).samePixels(picture));
        QVERIFY(runOne("Effects.Noise", picture, {whole(0), whole(0), false, true})
                    .samePixels(picture));
    }
}

QTEST_GUILESS_MAIN(TextureTest)
#include "ops_texture.moc"
