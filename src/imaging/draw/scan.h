// Polygons to pixel coverage: exact areas, in spans, a row at a time. It knows no colours.
//
// Every edge is cut at the pixels that it passes, and the signed area between it and the right
// end of the row is summed up there, in whole numbers of 1/256 pixel. A pixel's coverage is thus
// the area of the polygon in it, rounded to 1/255; where a polygon overlaps itself within one
// pixel, the areas are added up first.
#pragma once

#include <cstdint>
#include <functional>
#include <span>
#include <vector>

#include "imaging/draw/path.h"
#include "imaging/geometry.h"

namespace kvn::imaging::draw {

enum class FillRule { EvenOdd, NonZero };

// Pixels x to x + length - 1, all covered by `coverage` of 255, never 0.
struct Span {
    int x = 0;
    int length = 0;
    std::uint8_t coverage = 255;
};

class ScanConverter {
  public:
    // Nothing outside `clip` is given out; its sides are at most 65535.
    explicit ScanConverter(const Rect& clip);

    // Figures are closed by a line if they are not. Coordinates may be anything: what is no
    // number is left out, what is far away costs nothing.
    void add(const Outline& outline);
    void add(std::span<const PointD> figure);

    // The rows from top to bottom, those without coverage left out, spans from left to right.
    void sweep(FillRule rule, const std::function<void(int y, std::span<const Span>)>& row);

    // Rows and columns that edges cross, summed up: what the sweep costs beside the pixels.
    std::uint64_t crossings() const { return crossings_; }

  private:
    // In 1/256 pixel from the clip's corner; y0 < y1.
    struct Edge {
        int y0 = 0;
        int y1 = 0;
        double x0 = 0;
        double slope = 0;
        int direction = 1;
    };
    struct Cell {
        std::int64_t cover = 0;
        std::int64_t area = 0;
    };

    void addEdge(PointD a, PointD b);
    void addInside(PointD a, PointD b, int direction);
    void accumulate(const Edge& edge, int row);
    void addSlice(int xa, int ya, int xb, int yb, int direction);
    void addCell(int cell, int dy, int xSum);
    void giveRow(FillRule rule);
    void giveSpan(int x, int length, int coverage);

    Rect clip_;
    std::vector<Edge> edges_;
    std::vector<Cell> cells_;
    std::vector<std::uint64_t> touched_; // a bit a cell
    std::vector<Span> spans_;
    std::uint64_t crossings_ = 0;
};

} // namespace kvn::imaging::draw
