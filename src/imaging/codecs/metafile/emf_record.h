// One EMF record's fields, and the handlers of the groups of records.
#pragma once

#include <bit>
#include <cmath>
#include <cstdint>
#include <span>
#include <vector>

#include "imaging/codecs/fields.h"
#include "imaging/codecs/metafile/drawing.h"
#include "imaging/codecs/metafile/shapes.h"

namespace kvn::imaging::metafile {

class EmfRecord {
  public:
    EmfRecord(std::uint32_t type, std::span<const std::uint8_t> bytes)
        : type(type), bytes(bytes), fields_(bytes) {}

    std::uint32_t u16(std::size_t at) const { return fields_.u16(at); }
    std::uint32_t u32(std::size_t at) const { return fields_.u32(at); }
    int i32(std::size_t at) const { return static_cast<std::int32_t>(fields_.u32(at)); }
    double f32(std::size_t at) const { return std::bit_cast<float>(fields_.u32(at)); }
    PointD point(std::size_t at) const { return {double(i32(at)), double(i32(at + 4))}; }
    Corners corners(std::size_t at) const { return {point(at), point(at + 8)}; }
    Affine affine(std::size_t at) const {
        return {f32(at), f32(at + 8), f32(at + 4), f32(at + 12), f32(at + 16), f32(at + 20)};
    }
    Rgba color(std::size_t at, const Drawing& drawing) const {
        return colorOf(u32(at), drawing.state().palette);
    }
    // As many of `count` items of `size` bytes as there are from `at` on.
    std::size_t countAt(std::size_t at, std::uint64_t count, std::size_t size) const {
        const std::size_t room = at < bytes.size() ? (bytes.size() - at) / size : 0;
        return count < room ? static_cast<std::size_t>(count) : room;
    }
    // Coordinates of 16 or of 32 bits.
    std::vector<PointD> points(std::size_t at, std::uint64_t count, bool narrow) const {
        std::vector<PointD> list(countAt(at, count, narrow ? 4 : 8));
        for (PointD& p : list) {
            p = narrow ? PointD{double(static_cast<std::int16_t>(u16(at))),
                                double(static_cast<std::int16_t>(u16(at + 2)))}
                       : point(at);
            at += narrow ? 4 : 8;
        }
        return list;
    }
    Region region(std::size_t at) const {
        constexpr std::size_t header = 32, rect = 16;
        Region region;
        for (std::size_t i = 0; i < countAt(at + header, u32(at + 8), rect); ++i) {
            const Corners box = corners(at + header + i * rect);
            region.rects.push_back({box.a.x, box.a.y, box.b.x, box.b.y});
        }
        return region;
    }
    // A part by the offset and size that stand at `offsetAt` and `sizeAt`.
    std::span<const std::uint8_t> part(std::size_t offsetAt, std::size_t sizeAt) const {
        return partOf(bytes, u32(offsetAt), u32(sizeAt));
    }
    Dib dib(std::size_t at, std::uint32_t usage) const {
        return {part(at, at + 4), part(at + 8, at + 12), usage == 1, 0};
    }

    std::uint32_t type;
    std::span<const std::uint8_t> bytes;

  private:
    LittleFields fields_;
};

using EmfHandler = void (*)(Drawing&, const EmfRecord&);
struct EmfEntry {
    std::uint32_t type;
    EmfHandler handler;
};
std::span<const EmfEntry> emfStateRecords();
std::span<const EmfEntry> emfObjectRecords();
std::span<const EmfEntry> emfFigureRecords();
std::span<const EmfEntry> emfBitmapRecords();
std::span<const EmfEntry> emfTextRecords();

} // namespace kvn::imaging::metafile
