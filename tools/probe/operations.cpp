// ops, run, time: the operation table, one operation or several, how long one takes.
#include <QFile>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <algorithm>
#include <chrono>
#include <cstdio>
#include <thread>

#include "arguments.h"
#include "basic/error.h"
#include "commands.h"
#include "engine/detail/page_list.h"
#include "engine/detail/runner.h"
#include "engine/engine.h"
#include "imaging/byte_io.h"

namespace kvn::probe {
namespace {

QString text(std::string_view s) {
    return QString::fromUtf8(s.data(), static_cast<qsizetype>(s.size()));
}

const char* kindName(imaging::ArgumentKind kind) {
    constexpr const char* names[] = {"integer", "number", "boolean", "text",   "color",
                                     "point",   "matrix", "image",   "palette"};
    return names[static_cast<int>(kind)];
}

const char* alphaName(imaging::AlphaRule rule) {
    constexpr const char* names[] = {"none",          "weighted",   "color only",
                                     "every channel", "alpha only", "defines"};
    return names[static_cast<int>(rule)];
}

const char* typeName(imaging::TypeRule rule) {
    constexpr const char* names[] = {"keeps", "promotes", "fixed"};
    return names[static_cast<int>(rule)];
}

QJsonObject described(const imaging::Argument& argument) {
    QJsonObject object{{"name", text(argument.name)}, {"kind", kindName(argument.kind)}};
    if (argument.maximum > argument.minimum) {
        object["minimum"] = argument.minimum;
        object["maximum"] = argument.maximum;
        object["enforced"] = argument.enforced;
    }
    if (!argument.unit.empty()) object["unit"] = text(argument.unit);
    if (!argument.note.empty()) object["note"] = text(argument.note);
    if (argument.optional) object["optional"] = true;
    return object;
}

QJsonObject described(const imaging::Operation& operation) {
    QJsonArray arguments;
    for (const imaging::Argument& argument : operation.arguments)
        arguments.append(described(argument));
    return {{"name", text(operation.name)},
            {"undo", text(operation.undoName)},
            {"arguments", arguments},
            {"border", operation.border},
            {"alpha", alphaName(operation.alpha)},
            {"types", typeName(operation.types)},
            {"note", text(operation.note)}};
}

imaging::Raster firstPage(const QString& path) {
    const imaging::FileBytes file(path.toStdString());
    const imaging::Codec* codec =
        imaging::codecForContent(file.bytes(), path.section('.', -1).toStdString());
    if (!codec)
        throw RuntimeError(errors::invalidPicture, "the file is no picture of a known format",
                           "kvn-probe");
    imaging::Task task;
    imaging::Picture picture = codec->read(file.bytes(), {}, task);
    if (picture.pages.empty())
        throw RuntimeError(errors::invalidPicture, "the file holds no picture", "kvn-probe");
    return std::move(picture.pages.front().raster);
}

// A field of /proc/self/status in bytes, 0 where there is none.
qint64 processMemory(const char* field) {
    QFile status("/proc/self/status");
    if (!status.open(QIODevice::ReadOnly)) return 0;
    for (const QByteArray& line : status.readAll().split('\n'))
        if (line.startsWith(field))
            return line.mid(static_cast<qsizetype>(qstrlen(field)) + 1)
                       .replace("kB", "")
                       .trimmed()
                       .toLongLong() *
                   1024;
    return 0;
}

void resetPeak() {
    QFile refs("/proc/self/clear_refs");
    if (refs.open(QIODevice::WriteOnly)) refs.write("5");
}

} // namespace

void listOperations() {
    QJsonArray all;
    for (const imaging::Operation* operation : imaging::operations())
        all.append(described(*operation));
    const QByteArray json = QJsonDocument(all).toJson(QJsonDocument::Indented);
    std::fwrite(json.constData(), 1, static_cast<std::size_t>(json.size()), stdout);
}

void run(engine::Engine& engine, const QString& in, const QString& out, const QStringList& words) {
    std::vector<Step> steps = stepsFrom(words);
    engine::Image image(engine);
    image.Import().FromFile(in, 0, "no undo");
    for (Step& step : steps)
        engine::detail::runNamed(image.ref(), text(step.operation->name), std::move(step.values),
                                 {}, {});
    const imaging::Codec* codec = imaging::codecForExtension(out.section('.', -1).toStdString());
    image.Export().Save(out, codec ? static_cast<int>(codec->type()) : 0, 0, -1);
}

void time(const QString& in, const QStringList& words) {
    const std::vector<Step> steps = stepsFrom(words);
    const imaging::Raster source = firstPage(in);
    std::vector<double> times;
    qint64 extra = 0;
    using Clock = std::chrono::steady_clock;
    const auto begin = Clock::now();
    constexpr int mostRuns = 9;
    constexpr double enoughSeconds = 20;
    // The first run warms memory and caches up and is not counted.
    for (int i = 0; i <= mostRuns; ++i) {
        resetPeak();
        const qint64 before = processMemory("VmRSS:");
        const auto start = Clock::now();
        std::vector<imaging::Raster> pages{source};
        for (const Step& step : steps) {
            imaging::Task task;
            pages = imaging::runOperation(*step.operation, pages.front(), step.values, task);
        }
        const std::chrono::duration<double, std::milli> took = Clock::now() - start;
        qint64 result = 0;
        for (const imaging::Raster& page : pages)
            result += static_cast<qint64>(page.byteSize());
        extra = std::max(extra, processMemory("VmHWM:") - before - result);
        if (i > 0) times.push_back(took.count());
        const std::chrono::duration<double> all = Clock::now() - begin;
        if (i > 0 && all.count() > enoughSeconds) break;
    }
    std::sort(times.begin(), times.end());
    const QJsonObject figures{{"median_ms", times[times.size() / 2]},
                              {"min_ms", times.front()},
                              {"runs", static_cast<int>(times.size())},
                              {"threads", static_cast<int>(std::thread::hardware_concurrency())},
                              {"extra_bytes", std::max<qint64>(0, extra)}};
    std::printf("%s\n", QJsonDocument(figures).toJson(QJsonDocument::Compact).constData());
}

} // namespace kvn::probe
