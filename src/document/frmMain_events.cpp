// What a document does when its engine controls report something.
#include <QContextMenuEvent>

#include "dialogs/frmProgress.h"
#include "document/document_menus.h"
#include "document/frmMain.h"
#include "document/program_state.h"
#include "document/report.h"
#include "document/roles.h"
#include "document/tools.h"
#include "document/view.h"
#include "engine/operations.h"

namespace kvn::document {
namespace {

constexpr int leftButton = 1, rightButton = 2;
constexpr int textTool = 15; // its right button ends the text
constexpr int panMode = 2;
constexpr int controlKey = 2; // the whole shift state
constexpr double smallestSelection = 2;

// Key codes of plus and minus, on the main block and on the number block.
constexpr int zoomInKeys[] = {187, 107}, zoomOutKeys[] = {189, 109};

bool isOneOf(int code, const int (&keys)[2]) {
    return code == keys[0] || code == keys[1];
}

} // namespace

// An engine failure inside a handler takes the window's error report.
void frmMain::connectEvents() {
    using engine::ImgX;
    const auto safely = [this](auto work) { guarded(*this, work); };
    engine::ImgX* shown = this->ImgX;
    connect(shown, &ImgX::ImageChanged, this, [=, this] { safely([this] { imageChanged(); }); });
    connect(shown, &ImgX::ImageListChanged, this, [this] {
        if (!filling_) markCurrentPage(*this);
    });
    connect(shown, &ImgX::RegionChanged, this, &frmMain::regionChanged);
    connect(shown, &ImgX::RegionFinished, this,
            [=, this](int x1, int y1, int x2, int y2, bool* cancel) {
                safely([=, this] { regionFinished(x1, y1, x2, y2, cancel); });
            });
    connect(shown, &ImgX::ZoomChanged, this, [this] { showZoomTitle(*this); });
    connect(shown, &ImgX::MouseDown, this, [=, this](int button, int, int x, int y) {
        mouseDown(button, {x, y});
    });
    connect(shown, &ImgX::ImageMouseMove, this, [=, this](int, int, int x, int y) {
        safely([=, this] { ShowPixelInfo(*this, x, y); });
    });
    connect(shown, &ImgX::MouseWheel, this,
            [this](double distance) { wheelZoom(*this, distance); });
    connect(shown, &ImgX::KeyDown, this, &frmMain::keyDown);
    connect(shown, &ImgX::KeyUp, this, [this](int, int shift) {
        if (shift == controlKey) this->ImgX->setHasRegion(true);
    });
    for (engine::ImgX* control : {shown, imgxAction}) {
        connect(control, &ImgX::Progress, this, &frmMain::progress);
        connect(control, &ImgX::Download, this, &frmMain::download);
    }
}

void frmMain::imageChanged() {
    if (filling_) return;
    RebuildImageList(*this);
    services_.rules.ImageMenusEnabled(!ImgX->IsEmpty());
    ShowPixelInfo(*this, 0, 0);
    Saved = false;
}

void frmMain::regionChanged(double left, double top, double width, double height) {
    ProgramState& state = services_.state;
    state.SelLeft = left;
    state.SelTop = top;
    state.SelWidth = width;
    state.SelHeight = height;
    state.HasSelection = width > smallestSelection || height > smallestSelection;
}

// The line was only meant to show where to warp: it is not drawn, and the tool from before the
// command comes back unless another was chosen meanwhile.
void frmMain::regionFinished(int x1, int y1, int x2, int y2, bool* cancel) {
    if (!WarpArmed) return;
    WarpArmed = false;
    *cancel = true;
    if (ImgX->ToolMode() == lineMode) ImgX->setToolMode(modeBeforeWarp);
    ImgX->Geometry().Warp(x1, y1, x2, y2, {});
}

// Where the right button is free, it opens the menu: with tools that leave the picture alone.
void frmMain::mouseDown(int button, QPoint place) {
    if (button == leftButton) services_.state.HasSelection = false;
    const int mode = ImgX->ToolMode();
    const bool isFree = services_.state.CurrentTool != textTool && (mode == 0 || mode == panMode);
    if (button == rightButton && isFree) showContextMenu(ImgX->viewport()->mapToGlobal(place));
}

void frmMain::showContextMenu(QPoint place) {
    RefreshCropMenu(*this);
    services_.menus.popUp(QStringLiteral("mnumEffects"), place);
}

// The key that opens context menus; a mouse button has been dealt with by its press.
void frmMain::contextMenuEvent(QContextMenuEvent* event) {
    if (event->reason() == QContextMenuEvent::Keyboard)
        showContextMenu(ImgX->viewport()->mapToGlobal(ImgX->viewport()->rect().center()));
}

void frmMain::keyDown(int code, int shift) {
    if (shift != controlKey) return;
    if (isOneOf(code, zoomInKeys)) ZoomIn(*this);
    if (isOneOf(code, zoomOutKeys)) ZoomOut(*this);
    ImgX->setHasRegion(true);
}

void frmMain::progress(int percent, const QString& message, bool* cancel) {
    if (!waiting_) waiting_.emplace();
    services_.progress.progress(this, percent, message, cancel);
    if (percent == 100 || *cancel) waiting_.reset();
}

void frmMain::download(qint64 read, qint64 total, bool* cancel) {
    if (!waiting_) waiting_.emplace();
    try {
        services_.progress.download(this, read, total, cancel);
    } catch (const RuntimeError&) {
        *cancel = true; // a download of nothing; its command says nothing of failures
    }
    if (read == total || *cancel) waiting_.reset();
}

void frmMain::SetCurrTool(int tool) {
    ImgX->setToolMode(0);
    ImgX->setMousePointer(1);
    const ToolLook* look = toolLook(tool);
    if (!look) return;
    if (look->icon) {
        ImgX->setMousePointer(99);
        ImgX->setMouseIcon(pointerPicture(QString::fromLatin1(look->icon)));
    } else {
        ImgX->setToolMode(look->mode);
    }
}

} // namespace kvn::document
