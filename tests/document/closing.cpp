// The prompts that keep changes, both ways a document ends, and the slots they leave.
#include "desk.h"

using namespace kvn;
using namespace kvn::test;
using dialogs::Answer;

namespace {

const char newFilePrompt[] = "| This new file is not saved, save it?";

} // namespace

class Closing : public QObject {
    Q_OBJECT

    std::unique_ptr<Desk> desk_;

    frmMain* changed(const QString& name) {
        frmMain* document = desk_->open(desk_->picture(name));
        document->ImgX->Info().ConvertType({}, 3);
        return document;
    }
    QString prompt(const frmMain* document) const {
        return "|File '" + document->FilePath + "' is not saved, save it?";
    }

  private slots:
    void init() { desk_ = std::make_unique<Desk>(); }
    void cleanup() { desk_.reset(); }

    void savedDocumentsCloseUnasked() {
        frmMain* document = desk_->open(desk_->picture("p.png"));
        document->ImgX->Info().ConvertType({}, 3);
        document->Saved = true; // although the picture is another one
        QVERIFY(document->ImgX->Modified());
        QVERIFY(!document->KillMe());
        QVERIFY(desk_->user.said().isEmpty());
        QVERIFY(!desk_->state.DocumentsOpen[0]);
    }

    void namedDocument_data() {
        QTest::addColumn<int>("answer");
        QTest::addColumn<bool>("cancelled");
        QTest::addColumn<bool>("written");
        QTest::newRow("yes") << int(Answer::Yes) << false << true;
        QTest::newRow("no") << int(Answer::No) << false << false;
        QTest::newRow("cancel") << int(Answer::Cancel) << true << false;
    }
    void namedDocument() {
        QFETCH(int, answer);
        QFETCH(bool, cancelled);
        QFETCH(bool, written);
        frmMain* document = changed("p.bmp");
        desk_->user.answers = {Answer(answer)};
        QCOMPARE(document->KillMe(), cancelled);
        const dialogs::Message& box = desk_->user.messages[0];
        QCOMPARE(box.icon, dialogs::Icon::Exclamation);
        QCOMPARE(box.buttons, dialogs::Buttons::YesNoCancel);
        QCOMPARE(desk_->user.said(), QStringList{prompt(document)});
        QCOMPARE(document->Saved, written);
        QCOMPARE(QImage(document->FilePath).isGrayscale(), written);
        QCOMPARE(desk_->state.DocumentsOpen[0], cancelled);
    }

    void newDocumentIsSavedAs_data() {
        QTest::addColumn<bool>("accepted");
        QTest::newRow("saved") << true;
        QTest::newRow("dialog cancelled") << false;
    }
    void newDocumentIsSavedAs() {
        QFETCH(bool, accepted);
        frmMain* document = desk_->create();
        desk_->user.answers = {Answer::Yes};
        desk_->user.files = {{accepted, desk_->path("n.png"), 2}};
        QCOMPARE(document->KillMe(), !accepted);
        QCOMPARE(desk_->user.said(), QStringList{newFilePrompt});
        QCOMPARE(QFile::exists(desk_->path("n.png")), accepted);
        QCOMPARE(desk_->state.DocumentsOpen[0], !accepted);
    }

    // A save that fails keeps the document: the error, and the close is off.
    void failedSaveKeepsTheDocument() {
        frmMain* document = changed("p.png");
        QVERIFY(QFile::remove(document->FilePath));
        QVERIFY(QDir(desk_->folder.path()).mkpath("p.png/x"));
        desk_->user.answers = {Answer::Yes};
        QVERIFY(!document->close());
        const QStringList said = desk_->user.said();
        QCOMPARE(said.size(), 2);
        QVERIFY(said[1].startsWith("|Error: "));
        QVERIFY(!document->Saved);
        QVERIFY(desk_->state.DocumentsOpen[0]);
        QVERIFY(desk_->state.Documents[0]);
    }

    void lastOneClosesTheMenus() {
        frmMain* first = desk_->open(desk_->picture("a.png"));
        frmMain* second = desk_->open(desk_->picture("b.png"));
        desk_->journal.clear();
        desk_->host.close(second);
        QVERIFY(!desk_->journal.all().contains("EnDisMenuItems(False)"));
        for (const char* name : {"mnuUndo", "mnuRedo", "mnuPaste"})
            QVERIFY(desk_->menus.isEnabled(name, -1));
        desk_->host.close(first);
        QCOMPARE(desk_->journal.all(), QStringList{"EnDisMenuItems(False)"});
        for (const char* name : {"mnuUndo", "mnuRedo", "mnuPaste"})
            QVERIFY(!desk_->menus.isEnabled(name, -1));
    }

    void slotsAreNotUsedAgain() {
        frmMain* first = desk_->open(desk_->picture("a.png"));
        QCOMPARE(first->DocIndex, qint16(0));
        desk_->host.close(first);
        QVERIFY(!desk_->state.Documents[0]);
        QVERIFY(!desk_->open(desk_->file("bad.png", "x"))); // a slot that was never shown
        frmMain* second = desk_->open(desk_->picture("b.png"));
        QCOMPARE(second->DocIndex, qint16(1));
        QCOMPARE(desk_->state.Documents.size(), std::size_t(2));
        QCOMPARE(desk_->state.DocumentsOpen, std::vector<bool>({false, true}));
        QCOMPARE(desk_->state.NextDocIndex, qint16(2));
        QVERIFY(desk_->state.IsAnyOpened());
    }

    void allAreAskedBeforeOneCloses() {
        frmMain* first = changed("a.png");
        desk_->open(desk_->picture("b.png"));
        frmMain* third = desk_->create();
        desk_->journal.clear();
        desk_->user.answers = {Answer::No, Answer::Cancel};
        QVERIFY(!document::closeAll(desk_->services));
        QCOMPARE(desk_->user.said(), QStringList({prompt(first), newFilePrompt}));
        QCOMPARE(desk_->host.activations, 2); // each one asked about is in sight
        QCOMPARE(desk_->state.DocumentsOpen, std::vector<bool>({true, true, true}));
        QVERIFY(desk_->journal.all().isEmpty()); // and the menus are as before
        QVERIFY(!first->Saved && !third->Saved);

        desk_->user.answers = {Answer::Yes, Answer::No};
        QVERIFY(document::closeAll(desk_->services));
        QCOMPARE(desk_->user.said().size(), 2);
        QCOMPARE(desk_->state.DocumentsOpen, std::vector<bool>({false, false, false}));
        QVERIFY(QImage(desk_->path("a.png")).isGrayscale());
        QCOMPARE(desk_->journal.all().last(), QString("EnDisMenuItems(False)"));
        QVERIFY(document::closeAll(desk_->services)); // with none left
    }

    // The prompt of a window that is to be filled again looks at the picture, not at Saved.
    void changesAreAskedForBeforeNew_data() {
        QTest::addColumn<int>("answer");
        QTest::addColumn<bool>("goesOn");
        QTest::newRow("yes") << int(Answer::Yes) << true;
        QTest::newRow("no") << int(Answer::No) << true;
        QTest::newRow("cancel") << int(Answer::Cancel) << false;
    }
    void changesAreAskedForBeforeNew() {
        QFETCH(int, answer);
        QFETCH(bool, goesOn);
        frmMain* document = changed("p.bmp");
        document->Saved = true;
        desk_->user.answers = {Answer(answer)};
        bool asked = false;
        desk_->user.inDialog = [&](dialogs::frmDialog& dialog) {
            asked = true;
            dialog.Cancelled = true;
        };
        QCOMPARE(document->NewImage(), !goesOn);
        QCOMPARE(asked, goesOn);
        const QString name = document->ImgX->Info().Name();
        QVERIFY(!name.isEmpty());
        QCOMPARE(desk_->user.said(),
                 QStringList{"|" + name + " has changed.\n\nWould you like to save it?"});
        QCOMPARE(QImage(document->FilePath).isGrayscale(), Answer(answer) == Answer::Yes);
    }

    void unchangedPictureIsNotAskedFor() {
        frmMain* document = desk_->open(desk_->picture("p.png"));
        document->Saved = false;
        QVERIFY(document->AskToSaveChanges());
        QVERIFY(desk_->user.said().isEmpty());
    }

    // From inside the message pump: the document at work stays, and so does the frame.
    void documentAtWorkStaysOpen() {
        frmMain* document = desk_->open(desk_->picture("p.png"));
        {
            const frmMain::Work work(*document);
            QVERIFY(!document->close());
            QVERIFY(!document::closeAll(desk_->services));
            QVERIFY(!document::runCommand(*document, "ZoomIn"));
            QCOMPARE(document->ImgX->Zoom(), 1.0);
            QCOMPARE(desk_->rules.said.size(), 3); // each refusal says why
        }
        QVERIFY(document::closeAll(desk_->services));
    }

    void secondOpenFromThePumpIsRefused() {
        desk_->user.inDialog = [&](dialogs::frmDialog& dialog) {
            QVERIFY(!document::openDocument(desk_->services));
            QCOMPARE(document::openFiles(desk_->services, {desk_->picture("p.png")}), 0);
            QVERIFY(!document::closeAll(desk_->services));
            QCOMPARE(desk_->rules.said.size(), 3);
            dialog.Cancelled = true;
        };
        QVERIFY(!document::newDocument(desk_->services));
        QVERIFY(desk_->user.requests.empty());
        QVERIFY(desk_->open(desk_->picture("p.png")));
    }
};

QTEST_MAIN(Closing)
#include "closing.moc"
