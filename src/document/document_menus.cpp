#include "document/document_menus.h"

#include <algorithm>

#include "basic/error.h"
#include "document/frmMain.h"
#include "document/roles.h"
#include "engine/metadata.h"

namespace kvn::document {
namespace {

QString pageGroup() {
    return QStringLiteral("mnuImagesImage");
}
QString imagesGroup() {
    return QStringLiteral("mnuImages");
}
QString typeGroup() {
    return QStringLiteral("mnuImageType");
}
QString metadataGroup() {
    return QStringLiteral("mnuMetadata");
}
constexpr int imageTypes = 7;
constexpr int smallestCroppable = 21; // pixels a side

QString pageCaption(int position, const engine::Info& info) {
    QString caption = QStringLiteral("%1: %2 x %3 x %4 Colors (%5bpp)  ")
                          .arg(position)
                          .arg(info.Width())
                          .arg(info.Height())
                          .arg(info.ColorCount())
                          .arg(info.ColorDepth()) +
                      engine::Utility().TypeName(info.TypeIndex(), true);
    if (info.Changed()) caption += QStringLiteral("  (Changed)");
    return caption;
}

} // namespace

void RebuildImageList(frmMain& document) {
    MenuState& menus = document.services().menus;
    const engine::Images pages = document.ImgX->Images();
    const int count = pages.Count();
    menus.resizeGroup(pageGroup(), 1, std::max(0, count - 1));
    menus.setCaption(pageGroup(), 0, QStringLiteral("No Images"));
    menus.setEnabled(pageGroup(), 0, count > 0);
    for (int i = 0; i < count; ++i)
        menus.setCaption(pageGroup(), i, pageCaption(i, pages.Item(i).Info()));
    markCurrentPage(document);
}

void markCurrentPage(frmMain& document) {
    MenuState& menus = document.services().menus;
    const int count = document.ImgX->Images().Count();
    const int current = count > 0 ? document.ImgX->Info().ListIndex() : -1;
    // The first item stands there without a page too.
    for (int i = 0; i < std::max(1, count); ++i)
        menus.setChecked(pageGroup(), i, i == current);
}

void Images_Menu(frmMain& document) {
    MenuState& menus = document.services().menus;
    const int count = document.ImgX->Images().Count();
    const int current = count > 0 ? document.ImgX->Info().ListIndex() : -1;
    const bool any = count > 0;
    menus.setEnabled(imagesGroup(), 4, any && current + 1 < count);
    menus.setEnabled(imagesGroup(), 5, any && current >= 1);
    menus.setEnabled(imagesGroup(), 7, any);
    menus.setEnabled(imagesGroup(), 2, any);
    if (!any) return;
    const int type = document.ImgX->Info().TypeIndex();
    for (int i = 0; i < imageTypes; ++i)
        menus.setChecked(typeGroup(), i, i == type);
}

void showMetadataItems(frmMain& document) {
    MenuState& menus = document.services().menus;
    const bool any = !document.ImgX->IsEmpty();
    engine::Exif exif = document.ImgX->Info().Exif();
    menus.setEnabled(metadataGroup(), 0, any && exif.Count() > 0);
    menus.setEnabled(metadataGroup(), 1, any && exif.HasThumbnail());
    menus.setEnabled(metadataGroup(), 2, any && document.ImgX->Info().Iptc().Count() > 0);
}

void RefreshCropMenu(frmMain& document) {
    MenuState& menus = document.services().menus;
    menus.setEnabled(QStringLiteral("mnuEffectsCrop"), 0, document.ImgX->HasRegion());
    const bool any = !document.ImgX->IsEmpty();
    const engine::Info info = document.ImgX->Info();
    menus.setEnabled(QStringLiteral("mnuEffects"), 0,
                     any && info.Width() >= smallestCroppable &&
                         info.Height() >= smallestCroppable);
}

} // namespace kvn::document
