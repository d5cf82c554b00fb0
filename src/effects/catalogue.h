// How a picture command is written down: the rows its dialog asks, the operation it runs, and how
// the rows become arguments. Nothing here acts; shape.h runs it.
#pragma once

#include <QtGlobal>
#include <array>
#include <initializer_list>
#include <span>

#include "dialogs/frmDialog.h"

namespace kvn::document {
class frmMain;
}

namespace kvn::effects {

using dialogs::frmDialog;
using document::frmMain;

// --- rows of a dialog

using Items = std::span<const char* const>;

struct Row {
    enum class Start { AsWritten, PictureWidth, PictureHeight };

    frmDialog::Kind kind;
    const char* label;
    const char* text = "";          // a text row's start
    quint32 number = 0;             // a colour's 24-bit value, a check box's state
    Items items = {};               // a list's
    int chosen = -1;                // a list's, -1 for none
    Start start = Start::AsWritten; // of a text row
};

constexpr Row text(const char* label, const char* start) {
    return {.kind = frmDialog::Text, .label = label, .text = start};
}
constexpr Row pictureWidth(const char* label) {
    return {.kind = frmDialog::Text, .label = label, .start = Row::Start::PictureWidth};
}
constexpr Row pictureHeight(const char* label) {
    return {.kind = frmDialog::Text, .label = label, .start = Row::Start::PictureHeight};
}
constexpr Row color(const char* label, quint32 value) {
    return {.kind = frmDialog::Color, .label = label, .number = value};
}
constexpr Row list(const char* label, Items items, int chosen) {
    return {.kind = frmDialog::Combo, .label = label, .items = items, .chosen = chosen};
}
constexpr Row check(const char* label, bool on = false) {
    return {.kind = frmDialog::Check, .label = label, .number = on};
}

using Rows = std::span<const Row>;

// --- arguments of an operation

inline constexpr int opaque = -1;

struct Argument {
    enum class Kind {
        Integer, // row, rounded half to even
        Byte,    // the same, an overflow error outside 0..255
        Single,  // row in single precision
        Double,
        Item,    // number of a list's item
        Flag,    // state of a check box
        NotZero, // whether the row's number is anything but 0
        Color,   // colour row, with the opacity in another row
        FixedInteger,
        FixedDouble,
        FixedFlag,
        FixedColor,
        Nothing,
    };
    Kind kind;
    int row = 0;
    int opacityRow = opaque; // of a colour: a row whose byte is its alpha
    double value = 0;        // of a fixed argument
    quint8 alpha = 255;      // of a fixed colour
};

constexpr Argument integer(int row) {
    return {.kind = Argument::Kind::Integer, .row = row};
}
constexpr Argument byte(int row) {
    return {.kind = Argument::Kind::Byte, .row = row};
}
constexpr Argument single(int row) {
    return {.kind = Argument::Kind::Single, .row = row};
}
constexpr Argument real(int row) {
    return {.kind = Argument::Kind::Double, .row = row};
}
constexpr Argument item(int row) {
    return {.kind = Argument::Kind::Item, .row = row};
}
constexpr Argument flag(int row) {
    return {.kind = Argument::Kind::Flag, .row = row};
}
constexpr Argument notZero(int row) {
    return {.kind = Argument::Kind::NotZero, .row = row};
}
constexpr Argument colorOf(int row, int opacityRow = opaque) {
    return {.kind = Argument::Kind::Color, .row = row, .opacityRow = opacityRow};
}
constexpr Argument fixed(int value) {
    return {.kind = Argument::Kind::FixedInteger, .value = static_cast<double>(value)};
}
constexpr Argument fixed(double value) {
    return {.kind = Argument::Kind::FixedDouble, .value = value};
}
constexpr Argument fixed(bool value) {
    return {.kind = Argument::Kind::FixedFlag, .value = value ? 1.0 : 0.0};
}
constexpr Argument fixedColor(quint32 value, quint8 alpha = 255) {
    return {
        .kind = Argument::Kind::FixedColor, .value = static_cast<double>(value), .alpha = alpha};
}
inline constexpr Argument nothing{.kind = Argument::Kind::Nothing};

// A short list that may stand inside a constant table.
class Arguments {
  public:
    constexpr Arguments() = default;
    constexpr Arguments(std::initializer_list<Argument> arguments) {
        for (const Argument& argument : arguments)
            list_[static_cast<std::size_t>(count_++)] = argument;
    }
    constexpr const Argument* begin() const { return list_.data(); }
    constexpr const Argument* end() const { return list_.data() + count_; }

  private:
    std::array<Argument, 6> list_{};
    int count_ = 0;
};

// --- commands

// In place of rows and operation, where a command has something to decide. It asks by ask() of
// parameters.h if it needs to, and works on the working copy.
using Handler = void (*)(frmMain& document, frmDialog& dialog);
// Called when the user or a handler changed a row of the open dialog.
using Follow = void (*)(frmMain& document, frmDialog& dialog, int row);

struct Entry {
    int index; // within the menu group
    const char* title = nullptr;
    Rows rows = {};
    const char* operation = nullptr;
    Arguments arguments = {};
    Handler handler = nullptr;
    Follow follow = nullptr;
};

// A command that asks.
constexpr Entry asking(int index, const char* title, Rows rows, const char* operation,
                       Arguments arguments) {
    return {.index = index,
            .title = title,
            .rows = rows,
            .operation = operation,
            .arguments = arguments};
}
// A command that runs at once.
constexpr Entry preset(int index, const char* operation, Arguments arguments = {}) {
    return {.index = index, .operation = operation, .arguments = arguments};
}
constexpr Entry handled(int index, Handler handler) {
    return {.index = index, .handler = handler};
}

// Where a failure of the command ends.
enum class Trap {
    Common,     // passed on to whoever called, who has the common error report
    RaiseError, // the document's error box
    PlainBox,   // a box with nothing but the description
    Numbered,   // the step is left out, the rest runs, then the box with the number
};

struct Group {
    std::span<const Entry> entries;
    Trap trap = Trap::Common;
    bool dialogAlways = false; // a dialog is made for every index, before the working copy
};

} // namespace kvn::effects
