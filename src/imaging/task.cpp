#include "imaging/task.h"

#include <algorithm>

namespace kvn::imaging {

void Task::report(double fraction) {
    if (!progress_) return;
    const double part = fraction > 0 ? std::min(fraction, 1.0) : 0;
    last_ = std::max(last_, begin_ + (end_ - begin_) * part);
    if (!progress_(last_)) throw Cancelled{};
}

Task::Stage::Stage(Task& task, double begin, double end)
    : task_(task), outerBegin_(task.begin_), outerEnd_(task.end_) {
    const double length = outerEnd_ - outerBegin_;
    task.begin_ = outerBegin_ + length * begin;
    task.end_ = outerBegin_ + length * end;
}

Task::Stage::~Stage() {
    task_.begin_ = outerBegin_;
    task_.end_ = outerEnd_;
}

} // namespace kvn::imaging
