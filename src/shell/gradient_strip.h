// The strip that runs from the background well's colour to the foreground well's. A click takes
// the colour of the strip's own pixel, so repeated clicks walk towards an end.
#pragma once

#include <QImage>
#include <QWidget>

namespace kvn::shell {

class GradientStrip : public QWidget {
    Q_OBJECT

  public:
    explicit GradientStrip(QWidget* parent);

    // 24-bit values, red in the low byte.
    void draw(quint32 foreground, quint32 background);
    quint32 colorAt(int x) const;

    QSize sizeHint() const override { return {128, 20}; }

  signals:
    // `well` 0 for the left button, 1 for any other.
    void picked(int well, quint32 color);

  protected:
    void paintEvent(QPaintEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;

  private:
    QImage strip_;
    quint32 foreground_ = 0, background_ = 0xFFFFFF;
    int cursor_ = 0; // where the keyboard stands
};

} // namespace kvn::shell
