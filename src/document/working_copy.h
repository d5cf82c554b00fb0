// The frame of every picture command: a working copy goes out of the shown picture, the command
// changes it, and one write brings it back as one undo step. With a selection only the selected
// rectangle goes out and comes back.
#pragma once

#include "engine/image.h"

namespace kvn::engine {
class ImgX;
}

namespace kvn::document {

class frmMain;

// Fills imgxAction. Costs no pixels without a selection.
void SetImage2Buffer(frmMain& document);

// Fills a preview control and imgxAction. Without a selection the preview is reduced to fit the
// control.
void SetImage2Buffer2(frmMain& document, engine::ImgX& target);

// Puts imgxAction's picture into `image`, into the selection's corner if there is one.
void UpdateImage(frmMain& document, const engine::Image& image);

// Gives imgxAction the selection's size in pixels.
void sizeToSelection(frmMain& document, engine::ImgX& control);

// One step back or forth, with one repaint.
void Undo(frmMain& document);
void Redo(frmMain& document);

} // namespace kvn::document
