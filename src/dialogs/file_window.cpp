#include "dialogs/file_window.h"

#include <QComboBox>
#include <QDir>
#include <QFileInfo>
#include <QHeaderView>
#include <QLineEdit>
#include <QSplitter>
#include <QStandardPaths>
#include <QTreeView>
#include <QUrl>
#include <algorithm>

#include "dialogs/look.h"
#include "dialogs/place.h"

namespace kvn::dialogs {

namespace {

constexpr quint32 overwritePrompt = 0x2;
constexpr quint32 fileMustExist = 0x1000;

QString picturesFolder() {
    const QString pictures = QStandardPaths::writableLocation(QStandardPaths::PicturesLocation);
    return QFileInfo(pictures).isDir() ? pictures : QDir::homePath();
}

} // namespace

FileWindow::FileWindow(const engine::FileRequest& request, const QString& folder)
    : QFileDialog(request.owner), request_(request), filter_(request.filter) {
    setObjectName(QStringLiteral("FileDialog"));
    setOption(DontUseNativeDialog);
    setOption(HideNameFilterDetails);
    setOption(DontConfirmOverwrite, (request.flags & overwritePrompt) == 0);
    setAcceptMode(request.save ? AcceptSave : AcceptOpen);
    setFileMode(!request.save && (request.flags & fileMustExist) ? ExistingFile : AnyFile);
    setWindowTitle(request.save ? QStringLiteral("Save As") : QStringLiteral("Open"));
    setNameFilters(filter_.nameFilters());
    name_ = findChild<QLineEdit*>(QStringLiteral("fileNameEdit"));
    types_ = findChild<QComboBox*>(QStringLiteral("fileTypeCombo"));
    const int rows = static_cast<int>(filter_.rows().size());
    if (request.filterIndex >= 1 && request.filterIndex <= rows)
        selectNameFilter(nameFilters().at(request.filterIndex - 1));
    // Qt shows a filter with its blanks thinned out.
    for (int i = 0; i < rows; ++i)
        types_->setItemText(i, filter_.rows()[static_cast<std::size_t>(i)].text);
    if (request.save) {
        connect(name_, &QLineEdit::textEdited, this, &FileWindow::followName);
        // The list reports its new row before Qt's own handler of the choice touches the name, and
        // this window's handler runs after that.
        connect(types_, &QComboBox::currentIndexChanged, this,
                [this] { nameBefore_ = name_->text(); });
        connect(types_, &QComboBox::activated, this, &FileWindow::followRow);
    }
    offerFolders();
    arrange();
    start(folder);
    applySkin(this, QString());
}

void FileWindow::start(const QString& folder) {
    const QFileInfo proposed(request_.fileName);
    QString first = request_.folder;
    if (first.isEmpty() && proposed.isAbsolute()) first = proposed.absolutePath();
    if (first.isEmpty()) first = folder;
    setDirectory(QFileInfo(first).isDir() ? first : picturesFolder());
    if (!request_.fileName.isEmpty()) selectFile(proposed.fileName());
}

// Room for the side bar's names, for sizes, types and whole dates; the file names take the rest.
void FileWindow::arrange() {
    constexpr int sideBar = 150, frames = 54, leastName = 160;
    constexpr int columns[] = {90, 110, 170}; // size, type, date
    resize(QSize(880, 560).boundedTo(availableSize(*this)));
    if (auto* splitter = findChild<QSplitter*>(QStringLiteral("splitter")))
        splitter->setSizes({sideBar, width() - sideBar});
    if (auto* details = findChild<QTreeView*>(QStringLiteral("treeView"))) {
        QHeaderView* header = details->header();
        int left = width() - sideBar - frames;
        for (int i = 0; i < 3; ++i) {
            header->resizeSection(i + 1, columns[i]);
            left -= columns[i];
        }
        header->resizeSection(0, std::max(leastName, left));
    }
}

// Qt's side bar begins with two places; a bar that the user has filled is left as it is.
void FileWindow::offerFolders() {
    constexpr qsizetype qtsOwn = 2;
    QList<QUrl> places = sidebarUrls();
    if (places.size() > qtsOwn) return;
    using Paths = QStandardPaths;
    for (const auto place : {Paths::DesktopLocation, Paths::DocumentsLocation,
                             Paths::PicturesLocation, Paths::DownloadLocation}) {
        const QUrl url = QUrl::fromLocalFile(Paths::writableLocation(place));
        if (QFileInfo(url.toLocalFile()).isDir() && !places.contains(url)) places << url;
    }
    setSidebarUrls(places);
}

int FileWindow::row() const {
    return types_->currentIndex();
}

void FileWindow::followRow() {
    const QString name = nameBefore_.isNull() ? name_->text() : nameBefore_;
    nameBefore_.clear();
    if (!name.isEmpty()) name_->setText(filter_.fitted(name, row(), QString()));
}

// A user who types the extension of another type means that type.
void FileWindow::followName(const QString& name) {
    const int named = filter_.rowOfName(name);
    if (named < 0 || named == row() || filter_.fitted(name, row(), QString()) == name) return;
    const int caret = name_->cursorPosition();
    types_->setCurrentIndex(named);
    emit types_->activated(named); // as if the user had picked it
    name_->setCursorPosition(caret);
}

void FileWindow::accept() {
    const QString name = name_->text();
    const bool folder = QFileInfo(directory(), name).isDir();
    if (request_.save && !name.isEmpty() && !folder)
        name_->setText(filter_.fitted(name, row(), request_.defaultExt));
    QFileDialog::accept();
}

engine::FileAnswer FileWindow::answer() const {
    const QStringList files = selectedFiles();
    engine::FileAnswer answer;
    answer.accepted = result() == Accepted && !files.isEmpty();
    if (answer.accepted) answer.path = files.first();
    answer.filterIndex = row() + 1;
    return answer;
}

} // namespace kvn::dialogs
