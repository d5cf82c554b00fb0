#include "effects/commands.h"

#include "effects/groups.h"

namespace kvn::effects {

void addEffectsCommands(document::CommandTable& table) {
    for (const auto& group :
         {effectsGroup(), filtersGroup(), filterPresets(), effectPresets(), paletteCommands(),
          perspectiveExamples(), matrixFilters(), recipes(), encryptionCommands()})
        table.add(group);
}

} // namespace kvn::effects
