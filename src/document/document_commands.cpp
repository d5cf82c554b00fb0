// The commands of this folder, as the menus name them.
#include "document/commands.h"
#include "document/document_menus.h"
#include "document/frmMain.h"
#include "document/pages.h"
#include "document/selection.h"
#include "document/view.h"
#include "document/working_copy.h"

namespace kvn::document {
namespace {

constexpr Command commands[] = {
    {"Save", [](frmMain& document, int) { document.Save(); }},
    {"SaveAs", [](frmMain& document, int) { document.SaveAs(); }},
    {"ZoomIn", [](frmMain& document, int) { ZoomIn(document); }},
    {"ZoomOut", [](frmMain& document, int) { ZoomOut(document); }},
    {"ZoomType", ZoomType},
    {"SetZoomValue",
     [](frmMain& document, int percent) { SetZoomValue(document, static_cast<qint16>(percent)); }},
    {"Undo", [](frmMain& document, int) { Undo(document); }},
    {"Redo", [](frmMain& document, int) { Redo(document); }},
    {"Copy", [](frmMain& document, int) { Copy(document); }},
    {"Paste", [](frmMain& document, int) { Paste(document); }},
    {"Delete", [](frmMain& document, int) { Delete(document); }},
    {"SelectAll", [](frmMain& document, int) { SelectAll(document); }},
    {"EffectsCrop", EffectsCrop},
    {"Images", Images},
    {"ImagesImage", ImagesImage},
    {"ImageType", ImageType},
    {"Images_Menu", [](frmMain& document, int) { Images_Menu(document); }},
};

} // namespace

void addDocumentCommands(CommandTable& table) {
    table.add(commands);
}

} // namespace kvn::document
