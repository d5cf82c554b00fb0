#include "engine/imgx.h"

#include <QJsonArray>
#include <QtMath>

#include "engine/detail/imgx_view.h"
#include "engine/detail/page_list.h"
#include "engine/detail/runner.h"
#include "engine/detail/trace_values.h"

namespace kvn::engine {

using detail::PageList;
using detail::PageState;

// Tells the control what happens to its list: the view first, then those who listen.
class ImgX::Listener : public detail::ListObserver {
  public:
    explicit Listener(ImgX& control) : control_(control) {}

    // Single pixels are told of when the control is refreshed, or when the program idles.
    void pixelSet(int x, int y) override {
        if (touched_.isEmpty())
            QMetaObject::invokeMethod(
                &control_, [this] { flush(); }, Qt::QueuedConnection);
        touched_ = touched_.united({x, y, 1, 1});
    }
    void flush() {
        const imaging::Rect all = touched_; // pictureChanged empties the member
        if (!all.isEmpty()) pictureChanged(all);
    }
    void pictureChanged(const imaging::Rect& changed) override {
        touched_ = {};
        control_.showPicture(changed);
        // An empty rectangle means that a painting failed and nothing is different.
        if (!changed.isEmpty() || control_.IsEmpty()) emit control_.ImageChanged();
    }
    void releasePicture() override { control_.view_->releasePicture(); }
    void listChanged() override {
        control_.showPicture({});
        emit control_.ImageListChanged();
    }
    bool progress(int percent, const QString& message) override {
        bool cancel = false;
        emit control_.Progress(percent, message, &cancel);
        return cancel;
    }
    bool download(qint64 bytesRead, qint64 bytesTotal) override {
        bool cancel = false;
        emit control_.Download(bytesRead, bytesTotal, &cancel);
        return cancel;
    }

  private:
    ImgX& control_;
    imaging::Rect touched_;
};

ImgX::ImgX(Engine& engine, const QString& name, QWidget* parent)
    : QAbstractScrollArea(parent), engine_(engine),
      list_(std::make_shared<PageList>(engine, TraceIdentity{-1, name})),
      listener_(std::make_unique<Listener>(*this)) {
    setObjectName(name);
    view_ = std::make_unique<detail::ImgXView>(*this);
    list_->observer = listener_.get();
    // The pen's colour is an object of its own; writing to it is a call on this control. It may
    // outlive the control.
    list_->pen.color.setWriteHook(
        [weak = std::weak_ptr<PageList>(list_)](const char* property, quint32 value) {
            if (const auto list = weak.lock())
                detail::recordCall(list->engine(), list->who, property, {qint64{value}});
        });
}

ImgX::~ImgX() {
    // Handles may keep the list alive.
    list_->observer = nullptr;
}

void ImgX::showPicture(const imaging::Rect& changed) {
    const PageState* page = list_->currentPage();
    view_->setPicture(page ? page->raster : imaging::Raster{}, changed);
}

void ImgX::setDoc(int doc) {
    list_->who.doc = doc;
}

void ImgX::record(const char* property, const QJsonArray& args) const {
    detail::recordCall(engine_, list_->who, property, args);
}

// --- images ---------------------------------------------------------------------------------

engine::Image ImgX::Image() const {
    return engine::Image({list_, 0});
}
engine::Images ImgX::Images() const {
    return engine::Images(list_);
}
engine::Info ImgX::Info() const {
    return engine::Info({list_, 0});
}
engine::Import ImgX::Import() const {
    return engine::Import({list_, 0});
}
engine::Export ImgX::Export() const {
    return engine::Export({list_, 0});
}
engine::Draw ImgX::Draw() const {
    return engine::Draw(list_);
}
bool ImgX::IsEmpty() const {
    return list_->currentPage() == nullptr;
}
bool ImgX::Modified() const {
    return list_->isModified();
}

void ImgX::setSinglePage(bool on) {
    list_->singlePage = on;
}

// --- undo -----------------------------------------------------------------------------------

void ImgX::setUndoEnabled(bool on) {
    record("ImgX.UndoEnabled", {on});
    list_->history.setEnabled(on);
}

void ImgX::setUndoDepth(int depth) {
    record("ImgX.UndoDepth", {depth});
    list_->history.setDepth(depth);
}

int ImgX::Undos() const {
    return list_->history.undos();
}
int ImgX::Redos() const {
    return list_->history.redos();
}
QString ImgX::UndoLabel() const {
    return QString::fromStdString(list_->history.undoLabel());
}
QString ImgX::RedoLabel() const {
    return QString::fromStdString(list_->history.redoLabel());
}

void ImgX::SaveUndo(const QString& label) {
    detail::saveUndo(*list_, label);
}
void ImgX::Undo() {
    detail::stepHistory(*list_, "ImgX.Undo", true);
}
void ImgX::Redo() {
    detail::stepHistory(*list_, "ImgX.Redo", false);
}

// --- view -----------------------------------------------------------------------------------

void ImgX::setAutoDisplay(bool on) {
    record("ImgX.AutoDisplay", {on});
    view_->setAutoDisplay(on);
}

void ImgX::setBackColor(quint32 value) {
    record("ImgX.BackColor", {qint64{value}});
    view_->setBackColor(value);
}

void ImgX::setBackdrop(const engine::Image& tile) {
    record("ImgX.Backdrop", {detail::traced(tile)});
    const PageState* page = tile.isNull() ? nullptr : tile.ref().list->find(tile.ref().page);
    view_->setBackdrop(page ? page->raster : imaging::Raster{});
}

// Two switches of the display that are kept and have no effect here.
void ImgX::setDisplayOptionA(int value) {
    record("ImgX.DisplayOptionA", {value});
}
void ImgX::setDisplayOptionB(int value) {
    record("ImgX.DisplayOptionB", {value});
}

void ImgX::setDoubleBuffer(bool on) {
    record("ImgX.DoubleBuffer", {on});
    view_->setDoubleBuffer(on);
}

void ImgX::setAntialiasDisplay(bool on) {
    record("ImgX.AntialiasDisplay", {on});
    view_->setAntialias(on);
}

void ImgX::setZoom(double factor) {
    record("ImgX.Zoom", {factor});
    view_->setZoom(factor);
}
double ImgX::Zoom() const {
    return view_->zoom();
}

void ImgX::setFitEnabled(bool on) {
    record("ImgX.FitEnabled", {on});
    view_->setFitEnabled(on);
}

void ImgX::setZoomFit(int kind) {
    record("ImgX.ZoomFit", {kind});
    view_->setZoomFit(kind);
}

int ImgX::ClientWidth() const {
    return viewport()->width();
}
int ImgX::ClientHeight() const {
    return viewport()->height();
}
int ImgX::ScrollX() const {
    return view_->scrollX();
}
int ImgX::ScrollY() const {
    return view_->scrollY();
}

void ImgX::Refresh() {
    record("ImgX.Refresh", {});
    listener_->flush();
    view_->refresh();
}

void ImgX::Repaint() {
    record("ImgX.Repaint", {});
    listener_->flush();
    view_->refresh();
}

ZoomWindow ImgX::ZoomWindow() {
    return engine::ZoomWindow(*view_);
}

// --- region and tools -----------------------------------------------------------------------

bool ImgX::HasRegion() const {
    return view_->hasRegion();
}
void ImgX::setHasRegion(bool on) {
    record("ImgX.HasRegion", {on});
    view_->setHasRegion(on);
}

int ImgX::RegionLeft() const {
    return view_->region().x;
}
int ImgX::RegionTop() const {
    return view_->region().y;
}
int ImgX::RegionWidth() const {
    return view_->region().width;
}
int ImgX::RegionHeight() const {
    return view_->region().height;
}

void ImgX::setRegionLeft(int value) {
    record("ImgX.RegionLeft", {value});
    view_->setRegionLeft(value);
}
void ImgX::setRegionTop(int value) {
    record("ImgX.RegionTop", {value});
    view_->setRegionTop(value);
}
void ImgX::setRegionWidth(int value) {
    record("ImgX.RegionWidth", {value});
    view_->setRegionWidth(value);
}
void ImgX::setRegionHeight(int value) {
    record("ImgX.RegionHeight", {value});
    view_->setRegionHeight(value);
}

void ImgX::setToolMode(int mode) {
    record("ImgX.ToolMode", {mode});
    view_->setToolMode(mode);
}
int ImgX::ToolMode() const {
    return view_->toolMode();
}

void ImgX::setMousePointer(int pointer) {
    record("ImgX.MousePointer", {pointer});
    view_->setMousePointer(pointer);
}

void ImgX::setMouseIcon(const QPixmap& picture) {
    record("ImgX.MouseIcon", {QJsonValue()});
    view_->setMouseIcon(picture);
}

// --- saving ---------------------------------------------------------------------------------

void ImgX::setJpegQuality(int quality) {
    record("ImgX.JpegQuality", {quality});
    list_->options.jpegQuality = quality;
}
void ImgX::setJpegSmoothing(int smoothing) {
    record("ImgX.JpegSmoothing", {smoothing});
    list_->options.jpegSmoothing = smoothing;
}
void ImgX::setJpegProgressive(bool on) {
    record("ImgX.JpegProgressive", {on});
    list_->options.jpegProgressive = on;
}
void ImgX::setTiffCompression(int row) {
    record("ImgX.TiffCompression", {row});
    list_->options.tiffCompression = row;
}
void ImgX::setBmpRle(bool on) {
    record("ImgX.BmpRle", {on});
    list_->options.bmpRle = on;
}
void ImgX::setWmfPlaceable(bool on) {
    record("ImgX.WmfPlaceable", {on});
    list_->options.wmfPlaceable = on;
}
void ImgX::setJPEGMarkers(quint32 mask) {
    record("ImgX.JPEGMarkers", {qint64{mask}});
    list_->options.jpegMarkers = mask;
}
quint32 ImgX::JPEGMarkers() const {
    return list_->options.jpegMarkers;
}

void ImgX::setProgress(bool on) {
    record("ImgX.Progress", {on});
    list_->reportsProgress = on;
}

bool ImgX::isBusy() const {
    return list_->busy;
}

QSize ImgX::sizeHint() const {
    const PageState* page = list_->currentPage();
    if (!page) return QAbstractScrollArea::sizeHint();
    // One image pixel is one device pixel at 100 percent.
    const double scale = view_->zoom() / devicePixelRatioF();
    const QMargins frame = contentsMargins();
    return {qCeil(page->raster.width() * scale) + frame.left() + frame.right(),
            qCeil(page->raster.height() * scale) + frame.top() + frame.bottom()};
}

} // namespace kvn::engine
