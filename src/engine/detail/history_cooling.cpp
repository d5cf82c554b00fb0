// Which work the store does next, and what becomes of its result.

#include <algorithm>
#include <utility>

#include "engine/detail/history_store.h"

namespace kvn::engine::detail {

namespace {

// What one undo or redo needs stays as it is: it may be wanted at once, and a step of a preview
// is gone in a moment.
constexpr int warmRank = 1;
// Smaller changed parts are not worth packing.
constexpr std::uint64_t worthPacking = 4096;
// After a full disk or a lack of memory it is tried again that much later.
constexpr auto retryAfter = std::chrono::seconds(10);

bool holdsIdleRaw(const Content& content) {
    return !content.isBusy && !content.isPinned && content.ownRawBytes() > 0;
}

} // namespace

CoolingJob StoreCore::pick(Freed& freed) {
    refresh();
    dropPacked(freed);
    if (Clock::now() < workAfter_) return {};
    if (CoolingJob job = pickPack(warmRank + 1); job.content) return job;
    if (inUse() <= budget_) return pickFetch();
    if (CoolingJob job = pickSpill(freed); job.content) return job;
    return pickPack(0);
}

// Drops raw pixels that are there packed as well.
void StoreCore::dropPacked(Freed& freed) {
    const bool isOver = inUse() > budget_;
    for (const Ranked& ranked : ranked_) {
        Content& content = *ranked.content;
        if (!content.patch || !holdsIdleRaw(content)) continue;
        if (ranked.rank <= warmRank && !isOver) continue;
        freed.rasters.push_back(content.raw);
        dropRaw(content);
    }
}

CoolingJob StoreCore::begin(CoolingJob::Kind kind, Content& content) {
    CoolingJob job;
    job.kind = kind;
    job.content = content.shared_from_this();
    job.patch = content.patch;
    job.before = content.patch.list;
    content.isBusy = true;
    ++underWay_;
    return job;
}

CoolingJob StoreCore::pickPack(int leastRank) {
    for (auto it = ranked_.rbegin(); it != ranked_.rend() && it->rank >= leastRank; ++it) {
        Content& content = *it->content;
        if (content.isBusy) continue;
        if (content.patch.bytes && !content.patch.list->isPacked &&
            content.patch.list->size >= worthPacking)
            return begin(CoolingJob::Kind::Repack, content);
        if (content.patch || !holdsIdleRaw(content)) continue;
        CoolingJob job = begin(CoolingJob::Kind::Pack, content);
        job.raw = content.raw;
        content.isPacking = true;
        Content* toward = it->toward;
        if (toward && !content.wantsWhole && !toward->isBusy && !toward->isPinned &&
            toward->fits(content.raw) && !toward->raw.isEmpty()) {
            job.neighbour = toward->shared_from_this();
            job.neighbourRaw = toward->raw;
            toward->isBusy = true;
        }
        return job;
    }
    return {};
}

CoolingJob StoreCore::pickSpill(Freed& freed) {
    const bool mayWrite = Clock::now() >= spillAfter_;
    for (auto it = ranked_.rbegin(); it != ranked_.rend(); ++it) {
        Content& content = *it->content;
        if (content.isBusy || !content.patch.bytes || content.patch.bytes->size() == 0) continue;
        if (content.patch.extent)
            freed.blocks.push_back(std::exchange(content.patch.bytes, nullptr)); // it is there
        else if (mayWrite)
            return begin(CoolingJob::Kind::Spill, content);
        if (inUse() <= budget_) break;
    }
    return {};
}

CoolingJob StoreCore::pickFetch() {
    // The nearest contents have the first claim on memory. A tenth is left free, so that the
    // next step does not send back at once what was fetched.
    std::uint64_t room = budget_ / 10 * 9;
    for (const Ranked& ranked : ranked_)
        room -= std::min(room, ranked.content->ownRawBytes());
    for (const Ranked& ranked : ranked_) {
        Content& content = *ranked.content;
        if (!content.patch) continue;
        if (content.patch.list->size > room) break;
        room -= content.patch.list->size;
        if (!content.isBusy && !content.patch.bytes) return begin(CoolingJob::Kind::Fetch, content);
    }
    return {};
}

void StoreCore::publish(CoolingJob& job) {
    --underWay_;
    Content& content = *job.content;
    content.isBusy = content.isPacking = false;
    if (job.neighbour) job.neighbour->isBusy = false;
    if (job.hasFailed) {
        (job.kind == CoolingJob::Kind::Spill ? spillAfter_ : workAfter_) =
            Clock::now() + retryAfter;
        return;
    }
    // Nothing has come of it if it was stopped, or if an exchange has meanwhile given the content
    // another form.
    if (!job.patch || content.patch.list != job.before) return;
    if (job.isDifference && leansOn(*job.neighbour, content)) {
        content.wantsWhole = true;
        return;
    }
    content.patch = std::move(job.patch);
    if (job.isDifference) setBase(content, std::move(job.neighbour));
    isStale_ = true;
}

} // namespace kvn::engine::detail
