// From the rows of a command to its dialog, and from the answered dialog to an operation's
// arguments.
#pragma once

#include <QVariant>
#include <optional>

#include "effects/catalogue.h"

namespace kvn::effects {

// The parameter dialog of one run of a command: made when it is first wanted, the document's while
// it lasts, gone with this.
class OneDialog {
  public:
    explicit OneDialog(frmMain& document) : document_(document) {}

    frmDialog& make();
    void unload() { dialog_.reset(); }

  private:
    frmMain& document_;
    std::optional<frmDialog> dialog_;
};

// Fills the dialog, shows it and tells whether the user left it by OK. Starting values that are
// the picture's own come from the working copy.
bool ask(frmMain& document, frmDialog& dialog, const char* title, Rows rows,
         Follow follow = nullptr);

// What the rows hold, in the order of the arguments. `dialog` may be null where no argument reads
// a row. Throws errors::overflow for a number that does not fit.
QVariantList read(const Arguments& arguments, const frmDialog* dialog);

} // namespace kvn::effects
