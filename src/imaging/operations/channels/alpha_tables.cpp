#include "imaging/operations/channels/alpha_tables.h"

#include <cstring>

#include "imaging/operations/support/color_planes.h"
#include "imaging/operations/support/swizzle_rows.h"

namespace kvn::imaging {

void lookUpAlpha(const std::uint8_t* alpha, std::uint8_t* out, bool opaque,
                 const ByteTable& table) {
    if (opaque)
        std::memset(out, table[255], ColorPlanes::size);
    else
        lookUp(alpha, out, ColorPlanes::size, table);
}

Raster mapAlpha(const Raster& source, const ByteTable& table, Task& task) {
    if (hasAlpha(source.type()) ? table == identityTable() : table[255] == 255) return source;
    const bool opaque = !hasAlpha(source.type());
    if (opaque && !hasPalette(source.type()))
        return mapRows(source, ResultForm::WithAlpha, task, [&](const PixelRow& row) {
            swizzleRow(row, {0, 1, 2, 3}, table[255]);
        });
    return mapPlanes(source, ResultForm::WithAlpha, task,
                     [&](ColorPlanes& planes) { lookUpAlpha(planes.a, planes.a, opaque, table); });
}

} // namespace kvn::imaging
