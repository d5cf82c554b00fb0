// Random work on undo lists, held against full copies of every state.
#include <QTest>

#include "engine/history_states.h"

using namespace kvn;
using namespace kvn::engine::detail;

namespace {

// What a history must do, done with full copies.
class Reference {
  public:
    explicit Reference(std::size_t depth) : depth_(depth) {}

    void record(const ListState& before) {
        parkedRedo_ = std::exchange(redo_, {});
        undo_.push_back(deepCopy(before));
        parkedOldest_.clear();
        if (undo_.size() <= depth_) return;
        parkedOldest_.push_back(undo_.front());
        undo_.erase(undo_.begin());
    }
    void rollback() {
        undo_.pop_back();
        if (!parkedRedo_.empty()) redo_ = std::exchange(parkedRedo_, {});
        undo_.insert(undo_.begin(), parkedOldest_.begin(), parkedOldest_.end());
        parkedOldest_.clear();
    }
    void undo(const ListState& live) { travel(undo_, redo_, live); }
    void redo(const ListState& live) { travel(redo_, undo_, live); }
    const ListState& newestUndo() const { return undo_.back(); }
    const ListState& nextRedo() const { return redo_.back(); }
    int undos() const { return static_cast<int>(undo_.size()); }
    int redos() const { return static_cast<int>(redo_.size()); }

  private:
    void travel(std::vector<ListState>& from, std::vector<ListState>& to, const ListState& live) {
        to.push_back(deepCopy(live));
        from.pop_back();
        parkedRedo_.clear();
        parkedOldest_.clear();
    }

    std::size_t depth_;
    std::vector<ListState> undo_, redo_, parkedRedo_, parkedOldest_;
};

// One list of pages under random work, beside its reference.
class Walker {
  public:
    Walker(HistoryStore& store, unsigned seed, int depth)
        : random_(seed), history_(store), reference_(static_cast<std::size_t>(depth)) {
        history_.setEnabled(true);
        history_.setDepth(depth);
        live = onePage(anyPicture());
    }

    void step() {
        switch (below(random_, 12)) {
        case 0:
        case 1:
            return stroke(false);
        case 2:
            return operation(false);
        case 3:
            return operation(true);
        case 4:
            return stroke(true);
        case 5:
            return unrecorded();
        case 6:
            return failed();
        case 7:
            return changeList();
        case 8:
            shares_.push_back(live); // somebody looks at the present pixels for a while
            if (shares_.size() > 3) shares_.erase(shares_.begin());
            return;
        case 9:
            return redo();
        default:
            return undo();
        }
    }

    // Another list's pages as they are, as an import does it.
    void takeOver(const ListState& other) {
        record();
        live = other;
    }

    void check() const {
        QCOMPARE(history_.undos(), reference_.undos());
        QCOMPARE(history_.redos(), reference_.redos());
    }

    ListState live;

  private:
    Raster anyPicture() {
        const auto type = static_cast<ImageType>(below(random_, imaging::imageTypeCount));
        return picture(random_, type, 1 + below(random_, 300), 1 + below(random_, 90),
                       static_cast<Texture>(below(random_, 3)));
    }

    void record() {
        reference_.record(live);
        history_.record("step", live);
    }

    void operation(bool small) {
        record();
        if (!small) return replacePixels(live, anyPicture());
        // New memory, though little is different: what the background turns into a difference.
        replacePixels(live, deepCopy(currentPage(live).raster));
        paint(random_, live, {3, 3, 9, 2});
    }

    void stroke(bool fails) {
        const Rect rect = anyRect(random_, currentPage(live).raster);
        const ListState before = deepCopy(live);
        reference_.record(live);
        QVERIFY(history_.recordRect("pen", live, rect));
        paint(random_, live, rect);
        if (!fails) return;
        history_.rollback(live);
        reference_.rollback();
        QVERIFY(same(live, before));
    }

    void unrecorded() {
        history_.hold(live);
        if (below(random_, 2) == 0)
            paint(random_, live, {0, 0, 5, 5});
        else
            replacePixels(live, anyPicture());
    }

    void failed() {
        record();
        history_.rollback(live);
        reference_.rollback();
    }

    void changeList() {
        record();
        const int count = static_cast<int>(live.pages.size());
        if (count > 3) {
            live.pages.erase(live.pages.begin() + below(random_, count));
        } else {
            // A duplicate shares its pixels with the page it came from.
            PageState page = currentPage(live);
            page.id = nextStamp() + 1000;
            page.name = "copy";
            if (below(random_, 2)) page.raster = anyPicture();
            page.metadata = std::make_shared<imaging::Metadata>();
            live.pages.insert(live.pages.begin() + below(random_, count + 1), page);
        }
        live.current = below(random_, static_cast<int>(live.pages.size()));
    }

    void undo() {
        if (reference_.undos() == 0) {
            QVERIFY(!history_.undo(live));
            return;
        }
        const ListState expected = reference_.newestUndo();
        reference_.undo(live);
        QVERIFY(history_.undo(live));
        QVERIFY(same(live, expected));
    }

    void redo() {
        if (reference_.redos() == 0) {
            QVERIFY(!history_.redo(live));
            return;
        }
        const ListState expected = reference_.nextRedo();
        reference_.redo(live);
        QVERIFY(history_.redo(live));
        QVERIFY(same(live, expected));
    }

    Random random_;
    History history_;
    Reference reference_;
    std::vector<ListState> shares_;
};

} // namespace

class HistoryWalkTest : public QObject {
    Q_OBJECT

  private slots:
    void randomWalk_data();
    void randomWalk();
};

void HistoryWalkTest::randomWalk_data() {
    QTest::addColumn<int>("budget");
    QTest::addColumn<unsigned>("seed");
    for (const int budget : {0, 100'000, 64 << 20})
        for (unsigned seed = 0; seed < 6; ++seed)
            QTest::addRow("budget %d, seed %u", budget, seed) << budget << seed;
}

// Two lists with a store in common; now and then one takes over the other's pixels.
void HistoryWalkTest::randomWalk() {
    QFETCH(int, budget);
    QFETCH(unsigned, seed);
    HistoryStore store(static_cast<std::uint64_t>(budget));
    Random random(seed);
    Walker first(store, seed * 2 + 100, 6), second(store, seed * 2 + 101, 3);
    for (int i = 0; i < 300; ++i) {
        (below(random, 3) == 0 ? second : first).step();
        if (QTest::currentTestFailed()) QFAIL(qPrintable(QString("in step %1").arg(i)));
        first.check();
        second.check();
        if (below(random, 20) == 0) store.settle();
        if (below(random, 30) == 0) second.takeOver(first.live);
    }
}

QTEST_GUILESS_MAIN(HistoryWalkTest)
#include "history_walk.moc"
