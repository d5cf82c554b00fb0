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

// What the Help menu opens: kvn.chm if it lies beside the program, else the first page of the
// manual there.
QString manualFile(const document::ProgramState& state);

} // namespace kvn::shell
