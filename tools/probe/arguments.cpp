#include "arguments.h"

#include "basic/error.h"
#include "basic/numbers.h"
#include "imaging/byte_io.h"
#include "imaging/codecs/codec.h"

namespace kvn::probe {
namespace {

using imaging::Argument;
using imaging::ArgumentKind;
using imaging::Value;

RuntimeError bad(const Argument& argument, const QString& word) {
    return RuntimeError(errors::typeMismatch,
                        std::string(argument.name) + ": cannot use '" + word.toStdString() + "'",
                        "kvn-probe");
}

double number(const Argument& argument, const QString& word) {
    const std::string text = word.toStdString();
    if (!isNumericText(text)) throw bad(argument, word);
    return numericPrefix(text);
}

imaging::Rgba color(const Argument& argument, const QString& word) {
    bool ok = word.startsWith('#') && (word.size() == 7 || word.size() == 9);
    const quint32 value = ok ? word.mid(1).toUInt(&ok, 16) : 0;
    if (!ok) throw bad(argument, word);
    const quint32 rgba = word.size() == 7 ? value << 8 | 0xFF : value;
    const auto byte = [rgba](int shift) { return static_cast<std::uint8_t>(rgba >> shift); };
    return {byte(24), byte(16), byte(8), byte(0)};
}

imaging::Point point(const Argument& argument, const QString& word) {
    const QStringList parts = word.split(',');
    if (parts.size() != 2) throw bad(argument, word);
    return {toInt32(number(argument, parts[0])), toInt32(number(argument, parts[1]))};
}

imaging::Matrix matrix(const Argument& argument, const QString& word) {
    imaging::Matrix result;
    for (const QString& row : word.split(';')) {
        const QStringList cells = row.split(',');
        if (result.rows++ == 0) result.columns = static_cast<int>(cells.size());
        if (cells.size() != result.columns) throw bad(argument, word);
        for (const QString& cell : cells)
            result.values.push_back(number(argument, cell));
    }
    return result;
}

imaging::Picture pictureFrom(const QString& path) {
    const imaging::FileBytes file(path.toStdString());
    const imaging::Codec* codec =
        imaging::codecForContent(file.bytes(), path.section('.', -1).toStdString());
    if (!codec)
        throw RuntimeError(errors::invalidPicture, "'" + path.toStdString() + "' is no picture",
                           "kvn-probe");
    imaging::Task task;
    return codec->read(file.bytes(), {}, task);
}

bool boolean(const Argument& argument, const QString& word) {
    try {
        return booleanFromText(word.toStdString());
    } catch (const RuntimeError&) {
        throw bad(argument, word);
    }
}

Value valueOf(const Argument& argument, const QString& word) {
    if (argument.optional && (word == "nothing" || word == "null")) return imaging::Nothing{};
    switch (argument.kind) {
    case ArgumentKind::Integer:
    case ArgumentKind::Number:
        return number(argument, word);
    case ArgumentKind::Boolean:
        return boolean(argument, word);
    case ArgumentKind::Text:
        return word.toStdString();
    case ArgumentKind::Color:
        return color(argument, word);
    case ArgumentKind::Point:
        return point(argument, word);
    case ArgumentKind::Matrix:
        return matrix(argument, word);
    case ArgumentKind::Image: {
        const imaging::Picture picture = pictureFrom(word);
        return std::make_shared<const imaging::Raster>(picture.pages.front().raster);
    }
    case ArgumentKind::Palette:
        return pictureFrom(word).pages.front().raster.palette();
    }
    throw bad(argument, word);
}

Step stepFrom(const QStringList& words) {
    Step step;
    step.operation = imaging::findOperation(words.front().toStdString());
    if (!step.operation)
        throw RuntimeError(errors::memberNotFound,
                           "no operation '" + words.front().toStdString() + "' (see kvn-probe ops)",
                           "kvn-probe");
    const auto count = static_cast<qsizetype>(step.operation->arguments.size());
    const qsizetype given = words.size() - 1;
    if (given != count && given != count + 1)
        throw RuntimeError(errors::invalidCall,
                           words.front().toStdString() + " takes " + std::to_string(count) +
                               " arguments, not " + std::to_string(given),
                           "kvn-probe");
    for (qsizetype i = 0; i < count; ++i)
        step.values.push_back(
            valueOf(step.operation->arguments[static_cast<std::size_t>(i)], words[i + 1]));
    return step;
}

} // namespace

std::vector<Step> stepsFrom(const QStringList& words) {
    std::vector<Step> steps;
    QStringList part;
    for (const QString& word : words) {
        if (word != "+") {
            part.append(word);
            continue;
        }
        if (!part.isEmpty()) steps.push_back(stepFrom(part));
        part.clear();
    }
    if (!part.isEmpty()) steps.push_back(stepFrom(part));
    if (steps.empty()) throw RuntimeError(errors::invalidCall, "no operation given", "kvn-probe");
    return steps;
}

} // namespace kvn::probe
