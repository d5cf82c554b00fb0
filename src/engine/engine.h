// What all engine objects of the program share. Made once, before any of them, and gone after
// the last.
#pragma once

#include <memory>

#include "engine/trace.h"

namespace kvn::engine {

class FileChooser;
namespace detail {
class HistoryStore;
}

class Engine {
  public:
    Engine();
    ~Engine();
    Engine(const Engine&) = delete;
    Engine& operator=(const Engine&) = delete;

    Trace& trace() { return trace_; }

    // Who shows file dialogs. Must be set before one is asked for, and outlive the engine's use.
    void setFileChooser(FileChooser* chooser) { chooser_ = chooser; }
    FileChooser* fileChooser() const { return chooser_; }

    // Where undo steps live, and how much memory they may take.
    detail::HistoryStore& historyStore() { return *history_; }

    // The thread count for operations; 0 means as many as the machine has.
    void setThreads(int threads) { threads_ = threads; }
    int threads() const { return threads_; }
    // How long an operation runs before it begins to report progress, so that short work shows
    // none. Milliseconds.
    void setProgressDelay(int ms) { progressDelay_ = ms; }
    int progressDelay() const { return progressDelay_; }

  private:
    Trace trace_;
    FileChooser* chooser_ = nullptr;
    std::unique_ptr<detail::HistoryStore> history_;
    int threads_ = 0;
    int progressDelay_ = 400;
};

} // namespace kvn::engine
