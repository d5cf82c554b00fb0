#include "shell/frame_commands.h"

#include <algorithm>

#include "basic/error.h"
#include "dialogs/asking.h"
#include "document/commands.h"
#include "document/document_actions.h"
#include "document/frmMain.h"
#include "document/program_state.h"
#include "document/report.h"
#include "shell/beside_program.h"
#include "shell/document_windows.h"
#include "shell/frmAbout.h"
#include "shell/menu/item.h"
#include "shell/menu_tree.h"
#include "shell/settings_windows.h"

namespace kvn::shell {

using document::frmMain;
using document::ProgramState;

namespace {

constexpr int magnifierRate = 8;

frmMain& activeForm(const FrameContext& context) {
    if (frmMain* form = context.services.host.ActiveForm()) return *form;
    throw RuntimeError(errors::objectNotSet, "Object variable or With block variable not set",
                       "Kestrelvane");
}

void toggle(MenuTree& menus, const QString& name, int index = menu::single) {
    menus.setChecked(name, index, !menus.isChecked(name, index));
}

// Two steps, each with its own undo.
void cut(const FrameContext& context) {
    frmMain& form = activeForm(context);
    if (form.isBusy()) {
        document::sayAtWork(context.services);
        return;
    }
    document::callMember(form, QStringLiteral("Copy"));
    document::callMember(form, QStringLiteral("Delete"));
}

void zoomWindow(const FrameContext& context) {
    const QString name = QStringLiteral("mnuZoomWindow");
    engine::ZoomWindow magnifier = activeForm(context).ImgX->ZoomWindow();
    if (context.menus.isChecked(name, menu::single)) {
        magnifier.Hide();
    } else {
        magnifier.Show();
        magnifier.setZoomRate(magnifierRate);
    }
    toggle(context.menus, name);
}

void antialias(const FrameContext& context) {
    const QString name = QStringLiteral("mnuAntialias");
    activeForm(context).ImgX->setAntialiasDisplay(!context.menus.isChecked(name, menu::single));
    toggle(context.menus, name);
}

// Without a document the setting flips while its mark keeps showing the old state; the two meet
// again at the next click with a document open.
void doubleBuffer(const FrameContext& context) {
    const QString name = QStringLiteral("mnuSettings");
    constexpr int row = 3;
    ProgramState& state = context.services.state;
    if (!state.IsAnyOpened()) {
        const bool previous = state.settings.DoubleBuffer;
        state.settings.DoubleBuffer = !previous;
        context.menus.setChecked(name, row, previous);
        return;
    }
    toggle(context.menus, name, row);
    state.settings.DoubleBuffer = context.menus.isChecked(name, row);
    for (std::size_t slot = 0; slot < state.DocumentsOpen.size(); ++slot) {
        frmMain* form = state.DocumentsOpen[slot] ? state.Documents[slot].data() : nullptr;
        if (!form || form->isBusy()) continue;
        const frmMain::Work work(*form);
        form->ImgX->setDoubleBuffer(state.settings.DoubleBuffer);
    }
}

void about(const FrameContext& context) {
    frmAbout window(context.services.asking, context.services.host.window());
    context.services.asking.showModal(window);
}

struct Entry {
    std::string_view member;
    int index;
    void (*run)(const FrameContext& context);
};

using Order = DocumentWindows::Order;

constexpr Entry entries[] = {
    {"New", menu::single, [](const FrameContext& c) { document::newDocument(c.services); }},
    {"Open", menu::single, [](const FrameContext& c) { document::openDocument(c.services); }},
    {"OpenURL", menu::single, [](const FrameContext& c) { document::openUrl(c.services); }},
    {"Close", menu::single, [](const FrameContext& c) { c.services.host.close(&activeForm(c)); }},
    {"Exit", menu::single, [](const FrameContext& c) { c.exit(); }},
    {"Cut", menu::single, cut},
    {"ZoomWindow", menu::single, zoomWindow},
    {"EffectsDitherPalette", menu::single,
     [](const FrameContext& c) { toggle(c.menus, QStringLiteral("mnuEffectsDitherPalette")); }},
    {"Settings", 0, [](const FrameContext& c) { imageSaveSettings(c.services); }},
    {"Settings", 1, [](const FrameContext& c) { alphaDisplaySettings(c.services); }},
    {"Settings", 2, [](const FrameContext& c) { ditherErrorSettings(c.services); }},
    {"Settings", 3, doubleBuffer},
    {"Antialias", menu::single, antialias},
    {"ArrHorizontal", menu::single,
     [](const FrameContext& c) { c.windows.arrange(Order::TileHorizontal); }},
    {"ArrVertival", menu::single,
     [](const FrameContext& c) { c.windows.arrange(Order::TileVertical); }},
    {"Cascade", menu::single, [](const FrameContext& c) { c.windows.arrange(Order::Cascade); }},
    {"About", menu::single, about},
    {"Index", menu::single, [](const FrameContext& c) { c.launch(manualFile(c.services.state)); }},
    {"Update", menu::single,
     [](const FrameContext& c) { c.launch(QStringLiteral("Update/Update.exe")); }},
};

const Entry* find(std::string_view member, int index) {
    const auto* found = std::find_if(std::begin(entries), std::end(entries), [&](const Entry& e) {
        return e.member == member && e.index == index;
    });
    return found == std::end(entries) ? nullptr : found;
}

} // namespace

bool FrameCommands::contains(std::string_view member, int index) {
    return find(member, index) != nullptr;
}

void FrameCommands::run(std::string_view member, int index) const {
    const Entry* entry = find(member, index);
    if (!entry)
        throw RuntimeError(errors::memberNotFound, "Object doesn't support this property or method",
                           "Kestrelvane");
    entry->run(context_);
}

} // namespace kvn::shell
