#include "basic/save_file.h"

#include <QSaveFile>

namespace kvn {

bool commitWhole(QSaveFile& file) {
    if (file.error() != QFileDevice::NoError || !file.flush()) file.cancelWriting();
    return file.commit();
}

} // namespace kvn
