// Pictures of the engine as Qt has them, and back.
#pragma once

#include <QImage>

#include "imaging/raster.h"

namespace kvn::engine::detail {

// A copy in the closest Qt form: mono, indexed, grey, RGB888 or straight RGBA8888.
QImage toQImage(const imaging::Raster& raster);

// The closest of the seven types. A picture whose alpha is zero everywhere counts as opaque:
// that is what screen grabs and careless programs put on the clipboard.
imaging::Raster fromQImage(const QImage& image);

} // namespace kvn::engine::detail
