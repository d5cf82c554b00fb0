// Where the rows of the parameter dialog stand, as plain numbers: the design in twips, and its
// translation to pixels for a font and for the texts of a dialog. It draws nothing.
#pragma once

#include <QRect>
#include <QSize>

#include "basic/twips.h"

namespace kvn::dialogs {

struct TwipRect {
    int left, top, width, height;
};

namespace design {
inline constexpr int dialogWidth = 5415;
inline constexpr int dialogHeight = 3090; // before the first row
inline constexpr int rowGap = 190;        // between labels, and under the last one
inline constexpr int bottomHeight = 735;
inline constexpr TwipRect label{180, 330, 1785, 210};
inline constexpr TwipRect okButton{540, 225, 1335, 375}; // within the bottom panel
inline constexpr TwipRect cancelButton{3240, 240, 1335, 375};

// Element 0 of the group of a kind: text, colour, combo, check, option.
inline constexpr int kinds = 5;
inline constexpr TwipRect control[kinds] = {{2100, 300, 3075, 315},
                                            {2100, 300, 855, 315},
                                            {2100, 360, 3015, 315},
                                            {2085, 360, 2955, 255},
                                            {2085, 360, 3075, 255}};

// Tops in twips. Row 0 keeps its design place, which differs by kind; from row 1 on a control
// stands level with its label. That half-step is the design's own.
constexpr int labelTop(int row) {
    return label.top + row * (label.height + rowGap);
}
constexpr int controlTop(int row, int kind) {
    return row == 0 ? control[kind].top : labelTop(row);
}
// The height inside the frame of a dialog of `rows` rows.
constexpr int heightForRows(int rows) {
    return rows == 0 ? dialogHeight : labelTop(rows - 1) + label.height + rowGap + bottomHeight;
}
} // namespace design

// The design in pixels. `scale` is 1 for a font that fits the design's boxes and grows with the
// font; `extraLabel` and `extraControl` widen the two columns for texts that would not fit.
class RowLayout {
  public:
    // `lineHeight`: height of a line of the dialog's font, in pixels.
    explicit RowLayout(int lineHeight);

    // Widens the columns, in pixels, so that a label or a control's own text fits.
    void needLabel(int textWidth);
    void needControl(int kind, int width);

    QRect label(int row, int kind) const;
    QRect control(int row, int kind) const;
    QRect okButton() const;
    QRect cancelButton() const;
    QSize dialog(int rows) const;
    int bottomHeight() const { return pixels(design::bottomHeight); }

  private:
    int pixels(double twips) const;
    QRect rect(const TwipRect& place) const;

    int lineHeight_;
    double scale_;
    int extraLabel_ = 0;
    int extraControl_ = 0;
};

} // namespace kvn::dialogs
