// Draws filled and stroked outlines into a colour picture, antialiased, through a clip, with
// bitwise combinations of what is drawn and what is there.
#pragma once

#include <cstdint>
#include <functional>

#include "imaging/draw/clip.h"
#include "imaging/draw/effort.h"
#include "imaging/draw/paint.h"
#include "imaging/draw/stroke.h"

namespace kvn::imaging::draw {

// Which of the two paints there are, and how they meet the present colour D: bit 4p + 2s + d of
// `code` is the result for a bit p of the pattern, s of the source and d of D.
struct Ink {
    const Paint* pattern = nullptr;
    const Paint* source = nullptr;
    std::uint8_t code = patternAlone;

    static constexpr std::uint8_t patternAlone = 0xf0;
    static constexpr std::uint8_t sourceAlone = 0xcc;
    bool usesPattern() const { return (code >> 4) != (code & 15); }
    bool usesSource() const { return (code >> 2 & 0x33) != (code & 0x33); }
};

class Surface {
  public:
    // `picture` is of the type Rgb24 and outlives this.
    Surface(Raster& picture, Effort& effort);

    Rect rect() const { return {0, 0, view_.width, view_.height}; }
    void fill(const Outline& outline, FillRule rule, const Ink& ink, const Clip& clip);
    // `pen` maps the pen's own space to pixels.
    void stroke(const Outline& outline, const StrokeStyle& style, const Affine& pen, const Ink& ink,
                const Clip& clip);

  private:
    void sweep(ScanConverter& scan, FillRule rule, const Ink& ink, const Clip& clip);
    const Mask* maskFor(const Clip& clip);
    std::uint8_t* at(int x, int y) const { return view_.row(y) + std::ptrdiff_t{x} * 3; }
    void paintSpan(int y, const Span& span, const Ink& ink, const Mask* mask);
    void blend(int x, int y, int count, const std::uint8_t* coverage, const Ink& ink);

    View view_;
    Effort& effort_;
    Clip maskedClip_;
    Mask mask_;
    std::vector<Rgba> patternRow_, sourceRow_;
    std::vector<std::uint8_t> coverageRow_;
};

} // namespace kvn::imaging::draw
