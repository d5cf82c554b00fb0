#include "shell/tool_table.h"

namespace kvn::shell {

std::span<const Tool> tools() {
    static constexpr Tool table[] = {
        {1, "Hand", "Move the picture in its window", "tool-hand"},
        {2, "Select", "Select an area by dragging", "tool-select"},
        {3, "Zoom In/Out", "Click to zoom in, right click to zoom out", "tool-zoom"},
        {4, "Zoom Selection", "Drag a box to see it large", "tool-zoom-area"},
        {12, "Zoom Hand", "Drag to move and zoom the picture", "tool-zoom-hand"},
        {7, "Line", "Draw a line", "tool-line"},
        {8, "Polygon", "Draw a shape with corners", "tool-polygon"},
        {9, "Rectangle", "Draw a rectangle", "tool-rectangle"},
        {10, "Ellipse", "Draw an ellipse", "tool-ellipse"},
        {11, "Pen", "Draw freehand", "tool-pen"},
        {20, "Eraser", "Draw freehand in white", "tool-eraser"},
        {15, "Text", "Write on the picture", "tool-text"},
        {16, "Pick Color", "Take a color from the picture", "tool-pick-color"},
        {17, "Flood Fill", "Fill an area of one color", "tool-fill"},
        {19, "Crop", "Drag a box and keep only what it holds", "tool-crop"},
    };
    return table;
}

} // namespace kvn::shell
