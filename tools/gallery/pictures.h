// The pictures that the gallery works on, all but the photograph: drawn here, so that a page can
// be made again from nothing but the photograph.
#pragma once

#include <string>

namespace kvn::gallery {

// Writes them into the folder: drawing.png, face.png, page.png, disc.png, ramp.png, bump.png,
// green.png (the photograph's green channel) and the built-in palettes. Throws RuntimeError.
void writePictures(const std::string& folder);

} // namespace kvn::gallery
