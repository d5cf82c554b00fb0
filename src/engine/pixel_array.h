// A copy of all pixels of one image, as bytes.
#pragma once

#include <QByteArray>

namespace kvn::engine {

// `components` is 1 for the palette types (one index a byte, 1-bit pictures 0 and 1) and for
// grey, else 2 (grey, alpha), 3 (red, green, blue) or 4 (and alpha). The byte of component c at
// (x, y) stands at (y * width + x) * components + c.
struct PixelArray {
    int type = 5;
    int width = 0;
    int height = 0;
    int components = 3;
    QByteArray bytes;
};

} // namespace kvn::engine
