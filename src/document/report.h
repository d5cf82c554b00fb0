// The one place where failures that nobody handled end: a box, and the program goes on.
#pragma once

#include <functional>

class QWidget;

namespace kvn {
class RuntimeError;
}
namespace kvn::dialogs {
class Asking;
}

namespace kvn::document {

class frmMain;
struct Services;

// The box with description and source. A stopped operation is passed over.
void reportError(dialogs::Asking& asking, QWidget* owner, const RuntimeError& error);

// The box with number and description, titled with the source; some commands report in this form.
void reportNumberedError(frmMain& document, const RuntimeError& error);

// Tells that something was refused because a document is at work, or on its way into its window.
void sayAtWork(const Services& services);

// Runs `work`; a failure of any kind is reported. Returns whether there was none.
bool guarded(dialogs::Asking& asking, QWidget* owner, const std::function<void()>& work);
bool guarded(frmMain& document, const std::function<void()>& work);

} // namespace kvn::document
