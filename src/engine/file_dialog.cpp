#include "engine/file_dialog.h"

#include <QJsonArray>

#include <new>

#include "basic/error.h"
#include "basic/text.h"
#include "engine/detail/file_io.h"
#include "engine/detail/page_list.h"
#include "engine/detail/runner.h"
#include "engine/engine.h"
#include "engine/file_chooser.h"

namespace kvn::engine {
namespace {

constexpr const char* imageName = "Dialog.Image";

} // namespace

Dialog::Dialog(Engine& engine) : engine_(engine), image_(engine, imageName) {}

void Dialog::setTraceIdentity(int doc, const QString& name) {
    who_ = {doc, name};
    image_.setTraceIdentity(doc, imageName);
}

void Dialog::record(const char* property, const QJsonArray& args) {
    detail::recordCall(engine_, who_, property, args);
}

void Dialog::setDefaultExt(const QString& extension) {
    record("Dialog.DefaultExt", {extension});
    defaultExt_ = extension;
}

void Dialog::setFilter(const QString& filter) {
    record("Dialog.Filter", {filter});
    filter_ = filter;
}

void Dialog::setFilterIndex(int row) {
    record("Dialog.FilterIndex", {row});
    filterIndex_ = row;
}

void Dialog::setFlags(quint32 flags) {
    record("Dialog.Flags", {qint64{flags}});
    flags_ = flags;
}

void Dialog::setOpenMode(int mode) {
    record("Dialog.OpenMode", {mode});
}
void Dialog::setOpenOption(bool on) {
    record("Dialog.OpenOption", {on});
}

QString Dialog::FileTitle() const {
    return fileNameOf(fileName_);
}

bool Dialog::show(bool save) {
    if (!engine_.fileChooser())
        throw RuntimeError(errors::objectNotSet, "No file dialog is available.", "Dialog");
    FileRequest request;
    request.save = save;
    request.filter = filter_;
    request.filterIndex = filterIndex_;
    request.defaultExt = defaultExt_;
    request.flags = flags_;
    request.owner = owner_;
    if (save) request.fileName = FileTitle();
    const FileAnswer answer = engine_.fileChooser()->chooseFile(request);
    if (!answer.accepted) return false;
    fileName_ = answer.path;
    filterIndex_ = answer.filterIndex;
    return true;
}

void Dialog::chooseFile(const QString& path) {
    forgetImage();
    fileName_ = path;
    unread_ = true;
}

void Dialog::forgetImage() {
    image_ = engine::Image(engine_, imageName);
    image_.setTraceIdentity(who_.doc, imageName);
    imageError_.clear();
    unread_ = false;
}

void Dialog::read() {
    unread_ = false;
    detail::PageList& list = *image_.ref().list;
    detail::PageList& reporting = progressTarget_.isNull() ? list : *progressTarget_.ref().list;
    try {
        detail::ProgressReport progress(reporting, "Load");
        list.state.pages = detail::readFile(fileName_, 0, progress.task());
        list.state.current = list.state.pages.empty() ? -1 : 0;
        list.markSaved();
    } catch (const imaging::Cancelled&) {
        imageError_ = "The operation was cancelled.";
    } catch (const std::bad_alloc&) {
        imageError_ = "Out of memory.";
    } catch (const std::exception& error) {
        imageError_ = QString::fromUtf8(error.what());
    }
}

engine::Image Dialog::Image() {
    if (unread_) read();
    return image_;
}

QString Dialog::imageError() {
    if (unread_) read();
    return imageError_;
}

bool Dialog::ShowOpen() {
    bool accepted = false;
    detail::recordCall(engine_, who_, "Dialog.ShowOpen", {}, [&] {
        accepted = show(false);
        if (accepted) chooseFile(fileName_);
    });
    return accepted;
}

bool Dialog::ShowSave() {
    bool accepted = false;
    detail::recordCall(engine_, who_, "Dialog.ShowSave", {}, [&] { accepted = show(true); });
    return accepted;
}

} // namespace kvn::engine
