// Where the frame stood when it was last closed. Kept as state of this user's desktop, apart from
// the settings; a place on a screen that is gone is moved back into sight.
#pragma once

class QWidget;

namespace kvn::shell {

// A frame that was never closed gets most of the screen.
void restoreFramePlace(QWidget& frame);
// A place that cannot be written is simply not kept.
void saveFramePlace(const QWidget& frame);

} // namespace kvn::shell
