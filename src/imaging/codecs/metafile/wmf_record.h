// One WMF record's fields, and the handlers of the groups of records.
#pragma once

#include <algorithm>
#include <cstdint>
#include <span>
#include <vector>

#include "imaging/codecs/fields.h"
#include "imaging/codecs/metafile/drawing.h"
#include "imaging/codecs/metafile/shapes.h"

namespace kvn::imaging::metafile {

// Fields are counted in words of 16 bits behind the function number. Most stand in reverse order:
// y before x, bottom before top.
class WmfRecord {
  public:
    WmfRecord(std::uint32_t function, std::span<const std::uint8_t> bytes)
        : function(function), bytes(partOf(bytes, 6, ~0u)), fields_(this->bytes) {}

    std::uint32_t u16(std::size_t word) const { return fields_.u16(2 * word); }
    std::uint32_t u32(std::size_t word) const { return fields_.u32(2 * word); }
    int i16(std::size_t word) const { return static_cast<std::int16_t>(u16(word)); }
    // y, x
    PointD point(std::size_t word) const { return {double(i16(word + 1)), double(i16(word))}; }
    // bottom, right, top, left
    Corners corners(std::size_t word) const { return {point(word + 2), point(word)}; }
    std::size_t words() const { return bytes.size() / 2; }
    // x, y each, as many of `count` as there are.
    std::vector<PointD> points(std::size_t word, std::size_t count) const {
        const std::size_t room = word < words() ? (words() - word) / 2 : 0;
        std::vector<PointD> list(std::min(count, room));
        for (PointD& p : list) {
            p = {double(i16(word)), double(i16(word + 1))};
            word += 2;
        }
        return list;
    }
    Rgba color(std::size_t word, const Drawing& drawing) const {
        return colorOf(u32(word), drawing.state().palette);
    }
    std::span<const std::uint8_t> from(std::size_t word) const {
        return partOf(bytes, 2 * word, ~0u);
    }

    std::uint32_t function;
    std::span<const std::uint8_t> bytes;

  private:
    LittleFields fields_;
};

using WmfHandler = void (*)(Drawing&, const WmfRecord&);
struct WmfEntry {
    std::uint32_t function;
    WmfHandler handler;
};
std::span<const WmfEntry> wmfStateRecords();
std::span<const WmfEntry> wmfObjectRecords();
std::span<const WmfEntry> wmfFigureRecords();
std::span<const WmfEntry> wmfBitmapRecords();

} // namespace kvn::imaging::metafile
