// Bitmaps that records put into the drawing, stretched, mirrored, turned and combined.
#pragma once

#include <array>
#include <optional>

#include "imaging/codecs/metafile/drawing.h"

namespace kvn::imaging::metafile {

struct Blit {
    Dib dib;
    Raster raster; // instead of the dib
    // The part of the bitmap, in its pixels from the upper left corner; a negative size mirrors.
    double sourceX = 0, sourceY = 0, sourceWidth = 0, sourceHeight = 0;
    // Where its corners go, logical: the upper left, the upper right, the lower left one.
    std::array<PointD, 3> corners;
    std::uint8_t code = draw::Ink::sourceAlone; // of pattern, source and present colour
    bool alpha = false;                         // the bitmap's own, multiplied into its colours
    int opacity = 255;
    std::optional<Rgba> clear; // pixels of this colour are left out

    void setPlace(PointD at, double width, double height) {
        corners = {at, at + PointD{width, 0}, at + PointD{0, height}};
    }
    void setSource(double x, double y, double width, double height) {
        sourceX = x;
        sourceY = y;
        sourceWidth = width;
        sourceHeight = height;
    }
};

// The rows that a record brings of a bitmap which comes in several.
struct RowsOf {
    PointD from, size; // the part that is wanted; the corner is that of the file's first row
    PointD at;         // where its upper left corner goes
    double first = 0;  // the number of the first row that is there
    double count = 0;
};
// Sets source and place for as much of the part as the rows hold.
void setRows(Blit& blit, const DibFacts& facts, const RowsOf& rows);

void drawBitmap(Drawing& drawing, const Blit& blit);
// A rectangle with the brush, combined with what is there.
void drawPattern(Drawing& drawing, PointD at, double width, double height, std::uint8_t code);

} // namespace kvn::imaging::metafile
