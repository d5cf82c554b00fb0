// The typed list of catalogue.txt: what each item of the menus asks and what it calls.
#pragma once

#include <QCheckBox>
#include <QComboBox>
#include <QFile>
#include <QHash>
#include <QLabel>
#include <QLineEdit>
#include <QStringList>
#include <vector>

#include "dialogs/frmDialog.h"

namespace kvn::test {

struct TypedRow {
    QString kind, label, start, typed;
    QStringList items; // of a list, its start is the index
};

struct TypedItem {
    QString menu, title;
    int index = -1;
    std::vector<TypedRow> rows;
    QStringList calls;

    QString name() const { return menu + QStringLiteral("(%1)").arg(index); }
    bool isPick() const { return !rows.empty() && rows[0].kind == "pick"; }
};

class TypedCatalogue {
  public:
    std::vector<TypedItem> items;

    TypedCatalogue() {
        QFile file(qEnvironmentVariable("KVN_SOURCE_DIR") + "/tests/effects/catalogue.txt");
        if (!file.open(QIODevice::ReadOnly)) return;
        for (const QString& line : QString::fromUtf8(file.readAll()).split(u'\n'))
            if (!line.startsWith(u'#') && !line.trimmed().isEmpty()) read(line);
    }

  private:
    void read(const QString& line) {
        if (line.startsWith("list "))
            lists_[line.section(u':', 0, 0).mid(5)] = line.section(u':', 1).trimmed().split(", ");
        else if (line.startsWith("= "))
            items.back().calls += line.mid(2);
        else if (line.startsWith(u' '))
            items.back().rows.push_back(row(line.split(u'|')));
        else
            items.push_back({line.section(u' ', 0, 0),
                             line.section(u' ', 2),
                             line.section(u' ', 1, 1).toInt(),
                             {},
                             {}});
    }
    TypedRow row(const QStringList& parts) const {
        TypedRow row{parts[0].trimmed(),
                     parts[1].trimmed(),
                     parts.value(2).trimmed(),
                     parts.value(3).trimmed(),
                     {}};
        if (row.kind != "combo") return row;
        const QString what = row.start.section(u' ', 0, -2);
        row.items = what.startsWith(u'{') ? what.mid(1).chopped(1).split(", ") : lists_[what];
        row.start = row.start.section(u' ', -1);
        return row;
    }

    QHash<QString, QStringList> lists_;
};

// What stands in a row, in the list's own words.
inline TypedRow shownRow(const dialogs::frmDialog& dialog, int i, const QString& kind) {
    TypedRow row{kind, dialog.lblLabel(i)->text(), {}, {}, {}};
    if (kind == "text") row.start = dialog.txtText(i)->text();
    if (kind == "color") row.start = QString::number(dialog.color(i), 16).toUpper();
    if (kind == "check") {
        row.label = dialog.chkCheck(i)->text();
        row.start = dialog.isChecked(i) ? "True" : "False";
    }
    if (kind == "combo") {
        const QComboBox* box = dialog.cmbCombo(i);
        for (int item = 0; item < box->count(); ++item)
            row.items += box->itemText(item);
        row.start = QString::number(dialog.listIndex(i));
    }
    return row;
}

inline void typeRow(dialogs::frmDialog& dialog, int i, const TypedRow& row) {
    if (row.kind == "text") dialog.txtText(i)->setText(row.typed);
    if (row.kind == "color") dialog.cmdColor(i)->setBackColor(row.typed.toUInt(nullptr, 16));
    if (row.kind == "combo") dialog.cmbCombo(i)->setCurrentIndex(row.typed.toInt());
    if (row.kind == "check") dialog.chkCheck(i)->setChecked(row.typed == "True");
}

} // namespace kvn::test
