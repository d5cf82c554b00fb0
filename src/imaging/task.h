// A piece of work in progress: how far it is, whether to stop, how many threads it may use.
#pragma once

#include <functional>

#include "imaging/geometry.h"

namespace kvn::imaging {

// Thrown by Task::report when the work shall stop. No operation catches it.
struct Cancelled {};

class Task {
  public:
    Task() = default;
    // `progress` gets fractions from 0 to 1, never falling, and returns false to stop the work.
    // It is called only on the thread that runs the operation.
    explicit Task(std::function<bool(double)> progress) : progress_(std::move(progress)) {}

    // 0 means as many as the machine has.
    int threads = 0;

    // To be called by the thread that runs the operation, a few times a second at least. Throws
    // Cancelled.
    void report(double fraction);

    // The share of the whole that the next calls of report cover, for operations of several
    // passes: from `begin` to `end`, both 0..1 of the present stage. Stages nest.
    class Stage {
      public:
        Stage(Task& task, double begin, double end);
        ~Stage();
        Stage(const Stage&) = delete;
        Stage& operator=(const Stage&) = delete;

      private:
        Task& task_;
        double outerBegin_, outerEnd_;
    };

  private:
    std::function<bool(double)> progress_;
    double begin_ = 0, end_ = 1, last_ = 0;
};

// Cuts the rows 0..height-1 into bands and calls `band(y0, y1)` for each, y1 exclusive, on the
// calling thread and on the project's worker threads. The caller's thread reports progress
// between its bands. The first exception of any band is thrown on after all bands have ended;
// a stop by the user is thrown as Cancelled. Bands may not write to what other bands read.
// `minRows` is the least that is worth a band.
void parallelRows(int height, Task& task, const std::function<void(int y0, int y1)>& band,
                  int minRows = 16);

} // namespace kvn::imaging
