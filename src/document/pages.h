// The commands on the pages of a document: moving between them, adding, removing, the type of the
// current one, and the backdrop behind it.
#pragma once

namespace kvn::document {

class frmMain;

// Rows of the Images menu: 4 next, 5 previous, 6 add, 7 remove, 9 append to a TIFF, 11 set and
// 12 clear the backdrop. Next and previous beyond the ends change nothing.
void Images(frmMain& document, int index);
// Copies the page into the current one, or into the selection. It does not become the current one.
void ImagesImage(frmMain& document, int index);
// Converts the current page to a row of the image type list.
void ImageType(frmMain& document, int index);

} // namespace kvn::document
