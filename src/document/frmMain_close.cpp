// The prompts that keep a document's changes, and the end of its window.
#include <QCloseEvent>

#include "dialogs/asking.h"
#include "document/frmMain.h"
#include "document/program_state.h"
#include "document/report.h"
#include "document/roles.h"

namespace kvn::document {

using dialogs::Answer;

bool frmMain::AskToSaveChanges() {
    if (!ImgX->Modified()) return true;
    const QString name = ImgX->IsEmpty() ? QString() : ImgX->Info().Name();
    if (!name.isEmpty()) DisplayName = name;
    const Answer answer = services_.asking.message(
        {.text = DisplayName + QStringLiteral(" has changed.\n\nWould you like to save it?"),
         .title = {},
         .icon = dialogs::Icon::None,
         .buttons = dialogs::Buttons::YesNoCancel,
         .owner = this});
    if (answer == Answer::Cancel) return false;
    if (answer == Answer::Yes) Save();
    return true;
}

// A failed save keeps the document open: nothing is lost by a close.
bool frmMain::askBeforeClose() {
    if (Saved) return false;
    const bool hasPath = !FilePath.isEmpty();
    const QString text =
        hasPath ? QStringLiteral("File '") + FilePath + QStringLiteral("' is not saved, save it?")
                : QStringLiteral(" This new file is not saved, save it?");
    const Answer answer = services_.asking.message({.text = text,
                                                    .title = {},
                                                    .icon = dialogs::Icon::Exclamation,
                                                    .buttons = dialogs::Buttons::YesNoCancel,
                                                    .owner = this});
    if (answer == Answer::Cancel) return true;
    if (answer != Answer::Yes) return false;
    const bool done = guarded(*this, [&] { hasPath ? Save() : SaveAs(); });
    if (!done || (!hasPath && SaveAsCancelled)) return true;
    Saved = true;
    return false;
}

void frmMain::markClosed() {
    ProgramState& state = services_.state;
    if (DocIndex >= 0 && static_cast<std::size_t>(DocIndex) < state.DocumentsOpen.size())
        state.DocumentsOpen[static_cast<std::size_t>(DocIndex)] = false;
    if (state.IsAnyOpened()) return;
    for (const char* name : {"mnuUndo", "mnuRedo", "mnuPaste"})
        services_.menus.setEnabled(QString::fromLatin1(name), -1, false);
    services_.rules.EnDisMenuItems(false);
}

bool frmMain::KillMe() {
    if (askBeforeClose()) return true;
    markClosed();
    return false;
}

void frmMain::RaiseError(const RuntimeError& error) {
    reportError(services_.asking, this, error);
}

void frmMain::closeEvent(QCloseEvent* event) {
    // A close that comes from inside the message pump would take the picture from under its own
    // command.
    const bool busy = isBusy();
    if (busy) sayAtWork(services_);
    const bool refused = busy || (!unasked_ && KillMe());
    if (refused) {
        event->ignore();
        return;
    }
    if (unasked_) markClosed();
    leaveSlot();
    event->accept();
}

void frmMain::leaveSlot() {
    auto& documents = services_.state.Documents;
    const auto slot = static_cast<std::size_t>(DocIndex);
    if (DocIndex < 0 || slot >= documents.size() || documents[slot] != this) return;
    services_.state.DocumentsOpen[slot] = false;
    documents[slot] = nullptr;
}

} // namespace kvn::document
