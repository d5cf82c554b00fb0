#include "shell/command_router.h"

#include "basic/error.h"
#include "document/commands.h"
#include "document/frmMain.h"
#include "document/program_state.h"
#include "document/report.h"
#include "document/roles.h"
#include "shell/frame_commands.h"

namespace kvn::shell {

using document::frmMain;

namespace {

QString text(std::string_view view) {
    return QString::fromUtf8(view.data(), static_cast<qsizetype>(view.size()));
}

QString memberName(const menu::Item& item) {
    return text(item.member);
}

} // namespace

bool isBuilt(const menu::Item& item, const document::CommandTable& commands) {
    switch (item.route) {
    case menu::Route::None:
        return true;
    case menu::Route::Frame:
        return FrameCommands::contains(item.member, item.index);
    case menu::Route::Active:
    case menu::Route::All:
        return commands.contains(memberName(item)) &&
               (item.window.empty() || commands.contains(text(item.window)));
    }
    return false;
}

void CommandRouter::run(const menu::Item& item) const {
    switch (item.route) {
    case menu::Route::None:
        break;
    case menu::Route::Frame:
        document::guarded(services_.asking, services_.host.window(),
                          [&] { frame_.run(item.member, item.index); });
        break;
    case menu::Route::Active:
        runActive(memberName(item), item.index);
        break;
    case menu::Route::All:
        runAll(memberName(item), item.index);
        break;
    }
}

void CommandRouter::runActive(const QString& member, int index) const {
    if (frmMain* form = services_.host.ActiveForm()) {
        document::runCommand(*form, member, index);
        return;
    }
    document::reportError(services_.asking, services_.host.window(),
                          RuntimeError(errors::objectNotSet,
                                       "Object variable or With block variable not set",
                                       "Kestrelvane"));
}

// Settings of drawing: all open documents keep the same.
void CommandRouter::runAll(const QString& member, int index) const {
    const document::ProgramState& state = services_.state;
    for (std::size_t slot = 0; slot < state.DocumentsOpen.size(); ++slot)
        if (state.DocumentsOpen[slot] && state.Documents[slot])
            document::runCommand(*state.Documents[slot], member, index);
}

} // namespace kvn::shell
