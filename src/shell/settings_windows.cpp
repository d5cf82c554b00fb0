#include "shell/settings_windows.h"

#include "basic/numbers.h"
#include "dialogs/asking.h"
#include "dialogs/frmDialog.h"
#include "document/frmMain.h"
#include "document/program_state.h"
#include "document/roles.h"

namespace kvn::shell {

using dialogs::frmDialog;
using document::Services;
using document::Settings;

namespace {

// One row as the tables below have it.
struct Row {
    const char* label;
    frmDialog::Kind kind;
    QVariant value;
};

// True if the user agreed.
bool ask(const Services& services, frmDialog& dialog, const char* title,
         std::initializer_list<Row> rows) {
    dialog.setWindowTitle(QString::fromLatin1(title));
    for (const Row& row : rows) {
        const int index = dialog.ControlCount();
        // A list takes the chosen item, and its items, after the row stands.
        dialog.AddControl(QString::fromLatin1(row.label), row.value, row.kind);
        if (row.kind == frmDialog::Combo)
            dialog.setList(index,
                           {QStringLiteral("No Compression"), QStringLiteral("G3 FAX"),
                            QStringLiteral("G4 FAX"), QStringLiteral("JPEG"),
                            QStringLiteral("Packbits"), QStringLiteral("Deflate"),
                            QStringLiteral("LZW")},
                           row.value.toInt());
    }
    services.asking.showModal(dialog);
    return !dialog.Cancelled;
}

} // namespace

void imageSaveSettings(const Services& services) {
    Settings& settings = services.state.settings;
    frmDialog dialog(services.asking, services.host.window());
    const bool agreed = ask(services, dialog, "Image Save Settings",
                            {{"JPG Quality (1-100):", frmDialog::Text, settings.JpgQuality},
                             {"JPG Smoothing (1-100):", frmDialog::Text, settings.JpgSmoothing},
                             {"JPG Progressive:", frmDialog::Check, settings.JpgProgressive},
                             {"TIFF Compression:", frmDialog::Combo, settings.TiffCompression},
                             {"BMP RLE Compression:", frmDialog::Check, settings.BmpRle},
                             {"WMF Placeable:", frmDialog::Check, settings.WmfPlaceable}});
    if (!agreed) return;
    // Read as a whole before anything is stored: a number may not fit.
    Settings changed = settings;
    changed.JpgQuality = toInt16(dialog.number(0));
    changed.JpgSmoothing = toInt16(dialog.number(1));
    changed.JpgProgressive = dialog.isChecked(2);
    changed.TiffCompression = toInt16(dialog.listIndex(3));
    changed.BmpRle = dialog.isChecked(4);
    changed.WmfPlaceable = dialog.isChecked(5);
    settings = changed;
    document::frmMain* active = services.host.ActiveForm();
    if (services.state.IsAnyOpened() && active) active->ApplySaveSettings();
}

void alphaDisplaySettings(const Services& services) {
    Settings& settings = services.state.settings;
    frmDialog dialog(services.asking, services.host.window());
    const bool agreed =
        ask(services, dialog, "Alpha Display Settings",
            {{"As Background Color", frmDialog::Option, !settings.AlphaDisplayChecker},
             {"As Checkered Background Image", frmDialog::Option, settings.AlphaDisplayChecker},
             {"Background Color:", frmDialog::Color, settings.BackgroundColor},
             {"Flatten Alpha on Save", frmDialog::Check, settings.FlattenAlphaOnSave}});
    if (!agreed) return;
    settings.AlphaDisplayChecker = !dialog.isChecked(0);
    settings.BackgroundColor = static_cast<qint32>(dialog.color(2));
    settings.FlattenAlphaOnSave = dialog.isChecked(3);
}

void ditherErrorSettings(const Services& services) {
    Settings& settings = services.state.settings;
    frmDialog dialog(services.asking, services.host.window());
    if (ask(services, dialog, "Max Dither Error",
            {{"Dither Error (1 - 120):", frmDialog::Text, settings.DitherError}}))
        settings.DitherError = toInt16(dialog.number(0));
}

} // namespace kvn::shell
