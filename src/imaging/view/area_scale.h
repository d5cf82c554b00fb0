// Shrinking by a factor from 1 to 2 with exact pixel areas: every result is the mean of the
// source pixels it covers, each weighted by the part that is covered.
#pragma once

#include <cstdint>
#include <vector>

#include "imaging/view/samples.h"

namespace kvn::imaging {

// Source pixels first, first + 1 and first + 2 with their weights. A weight of 65535 counts as
// one; the weights of a span come to one. Pixels of weight 0 need not exist.
struct AreaSpan {
    int first = 0;
    std::uint32_t weight[3] = {};
};

// The spans of results begin..begin+count-1. Result i covers the source from i * factor to
// (i + 1) * factor. `length` is where the source ends, which may be inside its last pixel.
std::vector<AreaSpan> areaSpans(std::int64_t begin, int count, double factor, double length);

// The weighted mean of three rows of `count` samples, in units of 1/256. Rows of weight 0 are
// not read.
void blendRows(const std::uint8_t* const rows[3], const AreaSpan& span, int count,
               std::uint16_t* out);

// The weighted means along one row of such sums, as premultiplied screen pixels (alpha in the top
// byte, then red, green, blue). `left` is the source column that `sums` begins with; behind the
// last column there must be room to read two pixels and a sample more.
void blendColumns(SampleForm form, const std::uint16_t* sums, int left,
                  const std::vector<AreaSpan>& spans, std::uint32_t* out);

} // namespace kvn::imaging
