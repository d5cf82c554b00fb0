#include "engine/detail/history_store.h"

#include <sys/resource.h>
#include <unistd.h>

#include <algorithm>
#include <new>
#include <system_error>
#include <utility>

namespace kvn::engine::detail {

namespace {

// On Linux the priority belongs to the thread. Below everything the user waits for, but not so
// low that another program's idle work could hold it up for good.
void lowerPriority() {
    setpriority(PRIO_PROCESS, static_cast<id_t>(gettid()), 10);
}

// Freeing a few steps at once is no matter of time; a whole list of them is.
constexpr std::size_t stepsFreedAtOnce = 2;

} // namespace

StoreCore::~StoreCore() {
    stop();
}

void StoreCore::stop() {
    stop_ = true;
    {
        const std::lock_guard lock(mutex_);
        wake_.notify_all();
    }
    if (thread_.joinable()) thread_.join();
    // Histories that live on do the work themselves, in relieve().
    const std::lock_guard lock(mutex_);
    hasEnded_ = true;
    stop_ = false;
}

void StoreCore::wake() {
    isWoken_ = true;
    wake_.notify_one();
    if (thread_.joinable() || hasEnded_) return;
    try {
        thread_ = std::thread([this] { coolerThread(); });
    } catch (const std::system_error&) {
        // Without the thread the work is done when steps are recorded.
    }
}

void StoreCore::coolerThread() {
    lowerPriority();
    std::unique_lock lock(mutex_);
    while (!stop_) {
        isWoken_ = false;
        try {
            if (workOnce(lock)) continue;
        } catch (const std::bad_alloc&) {
            workAfter_ = Clock::now() + std::chrono::seconds(1);
        }
        const auto isCalled = [this] { return isWoken_ || stop_; };
        const auto retry = std::max(spillAfter_, workAfter_);
        if (retry > Clock::now())
            wake_.wait_until(lock, retry, isCalled);
        else
            wake_.wait(lock, isCalled);
    }
}

bool StoreCore::workOnce(std::unique_lock<std::mutex>& lock) {
    Freed freed;
    freed.steps.swap(garbage_);
    CoolingJob job = pick(freed);
    const bool hasWork = job.content != nullptr;
    if (!hasWork && freed.isEmpty()) return false;
    lock.unlock();
    freed = {};
    job.run(*file_, stop_);
    job.raw = job.neighbourRaw = {};
    lock.lock();
    if (hasWork) publish(job);
    done_.notify_all();
    return true;
}

void StoreCore::settle() {
    std::unique_lock lock(mutex_);
    while (workOnce(lock) || underWay_ > 0)
        if (underWay_ > 0) done_.wait(lock);
}

void StoreCore::relieve() {
    std::unique_lock lock(mutex_);
    try {
        refresh();
        // It never waits for the background thread: what that is at work with is one step.
        while (inUse() > budget_ + budget_ / 2 && workOnce(lock)) {
        }
    } catch (const std::bad_alloc&) {
        // Then it stays for the next call.
    }
}

void StoreCore::discard(std::vector<Step> steps) noexcept {
    if (steps.size() <= stepsFreedAtOnce) return;
    const std::lock_guard lock(mutex_);
    if (hasEnded_) return;
    try {
        garbage_.push_back(std::move(steps));
        wake();
    } catch (const std::bad_alloc&) {
        // Then they are freed here and now.
    }
}

void StoreCore::dropPacked() {
    Freed freed; // outlives the lock
    const std::lock_guard lock(mutex_);
    try {
        refresh();
        dropPacked(freed);
    } catch (const std::bad_alloc&) {
        // The background thread does it later.
    }
}

std::uint64_t StoreCore::budget() const {
    const std::lock_guard lock(mutex_);
    return budget_;
}

void StoreCore::setBudget(std::uint64_t bytes) {
    const std::lock_guard lock(mutex_);
    budget_ = bytes;
    spillAfter_ = {};
    wake();
}

std::uint64_t StoreCore::bytesInMemory() {
    const std::lock_guard lock(mutex_);
    refresh();
    return inUse();
}

void StoreCore::attach(Timeline& timeline) {
    timelines_.push_back(&timeline);
}

void StoreCore::detach(Timeline& timeline) {
    std::erase(timelines_, &timeline);
    isStale_ = true;
}

void StoreCore::changed(Timeline& timeline) {
    const auto at = std::find(timelines_.begin(), timelines_.end(), &timeline);
    std::rotate(timelines_.begin(), at, at + 1);
    isStale_ = true;
    wake();
}

void StoreCore::refresh() {
    if (!isStale_) return;
    ranked_ = rankContents(timelines_);
    isStale_ = false;
    std::erase_if(byPixels_, [](const auto& entry) { return entry.second.expired(); });
}

std::uint64_t StoreCore::inUse() const {
    std::uint64_t sum = 0;
    for (const Ranked& ranked : ranked_)
        sum += ranked.content->bytesInMemory();
    return sum;
}

ContentRef StoreCore::contentOf(const imaging::Raster& raster, const Timeline& user) {
    if (raster.isEmpty()) return nullptr;
    if (const auto at = byPixels_.find(raster.view().data); at != byPixels_.end())
        if (ContentRef known = at->second.lock(); known && known->raw.sharesPixelsWith(raster)) {
            if (known->owner != &user) makeCommon(*known);
            return known;
        }
    auto content = std::make_shared<Content>(raster);
    content->owner = &user;
    giveRaw(content, raster);
    return content;
}

void StoreCore::giveRaw(const ContentRef& content, const imaging::Raster& raster) {
    byPixels_[raster.view().data] = content;
    content->raw = raster;
    content->raw.setPalette({}); // the palette belongs to the step
}

void StoreCore::handOn(const imaging::Raster& raster, const ContentRef& to) noexcept {
    if (const auto at = byPixels_.find(raster.view().data); at != byPixels_.end()) at->second = to;
}

void StoreCore::dropRaw(Content& content) {
    if (content.raw.isEmpty()) return;
    byPixels_.erase(content.raw.view().data);
    content.raw = {};
}

HistoryStore::HistoryStore(std::uint64_t memoryBudget)
    : impl_(std::make_unique<Impl>(memoryBudget)) {}

HistoryStore::~HistoryStore() {
    impl_->core->stop();
}

std::uint64_t HistoryStore::memoryBudget() const {
    return impl_->core->budget();
}
void HistoryStore::setMemoryBudget(std::uint64_t bytes) {
    impl_->core->setBudget(bytes);
}
std::uint64_t HistoryStore::bytesInMemory() const {
    return impl_->core->bytesInMemory();
}
std::uint64_t HistoryStore::bytesOnDisk() const {
    return impl_->core->bytesOnDisk();
}
void HistoryStore::settle() {
    impl_->core->settle();
}

} // namespace kvn::engine::detail
