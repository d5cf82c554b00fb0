#include "document/program_state.h"

#include <algorithm>

#include "document/frmMain.h"

namespace kvn::document {

bool ProgramState::IsAnyOpened() const {
    return std::find(DocumentsOpen.begin(), DocumentsOpen.end(), true) != DocumentsOpen.end();
}

} // namespace kvn::document
