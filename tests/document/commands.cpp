// Commands by name, the working copy and its one undo step, pages and selection.
#include <QClipboard>
#include <QGuiApplication>

#include "desk.h"
#include "document/document_menus.h"
#include "document/report.h"
#include "document/working_copy.h"

using namespace kvn;
using namespace kvn::test;

namespace {

void select(frmMain& document, double left, double top, double width, double height) {
    emit document.ImgX->RegionChanged(left, top, width, height);
}

QStringList ending(const QStringList& calls, int count) {
    return calls.mid(calls.size() - count);
}

} // namespace

class Commands : public QObject {
    Q_OBJECT

    std::unique_ptr<Desk> desk_;

  private slots:
    void init() { desk_ = std::make_unique<Desk>(); }
    void cleanup() { desk_.reset(); }

    void failuresEndInOneReport() {
        static constexpr document::Command faulty[] = {
            {"Fail",
             [](frmMain&, int index) {
                 if (index == 1) throw RuntimeError(errors::cancelled, "stopped", "x");
                 if (index == 2) throw std::bad_alloc();
                 throw RuntimeError(errors::diskFull, "The disk is full.", "Export.Save");
             }},
        };
        desk_->state.commands.add(faulty);
        frmMain* document = desk_->create();
        QVERIFY(!document::runCommand(*document, "NoSuchMember"));
        QCOMPARE(desk_->user.messages[0].icon, dialogs::Icon::Critical);
        QCOMPARE(desk_->user.said(), QStringList{"|Error: Object doesn't support this property or "
                                                 "method\nSource: Kestrelvane"});
        QVERIFY(!document::runCommand(*document, "Fail", 0));
        QCOMPARE(desk_->user.said(), QStringList{"|Error: The disk is full.\nSource: Export.Save"});
        QVERIFY(!document::runCommand(*document, "Fail", 1));
        QVERIFY(desk_->user.said().isEmpty());
        QVERIFY(!document::runCommand(*document, "Fail", 2));
        QCOMPARE(desk_->user.said().size(), 1);
        QVERIFY(document::runCommand(*document, "ZoomIn")); // the document is free again
        QVERIFY_EXCEPTION_THROWN(desk_->state.commands.add(faulty), std::logic_error);
    }

    void numberedReport() {
        frmMain* document = desk_->create();
        document::reportNumberedError(*document, RuntimeError(6, "Overflow", "Effects"));
        QCOMPARE(desk_->user.messages[0].icon, dialogs::Icon::Exclamation);
        QCOMPARE(desk_->user.said(), QStringList{"Effects|Error: 6\n\nOverflow"});
        document::reportNumberedError(*document, RuntimeError(errors::cancelled, "", ""));
        QVERIFY(desk_->user.said().isEmpty());
    }

    void wholePictureGoesOutAndComesBack() {
        frmMain& document = *desk_->create();
        const int undos = document.ImgX->Undos();
        document.Saved = true;
        desk_->journal.clear();
        document::SetImage2Buffer(document);
        document.imgxAction->Info().ConvertType({}, 3);
        QVERIFY(document.Saved); // the working copy is nobody's business
        document::UpdateImage(document, document.ImgX->Image());
        const QStringList calls = desk_->journal.engineCalls();
        QCOMPARE(calls.size(), 3);
        QVERIFY(calls[0].startsWith("imgxAction Import.FromImgX [\"@ImgX\",0,\"\"]"));
        QCOMPARE(calls[2],
                 QString("ImgX Import.FromImgX [\"@imgxAction\",0,\"\"] -> Convert Type"));
        QCOMPARE(document.ImgX->Undos(), undos + 1);
        QCOMPARE(document.ImgX->Info().TypeIndex(), 3);
        QVERIFY(!document.Saved);
        desk_->journal.clear();
        document::Undo(document);
        QCOMPARE(desk_->journal.engineCalls(),
                 QStringList({"ImgX ImgX.AutoDisplay [false]", "ImgX ImgX.Undo []",
                              "ImgX ImgX.Refresh []", "ImgX ImgX.AutoDisplay [true]"}));
        QCOMPARE(document.ImgX->Info().TypeIndex(), 5);
        document::Redo(document);
        QCOMPARE(document.ImgX->Info().TypeIndex(), 3);
        QVERIFY(!document::runCommand(document, "Redo") || document.ImgX->Redos() == 0);
    }

    void selectionComesBackIntoItsCorner() {
        frmMain& document = *desk_->open(desk_->picture("p.png"));
        select(document, 4.5, 5.5, 10, 6); // halves go to the even number
        desk_->journal.clear();
        document::SetImage2Buffer(document);
        QCOMPARE(document.imgxAction->Info().Width(), 10);
        QCOMPARE(document.imgxAction->size(), QSize(10, 6));
        document.imgxAction->Import().New(10, 6, engine::Color(1, 2, 3), 5, {});
        document::UpdateImage(document, document.ImgX->Image());
        QStringList calls = desk_->journal.engineCalls();
        QVERIFY(calls[1].startsWith("imgxAction Geometry.Crop [4,6,10,6,\"\"]"));
        QVERIFY(
            calls.last().startsWith("ImgX Draw.Image [\"@imgxAction\",4,6,null,1,true,\"\"] -> "));
        const engine::Info info = document.ImgX->Info();
        QCOMPARE(info.Width(), 32);
        QCOMPARE(info.GetPixel(4, 6).RgbGet(), 0x030201u);
        QCOMPARE(info.GetPixel(13, 11).RgbGet(), 0x030201u);
        QCOMPARE(int(info.GetPixel(14, 11).Red()), 14 * 8);
        QCOMPARE(int(info.GetPixel(3, 6).Red()), 3 * 8);
    }

    void previewShowsTheSelection() {
        frmMain& document = *desk_->create("400", "300");
        engine::ImgX preview(desk_->engine, "Preview", &document);
        select(document, 10, 20, 30, 40);
        desk_->journal.clear();
        document::SetImage2Buffer2(document, preview);
        QCOMPARE(preview.Info().Width(), 30);
        QCOMPARE(document.imgxAction->Info().Height(), 40);
        const QStringList calls = desk_->journal.engineCalls();
        QCOMPARE(calls[2], QString("Preview ImgX.AutoDisplay [false]"));
        QCOMPARE(calls.last(), QString("Preview ImgX.AutoDisplay [true]"));
    }

    void previewFitsItsControl() {
        frmMain& document = *desk_->create("400", "300");
        engine::ImgX preview(desk_->engine, "Preview", &document);
        preview.resize(120, 90);
        desk_->state.HasSelection = false;
        desk_->journal.clear();
        document::SetImage2Buffer2(document, preview);
        const int side = std::min(preview.ClientWidth(), preview.ClientHeight());
        QCOMPARE(preview.Info().Width(), side);
        QCOMPARE(preview.Info().Height(), qRound(side * 0.75));
        QCOMPARE(document.imgxAction->Info().Width(), 400);
        QCOMPARE(desk_->journal.engineCalls()
                     .filter(QString("Preview Geometry.Resize [%1,0,3,\"\"]").arg(side))
                     .size(),
                 1);
    }

    void pagesMoveAddAndGo() {
        frmMain& document = *desk_->open(desk_->tiff("p.tif", 3));
        FakeMenus& menus = desk_->menus;
        const auto current = [&] { return document.ImgX->Info().ListIndex(); };
        const auto run = [&](int row) { return document::runCommand(document, "Images", row); };
        QCOMPARE(menus.groups["mnuImagesImage"], std::pair(1, 2));
        QCOMPARE(menus.item("mnuImagesImage", 1).caption,
                 QString("1: 11 x 8 x 16777216 Colors (24bpp)  24-bit RGB"));
        QVERIFY(run(5)); // before the first: nothing, and nothing said
        QCOMPARE(current(), 0);
        QVERIFY(run(4) && run(4) && run(4));
        QCOMPARE(current(), 2);
        QVERIFY(menus.isChecked("mnuImagesImage", 2) && !menus.isChecked("mnuImagesImage", 0));

        desk_->user.files = {{true, desk_->picture("add.png"), 1}};
        desk_->user.inputs = {"2"};
        QVERIFY(run(6));
        QCOMPARE(desk_->user.prompts.last(),
                 QString("Enter Page number to insert {0 = last page}|"));
        QCOMPARE(document.ImgX->Images().Item(1).Info().Width(), 32);
        QCOMPARE(document.ImgX->Info().Width(), 12); // still the page shown before
        desk_->user.files = {{true, desk_->picture("add.png"), 1}};
        desk_->user.inputs = {"last, please"};
        QVERIFY(run(6));
        QCOMPARE(document.ImgX->Images().Item(4).Info().Width(), 32);

        desk_->user.files = {{true, desk_->file("bad.png", "x"), 1}};
        QVERIFY(!run(6));
        QCOMPARE(desk_->user.said().size(), 1);

        desk_->journal.clear();
        for (int left = 4; left >= 0; --left) {
            QVERIFY(run(7));
            QCOMPARE(document.ImgX->Images().Count(), left);
        }
        QVERIFY(run(7) && run(4) && run(5));
        QVERIFY(document.ImgX->IsEmpty());
        QCOMPARE(desk_->journal.all().count("ImageMenusEnabled(False)"), 1);
        QCOMPARE(menus.item("mnuImagesImage", 0).caption, QString("No Images"));
        QVERIFY(!menus.isEnabled("mnuImagesImage", 0));
        document::Images_Menu(document);
        for (const int row : {2, 4, 5, 7})
            QVERIFY(!menus.isEnabled("mnuImages", row));
    }

    void imagesMenuFollowsThePage() {
        frmMain& document = *desk_->open(desk_->tiff("p.tif", 2));
        FakeMenus& menus = desk_->menus;
        document::Images_Menu(document);
        QVERIFY(menus.isEnabled("mnuImages", 4) && !menus.isEnabled("mnuImages", 5));
        document::runCommand(document, "Images", 4);
        document::runCommand(document, "ImageType", 3);
        document::Images_Menu(document);
        QVERIFY(!menus.isEnabled("mnuImages", 4) && menus.isEnabled("mnuImages", 5));
        QVERIFY(menus.isChecked("mnuImageType", 3) && !menus.isChecked("mnuImageType", 5));
        QCOMPARE(menus.item("mnuImagesImage", 1).caption,
                 QString("1: 11 x 8 x 256 Colors (8bpp)  8-bit Grayscale  (Changed)"));
    }

    void listEntryCopiesItsPage() {
        frmMain& document = *desk_->open(desk_->tiff("p.tif", 3));
        const int undos = document.ImgX->Undos();
        QVERIFY(document::runCommand(document, "ImagesImage", 2));
        QCOMPARE(document.ImgX->Info().ListIndex(), 0);
        QCOMPARE(document.ImgX->Info().Width(), 12);
        QCOMPARE(document.ImgX->Undos(), undos + 1);
        QVERIFY(document::runCommand(document, "ImagesImage", 77)); // no such page: nothing
        QCOMPARE(document.ImgX->Info().Width(), 12);
    }

    void appendAndBackdropBringTheFilterBack() {
        frmMain& document = *desk_->create();
        const QString tiff = desk_->tiff("t.tif", 1);
        desk_->user.files = {{true, tiff, 1}, {true, desk_->picture("back.png"), 1}};
        QVERIFY(document::runCommand(document, "Images", 9));
        QCOMPARE(desk_->user.requests[0].filter, QString("TIFF Images|*.tif;*.tiff"));
        QVERIFY(document::runCommand(document, "Images", 11));
        QVERIFY(desk_->user.requests[1].filter.startsWith("All Images|"));
        QCOMPARE(ending(desk_->journal.engineCalls(), 2),
                 QStringList({"ImgX ImgX.Backdrop [\"@ScratchImage\"]", "ImgX ImgX.Repaint []"}));
        QVERIFY(document::runCommand(document, "Images", 12));
        QCOMPARE(desk_->journal.engineCalls().last(), QString("ImgX ImgX.Backdrop [null]"));
        QCOMPARE(engine::Utility().FileInfo(tiff).images, 2);
    }

    void copyOfARegionLeavesNothingBehind() {
        frmMain& document = *desk_->open(desk_->picture("p.png"));
        const int undos = document.ImgX->Undos();
        QVERIFY(document::runCommand(document, "Copy"));
        QCOMPARE(QGuiApplication::clipboard()->image().size(), QSize(32, 24));
        document.ImgX->setRegionLeft(3);
        document.ImgX->setRegionTop(4);
        document.ImgX->setRegionWidth(10);
        document.ImgX->setRegionHeight(6);
        document.ImgX->setHasRegion(true);
        QVERIFY(document::runCommand(document, "Copy"));
        QCOMPARE(QGuiApplication::clipboard()->image().size(), QSize(10, 6));
        QCOMPARE(document.ImgX->Info().Width(), 32);
        QCOMPARE(document.ImgX->Undos(), undos);
    }

    void pasteDrawsOrReports() {
        frmMain& document = *desk_->create();
        QImage picture(5, 5, QImage::Format_RGB32);
        picture.fill(qRgb(200, 10, 20));
        QGuiApplication::clipboard()->setImage(picture);
        QVERIFY(document::runCommand(document, "Paste"));
        QCOMPARE(int(document.ImgX->Info().GetPixel(4, 4).Red()), 200);
        QCOMPARE(int(document.ImgX->Info().GetPixel(5, 5).Red()), 255);
        QGuiApplication::clipboard()->clear();
        const int undos = document.ImgX->Undos();
        QVERIFY(!document::runCommand(document, "Paste"));
        QCOMPARE(desk_->user.said().size(), 1);
        QCOMPARE(document.ImgX->Undos(), undos);
    }

    void deletePaintsTheSelectionWhite() {
        frmMain& document = *desk_->open(desk_->picture("p.png"));
        const int undos = document.ImgX->Undos();
        desk_->state.HasSelection = false;
        QVERIFY(document::runCommand(document, "Delete"));
        QCOMPARE(document.ImgX->Undos(), undos);
        select(document, 2, 3, 8, 5);
        QVERIFY(document::runCommand(document, "Delete"));
        QVERIFY(document::runCommand(document, "Delete"));
        QCOMPARE(document.ImgX->Undos(), undos + 2);
        QCOMPARE(document.ImgX->Info().GetPixel(9, 7).RgbGet(), 0xFFFFFFu);
        QCOMPARE(int(document.ImgX->Info().GetPixel(10, 7).Red()), 80);
    }

    void crops_data() {
        QTest::addColumn<int>("index");
        QTest::addColumn<QString>("size");
        QTest::addColumn<QString>("rect");
        QTest::newRow("top left") << 3 << "30x30"
                                  << "0,0,20,20";
        QTest::newRow("top right") << 4 << "101x50"
                                   << "51,0,50,25"; // 50.5 goes to 50
        QTest::newRow("bottom left") << 5 << "103x50"
                                     << "0,25,52,25"; // 51.5 goes to 52
        QTest::newRow("bottom right") << 6 << "60x80"
                                      << "30,40,30,40";
        QTest::newRow("center") << 7 << "30x30"
                                << "5,5,20,20";
        QTest::newRow("center of an odd picture") << 7 << "101x45"
                                                  << "26,12,50,22";
        QTest::newRow("larger than the picture") << 6 << "10x50"
                                                 << "-10,25,20,25";
    }
    void crops() {
        QFETCH(int, index);
        QFETCH(QString, size);
        QFETCH(QString, rect);
        frmMain& document = *desk_->create(size.section('x', 0, 0), size.section('x', 1, 1));
        desk_->journal.clear();
        document::runCommand(document, "EffectsCrop", index);
        QVERIFY2(desk_->journal.engineCalls().first().startsWith("ImgX Geometry.Crop [" + rect),
                 qPrintable(desk_->journal.engineCalls().first()));
    }

    void cropToTheRegion() {
        frmMain& document = *desk_->open(desk_->picture("p.png"));
        desk_->journal.clear();
        QVERIFY(document::runCommand(document, "EffectsCrop", 0));
        QCOMPARE(desk_->user.messages[0].icon, dialogs::Icon::Information);
        QCOMPARE(desk_->user.said(),
                 QStringList{"|You must select a cropping area with the mouse"});
        QVERIFY(document::runCommand(document, "EffectsCrop", 2)); // a separator
        QVERIFY(desk_->journal.engineCalls().isEmpty());
        QVERIFY(document::runCommand(document, "SelectAll"));
        QVERIFY(document.ImgX->HasRegion());
        QVERIFY(document::runCommand(document, "EffectsCrop", 0));
        QVERIFY(!document.ImgX->HasRegion());
    }

    void cropMenuFollowsRegionAndSize() {
        frmMain& small = *desk_->create("21", "20");
        document::RefreshCropMenu(small);
        QVERIFY(!desk_->menus.isEnabled("mnuEffects", 0));
        QVERIFY(!desk_->menus.isEnabled("mnuEffectsCrop", 0));
        frmMain& large = *desk_->create("21", "21");
        large.ImgX->setHasRegion(true);
        document::RefreshCropMenu(large);
        QVERIFY(desk_->menus.isEnabled("mnuEffects", 0));
        QVERIFY(desk_->menus.isEnabled("mnuEffectsCrop", 0));
    }

    void progressHoldsTheDocument() {
        frmMain& document = *desk_->create();
        bool cancel = false;
        emit document.imgxAction->Progress(0, "Blur", &cancel);
        QVERIFY(!document.isEnabled());
        QVERIFY(QGuiApplication::overrideCursor());
        desk_->progress.Cancelled = true; // the button, pressed within the pump
        emit document.imgxAction->Progress(40, "Blur", &cancel);
        QVERIFY(cancel);
        QVERIFY(document.isEnabled());
        QVERIFY(!QGuiApplication::overrideCursor());
        emit document.ImgX->Download(0, 0, &(cancel = false)); // of nothing: stopped, nothing said
        QVERIFY(cancel);
        QVERIFY(desk_->user.said().isEmpty());
        QVERIFY(!QGuiApplication::overrideCursor());
    }
};

QTEST_MAIN(Commands)
#include "commands.moc"
