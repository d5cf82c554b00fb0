#include "dialogs/file_filter.h"

#include <QFileInfo>
#include <algorithm>
#include <array>

namespace kvn::dialogs {

namespace {

struct Spelling {
    const char* other;
    const char* usual;
};
constexpr std::array spellings = {Spelling{"jpeg", "jpg"}, Spelling{"jpe", "jpg"},
                                  Spelling{"jfif", "jpg"}, Spelling{"tiff", "tif"},
                                  Spelling{"dib", "bmp"}};

// Extensions of pictures that no row of the save window may know: the name "photo.gif" is not to
// become "photo.gif.jpg".
constexpr std::array otherPictures = {"gif", "ico", "webp", "avif", "heic", "heif", "jxl", "jp2",
                                      "svg", "pbm", "raw",  "dng",  "pdf",  "xcf",  "ppm", "pgm"};

bool isOtherPicture(const QString& extension) {
    return std::any_of(otherPictures.begin(), otherPictures.end(),
                       [&](const char* other) { return extension == QLatin1String(other); });
}

QString usualSpelling(const QString& extension) {
    for (const Spelling& spelling : spellings)
        if (extension == QLatin1String(spelling.other)) return QLatin1String(spelling.usual);
    return extension;
}

// Lower case, without the dot; empty for "name", "name." and ".hidden".
QString extensionOf(const QString& name) {
    const QString file = QFileInfo(name).fileName();
    const qsizetype dot = file.lastIndexOf(QLatin1Char('.'));
    return dot > 0 ? file.mid(dot + 1).toLower() : QString();
}

QString withoutExtension(const QString& name) {
    return name.left(name.lastIndexOf(QLatin1Char('.')));
}

bool takes(const FilterRow& row, const QString& extension) {
    const QString pattern = QStringLiteral("*.") + usualSpelling(extension);
    return row.patterns.contains(pattern, Qt::CaseInsensitive);
}

} // namespace

QString FilterRow::extension() const {
    if (patterns.isEmpty() || !patterns.first().startsWith(QLatin1String("*."))) return {};
    return patterns.first().mid(2);
}

FileFilter::FileFilter(const QString& filter) {
    const QStringList parts = filter.split(QLatin1Char('|'));
    for (qsizetype i = 0; i + 1 < parts.size(); i += 2) {
        FilterRow row{parts[i], {}};
        for (const QString& pattern : parts[i + 1].split(QLatin1Char(';'), Qt::SkipEmptyParts)) {
            // "*.*" has always meant every file, those without a dot as well.
            const QString bare = pattern.trimmed();
            row.patterns << (bare == QLatin1String("*.*") ? QStringLiteral("*") : bare);
        }
        rows_.push_back(row);
    }
}

QStringList FileFilter::nameFilters() const {
    QStringList filters;
    for (const FilterRow& row : rows_)
        filters << row.text + QLatin1Char('(') + row.patterns.join(QLatin1Char(' ')) +
                       QLatin1Char(')');
    return filters;
}

int FileFilter::rowOfName(const QString& name) const {
    const QString extension = extensionOf(name);
    if (extension.isEmpty()) return -1;
    for (std::size_t i = 0; i < rows_.size(); ++i)
        if (takes(rows_[i], extension)) return static_cast<int>(i);
    return -1;
}

QString FileFilter::fitted(const QString& name, int row, const QString& defaultExt) const {
    const bool known = row >= 0 && row < static_cast<int>(rows_.size());
    const QString extension = extensionOf(name);
    const QString wanted = known ? rows_[static_cast<std::size_t>(row)].extension() : QString();
    const bool bare = extension.isEmpty();
    const QString stem = bare && name.endsWith(QLatin1Char('.')) ? name.chopped(1) : name;
    if (wanted.isEmpty())
        return bare && !defaultExt.isEmpty() ? stem + QLatin1Char('.') + defaultExt : name;
    if (!bare && takes(rows_[static_cast<std::size_t>(row)], extension)) return name;
    const bool ofAnotherType = !bare && (rowOfName(name) >= 0 || isOtherPicture(extension));
    return (ofAnotherType ? withoutExtension(name) : stem) + QLatin1Char('.') + wanted;
}

} // namespace kvn::dialogs
