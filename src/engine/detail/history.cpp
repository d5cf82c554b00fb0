#include "engine/detail/history.h"

#include <algorithm>
#include <cassert>
#include <iterator>
#include <new>
#include <unordered_set>
#include <utility>

#include "basic/error.h"
#include "engine/detail/history_exchange.h"

namespace kvn::engine::detail {

namespace {

template <typename Body>
auto withoutBadAlloc(const Body& body) {
    try {
        return body();
    } catch (const std::bad_alloc&) {
        throw RuntimeError(errors::outOfMemory, "Out of memory", "Undo");
    }
}

void moveAll(std::vector<Step>& from, std::vector<Step>& to) {
    std::move(from.begin(), from.end(), std::back_inserter(to));
    from.clear();
}

bool leansOnOpen(const Step& step) {
    return std::any_of(step.pages.begin(), step.pages.end(), [](const StepPage& page) {
        return page.content && leansOnOpen(*page.content);
    });
}

// The steps nearest to the present stand at the end; the first ones go.
void keepLast(std::vector<Step>& steps, std::size_t count, std::vector<Step>& dropped) {
    if (steps.size() <= count) return;
    const auto end = steps.end() - static_cast<std::ptrdiff_t>(count);
    dropped.insert(dropped.end(), std::move_iterator(steps.begin()), std::move_iterator(end));
    steps.erase(steps.begin(), end);
}

// The oldest undo step first and the farthest redo step last, in the order they were taken.
[[maybe_unused]] bool isInOrder(const Timeline& time) {
    const auto older = [](const Step& a, const Step& b) { return a.order < b.order; };
    return std::is_sorted(time.undo.begin(), time.undo.end(), older) &&
           std::is_sorted(time.redo.rbegin(), time.redo.rend(), older) &&
           (time.undo.empty() || time.redo.empty() || older(time.undo.back(), time.redo.back()));
}

} // namespace

// Only the caller's thread changes the timeline, so it may read that without the lock of the
// store. Private members are called with the lock held.
class History::Impl {
  public:
    explicit Impl(std::shared_ptr<StoreCore> store) : store_(std::move(store)) {
        const std::lock_guard lock(store_->mutex());
        store_->attach(time_);
    }
    ~Impl() {
        {
            const std::lock_guard lock(store_->mutex());
            store_->detach(time_);
        }
        store_->discard(std::move(time_.undo));
        store_->discard(std::move(time_.redo));
    }
    Impl(const Impl&) = delete;
    Impl& operator=(const Impl&) = delete;

    bool isEnabled() const { return isEnabled_; }
    void setEnabled(bool on) {
        isEnabled_ = on;
        if (!on) clear();
    }
    void setDepth(int depth);
    const Timeline& time() const { return time_; }

    void record(std::string label, ListState before);
    bool recordRect(std::string label, const ListState& live, const imaging::Rect& rect);
    void hold(const ListState& live);
    void rollback(ListState& live);
    bool undo(ListState& live) { return travel(time_.undo, time_.redo, live); }
    bool redo(ListState& live) { return travel(time_.redo, time_.undo, live); }
    void clear();
    std::uint64_t bytes() const;

  private:
    bool keepsSteps() const { return isEnabled_ && depth_ > 0; }
    void seal(const ListState& live);
    Step makeStep(std::string label, const ListState& live);
    ContentRef newContent(const imaging::Raster& shape) const {
        auto content = std::make_shared<Content>(shape);
        content->owner = &time_;
        return content;
    }
    void push(Step step);
    void parkNothing() {
        moveAll(time_.parkedRedo, garbage_);
        moveAll(time_.parkedOldest, garbage_);
    }
    void exchange(Step& target, const Step& reverse, ListState& live,
                  std::unique_lock<std::mutex>& lock);
    bool travel(std::vector<Step>& from, std::vector<Step>& to, ListState& live);
    // Without the lock: frees what the last change left over.
    void tidy() { store_->discard(std::exchange(garbage_, {})); }

    std::shared_ptr<StoreCore> store_;
    Timeline time_;
    std::vector<Step> garbage_;
    int depth_ = 0;
    bool isEnabled_ = false;
};

void History::Impl::setDepth(int depth) {
    {
        const std::lock_guard lock(store_->mutex());
        depth_ = std::max(depth, 0);
        keepLast(time_.undo, static_cast<std::size_t>(depth_), garbage_);
        keepLast(time_.redo, static_cast<std::size_t>(depth_), garbage_);
        parkNothing();
        store_->changed(time_);
    }
    tidy();
}

void History::Impl::clear() {
    {
        const std::lock_guard lock(store_->mutex());
        moveAll(time_.undo, garbage_);
        moveAll(time_.redo, garbage_);
        parkNothing();
        garbage_.push_back(std::exchange(time_.present, {}));
        store_->changed(time_);
    }
    tidy();
}

// Gives contents that were open their pixels, now that the change they stood open for is over.
void History::Impl::seal(const ListState& live) {
    bool isLost = false;
    for (StepPage& page : time_.present.pages) {
        if (!page.content || !page.content->isOpen()) continue;
        const auto now = std::find_if(live.pages.begin(), live.pages.end(), [&](const auto& p) {
            return p.id == page.state.id && page.content->fits(p.raster);
        });
        if (now != live.pages.end())
            store_->giveRaw(page.content, now->raster);
        else
            isLost = true;
    }
    if (!isLost) return;
    // The page has gone or become another without a word: what leans on it cannot be made again.
    std::erase_if(time_.undo, [](const Step& step) { return leansOnOpen(step); });
    std::erase_if(time_.redo, [](const Step& step) { return leansOnOpen(step); });
    time_.present = {};
    parkNothing();
    store_->changed(time_);
}

Step History::Impl::makeStep(std::string label, const ListState& live) {
    Step step;
    step.label = std::move(label);
    step.current = live.current;
    step.order = store_->nextOrder();
    step.pages.reserve(live.pages.size());
    for (const PageState& page : live.pages) {
        PageState state = page;
        state.raster = {};
        step.pages.push_back(
            {std::move(state), page.raster.palette(), store_->contentOf(page.raster, time_)});
    }
    return step;
}

void History::Impl::push(Step step) {
    time_.undo.reserve(time_.undo.size() + 1);
    time_.parkedOldest.reserve(1);
    parkNothing();
    time_.parkedRedo.swap(time_.redo);
    time_.undo.push_back(std::move(step));
    keepLast(time_.undo, static_cast<std::size_t>(depth_), time_.parkedOldest);
    time_.present = {};
    store_->changed(time_);
    assert(isInOrder(time_));
}

void History::Impl::record(std::string label, ListState before) {
    if (!keepsSteps()) return;
    {
        const std::lock_guard lock(store_->mutex());
        seal(before);
        push(makeStep(std::move(label), before));
    }
    before.pages.clear(); // its shares would keep pixels from being packed
    tidy();
    store_->relieve();
}

bool History::Impl::recordRect(std::string label, const ListState& live,
                               const imaging::Rect& rect) {
    if (!keepsSteps()) return false;
    const auto current = static_cast<std::size_t>(live.current);
    if (current >= live.pages.size() || live.pages[current].raster.isEmpty()) {
        record(std::move(label), live);
        return true;
    }
    const imaging::Raster& raster = live.pages[current].raster;
    {
        const std::lock_guard lock(store_->mutex());
        seal(live);
        Step step = makeStep(std::move(label), live);
        step.isInPlace = true;
        ContentRef& content = step.pages[current].content;
        Patch patch = copiedPatch(raster.view(), rectTiles(raster.view(), rect));
        // Others keep the whole pixels, which makes the live ones a copy at the first write.
        if (content->isCommon) content = newContent(raster);
        const ContentRef after = newContent(raster);
        Step present;
        present.pages.push_back({step.pages[current].state, {}, after});
        const ContentRef before = content;
        push(std::move(step));
        store_->dropRaw(*before);
        before->patch = std::move(patch);
        before->base = after;
        time_.present = std::move(present);
    }
    tidy();
    store_->relieve();
    return true;
}

void History::Impl::hold(const ListState& live) {
    const std::lock_guard lock(store_->mutex());
    seal(live);
}

void History::Impl::exchange(Step& target, const Step& reverse, ListState& live,
                             std::unique_lock<std::mutex>& lock) {
    Exchange pages(*store_, target, reverse, live);
    pages.prepare(lock);
    pages.commit();
}

bool History::Impl::travel(std::vector<Step>& from, std::vector<Step>& to, ListState& live) {
    {
        std::unique_lock lock(store_->mutex());
        seal(live);
        if (from.empty()) return false;
        to.reserve(to.size() + 1);
        Step reverse = makeStep(from.back().label, live);
        reverse.order = from.back().order;
        exchange(from.back(), reverse, live, lock);
        to.push_back(std::move(reverse));
        time_.present = std::move(from.back());
        from.pop_back();
        parkNothing();
        store_->changed(time_);
        assert(isInOrder(time_));
    }
    tidy();
    store_->dropPacked();
    return true;
}

void History::Impl::rollback(ListState& live) {
    {
        std::unique_lock lock(store_->mutex());
        seal(live);
        if (time_.undo.empty()) return;
        time_.undo.reserve(time_.undo.size() + 1);
        Step& newest = time_.undo.back();
        if (newest.isInPlace) exchange(newest, makeStep({}, live), live, lock);
        time_.present = std::move(newest);
        time_.undo.pop_back();
        if (!time_.parkedRedo.empty()) time_.redo.swap(time_.parkedRedo);
        time_.undo.insert(time_.undo.begin(), std::move_iterator(time_.parkedOldest.begin()),
                          std::move_iterator(time_.parkedOldest.end()));
        time_.parkedOldest.clear();
        store_->changed(time_);
        assert(isInOrder(time_));
    }
    tidy();
}

std::uint64_t History::Impl::bytes() const {
    const std::lock_guard lock(store_->mutex());
    std::uint64_t sum = 0;
    std::unordered_set<const Content*> seen;
    const auto add = [&](const std::vector<Step>& steps) {
        for (const Step& step : steps)
            for (const StepPage& page : step.pages)
                for (const Content* c = page.content.get(); c && seen.insert(c).second;
                     c = c->base.get())
                    sum += c->bytesInMemory() + c->patch.bytesOnDisk();
    };
    for (const auto* steps : {&time_.undo, &time_.redo, &time_.parkedRedo, &time_.parkedOldest})
        add(*steps);
    return sum;
}

History::History(HistoryStore& store) : impl_(std::make_unique<Impl>(store.impl().core)) {}
History::~History() = default;

void History::setEnabled(bool on) {
    impl_->setEnabled(on);
}
bool History::isEnabled() const {
    return impl_->isEnabled();
}
void History::setDepth(int depth) {
    withoutBadAlloc([&] { impl_->setDepth(depth); });
}

int History::undos() const {
    return static_cast<int>(impl_->time().undo.size());
}
int History::redos() const {
    return static_cast<int>(impl_->time().redo.size());
}
std::string History::undoLabel() const {
    const auto& steps = impl_->time().undo;
    return steps.empty() ? std::string{} : steps.back().label;
}
std::string History::redoLabel() const {
    const auto& steps = impl_->time().redo;
    return steps.empty() ? std::string{} : steps.back().label;
}

void History::record(std::string label, ListState before) {
    withoutBadAlloc([&] { impl_->record(std::move(label), std::move(before)); });
}
bool History::recordRect(std::string label, const ListState& live, const imaging::Rect& rect) {
    return withoutBadAlloc([&] { return impl_->recordRect(std::move(label), live, rect); });
}
void History::hold(const ListState& live) {
    withoutBadAlloc([&] { impl_->hold(live); });
}
void History::rollback(ListState& live) {
    withoutBadAlloc([&] { impl_->rollback(live); });
}
bool History::undo(ListState& live) {
    return withoutBadAlloc([&] { return impl_->undo(live); });
}
bool History::redo(ListState& live) {
    return withoutBadAlloc([&] { return impl_->redo(live); });
}
void History::clear() {
    impl_->clear();
}
std::uint64_t History::bytes() const {
    return impl_->bytes();
}

} // namespace kvn::engine::detail
