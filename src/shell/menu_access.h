// What assistive programs learn of a menu item: besides caption, state and key also that it can be
// checked and what it does, or why it is grey. Qt's own description of an item ends before that.
#pragma once

#include <QString>

namespace kvn::shell {

// To be called before the first menu is made; more calls do nothing.
void installMenuAccess();

// A caption as it is read, without the marks of access keys.
QString menuCaption(QString caption);

} // namespace kvn::shell
