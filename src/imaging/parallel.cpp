// The worker threads behind parallelRows.

#include <algorithm>
#include <atomic>
#include <condition_variable>
#include <cstdint>
#include <exception>
#include <mutex>
#include <system_error>
#include <thread>
#include <vector>

#include "imaging/task.h"

namespace kvn::imaging {

namespace {

// Rows are cut the same way whatever the number of threads, so that a kernel that starts afresh
// with each band gives the same pixels on every machine. Enough bands for progress and balance,
// few enough that the rows around a band, which neighbourhood kernels read twice, stay cheap.
constexpr int bandCount = 64;
constexpr int mostThreads = 64;

using Band = std::function<void(int, int)>;

// A band that calls parallelRows itself gets its rows done in place.
thread_local bool insideBand = false;

struct InsideBand {
    InsideBand() { insideBand = true; }
    ~InsideBand() { insideBand = false; }
    InsideBand(const InsideBand&) = delete;
    InsideBand& operator=(const InsideBand&) = delete;
};

// One call of parallelRows. Lives on its caller's stack until no worker uses it.
struct Job {
    const Band& band;
    int height;
    int bandRows;
    int openSeats;                // workers that may still join; guarded by the pool's lock
    int seated = 0;               // workers at work; guarded by the pool's lock
    std::exception_ptr failure{}; // the first; guarded by the pool's lock
    std::atomic<int> next{0};     // the first band that nobody has taken
    std::atomic<bool> stopped{false};

    // Takes a band and does it. False if none was left.
    bool runOne() {
        if (stopped.load(std::memory_order_relaxed)) return false;
        const std::int64_t y0 =
            std::int64_t{next.fetch_add(1, std::memory_order_relaxed)} * bandRows;
        if (y0 >= height) return false;
        const InsideBand mark;
        band(static_cast<int>(y0), static_cast<int>(std::min<std::int64_t>(y0 + bandRows, height)));
        return true;
    }
    double fraction() const {
        const double rows = static_cast<double>(next.load(std::memory_order_relaxed)) * bandRows;
        return std::min(1.0, rows / height);
    }
};

class Pool {
  public:
    static Pool& instance() {
        static Pool pool;
        return pool;
    }

    void run(Job& job, Task& task) {
        open(job);
        try {
            while (job.runOne())
                task.report(job.fraction());
        } catch (...) {
            fail(job);
        }
        close(job);
        if (job.failure) std::rethrow_exception(job.failure);
        task.report(1); // others may have done the last bands
    }

  private:
    Pool() = default;
    ~Pool() {
        {
            const std::lock_guard lock(mutex_);
            ending_ = true;
        }
        wake_.notify_all();
        for (std::thread& worker : workers_)
            worker.join();
    }

    void open(Job& job) {
        const std::lock_guard lock(mutex_);
        hire(job.openSeats);
        jobs_.push_back(&job);
        wake_.notify_all();
    }

    // Nobody new joins; returns when those at work have finished their bands.
    void close(Job& job) {
        std::unique_lock lock(mutex_);
        std::erase(jobs_, &job);
        left_.wait(lock, [&] { return job.seated == 0; });
    }

    void fail(Job& job) {
        job.stopped = true;
        const std::lock_guard lock(mutex_);
        if (!job.failure) job.failure = std::current_exception();
    }

    void hire(int count) {
        try {
            while (static_cast<int>(workers_.size()) < count)
                workers_.emplace_back([this] { work(); });
        } catch (const std::system_error&) {
            // No more threads to be had: those there are do the work.
        }
    }

    Job* openJob() const {
        for (Job* job : jobs_)
            if (job->openSeats > 0) return job;
        return nullptr;
    }

    void work() {
        std::unique_lock lock(mutex_);
        for (;;) {
            wake_.wait(lock, [this] { return ending_ || openJob(); });
            if (ending_) return;
            Job& job = *openJob();
            --job.openSeats;
            ++job.seated;
            lock.unlock();
            try {
                while (job.runOne()) {
                }
            } catch (...) {
                fail(job);
            }
            lock.lock();
            job.openSeats = 0;
            if (--job.seated == 0) left_.notify_all();
        }
    }

    std::mutex mutex_;
    std::condition_variable wake_, left_;
    std::vector<Job*> jobs_;
    std::vector<std::thread> workers_;
    bool ending_ = false;
};

int threadCount(const Task& task) {
    static const int cores = std::max(1, static_cast<int>(std::thread::hardware_concurrency()));
    return std::min(task.threads > 0 ? task.threads : cores, mostThreads);
}

} // namespace

void parallelRows(int height, Task& task, const Band& band, int minRows) {
    if (height <= 0) return;
    if (insideBand) {
        band(0, height);
        return;
    }
    const int bandRows = std::max({1, minRows, height / bandCount + (height % bandCount != 0)});
    const int bands = (height - 1) / bandRows + 1;
    Job job{band, height, bandRows, std::min(threadCount(task), bands) - 1};
    if (job.openSeats > 0) {
        Pool::instance().run(job, task);
        return;
    }
    while (job.runOne())
        task.report(job.fraction());
}

} // namespace kvn::imaging
