#include "engine/image.h"

#include <QVariant>

#include "basic/error.h"
#include "basic/text.h"
#include "engine/detail/page_list.h"
#include "engine/detail/runner.h"
#include "engine/detail/trace_values.h"
#include "engine/image_values.h"

namespace kvn::engine {

using detail::Call;
using detail::ListState;
using detail::PageList;
using detail::PageState;

Image::Image(Engine& engine, const QString& traceName)
    : ref_{std::make_shared<PageList>(engine, TraceIdentity{-1, traceName}), 0} {}

bool Image::operator==(const Image& other) const {
    if (ref_.list != other.ref_.list) return false;
    return isNull() || ref_.list->indexOf(ref_.page) == ref_.list->indexOf(other.ref_.page);
}

bool Image::IsEmpty() const {
    if (isNull()) return true;
    const PageState* page = ref_.list->find(ref_.page);
    return !page || page->raster.isEmpty();
}

void Image::setInteractive(bool on) {
    PageList& list = detail::listOf(ref_);
    detail::recordCall(list.engine(), list.who, "Image.Interactive", {on});
}

void Image::setOffscreen(bool on) {
    PageList& list = detail::listOf(ref_);
    detail::recordCall(list.engine(), list.who, "Image.Offscreen", {on});
}

void Image::setUndoDepth(int depth) {
    PageList& list = detail::listOf(ref_);
    detail::recordCall(list.engine(), list.who, "Image.UndoDepth", {depth},
                       [&] { list.history.setDepth(depth); });
}

void Image::Undo() {
    detail::stepHistory(detail::listOf(ref_), "Image.Undo", true);
}

void Image::setTraceIdentity(int doc, const QString& name) {
    detail::listOf(ref_).who = {doc, name};
}

void Image::run(const QString& operation, const QVariantList& arguments, const QString& label) {
    std::vector<imaging::Value> values;
    QJsonArray args;
    for (const QVariant& argument : arguments) {
        values.push_back(detail::valueOf(argument));
        args.append(detail::tracedVariant(argument));
    }
    detail::runNamed(ref_, operation, std::move(values), args, label);
}

// --- Images ---------------------------------------------------------------------------------

void Images::Add(const engine::Image& image, int page, int flag, const QString& label) {
    PageList& list = *list_;
    const QJsonArray args{detail::traced(image), page, flag, label};
    detail::changeState(list, {"Images.Add", args, label, "Add Image"},
                        [&](ListState& next, imaging::Task&) {
                            PageState added = detail::pageOf(image.ref());
                            const bool changed = image.ref().list->isChanged(added);
                            added.id = PageList::nextId();
                            if (!changed) list.markSaved(added);
                            const auto count = static_cast<int>(next.pages.size());
                            const int at = page >= 1 && page <= count ? page - 1 : count;
                            next.pages.insert(next.pages.begin() + at, std::move(added));
                            // The current page stays the current one.
                            if (next.current < 0)
                                next.current = 0;
                            else if (at <= next.current)
                                ++next.current;
                        });
    list.pagesTouched = list.pagesTouched || !isNoUndo(label);
}

void Images::Clear(const QString& label) {
    PageList& list = *list_;
    detail::changeState(list, {"Images.Clear", {label}, label, "Clear Images"},
                        [](ListState& next, imaging::Task&) { next = {}; });
    list.pagesTouched = !isNoUndo(label);
}

int Images::Count() const {
    return static_cast<int>(list_->state.pages.size());
}

engine::Image Images::Current() const {
    const PageState* page = list_->currentPage();
    return page ? engine::Image({list_, page->id}) : engine::Image();
}

void Images::setCurrent(const engine::Image& page) {
    PageList& list = *list_;
    detail::recordCall(list.engine(), list.who, "Images.Current", {detail::traced(page)}, [&] {
        const int index = page.ref().list == list_ ? list.indexOf(page.ref().page) : -1;
        if (index < 0)
            throw RuntimeError(errors::objectNotSet, "The image is none of this list.",
                               "Images.Current");
        list.state.current = index;
    });
    ++list.generation;
    if (list.observer) list.observer->listChanged();
}

engine::Image Images::Item(int index) const {
    if (index < 0 || index >= Count())
        throw RuntimeError(errors::subscriptOutOfRange, "Subscript out of range", "Images.Item");
    return engine::Image({list_, list_->state.pages[static_cast<std::size_t>(index)].id});
}

void Images::Remove(const engine::Image& page, const QString& label) {
    PageList& list = *list_;
    detail::changeState(
        list, {"Images.Remove", {detail::traced(page), label}, label, "Remove Image"},
        [&](ListState& next, imaging::Task&) {
            const int index = page.ref().list == list_ ? list.indexOf(page.ref().page) : -1;
            if (index < 0)
                throw RuntimeError(errors::objectNotSet, "The image is none of this list.",
                                   "Images.Remove");
            next.pages.erase(next.pages.begin() + index);
            // The page that takes its place is shown, or the last.
            const int last = static_cast<int>(next.pages.size()) - 1;
            if (index < next.current) --next.current;
            next.current = std::min(next.current, last);
        });
    list.pagesTouched = list.pagesTouched || !isNoUndo(label);
}

} // namespace kvn::engine
