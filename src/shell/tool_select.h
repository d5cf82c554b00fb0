// Changing the current tool: the pressed button, the program-wide number, and the tool of every
// open document.
#pragma once

namespace kvn::document {
struct ProgramState;
}

namespace kvn::shell {

class ToolBar;

// Ids outside the tool table's range change nothing.
void selectTool(int tool, document::ProgramState& state, ToolBar& bar);

} // namespace kvn::shell
