// The windows of the Settings menu. Each asks its rows and stores them when the user agrees; the
// ranges in the labels are advice.
#pragma once

#include "document/services.h"

namespace kvn::shell {

// How picture files are written. The active document's options follow at once. Throws
// errors::overflow for a number that does not fit, with nothing stored.
void imageSaveSettings(const document::Services& services);
void alphaDisplaySettings(const document::Services& services);
void ditherErrorSettings(const document::Services& services);

} // namespace kvn::shell
