// The one progress window of the program, shared by all documents. The object exists from the
// start; its window is made at the first report and then kept, hidden between operations. It
// shows what it is told and checks no order of values.
#pragma once

#include <QElapsedTimer>
#include <QObject>
#include <QPointer>
#include <QString>
#include <vector>

class QDialog;
class QWidget;

namespace kvn::dialogs {

class ProgressWindow;

class frmProgress : public QObject {
    Q_OBJECT

  public:
    explicit frmProgress(QObject* parent = nullptr);
    ~frmProgress() override;

    // Set by the window's Cancel button, reset by a report of 0.
    bool Cancelled = false;

    // One report of an operation on `document` (may be null), `percent` in whole numbers.
    // 0 disables the document and begins; 100 hides the window and enables the document; any
    // other value lets waiting events run, moves the bar and sets `*cancel` if the user has
    // cancelled. The window becomes visible only when the operation has lasted showDelay().
    void progress(QWidget* document, int percent, const QString& message, bool* cancel);

    // The same for a download: percent is the whole part of bytesRead / bytesTotal * 100.
    // Throws error 11 if bytesTotal is 0. A negative total is an unknown one: the bar then stays
    // at its start, and the caller ends with progress(document, 100, ...).
    void download(QWidget* document, qint64 bytesRead, qint64 bytesTotal, bool* cancel);

    // Milliseconds that work must last before a window is shown for it. 500 unless told.
    int showDelay() const { return showDelay_; }
    void setShowDelay(int milliseconds) { showDelay_ = milliseconds; }

    // Null before the first report.
    QDialog* window() const;

  private:
    // A document that a report of 0 disabled and none of 100 has enabled yet.
    struct Held {
        const QWidget* key; // only compared, never followed
        QPointer<QWidget> document;
        QPointer<QWidget> focus;      // what had the focus within it
        QPointer<QWidget> focusAfter; // what Qt gave it to when the document was disabled
        QElapsedTimer since;
        QString message;
    };

    void begin(QWidget* document, const QString& message);
    void advance(QWidget* document, int percent, bool* cancel);
    // `key` names the operation; `document` is null if it is gone.
    void end(const QWidget* key, QWidget* document);
    void hold(QWidget* document, const QString& message);
    Held* held(const QWidget* document);
    void showWhenDue(const QWidget* document);
    ProgressWindow& ensureWindow();

    QPointer<ProgressWindow> window_;
    std::vector<Held> held_;
    int showDelay_ = 500;
};

} // namespace kvn::dialogs
