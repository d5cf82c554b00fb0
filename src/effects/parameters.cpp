#include "effects/parameters.h"

#include "basic/numbers.h"
#include "dialogs/asking.h"
#include "document/frmMain.h"
#include "document/roles.h"
#include "document/services.h"
#include "engine/image_values.h"

namespace kvn::effects {
namespace {

QVariant startOf(const Row& row, const frmMain& document) {
    switch (row.start) {
    case Row::Start::PictureWidth:
        return document.imgxAction->Info().Width();
    case Row::Start::PictureHeight:
        return document.imgxAction->Info().Height();
    case Row::Start::AsWritten:
        break;
    }
    if (row.kind == frmDialog::Text) return QString::fromLatin1(row.text);
    if (row.kind == frmDialog::Check) return row.number != 0;
    return row.number;
}

QStringList texts(Items items) {
    QStringList list;
    for (const char* item : items)
        list += QString::fromLatin1(item);
    return list;
}

void addRows(frmMain& document, frmDialog& dialog, Rows rows) {
    for (const Row& row : rows) {
        const int number = dialog.ControlCount();
        dialog.AddControl(QString::fromLatin1(row.label), startOf(row, document), row.kind);
        if (row.kind == frmDialog::Combo) dialog.setList(number, texts(row.items), row.chosen);
    }
}

// A handler that writes into a row would be called for its own change.
void connectFollow(frmMain& document, frmDialog& dialog, Follow follow) {
    QObject::connect(&dialog, &frmDialog::ControlChanged, &dialog,
                     [&document, &dialog, follow, InControlChanged = false](qint16 row) mutable {
                         if (InControlChanged) return;
                         InControlChanged = true;
                         follow(document, dialog, row);
                         InControlChanged = false;
                     });
}

QVariant colorValue(quint32 value, quint8 alpha) {
    return QVariant::fromValue(engine::Utility().ColorFromValue(value, alpha));
}

QVariant readRow(const Argument& argument, const frmDialog& dialog) {
    using Kind = Argument::Kind;
    const int row = argument.row;
    switch (argument.kind) {
    case Kind::Integer:
        return toInt32(dialog.number(row));
    case Kind::Byte:
        return int{toByte(dialog.number(row))};
    case Kind::Single:
        return double{static_cast<float>(dialog.number(row))};
    case Kind::Double:
        return dialog.number(row);
    case Kind::Item:
        return dialog.listIndex(row);
    case Kind::Flag:
        return dialog.isChecked(row);
    case Kind::NotZero:
        return dialog.number(row) != 0;
    default: {
        const bool isOpaque = argument.opacityRow == opaque;
        return colorValue(dialog.color(row),
                          isOpaque ? quint8{255} : toByte(dialog.number(argument.opacityRow)));
    }
    }
}

QVariant readOne(const Argument& argument, const frmDialog* dialog) {
    using Kind = Argument::Kind;
    switch (argument.kind) {
    case Kind::FixedInteger:
        return static_cast<int>(argument.value);
    case Kind::FixedDouble:
        return argument.value;
    case Kind::FixedFlag:
        return argument.value != 0;
    case Kind::FixedColor:
        return colorValue(static_cast<quint32>(argument.value), argument.alpha);
    case Kind::Nothing:
        return {};
    default:
        return readRow(argument, *dialog);
    }
}

} // namespace

frmDialog& OneDialog::make() {
    const document::Services& services = document_.services();
    if (!dialog_) dialog_.emplace(services.asking, services.host.window());
    document_.frmDlg = &*dialog_;
    return *dialog_;
}

bool ask(frmMain& document, frmDialog& dialog, const char* title, Rows rows, Follow follow) {
    dialog.setWindowTitle(QString::fromLatin1(title));
    if (follow) connectFollow(document, dialog, follow);
    addRows(document, dialog, rows);
    document.services().asking.showModal(dialog);
    return !dialog.Cancelled;
}

QVariantList read(const Arguments& arguments, const frmDialog* dialog) {
    QVariantList values;
    for (const Argument& argument : arguments)
        values += readOne(argument, dialog);
    return values;
}

} // namespace kvn::effects
