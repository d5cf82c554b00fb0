// Colours through the utility object.
#include <QtTest>
#include <algorithm>

#include "engine/engine.h"
#include "engine/image.h"

using namespace kvn::engine;

class UtilityTest : public QObject {
    Q_OBJECT
  private slots:
    void hslComesBackClose();
};

// Each number is rounded to a byte on the way, which costs up to four levels; grey costs nothing.
void UtilityTest::hslComesBackClose() {
    const Utility utility;
    int worst = 0, worstGrey = 0;
    const auto off = [&](int r, int g, int b) {
        const auto byte = [](int v) { return static_cast<quint8>(v); };
        const Utility::Hsl hsl = utility.RgbToHsl(byte(r), byte(g), byte(b));
        const Color back = utility.HslToRgb(hsl.hue, hsl.saturation, hsl.luminance);
        return std::max(
            {std::abs(back.Red() - r), std::abs(back.Green() - g), std::abs(back.Blue() - b)});
    };
    for (int r = 0; r < 256; r += 3)
        for (int g = 0; g < 256; g += 3)
            for (int b = 0; b < 256; b += 3)
                worst = std::max(worst, off(r, g, b));
    for (int v = 0; v < 256; ++v)
        worstGrey = std::max(worstGrey, off(v, v, v));
    QVERIFY2(worst <= 4, qPrintable(QString::number(worst)));
    QCOMPARE(worstGrey, 0);
}

QTEST_GUILESS_MAIN(UtilityTest)
#include "utility.moc"
