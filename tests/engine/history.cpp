#include <sys/resource.h>
#include <unistd.h>

#include <QDir>
#include <QFile>
#include <QTest>
#include <csignal>

#include "basic/error.h"
#include "engine/detail/history_pack.h"
#include "engine/history_states.h"

using namespace kvn;
using namespace kvn::engine::detail;

namespace {

struct Bench {
    explicit Bench(std::uint64_t budget = 64 << 20, int depth = 25)
        : store(budget), history(store) {
        history.setEnabled(true);
        history.setDepth(depth);
    }
    HistoryStore store;
    History history;
};

} // namespace

class HistoryTest : public QObject {
    Q_OBJECT

  private slots:
    void packingIsLossless();
    void labelsDepthAndRedo();
    void switchedOffOrWithoutDepthItKeepsNothing();
    void rollbackLeavesTheHistoryAsItWas();
    void strokesAreExchangedInPlace_data();
    void strokesAreExchangedInPlace();
    void pagesTypeAndPaletteComeBackTogether();
    void stepsComeBackFromWhereverTheyLive_data();
    void stepsComeBackFromWhereverTheyLive();
    void whatIsAlikeCostsNothing();
    void fullDiskKeepsStepsInMemory();
    void failureChangesNothing();
    void unannouncedChangesLoseOnlyWhatLeansOnThem();
    void storeGoesFirst();
};

void HistoryTest::packingIsLossless() {
    Random random(1);
    for (const std::size_t width : {1u, 2u, 3u, 127u, 128u, 129u, 1000u})
        for (const int rows : {1, 2, 33})
            for (const std::size_t pixelBytes : {1u, 2u, 3u, 4u})
                for (const int amplitude : {1, 2, 3, 6, 20, 60, 100, 256}) {
                    const PackShape shape{width, rows, pixelBytes};
                    const std::size_t stride = width + 5;
                    std::vector<std::uint8_t> data(stride * static_cast<std::size_t>(rows));
                    for (auto& byte : data)
                        byte = static_cast<std::uint8_t>(100 + below(random, amplitude));
                    // Exactly the bytes that may be used, so that a sanitizer sees any other.
                    std::vector<std::uint8_t> packed(packedBound(shape));
                    const std::size_t size = packRows(shape, data.data(), stride, packed.data());
                    QVERIFY(size <= packed.size());
                    packed.resize(size);
                    packed.shrink_to_fit();
                    std::vector<std::uint8_t> back = data;
                    for (int y = 0; y < rows; ++y)
                        std::fill_n(back.begin() + y * static_cast<std::ptrdiff_t>(stride), width,
                                    0);
                    unpackRows(shape, packed.data(), back.data(), stride);
                    QVERIFY(back == data);
                }
}

void HistoryTest::labelsDepthAndRedo() {
    Random random(2);
    Bench bench;
    ListState live = onePage(picture(random, ImageType::Gray8, 20, 10, Texture::Noise));
    std::vector<ListState> states;
    for (int i = 0; i < 26; ++i) {
        states.push_back(deepCopy(live));
        bench.history.record("step " + std::to_string(i), live);
        replacePixels(live, picture(random, ImageType::Gray8, 20, 10, Texture::Noise));
    }
    QCOMPARE(bench.history.undos(), 25);
    QCOMPARE(bench.history.undoLabel(), std::string("step 25"));
    QCOMPARE(bench.history.redoLabel(), std::string());
    for (int i = 25; i > 0; --i) {
        QVERIFY(bench.history.undo(live));
        QVERIFY(same(live, states[static_cast<std::size_t>(i)]));
        QCOMPARE(bench.history.redoLabel(), "step " + std::to_string(i));
    }
    QVERIFY(!bench.history.undo(live));
    QCOMPARE(bench.history.undoLabel(), std::string());
    QVERIFY(same(live, states[1]));

    QVERIFY(bench.history.redo(live));
    QCOMPARE(bench.history.redos(), 24);
    bench.history.record("other", live);
    QCOMPARE(bench.history.redos(), 0);
    QCOMPARE(bench.history.undos(), 2);
    QVERIFY(!bench.history.redo(live));

    bench.history.setDepth(1);
    QCOMPARE(bench.history.undos(), 1);
    QCOMPARE(bench.history.undoLabel(), std::string("other"));
}

void HistoryTest::switchedOffOrWithoutDepthItKeepsNothing() {
    Random random(3);
    HistoryStore store;
    History history(store);
    ListState live = onePage(picture(random, ImageType::Rgb24, 20, 10, Texture::Noise));
    history.setDepth(5);
    history.record("off", live);
    QVERIFY(!history.recordRect("off", live, {0, 0, 5, 5}));
    QVERIFY(!history.undo(live));
    history.setEnabled(true);
    history.record("on", live);
    QCOMPARE(history.undos(), 1);
    history.setEnabled(false);
    QCOMPARE(history.undos(), 0);
    history.setEnabled(true);
    history.setDepth(0);
    history.record("none", live);
    QVERIFY(!history.recordRect("none", live, {0, 0, 5, 5}));
    QCOMPARE(history.undos(), 0);
    ListState empty;
    history.setDepth(3);
    history.record("nothing there yet", empty);
    QVERIFY(history.undo(live));
    QVERIFY(live.pages.empty());
    QVERIFY(history.recordRect("no page to paint on", live, {0, 0, 5, 5}));
    QVERIFY(history.undo(live));
}

void HistoryTest::rollbackLeavesTheHistoryAsItWas() {
    Random random(4);
    Bench bench(64 << 20, 3);
    ListState live = onePage(picture(random, ImageType::Rgba32, 40, 30, Texture::Soft));
    for (const char* label : {"a", "b", "c"}) {
        bench.history.record(label, live);
        replacePixels(live, picture(random, ImageType::Rgba32, 40, 30, Texture::Soft));
    }
    const ListState last = deepCopy(live);
    bench.history.undo(live);
    const ListState before = deepCopy(live);
    for (const bool inPlace : {false, true}) {
        if (inPlace) {
            bench.history.recordRect("fails", live, {5, 5, 10, 10});
            paint(random, live, {5, 5, 10, 10});
        } else {
            bench.history.record("fails", live);
        }
        bench.history.rollback(live);
        QVERIFY(same(live, before));
        QCOMPARE(bench.history.undos(), 2);
        QCOMPARE(bench.history.redoLabel(), std::string("c"));
    }
    bench.history.redo(live);
    QVERIFY(same(live, last));
    bench.history.record("drives out a", live);
    bench.history.rollback(live);
    for (const char* label : {"c", "b", "a"}) {
        QCOMPARE(bench.history.undoLabel(), std::string(label));
        bench.history.undo(live);
    }
}

void HistoryTest::strokesAreExchangedInPlace_data() {
    QTest::addColumn<int>("type");
    QTest::addColumn<QSize>("size");
    for (int type = 0; type < imaging::imageTypeCount; ++type)
        for (const QSize size : {QSize(1, 1), QSize(1, 9), QSize(7, 5), QSize(257, 129)})
            QTest::addRow("type %d, %dx%d", type, size.width(), size.height()) << type << size;
}

void HistoryTest::strokesAreExchangedInPlace() {
    QFETCH(int, type);
    QFETCH(QSize, size);
    Random random(static_cast<unsigned>(5 + type));
    Bench bench;
    ListState live = onePage(
        picture(random, static_cast<ImageType>(type), size.width(), size.height(), Texture::Soft));
    std::vector<ListState> states{deepCopy(live)};
    const std::uint8_t* const memory = live.pages[0].raster.view().data;
    for (int i = 0; i < 12; ++i) {
        const Rect rect = anyRect(random, live.pages[0].raster);
        QVERIFY(bench.history.recordRect("pen", live, rect));
        QVERIFY(!live.pages[0].raster.isShared());
        paint(random, live, rect);
        states.push_back(deepCopy(live));
    }
    for (int round = 0; round < 2; ++round) {
        for (std::size_t i = 12; i-- > 0;) {
            QVERIFY(bench.history.undo(live));
            QVERIFY(same(live, states[i]));
        }
        for (std::size_t i = 1; i <= 12; ++i) {
            QVERIFY(bench.history.redo(live));
            QVERIFY(same(live, states[i]));
        }
        QVERIFY(live.pages[0].raster.view().data == memory);
        bench.store.setMemoryBudget(0); // the second round comes from the file
        bench.store.settle();
    }
}

void HistoryTest::pagesTypeAndPaletteComeBackTogether() {
    Random random(6);
    Bench bench(0);
    ListState live = onePage(picture(random, ImageType::Indexed8, 50, 40, Texture::Soft));
    std::vector<ListState> states;
    const auto record = [&] {
        states.push_back(deepCopy(live));
        bench.history.record("step", live);
    };
    record();
    live.pages[0].raster.paletteForEdit().set(3, {1, 2, 3, 255}); // the pixels stay shared
    live.pages[0].stamp = nextStamp();
    record();
    live.pages.push_back({2, nextStamp(), picture(random, ImageType::Bit1, 9, 9, Texture::Noise),
                          std::make_shared<imaging::Metadata>(), "second",
                          imaging::FileType::Tiff});
    live.current = 1;
    record();
    live.current = 0;
    replacePixels(live, picture(random, ImageType::Rgba32, 13, 77, Texture::Soft));
    record();
    live.pages.erase(live.pages.begin());
    record();
    live = ListState{};
    states.push_back(deepCopy(live));
    for (const bool settled : {false, true}) {
        if (settled) bench.store.settle();
        for (std::size_t i = states.size() - 1; i-- > 0;) {
            QVERIFY(bench.history.undo(live));
            QVERIFY(same(live, states[i]));
        }
        for (std::size_t i = 1; i < states.size(); ++i) {
            QVERIFY(bench.history.redo(live));
            QVERIFY(same(live, states[i]));
        }
    }
}

void HistoryTest::stepsComeBackFromWhereverTheyLive_data() {
    QTest::addColumn<int>("budget");
    QTest::addColumn<int>("texture");
    for (const int budget : {0, 300'000, 64 << 20})
        for (const Texture texture : {Texture::Flat, Texture::Soft, Texture::Noise})
            QTest::addRow("budget %d, texture %d", budget, static_cast<int>(texture))
                << budget << static_cast<int>(texture);
}

void HistoryTest::stepsComeBackFromWhereverTheyLive() {
    QFETCH(int, budget);
    QFETCH(int, texture);
    Random random(7);
    Bench bench(static_cast<std::uint64_t>(budget));
    const auto fresh = [&] {
        return picture(random, ImageType::Rgb24, 301, 211, static_cast<Texture>(texture));
    };
    ListState live = onePage(fresh());
    const std::uint64_t pictureBytes = live.pages[0].raster.byteSize();
    std::vector<ListState> states{deepCopy(live)};
    for (int i = 0; i < 8; ++i) {
        bench.history.record("step", live);
        replacePixels(live, fresh());
        states.push_back(deepCopy(live));
    }
    bench.store.settle();
    QVERIFY(bench.store.bytesInMemory() <= static_cast<std::uint64_t>(budget));
    QCOMPARE(bench.store.bytesInMemory() + bench.store.bytesOnDisk(), bench.history.bytes());
    if (budget == 0) QVERIFY(bench.store.bytesOnDisk() > 0);
    if (static_cast<Texture>(texture) != Texture::Noise)
        QVERIFY(bench.history.bytes() < 8 * pictureBytes * 2 / 3);
    for (int round = 0; round < 2; ++round) {
        for (std::size_t i = 8; i-- > 0;) {
            QVERIFY(bench.history.undo(live));
            QVERIFY(same(live, states[i]));
        }
        if (round == 0) bench.store.settle();
        for (std::size_t i = 1; i <= 8; ++i) {
            QVERIFY(bench.history.redo(live));
            QVERIFY(same(live, states[i]));
        }
    }
    bench.history.clear();
    bench.store.settle();
    QCOMPARE(bench.history.bytes(), std::uint64_t{0});
    QCOMPARE(bench.store.bytesInMemory() + bench.store.bytesOnDisk(), std::uint64_t{0});
}

void HistoryTest::whatIsAlikeCostsNothing() {
    Random random(8);
    Bench bench;
    ListState live = onePage(picture(random, ImageType::Rgb24, 1000, 800, Texture::Noise));
    live.pages.push_back(live.pages[0]);
    live.pages[1].id = 2;
    live.pages[1].raster = picture(random, ImageType::Rgb24, 1000, 800, Texture::Noise);
    for (int i = 0; i < 10; ++i) {
        bench.history.record("changes nothing", live);
        QCOMPARE(bench.history.bytes(), std::uint64_t{0});
    }
    for (int i = 0; i < 10; ++i) {
        QVERIFY(bench.history.recordRect("pen", live, {i * 10, 20, 30, 30}));
        paint(random, live, {i * 10, 20, 30, 30});
    }
    QVERIFY(bench.history.bytes() <= 10 * 30 * 30 * 3);
    // A small change that was made on a copy of the picture.
    bench.history.clear();
    for (int i = 0; i < 3; ++i) {
        bench.history.record("small", live);
        replacePixels(live, deepCopy(live.pages[0].raster));
        paint(random, live, {i * 100, 300, 30, 30});
    }
    bench.store.settle();
    // The newest stays ready as it is; the others are what is different.
    QVERIFY(bench.history.bytes() < 1000 * 800 * 3 + 64 * 1024 + 200 * 1000);
}

void HistoryTest::fullDiskKeepsStepsInMemory() {
    rlimit old{};
    getrlimit(RLIMIT_FSIZE, &old);
    const rlimit tiny{1000, old.rlim_max};
    std::signal(SIGXFSZ, SIG_IGN);
    setrlimit(RLIMIT_FSIZE, &tiny);
    Random random(9);
    Bench bench(0);
    ListState live = onePage(picture(random, ImageType::Rgb24, 300, 200, Texture::Noise));
    std::vector<ListState> states;
    for (int i = 0; i < 5; ++i) {
        states.push_back(deepCopy(live));
        bench.history.record("step", live);
        replacePixels(live, picture(random, ImageType::Rgb24, 300, 200, Texture::Noise));
    }
    bench.store.settle();
    QCOMPARE(bench.store.bytesOnDisk(), std::uint64_t{0});
    QVERIFY(bench.store.bytesInMemory() > 0);
    for (std::size_t i = 5; i-- > 0;) {
        QVERIFY(bench.history.undo(live));
        QVERIFY(same(live, states[i]));
    }
    setrlimit(RLIMIT_FSIZE, &old);
    bench.store.setMemoryBudget(0); // asks for another try
    bench.store.settle();
    QVERIFY(bench.store.bytesOnDisk() > 0);
}

// Cuts off the file that has no name, as a failing disk would.
void cutSpillFile() {
    const QDir files("/proc/self/fd");
    for (const QString& name : files.entryList(QDir::Files | QDir::System)) {
        const QString path = files.filePath(name);
        const QString target = QFile::symLinkTarget(path);
        if (target.endsWith("(deleted)") && target.contains("/tmp/"))
            QCOMPARE(truncate(qPrintable(path), 0), 0);
    }
}

void HistoryTest::failureChangesNothing() {
    Random random(12);
    Bench bench(0);
    ListState live = onePage(picture(random, ImageType::Rgb24, 300, 200, Texture::Noise));
    std::vector<ListState> states{deepCopy(live)};
    for (int i = 0; i < 3; ++i) {
        bench.history.record("step", live);
        replacePixels(live, picture(random, ImageType::Rgb24, 300, 200, Texture::Noise));
        states.push_back(deepCopy(live));
    }
    bench.store.settle();
    const std::size_t limit = imaging::PixelBuffer::maxBytes();
    imaging::PixelBuffer::setMaxBytes(1000);
    QVERIFY_EXCEPTION_THROWN(bench.history.undo(live), RuntimeError);
    imaging::PixelBuffer::setMaxBytes(limit);
    QVERIFY(same(live, states[3]));
    QCOMPARE(bench.history.undos(), 3);
    QVERIFY(bench.history.undo(live));
    QVERIFY(same(live, states[2]));

    bench.store.settle();
    cutSpillFile();
    QVERIFY_EXCEPTION_THROWN(bench.history.undo(live), RuntimeError);
    QVERIFY_EXCEPTION_THROWN(bench.history.redo(live), RuntimeError);
    QVERIFY(same(live, states[2]));
    QCOMPARE(bench.history.undos(), 2);
    QCOMPARE(bench.history.redos(), 1);
}

void HistoryTest::unannouncedChangesLoseOnlyWhatLeansOnThem() {
    Random random(10);
    Bench bench;
    ListState live = onePage(picture(random, ImageType::Rgb24, 30, 20, Texture::Noise));
    const ListState first = deepCopy(live);
    bench.history.record("whole", live);
    replacePixels(live, picture(random, ImageType::Rgb24, 30, 20, Texture::Noise));
    bench.history.recordRect("pen", live, {1, 1, 9, 9});
    paint(random, live, {1, 1, 9, 9});
    // The pixels that the pen step leans on are gone without a word.
    replacePixels(live, picture(random, ImageType::Gray8, 5, 5, Texture::Noise));
    QVERIFY(bench.history.undo(live));
    QVERIFY(same(live, first));
    QCOMPARE(bench.history.undos(), 0);
}

void HistoryTest::storeGoesFirst() {
    Random random(11);
    auto store = std::make_unique<HistoryStore>(1000);
    std::vector<std::unique_ptr<History>> histories;
    std::vector<ListState> lives;
    std::vector<std::vector<ListState>> states(3);
    for (std::size_t k = 0; k < 3; ++k) {
        histories.push_back(std::make_unique<History>(*store));
        histories[k]->setEnabled(true);
        histories[k]->setDepth(9);
        lives.push_back(onePage(picture(random, ImageType::Rgb24, 600, 400, Texture::Soft)));
        for (int i = 0; i < 6; ++i) {
            states[k].push_back(deepCopy(lives[k]));
            histories[k]->record("step", lives[k]);
            replacePixels(lives[k], picture(random, ImageType::Rgb24, 600, 400, Texture::Soft));
        }
    }
    histories[0].reset(); // with work pending
    store.reset();
    for (std::size_t k = 1; k < 3; ++k) {
        for (std::size_t i = 6; i-- > 0;) {
            QVERIFY(histories[k]->undo(lives[k]));
            QVERIFY(same(lives[k], states[k][i]));
        }
        histories[k]->record("goes on", lives[k]);
        QCOMPARE(histories[k]->undos(), 1);
    }
}

QTEST_GUILESS_MAIN(HistoryTest)
#include "history.moc"
