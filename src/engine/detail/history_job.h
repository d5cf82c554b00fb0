// The work that moves the pixels of undo steps between their forms and places.
#pragma once

#include "engine/detail/history_content.h"

namespace kvn::engine::detail {

// One piece of work on one content, done without the lock.
struct CoolingJob {
    enum class Kind { None, Pack, Repack, Spill, Fetch };

    Kind kind = Kind::None;
    ContentRef content;
    Patch patch; // as it was, then the result
    std::shared_ptr<const TileList> before;
    // Pack only.
    imaging::Raster raw;
    ContentRef neighbour; // to take the difference to; may be null
    imaging::Raster neighbourRaw;
    bool isDifference = false; // the result is one
    bool hasFailed = false;

    void run(SpillFile& file, const StopFlag& stop);

  private:
    void pack(const StopFlag& stop);
};

} // namespace kvn::engine::detail
