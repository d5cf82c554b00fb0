// The commands of the Metadata menu with their windows and questions.
#include <QClipboard>
#include <QGuiApplication>
#include <QLineEdit>
#include <QPushButton>

#include "camera_file.h"
#include "engine/metadata.h"
#include "metadata/frmEXIF.h"
#include "metadata/frmJPEGMarkers.h"
#include "metadata/marker_list.h"
#include "metadata/tag_box.h"

using namespace kvn;
using namespace kvn::test;
using metadata::frmEXIF;
using metadata::frmJPEGMarkers;

namespace {

enum { ExifTags, Thumbnail, IptcTags, Markers, Copy };

constexpr quint32 allMarkers = 0x3fff;

} // namespace

class MetadataCommands : public QObject {
    Q_OBJECT

    std::unique_ptr<MetadataDesk> desk_;

    QList<frmEXIF*> windows() const { return desk_->host.frame.findChildren<frmEXIF*>(); }

  private slots:
    void init() { desk_ = std::make_unique<MetadataDesk>(); }
    void cleanup() { desk_.reset(); }

    void tagsAreListedInOneWindow() {
        frmMain* document = desk_->open(cameraFile(*desk_, "a.jpg"));
        QVERIFY(desk_->run(*document, IptcTags));
        QCOMPARE(windows().size(), 1);
        frmEXIF* window = windows().front();
        QVERIFY(window->isVisible() && !window->isModal());
        QCOMPARE(window->windowTitle(), QString("EXIF Data"));
        QCOMPARE(window->txtExif->toPlainText(), QString("Keywords = one\nCaption = a caption\n"));

        QVERIFY(desk_->run(*document, ExifTags));
        QCOMPARE(windows(), QList{window});
        const QString text = window->txtExif->toPlainText();
        QVERIFY2(text.startsWith("Make = Makers & Sons\nOrientation = top, left\n"),
                 qPrintable(text));
        QVERIFY(text.contains("\nISOSpeedRatings = 400\n"));
        QCOMPARE(text.count('\n'), document->ImgX->Info().Exif().Count());

        QVERIFY(desk_->run(*desk_->open(desk_->picture("plain.png")), ExifTags));
        QCOMPARE(windows(), QList{window});
        QCOMPARE(window->txtExif->toPlainText(), QString());
        window->resize(700, 300);
        QTest::keyClick(window->txtExif, Qt::Key_Escape);
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
        QVERIFY(windows().isEmpty());
    }

    void tagsAreCopiedAndFound() {
        frmEXIF::list({{"Make", "A"}, {"Model", "B make"}, {"Lens", "C"}}, &desk_->host.frame);
        frmEXIF* window = windows().front();
        QTest::keyClick(window->txtExif, Qt::Key_Down);
        QTest::keyClick(window->txtExif, Qt::Key_C, Qt::ControlModifier);
        QCOMPARE(QGuiApplication::clipboard()->text(), QString("Model = B make"));
        QTest::keyClick(window->txtExif, Qt::Key_Home, Qt::ControlModifier);
        QTest::keyClick(window->txtExif, Qt::Key_F, Qt::ControlModifier);
        auto* find = window->findChild<QLineEdit*>("txtFind");
        QTest::keyClicks(find, "make");
        for (const int place : {0, 19, 0}) {
            QCOMPARE(window->txtExif->textCursor().selectionStart(), place);
            QTest::keyClick(find, Qt::Key_Return);
        }
        QTest::keyClick(find, Qt::Key_Escape);
        QVERIFY(!find->isVisible() && window->isVisible());
    }

    void thumbnailBecomesAPage() {
        frmMain* document = desk_->open(cameraFile(*desk_, "a.jpg"));
        desk_->journal.clear();
        QVERIFY(desk_->run(*document, Thumbnail));
        QCOMPARE(desk_->journal.engineCalls(),
                 QStringList{"ImgX Images.Add [\"@Thumbnail\",0,0,\"Import EXIF Thumbnail.\"] -> "
                             "Import EXIF Thumbnail."});
        QCOMPARE(document->ImgX->Images().Count(), 2);
        QCOMPARE(document->ImgX->Images().Item(1).Info().Width(), 16);
        QVERIFY(!document->Saved);

        frmMain* plain = desk_->open(desk_->picture("plain.png"));
        desk_->menus.setEnabled("mnuMetadata", Thumbnail, true);
        QVERIFY(desk_->run(*plain, Thumbnail));
        QVERIFY(!desk_->menus.isEnabled("mnuMetadata", Thumbnail));
        QVERIFY(plain->Saved);
        QCOMPARE(plain->ImgX->Images().Count(), 1);
        QCOMPARE(desk_->user.said(), QStringList());
    }

    void thumbnailsStandUpright() {
        const Bytes exif = ExifMaker(true).make({{0x0112, 3, 6}}, {}, jpegOf(slope(16, 12)));
        Bytes segment = bytesOf(std::string_view("\xff\xe1\0\0Exif\0\0", 10));
        segment.insert(segment.end(), exif.begin(), exif.end());
        segment[2] = static_cast<std::uint8_t>((segment.size() - 2) >> 8);
        segment[3] = static_cast<std::uint8_t>(segment.size() - 2);
        Bytes file = jpegOf(slope(64, 48));
        file.insert(file.begin() + 2, segment.begin(), segment.end());
        frmMain* document = desk_->open(
            desk_->file("turned.jpg", QByteArray(reinterpret_cast<const char*>(file.data()),
                                                 static_cast<qsizetype>(file.size()))));
        QVERIFY(desk_->run(*document, Thumbnail));
        const engine::Info info = document->ImgX->Images().Item(1).Info();
        QCOMPARE(QSize(info.Width(), info.Height()), QSize(12, 16));
        QVERIFY(info.GetPixel(6, 1).Red() < 60 && info.GetPixel(6, 14).Red() > 190);
    }

    void markersAreChosen() {
        struct Use {
            quint32 before;
            QList<int> turned;  // lines
            const char* button; // null: the close box
            quint32 after;
        };
        frmMain* document = desk_->create();
        QCOMPARE(document->ImgX->JPEGMarkers(), allMarkers);
        for (const Use& use :
             {Use{allMarkers, {0, 12}, "cmdOK", 0x2ffe}, Use{0x2ffe, {3}, "cmdCancel", 0x2ffe},
              Use{0x2ffe, {3}, nullptr, 0x2ffe},
              // What the list does not show stays until a line is changed.
              Use{0x80004001, {}, "cmdOK", 0x80004001}, Use{0x80004001, {0}, "cmdOK", 0}}) {
            desk_->user.inWindow = [&](QDialog& shown) {
                auto& window = dynamic_cast<frmJPEGMarkers&>(shown);
                window.show();
                QCOMPARE(window.windowTitle(), QString("JPEG Markers to Save"));
                const QListWidget& list = *window.lstJPEGMarkers;
                QCOMPARE(list.count(), 14);
                for (int i = 0; i < 14; ++i) {
                    QCOMPARE(list.item(i)->text(), QString("JPEG_APP%1").arg(i + 1));
                    QCOMPARE(list.item(i)->checkState() == Qt::Checked, (use.before >> i & 1) == 1);
                }
                for (const int row : use.turned) {
                    window.lstJPEGMarkers->setCurrentRow(row);
                    QTest::keyClick(window.lstJPEGMarkers, Qt::Key_Space);
                }
                if (use.button) window.findChild<QPushButton*>(use.button)->click();
                if (!use.button) window.close();
                QVERIFY(!window.isVisible());
            };
            document->ImgX->setJPEGMarkers(use.before);
            QVERIFY(desk_->run(*document, Markers));
            QCOMPARE(document->ImgX->JPEGMarkers(), use.after);
        }
    }

    void markersAreCopied() {
        const QString source = cameraFile(*desk_, "source.jpg");
        const QString existing = cameraFile(*desk_, "existing.jpg", {});
        frmMain* document = desk_->open(desk_->picture("shown.png"));
        desk_->user.said();
        const QString first = "|Choose source image to copy Metadata to.";
        const QString second = "|Save the copied JPEG with metadata to the following new location:";

        desk_->user.files = {{}};
        QVERIFY(desk_->run(*document, Copy));
        QCOMPARE(desk_->user.said(), QStringList{first});
        desk_->user.files = {{true, source, 1}, {}};
        QVERIFY(desk_->run(*document, Copy));
        QCOMPARE(desk_->user.said(), (QStringList{first, second}));
        QCOMPARE(document->ImgX->JPEGMarkers(), allMarkers);

        desk_->journal.clear();
        desk_->user.files = {{true, source, 1}, {true, existing, 1}};
        QVERIFY(desk_->run(*document, Copy));
        QCOMPARE(
            desk_->journal.engineCalls(),
            (QStringList{"Dialog Dialog.ShowOpen []",
                         "Dialog Dialog.Filter [\"Joint Photographic Experts Group  "
                         "<JPG>|*.jpg|\"]",
                         "Dialog Dialog.ShowSave []", "ImgX ImgX.JPEGMarkers [1]",
                         QString("ImgX Info.CopyMetadata [\"%1\",\"%2\"]").arg(source, existing)}));
        frmMain* copied = desk_->open(existing);
        QCOMPARE(copied->ImgX->Info().Exif().Count(),
                 desk_->open(source)->ImgX->Info().Exif().Count());
        QCOMPARE(copied->ImgX->Info().Width(), 64);

        // A new location gets the shown picture.
        desk_->user.files = {{true, source, 1}, {true, desk_->path("new.jpg"), 1}};
        QVERIFY(desk_->run(*document, Copy));
        frmMain* made = desk_->open(desk_->path("new.jpg"));
        QCOMPARE(made->ImgX->Info().Width(), 32);
        QVERIFY(made->ImgX->Info().Iptc().Count() == 2 && made->ImgX->Info().Exif().Count() > 5);

        // What cannot be done is told, and the files stand.
        const QByteArray before = desk_->bytes("existing.jpg");
        desk_->user.said();
        desk_->user.files = {{true, desk_->path("shown.png"), 1}, {true, existing, 1}};
        QVERIFY(!desk_->run(*document, Copy));
        QCOMPARE(desk_->user.said().last(),
                 QString("|Error: The source is not a JPEG file.\nSource: CopyMetadata"));
        QCOMPARE(desk_->bytes("existing.jpg"), before);
    }
};

QTEST_MAIN(MetadataCommands)
#include "commands.moc"
