// The document commands of the frame: they make, fill, show and close document windows. They need
// no document to start from; the frame calls them and nothing else to get one.
#pragma once

#include <QStringList>

#include "document/services.h"

namespace kvn::document {

class frmMain;

// Each returns whether a document window was opened. Failures have been reported by then.
bool newDocument(const Services& services);
bool openDocument(const Services& services);

// Asks for an address and loads the picture into a hidden window, whose slot the next command
// takes over.
void openUrl(const Services& services);

// Files named without the dialog (dropped on the frame, recent files). One report lists all that
// could not be read. Returns how many were opened.
int openFiles(const Services& services, const QStringList& paths);

// Asks all open documents, and closes them only after the last has answered. False if one of
// them, or a failed save, keeps everything open.
bool closeAll(const Services& services);

// Sets what in the menus belongs to one document after another has become the active one.
void documentActivated(frmMain& document);

} // namespace kvn::document
