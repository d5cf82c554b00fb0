// A button painted in the colour it holds. It does not ask for another one: whoever listens to
// its click does.
#pragma once

#include <QPushButton>

namespace kvn::dialogs {

class ColorButton : public QPushButton {
    Q_OBJECT
    Q_PROPERTY(quint32 BackColor READ BackColor WRITE setBackColor)

  public:
    explicit ColorButton(QWidget* parent);

    // 24-bit value, red in the low byte; higher bits are dropped.
    quint32 BackColor() const { return color_; }
    void setBackColor(quint32 color);

  protected:
    void paintEvent(QPaintEvent* event) override;

  private:
    quint32 color_ = 0xFFFFFF;
};

} // namespace kvn::dialogs
