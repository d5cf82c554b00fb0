// File filters, and the file window that shows them: what it preselects, how the name follows the
// type and the type the name, what it asks before it overwrites.
#include <QComboBox>
#include <QDir>
#include <QFileSystemModel>
#include <QLineEdit>
#include <QListView>
#include <QMessageBox>
#include <QPushButton>
#include <QTemporaryDir>
#include <QTest>
#include <QTimer>

#include "dialogs/file_filter.h"
#include "dialogs/file_window.h"
#include "dialogs/qt_asking.h"

using namespace kvn;
using namespace kvn::dialogs;

namespace {

const QString openFilter =
    QStringLiteral("All Images|*.jpg;*.gif;*.tla|Joint Photographic Experts Group  <JPG>|*.jpg|"
                   "Windows Enhanced Meta File <EMF>|*.emf|All Files|*.*");
const QString saveFilter = QStringLiteral(
    "Joint Photographic Experts Group  <JPG>|*.jpg|Portable Network Graphics  <PNG>|*.png|"
    "Tagged Image File  <TIF>|*.tif|Windows Enhanced Metafile  <EMF>|*.emf");

void touch(const QString& path) {
    QFile file(path);
    QVERIFY(file.open(QIODevice::WriteOnly));
    file.write("x");
}

} // namespace

class FileWindowTest : public QObject {
    Q_OBJECT

    std::unique_ptr<QTemporaryDir> folder_;

    engine::FileRequest request(bool save, int row, const QString& name = {}) {
        engine::FileRequest request;
        request.save = save;
        request.filter = save ? saveFilter : openFilter;
        request.filterIndex = row;
        request.flags = save ? 0x800006 : 0x801004;
        request.folder = folder_->path();
        request.fileName = name;
        return request;
    }
    static QLineEdit* name(QFileDialog& window) {
        return window.findChild<QLineEdit*>("fileNameEdit");
    }
    static QComboBox* types(QFileDialog& window) {
        return window.findChild<QComboBox*>("fileTypeCombo");
    }
    // As a user does it: the list reports that a row was picked.
    static void pick(QFileDialog& window, int row) {
        types(window)->setCurrentIndex(row);
        emit types(window)->activated(row);
    }
    static void type(QFileDialog& window, const QString& text) {
        QVERIFY(QTest::qWaitForWindowActive(&window));
        name(window)->setFocus();
        name(window)->clear();
        QTest::keyClicks(name(window), text);
    }
    // Presses Save; answers a box that comes up in between with its default or given button.
    static QString save(FileWindow& window, QMessageBox::StandardButton answer = QMessageBox::No) {
        QString box;
        QTimer::singleShot(0, [&] {
            auto* shown = qobject_cast<QMessageBox*>(QApplication::activeModalWidget());
            if (!shown) return;
            box = shown->text();
            shown->button(answer)->click();
        });
        window.accept();
        QCoreApplication::processEvents();
        return box;
    }

  private slots:
    void initTestCase() { QApplication::setQuitOnLastWindowClosed(false); }
    void init() { folder_ = std::make_unique<QTemporaryDir>(); }

    void filterRows() {
        const FileFilter filter(openFilter);
        QCOMPARE(filter.rows().size(), std::size_t(4));
        QCOMPARE(filter.rows()[0].patterns, (QStringList{"*.jpg", "*.gif", "*.tla"}));
        QCOMPARE(filter.rows()[3].patterns, QStringList{"*"});
        QCOMPARE(FileFilter("only a text").rows().size(), std::size_t(0));
        QCOMPARE(FileFilter("").nameFilters(), QStringList());
    }

    void fittedNames_data() {
        QTest::addColumn<QString>("name");
        QTest::addColumn<int>("row");
        QTest::addColumn<QString>("fitted");
        QTest::newRow("no extension") << "a" << 1 << "a.png";
        QTest::newRow("only a dot") << "a." << 1 << "a.png";
        QTest::newRow("own") << "a.png" << 1 << "a.png";
        QTest::newRow("own, capitals stay") << "a.PNG" << 1 << "a.PNG";
        QTest::newRow("another spelling of its own") << "a.jpeg" << 0 << "a.jpeg";
        QTest::newRow("another row's") << "a.jpg" << 1 << "a.png";
        QTest::newRow("another row's spelling") << "a.TIFF" << 0 << "a.jpg";
        QTest::newRow("not an extension of ours") << "photo v1.2" << 0 << "photo v1.2.jpg";
        QTest::newRow("a picture that no row saves") << "a.b.GIF" << 2 << "a.b.tif";
        QTest::newRow("hidden file") << ".rc" << 0 << ".rc.jpg";
        QTest::newRow("dot in a folder") << "/a.b/c" << 0 << "/a.b/c.jpg";
        QTest::newRow("row for all files") << "a" << 9 << "a.xyz";
    }
    void fittedNames() {
        QFETCH(QString, name);
        QFETCH(int, row);
        QTEST(FileFilter(saveFilter).fitted(name, row, row == 9 ? "xyz" : "jpg"), "fitted");
    }

    void textsStandExactly() {
        FileWindow window(request(false, 2), {});
        QStringList shown;
        for (int i = 0; i < types(window)->count(); ++i)
            shown << types(window)->itemText(i);
        QCOMPARE(shown, (QStringList{"All Images", "Joint Photographic Experts Group  <JPG>",
                                     "Windows Enhanced Meta File <EMF>", "All Files"}));
        QCOMPARE(types(window)->currentIndex(), 1);
        QCOMPARE(window.windowTitle(), QString("Open"));
        FileWindow outside(request(false, 77), {});
        QCOMPARE(types(outside)->currentIndex(), 0);
    }

    void patternsMatchInAnyCase() {
        for (const char* file : {"one.JPG", "two.jpg", "three.Gif", "four.png", "noext"})
            touch(folder_->filePath(file));
        FileWindow window(request(false, 1), {});
        window.show();
        auto* list = window.findChild<QListView*>("listView");
        const auto shown = [&] {
            QStringList names;
            const QModelIndex root = list->rootIndex();
            for (int i = 0; i < list->model()->rowCount(root); ++i)
                names << list->model()->index(i, 0, root).data().toString();
            names.sort();
            return names;
        };
        QTRY_COMPARE(shown(), (QStringList{"one.JPG", "three.Gif", "two.jpg"}));
        pick(window, 3);
        QTRY_COMPARE(shown().size(), 5);
    }

    void extensionFollowsTheRow() {
        FileWindow window(request(true, 2, "Untitled-1"), {});
        window.show();
        pick(window, 2);
        QCOMPARE(name(window)->text(), QString("Untitled-1.tif"));
        pick(window, 0);
        QCOMPARE(name(window)->text(), QString("Untitled-1.jpg"));
        type(window, "v1.2");
        pick(window, 1); // what looks like an extension of no row stays
        QCOMPARE(name(window)->text(), QString("v1.2.png"));
        QCOMPARE(save(window), QString());
        QCOMPARE(window.answer().path, folder_->filePath("v1.2.png"));
        QCOMPARE(window.answer().filterIndex, 2);
        QVERIFY(window.answer().accepted);
    }

    void rowFollowsATypedExtension() {
        FileWindow window(request(true, 1), {});
        window.show();
        type(window, "shot.final.png");
        QCOMPARE(types(window)->currentIndex(), 1);
        QCOMPARE(name(window)->text(), QString("shot.final.png"));
        type(window, folder_->filePath("b.TIFF"));
        QCOMPARE(types(window)->currentIndex(), 2);
        save(window);
        QCOMPARE(window.answer().path, folder_->filePath("b.TIFF"));
        QCOMPARE(window.answer().filterIndex, 3);
    }

    void overwritingIsAsked() {
        touch(folder_->filePath("a.png"));
        FileWindow window(request(true, 2), {});
        window.show();
        type(window, "a"); // the question is about the name as it will be
        QVERIFY(save(window, QMessageBox::No).contains("a.png"));
        QVERIFY(window.isVisible());
        QVERIFY(!save(window, QMessageBox::Yes).isEmpty());
        QVERIFY(!window.isVisible());
        QCOMPARE(window.answer().path, folder_->filePath("a.png"));

        engine::FileRequest quiet = request(true, 2);
        quiet.flags = 0x800004;
        FileWindow unasked(quiet, {});
        unasked.show();
        type(unasked, "a");
        QCOMPARE(save(unasked), QString());
        QVERIFY(unasked.answer().accepted);
    }

    void aFolderIsEnteredNotSaved() {
        QVERIFY(QDir(folder_->path()).mkdir("deeper"));
        FileWindow window(request(true, 1), {});
        window.show();
        type(window, "deeper");
        save(window);
        QVERIFY(window.isVisible());
        QCOMPARE(window.directory().dirName(), QString("deeper"));
    }

    void aMissingFileIsNotOpened() {
        FileWindow window(request(false, 1), {});
        window.show();
        type(window, "nothing.jpg");
        QVERIFY(!save(window, QMessageBox::Ok).isEmpty());
        QVERIFY(window.isVisible());
        QVERIFY(!window.answer().accepted);
    }

    void folderIsRemembered() {
        QtAsking asking;
        QTemporaryDir other;
        const auto saveAs = [&](const engine::FileRequest& request, const QString& text) {
            QString start;
            QTimer::singleShot(0, [&] {
                auto* window = qobject_cast<FileWindow*>(QApplication::activeModalWidget());
                start = window->directory().path();
                type(*window, text);
                window->accept();
                window->hide(); // should it still stand, the test must not wait for it
            });
            const engine::FileAnswer answer = asking.chooseFile(request);
            return qMakePair(start, answer);
        };
        const auto first = saveAs(request(true, 2), other.filePath("x"));
        QCOMPARE(first.first, folder_->path());
        QCOMPARE(first.second.path, other.filePath("x.png"));
        engine::FileRequest anywhere = request(true, 1);
        anywhere.folder.clear();
        const auto second = saveAs(anywhere, "y");
        QCOMPARE(second.first, other.path());
        QCOMPARE(second.second.path, other.filePath("y.jpg"));

        QTimer::singleShot(0, [] { QApplication::activeModalWidget()->close(); });
        const engine::FileAnswer cancelled = asking.chooseFile(request(true, 3));
        QVERIFY(!cancelled.accepted && cancelled.path.isEmpty());
        QCOMPARE(asking.folder(), other.path());
    }
};

QTEST_MAIN(FileWindowTest)
#include "file_window.moc"
