// The program's file filter ("text|pattern;pattern|text|pattern") and the rules by which a name
// to save under follows the row that is shown. Plain text work, no windows.
#pragma once

#include <QString>
#include <QStringList>
#include <vector>

namespace kvn::dialogs {

struct FilterRow {
    QString text;         // shown as it stands, double blanks included
    QStringList patterns; // "*.jpg"; "*" for every file

    // The extension that a new name gets in this row, without the dot; empty if any will do.
    QString extension() const;
};

class FileFilter {
  public:
    // A text without a pattern behind it is dropped.
    explicit FileFilter(const QString& filter);

    const std::vector<FilterRow>& rows() const { return rows_; }
    // The rows as Qt's file dialog takes them, with the patterns in brackets at the end.
    QStringList nameFilters() const;

    // The row (from 0) whose extension the name has; -1 if it has none that any row knows.
    // Spellings of one type ("jpeg", "tiff") count as its own.
    int rowOfName(const QString& name) const;

    // `name` made to fit `row` (from 0): a missing or unknown extension gets the row's behind it,
    // one of another row or of another kind of picture gives way to it. A row for every file
    // changes nothing but an absent extension, which becomes `defaultExt`.
    QString fitted(const QString& name, int row, const QString& defaultExt) const;

  private:
    std::vector<FilterRow> rows_;
};

} // namespace kvn::dialogs
