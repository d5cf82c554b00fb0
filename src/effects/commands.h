// The picture commands of the Effects, Transforms and Filters menus. What they ask and run stands
// in tables (catalogue.h); this is where they enter the table of commands.
#pragma once

namespace kvn::document {
class CommandTable;
}

namespace kvn::effects {

void addEffectsCommands(document::CommandTable& table);

} // namespace kvn::effects
