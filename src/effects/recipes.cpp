// Filters that are a chain of steps. Each leaves one undo step: the first labels it, the others
// take none, and steps on scratch pictures have no part in it.
#include <QVariant>

#include "basic/error.h"
#include "document/frmMain.h"
#include "document/report.h"
#include "document/services.h"
#include "document/working_copy.h"
#include "effects/groups.h"
#include "effects/matrices.h"
#include "engine/operations.h"
#include "engine/palette.h"

namespace kvn::effects {
namespace {

using engine::Color;
using engine::Image;

const QString noUndo = QStringLiteral("No Undo");
const QString ownName;

constexpr int gray8 = 3;           // row of the list of image types
constexpr int mostTransparent = 2; // how a mask meets the alpha that is there

// --- PatchWork Mosaic

struct Pass {
    int width, height, channels;
    const char* label;
};
constexpr Pass passes[] = {
    {26, 22, 1, "Patchwork Mosaic"},
    {17, 41, 2, "No Undo"},
    {35, 10, 4, "No Undo"},
    {5, 5, 7, "No Undo"},
};

void patchWork(frmMain& document, int) {
    const auto error = resumeNext(document, [&](ResumeNext& run) {
        for (const Pass& pass : passes)
            run.step([&] {
                document.imgxAction->Effects().Mosaic(pass.width, pass.height, pass.channels,
                                                      QString::fromLatin1(pass.label));
            });
    });
    if (error)
        plainBox(document,
                 QStringLiteral("Error: ") + QString::fromStdString(error->description()));
}

// --- what Charcoal and Flaky Paint share

Image scratchImage(frmMain& document) {
    Image image(document.services().engine);
    image.setTraceIdentity(document.DocIndex, QStringLiteral("Image"));
    image.setOffscreen(true);
    image.setInteractive(false);
    return image;
}

// White where the picture has lines, black elsewhere, in two colours.
void reduceToLines(Image& image) {
    image.Effects().ApplyMatrix(nightLineMatrix(), 50.0, 7, false, false, ownName);
    image.Geometry().Dither(2, true, true, ownName);
    engine::Palette palette = image.Surface().Info().Palette();
    palette.Entry(0, Color(0, 0, 0));
    palette.Entry(1, Color(255, 255, 255));
}

void charcoalSteps(frmMain& document) {
    document::SetImage2Buffer(document);
    Image scratch = scratchImage(document);
    engine::ImgX& copy = *document.imgxAction;
    copy.setProgress(false);
    const Image source = document.ImgX->Image(); // the whole document, whatever is selected
    copy.SaveUndo(QStringLiteral("Charcoal"));
    copy.Effects().Intensify(100, noUndo);
    copy.Info().ConvertType(noUndo, gray8);
    scratch.Import().FromImgX(source, 0, ownName);
    scratch.Channels().Desaturate(ownName);
    scratch.Effects().Despeckle(ownName);
    reduceToLines(scratch);
    scratch.Channels().AlphaFromImage(scratch.Surface(), true, 0, 0, mostTransparent, ownName);
    scratch.Effects().Negative(nullptr, ownName);
    copy.Draw().MergeImage(scratch.Surface().Info(), 0, 0, noUndo);
    copy.Effects().Blur(60, 3, true, noUndo);
    copy.setProgress(true);
    document::UpdateImage(document, document.ImgX->Image());
}

// The picture shows through its own lines on flat grey.
void flakyPaintSteps(frmMain& document) {
    document::SetImage2Buffer(document);
    Image edges = scratchImage(document);
    Image paint = scratchImage(document);
    engine::ImgX& copy = *document.imgxAction;
    copy.setProgress(false);
    const Image source = copy.Image();
    copy.SaveUndo(QStringLiteral("Flaky Paint"));
    edges.Import().FromImgX(source, 0, ownName);
    edges.Channels().Desaturate(ownName);
    edges.Effects().EdgeDetection(10, ownName);
    edges.Effects().Despeckle(ownName);
    reduceToLines(edges);
    paint.Import().FromImgX(source, 0, ownName);
    paint.Channels().AlphaFromImage(edges.Surface(), true, 0, 0, mostTransparent, ownName);
    copy.Effects().Colorize(Color(208, 208, 208), false, false, true, noUndo);
    copy.Draw().MergeImage(paint.Surface().Info(), 0, 0, noUndo);
    copy.setProgress(true);
    document::UpdateImage(document, document.ImgX->Image());
}

void runRecipe(frmMain& document, void (*steps)(frmMain&)) {
    try {
        steps(document);
    } catch (const RuntimeError& error) {
        document::reportNumberedError(document, error);
    }
}

constexpr document::Command commands[] = {
    {"FiltersDemosPatchWork", patchWork},
    {"FiltersDemosCharcoal", [](frmMain& d, int) { runRecipe(d, charcoalSteps); }},
    {"FiltersDemosFlakyPaint", [](frmMain& d, int) { runRecipe(d, flakyPaintSteps); }},
};

} // namespace

std::span<const document::Command> recipes() {
    return commands;
}

} // namespace kvn::effects
