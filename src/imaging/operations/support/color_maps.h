// Point operations: every pixel's colour becomes another one that depends on that colour alone.
// Alpha stays. Palette pictures keep their type and indices, and their palette is mapped.
#pragma once

#include <functional>

#include "imaging/operations/support/byte_table.h"
#include "imaging/raster.h"
#include "imaging/task.h"

namespace kvn::imaging {

// 1-bit and palette pictures as 24-bit, or 32-bit where the palette has alpha; others as they are.
Raster promoted(const Raster& source, Task& task);
// The same, and grey pictures become colour ones too.
Raster promotedToColor(const Raster& source, Task& task);

// True if no pixel is transparent; looks at the pixels only where the type has alpha.
bool isOpaque(const Raster& source);

// The tables for red, green and blue. Three equal ones leave grey pictures grey; others make
// them colour.
struct ColorTables {
    ByteTable red, green, blue;
    static ColorTables same(const ByteTable& table) { return {table, table, table}; }
};
Raster mapChannels(const Raster& source, const ColorTables& tables, Task& task);

// One row of colour pixels: `count` pixels of `channels` bytes (3, or 4 with alpha last, which is
// to be copied).
using ColorRow =
    std::function<void(const std::uint8_t* in, std::uint8_t* out, int count, int channels)>;
// For maps that mix the channels. Grey pictures become colour ones.
Raster mapColors(const Raster& source, Task& task, const ColorRow& row);

} // namespace kvn::imaging
