// The menu items that mirror one document: its page list, its image type, its metadata, its
// region. Which top menus are enabled is the frame's business.
#pragma once

namespace kvn::document {

class frmMain;

// One item a page: place, size, colours, type, and whether it was changed.
void RebuildImageList(frmMain& document);
// Only the check marks of that list.
void markCurrentPage(frmMain& document);
// When the Images menu opens: which rows are usable, and the check mark of the image type.
void Images_Menu(frmMain& document);
// The items that need tags or a thumbnail.
void showMetadataItems(frmMain& document);
// When the crop menu is about to be shown as a context menu.
void RefreshCropMenu(frmMain& document);

} // namespace kvn::document
