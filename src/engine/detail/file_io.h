// Pictures from files and bytes, as pages of a list.
#pragma once

#include <QByteArray>
#include <QString>
#include <vector>

#include "engine/detail/history.h"
#include "imaging/task.h"

namespace kvn::engine::detail {

// The pages of a file, each with its own identity and named after the file. `page` from 1 takes
// just that one, 0 all. Throws RuntimeError: what the file system or the codec says,
// invalidPicture for no picture, subscriptOutOfRange for a page that is not there.
std::vector<PageState> readFile(const QString& path, int page, imaging::Task& task);
std::vector<PageState> readBytes(const QByteArray& bytes, const QString& name, int page,
                                 imaging::Task& task);

} // namespace kvn::engine::detail
