#include "document/selection.h"

#include <QVariant>
#include <algorithm>
#include <optional>

#include "basic/error.h"
#include "basic/numbers.h"
#include "dialogs/asking.h"
#include "document/frmMain.h"
#include "document/program_state.h"
#include "document/report.h"
#include "document/working_copy.h"

namespace kvn::document {
namespace {

constexpr quint32 white = 0xFFFFFF;
constexpr int smallestCrop = 20; // pixels a side

struct Rect {
    int left, top, width, height;
};

Rect regionOf(const engine::ImgX& control) {
    return {control.RegionLeft(), control.RegionTop(), control.RegionWidth(),
            control.RegionHeight()};
}

void crop(engine::ImgX& control, const Rect& rect) {
    control.Image().run(QStringLiteral("Geometry.Crop"),
                        {rect.left, rect.top, rect.width, rect.height}, {});
}

void copyRegion(engine::ImgX& control) {
    control.setAutoDisplay(false);
    const int undos = control.Undos();
    try {
        crop(control, regionOf(control));
        control.Export().CopyToClipboard();
    } catch (const RuntimeError&) {
        // Nothing was copied; what follows brings the picture back if it was cut down.
    }
    if (control.Undos() > undos) control.Undo();
    control.setAutoDisplay(true);
    control.Repaint();
}

// Half of the picture, never under the smallest crop, at one of the places of the menu.
std::optional<Rect> quarter(int index, int width, int height) {
    const int halfWidth = std::max(toInt32(width / 2.0), smallestCrop);
    const int halfHeight = std::max(toInt32(height / 2.0), smallestCrop);
    const int right = width - halfWidth, bottom = height - halfHeight;
    switch (index) {
    case 3:
        return Rect{0, 0, halfWidth, halfHeight};
    case 4:
        return Rect{right, 0, halfWidth, halfHeight};
    case 5:
        return Rect{0, bottom, halfWidth, halfHeight};
    case 6:
        return Rect{right, bottom, halfWidth, halfHeight};
    case 7:
        return Rect{toInt32(right / 2.0), toInt32(bottom / 2.0), halfWidth, halfHeight};
    default:
        return {};
    }
}

void cropToRegion(frmMain& document) {
    engine::ImgX& control = *document.ImgX;
    if (!control.HasRegion()) {
        document.services().asking.message(
            {.text = QStringLiteral("You must select a cropping area with the mouse"),
             .title = {},
             .icon = dialogs::Icon::Information,
             .buttons = dialogs::Buttons::Ok,
             .owner = &document});
        return;
    }
    crop(control, regionOf(control));
    control.setHasRegion(false);
}

} // namespace

void Copy(frmMain& document) {
    engine::ImgX& control = *document.ImgX;
    if (control.IsEmpty()) return;
    if (control.HasRegion())
        copyRegion(control);
    else
        control.Export().CopyToClipboard();
}

void Paste(frmMain& document) {
    engine::Image scratch(document.services().engine);
    scratch.setTraceIdentity(document.DocIndex, QStringLiteral("Image"));
    scratch.Import().FromClipboard({});
    engine::ImgX& control = *document.ImgX;
    const bool region = control.HasRegion();
    control.Draw().Image(scratch.Info(), region ? control.RegionLeft() : 0,
                         region ? control.RegionTop() : 0, nullptr, 1.0, true, {});
}

void Delete(frmMain& document) {
    const ProgramState& state = document.services().state;
    if (!state.HasSelection) return;
    sizeToSelection(document, *document.imgxAction);
    try {
        engine::Color color;
        color.setRgb(white);
        document.imgxAction->Import().New(toInt32(state.SelWidth), toInt32(state.SelHeight), color,
                                          0, {});
        UpdateImage(document, document.ImgX->Image());
    } catch (const RuntimeError&) {
        // Nothing was painted. This command says nothing.
    }
}

void SelectAll(frmMain& document) {
    engine::ImgX& control = *document.ImgX;
    const engine::Info info = control.Info();
    control.setRegionLeft(-1);
    control.setRegionTop(-1);
    control.setRegionHeight(info.Height() + 1);
    control.setRegionWidth(info.Width() + 1);
    control.setHasRegion(true);
}

void EffectsCrop(frmMain& document, int index) {
    try {
        engine::Image image = document.ImgX->Image();
        if (index == 0)
            cropToRegion(document);
        else if (index == 1)
            image.run(QStringLiteral("Geometry.AutoCrop"), {1.0, QVariant()}, {});
        else if (const auto rect = quarter(index, image.Info().Width(), image.Info().Height()))
            crop(*document.ImgX, *rect);
    } catch (const RuntimeError& error) {
        reportNumberedError(document, error);
    }
}

} // namespace kvn::document
