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

// What the result can hold that the source cannot.
enum class ResultForm {
    SameType,
    Color,          // grey becomes colour
    WithAlpha,      // grey stays; alpha is added
    WithoutAlpha,   // grey stays; alpha is dropped
    ColorWithAlpha, // both
    ColorWithoutAlpha,
};

// A row of pixels to read and one to write, not the same: of 1 or 2 channels for grey, 3 or 4 for
// colour; with 2 and 4 alpha is last.
struct PixelRow {
    const std::uint8_t* in;
    int inChannels;
    std::uint8_t* out;
    int outChannels;
    int count;
};
using RowKernel = std::function<void(const PixelRow& row)>;

// Every pixel through the kernel. Palette pictures keep their indices and have their palette
// mapped, as a row of four channels on both sides; 1-bit ones become indexed where alpha is added.
Raster mapRows(const Raster& source, ResultForm form, Task& task, const RowKernel& kernel);

} // namespace kvn::imaging
