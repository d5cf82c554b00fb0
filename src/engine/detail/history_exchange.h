// Putting the state of a step in the place of the live one.
#pragma once

#include <mutex>
#include <vector>

#include "engine/detail/history_store.h"

namespace kvn::engine::detail {

// Made, and gone, with the lock of the store held.
//
// A page whose pixels stand ready is shared. One that is kept as the difference to the live page
// changes places with it, tile by tile in the live pixels: nothing is copied, and what the tiles
// held before is the difference for the way back. Any other is put together anew.
class Exchange {
  public:
    // `reverse` is the live state as a step, made for the way back.
    Exchange(StoreCore& store, const Step& target, const Step& reverse, ListState& live);
    ~Exchange();
    Exchange(const Exchange&) = delete;
    Exchange& operator=(const Exchange&) = delete;

    // Fetches and unpacks; the lock is released meanwhile. Throws RuntimeError(outOfMemory,
    // deviceIo).
    void prepare(std::unique_lock<std::mutex>& lock);
    // Throws std::bad_alloc with nothing changed.
    void commit();

  private:
    struct InPlace {
        std::size_t page = 0; // in the target
        std::size_t livePage = 0;
        ContentRef target;
        ContentRef source; // the live page's content, the target's base
        Patch pixels;      // of the target, unpacked
    };
    struct Rebuild {
        std::size_t page = 0;
        ContentRef target;
        Recipe recipe;
    };

    bool planInPlace(std::size_t page);
    void swap(InPlace& exchange) noexcept;

    StoreCore& store_;
    const Step& target_;
    const Step& reverse_;
    ListState& live_;
    ListState next_;
    std::vector<InPlace> inPlace_;
    std::vector<Rebuild> rebuilds_;
};

} // namespace kvn::engine::detail
