#include "imaging/operations/channels/alpha_tables.h"

#include "imaging/operations/support/color_planes.h"

namespace kvn::imaging {

Raster mapAlpha(const Raster& source, const ByteTable& table, Task& task) {
    if (hasAlpha(source.type()) ? table == identityTable() : table[255] == 255) return source;
    return mapPlanes(source, PlaneResult::WithAlpha, task, [&](ColorPlanes& planes) {
        lookUp(planes.a, planes.a, ColorPlanes::size, table);
    });
}

} // namespace kvn::imaging
