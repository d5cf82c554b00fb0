#include "shell/version.h"

namespace kvn::shell {

QString programVersion() {
    return QStringLiteral(KVN_VERSION);
}

} // namespace kvn::shell
