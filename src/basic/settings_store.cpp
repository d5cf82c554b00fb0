#include "basic/settings_store.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QSaveFile>
#include <QStandardPaths>
#include <algorithm>
#include <optional>
#include <vector>

#include "basic/save_file.h"

namespace kvn {
namespace {

constexpr qint64 largestFile = 4 << 20; // a settings file above this is none

struct Value {
    QString name;
    QString text;
};
struct Key {
    QString path; // with its root in front
    std::vector<Value> values;
};
using Keys = std::vector<Key>;

bool sameName(const QString& a, const QString& b) {
    return a.compare(b, Qt::CaseInsensitive) == 0;
}

QString withoutSlashes(QString path) {
    if (path.startsWith(u'\\')) path.remove(0, 1);
    if (path.endsWith(u'\\')) path.chop(1);
    return path;
}

QString fullPath(quint32 root, const QString& path) {
    static const char* const names[] = {"HKEY_CLASSES_ROOT", "HKEY_CURRENT_USER",
                                        "HKEY_LOCAL_MACHINE", "HKEY_USERS"};
    const quint32 number = root - 0x80000000u;
    const QString rootName =
        number < std::size(names) ? QString::fromLatin1(names[number]) : QString::number(root, 16);
    const QString rest = withoutSlashes(path);
    return rest.isEmpty() ? rootName : rootName + u'\\' + rest;
}

// A value is stored under its name, a key's own value under none.
QString storedName(const QString& name) {
    return name == u"*" ? QString() : name;
}

QString escaped(const QString& text, bool isName) {
    QString out;
    for (const QChar c : text) {
        if (c == u'\n')
            out += u"\\n";
        else if (c == u'\r')
            out += u"\\r";
        else if (c == u'\\' || (isName && (c == u'=' || c == u'#' || c == u'[')))
            (out += u'\\') += c;
        else
            out += c;
    }
    return out;
}

// Reads one escaped text from `line`, from `at` up to `end` (a mark that is not escaped; none if
// null) or the end of the line. `at` is left behind what was read.
QString unescaped(const QString& line, qsizetype& at, QChar end) {
    QString out;
    for (; at < line.size() && (end.isNull() || line[at] != end); ++at) {
        if (line[at] != u'\\' || at + 1 == line.size()) {
            out += line[at];
            continue;
        }
        const QChar c = line[++at];
        out += c == u'n' ? QChar(u'\n') : c == u'r' ? QChar(u'\r') : c;
    }
    return out;
}

// A line that makes no sense is passed over: half a file is better than none.
Keys parsed(const QString& text) {
    Keys keys;
    for (const QString& line : text.split(u'\n')) {
        if (line.startsWith(u'#') || line.isEmpty()) continue;
        if (line.startsWith(u'[') && line.endsWith(u']')) {
            keys.push_back({line.mid(1, line.size() - 2), {}});
            continue;
        }
        qsizetype at = 0;
        const QString name = unescaped(line, at, u'=');
        if (keys.empty() || at == line.size()) continue;
        keys.back().values.push_back({name, unescaped(line, ++at, QChar())});
    }
    return keys;
}

Keys readFile(const QString& file) {
    const QFileInfo facts(file);
    QFile in(file);
    if (!facts.isFile() || facts.size() > largestFile || !in.open(QIODevice::ReadOnly)) return {};
    return parsed(QString::fromUtf8(in.read(largestFile)));
}

bool writeFile(const QString& file, const Keys& keys) {
    QString text = QStringLiteral("# Kestrelvane's settings.\n");
    for (const Key& key : keys) {
        if (key.values.empty()) continue;
        text += QStringLiteral("\n[%1]\n").arg(key.path);
        for (const Value& value : key.values)
            text += escaped(value.name, true) + u'=' + escaped(value.text, false) + u'\n';
    }
    QDir().mkpath(QFileInfo(file).path());
    QSaveFile out(file);
    if (!out.open(QIODevice::WriteOnly)) return false;
    out.write(text.toUtf8());
    return commitWhole(out);
}

// The user's file first, then the system's by falling rank.
QStringList files() {
    QStringList out;
    for (const QString& folder :
         QStandardPaths::standardLocations(QStandardPaths::GenericConfigLocation))
        out += folder + QStringLiteral("/kestrelvane/settings.conf");
    return out;
}

QString userFile() {
    return files().value(0);
}

std::optional<QString> find(const Keys& keys, const QString& path, const QString& name) {
    for (const Key& key : keys) {
        if (!sameName(key.path, path)) continue;
        for (const Value& value : key.values)
            if (sameName(value.name, name)) return value.text;
    }
    return {};
}

void put(Keys& keys, const QString& path, const QString& name, const QString& text) {
    auto key = std::find_if(keys.begin(), keys.end(),
                            [&](const Key& k) { return sameName(k.path, path); });
    if (key == keys.end()) key = keys.insert(keys.end(), {path, {}});
    for (Value& value : key->values)
        if (sameName(value.name, name)) {
            value.text = text;
            return;
        }
    key->values.push_back({name, text});
}

} // namespace

QString CRegister::REGGetSetting(quint32 root, const QString& path, const QString& name,
                                 const QString& default_) const {
    for (const QString& file : files())
        if (const auto text = find(readFile(file), fullPath(root, path), storedName(name)))
            return *text;
    return default_;
}

bool CRegister::REGSaveSetting(quint32 root, const QString& path, const QString& name,
                               const QString& text) {
    const QString key = fullPath(root, path);
    if (key.contains(u'\n')) return false;
    Keys keys = readFile(userFile());
    // What stands there already needs no write: a regular close saves all settings.
    if (find(keys, key, storedName(name)) == text) return true;
    put(keys, key, storedName(name), text);
    return writeFile(userFile(), keys);
}

bool CRegister::REGDeleteSetting(quint32 root, const QString& path, const QString& name) {
    Keys keys = readFile(userFile());
    qsizetype taken = 0;
    for (Key& key : keys)
        if (sameName(key.path, fullPath(root, path)))
            taken += static_cast<qsizetype>(std::erase_if(key.values, [&](const Value& value) {
                return sameName(value.name, storedName(name));
            }));
    return taken == 0 || writeFile(userFile(), keys);
}

QStringList CRegister::GetAllKeys(quint32 root, const QString& path) const {
    const QString above = fullPath(root, path) + u'\\';
    QStringList names;
    for (const QString& file : files())
        for (const Key& key : readFile(file)) {
            if (!key.path.startsWith(above, Qt::CaseInsensitive)) continue;
            const QString name = key.path.mid(above.size()).section(u'\\', 0, 0);
            if (!names.contains(name, Qt::CaseInsensitive)) names += name;
        }
    return names;
}

} // namespace kvn
