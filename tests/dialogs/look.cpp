// The look: its tables hold together, text is readable in both tones, and every picture that the
// program carries can be drawn.
#include <QDir>
#include <QFile>
#include <QLabel>
#include <QRegularExpression>
#include <QTemporaryDir>
#include <QTest>
#include <cmath>

#include "dialogs/look.h"
#include "dialogs/look_colors.h"

using namespace kvn::dialogs;

namespace {

QString sheetSource() {
    QFile file(QStringLiteral(":/kvn/look/look.qss"));
    return file.open(QIODevice::ReadOnly) ? QString::fromUtf8(file.readAll()) : QString();
}

// Relative luminance and contrast as the accessibility guidelines for web content define them.
double luminance(const QColor& color) {
    const auto linear = [](double c) {
        return c <= 0.03928 ? c / 12.92 : std::pow((c + 0.055) / 1.055, 2.4);
    };
    return 0.2126 * linear(color.redF()) + 0.7152 * linear(color.greenF()) +
           0.0722 * linear(color.blueF());
}
double contrast(const QColor& a, const QColor& b) {
    const double first = luminance(a), second = luminance(b);
    return (std::max(first, second) + 0.05) / (std::min(first, second) + 0.05);
}

int opaquePixels(const QIcon& icon, int size) {
    const QImage image = icon.pixmap(QSize(size, size), 1.0).toImage();
    int count = 0;
    for (int y = 0; y < image.height(); ++y)
        for (int x = 0; x < image.width(); ++x)
            count += qAlpha(image.pixel(x, y)) > 128;
    return count;
}

} // namespace

Q_DECLARE_METATYPE(kvn::dialogs::Tone)

class LookTest : public QObject {
    Q_OBJECT

  private slots:
    void initTestCase() {
        qputenv("KESTRELVANE_LOOK", "light");
        QIcon::setThemeName("no such theme");
        installLook(*qApp);
        QIcon::setFallbackThemeName("no such theme");
    }

    void textIsReadable_data() {
        QTest::addColumn<Tone>("tone");
        QTest::newRow("light") << Tone::Light;
        QTest::newRow("dark") << Tone::Dark;
    }
    void textIsReadable() {
        QFETCH(Tone, tone);
        const auto color = [tone](const char* name) { return toneColor(tone, name); };
        for (const char* ground : {"window", "panel", "strip", "base", "alternate", "popup",
                                   "button", "hover", "pressed", "accentSoft"}) {
            QVERIFY2(contrast(color("text"), color(ground)) >= 4.5, ground);
        }
        for (const char* ground : {"window", "panel", "strip", "base", "popup", "button"})
            QVERIFY2(contrast(color("dim"), color(ground)) >= 4.0, ground);
        QVERIFY(contrast(color("accentText"), color("accent")) >= 4.5);
        QVERIFY(contrast(color("accentText"), color("accentHover")) >= 4.5);
        QVERIFY(contrast(color("link"), color("window")) >= 4.5);
        QVERIFY(contrast(color("accent"), color("window")) >= 3.0); // focus, progress
        const QPalette palette = tonePalette(tone);
        QCOMPARE(palette.color(QPalette::Highlight), color("accent"));
        QCOMPARE(palette.color(QPalette::Disabled, QPalette::Text), color("dim"));
    }

    void sheetNamesOnlyWhatExists() {
        const QString source = sheetSource();
        QVERIFY(!source.isEmpty());
        static const QRegularExpression mark("@([A-Za-z]+)"), file("url\\(([^)]*)\\)");
        for (auto marks = mark.globalMatch(source); marks.hasNext();) {
            const QString name = marks.next().captured(1);
            QVERIFY2(name == "name" || name == "tone" || toneColor(Tone::Dark, name).isValid(),
                     qPrintable(name));
        }
        for (const Tone tone : {Tone::Light, Tone::Dark}) {
            const QString sheet = toneSheet(tone, source);
            QVERIFY(sheet.size() > 1000);
            for (auto files = file.globalMatch(sheet); files.hasNext();) {
                const QString path = files.next().captured(1);
                QVERIFY2(QFile::exists(path), qPrintable(path));
            }
        }
    }

    void everyIconDraws() {
        const QStringList files = QDir(":/kvn/icons").entryList();
        QVERIFY(files.size() > 60);
        for (const QString& file : files) {
            const QIcon drawn = icon(QString(file).chopped(4));
            QVERIFY2(opaquePixels(drawn, 48) > 30, qPrintable(file));
            QVERIFY2(opaquePixels(drawn, 16) > 3, qPrintable(file));
        }
        QVERIFY(icon("no such icon").isNull());
    }

    void iconsTakeTheTextsColour() {
        const QIcon pen = icon("tool-pen");
        const auto inkOf = [&](QIcon::Mode mode) {
            const QImage image = pen.pixmap(QSize(64, 64), 1.0, mode).toImage();
            for (int y = 0; y < 64; ++y)
                for (int x = 0; x < 64; ++x)
                    if (qAlpha(image.pixel(x, y)) == 255) return QColor(image.pixel(x, y)).name();
            return QString();
        };
        QCOMPARE(inkOf(QIcon::Normal), lookColor("text").name());
        QCOMPARE(inkOf(QIcon::Disabled), lookColor("dim").name());
        QCOMPARE(pen.pixmap(QSize(24, 24), 2.0).size(), QSize(48, 48)); // crisp on dense screens
    }

    void applicationIconHasEverySize() {
        for (const int size : {16, 22, 24, 32, 48, 64, 128, 256}) {
            const QPixmap picture = applicationIcon().pixmap(QSize(size, size), 1.0);
            QCOMPARE(picture.size(), QSize(size, size));
            QVERIFY(opaquePixels(applicationIcon(), size) > size * size / 2);
        }
    }

    void splash() {
        const QString source = QString::fromLocal8Bit(qgetenv("KVN_SOURCE_DIR"));
        QTemporaryDir folder;
        const QString file = folder.filePath("Splash.spl");
        QVERIFY(QFile::copy(source + "/resources/splash.svg", file));
        for (const qreal ratio : {1.0, 1.5, 2.0}) {
            const QPixmap picture = splashPicture(file, ratio);
            QCOMPARE(picture.size(), (QSizeF(640, 400) * ratio).toSize());
            QCOMPARE(picture.devicePixelRatio(), ratio);
            const QImage image = picture.toImage();
            QVERIFY(image.pixel(0, 0) != image.pixel(int(168 * ratio), int(260 * ratio)));
        }
        QVERIFY(splashPicture(folder.filePath("missing"), 1).isNull());
        QFile broken(folder.filePath("broken"));
        QVERIFY(broken.open(QIODevice::WriteOnly));
        broken.write("no picture");
        broken.close();
        QVERIFY(splashPicture(broken.fileName(), 1).isNull());
    }

    void backdropIsAChecker() {
        const QImage tile = QImage::fromData(customResource("BACKGROUND"), "PNG");
        QCOMPARE(tile.size(), QSize(16, 16));
        QCOMPARE(tile.pixel(0, 0), tile.pixel(15, 15));
        QCOMPARE(tile.pixel(15, 0), tile.pixel(0, 15));
        QVERIFY(tile.pixel(0, 0) != tile.pixel(15, 0));
        QVERIFY(customResource("NOTHING").isEmpty());
    }

    void skinsPaintTheirGround() {
        QWidget window;
        window.resize(60, 40);
        const auto ground = [&](QWidget& widget) {
            return widget.grab().toImage().pixelColor(20, 20).name();
        };
        const QList<QPair<QString, QString>> skins = {{"Toolbar", "panel"},
                                                      {"Side Toolbar", "panel"},
                                                      {"Toolbar2", "strip"},
                                                      {"", "window"},
                                                      {"unheard of", "window"}};
        for (const auto& [skin, color] : skins) {
            applySkin(&window, skin);
            QCOMPARE(ground(window), lookColor(color).name());
        }
        applySkin(nullptr, "Toolbar");
    }

    void followsTheDesktopWhileRunning() {
        QVERIFY(!isDarkLook());
        QLabel label("text");
        label.ensurePolished();
        const QString light = icon("tool-pen").name() + lookColor("window").name();
        qputenv("KESTRELVANE_LOOK", "dark");
        QEvent theme(QEvent::ThemeChange);
        QCoreApplication::sendEvent(qApp, &theme);
        QVERIFY(isDarkLook());
        QVERIFY(lookColor("window").lightness() < 80);
        QCOMPARE(QGuiApplication::palette().color(QPalette::Window), lookColor("window"));
        QCOMPARE(label.palette().color(QPalette::WindowText), lookColor("text"));
        qputenv("KESTRELVANE_LOOK", "light");
        QCoreApplication::sendEvent(qApp, &theme);
        QVERIFY(!isDarkLook());
        QCOMPARE(icon("tool-pen").name() + lookColor("window").name(), light);
    }
};

QTEST_MAIN(LookTest)
#include "look.moc"
