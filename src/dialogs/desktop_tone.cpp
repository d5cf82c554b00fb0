#include "dialogs/desktop_tone.h"

#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusPendingCallWatcher>
#include <QDBusPendingReply>
#include <QFileInfo>
#include <QGuiApplication>

namespace kvn::dialogs {

namespace {

const QString service = QStringLiteral("org.freedesktop.portal.Desktop");
const QString path = QStringLiteral("/org/freedesktop/portal/desktop");
const QString settings = QStringLiteral("org.freedesktop.portal.Settings");
const QString appearance = QStringLiteral("org.freedesktop.appearance");
const QString scheme = QStringLiteral("color-scheme");

// Qt would start a bus of its own where there is none, which takes time and serves nobody.
bool hasSessionBus() {
    return qEnvironmentVariableIsSet("DBUS_SESSION_BUS_ADDRESS") ||
           (qEnvironmentVariableIsSet("XDG_RUNTIME_DIR") &&
            QFileInfo::exists(qEnvironmentVariable("XDG_RUNTIME_DIR") + QStringLiteral("/bus")));
}

// The portal's older call wraps its answer twice.
QVariant unwrapped(QVariant value) {
    while (value.metaType() == QMetaType::fromType<QDBusVariant>())
        value = value.value<QDBusVariant>().variant();
    return value;
}

} // namespace

DesktopTone::DesktopTone(QObject* parent) : QObject(parent) {
    readPalette();
    if (hasSessionBus()) askPortal();
}

Tone DesktopTone::tone() const {
    if (portal_ == 1) return Tone::Dark;
    if (portal_ == 2) return Tone::Light;
    return palette_;
}

void DesktopTone::readPalette() {
    const bool dark = QGuiApplication::palette().color(QPalette::Window).lightness() < 128;
    palette_ = dark ? Tone::Dark : Tone::Light;
}

void DesktopTone::askPortal() {
    // Qt finds the slot by the names of its types, and registers this one only later by itself.
    qRegisterMetaType<QDBusVariant>("QDBusVariant");
    QDBusConnection bus = QDBusConnection::sessionBus();
    bus.connect(service, path, settings, QStringLiteral("SettingChanged"), this,
                SLOT(settingChanged(QString, QString, QDBusVariant)));
    QDBusMessage call =
        QDBusMessage::createMethodCall(service, path, settings, QStringLiteral("Read"));
    call << appearance << scheme;
    auto* watcher = new QDBusPendingCallWatcher(bus.asyncCall(call), this);
    connect(watcher, &QDBusPendingCallWatcher::finished, this, [this, watcher] {
        const QDBusPendingReply<QDBusVariant> reply = *watcher;
        if (reply.isValid()) take(QVariant::fromValue(reply.value()));
        watcher->deleteLater();
    });
}

void DesktopTone::settingChanged(const QString& group, const QString& key,
                                 const QDBusVariant& value) {
    if (group == appearance && key == scheme) take(QVariant::fromValue(value));
}

void DesktopTone::take(const QVariant& scheme) {
    const uint wish = unwrapped(scheme).toUInt();
    if (wish == portal_) return;
    portal_ = wish;
    emit changed();
}

} // namespace kvn::dialogs
