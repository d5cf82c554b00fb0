// A document window: its set-up, its size, New Image, zoom and title, the read-out, the region.
#include <QContextMenuEvent>
#include <QLabel>
#include <QScrollBar>
#include <cmath>

#include "desk.h"
#include "document/file_types.h"
#include "document/view.h"

using namespace kvn;
using namespace kvn::test;

class Window : public QObject {
    Q_OBJECT

    std::unique_ptr<Desk> desk_;

    static QStringList setUp(const QString& before, const QStringList& pen, const QString& after) {
        QStringList calls{"skin picBottom 'Toolbar'", "skin lblStatus 'Toolbar2'",
                          "Dialog Dialog.OpenMode [1]", "ImgX ImgX.UndoEnabled [true]",
                          "ImgX ImgX.UndoDepth [25]"};
        if (!before.isEmpty()) calls += before;
        calls += pen;
        calls += {"ImgX ImgX.DisplayOptionA [2]", "ImgX ImgX.DisplayOptionB [4]"};
        calls += "ImgX ImgX.BackColor [16777215]";
        calls += "ScratchImage Import.FromBytes";
        calls += "ImgX ImgX.Backdrop [\"@ScratchImage\"]";
        calls += "SelectTool(0)";
        if (!after.isEmpty()) calls += after;
        return calls;
    }
    // The journal of a new window, the size of the backdrop's file left out.
    QStringList setUpCalls() const {
        QStringList calls = desk_->journal.all();
        for (QString& call : calls)
            if (call.startsWith("ScratchImage Import.FromBytes"))
                call = "ScratchImage Import.FromBytes";
        return calls.mid(0, calls.indexOf("SelectTool(0)") + 2);
    }

  private slots:
    void init() { desk_ = std::make_unique<Desk>(); }
    void cleanup() { desk_.reset(); }

    void setUpRunsInOrder() {
        const QStringList pen{"ImgX Draw.Antialias [1]", "ImgX Draw.Width [1]",
                              "ImgX Draw.LineStyle [0]", "ImgX Draw.FillStyle [-1]",
                              "ImgX Draw.TextureMode [2]"};
        QVERIFY(desk_->create());
        QCOMPARE(setUpCalls().mid(0, 17), setUp("ImageMenusEnabled(False)", pen, {}));

        // The second window takes the pen as it is now, and a document is open already.
        static int texture = -1;
        static constexpr document::Command preset[] = {
            {"DrawTextureEx", [](frmMain&, int index) { texture = index; }}};
        desk_->state.commands.add(preset);
        desk_->state.PenTexturePreset = 2;
        desk_->state.PenWidth = 7;
        desk_->state.PenFillStyle = 6;
        desk_->journal.clear();
        QVERIFY(desk_->create());
        const QStringList changed{"ImgX Draw.Antialias [1]", "ImgX Draw.Width [7]",
                                  "ImgX Draw.LineStyle [0]", "ImgX Draw.FillStyle [6]",
                                  "ImgX Draw.TextureMode [2]"};
        QCOMPARE(setUpCalls(), setUp({}, changed, "ImageMenusEnabled(True)"));
        QCOMPARE(texture, 2);
    }

    void everyControlHasItsName() {
        frmMain* document = desk_->create();
        for (const char* name : {"picImgX", "ImgX", "ImgXBuffer", "imgxAction", "TextInput",
                                 "TextInput2", "picBottom", "lblStatus", "picPixelColor"})
            QVERIFY2(document->findChild<QWidget*>(name), name);
        QCOMPARE(document->ImgX->accessibleName(), QString("Canvas"));
        for (const char* hidden : {"ImgXBuffer", "imgxAction", "TextInput", "TextInput2"})
            QVERIFY2(!document->findChild<QWidget*>(hidden)->isVisible(), hidden);
    }

    void layoutFollowsTheWindow() {
        frmMain* document = desk_->create();
        const int strip = document->picBottom->height();
        QVERIFY(strip > 0);
        document->resize(300, 200);
        QCOMPARE(document->ImgX->geometry(), QRect(0, 0, 299, 200 - strip - 2));
        QCOMPARE(document->picBottom->geometry(), QRect(0, 200 - strip, 300, strip));
        document->resize(1, 5);
        QCOMPARE(document->ImgX->size(), QSize(0, 0));
    }

    void sizedToItsPicture() {
        frmMain* document = desk_->create("123", "77");
        document->resize(document->sizeHint());
        QVERIFY(!document->ImgX->horizontalScrollBar()->isVisible());
        QVERIFY(!document->ImgX->verticalScrollBar()->isVisible());
        QVERIFY(document->ImgX->ClientWidth() >= 123 && document->ImgX->ClientWidth() < 140);
        QVERIFY(document->ImgX->ClientHeight() >= 77 && document->ImgX->ClientHeight() < 94);
    }

    void newImageAsksFiveRows() {
        QStringList labels;
        desk_->user.inDialog = [&](dialogs::frmDialog& dialog) {
            QCOMPARE(dialog.windowTitle(), QString("New Image"));
            for (int i = 0; i < dialog.ControlCount(); ++i)
                labels += dialog.lblLabel(i)->text();
            QCOMPARE(dialog.number(0), 640.0);
            QCOMPARE(dialog.number(1), 480.0);
            QCOMPARE(dialog.color(2), 0xFFFFFFu);
            QCOMPARE(dialog.number(3), 255.0);
            QCOMPARE(dialog.listIndex(4), 5);
            QCOMPARE(dialog.cmbCombo(4)->count(), 7);
            QCOMPARE(dialog.cmbCombo(4)->itemText(4), QString("16-bit Grayscale w/ Alpha"));
            dialog.cmdColor(2)->setBackColor(0x332211);
        };
        QVERIFY(document::newDocument(desk_->services));
        QCOMPARE(labels,
                 QStringList({"Width:", "Height:", "Background Color:", "Alpha:", "Image Type:"}));
        QVERIFY(desk_->journal.all().contains(
            "ImgX Import.New [640,480,\"#112233ff\",5,\"\"] -> New Image"));
        QCOMPARE(desk_->host.ActiveForm()->windowTitle(), QString("@100%"));
        QVERIFY(!desk_->host.ActiveForm()->Saved);
    }

    // A refused picture reports once, and the slot is free as after Cancel.
    void newImageRefuses_data() {
        QTest::addColumn<QString>("width");
        QTest::addColumn<QString>("alpha");
        QTest::newRow("no width") << "0"
                                  << "255";
        QTest::newRow("text") << "abc"
                              << "255";
        QTest::newRow("negative") << "-5"
                                  << "255";
        QTest::newRow("too wide for a number") << "1e12"
                                               << "255";
        QTest::newRow("too large for memory") << "2000000000"
                                              << "255";
        QTest::newRow("alpha too large") << "40"
                                         << "300";
        QTest::newRow("alpha negative") << "40"
                                        << "-1";
    }
    void newImageRefuses() {
        QFETCH(QString, width);
        QFETCH(QString, alpha);
        QVERIFY(!desk_->create(width, "2000000000", alpha));
        const QStringList said = desk_->user.said();
        QCOMPARE(said.size(), 1);
        QVERIFY2(said[0].startsWith("|Error: ") && said[0].contains("\nSource: "),
                 qPrintable(said[0]));
        QVERIFY(!desk_->state.IsAnyOpened());
        QCOMPARE(desk_->state.NextDocIndex, qint16(0));
        QVERIFY(!desk_->state.Documents[0]);
    }

    void zoomSteps() {
        frmMain& document = *desk_->create();
        engine::ImgX& canvas = *document.ImgX;
        document::ZoomIn(document);
        QCOMPARE(canvas.Zoom(), 1.25);
        QCOMPARE(document.windowTitle(), QString("@125.%"));
        document::ZoomIn(document);
        QCOMPARE(document.windowTitle(), QString("@156.3%"));
        for (int i = 0; i < 20; ++i)
            document::ZoomIn(document);
        QVERIFY(std::abs(canvas.Zoom() - 18.1899) < 1e-4); // one step beyond the limit
        document::SetZoomValue(document, 100);
        QVERIFY(canvas.Zoom() > 18); // out of reach from there
        canvas.setZoom(1);
        for (int i = 0; i < 30; ++i)
            document::ZoomOut(document);
        QVERIFY(std::abs(canvas.Zoom() - 0.004228) < 1e-6);
        QCOMPARE(document.windowTitle(), QString("@.4%"));
        canvas.setZoom(1);
        document::SetZoomValue(document, 2000);
        QCOMPARE(canvas.Zoom(), 20.0);
    }

    void wheelZoom_data() {
        QTest::addColumn<double>("from");
        QTest::addColumn<double>("distance");
        QTest::addColumn<double>("to");
        QTest::newRow("one notch in") << 1.0 << 3.0 << 1.1;
        QTest::newRow("one notch out") << 1.0 << -3.0 << 0.9;
        QTest::newRow("lands beyond") << 15.0 << 3.0 << 15.0;
        QTest::newRow("lands within") << 17.0 << -3.0 << 15.3;
        QTest::newRow("raised to one percent") << 0.01 << -3.0 << 0.01;
        QTest::newRow("too small") << 0.005 << -3.0 << 0.005;
        QTest::newRow("would turn round") << 1.0 << -33.0 << 1.0;
    }
    void wheelZoom() {
        QFETCH(double, from);
        QFETCH(double, distance);
        QFETCH(double, to);
        frmMain& document = *desk_->create();
        document.ImgX->setZoom(from);
        emit document.ImgX->MouseWheel(distance);
        QVERIFY(std::abs(document.ImgX->Zoom() - to) < 1e-9);
    }

    void fitIsOneShot() {
        frmMain& document = *desk_->create();
        desk_->journal.clear();
        document::ZoomType(document, 2);
        document::ZoomType(document, 0);
        QCOMPARE(desk_->journal.engineCalls(),
                 QStringList({"ImgX ImgX.FitEnabled [true]", "ImgX ImgX.ZoomFit [2]",
                              "ImgX ImgX.FitEnabled [false]", "ImgX ImgX.FitEnabled [false]"}));
    }

    void keysZoomAndRaiseTheRegion() {
        frmMain& document = *desk_->create();
        emit document.ImgX->KeyDown(187, 2);
        QCOMPARE(document.ImgX->Zoom(), 1.25);
        QVERIFY(document.ImgX->HasRegion());
        document.ImgX->setHasRegion(false);
        emit document.ImgX->KeyDown(109, 2);
        QCOMPARE(document.ImgX->Zoom(), 0.9375);
        document.ImgX->setHasRegion(false);
        emit document.ImgX->KeyDown(187, 3); // shift as well: another shortcut
        emit document.ImgX->KeyUp(65, 0);
        QCOMPARE(document.ImgX->Zoom(), 0.9375);
        QVERIFY(!document.ImgX->HasRegion());
    }

    void titleShowsTheNameAsItIs() {
        frmMain* document = desk_->open(desk_->picture("a[*]b.png"));
        QVERIFY(document);
        QCOMPARE(document->windowTitle(), QString("a[*][*]b.png@100%")); // shown as "a[*]b.png"
        document->ImgX->setZoom(0.5);
        QCOMPARE(document->windowTitle(), QString("a[*][*]b.png@50.%"));
    }

    void readOut() {
        frmMain* document = desk_->open(desk_->picture("p.png"));
        emit document->ImgX->ImageMouseMove(0, 0, 12, 7);
        const QString expected = "X:12      Y:7       Pal:0     R:96   G:70   B:40   A:255   "
                                 "ColorDepth: 24bpp";
        QCOMPARE(document->lblStatus->text(), expected);
        QCOMPARE(desk_->rules.status, QStringList({"12", "7", "32", "24"}));
        QCOMPARE(document->picPixelColor->palette().color(QPalette::Window), QColor(96, 70, 40));
        // Beside the picture the last read-out stands.
        for (const QPoint& outside : {QPoint(-1, 3), QPoint(32, 3), QPoint(3, 24)}) {
            emit document->ImgX->ImageMouseMove(0, 0, outside.x(), outside.y());
            QCOMPARE(document->lblStatus->text(), expected);
        }
        QVERIFY(desk_->user.said().isEmpty());
    }

    void regionIsCopiedForCommands() {
        frmMain* document = desk_->create();
        document::ProgramState& state = desk_->state;
        emit document->ImgX->RegionChanged(3, 4, 2, 2);
        QVERIFY(!state.HasSelection);
        emit document->ImgX->RegionChanged(3, 4, 1, 3);
        QVERIFY(state.HasSelection);
        QCOMPARE(state.SelLeft, 3.0);
        QCOMPARE(state.SelTop, 4.0);
        QCOMPARE(state.SelWidth, 1.0);
        QCOMPARE(state.SelHeight, 3.0);
        emit document->ImgX->MouseDown(2, 0, 1, 1);
        QVERIFY(state.HasSelection);
        emit document->ImgX->MouseDown(1, 0, 1, 1);
        QVERIFY(!state.HasSelection);
    }

    // The right button opens the menu only with tools that have no other use for it.
    void contextMenuWhereTheButtonIsFree() {
        frmMain* document = desk_->create();
        const auto opens = [&](int tool, int mode) {
            desk_->menus.poppedUp.clear();
            desk_->state.CurrentTool = qint16(tool);
            document->ImgX->setToolMode(mode);
            emit document->ImgX->MouseDown(1, 0, 5, 5);
            emit document->ImgX->MouseDown(2, 0, 5, 5);
            return desk_->menus.poppedUp == QStringList{"mnumEffects"};
        };
        QVERIFY(opens(0, 0) && opens(1, 2) && opens(16, 0) && opens(17, 0));
        QVERIFY(!opens(2, 1) && !opens(11, 11) && !opens(15, 0));
        QVERIFY(!desk_->menus.isEnabled("mnuEffectsCrop", 0)); // readied for this picture
        desk_->menus.poppedUp.clear();
        QContextMenuEvent key(QContextMenuEvent::Keyboard, QPoint(1, 1), QPoint(1, 1));
        QCoreApplication::sendEvent(document->ImgX, &key);
        QCOMPARE(desk_->menus.poppedUp, QStringList{"mnumEffects"});
    }

    void toolsSetModeAndPointer_data() {
        QTest::addColumn<int>("tool");
        QTest::addColumn<QStringList>("calls");
        const auto mode = [](int value) {
            return QStringList{QString("ImgX ImgX.ToolMode [%1]").arg(value)};
        };
        const QStringList own{"ImgX ImgX.MousePointer [99]", "ImgX ImgX.MouseIcon [null]"};
        QTest::newRow("start") << 0 << own;
        QTest::newRow("hand") << 1 << mode(2);
        QTest::newRow("select") << 2 << mode(1);
        QTest::newRow("zoom") << 3 << mode(4);
        QTest::newRow("zoom box") << 4 << mode(3);
        QTest::newRow("passed on") << 6 << mode(6);
        QTest::newRow("pen") << 11 << mode(11);
        QTest::newRow("text") << 15 << own;
        QTest::newRow("fill") << 17 << own;
        QTest::newRow("none") << 13 << QStringList();
        QTest::newRow("far off") << 4000 << QStringList();
    }
    void toolsSetModeAndPointer() {
        QFETCH(int, tool);
        QFETCH(QStringList, calls);
        frmMain* document = desk_->create();
        desk_->journal.clear();
        document->SetCurrTool(tool);
        QCOMPARE(desk_->journal.engineCalls(),
                 QStringList({"ImgX ImgX.ToolMode [0]", "ImgX ImgX.MousePointer [1]"}) + calls);
    }
};

QTEST_MAIN(Window)
#include "window.moc"
