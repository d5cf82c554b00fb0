// The program's version, as the build system knows it.
#pragma once

#include <QString>

namespace kvn::shell {

QString programVersion();

} // namespace kvn::shell
