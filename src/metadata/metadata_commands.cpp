#include "metadata/metadata_commands.h"

#include "basic/text.h"
#include "dialogs/asking.h"
#include "document/frmMain.h"
#include "document/roles.h"
#include "document/wait_cursor.h"
#include "engine/metadata.h"
#include "metadata/frmEXIF.h"
#include "metadata/frmJPEGMarkers.h"

namespace kvn::metadata {

using document::frmMain;

namespace {

enum Row { ExifTags, ExifThumbnail, IptcTags, JpegMarkers, CopyMarkers };

template <typename Tags>
QList<engine::MetadataItem> itemsOf(Tags tags) {
    QList<engine::MetadataItem> items;
    const int count = tags.Count();
    items.reserve(count);
    for (int i = 0; i < count; ++i)
        items += tags.Item(i);
    return items;
}

void importThumbnail(frmMain& document) {
    const engine::Image thumbnail = document.ImgX->Info().Exif().Thumbnail();
    if (thumbnail.isNull()) {
        document.services().menus.setEnabled(QStringLiteral("mnuMetadata"), ExifThumbnail, false);
        return;
    }
    document.ImgX->Images().Add(thumbnail, 0, 0, QStringLiteral("Import EXIF Thumbnail."));
}

void chooseMarkers(frmMain& document) {
    const document::Services& services = document.services();
    frmJPEGMarkers window(services.host.window());
    window.Markers = document.ImgX->JPEGMarkers();
    window.LoadList();
    services.asking.showModal(window);
    if (!window.Cancelled) document.ImgX->setJPEGMarkers(window.Markers);
}

void tell(const frmMain& document, const char* text) {
    const document::Services& services = document.services();
    services.asking.message({.text = QString::fromLatin1(text),
                             .title = {},
                             .icon = dialogs::Icon::None,
                             .buttons = dialogs::Buttons::Ok,
                             .owner = services.host.window()});
}

void copyMarkers(frmMain& document) {
    constexpr quint32 firstMarker = 1;
    tell(document, "Choose source image to copy Metadata to.");
    if (!document.Dialog.ShowOpen()) return;
    const QString source = document.Dialog.FileName();
    tell(document, "Save the copied JPEG with metadata to the following new location:");
    document.Dialog.setFilter(QStringLiteral("Joint Photographic Experts Group  <JPG>|*.jpg|"));
    if (!document.Dialog.ShowSave()) return;
    const QString destination = document.Dialog.FileName();
    document.ImgX->setJPEGMarkers(firstMarker);
    {
        const document::WaitCursor wait;
        document.ImgX->Info().CopyMetadata(source, destination);
    }
    document.services().rules.say(QStringLiteral("%1 has the metadata of %2. This picture "
                                                 "keeps only marker JPEG_APP1 from now on.")
                                      .arg(fileNameOf(destination), fileNameOf(source)));
}

void Metadata(frmMain& document, int index) {
    QWidget* frame = document.services().host.window();
    const engine::Info info = document.ImgX->Info();
    switch (index) {
    case ExifTags:
        return frmEXIF::list(itemsOf(info.Exif()), frame);
    case ExifThumbnail:
        return importThumbnail(document);
    case IptcTags:
        return frmEXIF::list(itemsOf(info.Iptc()), frame);
    case JpegMarkers:
        return chooseMarkers(document);
    case CopyMarkers:
        return copyMarkers(document);
    default:
        return;
    }
}

constexpr document::Command commands[] = {{"Metadata", Metadata}};

} // namespace

void addMetadataCommands(document::CommandTable& table) {
    table.add(commands);
}

} // namespace kvn::metadata
