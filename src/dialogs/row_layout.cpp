#include "dialogs/row_layout.h"

#include <algorithm>

namespace kvn::dialogs {

namespace {

// The highest line of text that the design's boxes (315 twips, frame included) hold unharmed.
constexpr double designLine = 19;

// Free space between a label and its control.
constexpr int columnGap = 9;

} // namespace

RowLayout::RowLayout(int lineHeight)
    : lineHeight_(lineHeight), scale_(std::max(1.0, lineHeight / designLine)) {}

int RowLayout::pixels(double twips) const {
    return pixelsFromTwips(twips * scale_);
}

QRect RowLayout::rect(const TwipRect& place) const {
    return {pixels(place.left), pixels(place.top), pixels(place.width), pixels(place.height)};
}

void RowLayout::needLabel(int textWidth) {
    const int column = pixels(design::control[0].left) - pixels(design::label.left) - columnGap;
    extraLabel_ = std::max(extraLabel_, textWidth - column);
}

void RowLayout::needControl(int kind, int width) {
    extraControl_ = std::max(extraControl_, width - pixels(design::control[kind].width));
}

QRect RowLayout::control(int row, int kind) const {
    QRect place = rect(design::control[kind]);
    place.moveTop(pixels(design::controlTop(row, kind)));
    place.translate(extraLabel_, 0);
    const bool keepsWidth = kind == 1; // a swatch has no text to make room for
    if (!keepsWidth) place.setWidth(place.width() + extraControl_);
    return place;
}

// A label begins at its design top and is as high as brings its text level with its control; the
// 210 twips of the design would cut a line of today's fonts.
QRect RowLayout::label(int row, int kind) const {
    QRect place = rect(design::label);
    place.moveTop(pixels(design::labelTop(row)));
    place.setWidth(pixels(design::control[0].left) - place.left() - columnGap + extraLabel_);
    const bool hasControl = kind >= 0 && kind < design::kinds;
    const QRect beside = hasControl ? control(row, kind) : place;
    const int level = 2 * (beside.top() - place.top()) + beside.height();
    place.setHeight(std::max(lineHeight_, level));
    return place;
}

QRect RowLayout::okButton() const {
    return rect(design::okButton);
}

QRect RowLayout::cancelButton() const {
    return rect(design::cancelButton).translated(extraLabel_ + extraControl_, 0);
}

QSize RowLayout::dialog(int rows) const {
    return {pixels(design::dialogWidth) + extraLabel_ + extraControl_,
            pixels(design::heightForRows(rows))};
}

} // namespace kvn::dialogs
