#include "shell/document_windows.h"

#include <QCloseEvent>
#include <QMdiArea>
#include <QMdiSubWindow>
#include <QMenu>
#include <QPainter>
#include <algorithm>
#include <functional>

#include "dialogs/look.h"
#include "document/frmMain.h"

namespace kvn::shell {

using document::frmMain;

namespace {

constexpr int cascadeStep = 26; // pixels between two new windows
constexpr int cascadeLength = 8;
constexpr QSize smallest(320, 160); // so that a tiny picture's title can be read

// The work area. While no document is shown it says how to get one.
class WorkArea : public QMdiArea {
  public:
    explicit WorkArea(QWidget* parent) : QMdiArea(parent) {
        setObjectName(QStringLiteral("MDIClient"));
        setAccessibleName(QStringLiteral("Documents"));
        setOption(QMdiArea::DontMaximizeSubWindowOnActivation);
        setHorizontalScrollBarPolicy(Qt::ScrollBarAsNeeded);
        setVerticalScrollBarPolicy(Qt::ScrollBarAsNeeded);
        setFrameShape(QFrame::NoFrame);
    }

  protected:
    void paintEvent(QPaintEvent*) override {
        QPainter painter(viewport());
        painter.fillRect(viewport()->rect(), dialogs::lookColor(QStringLiteral("workspace")));
        const QList<QMdiSubWindow*> windows = subWindowList();
        if (std::any_of(windows.begin(), windows.end(), [](auto* w) { return !w->isHidden(); }))
            return;
        QFont font = painter.font();
        font.setPointSizeF(font.pointSizeF() * 1.25);
        painter.setFont(font);
        painter.setPen(dialogs::lookColor(QStringLiteral("dim")));
        painter.drawText(viewport()->rect(), Qt::AlignCenter | Qt::TextWordWrap,
                         QStringLiteral("Drop pictures here, or double-click to open one"));
    }
};

// Tells when it was closed, be it by its own button or by a command. It then still exists for a
// moment, but its document is no one's active one any more.
class DocumentWindow : public QMdiSubWindow {
  public:
    DocumentWindow(QWidget* parent, std::function<void()> closed)
        : QMdiSubWindow(parent), closed_(std::move(closed)) {}

  protected:
    void closeEvent(QCloseEvent* event) override {
        QMdiSubWindow::closeEvent(event);
        if (event->isAccepted()) closed_();
    }

  private:
    std::function<void()> closed_;
};

// The window's own menu claims the key of the frame's Close command, and two claims cancel each
// other out.
void leaveKeysToTheMenu(QMdiSubWindow& window) {
    for (QAction* action : window.systemMenu()->actions())
        if (!action->shortcuts().isEmpty())
            action->setShortcut(QKeySequence(QStringLiteral("Ctrl+F4")));
}

// Part `index` of `count` equal parts.
struct Share {
    int index, count;
    int start(int length) const { return length * index / count; }
    int size(int length) const { return length * (index + 1) / count - start(length); }
};

QRect cell(QSize room, Share x, Share y) {
    return {x.start(room.width()), y.start(room.height()), x.size(room.width()),
            y.size(room.height())};
}

} // namespace

DocumentWindows::DocumentWindows(QWidget& frame) : frame_(frame), area_(new WorkArea(&frame)) {
    area_->viewport()->installEventFilter(this);
    connect(area_, &QMdiArea::subWindowActivated, this, &DocumentWindows::windowActivated);
}

// The windows report to this object while they go, those too that are closed and wait for their
// deletion, so they go before it does.
DocumentWindows::~DocumentWindows() {
    blockSignals(true);
    area_->disconnect(this);
    area_->viewport()->removeEventFilter(this);
    for (QMdiSubWindow* window : area_->findChildren<QMdiSubWindow*>())
        window->removeEventFilter(this);
    delete area_;
}

bool DocumentWindows::eventFilter(QObject* watched, QEvent* event) {
    if (watched == area_->viewport()) {
        if (event->type() == QEvent::MouseButtonDblClick) emit emptyAreaDoubleClicked();
        return false;
    }
    // A document window: its title stands in the window list.
    if (event->type() == QEvent::WindowTitleChange) emit listChanged();
    return false;
}

void DocumentWindows::adopt(frmMain* document) {
    auto* window = new DocumentWindow(area_, [this, document] {
        forget(document);
        document->deleteLater();
        area_->viewport()->update();
    });
    window->setAttribute(Qt::WA_DeleteOnClose);
    window->setWidget(document);
    leaveKeysToTheMenu(*window);
    area_->addSubWindow(window);
    window->hide();
    window->installEventFilter(this);
    // A document that goes by another way than its close button takes its window with it.
    connect(document, &QObject::destroyed, window, [this, window, document] {
        forget(document);
        window->deleteLater();
    });
}

QMdiSubWindow* DocumentWindows::windowOf(frmMain* document) const {
    return qobject_cast<QMdiSubWindow*>(document->parentWidget());
}

void DocumentWindows::present(frmMain* document) {
    QMdiSubWindow* window = windowOf(document);
    if (!window) return;
    const QSize room = area_->viewport()->size();
    const int step = placed_++ % cascadeLength * cascadeStep;
    const QSize wanted = window->sizeHint().expandedTo(smallest).boundedTo(room);
    // Shifted only as far as it still lies within the frame.
    const QPoint place(std::min(step, room.width() - wanted.width()),
                       std::min(step, room.height() - wanted.height()));
    document->show();
    window->show();
    window->setGeometry(QRect(place, wanted));
    presented_.push_back(document);
    takeFirstPlace(document);
    area_->setActiveSubWindow(window);
    area_->viewport()->update();
    emit listChanged();
}

void DocumentWindows::activate(frmMain* document) {
    QMdiSubWindow* window = windowOf(document);
    if (!window || window->isHidden()) return;
    if (window->isMinimized()) window->showNormal();
    area_->setActiveSubWindow(window);
}

void DocumentWindows::close(frmMain* document) {
    QMdiSubWindow* window = windowOf(document);
    if (window) window->close();
}

frmMain* DocumentWindows::ActiveForm() const {
    return recent_.empty() ? nullptr : recent_.front();
}

// Asked also while a window is on its way out: its document is no longer listed by then.
std::vector<frmMain*> DocumentWindows::shown() const {
    std::vector<frmMain*> documents;
    for (frmMain* document : presented_)
        if (windowOf(document) && !windowOf(document)->isHidden()) documents.push_back(document);
    return documents;
}

// Nothing is active while another program or a dialog has the focus: the document stays the
// active one all the same.
void DocumentWindows::windowActivated(QMdiSubWindow* window) {
    auto* document = window ? qobject_cast<frmMain*>(window->widget()) : nullptr;
    if (!document || window->isHidden()) return;
    const bool changed = announced_ != document;
    announced_ = document;
    takeFirstPlace(document);
    emit listChanged();
    if (changed) emit activated(document);
}

void DocumentWindows::forget(const frmMain* document) {
    std::erase(recent_, document);
    std::erase(presented_, document);
    if (announced_ == document) announced_ = nullptr;
    emit listChanged();
}

void DocumentWindows::takeFirstPlace(frmMain* document) {
    std::erase(recent_, document);
    recent_.insert(recent_.begin(), document);
}

void DocumentWindows::arrange(Order order) {
    switch (order) {
    case Order::Cascade:
        cascade();
        break;
    case Order::TileHorizontal:
        tile(false);
        break;
    case Order::TileVertical:
        tile(true);
        break;
    }
}

// Each window a step further than the one before and no larger than the room that is left; the
// active one comes last and lies on top.
void DocumentWindows::cascade() {
    const QSize room = area_->viewport()->size();
    int place = 0;
    for (auto entry = recent_.rbegin(); entry != recent_.rend(); ++entry) {
        QMdiSubWindow* window = windowOf(*entry);
        if (!window || window->isHidden() || window->isMinimized()) continue;
        const int step = place++ % cascadeLength * cascadeStep;
        window->showNormal();
        const QSize left = room - QSize(step, step);
        window->setGeometry(
            QRect(QPoint(step, step), window->sizeHint().expandedTo(smallest).boundedTo(left)));
        window->raise();
    }
}

// Equal shares of the area, one below the other or side by side; from four windows on in several
// lanes, so that none becomes a sliver.
void DocumentWindows::tile(bool columns) {
    std::vector<QMdiSubWindow*> windows;
    for (frmMain* document : shown())
        if (QMdiSubWindow* window = windowOf(document); !window->isMinimized())
            windows.push_back(window);
    const int count = static_cast<int>(windows.size());
    int lanes = 1;
    while (lanes * (lanes + 2) < count)
        ++lanes;
    auto next = windows.begin();
    for (int lane = 0; lane < lanes; ++lane) {
        const int members = count / lanes + (lane < count % lanes ? 1 : 0);
        for (int i = 0; i < members; ++i, ++next) {
            const Share along{i, members}, across{lane, lanes};
            (*next)->showNormal();
            (*next)->setGeometry(columns ? cell(area_->viewport()->size(), along, across)
                                         : cell(area_->viewport()->size(), across, along));
        }
    }
}

} // namespace kvn::shell
