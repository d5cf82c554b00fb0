// What drawing records set and drawing records use: pens, brushes, fonts, modes, the mapping of
// coordinates, and the stack and table that hold them.
#pragma once

#include <array>
#include <memory>
#include <string>
#include <variant>
#include <vector>

#include "imaging/codecs/metafile/dib.h"
#include "imaging/draw/clip.h"

namespace kvn::imaging::metafile {

using draw::Affine;
using draw::PointD;

// The numbers are those of the files throughout.
enum PenStyle {
    penSolid = 0,
    penDash = 1,
    penDot = 2,
    penDashDot = 3,
    penDashDotDot = 4,
    penNull = 5,
    penInsideFrame = 6,
    penUserDashes = 7,
    penAlternate = 8,
};

struct Pen {
    int style = penSolid;
    double width = 0;      // in logical units, 0 for one pixel
    bool cosmetic = false; // the width is in pixels of the device
    int cap = 0;           // 0 round, 1 square, 2 flat
    int join = 0;          // 0 round, 1 bevelled, 2 mitred
    Rgba color{0, 0, 0, 255};
    std::shared_ptr<const std::vector<double>> dashes{}; // of penUserDashes
};

struct Brush {
    enum class Kind { Solid, Null, Hatch, Pattern };
    Kind kind = Kind::Solid;
    Rgba color{255, 255, 255, 255};
    int hatch = 0; // 0 horizontal, 1 vertical, 2 falling, 3 rising, 4 cross, 5 diagonal
    Dib dib{};
    std::span<const std::uint8_t> oldBitmap{}; // the pattern, if there is no dib
    bool mono = false; // 0 bits have the text's colour, 1 bits the back colour
};

struct FontFace {
    double height = 0;  // of the em if negative, of the cell if positive
    double width = 0;   // of the average character, 0 for the font's own
    int escapement = 0; // of the line, tenths of a degree anticlockwise
    int weight = 400;
    bool italic = false;
    bool underline = false;
    bool strikeOut = false;
    int charset = 0;
    int pitchAndFamily = 0;
    std::string name; // UTF-8
};

struct Region {
    std::vector<std::array<double, 4>> rects; // left, top, right, bottom
};

using Object = std::variant<std::monostate, Pen, Brush, FontFace, Palette, Region>;

enum MapMode {
    mapText = 1,
    mapLowMetric = 2,
    mapHighMetric = 3,
    mapLowEnglish = 4,
    mapHighEnglish = 5,
    mapTwips = 6,
    mapIsotropic = 7,
    mapAnisotropic = 8,
};

struct State {
    explicit State(const Rect& canvas) : clip(canvas), metaClip(canvas) {}

    Affine world;
    int mapMode = mapText;
    PointD windowOrigin, windowExtent{1, 1}, viewportOrigin, viewportExtent{1, 1};

    Pen pen;
    Brush brush;
    FontFace font;
    Palette palette;
    Rgba textColor{0, 0, 0, 255}, backColor{255, 255, 255, 255};
    bool opaque = true; // gaps of dashes, hatches and text are filled with the back colour
    draw::FillRule fillRule = draw::FillRule::EvenOdd;
    int rop2 = 13; // copies
    int stretchMode = 1;
    int textAlign = 0;
    double textExtra = 0;   // between characters
    double breakExtra = 0;  // added to every space
    bool clockwise = false; // the direction of arcs
    double miterLimit = 10;
    PointD brushOrigin; // in pixels of the device
    PointD position;    // logical
    draw::Clip clip, metaClip;
};

} // namespace kvn::imaging::metafile
