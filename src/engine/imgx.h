// The engine control: a canvas that shows the current image of its list, with the list's undo
// stack. A control that is never shown costs next to nothing.
#pragma once

#include <QAbstractScrollArea>
#include <memory>

#include "engine/draw.h"
#include "engine/image.h"

class QPainter;

namespace kvn::imaging {
struct Rect;
}

namespace kvn::engine {

class Transforms;
namespace detail {
class ImgXView;
}

// Drives the small magnifier of a control.
class ZoomWindow {
  public:
    explicit ZoomWindow(detail::ImgXView& view) : view_(view) {}
    void Show();
    void Hide();
    void setZoomRate(int rate);

  private:
    detail::ImgXView& view_;
};

class ImgX : public QAbstractScrollArea {
    Q_OBJECT

  public:
    // `name` is the control's object name and the name in the trace.
    ImgX(Engine& engine, const QString& name, QWidget* parent = nullptr);
    ~ImgX() override;

    // The document's slot, for the trace.
    void setDoc(int doc);

    // --- images -------------------------------------------------------------
    engine::Image Image() const;
    engine::Images Images() const;
    engine::Info Info() const;
    engine::Import Import() const;
    engine::Export Export() const;
    engine::Draw Draw() const;
    // Declared in engine/operations.h.
    engine::Effects Effects() const;
    engine::Geometry Geometry() const;
    engine::Channels Channels() const;
    engine::Transforms Transforms() const;
    engine::Utility Utility() const { return {}; }
    bool IsEmpty() const;
    bool Modified() const;
    // For a working copy: Import.FromImgX takes the place of all pages, so that none that a
    // command left behind piles up.
    void setSinglePage(bool on);

    // --- undo ---------------------------------------------------------------
    void setUndoEnabled(bool on);
    void setUndoDepth(int depth);
    int Undos() const;
    int Redos() const;
    void SaveUndo(const QString& label);
    void Undo();
    void Redo();
    // The label of the step that Undo or Redo would take; empty if there is none.
    QString UndoLabel() const;
    QString RedoLabel() const;

    // --- view ---------------------------------------------------------------
    void setAutoDisplay(bool on);
    void setBackColor(quint32 value);            // 24-bit value
    void setBackdrop(const engine::Image& tile); // a null image takes it off
    void setDisplayOptionA(int value);
    void setDisplayOptionB(int value);
    void setDoubleBuffer(bool on);
    void setAntialiasDisplay(bool on);
    void setZoom(double factor); // 1.0 is 100 percent
    double Zoom() const;
    void setFitEnabled(bool on);
    void setZoomFit(int kind); // 1 best, 2 width, 3 height; acts while FitEnabled
    int ClientWidth() const;
    int ClientHeight() const;
    int ScrollX() const; // image column at the canvas left
    int ScrollY() const;
    void Refresh();
    void Repaint();
    engine::ZoomWindow ZoomWindow();

    // --- region and tools ---------------------------------------------------
    // With no region in force the region is the whole picture.
    bool HasRegion() const;
    void setHasRegion(bool on);
    int RegionLeft() const;
    int RegionTop() const;
    int RegionWidth() const;
    int RegionHeight() const;
    void setRegionLeft(int value);
    void setRegionTop(int value);
    void setRegionWidth(int value);
    void setRegionHeight(int value);
    void setToolMode(int mode);
    int ToolMode() const;
    void setMousePointer(int pointer); // 1 arrow, 99 the MouseIcon
    void setMouseIcon(const QPixmap& picture);

    // --- saving -------------------------------------------------------------
    void setJpegQuality(int quality);
    void setJpegSmoothing(int smoothing);
    void setJpegProgressive(bool on);
    void setTiffCompression(int row);
    void setBmpRle(bool on);
    void setWmfPlaceable(bool on);
    void setJPEGMarkers(quint32 mask);
    quint32 JPEGMarkers() const;

    // False around a batch of steps that shall not report progress.
    void setProgress(bool on);

    // Whether work on this control is under way.
    bool isBusy() const;

    QSize sizeHint() const override;

  signals:
    void ImageChanged();
    void ImageListChanged();
    void RegionChanged(double left, double top, double width, double height);
    // Setting *cancel keeps the gesture from being carried out.
    void RegionFinished(int x1, int y1, int x2, int y2, bool* cancel);
    void ToolStarting();
    void ZoomChanged();
    void DblClick();
    // Virtual key codes as the editor knows them (187, 189, 107, 109, ...); shift: 1 shift,
    // 2 control, 4 alt.
    void KeyDown(int code, int shift);
    void KeyUp(int code, int shift);
    // Buttons: 1 left, 2 right, 4 middle. Canvas pixels, device independent.
    void MouseDown(int button, int shift, int x, int y);
    void MouseMove(int button, int shift, int x, int y);
    void MouseUp(int button, int shift, int x, int y);
    void ImageMouseMove(int button, int shift, int imageX, int imageY);
    void MouseWheel(double distance); // 3 for one notch away from the user
    void AfterPaint(QPainter* painter);
    void Progress(int percent, const QString& message, bool* cancel);
    void Download(qint64 bytesRead, qint64 bytesTotal, bool* cancel);

  protected:
    bool viewportEvent(QEvent* event) override;
    void paintEvent(QPaintEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;
    void scrollContentsBy(int dx, int dy) override;
    void mousePressEvent(QMouseEvent* event) override;
    void mouseMoveEvent(QMouseEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;
    void mouseDoubleClickEvent(QMouseEvent* event) override;
    void wheelEvent(QWheelEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;
    void keyReleaseEvent(QKeyEvent* event) override;

  private:
    friend class detail::ImgXView;
    class Listener;
    void record(const char* property, const QJsonArray& args) const;
    void showPicture(const imaging::Rect& changed);

    Engine& engine_;
    std::shared_ptr<detail::PageList> list_;
    std::unique_ptr<Listener> listener_;
    std::unique_ptr<detail::ImgXView> view_;
};

} // namespace kvn::engine
