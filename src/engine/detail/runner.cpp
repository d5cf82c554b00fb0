#include "engine/detail/runner.h"

#include <new>

#include "basic/error.h"
#include "basic/text.h"
#include "imaging/blit.h"

namespace kvn::engine::detail {
namespace {

constexpr qint64 reportEveryMs = 30;

// Marks the list as being worked on. A second operation that comes in through the message pump
// is refused, since it would be lost when the first one ends.
class BusyMark {
  public:
    BusyMark(PageList& list, const QString& op) : list_(list) {
        if (list.busy)
            throw RuntimeError(errors::invalidCall,
                               "Another operation on this image is still running.",
                               op.toStdString());
        list.busy = true;
    }
    ~BusyMark() { list_.busy = false; }
    BusyMark(const BusyMark&) = delete;
    BusyMark& operator=(const BusyMark&) = delete;

  private:
    PageList& list_;
};

// Runs `body` and turns whatever it throws into the program's one failure type, noted in the
// trace.
void translated(Trace::Call& entry, const QString& op, const std::function<void()>& body) {
    const auto fail = [&](std::int32_t number, const std::string& text) {
        entry.setError(number, QString::fromStdString(text));
        throw RuntimeError(number, text, op.toStdString());
    };
    try {
        body();
    } catch (const imaging::Cancelled&) {
        fail(errors::cancelled, "The operation was cancelled.");
    } catch (const std::bad_alloc&) {
        fail(errors::outOfMemory, "Out of memory.");
    } catch (const RuntimeError& error) {
        entry.setError(error.number(), QString::fromStdString(error.description()));
        throw;
    } catch (const std::exception& error) {
        fail(errors::invalidCall, error.what());
    }
}

QString stepLabel(const Call& call) {
    return call.label.isEmpty() ? call.undoName : call.label;
}

void noteMaking(PageList& list, const Call& call) {
    if (!isNoUndo(call.label)) list.made = stepLabel(call);
}

bool takesStep(const PageList& list, const Call& call) {
    return list.history.isEnabled() && !isNoUndo(call.label);
}

bool samePages(const ListState& a, const ListState& b) {
    if (a.pages.size() != b.pages.size() || a.current != b.current) return false;
    for (std::size_t i = 0; i < a.pages.size(); ++i)
        if (a.pages[i].id != b.pages[i].id) return false;
    return true;
}

imaging::Rect shownRect(const PageList& list) {
    const PageState* page = list.currentPage();
    return page ? page->raster.rect() : imaging::Rect{};
}

// What a change means for those who look at the list. The image-changed event comes with every
// change of pixels or pages, but not when just another page becomes current.
void announce(PageList& list, bool pagesDiffer) {
    ++list.generation;
    if (!list.observer) return;
    if (pagesDiffer) list.observer->listChanged();
    list.observer->pictureChanged(shownRect(list));
}

} // namespace

ProgressReport::ProgressReport(PageList& list, const QString& message)
    : list_(list), message_(message), task_([this](double f) { return report(f); }) {
    task_.threads = list.engine().threads();
    clock_.start();
}

ProgressReport::~ProgressReport() {
    // The observer shut its window itself if it asked for the stop.
    if (lastPercent_ >= 0 && !cancelled_ && list_.observer) list_.observer->progress(100, message_);
}

bool ProgressReport::report(double fraction) {
    if (!list_.observer || !list_.reportsProgress) return true;
    const qint64 now = clock_.elapsed();
    if (lastPercent_ < 0) {
        if (now < list_.engine().progressDelay()) return true;
        lastPercent_ = 0;
        cancelled_ = list_.observer->progress(0, message_);
        lastReport_ = clock_.elapsed();
        return !cancelled_;
    }
    if (now - lastReport_ < reportEveryMs) return true;
    // 0 and 100 mean begin and end to the observer, so they are not sent in between.
    lastPercent_ = std::max(lastPercent_, std::clamp(static_cast<int>(fraction * 100), 1, 99));
    cancelled_ = list_.observer->progress(lastPercent_, message_);
    lastReport_ = clock_.elapsed();
    return !cancelled_;
}

void changeState(PageList& list, const Call& call,
                 const std::function<void(ListState&, imaging::Task&)>& change) {
    Trace::Call entry(list.engine().trace(), list.who, call.op, call.args);
    bool pagesDiffer = false;
    translated(entry, call.op, [&] {
        const BusyMark mark(list, call.op);
        ListState next = list.state;
        {
            ProgressReport progress(list, call.undoName);
            change(next, progress.task());
        }
        pagesDiffer = !samePages(list.state, next);
        if (takesStep(list, call)) {
            list.history.record(stepLabel(call).toStdString(), list.state);
            entry.setStep(stepLabel(call));
        } else {
            list.history.hold(list.state);
        }
        list.state = std::move(next);
        noteMaking(list, call);
    });
    announce(list, pagesDiffer);
}

void changeInPlace(PageList& list, const Call& call, const imaging::Rect& rect,
                   const std::function<void(imaging::Raster&, imaging::Task&)>& paint) {
    Trace::Call entry(list.engine().trace(), list.who, call.op, call.args);
    const imaging::Rect clipped = rect.intersected(shownRect(list));
    translated(entry, call.op, [&] {
        const BusyMark mark(list, call.op);
        if (!list.currentPage())
            throw RuntimeError(errors::objectNotSet, "There is no image.", call.op.toStdString());
        PageState& page = list.state.pages[static_cast<std::size_t>(list.state.current)];
        const bool keep = takesStep(list, call);
        // Without a step of its own the painted part is still kept until the painting is done.
        const imaging::Raster spare =
            keep || clipped.isEmpty() ? imaging::Raster{} : page.raster.cropped(clipped);
        if (!keep) list.history.hold(list.state);
        const bool recorded =
            keep && list.history.recordRect(stepLabel(call).toStdString(), list.state, clipped);
        const quint64 stamp = page.stamp;
        if (list.observer) list.observer->releasePicture();
        try {
            ProgressReport progress(list, call.undoName);
            paint(page.raster, progress.task());
            page.stamp = PageList::nextId();
        } catch (...) {
            page.stamp = stamp;
            if (recorded)
                list.history.rollback(list.state);
            else if (!spare.isEmpty())
                imaging::copyPixels(page.raster, spare, {clipped.x, clipped.y});
            if (list.observer) list.observer->pictureChanged({});
            throw;
        }
        if (recorded) entry.setStep(stepLabel(call));
        noteMaking(list, call);
    });
    ++list.generation;
    if (list.observer) list.observer->pictureChanged(clipped);
}

void runNamed(const PageRef& target, const QString& operation, std::vector<imaging::Value> values,
              QJsonArray args, const QString& label) {
    const imaging::Operation* op = imaging::findOperation(operation.toStdString());
    if (!op)
        throw RuntimeError(errors::memberNotFound, "The engine has no operation of this name.",
                           operation.toStdString());
    PageList& list = listOf(target);
    args.append(label);
    const auto text = [](std::string_view s) {
        return QString::fromUtf8(s.data(), static_cast<int>(s.size()));
    };
    changeState(list, {operation, args, label, text(op->undoName)},
                [&](ListState& next, imaging::Task& task) {
                    const imaging::Raster source =
                        op->needsSource ? pageOf(target).raster : imaging::Raster{};
                    std::vector<imaging::Raster> pages =
                        imaging::runOperation(*op, source, std::move(values), task);
                    PageState& page = pageForReplacing(next, list, target.page);
                    const auto at = next.pages.begin() + (&page - next.pages.data()) + 1;
                    std::vector<PageState> more;
                    for (std::size_t i = 1; i < pages.size(); ++i) {
                        PageState extra = page;
                        extra.id = PageList::nextId();
                        replaceContent(extra, std::move(pages[i]));
                        more.push_back(std::move(extra));
                    }
                    replaceContent(page, std::move(pages.front()));
                    next.pages.insert(at, more.begin(), more.end());
                });
}

void recordCall(Engine& engine, const TraceIdentity& who, const QString& op, const QJsonArray& args,
                const std::function<void()>& body) {
    Trace::Call entry(engine.trace(), who, op, args);
    if (body) translated(entry, op, body);
}

QString nameOfMaking(const PageRef& source, const char* otherwise) {
    const bool isKnown = source.list && !source.list->made.isEmpty();
    return isKnown ? source.list->made : QString::fromLatin1(otherwise);
}

void saveUndo(PageList& list, const QString& label) {
    const Call call{"ImgX.SaveUndo", {label}, label, "Undo"};
    Trace::Call entry(list.engine().trace(), list.who, call.op, call.args);
    translated(entry, call.op, [&] {
        const BusyMark mark(list, call.op);
        noteMaking(list, call);
        if (!takesStep(list, call)) return;
        list.history.record(stepLabel(call).toStdString(), list.state);
        entry.setStep(stepLabel(call));
    });
}

void stepHistory(PageList& list, const QString& op, bool back) {
    bool moved = false, pagesDiffer = false;
    recordCall(list.engine(), list.who, op, {}, [&] {
        const BusyMark mark(list, op);
        // Only ids and the current page are compared, so no pixels are held here: holding them
        // would make the exchange of a rectangle copy the whole picture.
        ListState outline;
        outline.current = list.state.current;
        for (const PageState& page : list.state.pages) {
            PageState bare;
            bare.id = page.id;
            outline.pages.push_back(std::move(bare));
        }
        moved = back ? list.history.undo(list.state) : list.history.redo(list.state);
        pagesDiffer = !samePages(outline, list.state);
    });
    if (moved) announce(list, pagesDiffer);
}

void replaceContent(PageState& page, imaging::Raster raster) {
    page.raster = std::move(raster);
    page.stamp = PageList::nextId();
}

PageState& pageForReplacing(ListState& next, const PageList& list, quint64 page) {
    if (next.pages.empty() && page == 0) {
        next.pages.emplace_back();
        next.pages.back().id = PageList::nextId();
        next.current = 0;
        return next.pages.back();
    }
    const int index = list.indexOf(page);
    if (index < 0) throw RuntimeError(errors::objectNotSet, "There is no image.", "Image");
    return next.pages[static_cast<std::size_t>(index)];
}

} // namespace kvn::engine::detail
