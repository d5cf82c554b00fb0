// The top strip: the colours at its left, room for the option panel of the current tool, and the
// coordinate read-outs at its right end.
#pragma once

#include <QFrame>

class QLabel;

namespace kvn::shell {

class TopBar : public QFrame {
    Q_OBJECT

  public:
    explicit TopBar(QWidget* parent);

    // Stands at the left end from now on.
    void setColors(QFrame* colors);
    void UpdateStatus(const QString& x, const QString& y, const QString& width,
                      const QString& height);
    // Moves the read-outs to the right end, or right of what stands there already: a wide panel
    // pushes them out rather than being covered.
    void placeCoords();

    QSize sizeHint() const override;
    QSize minimumSizeHint() const override { return {0, sizeHint().height()}; }

  protected:
    void resizeEvent(QResizeEvent* event) override;

  private:
    QFrame* colors_ = nullptr;
    QFrame* CoordsInfo_;
    QLabel* lblCoords_;
    QLabel* lblArea_;
};

// Where the read-outs' left edge comes to lie: all in pixels of the bar.
int coordsLeft(int barWidth, int coordsWidth, int panelRight);

} // namespace kvn::shell
