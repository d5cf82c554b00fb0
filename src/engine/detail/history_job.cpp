#include "engine/detail/history_job.h"

#include <exception>
#include <utility>

namespace kvn::engine::detail {

void CoolingJob::run(SpillFile& file, const StopFlag& stop) {
    try {
        switch (kind) {
        case Kind::None:
            break;
        case Kind::Pack:
            pack(stop);
            break;
        case Kind::Repack:
            patch = packedPatch(patch, stop);
            break;
        case Kind::Spill:
            patch.extent = file.write(*patch.bytes);
            hasFailed = !patch.extent;
            break;
        case Kind::Fetch:
            patch.bytes = patch.extent->read();
            break;
        }
    } catch (const std::exception&) {
        // Out of memory, or the file cannot be read: the content stays in the form it has.
        hasFailed = true;
    }
}

void CoolingJob::pack(const StopFlag& stop) {
    if (neighbour) {
        if (auto tiles = differentTiles(raw.view(), neighbourRaw.view(), stop)) {
            isDifference = true;
            patch = packedPatch(raw.view(), std::move(*tiles), stop);
            return;
        }
    }
    patch = packedPatch(raw.view(), wholeTiles(raw.view()), stop);
}

} // namespace kvn::engine::detail
