// Memory and time of 25 undo steps on 24 megapixels: whole-picture operations and pen strokes.
// The counters tell more than the times: mb_* are megabytes of the whole process or of its steps,
// *_ms the median and the worst of the 25 single calls.
#include <benchmark/benchmark.h>

#include <fstream>
#include <string>
#include <vector>

#include "bench/photo.h"
#include "bench/series.h"
#include "engine/detail/history.h"

namespace {

using namespace kvn;
using engine::detail::History;
using engine::detail::HistoryStore;
using engine::detail::ListState;

constexpr int stepCount = 25;
constexpr double megabyte = 1 << 20;

using bench::Series;

void report(benchmark::State& state, Series& series, const std::string& name) {
    state.counters[name + "_ms"] = series.median();
    state.counters[name + "_max_ms"] = series.most();
}

// A line of /proc/self/status in megabytes.
double processMemory(const std::string& key) {
    std::ifstream status("/proc/self/status");
    std::string word;
    while (status >> word)
        if (word == key + ":") {
            double kilobytes = 0;
            status >> kilobytes;
            return kilobytes / 1024;
        }
    return 0;
}

void resetPeak() {
    std::ofstream("/proc/self/clear_refs") << 5;
}

// A document as the editor has it: the live picture, and the working copy of the last command.
struct Document {
    Document() : history(store) {
        history.setEnabled(true);
        history.setDepth(stepCount);
        live.current = 0;
        live.pages.push_back({1, 1, bench::photo(), nullptr, {}, imaging::FileType::Jpeg});
    }
    // An operation that changes every pixel, as quick as one can be.
    imaging::Raster changed(int by) const {
        const imaging::Raster& from = live.pages[0].raster;
        imaging::Raster to =
            imaging::Raster::uninitialized(from.type(), from.width(), from.height());
        const imaging::View view = to.edit();
        imaging::Task task;
        imaging::parallelRows(from.height(), task, [&](int y0, int y1) {
            for (int y = y0; y < y1; ++y)
                for (std::size_t x = 0; x < from.rowBytes(); ++x)
                    view.row(y)[x] = static_cast<std::uint8_t>(from.view().row(y)[x] + by);
        });
        return to;
    }
    void command(int number, Series& recording) {
        workingCopy = changed(number);
        recording.time([&] { history.record("Change", live); });
        live.pages[0].raster = workingCopy;
        live.pages[0].stamp = static_cast<std::uint64_t>(number) + 2;
    }
    void stroke(int number, Series& recording) {
        const imaging::Rect rect{number * 200, number * 120, 400, 60};
        recording.time([&] { history.recordRect("Pen", live, rect); });
        const imaging::View view = live.pages[0].raster.edit();
        for (int y = rect.y; y < rect.bottom(); ++y)
            std::fill_n(view.row(y) + rect.x * 3, rect.width * 3, std::uint8_t{17});
    }
    void walk(benchmark::State& state, const std::string& when) {
        Series undos, redos;
        for (int i = 0; i < stepCount; ++i)
            undos.time([&] { history.undo(live); });
        for (int i = 0; i < stepCount; ++i)
            redos.time([&] { history.redo(live); });
        report(state, undos, "undo_" + when);
        report(state, redos, "redo_" + when);
    }
    void reportMemory(benchmark::State& state) {
        state.counters["mb_peak"] = processMemory("VmHWM");
        state.counters["mb_end"] = processMemory("VmRSS");
        state.counters["mb_steps_memory"] = static_cast<double>(store.bytesInMemory()) / megabyte;
        state.counters["mb_steps_disk"] = static_cast<double>(store.bytesOnDisk()) / megabyte;
    }

    HistoryStore store;
    History history;
    ListState live;
    imaging::Raster workingCopy;
};

// `pause` lets the background work end before the steps are walked.
void wholeSteps(benchmark::State& state, bool pause) {
    for (auto _ : state) {
        Document document;
        resetPeak();
        Series recording, settling;
        for (int i = 0; i < stepCount; ++i)
            document.command(i + 1, recording);
        if (pause) settling.time([&] { document.store.settle(); });
        document.walk(state, "first");
        document.walk(state, "again");
        report(state, recording, "record");
        if (pause) report(state, settling, "settle");
        document.reportMemory(state);
    }
}

void strokes(benchmark::State& state) {
    for (auto _ : state) {
        Document document;
        resetPeak();
        Series recording;
        for (int i = 0; i < stepCount; ++i)
            document.stroke(i, recording);
        const auto bytes = static_cast<double>(document.history.bytes());
        document.walk(state, "first");
        report(state, recording, "record");
        document.reportMemory(state);
        state.counters["kb_a_step"] = bytes / 1024 / stepCount;
    }
}

BENCHMARK_CAPTURE(wholeSteps, fast, false)->Iterations(1)->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(wholeSteps, paused, true)->Iterations(1)->Unit(benchmark::kMillisecond);
BENCHMARK(strokes)->Iterations(1)->Unit(benchmark::kMillisecond);

} // namespace

BENCHMARK_MAIN();
