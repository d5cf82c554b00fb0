// The frame from its start to its end: the load step, what may be used when, both ways out, and
// how commands find their documents.
#include "shell/frame.h"

#include <QCheckBox>
#include <QClipboard>
#include <QComboBox>
#include <QDragEnterEvent>
#include <QFileInfo>
#include <QLabel>
#include <QLineEdit>
#include <QMdiArea>
#include <QMdiSubWindow>
#include <QMimeData>
#include <QRadioButton>
#include <QTextEdit>
#include <QtTest>

#include "dialogs/frmDialog.h"
#include "document/report.h"
#include "shell/beside_program.h"
#include "shell/command_router.h"
#include "shell/frame_commands.h"
#include "shell/frame_place.h"
#include "shell/top_bar.h"

using namespace kvn;
using document::frmMain;
using test::Frame;

namespace {

void change(frmMain& form) {
    form.ImgX->Info().ConvertType(QString(), 3); // to grey
    QVERIFY(!form.Saved);
}

void pullDown(Frame& frame, const char* name) {
    emit frame.menus().menuOf(QString::fromLatin1(name))->aboutToShow();
}

} // namespace

class FrameTest : public QObject {
    Q_OBJECT

  private slots:
    void loadsInOrder();
    void startsWithDamagedSettings();
    void menusFollowTheDocuments();
    void editMenuShowsTheMoment();
    void imageMenusFollowTheActiveDocument();
    void closingAsksAllBeforeItClosesAny();
    void closingSavesOnYes();
    void exitAsksNothing();
    void doubleBufferOutOfStepWithoutDocument();
    void settingsWindowsAskAndStore();
    void viewSwitchesFlipTheirMarks();
    void downloadStaysHiddenUntilItsSlotIsTaken();
    void commandsFindTheirDocuments();
    void failuresAreReportedOnce();
    void toolsReachEveryDocument();
    void textFieldsKeepTheirKeys();
    void windowsListTileAndClose();
    void sizesToItsPictureAndClosesByItsKey();
    void opensByDoubleClickAndDrop();
    void remembersItsPlace();
    void coordinatesKeepClearOfThePanel();
    void keysReachEveryPart();
    void helpOpensWhatLiesBeside();
};

void FrameTest::loadsInOrder() {
    Frame frame;
    frame.store_("Double Buffer", QStringLiteral("False"));
    frame.store_("JPG Quaity", QStringLiteral("50"));
    frame.state.PenWidth = 9;
    frame.start();

    const auto calls = frame.engine.trace().records();
    QCOMPARE(calls.size(), std::size_t(1));
    QCOMPARE(calls[0].op, QStringLiteral("MyPrinter.Option1"));
    QCOMPARE(calls[0].args, QJsonArray{0});
    QCOMPARE(calls[0].doc, -1);

    QCOMPARE(frame.title, QStringLiteral("Kestrlvane"));
    QCOMPARE(frame.window->windowTitle(), QStringLiteral("OML Kestrel Vane"));
    QVERIFY(frame.window->isVisible());
    QVERIFY(frame.user.messages.empty()); // the missing splash file stops nothing
    QVERIFY(!frame.menus().action(QStringLiteral("mnumDraw"))->isVisible());
    QCOMPARE(frame.state.settings.JpgQuality, 50);
    QVERIFY(frame.state.settings.DoubleBuffer); // the menu's mark wins over what was stored
    QCOMPARE(frame.state.PenWidth, 1);
    QCOMPARE(frame.state.CurrentTool, 0);
}

void FrameTest::startsWithDamagedSettings() {
    Frame frame;
    frame.store_("JPG Quaity", QStringLiteral("abc"));
    frame.store_("Dither Error", QStringLiteral("7"));
    frame.start();
    QCOMPARE(frame.user.messages.size(), std::size_t(1));
    QVERIFY(frame.user.messages[0].text.startsWith(QStringLiteral("Error: ")));
    QCOMPARE(frame.state.settings.JpgQuality, 75);
    QCOMPARE(frame.state.settings.DitherError, 20);
    QVERIFY(!frame.menus().action(QStringLiteral("mnumDraw"))->isVisible());
}

void FrameTest::menusFollowTheDocuments() {
    Frame frame;
    frame.start();
    const QStringList before = frame.enabledItems();
    frmMain* form = frame.open("a.png");
    QVERIFY(form);
    // Everything is usable now, also what is disabled by design, but for the tags it lacks.
    for (const char* name : {"mnuSave", "mnuCut", "mnuCopy", "mnuUndo", "mnuClose"})
        QVERIFY2(frame.menus().isEnabled(QString::fromLatin1(name), -1), name);
    QVERIFY(frame.menus().isEnabled(QStringLiteral("mnuTransforms"), 13));
    QVERIFY(frame.menus().isEnabled(QStringLiteral("mnuTransforms"), 14));
    for (int row : {0, 1, 2})
        QVERIFY(!frame.menus().isEnabled(QStringLiteral("mnuMetadata"), row));
    QVERIFY(frame.menus().isEnabled(QStringLiteral("mnuMetadata"), 3));

    frame.choose("mnuClose");
    QCOMPARE(frame.windows().ActiveForm(), nullptr);
    QCOMPARE(frame.enabledItems(), before);
}

void FrameTest::editMenuShowsTheMoment() {
    Frame frame;
    frame.start();
    pullDown(frame, "mnumEdit");
    QVERIFY(!frame.menus().isEnabled(QStringLiteral("mnuUndo"), -1));

    frmMain* form = frame.open("a.png");
    QGuiApplication::clipboard()->clear();
    const auto enabled = [&](const char* name) {
        return frame.menus().isEnabled(QString::fromLatin1(name), -1);
    };
    frame.state.HasSelection = false;
    pullDown(frame, "mnumEdit");
    QVERIFY(!enabled("mnuCopy") && !enabled("mnuCut") && !enabled("mnuPaste"));

    change(*form);
    frame.state.HasSelection = true;
    QVERIFY(!enabled("mnuCopy")); // nothing happens until the menu is pulled down
    QImage image(3, 3, QImage::Format_RGB32);
    image.fill(Qt::red);
    QGuiApplication::clipboard()->setImage(image);
    pullDown(frame, "mnumEdit");
    QVERIFY(enabled("mnuCopy") && enabled("mnuCut") && enabled("mnuPaste"));
    QVERIFY(enabled("mnuUndo") && !enabled("mnuRedo"));
    form->ImgX->Undo();
    pullDown(frame, "mnumEdit");
    QVERIFY(enabled("mnuRedo"));
    form->Saved = true;
}

void FrameTest::imageMenusFollowTheActiveDocument() {
    Frame frame;
    frame.start();
    frmMain* first = frame.open("a.png");
    frmMain* second = frame.open("b.png");
    QCOMPARE(frame.windows().ActiveForm(), second);
    second->ImgX->Images().Clear(QString());
    for (const char* name : {"mnumTransforms", "mnumFilters", "mnumEffects", "mnumImages",
                             "mnumDraw", "mnumChannels", "mnumMetaData"})
        QVERIFY2(!frame.menus().isEnabled(QString::fromLatin1(name), -1), name);
    frame.windows().activate(first);
    QCOMPARE(frame.windows().ActiveForm(), first);
    QVERIFY(frame.menus().isEnabled(QStringLiteral("mnumFilters"), -1));
    frame.windows().activate(second);
    QVERIFY(!frame.menus().isEnabled(QStringLiteral("mnumFilters"), -1));
    pullDown(frame, "mnumImages");
    QVERIFY(frame.user.messages.empty());
    second->Saved = true;
    frame.choose("mnuClose"); // the next document becomes the active one
    QCOMPARE(frame.windows().ActiveForm(), first);
    QVERIFY(frame.menus().isEnabled(QStringLiteral("mnumFilters"), -1));
}

void FrameTest::closingAsksAllBeforeItClosesAny() {
    Frame frame;
    frame.start();
    for (const char* name : {"a.png", "b.png"})
        change(*frame.open(name));
    const QStringList before = frame.enabledItems();
    frame.state.settings.JpgQuality = 33;

    frame.user.answers = {dialogs::Answer::No, dialogs::Answer::Cancel};
    QVERIFY(!frame.window->close());
    QCOMPARE(frame.user.messages.size(), std::size_t(2));
    QVERIFY(frame.window->isVisible());
    QCOMPARE(frame.state.DocumentsOpen, std::vector<bool>({true, true}));
    QCOMPARE(frame.windows().shown().size(), std::size_t(2));
    QCOMPARE(frame.enabledItems(), before);
    QCOMPARE(frame.stored("JPG Quaity"), QStringLiteral("(none)"));
    QVERIFY(!frame.endedSoon);

    frame.user.messages.clear();
    frame.user.answers = {dialogs::Answer::No, dialogs::Answer::No};
    QVERIFY(frame.window->close());
    QCOMPARE(frame.user.messages.size(), std::size_t(2));
    QCOMPARE(frame.stored("JPG Quaity"), QStringLiteral("33"));
    QVERIFY(frame.endedSoon && !frame.endedNow);
    QVERIFY(!frame.state.IsAnyOpened());
}

void FrameTest::closingSavesOnYes() {
    Frame frame;
    frame.start();
    change(*frame.open("a.png", 32, 24));
    frame.user.answers = {dialogs::Answer::Yes};
    const bool closed = frame.window->close();
    QVERIFY2(closed, qPrintable(frame.user.said().join(u'\n')));
    QVERIFY(QImage(frame.folder.filePath("a.png")).isGrayscale());
    QVERIFY(frame.endedSoon);
}

void FrameTest::exitAsksNothing() {
    Frame frame;
    frame.start();
    change(*frame.open("a.png"));
    frame.choose("mnuExit");
    QVERIFY(frame.endedNow && !frame.endedSoon);
    QVERIFY(frame.user.messages.empty());
    QCOMPARE(frame.stored("JPG Quaity"), QStringLiteral("(none)"));
    frame.windows().ActiveForm()->Saved = true;
}

// Without a document the setting flips and its mark does not.
void FrameTest::doubleBufferOutOfStepWithoutDocument() {
    Frame frame;
    frame.start();
    const auto marked = [&] { return frame.menus().isChecked(QStringLiteral("mnuSettings"), 3); };
    frame.choose("mnuSettings", 3);
    QVERIFY(marked());
    QVERIFY(!frame.state.settings.DoubleBuffer);
    frame.choose("mnuSettings", 3);
    QVERIFY(!marked());
    QVERIFY(frame.state.settings.DoubleBuffer);
    frame.open("a.png");
    frame.engine.trace().clear();
    frame.choose("mnuSettings", 3);
    QVERIFY(marked());
    QVERIFY(frame.state.settings.DoubleBuffer);
    QCOMPARE(frame.engine.trace().records().back().op, QStringLiteral("ImgX.DoubleBuffer"));
    QVERIFY(frame.window->close());
    QCOMPARE(frame.stored("Double Buffer"), QStringLiteral("True"));
}

void FrameTest::settingsWindowsAskAndStore() {
    using dialogs::frmDialog;
    Frame frame;
    frame.start();
    document::Settings& settings = frame.state.settings;
    QStringList titles;
    const auto answer = [&](int row, const std::function<void(frmDialog&)>& edit) {
        frame.user.inDialog = [&titles, edit](frmDialog& dialog) {
            titles += dialog.windowTitle();
            edit(dialog);
        };
        frame.choose("mnuSettings", row);
    };
    frame.open("a.png");
    frame.engine.trace().clear();
    answer(0, [](frmDialog& dialog) {
        QCOMPARE(dialog.number(0), 75.0);
        QCOMPARE(dialog.cmbCombo(3)->itemText(4), QStringLiteral("Packbits"));
        dialog.txtText(0)->setText("1000"); // the label's range is advice
        dialog.chkCheck(2)->setChecked(true);
        dialog.cmbCombo(3)->setCurrentIndex(6);
    });
    QCOMPARE(settings.JpgQuality, qint16(1000));
    QVERIFY(settings.JpgProgressive && settings.WmfPlaceable && !settings.BmpRle);
    QCOMPARE(settings.TiffCompression, qint16(6));
    QCOMPARE(frame.engine.trace().records().front().args, QJsonArray{1000});

    frame.user.said();
    answer(0, [](frmDialog& dialog) {
        dialog.txtText(0)->setText("40000");
        dialog.chkCheck(4)->setChecked(true);
    });
    QCOMPARE(frame.user.said().size(), 1); // does not fit: reported, and nothing is stored
    QVERIFY(settings.JpgQuality == 1000 && !settings.BmpRle);

    answer(1, [](frmDialog& dialog) {
        QVERIFY(dialog.isChecked(1));
        dialog.optOption(0)->setChecked(true);
        dialog.chkCheck(3)->setChecked(false);
    });
    QVERIFY(!settings.AlphaDisplayChecker && !settings.FlattenAlphaOnSave);
    QCOMPARE(settings.BackgroundColor, 16777215);
    answer(2, [](frmDialog& dialog) {
        dialog.txtText(0)->setText("7");
        dialog.Cancelled = true;
    });
    QCOMPARE(settings.DitherError, qint16(20));
    QCOMPARE(titles, QStringList({"Image Save Settings", "Image Save Settings",
                                  "Alpha Display Settings", "Max Dither Error"}));
}

void FrameTest::viewSwitchesFlipTheirMarks() {
    Frame frame;
    frame.start();
    frame.open("a.png");
    for (const char* name : {"mnuZoomWindow", "mnuAntialias", "mnuEffectsDitherPalette"}) {
        const QString item = QString::fromLatin1(name);
        const bool before = frame.menus().isChecked(item, -1);
        frame.choose(name);
        QVERIFY2(frame.menus().isChecked(item, -1) != before, name);
        frame.choose(name);
        QVERIFY2(frame.menus().isChecked(item, -1) == before, name);
    }
}

// The picture of "Open from URL" arrives in a window that no one sees; the next command uses it.
void FrameTest::downloadStaysHiddenUntilItsSlotIsTaken() {
    Frame frame;
    frame.start();
    frame.user.inputs.push_back(QUrl::fromLocalFile(frame.picture("u.png")).toString());
    frame.choose("mnuOpenURL");
    QVERIFY(frame.windows().shown().empty());
    QCOMPARE(frame.windows().ActiveForm(), nullptr);
    QVERIFY(!frame.state.IsAnyOpened());
    frmMain* form = frame.open("a.png");
    QCOMPARE(form->DocIndex, 0);
    QCOMPARE(frame.windows().shown().size(), std::size_t(1));
}

namespace {
QStringList visited;
void visit(frmMain& form, int index) {
    visited.append(QStringLiteral("%1:%2").arg(form.DocIndex).arg(index));
}
void fail(frmMain&, int) {
    throw RuntimeError(errors::overflow, "Overflow", "Test");
}
void exhaust(frmMain&, int) {
    throw std::bad_alloc();
}
constexpr document::Command testCommands[] = {
    {"TestVisit", visit}, {"TestFail", fail}, {"TestExhaust", exhaust}};

void run(Frame& frame, shell::menu::Route route, const char* member, int index = -1) {
    const shell::menu::Item item =
        shell::menu::command(route, "mnuTest", index, "Test").calls(member);
    const shell::FrameCommands none(
        {frame.window->services(), frame.menus(), frame.windows(), {}, {}});
    shell::CommandRouter(frame.window->services(), none).run(item);
}
} // namespace

void FrameTest::commandsFindTheirDocuments() {
    using shell::menu::Route;
    Frame frame;
    frame.state.commands.add(testCommands);
    frame.start();
    visited.clear();
    frmMain* first = frame.open("a.png");
    frame.open("b.png");
    frame.open("c.png");
    frame.windows().activate(first);
    run(frame, Route::Active, "TestVisit", 4);
    QCOMPARE(visited, QStringList{"0:4"});
    visited.clear();
    frame.windows().close(frame.state.Documents[1]);
    run(frame, Route::All, "TestVisit", 2);
    QCOMPARE(visited, QStringList({"0:2", "2:2"}));
    visited.clear();
    run(frame, Route::Active, "TestVisit");
    QCOMPARE(visited, QStringList{"0:-1"});
}

void FrameTest::failuresAreReportedOnce() {
    using shell::menu::Route;
    Frame frame;
    frame.state.commands.add(testCommands);
    frame.start();
    run(frame, Route::Active, "TestVisit"); // no document to run it on
    QCOMPARE(frame.user.said().size(), 1);
    frame.open("a.png");
    run(frame, Route::Active, "TestFail");
    QCOMPARE(frame.user.said(), QStringList{"|Error: Overflow\nSource: Test"});
    run(frame, Route::Active, "TestExhaust");
    QCOMPARE(frame.user.said().size(), 1);
    run(frame, Route::Active, "NoSuchMember");
    QCOMPARE(frame.user.said().size(), 1);
    QVERIFY(frame.window->isVisible());
}

void FrameTest::toolsReachEveryDocument() {
    Frame frame;
    frame.start();
    const auto click = [&](int tool) {
        frame.window->findChild<QAbstractButton*>(QStringLiteral("cmd(%1)").arg(tool))->click();
    };
    const auto pressed = [&](int tool) {
        return frame.window->findChild<QAbstractButton*>(QStringLiteral("cmd(%1)").arg(tool))
            ->isChecked();
    };
    click(7);
    QCOMPARE(frame.state.CurrentTool, 7);
    QVERIFY(pressed(7));
    frmMain* first = frame.open("a.png"); // a new document returns to the start-up tool
    QCOMPARE(frame.state.CurrentTool, 0);
    QVERIFY(!pressed(7));
    frmMain* second = frame.open("b.png");
    click(19); // cropping drags a region
    QCOMPARE(first->ImgX->ToolMode(), 1);
    QCOMPARE(second->ImgX->ToolMode(), 1);
    QVERIFY(pressed(19));
    click(19); // a second click keeps it
    QVERIFY(pressed(19));
    frame.window->SelectTool(99);
    QCOMPARE(frame.state.CurrentTool, 19);
}

void FrameTest::textFieldsKeepTheirKeys() {
    Frame frame;
    frame.start();
    frmMain* form = frame.open("a.png");
    change(*form);
    QLineEdit field(frame.window.get());
    field.show();
    field.setFocus();
    QTRY_VERIFY(field.hasFocus());
    QTest::keyClicks(&field, QStringLiteral("12"));
    QTest::keyClick(&field, Qt::Key_Z, Qt::ControlModifier);
    QTest::keyClick(&field, Qt::Key_A, Qt::ControlModifier);
    QTest::keyClick(&field, Qt::Key_Delete);
    QCOMPARE(field.text(), QString());
    QCOMPARE(form->ImgX->Redos(), 0);
    QCOMPARE(form->ImgX->Info().TypeIndex(), 3);
    form->Saved = true;
}

void FrameTest::windowsListTileAndClose() {
    Frame frame;
    frame.start();
    for (const char* name : {"a.png", "b&c.png", "d.png"})
        frame.open(name, 3000, 2000);
    const QRect room = frame.windows().area().viewport()->rect();
    const auto frameOf = [](frmMain* form) { return form->parentWidget()->geometry(); };
    for (frmMain* form : frame.windows().shown())
        QVERIFY(room.contains(frameOf(form)));

    const auto listed = [&] {
        QList<QAction*> list = frame.menus().menuOf(QStringLiteral("mnuWindow"))->actions();
        list.removeIf([](const QAction* item) {
            return !item->objectName().startsWith(QStringLiteral("mnuWindowList"));
        });
        return list;
    };
    const QList<QAction*> list = listed();
    QCOMPARE(list.size(), 3);
    QVERIFY(list[1]->text().contains(QStringLiteral("b&&c.png")));
    QVERIFY(list[2]->isChecked());
    list[0]->trigger();
    QCOMPARE(frame.windows().ActiveForm()->DocIndex, 0);

    frame.choose("ArrHorizontal");
    QRegion covered;
    for (frmMain* form : frame.windows().shown()) {
        QCOMPARE(frameOf(form).width(), room.width());
        covered += frameOf(form);
    }
    QCOMPARE(covered.boundingRect(), room);
    frame.choose("ArrVertival");
    for (frmMain* form : frame.windows().shown())
        QCOMPARE(frameOf(form).height(), room.height());

    frame.choose("Cascade");
    QCOMPARE(frameOf(frame.windows().shown()[1]).topLeft(), QPoint(0, 0));
    for (frmMain* form : frame.windows().shown())
        QVERIFY(room.contains(frameOf(form)));

    // Neither of these takes a window off the list.
    auto* window = static_cast<QMdiSubWindow*>(frame.windows().ActiveForm()->parentWidget());
    for (const auto show :
         {&QWidget::showMaximized, &QWidget::showMinimized, &QWidget::showNormal}) {
        (window->*show)();
        QCOMPARE(frame.windows().shown().size(), std::size_t(3));
    }

    // Closed by its own button, the document is gone for everyone at once.
    QPointer<frmMain> closing = frame.windows().ActiveForm();
    QVERIFY(static_cast<QMdiSubWindow*>(closing->parentWidget())->close());
    QVERIFY(frame.windows().ActiveForm() != closing);
    QTRY_VERIFY(closing.isNull());
    QCOMPARE(listed().size(), 2);
}

void FrameTest::sizesToItsPictureAndClosesByItsKey() {
    Frame frame;
    frame.start();
    frame.open("a.png");
    frame.open("b.png", 500, 300);
    // Shown whole, and the window is as its document wants it.
    const frmMain* form = frame.state.Documents[1];
    QCOMPARE(form->size(), form->sizeHint());
    QVERIFY(form->ImgX->ClientWidth() >= 500 && form->ImgX->ClientHeight() >= 300);
    frame.window->activateWindow();
    QVERIFY(QTest::qWaitForWindowActive(frame.window.get()));
    QTest::keyClick(frame.window.get(), Qt::Key_W, Qt::ControlModifier);
    QCOMPARE(frame.windows().shown().size(), std::size_t(1));
    QCOMPARE(frame.windows().ActiveForm()->DocIndex, 0);
}

void FrameTest::opensByDoubleClickAndDrop() {
    Frame frame;
    frame.start();
    frame.user.files.push_back({true, frame.picture("a.png"), 1});
    QTest::mouseDClick(frame.windows().area().viewport(), Qt::LeftButton);
    QCOMPARE(frame.windows().shown().size(), std::size_t(1));

    QMimeData data;
    data.setUrls({QUrl::fromLocalFile(frame.picture("b.png")),
                  QUrl::fromLocalFile(frame.folder.filePath("missing.png")),
                  QUrl::fromLocalFile(frame.picture("c.png"))});
    QDragEnterEvent enter(QPoint(50, 50), Qt::CopyAction, &data, Qt::LeftButton, Qt::NoModifier);
    QCoreApplication::sendEvent(frame.window.get(), &enter);
    QVERIFY(enter.isAccepted());
    QDropEvent drop(QPointF(50, 50), Qt::CopyAction, &data, Qt::LeftButton, Qt::NoModifier);
    QCoreApplication::sendEvent(frame.window.get(), &drop);
    QTRY_COMPARE(frame.windows().shown().size(), std::size_t(3));
    QCOMPARE(frame.user.messages.size(), std::size_t(1));
}

void FrameTest::remembersItsPlace() {
    Frame frame;
    frame.start();
    frame.window->setGeometry(30, 40, 500, 400);
    QVERIFY(frame.window->close());
    QWidget other;
    shell::restoreFramePlace(other);
    QCOMPARE(other.size(), QSize(500, 400));
    // A damaged file gives a usable frame.
    QFile file(frame.folder.filePath("kestrelvane/frame"));
    QVERIFY(file.open(QIODevice::WriteOnly));
    file.write("?????");
    file.close();
    QWidget third;
    shell::restoreFramePlace(third);
    QVERIFY(third.width() >= 300 && third.height() >= 300);
}

void FrameTest::coordinatesKeepClearOfThePanel() {
    QCOMPARE(shell::coordsLeft(800, 100, 300), 700);
    QCOMPARE(shell::coordsLeft(800, 100, 700), 700);
    QCOMPARE(shell::coordsLeft(800, 100, 750), 750); // pushed out, never over the panel
    Frame frame;
    frame.start();
    QCOMPARE(frame.window->findChild<QLabel*>(QStringLiteral("lblCoords"))->text(),
             QStringLiteral("0, 0"));
    frame.window->UpdateStatus("12", "7", "300", "200");
    QCOMPARE(frame.window->findChild<QLabel*>(QStringLiteral("lblCoords"))->text(),
             QStringLiteral("12,7"));
    QCOMPARE(frame.window->findChild<QLabel*>(QStringLiteral("lblArea"))->text(),
             QStringLiteral("300,200"));
}

// Tab stays within a document; F6 goes round the parts of the frame.
void FrameTest::keysReachEveryPart() {
    Frame frame;
    frame.start();
    frmMain* form = frame.open("a.png");
    frame.window->activateWindow();
    QVERIFY(QTest::qWaitForWindowActive(frame.window.get()));
    form->setFocus();
    const auto within = [&](const char* name) {
        return frame.window->findChild<QWidget*>(QString::fromLatin1(name))
            ->isAncestorOf(QApplication::focusWidget());
    };
    for (const char* part : {"LeftBar", "TopBar", "MDIClient", "LeftBar"}) {
        QTest::keyClick(frame.window.get(), Qt::Key_F6);
        QVERIFY2(within(part), part);
    }
    QTest::keyClick(frame.window.get(), Qt::Key_F6, Qt::ShiftModifier);
    QVERIFY(form->ImgX->hasFocus());
}

void FrameTest::helpOpensWhatLiesBeside() {
    Frame frame;
    QCOMPARE(shell::manualFile(frame.state), QStringLiteral("manual/index.html"));
    QFile file(frame.folder.filePath("kvn.chm"));
    QVERIFY(file.open(QIODevice::WriteOnly));
    QCOMPARE(shell::manualFile(frame.state), QStringLiteral("kvn.chm"));
}

QTEST_MAIN(FrameTest)
#include "frame.moc"
