// Opening and saving: the engine calls, what may be chosen, and what bad files and places do.
#include <QLabel>

#include "desk.h"
#include "document/alpha_masks.h"
#include "document/file_types.h"
#include "document/pages.h"

using namespace kvn;
using namespace kvn::test;

namespace {

const char openFilterText[] =
    "All Images|*.jpg;*.gif;*.bmp;*.png;*.psd;*.tif;*.pcx;*.tga;*.wbmp;*.wmf;*.emf;*.tla|Joint "
    "Photographic Experts Group  <JPG>|*.jpg|Graphics Interchange Format  <GIF>|*.gif|Windows "
    "Bitmap  <BMP>|*.bmp|Portable Network Graphics  <PNG>|*.png|Photoshop  <PSD>|*.psd|Tagged "
    "Image File  <TIF>|*.tif|ZSoft PaintBrush  <PCX>|*.pcx|Truevision Targa  <TGA>|*.tga|Wireless "
    "Bitmap  <WBMP>|*.wbmp|Windows Meta File  <WMF>|*.wmf|Windows Enhanced Meta File "
    "<EMF>|*.emf|All Files|*.*";
const char saveFilterText[] =
    "Joint Photographic Experts Group  <JPG>|*.jpg|Portable Network Graphics  <PNG>|*.png|"
    "Photoshop  <PSD>|*.psd|Tagged Image File  <TIF>|*.tif|ZSoft PaintBrush  <PCX>|*.pcx|"
    "Truevision Targa  <TGA>|*.tga|Wireless Bitmap  <WBMP>|*.wbmp|Windows Bitmap  <BMP>|*.bmp|"
    "Windows Metafile  <WMF>|*.wmf|Windows Enhanced Metafile  <EMF>|*.emf";

const char invalidImage[] = "Invalid Image|The image you selected is corrupt or not supported.";

const QStringList saveSettings{
    "ImgX ImgX.JpegQuality [75]",        "ImgX ImgX.JpegSmoothing [0]",
    "ImgX ImgX.JpegProgressive [false]", "ImgX ImgX.TiffCompression [0]",
    "ImgX ImgX.BmpRle [false]",          "ImgX ImgX.WmfPlaceable [true]"};

} // namespace

class Files : public QObject {
    Q_OBJECT

    std::unique_ptr<Desk> desk_;

  private slots:
    void init() { desk_ = std::make_unique<Desk>(); }
    void cleanup() { desk_.reset(); }

    void filtersStandAsTheyAre() {
        QCOMPARE(document::openFilter(), QString(openFilterText));
        QCOMPARE(document::saveFilter(), QString(saveFilterText));
    }

    void typeCodes() {
        const std::vector<std::pair<int, QString>> rows{
            {1, "jpg"}, {2, "png"},   {9, "psd"}, {3, "tif"}, {4, "pcx"},
            {5, "tga"}, {10, "wbmp"}, {6, "bmp"}, {7, "wmf"}, {8, "emf"}};
        const QStringList parts = document::saveFilter().split('|');
        for (std::size_t i = 0; i < rows.size(); ++i) {
            const auto type = document::FileTypeOfIndex(int(i) + 1);
            QCOMPARE(type.code, rows[i].first);
            QCOMPARE(QString(type.extension), rows[i].second);
            QCOMPARE(parts[2 * int(i) + 1], "*." + rows[i].second);
            const int row = rows[i].first == 8 ? 0 : int(i) + 1;
            QCOMPARE(document::rowOfFileType(rows[i].first), row);
        }
        for (const int none : {-1, 0, 11, 1000}) {
            QCOMPARE(document::FileTypeOfIndex(none).code, 0);
            QCOMPARE(QString(document::FileTypeOfIndex(none).extension), QString());
            QCOMPARE(document::rowOfFileType(none), 0);
        }
    }

    void loadRunsInOrder() {
        desk_->journal.clear();
        const QString path = desk_->tiff("pages.tif", 3);
        desk_->journal.clear();
        frmMain* document = desk_->open(path);
        QVERIFY(document);
        const QStringList calls = desk_->journal.engineCalls();
        const QStringList expected =
            QStringList{"Dialog Dialog.OpenMode [1]",
                        QString("Dialog Dialog.Filter [\"%1\"]").arg(openFilterText),
                        "Dialog Dialog.Flags [8392708]", // 0x801004
                        "Dialog Dialog.ShowOpen []",
                        QString("ImgX ImgX.SaveUndo [\"Load %1\"] -> Load %1").arg(path),
                        "ImgX Images.Clear [\"no undo\"]",
                        "ImgX Images.Add [\"@Dialog.Image\",0,0,\"no undo\"]",
                        "ImgX Images.Add [\"@Dialog.Image\",0,0,\"no undo\"]",
                        "ImgX Images.Add [\"@Dialog.Image\",0,0,\"no undo\"]",
                        "ImgX Images.Current [\"@ImgX\"]"} +
            saveSettings;
        QCOMPARE(calls.mid(calls.size() - expected.size()), expected);
        QCOMPARE(desk_->user.requests[0].flags, 0x801004u);
        QVERIFY(!desk_->user.requests[0].save);

        QCOMPARE(document->FilePath, path);
        QCOMPARE(document->windowTitle(), QString("pages.tif@100%"));
        QVERIFY(document->Saved);
        QVERIFY(document->IsTiff);
        QCOMPARE(document->TiffPath, path);
        QCOMPARE(document->ImgX->Images().Count(), 3);
        QCOMPARE(document->ImgX->Info().ListIndex(), 0);
        QCOMPARE(document->ImgX->Images().Item(2).Info().Width(), 12); // in the file's order
        QVERIFY(document->ImgX->Undos() > 0);
        QCOMPARE(document->ImgX->UndoLabel(), "Load " + path);
    }

    void badFilesDropTheWindow_data() {
        QTest::addColumn<QByteArray>("content");
        QTest::newRow("empty") << QByteArray();
        QTest::newRow("text") << QByteArray("not a picture");
        QTest::newRow("header only") << QByteArray("\x89PNG\r\n\x1a\n\0\0\0\rIHDR", 16);
        QTest::newRow("bitmap of no size") << QByteArray("BM") + QByteArray(60, '\0');
    }
    void badFilesDropTheWindow() {
        QFETCH(QByteArray, content);
        QVERIFY(!desk_->open(desk_->file("bad.png", content)));
        QCOMPARE(desk_->user.said(), QStringList{invalidImage});
        QVERIFY(!desk_->state.IsAnyOpened());
        QVERIFY(!desk_->state.Documents[0]);
        // Without a document the menus are back where they began.
        QCOMPARE(desk_->journal.all().last(), QString("EnDisMenuItems(False)"));
        // The program goes on, in the same slot.
        QVERIFY(desk_->open(desk_->picture("good.png")));
        QCOMPARE(desk_->host.ActiveForm()->DocIndex, qint16(0));
    }
    void missingFileIsAnInvalidImage() {
        QVERIFY(!desk_->open(desk_->path("gone.png")));
        QCOMPARE(desk_->user.said(), QStringList{invalidImage});
    }

    void cancelSaysNothing() {
        desk_->user.files.push_back({false, {}, 1});
        QVERIFY(!document::openDocument(desk_->services));
        QVERIFY(desk_->user.said().isEmpty());
        QVERIFY(!desk_->state.Documents[0]);
    }

    void droppedFilesReportTheBadOnesOnce() {
        const QString good = desk_->picture("a.png"), other = desk_->picture("b.bmp");
        const QString bad = desk_->file("c.jpg", "nothing");
        QCOMPARE(document::openFiles(desk_->services,
                                     {bad, good, desk_->folder.path(), other, "/nowhere/d.png"}),
                 2);
        QCOMPARE(desk_->host.shown.size(), std::size_t(2));
        const QStringList said = desk_->user.said();
        QCOMPARE(said.size(), 1);
        for (const QString& name : {bad, QString("/nowhere/d.png"), desk_->folder.path()})
            QVERIFY(said[0].contains(name));
        QVERIFY(!said[0].contains(good));
    }

    void saveWritesToThePathItCameFrom() {
        frmMain* document = desk_->open(desk_->picture("p.bmp"));
        document->ImgX->Info().ConvertType({}, 3);
        QVERIFY(!document->Saved);
        desk_->journal.clear();
        QVERIFY(document::runCommand(*document, "Save"));
        QCOMPARE(
            desk_->journal.engineCalls(),
            saveSettings +
                QStringList{QString("ImgX Export.Save [\"%1\",6,0,-1]").arg(document->FilePath)});
        QVERIFY(document->Saved);
        QVERIFY(QImage(document->FilePath).isGrayscale());
    }

    // A new picture, a type that cannot be written, a folder in the way: the box, nothing written.
    void saveFailuresAreReported_data() {
        QTest::addColumn<QString>("kind");
        for (const char* kind : {"new", "gif", "blocked"})
            QTest::newRow(kind) << kind;
    }
    void saveFailuresAreReported() {
        QFETCH(QString, kind);
        frmMain* document = nullptr;
        if (kind == "gif") {
            document = desk_->open(desk_->file(
                "g.gif",
                QByteArray::fromHex("47494638396101000100800000ff0000ffffff2c00000000010001"
                                    "000002024401003b")));
        } else if (kind == "blocked") {
            document = desk_->open(desk_->picture("p.png"));
            QVERIFY(QFile::remove(desk_->path("p.png")));
            QVERIFY(QDir(desk_->folder.path()).mkpath("p.png/x"));
        } else {
            document = desk_->create();
        }
        QVERIFY(document);
        document->Saved = false;
        QVERIFY(!document::runCommand(*document, "Save"));
        const QStringList said = desk_->user.said();
        QCOMPARE(said.size(), 1);
        QVERIFY(said[0].startsWith("|Error: "));
        QVERIFY(!document->Saved);
        if (kind == "gif") QCOMPARE(QFileInfo(desk_->path("g.gif")).size(), 35);
    }

    void saveAsLeavesThePath() {
        const QString from = desk_->picture("from.png"), to = desk_->path("to.jpg");
        frmMain* document = desk_->open(from);
        document->Saved = false;
        desk_->user.files.push_back({true, to, 1});
        desk_->journal.clear();
        QVERIFY(document::runCommand(*document, "SaveAs"));
        const QStringList expected =
            saveSettings + QStringList{"Dialog Dialog.OpenMode [0]",
                                       QString("Dialog Dialog.Filter [\"%1\"]").arg(saveFilterText),
                                       "Dialog Dialog.FilterIndex [2]",
                                       "Dialog Dialog.DefaultExt [\"png\"]",
                                       "Dialog Dialog.Flags [8388614]", // 0x800006
                                       "Dialog Dialog.ShowSave []",
                                       QString("ImgX Export.Save [\"%1\",1,0,-1]").arg(to)};
        QCOMPARE(desk_->journal.engineCalls(), expected);
        QVERIFY(document->Saved);
        QVERIFY(!document->SaveAsCancelled);
        QCOMPARE(document->FilePath, from);
        QCOMPARE(document->windowTitle(), QString("from.png@100%"));
        QCOMPARE(QImage(to).size(), QSize(32, 24));
        // A later Save goes where the file came from.
        desk_->journal.clear();
        QVERIFY(document::runCommand(*document, "Save"));
        QCOMPARE(desk_->journal.engineCalls().last(),
                 QString("ImgX Export.Save [\"%1\",2,0,-1]").arg(from));
    }

    // A type without a row takes the row of the last save dialog, whatever an open dialog did.
    void saveAsKeepsItsRow() {
        frmMain* document = desk_->create();
        const auto offered = [&](const engine::FileAnswer& answer) {
            desk_->user.files.push_back(answer);
            document::runCommand(*document, "SaveAs");
            const engine::FileRequest& request = desk_->user.requests.back();
            return QString("%1 %2").arg(request.filterIndex).arg(request.defaultExt);
        };
        QCOMPARE(offered({false, {}, 1}), QString("1 jpg"));
        QVERIFY(document->SaveAsCancelled);
        QVERIFY(!document->Saved);
        QCOMPARE(offered({true, desk_->path("n.bmp"), 8}), QString("1 jpg"));
        desk_->user.files.push_back({false, {}, 3});
        document::Images(*document, 6); // Add Image, cancelled
        QCOMPARE(desk_->user.requests.back().filterIndex, 1);
        QCOMPARE(desk_->user.requests.back().filter, QString(openFilterText));
        QCOMPARE(offered({false, {}, 1}), QString("8 bmp"));
    }

    void failedSaveAsCountsAsCancelled() {
        frmMain* document = desk_->create();
        desk_->user.files.push_back({true, "/proc/nowhere/x.png", 2});
        QVERIFY(!document::runCommand(*document, "SaveAs"));
        QVERIFY(document->SaveAsCancelled);
        QVERIFY(!document->Saved);
        QCOMPARE(desk_->user.said().size(), 1);
    }

    void urlLoadsIntoAHiddenWindow() {
        desk_->user.inputs = {"", "http://"};
        document::openUrl(desk_->services);
        document::openUrl(desk_->services);
        QVERIFY(desk_->state.Documents.empty());
        QCOMPARE(desk_->user.prompts,
                 QStringList({"Enter URL to open:|http://", "Enter URL to open:|http://"}));

        const QString url = "file://" + desk_->picture("u.png");
        desk_->user.inputs = {url};
        document::openUrl(desk_->services);
        QPointer<frmMain> hidden = desk_->state.Documents[0];
        QVERIFY(hidden && hidden->isHidden() && hidden->isEnabled());
        QCOMPARE(hidden->ImgX->Info().Width(), 32);
        QVERIFY(!desk_->state.IsAnyOpened());
        QCOMPARE(desk_->state.NextDocIndex, qint16(0));

        desk_->user.inputs = {"file:///nowhere.png"}; // nothing is said, and nothing is lost
        document::openUrl(desk_->services);
        QVERIFY(desk_->user.said().isEmpty());

        frmMain* document = desk_->open(desk_->picture("next.png", 50, 40));
        QCOMPARE(document, hidden.data()); // the slot is taken over
        QCOMPARE(document->ImgX->Images().Count(), 1);
        QCOMPARE(document->ImgX->Info().Width(), 50);
        QCOMPARE(desk_->state.NextDocIndex, qint16(1));
    }

    void alphaMasksAreListedOnce() {
        QDir(desk_->folder.path()).mkpath("AlphaMasks/folder.png");
        desk_->create();
        QVERIFY(!desk_->menus.item("mnuChannelsAlpha", 0).visible);
        desk_->picture("AlphaMasks/zebra.png");
        desk_->picture("AlphaMasks/a&b.bmp");
        desk_->file("AlphaMasks/readme.txt", "no picture");
        desk_->create();
        desk_->create();
        QVERIFY(desk_->menus.item("mnuChannelsAlpha", 0).visible);
        QCOMPARE(desk_->menus.groups["mnuChannelsAlphaAddMask"], std::pair(2, 2));
        QCOMPARE(desk_->menus.captions("mnuChannelsAlphaAddMask"),
                 QStringList({"a&&b.bmp", "zebra.png"}));
    }
};

QTEST_MAIN(Files)
#include "files.moc"
