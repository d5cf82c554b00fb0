// Tables that more than one filter works with, row by row.
#pragma once

#include "engine/image_values.h"

namespace kvn::effects {

// Keeps fine lines and lets everything even fall away.
engine::Table nightLineMatrix();

} // namespace kvn::effects
