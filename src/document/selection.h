// The commands on the selection and the clipboard. Copy, Paste and crop look at the region of the
// document; Delete looks at the rectangle that was last reported, as every picture command does.
#pragma once

namespace kvn::document {

class frmMain;

// Without a region the whole picture. Leaves picture and undo list as they were.
void Copy(frmMain& document);
// Draws the clipboard's picture at the region's corner. Fails if there is none.
void Paste(frmMain& document);
// Paints the selected rectangle white.
void Delete(frmMain& document);
// The region then reaches one pixel past the picture on each side, as far as the canvas lets it.
void SelectAll(frmMain& document);
// `index` is the row of the crop menu: 0 region, 1 border, 3 to 7 corners and centre.
void EffectsCrop(frmMain& document, int index);

} // namespace kvn::document
