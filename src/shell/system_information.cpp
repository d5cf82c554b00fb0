#include "shell/system_information.h"

#include <QFile>
#include <QGuiApplication>
#include <QLocale>
#include <QScreen>
#include <QStyle>
#include <QSysInfo>
#include <QThread>
#include <algorithm>

#include "engine/library_versions.h"
#include "shell/version.h"

namespace kvn::shell {

namespace {

// The text behind the colon of the first line of a /proc file that starts with `name`.
QString procValue(const QString& path, const QString& name) {
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly)) return {};
    const QStringList lines = QString::fromUtf8(file.readAll()).split(u'\n');
    for (const QString& line : lines)
        if (line.startsWith(name)) return line.section(u':', 1).trimmed();
    return {};
}

QString memory(const QString& name) {
    const qint64 kib =
        procValue(QStringLiteral("/proc/meminfo"), name).section(u' ', 0, 0).toLongLong();
    return kib > 0 ? QLocale::c().formattedDataSize(kib * 1024) : QString();
}

QString screenText(const QScreen& screen) {
    const QSize size = screen.size();
    return QStringLiteral("%1 x %2 pixels, scale %3, %4 dots an inch")
        .arg(size.width())
        .arg(size.height())
        .arg(screen.devicePixelRatio())
        .arg(qRound(screen.logicalDotsPerInch()));
}

} // namespace

QList<Fact> systemInformation() {
    const auto label = [](const char* text) { return QString::fromLatin1(text); };
    QList<Fact> facts{
        {label("Program"), QStringLiteral("OML Kestrel Vane ") + programVersion()},
        {label("System"), QSysInfo::prettyProductName()},
        {label("Kernel"), QSysInfo::kernelType() + u' ' + QSysInfo::kernelVersion()},
        {label("Architecture"), QSysInfo::currentCpuArchitecture()},
        {label("Processor"), procValue(label("/proc/cpuinfo"), label("model name"))},
        {label("Processor threads"), QString::number(QThread::idealThreadCount())},
        {label("Memory"), memory(label("MemTotal"))},
        {label("Memory available"), memory(label("MemAvailable"))},
        {label("Desktop"), qEnvironmentVariable("XDG_CURRENT_DESKTOP")},
        {label("Window system"), QGuiApplication::platformName()},
        {label("Language"), QLocale::system().name()},
        {label("Qt"), QString::fromLatin1(qVersion())},
    };
    for (const QScreen* screen : QGuiApplication::screens())
        facts.append({QStringLiteral("Screen ") + screen->name(), screenText(*screen)});
    for (const engine::LibraryVersion& library : engine::libraryVersions())
        facts.append({library.name, library.version});
    facts.removeIf([](const Fact& fact) { return fact.value.trimmed().isEmpty(); });
    return facts;
}

QString factsText(const QList<Fact>& facts) {
    qsizetype width = 0;
    for (const Fact& fact : facts)
        width = std::max(width, fact.name.size());
    QString text;
    for (const Fact& fact : facts)
        text += (fact.name + u':').leftJustified(width + 2) + fact.value + u'\n';
    return text;
}

} // namespace kvn::shell
