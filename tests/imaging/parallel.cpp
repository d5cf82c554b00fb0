// The worker threads: every row once, progress in order, and a clean end whatever happens.
#include <QtTest>
#include <atomic>
#include <cstring>
#include <limits>
#include <mutex>
#include <set>
#include <stdexcept>
#include <thread>

#include "imaging/raster.h"
#include "imaging/task.h"
#include "reference/pictures.h"

using namespace kvn::imaging;

class ParallelTest : public QObject {
    Q_OBJECT

  private slots:
    void doesEveryRowOnce();
    void cutsTheSameBandsForAnyThreadCount();
    void reportsRisingOnItsOwnThread();
    void stopsWhenTold();
    void passesTheExceptionOn();
    void runsNestedCallsInPlace();
    void servesSeveralCallers();
    void sharesMemoryBetweenThreads();
    void nestsStages();
};

void ParallelTest::doesEveryRowOnce() {
    for (const int height : {0, 1, 15, 16, 17, 1000, 4001})
        for (const int threads : {0, 1, 2, 7})
            for (const int minRows : {0, 1, 64}) {
                std::vector<std::atomic<int>> visits(static_cast<std::size_t>(height));
                Task task;
                task.threads = threads;
                parallelRows(
                    height, task,
                    [&](int y0, int y1) {
                        for (int y = y0; y < y1; ++y)
                            ++visits[static_cast<std::size_t>(y)];
                    },
                    minRows);
                QVERIFY(std::ranges::all_of(visits, [](const auto& count) { return count == 1; }));
            }
}

void ParallelTest::cutsTheSameBandsForAnyThreadCount() {
    std::set<std::pair<int, int>> bands[3];
    const int threads[] = {1, 2, 5};
    for (std::size_t i = 0; i < 3; ++i) {
        Task task;
        task.threads = threads[i];
        std::mutex mutex;
        parallelRows(3001, task, [&](int y0, int y1) {
            const std::lock_guard lock(mutex);
            bands[i].insert({y0, y1});
        });
    }
    QVERIFY(bands[0].size() > 20);
    QCOMPARE(bands[1], bands[0]);
    QCOMPARE(bands[2], bands[0]);
}

void ParallelTest::reportsRisingOnItsOwnThread() {
    for (const int threads : {1, 4}) {
        std::vector<double> seen;
        const auto self = std::this_thread::get_id();
        Task task([&](double fraction) {
            seen.push_back(fraction);
            return std::this_thread::get_id() == self;
        });
        task.threads = threads;
        parallelRows(2000, task, [](int, int) {});
        QVERIFY(!seen.empty());
        QVERIFY(std::ranges::is_sorted(seen));
        QCOMPARE(seen.back(), 1.0);
    }
}

void ParallelTest::stopsWhenTold() {
    for (const int threads : {1, 4}) {
        std::atomic<int> running{0}, rows{0};
        Task task([](double fraction) { return fraction < 0.25; });
        task.threads = threads;
        QVERIFY_EXCEPTION_THROWN(parallelRows(6400, task,
                                              [&](int y0, int y1) {
                                                  ++running;
                                                  std::this_thread::sleep_for(
                                                      std::chrono::milliseconds(1));
                                                  rows += y1 - y0;
                                                  --running;
                                              }),
                                 Cancelled);
        QCOMPARE(running.load(), 0);
        QVERIFY(rows < 6400);
    }
}

void ParallelTest::passesTheExceptionOn() {
    for (const int threads : {1, 3}) {
        std::atomic<int> running{0};
        Task task;
        task.threads = threads;
        const auto band = [&](int y0, int) {
            ++running;
            std::this_thread::sleep_for(std::chrono::milliseconds(1));
            --running;
            if (y0 > 100) throw std::out_of_range("band");
        };
        QVERIFY_EXCEPTION_THROWN(parallelRows(3000, task, band), std::out_of_range);
        QCOMPARE(running.load(), 0);
        parallelRows(3000, task, [](int, int) {}); // the threads are still good for work
    }
}

void ParallelTest::runsNestedCallsInPlace() {
    std::atomic<int> rows{0};
    Task task;
    task.threads = 4;
    parallelRows(640, task, [&](int y0, int y1) {
        const auto self = std::this_thread::get_id();
        for (int y = y0; y < y1; ++y) {
            Task inner;
            parallelRows(100, inner, [&](int a, int b) {
                if (std::this_thread::get_id() == self) rows += b - a;
            });
        }
    });
    QCOMPARE(rows.load(), 64000);

    // A handler that runs between two bands may start work of its own.
    int nested = 0;
    Task outer([&](double) {
        Task inner;
        std::atomic<int> count{0};
        parallelRows(500, inner, [&](int a, int b) { count += b - a; });
        nested += count == 500;
        return true;
    });
    outer.threads = 3;
    parallelRows(640, outer, [](int, int) {});
    QVERIFY(nested > 0);
}

void ParallelTest::servesSeveralCallers() {
    std::atomic<int> rows{0};
    std::vector<std::thread> callers;
    for (int i = 0; i < 4; ++i)
        callers.emplace_back([&] {
            for (int round = 0; round < 50; ++round) {
                Task task;
                task.threads = 3;
                parallelRows(200, task, [&](int y0, int y1) { rows += y1 - y0; });
            }
        });
    for (std::thread& caller : callers)
        caller.join();
    QCOMPARE(rows.load(), 4 * 50 * 200);
}

// Copies are handed to other threads and written here while those still read.
void ParallelTest::sharesMemoryBetweenThreads() {
    Raster picture = Raster::filled(ImageType::Rgba32, 1200, 1200, {5, 5, 5, 5});
    std::vector<std::thread> readers;
    std::atomic<int> wrong{0};
    for (int round = 1; round < 30; ++round) {
        const auto value = static_cast<std::uint8_t>(5 + round);
        readers.emplace_back([copy = picture, value, &wrong]() mutable {
            for (int y = 0; y < copy.height(); y += 7)
                wrong += copy.pixel(y, y).r != value - 1;
            copy = Raster();
        });
        const View view = picture.edit();
        for (int y = 0; y < view.height; ++y)
            std::memset(view.row(y), value, picture.rowBytes());
    }
    for (std::thread& reader : readers)
        reader.join();
    QCOMPARE(wrong.load(), 0);
}

void ParallelTest::nestsStages() {
    std::vector<double> seen;
    Task task([&](double fraction) {
        seen.push_back(fraction);
        return true;
    });
    {
        const Task::Stage first(task, 0, 0.5);
        task.report(0.5);
        const Task::Stage inner(task, 0.5, 1);
        task.report(0.5);
        task.report(0.1); // never falls
    }
    const Task::Stage second(task, 0.5, 1);
    task.report(std::numeric_limits<double>::quiet_NaN());
    task.report(7);
    QCOMPARE(seen, (std::vector<double>{0.25, 0.375, 0.375, 0.5, 1.0}));
}

QTEST_GUILESS_MAIN(ParallelTest)
#include "parallel.moc"
