#include "document/pages.h"

#include "basic/error.h"
#include "basic/numbers.h"
#include "dialogs/asking.h"
#include "document/file_types.h"
#include "document/frmMain.h"
#include "document/wait_cursor.h"
#include "document/working_copy.h"

namespace kvn::document {
namespace {

constexpr quint32 openFlags = 0x801004;

bool choose(frmMain& document, const QString& filter) {
    engine::Dialog& dialog = document.Dialog;
    dialog.setOpenMode(1);
    dialog.setFilter(filter);
    if (dialog.FilterIndex() != 1) dialog.setFilterIndex(1);
    dialog.setFlags(openFlags);
    return dialog.ShowOpen();
}

void move(frmMain& document, int step) {
    const engine::Images pages = document.ImgX->Images();
    const int target = document.ImgX->Info().ListIndex() + step;
    if (target < 0 || target >= pages.Count()) return;
    engine::Images(pages).setCurrent(pages.Item(target));
}

void addPage(frmMain& document) {
    if (!choose(document, openFilter())) return;
    engine::Image image(document.services().engine);
    image.setTraceIdentity(document.DocIndex, QStringLiteral("Image"));
    {
        const WaitCursor wait;
        image.Import().FromFile(document.Dialog.FileName(), 0, {});
    }
    const QString answer = document.services().asking.inputBox(
        QStringLiteral("Enter Page number to insert {0 = last page}"), {}, {}, &document);
    const int page = toInt32(numericPrefix(answer.toStdString()));
    document.ImgX->Images().Add(image, page, 0, {});
}

void removePage(frmMain& document) {
    engine::Images pages = document.ImgX->Images();
    if (pages.Count() > 0) pages.Remove(pages.Current(), {});
}

void appendToTiff(frmMain& document) {
    const bool chosen = choose(document, tiffFilter());
    const QString path = document.Dialog.FileName();
    document.Dialog.setFilter(openFilter());
    if (!chosen) return;
    const WaitCursor wait;
    document.ImgX->Export().AppendToTiff(path);
}

void setBackdrop(frmMain& document) {
    if (!choose(document, openFilter())) return;
    document.ScratchImage.Import().FromFile(document.Dialog.FileName(), 0, {});
    document.ImgX->setBackdrop(document.ScratchImage);
    document.ImgX->Repaint();
}

} // namespace

void Images(frmMain& document, int index) {
    switch (index) {
    case 4:
        move(document, 1);
        break;
    case 5:
        move(document, -1);
        break;
    case 6:
        addPage(document);
        break;
    case 7:
        removePage(document);
        break;
    case 9:
        appendToTiff(document);
        break;
    case 11:
        setBackdrop(document);
        break;
    case 12:
        document.ImgX->setBackdrop({});
        break;
    default:
        break;
    }
}

void ImagesImage(frmMain& document, int index) {
    try {
        SetImage2Buffer(document);
        document.imgxAction->Import().FromImgX(document.ImgX->Images().Item(index), 0, {});
        UpdateImage(document, document.ImgX->Image());
    } catch (const RuntimeError&) {
        // This command says nothing; the picture is as it was.
    }
}

void ImageType(frmMain& document, int index) {
    document.ImgX->Info().ConvertType({}, index);
}

} // namespace kvn::document
