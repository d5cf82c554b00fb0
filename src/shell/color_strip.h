// The two colour wells of the program, the strip between them, and the two buttons that swap and
// reset them. The colours themselves are program-wide state.
#pragma once

#include <QColor>
#include <QFrame>
#include <array>

class QToolButton;

namespace kvn::document {
struct ProgramState;
}

namespace kvn::shell {

class ColorWell;
class GradientStrip;

class ColorStrip : public QFrame {
    Q_OBJECT

  public:
    ColorStrip(document::ProgramState& state, QWidget* parent);

    // 24-bit values; well 0 is the foreground, well 1 the background.
    quint32 SelColor(int well) const;
    void setSelColor(int well, quint32 color);
    QColor qtColor(int well) const;
    // The well last clicked.
    qint16 ActiveWell() const { return activeWell_; }
    // Draws the strip, and the wells, anew from the two colours.
    void SyncGradient();

  signals:
    void wellClicked(int well);
    // Swapped or reset; not sent for a colour taken from the strip.
    void exchanged();

  private:
    QToolButton* addButton(const char* name, const QString& title, const char* iconName);

    document::ProgramState& state_;
    std::array<ColorWell*, 2> wells_{};
    GradientStrip* gradient_;
    qint16 activeWell_ = 0;
};

} // namespace kvn::shell
