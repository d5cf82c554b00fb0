#include "shell/tool_select.h"

#include "document/commands.h"
#include "document/frmMain.h"
#include "document/program_state.h"
#include "shell/tool_bar.h"
#include "shell/tool_table.h"

namespace kvn::shell {

namespace {

constexpr int selectTool_ = 2, penTool = 11, cropTool = 19, eraserTool = 20;

// Cropping drags a region, and the eraser is a pen.
int sentTool(int tool) {
    if (tool == cropTool) return selectTool_;
    return tool == eraserTool ? penTool : tool;
}

} // namespace

void selectTool(int tool, document::ProgramState& state, ToolBar& bar) {
    if (tool < 0 || tool >= toolCount) return;
    bar.setPressed(state.CurrentTool, false);
    bar.setPressed(tool, true);
    state.CurrentTool = static_cast<qint16>(tool);
    for (std::size_t slot = 0; slot < state.DocumentsOpen.size(); ++slot) {
        document::frmMain* form =
            state.DocumentsOpen[slot] ? state.Documents[slot].data() : nullptr;
        if (!form) continue;
        form->SetCurrTool(sentTool(tool));
        if (tool != eraserTool) continue;
        form->ImgX->Draw().setTexture(engine::Image());
        if (state.commands.contains(QStringLiteral("DrawOpacity")))
            document::runCommand(*form, QStringLiteral("DrawOpacity"), 0);
    }
}

} // namespace kvn::shell
