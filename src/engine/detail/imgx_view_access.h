// What assistive programs learn of a control: a canvas, its name, the picture's size and zoom.
#pragma once

namespace kvn::engine::detail {

// To be called before the first control is made; more calls do nothing.
void installCanvasAccess();

} // namespace kvn::engine::detail
