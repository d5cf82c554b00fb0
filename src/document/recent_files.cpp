#include "document/recent_files.h"

#include <QDateTime>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QMimeDatabase>
#include <QSaveFile>
#include <QStandardPaths>
#include <QThreadPool>
#include <QUrl>
#include <QXmlStreamReader>
#include <QXmlStreamWriter>
#include <algorithm>
#include <mutex>
#include <optional>
#include <utility>
#include <vector>

#include "basic/save_file.h"

namespace kvn::document {
namespace {

constexpr qint64 largestList = 16 << 20;
constexpr int deepest = 32; // levels of elements; the format has seven
constexpr QLatin1StringView program("kestrelvane");

// An element of the list, or a piece of text where the name is empty.
struct Node {
    QString name;
    std::vector<std::pair<QString, QString>> attributes;
    std::vector<Node> children;
    QString text;

    QString attribute(const QString& key) const {
        for (const auto& [name, value] : attributes)
            if (name == key) return value;
        return {};
    }
    void set(const QString& key, const QString& value) {
        for (auto& [name, old] : attributes)
            if (name == key) {
                old = value;
                return;
            }
        attributes.emplace_back(key, value);
    }
    // The first child of this name, made if there is none.
    Node& child(const QString& wanted) {
        return childWhere(wanted, [](const Node&) { return true; });
    }
    template <typename Test>
    Node& childWhere(const QString& wanted, Test test) {
        const auto found = std::find_if(children.begin(), children.end(), [&](const Node& node) {
            return node.name == wanted && test(node);
        });
        if (found != children.end()) return *found;
        children.push_back({wanted, {}, {}, {}});
        return children.back();
    }
};

// Reads the element the reader stands on. Prefixes are kept as they are written.
std::optional<Node> readElement(QXmlStreamReader& reader, int depth) {
    if (depth > deepest) return {};
    Node node{reader.qualifiedName().toString(), {}, {}, {}};
    for (const QXmlStreamAttribute& attribute : reader.attributes())
        node.attributes.emplace_back(attribute.qualifiedName().toString(),
                                     attribute.value().toString());
    while (!reader.atEnd()) {
        reader.readNext();
        if (reader.isEndElement()) return node;
        if (reader.isStartElement()) {
            auto child = readElement(reader, depth + 1);
            if (!child) return {};
            node.children.push_back(std::move(*child));
        } else if (reader.isCharacters() && !reader.isWhitespace()) {
            node.children.push_back({{}, {}, {}, reader.text().toString()});
        }
    }
    return {};
}

void write(QXmlStreamWriter& writer, const Node& node) {
    if (node.name.isEmpty()) {
        writer.writeCharacters(node.text);
        return;
    }
    writer.writeStartElement(node.name);
    for (const auto& [name, value] : node.attributes)
        writer.writeAttribute(name, value);
    for (const Node& child : node.children)
        write(writer, child);
    writer.writeEndElement();
}

Node emptyList() {
    return {QStringLiteral("xbel"),
            {{QStringLiteral("version"), QStringLiteral("1.0")},
             {QStringLiteral("xmlns:bookmark"),
              QStringLiteral("http://www.freedesktop.org/standards/desktop-bookmarks")},
             {QStringLiteral("xmlns:mime"),
              QStringLiteral("http://www.freedesktop.org/standards/shared-mime-info")}},
            {},
            {}};
}

// Nothing if there is a file that is no such list.
std::optional<Node> readList(const QString& path) {
    QFile file(path);
    if (!file.exists()) return emptyList();
    const QFileInfo facts(path);
    if (!facts.isFile() || facts.size() > largestList || !file.open(QIODevice::ReadOnly)) return {};
    QXmlStreamReader reader(&file);
    reader.setNamespaceProcessing(false);
    if (!reader.readNextStartElement() || reader.name() != u"xbel") return {};
    return readElement(reader, 0);
}

void enter(Node& list, const QString& path, const QString& now) {
    const QString href = QString::fromUtf8(QUrl::fromLocalFile(path).toEncoded());
    Node& bookmark = list.childWhere(QStringLiteral("bookmark"), [&](const Node& node) {
        return node.attribute(QStringLiteral("href")) == href;
    });
    bookmark.set(QStringLiteral("href"), href);
    if (bookmark.attribute(QStringLiteral("added")).isEmpty())
        bookmark.set(QStringLiteral("added"), now);
    bookmark.set(QStringLiteral("modified"), now);
    bookmark.set(QStringLiteral("visited"), now);
    Node& metadata = bookmark.child(QStringLiteral("info")).child(QStringLiteral("metadata"));
    metadata.set(QStringLiteral("owner"), QStringLiteral("http://freedesktop.org"));
    metadata.child(QStringLiteral("mime:mime-type"))
        .set(QStringLiteral("type"), QMimeDatabase().mimeTypeForFile(path).name());
    Node& application = metadata.child(QStringLiteral("bookmark:applications"))
                            .childWhere(QStringLiteral("bookmark:application"), [](const Node& n) {
                                return n.attribute(QStringLiteral("name")) == program;
                            });
    application.set(QStringLiteral("name"), QString(program));
    application.set(QStringLiteral("exec"), QStringLiteral("'kestrelvane'"));
    application.set(QStringLiteral("modified"), now);
    const int count = application.attribute(QStringLiteral("count")).toInt();
    application.set(QStringLiteral("count"), QString::number(count + 1));
}

} // namespace

bool enterRecentFile(const QString& list, const QString& path, const QDateTime& now) {
    std::optional<Node> root = readList(list);
    if (!root) return false;
    enter(*root, QFileInfo(path).absoluteFilePath(),
          now.toUTC().toString(QStringLiteral("yyyy-MM-ddTHH:mm:ss.zzz000Z")));
    QDir().mkpath(QFileInfo(list).path());
    QSaveFile file(list);
    if (!file.open(QIODevice::WriteOnly)) return false;
    file.setPermissions(QFile::ReadOwner | QFile::WriteOwner); // it tells what its owner looks at
    QXmlStreamWriter writer(&file);
    writer.setAutoFormatting(true);
    writer.setAutoFormattingIndent(2);
    writer.writeStartDocument();
    write(writer, *root);
    writer.writeEndDocument();
    return !writer.hasError() && commitWhole(file);
}

void noteRecentFile(const QString& path) {
    if (path.isEmpty()) return;
    const QString list = QStandardPaths::writableLocation(QStandardPaths::GenericDataLocation) +
                         QStringLiteral("/recently-used.xbel");
    QThreadPool::globalInstance()->start([list, path, now = QDateTime::currentDateTimeUtc()] {
        static std::mutex one; // entry after entry
        const std::lock_guard lock(one);
        enterRecentFile(list, path, now);
    });
}

} // namespace kvn::document
