// The inside of HistoryStore: which contents there are, which of them are near the present, and
// the background thread that packs, spills and fetches them accordingly.
#pragma once

#include <chrono>
#include <condition_variable>
#include <mutex>
#include <thread>
#include <unordered_map>
#include <vector>

#include "engine/detail/history_job.h"
#include "engine/detail/history_ranking.h"

namespace kvn::engine::detail {

class StoreCore {
  public:
    explicit StoreCore(std::uint64_t budget) : budget_(budget) {}
    ~StoreCore();
    StoreCore(const StoreCore&) = delete;
    StoreCore& operator=(const StoreCore&) = delete;

    std::mutex& mutex() { return mutex_; }

    // Ends the background thread for good; the steps stay.
    void stop();
    void settle();
    // Frees and moves until the steps are not far above the budget: called when steps come faster
    // than the background thread gets on.
    void relieve();
    // Frees pixels that have been unpacked for steps which are no longer near: walking through
    // the steps must not leave them all unpacked.
    void dropPacked();
    // Frees many steps in the background, since giving disk space back takes its time.
    void discard(std::vector<Step> steps) noexcept;

    std::uint64_t budget() const;
    void setBudget(std::uint64_t bytes);
    std::uint64_t bytesInMemory();
    std::uint64_t bytesOnDisk() const { return file_->bytes(); }

    // All below: with the lock held.
    void attach(Timeline& timeline);
    void detach(Timeline& timeline);
    // To be called after every change of a timeline, which becomes the one last used.
    void changed(Timeline& timeline);
    // The content with exactly these pixels: a known one if its raw pixels are the same memory.
    ContentRef contentOf(const imaging::Raster& raster, const Timeline& user);
    // From now on the content's raw pixels are those of the raster.
    void giveRaw(const ContentRef& content, const imaging::Raster& raster);
    void dropRaw(Content& content);
    // The pixels that were the raw ones of one content have become those of another.
    void handOn(const imaging::Raster& raster, const ContentRef& to) noexcept;
    std::uint64_t nextOrder() { return ++lastOrder_; }

  private:
    using Clock = std::chrono::steady_clock;
    // Memory to be given back after the lock is released, for that takes its time.
    struct Freed {
        std::vector<imaging::Raster> rasters;
        std::vector<std::shared_ptr<const ByteBlock>> blocks;
        std::vector<std::vector<Step>> steps;
        bool isEmpty() const { return rasters.empty() && blocks.empty() && steps.empty(); }
    };
    void refresh();
    std::uint64_t inUse() const; // memory of all contents; needs fresh ranks
    void dropPacked(Freed& freed);

    // The most urgent job, none if all is as it should be.
    CoolingJob pick(Freed& freed);
    CoolingJob pickPack(int leastRank);
    CoolingJob pickSpill(Freed& freed);
    CoolingJob pickFetch();
    CoolingJob begin(CoolingJob::Kind kind, Content& content);
    void publish(CoolingJob& job);

    // One round of work; false if there was nothing to do. The lock is released meanwhile.
    bool workOnce(std::unique_lock<std::mutex>& lock);
    void coolerThread();
    void wake();

    mutable std::mutex mutex_;
    std::condition_variable wake_, done_;
    std::thread thread_;
    StopFlag stop_{false};
    bool isWoken_ = false;
    bool hasEnded_ = false;
    int underWay_ = 0;

    std::shared_ptr<SpillFile> file_ = std::make_shared<SpillFile>();
    std::uint64_t budget_;
    std::vector<Timeline*> timelines_; // the last used one first
    std::unordered_map<const std::uint8_t*, std::weak_ptr<Content>> byPixels_;
    std::vector<Ranked> ranked_; // nearest first
    bool isStale_ = false;
    std::vector<std::vector<Step>> garbage_;
    std::uint64_t lastOrder_ = 0;
    Clock::time_point spillAfter_{};
    Clock::time_point workAfter_{};
};

class HistoryStore::Impl {
  public:
    explicit Impl(std::uint64_t budget) : core(std::make_shared<StoreCore>(budget)) {}
    std::shared_ptr<StoreCore> core; // histories that outlive the store share it
};

} // namespace kvn::engine::detail
