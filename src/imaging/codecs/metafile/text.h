// Lines of text: fonts, alignment, angles, spacing, what stands behind them.
#pragma once

#include <optional>
#include <vector>

#include "imaging/codecs/metafile/charsets.h"
#include "imaging/codecs/metafile/drawing.h"

namespace kvn::imaging::metafile {

enum TextOption {
    textOpaque = 0x2,
    textClipped = 0x4,
    textGlyphs = 0x10,  // characters are glyph numbers
    textPairs = 0x2000, // advances come with a vertical one each
};

struct TextLine {
    PointD at; // logical; not looked at where the alignment says the current position
    std::vector<Character> text;
    std::vector<double> advances; // logical, by the text's own units; may be empty or too short
    int options = 0;
    std::optional<draw::Box> rect; // logical, for the two options
};

void drawText(Drawing& drawing, const TextLine& line);

} // namespace kvn::imaging::metafile
