// The undo list of one page list, and the store that decides where its steps live.
//
// A step holds the other state: undo and redo are the same exchange with the live state. Taking a
// step costs no pixels: it shares the buffers, and an operation that makes new pixels leaves the
// old ones to the step. In idle time the store replaces whole buffers by the tiles that differ,
// compresses them, and past its memory budget writes them to an unnamed temporary file. The
// budget decides where a step lives, never whether it exists.
#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "imaging/picture.h"

namespace kvn::engine::detail {

// One page as it is at one time. `id` stays with the page through all its states; `stamp` is
// another for every content.
struct PageState {
    std::uint64_t id = 0;
    std::uint64_t stamp = 0;
    imaging::Raster raster;
    imaging::MetadataRef metadata;
    std::string name; // of the file it came from
    imaging::FileType fileType = imaging::FileType::Unknown;
    std::string pageName = {}; // its own within that file, mostly empty
};

struct ListState {
    std::vector<PageState> pages;
    int current = -1; // -1 while there is no page
};

// Shared by all histories of the program. Owns the background thread, the temporary file and the
// memory budget.
class HistoryStore {
  public:
    // Bytes that all undo steps together may keep in memory before they are written out. When
    // steps come faster than that gets on, it is half as much again for a moment.
    explicit HistoryStore(std::uint64_t memoryBudget = std::uint64_t{256} << 20);
    ~HistoryStore();
    HistoryStore(const HistoryStore&) = delete;
    HistoryStore& operator=(const HistoryStore&) = delete;

    std::uint64_t memoryBudget() const;
    void setMemoryBudget(std::uint64_t bytes);
    std::uint64_t bytesInMemory() const;
    std::uint64_t bytesOnDisk() const;
    // Blocks until the background work has nothing left to do. For tests and benchmarks.
    void settle();

    class Impl;
    Impl& impl() { return *impl_; }

  private:
    std::unique_ptr<Impl> impl_;
};

class History {
  public:
    explicit History(HistoryStore& store);
    ~History();
    History(const History&) = delete;
    History& operator=(const History&) = delete;

    void setEnabled(bool on); // off drops all steps
    bool isEnabled() const;
    // The most steps kept; the oldest ones beyond are dropped. 0 keeps none.
    void setDepth(int depth);

    int undos() const;
    int redos() const;
    std::string undoLabel() const; // of the step that undo would take; empty if none
    std::string redoLabel() const;

    // Takes `before` as the step's content, which a change of the live state is about to
    // follow or has just followed. Clears the redo steps. Does nothing while disabled.
    void record(std::string label, ListState before);

    // The same for a change in place of one rectangle of the current page: keeps only that
    // rectangle's pixels. To be called before the change, with the live state, whose pixels no
    // step may share afterwards; returns true if a step was taken.
    bool recordRect(std::string label, const ListState& live, const imaging::Rect& rect);

    // To be called with the live state before a change that takes no step of its own. Otherwise
    // such a change stays after the undo of a recordRect step, and where it alters the size or
    // the type of that page the step is lost. Costs nothing, but the step then shares the pixels.
    void hold(const ListState& live);

    // Takes the newest step back without exchange, when the change it stood for did not happen.
    // For recordRect the kept pixels are put back into `live`. The redo steps that the step had
    // cleared, and an oldest one that it drove out, come back too.
    void rollback(ListState& live);

    // Exchanges the live state with the newest step, or the newest redone one. False, with
    // nothing changed, if there is none. Throws RuntimeError(outOfMemory, deviceIo) with nothing
    // changed.
    bool undo(ListState& live);
    bool redo(ListState& live);

    void clear();
    // What the steps of this history take, in memory and on disk.
    std::uint64_t bytes() const;

  private:
    class Impl;
    std::unique_ptr<Impl> impl_;
};

} // namespace kvn::engine::detail
