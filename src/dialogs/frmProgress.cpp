#include "dialogs/frmProgress.h"

#include <QWidget>
#include <algorithm>

#include "basic/do_events.h"
#include "basic/error.h"
#include "dialogs/place.h"
#include "dialogs/progress_window.h"

namespace kvn::dialogs {

frmProgress::frmProgress(QObject* parent) : QObject(parent) {}

frmProgress::~frmProgress() {
    delete window_;
}

QDialog* frmProgress::window() const {
    return window_;
}

ProgressWindow& frmProgress::ensureWindow() {
    if (!window_) { // the first use, or the window went with the one that it stood above
        window_ = new ProgressWindow(nullptr);
        connect(window_, &ProgressWindow::cancelClicked, this, [this] { Cancelled = true; });
    }
    return *window_;
}

void frmProgress::progress(QWidget* document, int percent, const QString& message, bool* cancel) {
    if (percent == 0) {
        begin(document, message);
    } else if (percent == 100) {
        ensureWindow().setPercent(percent);
        end(document, document);
    } else {
        advance(document, percent, cancel);
    }
}

void frmProgress::download(QWidget* document, qint64 bytesRead, qint64 bytesTotal, bool* cancel) {
    if (bytesTotal == 0) throw RuntimeError(11, "Division by zero", "frmProgress");
    const double share = static_cast<double>(bytesRead) / static_cast<double>(bytesTotal);
    const int known = static_cast<int>(std::clamp(share, 0.0, 1.0) * 100);
    const int unknown = bytesRead == 0 ? 0 : 1;
    progress(document, bytesTotal > 0 ? known : unknown, QStringLiteral("Downloading Image"),
             cancel);
}

void frmProgress::begin(QWidget* document, const QString& message) {
    ProgressWindow& window = ensureWindow();
    window.setStart();
    window.setMessage(message);
    Cancelled = false;
    hold(document, message);
    showWhenDue(document);
}

// The pump may bring a whole other operation, or the end of the document; nothing that was looked
// up before it is used after it.
void frmProgress::advance(QWidget* document, int percent, bool* cancel) {
    const QPointer<QWidget> alive(document);
    showWhenDue(document);
    DoEvents();
    ensureWindow().setPercent(percent);
    if (!Cancelled) return;
    end(document, alive);
    if (cancel) *cancel = true;
}

void frmProgress::hold(QWidget* document, const QString& message) {
    std::erase_if(held_, [&](const Held& held) { return held.key == document; });
    Held now{document, document, nullptr, nullptr, {}, message};
    now.since.start();
    if (document) {
        QWidget* focus = document->window()->focusWidget();
        const bool inside = focus && (focus == document || document->isAncestorOf(focus));
        if (inside) now.focus = focus;
        document->setEnabled(false);
        now.focusAfter = document->window()->focusWidget();
    }
    held_.push_back(now);
}

frmProgress::Held* frmProgress::held(const QWidget* document) {
    const auto found = std::find_if(held_.begin(), held_.end(),
                                    [&](const Held& held) { return held.key == document; });
    return found == held_.end() ? nullptr : &*found;
}

// Also brings the window back when another operation has ended and hidden it meanwhile.
void frmProgress::showWhenDue(const QWidget* document) {
    const Held* now = held(document);
    ProgressWindow& window = ensureWindow();
    if (!now || window.isVisible() || now->since.elapsed() < showDelay_) return;
    window.setOwner(now->document);
    window.setMessage(now->message);
    window.adjustSize();
    centreOnOwner(window);
    window.show();
    window.repaint();
}

void frmProgress::end(const QWidget* key, QWidget* document) {
    ensureWindow().hide();
    const Held* now = held(key);
    const Held gone = now ? *now : Held{};
    std::erase_if(held_, [&](const Held& held) { return held.key == key; });
    if (!document) return;
    document->setEnabled(true);
    // Disabling moved the focus away from the picture. It goes back unless the user took it.
    if (gone.focus && document->window()->focusWidget() == gone.focusAfter) gone.focus->setFocus();
    document->update();
}

} // namespace kvn::dialogs
