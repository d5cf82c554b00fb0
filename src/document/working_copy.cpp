#include "document/working_copy.h"

#include <QVariant>
#include <algorithm>

#include "basic/numbers.h"
#include "document/frmMain.h"
#include "document/program_state.h"

namespace kvn::document {
namespace {

constexpr int previewMethod = 3; // row of the list of resampling methods

void cropToSelection(frmMain& document, engine::ImgX& control) {
    const ProgramState& state = document.services().state;
    sizeToSelection(document, control);
    control.Image().run(QStringLiteral("Geometry.Crop"),
                        {toInt32(state.SelLeft), toInt32(state.SelTop), toInt32(state.SelWidth),
                         toInt32(state.SelHeight)},
                        {});
}

void reduceToFit(engine::ImgX& control) {
    const engine::Info info = control.Info();
    const int side =
        std::min({control.ClientWidth(), control.ClientHeight(), info.Width(), info.Height()});
    control.Image().run(QStringLiteral("Geometry.Resize"), {side, 0, previewMethod}, {});
}

// Display is on again whatever happens in between.
class FrozenDisplay {
  public:
    explicit FrozenDisplay(engine::ImgX& control) : control_(control) {
        control_.setAutoDisplay(false);
    }
    ~FrozenDisplay() { control_.setAutoDisplay(true); }
    FrozenDisplay(const FrozenDisplay&) = delete;
    FrozenDisplay& operator=(const FrozenDisplay&) = delete;

  private:
    engine::ImgX& control_;
};

} // namespace

void sizeToSelection(frmMain& document, engine::ImgX& control) {
    const ProgramState& state = document.services().state;
    control.resize(toInt32(state.SelWidth), toInt32(state.SelHeight));
}

void SetImage2Buffer(frmMain& document) {
    document.imgxAction->Import().FromImgX(document.ImgX->Image(), 0, {});
    if (document.services().state.HasSelection) cropToSelection(document, *document.imgxAction);
}

void SetImage2Buffer2(frmMain& document, engine::ImgX& target) {
    target.Import().FromImgX(document.ImgX->Image(), 0, {});
    document.imgxAction->Import().FromImgX(document.ImgX->Image(), 0, {});
    const FrozenDisplay frozen(target);
    if (document.services().state.HasSelection) {
        cropToSelection(document, target);
        cropToSelection(document, *document.imgxAction);
    } else {
        reduceToFit(target);
    }
}

void UpdateImage(frmMain& document, const engine::Image& image) {
    const ProgramState& state = document.services().state;
    if (!state.HasSelection) {
        image.Import().FromImgX(document.imgxAction->Image(), 0, {});
        return;
    }
    engine::Draw(image.ref().list)
        .Image(document.imgxAction->Info(), toInt32(state.SelLeft), toInt32(state.SelTop), nullptr,
               1.0, true, {});
}

void Undo(frmMain& document) {
    const FrozenDisplay frozen(*document.ImgX);
    document.ImgX->Undo();
    document.ImgX->Refresh();
}

void Redo(frmMain& document) {
    const FrozenDisplay frozen(*document.ImgX);
    document.ImgX->Redo();
    document.ImgX->Refresh();
}

} // namespace kvn::document
