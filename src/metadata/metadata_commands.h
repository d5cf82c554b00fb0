// The commands of the Metadata menu.
#pragma once

#include "document/commands.h"

namespace kvn::metadata {

void addMetadataCommands(document::CommandTable& table);

} // namespace kvn::metadata
