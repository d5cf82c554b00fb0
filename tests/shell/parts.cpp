// The parts of the frame and the start by themselves: splash, colours, tool bar, About.
#include <QAbstractButton>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QtTest>

#include "document/desk.h"
#include "document/program_state.h"
#include "shell/color_strip.h"
#include "shell/frmAbout.h"
#include "shell/frmSplash.h"
#include "shell/gradient_strip.h"
#include "shell/splash.h"
#include "shell/tool_bar.h"
#include "shell/tool_table.h"

using namespace kvn;
using namespace kvn::shell;

class PartsTest : public QObject {
    Q_OBJECT

  private slots:
    void splashEndsByTimeOrKey() {
        frmSplash timed{QString()};
        QSignalSpy elapsed(&timed, &frmSplash::elapsed), unloaded(&timed, &frmSplash::unloaded);
        QElapsedTimer clock;
        clock.start();
        timed.show();
        QTRY_COMPARE(elapsed.count(), 1);
        QVERIFY2(clock.elapsed() >= 490 && clock.elapsed() < 800,
                 qPrintable(QString::number(clock.elapsed())));
        QVERIFY(!timed.isVisible());
        QCOMPARE(unloaded.count(), 0);

        frmSplash stopped{QString()};
        QSignalSpy late(&stopped, &frmSplash::elapsed), gone(&stopped, &frmSplash::unloaded);
        stopped.show();
        QTest::keyClick(&stopped, Qt::Key_Shift); // alone it is no key press
        QCOMPARE(gone.count(), 0);
        QTest::keyClick(&stopped, Qt::Key_Space);
        QCOMPARE(gone.count(), 1);
        QTest::qWait(600);
        QCOMPARE(late.count(), 0);
    }

    void damagedSplashFileIsNone() {
        QTemporaryDir folder;
        QFile file(folder.filePath("Splash.spl"));
        QVERIFY(file.open(QIODevice::WriteOnly));
        file.write("no picture");
        file.close();
        Splash splash;
        splash.open(file.fileName());
        QVERIFY(!splash.isOpen());
        splash.show();
        splash.close();
    }

    void stripRunsBetweenTheWells() {
        GradientStrip strip(nullptr);
        strip.resize(100, 20);
        strip.draw(0x0000FF, 0x0000FF);
        QCOMPARE(strip.colorAt(0), quint32(0x0000FF));
        QCOMPARE(strip.colorAt(99), quint32(0x0000FF));
        // From the background at the left to the foreground at the right, each channel by itself.
        strip.draw(0x00C800, 0x640064);
        QCOMPARE(strip.colorAt(0), quint32(0x640064));
        QCOMPARE(strip.colorAt(50), quint32(0x326432));
        QVERIFY((strip.colorAt(99) >> 8 & 0xFF) >= 198);
        QCOMPARE(strip.colorAt(-5), strip.colorAt(0));
        QCOMPARE(strip.colorAt(500), strip.colorAt(99));
    }

    void wellsSwapResetAndTakeFromTheStrip() {
        document::ProgramState state;
        ColorStrip colors(state, nullptr);
        colors.show();
        auto* strip = colors.findChild<GradientStrip*>();
        const auto click = [&](const char* name) {
            colors.findChild<QAbstractButton*>(QString::fromLatin1(name))->click();
        };
        QSignalSpy exchanged(&colors, &ColorStrip::exchanged);
        colors.setSelColor(0, 0x123456);
        const quint32 left = strip->colorAt(0), right = strip->colorAt(90);
        click("ShiftColors");
        QCOMPARE(state.BackColor, quint32(0x123456));
        QVERIFY(strip->colorAt(0) != left);
        click("ShiftColors");
        QCOMPARE(state.ForeColor, quint32(0x123456));
        QCOMPARE(strip->colorAt(90), right);
        QCOMPARE(exchanged.count(), 2);

        const QPoint place(40, 5);
        const quint32 there = strip->colorAt(40);
        QTest::mouseClick(strip, Qt::RightButton, {}, place);
        QCOMPARE(state.BackColor, there);
        QCOMPARE(state.ForeColor, quint32(0x123456));
        QTest::mouseClick(strip, Qt::LeftButton, {}, place);
        QVERIFY(state.ForeColor != 0x123456);

        click("RestoreColors");
        QCOMPARE(state.ForeColor, quint32(0));
        QCOMPARE(state.BackColor, quint32(0xFFFFFF));
    }

    // Every button is in sight on a high screen and on a low one, and none covers another.
    void everyToolFits() {
        for (int height : {200, 420, 900}) {
            ToolBar bar(nullptr);
            bar.resize(bar.width(), height);
            bar.show();
            QRegion covered;
            for (const Tool& tool : tools()) {
                auto* button = bar.findChild<QWidget*>(QStringLiteral("cmd(%1)").arg(tool.id));
                QVERIFY(button);
                const QRect place(button->mapTo(&bar, QPoint()), button->size());
                QVERIFY2(bar.rect().contains(place), qPrintable(QString::number(height)));
                QVERIFY(!covered.intersects(place));
                covered += place;
            }
        }
    }

    void aboutTellsWhatItRunsOn() {
        class User : public test::ScriptedUser {
          public:
            QString shown;
            void showModal(QDialog& window) override {
                shown = window.findChild<QPlainTextEdit*>()->toPlainText();
            }
        } user;
        frmAbout about(user, nullptr);
        QCOMPARE(about.windowTitle(), QStringLiteral("About OML Kestrel Vane"));
        about.findChild<QPushButton*>(QStringLiteral("cmdSysInfo"))->click();
        QVERIFY(user.shown.contains(QStringLiteral("Qt:")));
        QVERIFY(user.shown.contains(QStringLiteral("libtiff:")));

        frmAbout blind(user, nullptr, [] { return QList<Fact>(); });
        blind.findChild<QPushButton*>(QStringLiteral("cmdSysInfo"))->click();
        QCOMPARE(user.said(), QStringList{"|System Information Is Unavailable At This Time"});
    }
};

QTEST_MAIN(PartsTest)
#include "parts.moc"
