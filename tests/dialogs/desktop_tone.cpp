// Light and dark after the desktop's portal, on a bus of the test's own.
#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusVariant>
#include <QProcess>
#include <QStandardPaths>
#include <QTest>

#include "dialogs/desktop_tone.h"

using namespace kvn::dialogs;

namespace {

// Stands in for the desktop's settings service.
class Portal : public QObject {
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "org.freedesktop.portal.Settings")

  public:
    uint scheme = 0;

  public slots:
    QDBusVariant Read(const QString& group, const QString& key) {
        const bool known = group == "org.freedesktop.appearance" && key == "color-scheme";
        // Wrapped twice, as the real one does.
        return QDBusVariant(QVariant::fromValue(QDBusVariant(known ? scheme : 99u)));
    }
};

} // namespace

class DesktopToneTest : public QObject {
    Q_OBJECT

    QProcess bus_;
    Portal portal_;

  private slots:
    void initTestCase() {
        const QString daemon = QStandardPaths::findExecutable("dbus-daemon");
        if (daemon.isEmpty()) QSKIP("needs dbus-daemon");
        bus_.start(daemon, {"--session", "--nofork", "--print-address"});
        QVERIFY(bus_.waitForReadyRead(5000));
        qputenv("DBUS_SESSION_BUS_ADDRESS", bus_.readLine().trimmed());
        QDBusConnection desktop = QDBusConnection::connectToBus(
            QString::fromLocal8Bit(qgetenv("DBUS_SESSION_BUS_ADDRESS")), "desktop");
        QVERIFY(desktop.registerObject("/org/freedesktop/portal/desktop", &portal_,
                                       QDBusConnection::ExportAllContents));
        QVERIFY(desktop.registerService("org.freedesktop.portal.Desktop"));
    }
    void cleanupTestCase() {
        QDBusConnection::disconnectFromBus("desktop");
        bus_.kill();
        bus_.waitForFinished();
    }

    void followsThePortal() {
        portal_.scheme = 1;
        DesktopTone tone(nullptr);
        int changes = 0;
        connect(&tone, &DesktopTone::changed, [&] { ++changes; });
        QTRY_COMPARE(tone.tone(), Tone::Dark);
        QCOMPARE(changes, 1);
        const auto say = [&](const QString& group, uint scheme) {
            QDBusMessage signal =
                QDBusMessage::createSignal("/org/freedesktop/portal/desktop",
                                           "org.freedesktop.portal.Settings", "SettingChanged");
            signal << group << QString("color-scheme") << QVariant::fromValue(QDBusVariant(scheme));
            QVERIFY(QDBusConnection("desktop").send(signal));
        };
        say("org.freedesktop.appearance", 2);
        QTRY_COMPARE(tone.tone(), Tone::Light);
        say("org.gnome.other", 1);
        say("org.freedesktop.appearance", 1);
        QTRY_COMPARE(tone.tone(), Tone::Dark);
        QCOMPARE(changes, 3);
        say("org.freedesktop.appearance", 0); // no wish: the palette decides
        QTRY_COMPARE(changes, 4);
        QCOMPARE(tone.tone(), Tone::Light);
    }

    void withoutAWishThePaletteDecides() {
        portal_.scheme = 0;
        QPalette dark;
        dark.setColor(QPalette::Window, QColor(30, 30, 30));
        QGuiApplication::setPalette(dark);
        DesktopTone tone(nullptr);
        QCOMPARE(tone.tone(), Tone::Dark);
        QGuiApplication::setPalette(QPalette(QColor(240, 240, 240)));
        tone.readPalette();
        QCOMPARE(tone.tone(), Tone::Light);
    }
};

QTEST_MAIN(DesktopToneTest)
#include "desktop_tone.moc"
