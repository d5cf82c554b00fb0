// Input of the window system in the editor's numbers.
#pragma once

#include <Qt>

class QKeyEvent;

namespace kvn::engine::detail {

// The virtual key code: letters and digits are their own upper-case code, 187 and 189 the plus
// and minus of the main block, 107 and 109 those of the keypad. 0 for keys without one.
int virtualKey(const QKeyEvent& event);

// 1 shift, 2 control, 4 alt.
int shiftBits(Qt::KeyboardModifiers modifiers);

// 1 left, 2 right, 4 middle, added up. 0 for other buttons.
int buttonBits(Qt::MouseButtons buttons);

// Turns wheel movement into whole distances, 3 to the notch, and keeps the rest: touch pads send
// a notch in many small parts.
class WheelCounter {
  public:
    // `angle` in eighths of a degree, a notch being 120. Turning round drops the rest.
    int add(int angle);

  private:
    int rest_ = 0;
};

} // namespace kvn::engine::detail
