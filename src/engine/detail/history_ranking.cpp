#include "engine/detail/history_ranking.h"

#include <algorithm>
#include <unordered_map>

namespace kvn::engine::detail {

namespace {

constexpr int parkedRank = 1000; // needed only if an operation fails

class Ranking {
  public:
    void add(const Timeline& timeline) {
        addStep(timeline.present, nullptr, 0);
        addSteps(timeline.undo, timeline.present, 1);
        addSteps(timeline.redo, timeline.present, 1);
        addSteps(timeline.parkedRedo, timeline.present, parkedRank);
        addSteps(timeline.parkedOldest, timeline.present, parkedRank);
    }

    std::vector<Ranked> finish() {
        // A base that is itself in no step counts as near as the nearest that leans on it.
        for (std::size_t i = 0; i < all_.size(); ++i)
            if (Content* base = all_[i].content->base.get()) add(base, nullptr, all_[i].rank);
        std::stable_sort(all_.begin(), all_.end(),
                         [](const Ranked& a, const Ranked& b) { return a.rank < b.rank; });
        return std::move(all_);
    }

  private:
    void addSteps(const std::vector<Step>& steps, const Step& present, int rank) {
        const Step* nearer = &present;
        for (auto it = steps.rbegin(); it != steps.rend(); ++it) {
            addStep(*it, nearer, rank++);
            nearer = &*it;
        }
    }

    void addStep(const Step& step, const Step* nearer, int rank) {
        for (std::size_t i = 0; i < step.pages.size(); ++i) {
            const StepPage& page = step.pages[i];
            if (!page.content) continue;
            const StepPage* next = nearer ? nearer->find(page.state.id, i) : nullptr;
            add(page.content.get(), next ? next->content.get() : nullptr, rank);
        }
    }

    void add(Content* content, Content* toward, int rank) {
        const auto [at, isNew] = index_.try_emplace(content, all_.size());
        if (isNew) all_.push_back({content, nullptr, rank});
        Ranked& entry = all_[at->second];
        entry.rank = std::min(entry.rank, rank);
        if (!entry.toward && toward != content) entry.toward = toward;
    }

    std::vector<Ranked> all_;
    std::unordered_map<Content*, std::size_t> index_;
};

} // namespace

std::vector<Ranked> rankContents(const std::vector<Timeline*>& timelines) {
    Ranking ranking;
    for (const Timeline* timeline : timelines)
        ranking.add(*timeline);
    return ranking.finish();
}

} // namespace kvn::engine::detail
