// The whole program from its start to its end. What stands behind its name on the command line is
// not read.
#pragma once

namespace kvn::shell {

int runProgram(int argc, char** argv);

} // namespace kvn::shell
