// The files that lie beside the program.
#pragma once

#include <QString>

namespace kvn::document {
struct ProgramState;
}

namespace kvn::shell {

QString pathBeside(const document::ProgramState& state, const QString& file);

// Opens a file beside the program with whatever the desktop opens it with. Nobody is told if
// there is none.
void launchBeside(const document::ProgramState& state, const QString& file);

} // namespace kvn::shell
