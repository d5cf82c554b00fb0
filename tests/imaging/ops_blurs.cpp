// Filters that blur or sharpen against the obvious way to compute them, over all image types and
// awkward sizes, and for every instruction set of this machine.
#include <QtTest>
#include <numeric>

#include "imaging/support/filter_reference.h"
#include "reference/instruction_sets.h"

using namespace kvn::imaging;
using namespace reference;

namespace {

std::vector<double> normalised(std::vector<double> weights) {
    const double sum = std::accumulate(weights.begin(), weights.end(), 0.0);
    for (double& weight : weights)
        weight /= sum;
    return weights;
}

std::vector<double> bell(double sigma) {
    const int radius = static_cast<int>(std::ceil(5 * sigma));
    std::vector<double> weights;
    for (int i = -radius; i <= radius; ++i)
        weights.push_back(std::exp(-0.5 * i * i / (sigma * sigma)));
    return normalised(weights);
}

// Colours mixed by what is visible of the pixel and of the mean; alpha mixed as it is.
double mixedVisibly(const Raster& seen, int x, int y, int c, double share, const Window& window) {
    if (c == 3) return channelAt(seen, x, y, 3) * (1 - share) + visibleMean(window, false) * share;
    double alpha = 0, weights = 0;
    for (const Item& item : window) {
        alpha += item.alpha * item.weight;
        weights += item.weight;
    }
    const double own = channelAt(seen, x, y, 3) / 255.0 * (1 - share);
    const double others = alpha / weights * share;
    if (own + others < 0.02) return -1; // hardly visible: any colour
    return (channelAt(seen, x, y, c) * own + std::max(0.0, visibleMean(window, true)) * others) /
           (own + others);
}

} // namespace

class BlursTest : public QObject {
    Q_OBJECT

  private slots:
    void blurMixesWithTheMean();
    void sharpenLeavesTheMean();
    void softenIsBinomial();
    void gaussianIsTrue();
    void detailIsWhatTheBlurLacks();
    void vibrationSwings();
};

void BlursTest::blurMixesWithTheMean() {
    onEveryPicture([](const Raster& picture, const Raster& seen) {
        for (const int size : {3, 6, 17})
            for (const int amount : {40, 100})
                for (const bool ignore : {false, true}) {
                    const Raster result =
                        runOne("Effects.Blur", picture, {whole(amount), whole(size), ignore});
                    const auto expected = [&](int x, int y, int c) {
                        if (ignore && c == 3) return double(channelAt(seen, x, y, 3));
                        const Window window = windowAt(seen, x, y, c, (size | 1) / 2);
                        const double share = amount / 100.0;
                        if (!ignore) return mixedVisibly(seen, x, y, c, share, window);
                        return channelAt(seen, x, y, c) * (1 - share) +
                               visibleMean(window, false) * share;
                    };
                    QCOMPARE_LE(largestDifference(result, expected), 0.51);
                }
    });
}

void BlursTest::sharpenLeavesTheMean() {
    onEveryPicture([](const Raster& picture, const Raster& seen) {
        const Raster result = runOne("Effects.Sharpen", picture, {whole(50), whole(3), true});
        const auto expected = [&](int x, int y, int c) {
            const double own = channelAt(seen, x, y, c);
            const double mean = visibleMean(windowAt(seen, x, y, c, 1), true);
            return c == 3 || mean < 0 ? own : clamped(own + 1.5 * (own - mean));
        };
        QCOMPARE_LE(largestDifference(result, expected), 0.51);
    });
}

void BlursTest::softenIsBinomial() {
    const std::vector<double> weights = normalised({1, 4, 6, 4, 1});
    onEveryPicture([&](const Raster& picture, const Raster& seen) {
        for (const int amount : {25, 100}) {
            const Raster result = runOne("Effects.Soften", picture, {whole(amount)});
            QCOMPARE_LE(largestDifference(result,
                                          [&](int x, int y, int c) {
                                              return mixedVisibly(
                                                  seen, x, y, c, amount / 100.0,
                                                  windowAt(seen, x, y, c, 2, weights));
                                          }),
                        0.52);
        }
    });
}

void BlursTest::gaussianIsTrue() {
    // Both ways to compute it, on both sides of the change from one to the other. A hard-edged
    // board shows errors of the whole, noise those of the single pixel, and a disc on nearly clear
    // ground whether faint colours keep their share.
    Raster board(ImageType::Rgb24, 90, 70);
    for (int y = 0; y < 70; ++y)
        for (int x = 0; x < 90; ++x)
            board.setPixel(x, y, (x / 23 + y / 17) % 2 ? Rgba{255, 255, 0} : Rgba{0, 0, 255});
    Raster faint(ImageType::Rgba32, 64, 50);
    for (int y = 0; y < 50; ++y)
        for (int x = 0; x < 64; ++x) {
            const int alpha = x < 20                            ? (x * 7 + y * 5) % 7
                              : std::hypot(x - 40, y - 25) < 14 ? 255
                                                                : 3;
            Rgba color = (x / 15 + y / 15) % 2 ? Rgba{255, 0, 255} : Rgba{0, 255, 0};
            color.a = static_cast<std::uint8_t>(alpha);
            faint.setPixel(x, y, color);
        }
    const Raster pictures[] = {board,
                               faint,
                               noise(ImageType::Rgba32, {61, 40}),
                               noise(ImageType::GrayAlpha16, {1, 9}),
                               noise(ImageType::Bit1, {9, 1}),
                               noise(ImageType::Gray8, {33, 29})};
    onEveryInstructionSet([&] {
        for (const int amount : {20, 50, 64, 66, 76, 130, 500, 1250})
            for (const Raster& picture : pictures) {
                const Raster seen = withoutPalette(picture);
                const std::vector<double> weights = bell(amount / 25.0);
                const int radius = static_cast<int>(weights.size()) / 2;
                const Raster result = runOne("Effects.GaussianBlur", picture, {whole(amount)});
                // Far from every pixel costs too long: a grid of places is enough.
                const auto expected = [&](int x, int y, int c) {
                    if (x % (1 + radius / 8) || y % (1 + radius / 8)) return -1.0;
                    return mixedVisibly(seen, x, y, c, 1, windowAt(seen, x, y, c, radius, weights));
                };
                QCOMPARE_LE(largestDifference(result, expected), 0.8);
            }
    });
}

void BlursTest::detailIsWhatTheBlurLacks() {
    const std::vector<double> weights = bell(1.2);
    const int radius = static_cast<int>(weights.size()) / 2;
    onEveryPicture([&](const Raster& picture, const Raster& seen) {
        const Raster sharp = runOne("Effects.UnsharpMask", picture, {whole(20), 2.0, 1.2});
        const Raster detail = runOne("Effects.HighPass", picture, {1.2});
        const auto difference = [&](int x, int y, int c) {
            const double mean = visibleMean(windowAt(seen, x, y, c, radius, weights), true);
            return channelAt(seen, x, y, c) - mean;
        };
        const auto hidden = [&](int x, int y) { // too little is visible around to tell the colour
            return visibleMean(windowAt(seen, x, y, 3, radius, weights), false) < 5;
        };
        QCOMPARE_LE(largestDifference(sharp,
                                      [&](int x, int y, int c) {
                                          const double own = channelAt(seen, x, y, c);
                                          if (c == 3) return own;
                                          const double d = difference(x, y, c);
                                          if (hidden(x, y) || std::abs(std::abs(d) - 20) < 0.2)
                                              return -1.0;
                                          return clamped(std::abs(d) > 20 ? own + 2 * d : own);
                                      }),
                    0.9);
        QCOMPARE_LE(largestDifference(detail,
                                      [&](int x, int y, int c) {
                                          if (c == 3) return double(channelAt(seen, x, y, c));
                                          if (hidden(x, y)) return -1.0;
                                          return clamped(128 + difference(x, y, c));
                                      }),
                    0.7);
    });
}

void BlursTest::vibrationSwings() {
    Raster dot = Raster::filled(ImageType::Gray8, 60, 9, {0, 0, 0, 255});
    for (int y = 0; y < 9; ++y)
        dot.setPixel(30, y, {255, 255, 255, 255});
    const Raster result = runOne("Effects.Vibration", dot, {whole(32)});
    int sum = 0;
    for (int x = 0; x < 60; ++x)
        sum += result.pixel(x, 4).r;
    QVERIFY(std::abs(sum - 255) <= 9);
    QCOMPARE(result.pixel(22, 4), result.pixel(38, 4));
    QVERIFY(result.pixel(22, 4).r > 2 * result.pixel(30, 4).r); // it lingers at the ends
    QCOMPARE(int{result.pixel(21, 4).r}, 0);
}

QTEST_GUILESS_MAIN(BlursTest)
#include "ops_blurs.moc"
