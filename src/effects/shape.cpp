#include "effects/shape.h"

#include <QVariant>
#include <algorithm>

#include "dialogs/asking.h"
#include "document/frmMain.h"
#include "document/report.h"
#include "document/services.h"
#include "document/working_copy.h"
#include "effects/parameters.h"

namespace kvn::effects {
namespace {

const Entry* find(const Group& group, int index) {
    const auto it = std::ranges::find(group.entries, index, &Entry::index);
    return it == group.entries.end() ? nullptr : &*it;
}

// Asks if there is something to ask, then runs the operation.
void act(frmMain& document, const Entry& entry, OneDialog& dialog) {
    if (entry.handler)
        entry.handler(document, dialog.make());
    else if (!entry.title)
        runOnCopy(document, entry.operation, read(entry.arguments, nullptr));
    else if (ask(document, dialog.make(), entry.title, entry.rows, entry.follow))
        runOnCopy(document, entry.operation, read(entry.arguments, &dialog.make()));
}

void runThrough(const Group& group, frmMain& document, int index) {
    const Entry* entry = find(group, index);
    OneDialog dialog(document);
    if (group.dialogAlways) dialog.make();
    document::SetImage2Buffer(document);
    if (entry) act(document, *entry, dialog);
    dialog.unload();
    document::UpdateImage(document, document.ImgX->Image());
}

void runResuming(const Group& group, frmMain& document, int index) {
    const Entry* entry = find(group, index);
    OneDialog dialog(document);
    const auto error = resumeNext(document, [&](ResumeNext& run) {
        if (entry) run.step([&] { act(document, *entry, dialog); });
    });
    if (error) document::reportNumberedError(document, *error);
}

} // namespace

void runGroup(const Group& group, frmMain& document, int index) {
    switch (group.trap) {
    case Trap::Common:
        return runThrough(group, document, index);
    case Trap::Numbered:
        return runResuming(group, document, index);
    case Trap::RaiseError:
    case Trap::PlainBox:
        break;
    }
    try {
        runThrough(group, document, index);
    } catch (const RuntimeError& error) {
        if (group.trap == Trap::PlainBox)
            plainBox(document, error);
        else
            document.RaiseError(error);
    }
}

void runOnCopy(frmMain& document, const char* operation, const QVariantList& arguments,
               const QString& label) {
    document.imgxAction->Image().run(QString::fromLatin1(operation), arguments, label);
}

void ResumeNext::step(const std::function<void()>& work) {
    try {
        work();
    } catch (const RuntimeError& error) {
        if (error.isSilent()) throw;
        error_ = error;
    }
}

std::optional<RuntimeError> resumeNext(frmMain& document,
                                       const std::function<void(ResumeNext& run)>& steps) {
    ResumeNext run;
    run.step([&] { document::SetImage2Buffer(document); });
    if (run.error()) return run.error();
    steps(run);
    run.step([&] { document::UpdateImage(document, document.ImgX->Image()); });
    return run.error();
}

void plainBox(frmMain& document, const QString& text) {
    document.services().asking.message({.text = text,
                                        .title = {},
                                        .icon = dialogs::Icon::None,
                                        .buttons = dialogs::Buttons::Ok,
                                        .owner = &document});
}

void plainBox(frmMain& document, const RuntimeError& error) {
    if (!error.isSilent()) plainBox(document, QString::fromStdString(error.description()));
}

} // namespace kvn::effects
