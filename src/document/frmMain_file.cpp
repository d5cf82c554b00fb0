// How a document is filled and written.
#include <QStringList>
#include <memory>

#include "basic/numbers.h"
#include "basic/text.h"
#include "dialogs/asking.h"
#include "dialogs/frmDialog.h"
#include "dialogs/frmProgress.h"
#include "document/document_menus.h"
#include "document/file_types.h"
#include "document/frmMain.h"
#include "document/program_state.h"
#include "document/recent_files.h"
#include "document/roles.h"
#include "document/view.h"
#include "engine/metadata.h"

namespace kvn::document {
namespace {

constexpr quint32 openFlags = 0x801004; // long names, file must exist, no read-only box, sizable
constexpr int tiffCode = 3;             // the one type whose files hold several images
constexpr quint32 saveFlags = 0x800006; // asks before overwriting, no read-only box, sizable

enum NewRow { Width, Height, Background, Alpha, Type };

QStringList imageTypeNames() {
    return {QStringLiteral("1-bit"),
            QStringLiteral("8-bit Colormapped"),
            QStringLiteral("8-bit Colormapped w/ Alpha"),
            QStringLiteral("8-bit Grayscale"),
            QStringLiteral("16-bit Grayscale w/ Alpha"),
            QStringLiteral("24-bit RGB"),
            QStringLiteral("32-bit RGB w/ Alpha")};
}

void addNewImageRows(dialogs::frmDialog& dialog) {
    using dialogs::frmDialog;
    dialog.setWindowTitle(QStringLiteral("New Image"));
    dialog.AddControl(QStringLiteral("Width:"), 640, frmDialog::Text);
    dialog.AddControl(QStringLiteral("Height:"), 480, frmDialog::Text);
    dialog.AddControl(QStringLiteral("Background Color:"), 0xFFFFFF, frmDialog::Color);
    dialog.AddControl(QStringLiteral("Alpha:"), 255, frmDialog::Text);
    dialog.AddControl(QStringLiteral("Image Type:"), 0, frmDialog::Combo);
    dialog.setList(Type, imageTypeNames(), 5);
}

} // namespace

bool frmMain::NewImage() {
    if (!AskToSaveChanges()) return true;
    dialogs::frmDialog dialog(services_.asking, services_.host.window());
    addNewImageRows(dialog);
    services_.asking.showModal(dialog);
    if (dialog.Cancelled) return false;
    const engine::Color color =
        ImgX->Utility().ColorFromValue(dialog.color(Background), toByte(dialog.number(Alpha)));
    ImgX->Import().New(toInt32(dialog.number(Width)), toInt32(dialog.number(Height)), color,
                       dialog.listIndex(Type), {});
    showTitle(*this, QStringLiteral("100%"));
    return true;
}

bool frmMain::LoadImage() {
    try {
        Dialog.setOpenMode(1);
        Dialog.setFilter(openFilter());
        if (Dialog.FilterIndex() != 1) Dialog.setFilterIndex(1);
        Dialog.setFlags(openFlags);
        if (!Dialog.ShowOpen()) return false;
    } catch (const RuntimeError&) {
        tellInvalidImage();
        return false;
    }
    services_.progress.Cancelled = false;
    if (takeChosen()) return true;
    if (!services_.progress.Cancelled) tellInvalidImage();
    return false;
}

engine::Image frmMain::readChosen() {
    const WaitCursor wait;
    return Dialog.Image();
}

void frmMain::tellInvalidImage() {
    services_.asking.message(
        {.text = QStringLiteral("The image you selected is corrupt or not supported."),
         .title = QStringLiteral("Invalid Image"),
         .icon = dialogs::Icon::None,
         .buttons = dialogs::Buttons::Ok,
         .owner = services_.host.window()});
}

bool frmMain::LoadFile(const QString& path) {
    Dialog.chooseFile(path);
    return takeChosen();
}

// Once a picture stands, the document is shown whatever fails behind it.
bool frmMain::takeChosen() {
    const QString path = Dialog.FileName();
    const engine::Image image = readChosen();
    if (image.IsEmpty()) return false;
    try {
        addPages(image, path);
        IsTiff = ImgX->Info().FileType() == tiffCode;
        if (IsTiff) TiffPath = path;
        ImgX->Images().setCurrent(ImgX->Images().Item(0));
        readMetadata();
    } catch (const RuntimeError&) {
        if (ImgX->IsEmpty()) return false;
    }
    Dialog.forgetImage();
    showTitle(*this, QStringLiteral("100%"));
    try {
        ApplySaveSettings();
    } catch (const RuntimeError&) {
        // The options are set again before each write, which reports what is wrong with them.
    }
    Saved = true;
    noteRecentFile(path);
    return true;
}

void frmMain::addPages(const engine::Image& image, const QString& path) {
    const auto all = [this] {
        filling_ = false;
        imageChanged();
    };
    filling_ = true; // one refresh for all pages
    try {
        ImgX->SaveUndo(QStringLiteral("Load ") + path);
        FilePath = path;
        ImgX->Images().Clear(QStringLiteral("no undo"));
        const int count = image.Images().Count();
        for (int i = 0; i < count; ++i)
            ImgX->Images().Add(image.Images().Item(i), 0, 0, QStringLiteral("no undo"));
    } catch (...) {
        all();
        throw;
    }
    all();
}

void frmMain::readMetadata() {
    ImgX->Info().Exif().Load(-1);
    ImgX->Info().Iptc().Load(-1);
    showMetadataItems(*this);
}

void frmMain::LoadURL(const QString& url) {
    if (url.isEmpty()) return;
    try {
        const WaitCursor wait;
        ImgX->Import().FromURL(url, {});
    } catch (const RuntimeError&) {
        // An address that gives no picture leaves the window as it was; nobody sees it yet.
    }
}

void frmMain::ApplySaveSettings() {
    const Settings& settings = services_.state.settings;
    ImgX->setJpegQuality(settings.JpgQuality);
    ImgX->setJpegSmoothing(settings.JpgSmoothing);
    ImgX->setJpegProgressive(settings.JpgProgressive);
    ImgX->setTiffCompression(settings.TiffCompression);
    ImgX->setBmpRle(settings.BmpRle);
    ImgX->setWmfPlaceable(settings.WmfPlaceable);
}

void frmMain::Save() {
    ApplySaveSettings();
    const int row = ImgX->IsEmpty() ? 0 : rowOfFileType(ImgX->Info().FileType());
    write(FilePath, FileTypeOfIndex(row).code);
}

void frmMain::SaveAs() {
    ApplySaveSettings();
    Dialog.setOpenMode(0);
    Dialog.setFilter(saveFilter());
    const int row = ImgX->IsEmpty() ? 0 : rowOfFileType(ImgX->Info().FileType());
    if (row > 0)
        Dialog.setFilterIndex(row);
    else if (Dialog.FilterIndex() != lastSaveRow_) // an open dialog came between
        Dialog.setFilterIndex(lastSaveRow_);
    Dialog.setDefaultExt(QString::fromLatin1(FileTypeOfIndex(Dialog.FilterIndex()).extension));
    Dialog.setFlags(saveFlags);
    SaveAsCancelled = true;
    if (!Dialog.ShowSave()) return;
    lastSaveRow_ = Dialog.FilterIndex();
    write(Dialog.FileName(), FileTypeOfIndex(lastSaveRow_).code);
    SaveAsCancelled = false;
}

void frmMain::write(const QString& path, int typeCode) {
    const WaitCursor wait;
    ImgX->Export().Save(path, typeCode, 0, -1);
    Saved = true;
    noteRecentFile(path);
    const int images = ImgX->Images().Count();
    if (images > 1 && typeCode != tiffCode)
        services_.rules.say(
            QStringLiteral("Only the shown image of %1 was saved: files of this type hold one, "
                           "TIFF files hold all.")
                .arg(images));
}

} // namespace kvn::document
