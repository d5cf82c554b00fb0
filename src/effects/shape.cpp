#include "effects/shape.h"

#include <QVariant>
#include <algorithm>

#include "dialogs/asking.h"
#include "document/frmMain.h"
#include "document/report.h"
#include "document/roles.h"
#include "document/services.h"
#include "document/working_copy.h"
#include "effects/parameters.h"

namespace kvn::effects {
namespace {

const Entry* find(const Group& group, int index) {
    const auto it = std::ranges::find(group.entries, index, &Entry::index);
    return it == group.entries.end() ? nullptr : &*it;
}

// The parameter dialog of one run, made when it is first wanted and gone with it.
class OneDialog {
  public:
    explicit OneDialog(frmMain& document) : document_(document) {}

    frmDialog& make() {
        const document::Services& services = document_.services();
        if (!dialog_) dialog_.emplace(services.asking, services.host.window());
        document_.frmDlg = &*dialog_;
        return *dialog_;
    }
    void unload() { dialog_.reset(); }

  private:
    frmMain& document_;
    std::optional<frmDialog> dialog_;
};

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
    ResumeNext run;
    run.step([&] { document::SetImage2Buffer(document); });
    if (entry) run.step([&] { act(document, *entry, dialog); });
    run.step([&] { document::UpdateImage(document, document.ImgX->Image()); });
    if (run.error()) document::reportNumberedError(document, *run.error());
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
