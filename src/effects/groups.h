// The command groups of this folder, one file each.
#pragma once

#include <span>

#include "effects/shape.h"

namespace kvn::effects {

std::span<const document::Command> effectsGroup();        // numbered effects and transforms
std::span<const document::Command> filtersGroup();        // numbered filters
std::span<const document::Command> filterPresets();       // filters at fixed strengths
std::span<const document::Command> effectPresets();       // effects at fixed strengths
std::span<const document::Command> paletteCommands();     // palettes, built in or from a file
std::span<const document::Command> perspectiveExamples(); // the picture on a quadrilateral
std::span<const document::Command> matrixFilters();       // coefficient tables
std::span<const document::Command> recipes();             // chains of steps
std::span<const document::Command> encryptionCommands();  // under a key

} // namespace kvn::effects
