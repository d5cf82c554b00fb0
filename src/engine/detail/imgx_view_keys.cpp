#include "engine/detail/imgx_view_keys.h"

#include <QKeyEvent>
#include <algorithm>
#include <iterator>

namespace kvn::engine::detail {

namespace {

struct KeyRow {
    int key;
    int main;
    int keypad;
};

constexpr KeyRow keyTable[] = {
    {Qt::Key_Plus, 187, 107},       {Qt::Key_Equal, 187, 187},   {Qt::Key_Minus, 189, 109},
    {Qt::Key_Underscore, 189, 189}, {Qt::Key_Asterisk, 56, 106}, {Qt::Key_Slash, 191, 111},
    {Qt::Key_Comma, 188, 110},      {Qt::Key_Period, 190, 110},  {Qt::Key_Semicolon, 186, 186},
    {Qt::Key_Backspace, 8, 8},      {Qt::Key_Tab, 9, 9},         {Qt::Key_Backtab, 9, 9},
    {Qt::Key_Return, 13, 13},       {Qt::Key_Enter, 13, 13},     {Qt::Key_Shift, 16, 16},
    {Qt::Key_Control, 17, 17},      {Qt::Key_Alt, 18, 18},       {Qt::Key_Pause, 19, 19},
    {Qt::Key_Escape, 27, 27},       {Qt::Key_Space, 32, 32},     {Qt::Key_PageUp, 33, 33},
    {Qt::Key_PageDown, 34, 34},     {Qt::Key_End, 35, 35},       {Qt::Key_Home, 36, 36},
    {Qt::Key_Left, 37, 37},         {Qt::Key_Up, 38, 38},        {Qt::Key_Right, 39, 39},
    {Qt::Key_Down, 40, 40},         {Qt::Key_Insert, 45, 45},    {Qt::Key_Delete, 46, 46},
};

constexpr int notch = 120;
constexpr int unitsANotch = 3;

} // namespace

int virtualKey(const QKeyEvent& event) {
    const int key = event.key();
    const bool keypad = event.modifiers() & Qt::KeypadModifier;
    if (key >= Qt::Key_A && key <= Qt::Key_Z) return key;
    if (key >= Qt::Key_0 && key <= Qt::Key_9) return keypad ? 96 + key - Qt::Key_0 : key;
    if (key >= Qt::Key_F1 && key <= Qt::Key_F24) return 112 + key - Qt::Key_F1;
    const auto* row = std::find_if(std::begin(keyTable), std::end(keyTable),
                                   [key](const KeyRow& r) { return r.key == key; });
    if (row == std::end(keyTable)) return 0;
    return keypad ? row->keypad : row->main;
}

int shiftBits(Qt::KeyboardModifiers modifiers) {
    return (modifiers & Qt::ShiftModifier ? 1 : 0) | (modifiers & Qt::ControlModifier ? 2 : 0) |
           (modifiers & Qt::AltModifier ? 4 : 0);
}

int buttonBits(Qt::MouseButtons buttons) {
    return (buttons & Qt::LeftButton ? 1 : 0) | (buttons & Qt::RightButton ? 2 : 0) |
           (buttons & Qt::MiddleButton ? 4 : 0);
}

int WheelCounter::add(int angle) {
    if ((angle > 0) != (rest_ > 0)) rest_ = 0;
    rest_ += angle;
    const int units = rest_ / (notch / unitsANotch);
    rest_ -= units * (notch / unitsANotch);
    return units;
}

} // namespace kvn::engine::detail
