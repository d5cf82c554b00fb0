// The one place that runs every engine operation: trace, undo step, progress, cancel, error.
//
// An operation computes a new state from the live one; only when it has succeeded is the step
// taken and the state put in place. Whatever it throws, picture and undo list are as before.
#pragma once

#include <QElapsedTimer>
#include <QJsonArray>
#include <functional>
#include <vector>

#include "engine/detail/page_list.h"
#include "imaging/operation.h"
#include "imaging/task.h"

namespace kvn::engine::detail {

// How one call stands in the trace and the undo list.
struct Call {
    QString op;       // contract name
    QJsonArray args;  // in contract order, the label included
    QString label;    // as passed
    QString undoName; // the operation's own name for its step
};

// Reports an operation's progress to the list's observer, once it has run for longer than the
// engine's delay.
class ProgressReport {
  public:
    ProgressReport(PageList& list, const QString& message);
    ~ProgressReport();
    ProgressReport(const ProgressReport&) = delete;
    ProgressReport& operator=(const ProgressReport&) = delete;

    imaging::Task& task() { return task_; }

  private:
    bool report(double fraction);

    PageList& list_;
    QString message_;
    QElapsedTimer clock_;
    qint64 lastReport_ = 0;
    int lastPercent_ = -1; // -1 until the first report
    bool cancelled_ = false;
    imaging::Task task_;
};

// Runs `change` on a copy of the state (copies share their pixels). It may throw anything.
void changeState(PageList& list, const Call& call,
                 const std::function<void(ListState& next, imaging::Task& task)>& change);

// Runs `paint` on the pixels of the current page in place, where it may change `rect` only. Takes
// just that rectangle into the undo list, and puts it back if `paint` throws.
void changeInPlace(PageList& list, const Call& call, const imaging::Rect& rect,
                   const std::function<void(imaging::Raster& raster, imaging::Task& task)>& paint);

// Runs an operation of the operation table on the page.
void runNamed(const PageRef& target, const QString& operation, std::vector<imaging::Value> values,
              QJsonArray args, const QString& label);

// Records a call that changes no picture, and what it throws.
void recordCall(Engine& engine, const TraceIdentity& who, const QString& op, const QJsonArray& args,
                const std::function<void()>& body = {});

// The own name of a call that brings in `source`: what made that picture. So the step of a command
// that works on a copy is called after the command. `otherwise` where nothing is known.
QString nameOfMaking(const PageRef& source, const char* otherwise);

// Takes a step with the present state as its content, for the operations that follow.
void saveUndo(PageList& list, const QString& label);

// Steps back or forth in the undo list.
void stepHistory(PageList& list, const QString& op, bool back);

// Puts other pixels into a page: it stays the same page with another content.
void replaceContent(PageState& page, imaging::Raster raster);

// The page at `ref` in `next`, a new one at the end if the list is empty.
PageState& pageForReplacing(ListState& next, const PageList& list, quint64 page);

} // namespace kvn::engine::detail
