// The message pump: lets waiting events run from inside a long piece of work.
#pragma once

namespace kvn {

// Delivers what waits in the event queue, deferred deletions left aside. The caller must expect
// that a handler starts another command meanwhile.
void DoEvents();

} // namespace kvn
