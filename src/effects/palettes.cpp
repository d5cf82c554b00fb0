// The picture in the colours of a palette, built in or read from a file, and a palette file shown
// as a picture.
#include <QApplication>
#include <QFile>

#include "basic/error.h"
#include "document/frmMain.h"
#include "document/report.h"
#include "document/roles.h"
#include "document/services.h"
#include "document/working_copy.h"
#include "effects/groups.h"
#include "effects/palette_file.h"
#include "engine/operations.h"
#include "engine/palette.h"

namespace kvn::effects {
namespace {

using Colors = QList<engine::Color>;

// --- asking for a palette file

bool chooseFile(engine::Dialog& dialog) {
    dialog.setFilter(QStringLiteral("Palette Files|*.pal|All Files|*.*"));
    dialog.setFilterIndex(1);
    dialog.setOpenOption(true);
    return dialog.ShowOpen();
}

void tellInvalid(frmMain& document) {
    plainBox(document,
             document.Dialog.FileTitle() + QStringLiteral(" is not a valid palette file."));
}

// What a command does when the file is no palette.
struct Strictness {
    bool needsSize; // a wrong size ends it; otherwise what there is gets read after the message
    bool beeps;     // before the message about its bytes
};

// Nothing if the user cancelled or was told why the file cannot be used.
std::optional<Colors> readFile(frmMain& document, const Strictness& strictness) {
    engine::Dialog& dialog = document.Dialog;
    if (!chooseFile(dialog)) return {};
    QFile file(dialog.FileName());
    if (file.size() != paletteFileSize) {
        tellInvalid(document);
        if (strictness.needsSize) return {};
    }
    if (!file.open(QIODevice::ReadOnly)) {
        plainBox(document, file.errorString());
        return {};
    }
    auto colors = paletteColors(file.read(paletteFileSize));
    if (!colors) {
        if (strictness.beeps) QApplication::beep();
        tellInvalid(document);
    }
    return colors;
}

// --- applying one

constexpr int fileIndex = 4;
constexpr int presets[] = {2, 1, 3, 4}; // by index: web, system, 16 colours, black and white

std::optional<Colors> chosenPalette(frmMain& document, int index) {
    engine::Palette palette(document.services().engine);
    if (index != fileIndex) {
        palette.LoadPreset(presets[index]);
        return palette.Colors();
    }
    const auto colors = readFile(document, {.needsSize = false, .beeps = false});
    if (!colors) return {};
    for (int i = 0; i < colors->size(); ++i)
        palette.Entry(static_cast<quint8>(i), (*colors)[i]);
    return palette.Colors();
}

void effectsPalette(frmMain& document, int index) {
    ResumeNext run;
    run.step([&] { document::SetImage2Buffer(document); });
    if (!run.error()) {
        const std::optional<Colors> palette = chosenPalette(document, index);
        if (!palette) return;
        const bool dither =
            document.services().menus.isChecked(QStringLiteral("mnuEffectsDitherPalette"), -1);
        run.step([&] { document.imgxAction->Geometry().ApplyPalette(*palette, dither, {}); });
        run.step([&] { document::UpdateImage(document, document.ImgX->Image()); });
    }
    if (run.error()) document::reportNumberedError(document, *run.error());
}

// --- showing one

constexpr int swatchWidth = 16, swatchHeight = 8, swatchesAcross = 16;
constexpr int pictureWidthPixels = 256, pictureHeightPixels = 128;
constexpr int rgb24 = 5; // row of the list of image types

void drawRow(const engine::ImgX& shown, const Colors& colors, int y) {
    engine::Info info = shown.Info();
    for (int x = 0; x < pictureWidthPixels; ++x) {
        const int entry = y / swatchHeight * swatchesAcross + x / swatchWidth;
        if (entry >= colors.size())
            throw RuntimeError(errors::subscriptOutOfRange, "Subscript out of range",
                               "EffectsPalDisplayPalFile");
        info.SetPixel(x, y, colors[entry]);
    }
}

void displayPaletteFile(frmMain& document, int) {
    const auto colors = readFile(document, {.needsSize = true, .beeps = true});
    if (!colors) return;
    engine::ImgX& shown = *document.ImgX;
    shown.setProgress(false);
    ResumeNext run;
    run.step([&] {
        shown.Import().New(pictureWidthPixels, pictureHeightPixels, engine::Color(), rgb24,
                           QStringLiteral("Display Palette File"));
    });
    // The last pass lies below the picture and past the last colour: it fails and is left out.
    for (int y = 0; y <= pictureHeightPixels; ++y)
        run.step([&] { drawRow(shown, *colors, y); });
    shown.setProgress(true);
    run.step([&] { document.imageChanged(); });
}

constexpr document::Command commands[] = {
    {"EffectsPalette", effectsPalette},
    {"EffectsPalDisplayPalFile", displayPaletteFile},
};

} // namespace

std::span<const document::Command> paletteCommands() {
    return commands;
}

} // namespace kvn::effects
