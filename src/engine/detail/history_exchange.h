// Putting the state of a step in the place of the live one.
#pragma once

#include <vector>

#include "engine/detail/history_store.h"

namespace kvn::engine::detail {

// Made with the lock held; prepare() runs without it, commit() with it again.
//
// A page whose pixels stand ready is shared. One that is kept as the difference to the live page
// changes places with it, tile by tile in the live pixels: nothing is copied, and what the tiles
// held before is the difference for the way back. Any other is put together anew.
class Exchange {
  public:
    // `reverse` is the live state as a step, made for the way back.
    Exchange(StoreCore& store, Step& target, Step& reverse, ListState& live);
    ~Exchange(); // with the lock held
    Exchange(const Exchange&) = delete;
    Exchange& operator=(const Exchange&) = delete;

    // Throws RuntimeError(outOfMemory, deviceIo).
    void prepare();
    // Throws RuntimeError(outOfMemory) with nothing changed.
    void commit();

  private:
    struct InPlace {
        std::size_t page;     // in the target
        std::size_t livePage; //
        ContentRef target;
        ContentRef source; // content of the live page, the target's base
        Patch pixels;      // unpacked
    };
    struct Rebuild {
        std::size_t page;
        ContentRef target;
        Recipe recipe;
        imaging::Raster result;
    };

    void plan(std::size_t page);
    bool planInPlace(std::size_t page);
    void takeLivePixels();
    void restoreLivePixels();
    void swapInPlace(InPlace& exchange);

    StoreCore& store_;
    Step& target_;
    Step& reverse_;
    ListState& live_;
    ListState next_;
    std::vector<InPlace> inPlace_;
    std::vector<Rebuild> rebuilds_;
};

} // namespace kvn::engine::detail
