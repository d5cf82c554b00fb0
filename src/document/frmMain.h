// The document window: one open picture, its working copies, its file and its life from set-up to
// the close prompt. What commands do with the picture stands in free functions beside it (view.h,
// working_copy.h, selection.h, pages.h), reached by name through the command table.
#pragma once

#include <QPointer>
#include <QWidget>
#include <optional>

#include "basic/error.h"
#include "document/services.h"
#include "document/wait_cursor.h"
#include "engine/file_dialog.h"
#include "engine/imgx.h"

class QFrame;
class QLabel;
class QTextEdit;

namespace kvn::dialogs {
class frmDialog;
}

namespace kvn::document {

class frmMain : public QWidget {
    Q_OBJECT

  public:
    // Makes the window with its controls, hidden and without a slot. load() makes it usable.
    frmMain(const Services& services, QWidget* parent);
    ~frmMain() override;

    // --- fields ---------------------------------------------------------------
    QString FilePath; // of the file the document came from; Save As leaves it
    bool Saved = false;
    qint16 DocIndex = -1;
    bool SaveAsCancelled = false;
    QString DisplayName;
    bool IsTiff = false;
    QString TiffPath;
    engine::Image ScratchImage, ScratchImage2;

    engine::ImgX* ImgX = nullptr;       // the shown picture and the document's undo stack
    engine::ImgX* imgxAction = nullptr; // the working copy of commands
    engine::ImgX* ImgXBuffer = nullptr; // stands there, takes no part
    engine::Dialog Dialog;

    QPointer<dialogs::frmDialog> frmDlg; // the open parameter dialog
    bool WarpArmed = false;              // the next line drag warps the picture
    int modeBeforeWarp = 0;              // the tool mode that comes back afterwards

    QFrame* picImgX = nullptr;
    QTextEdit* TextInput = nullptr;
    QTextEdit* TextInput2 = nullptr;
    QFrame* picBottom = nullptr;
    QLabel* lblStatus = nullptr;
    QFrame* picPixelColor = nullptr;

    void setDocIndex(qint16 index); // also names the slot in the trace

    // --- life -----------------------------------------------------------------
    // The set-up of a window that has its slot, once.
    void load();
    bool NewImage();
    bool LoadImage();
    // Shows a file that the user named without the dialog. False, with nothing said, if it cannot
    // be read.
    bool LoadFile(const QString& path);
    void LoadURL(const QString& url);
    // Both pass a failure of the write on, with Saved as it was.
    void Save();
    void SaveAs();
    // The prompt of closing, then the slot is marked closed. True when the close must be
    // cancelled.
    bool KillMe();
    // The two halves of KillMe, for closing several documents together.
    bool askBeforeClose();
    void markClosed();
    // The next close of the window goes through without a prompt.
    void closeWithoutAsking() { unasked_ = true; }
    bool AskToSaveChanges();
    void RaiseError(const RuntimeError& error);
    void ApplySaveSettings();
    // The drawing mode and pointer of a tool, on this document.
    void SetCurrTool(int tool);

    // What follows a change of the picture: lists, menus and read-outs, and it is unsaved.
    void imageChanged();

    const Services& services() const { return services_; }

    // True while a command is at work on this document. It takes no other one and stays open.
    bool isBusy() const { return commandDepth_ > 0 || ImgX->isBusy() || imgxAction->isBusy(); }
    // Held while a command runs.
    class Work {
      public:
        explicit Work(frmMain& document) : document_(&document) { ++document.commandDepth_; }
        ~Work() {
            if (document_) --document_->commandDepth_;
        }
        Work(const Work&) = delete;
        Work& operator=(const Work&) = delete;

      private:
        QPointer<frmMain> document_;
    };

    // Room for the picture at 100 percent with the status strip.
    QSize sizeHint() const override;

  protected:
    void closeEvent(QCloseEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;
    void contextMenuEvent(QContextMenuEvent* event) override;

  private:
    void makeControls();
    void connectEvents();
    void copyPen();
    engine::Image readChosen();
    bool takeChosen();
    void addPages(const engine::Image& image, const QString& path);
    void readMetadata();
    void tellInvalidImage();
    void write(const QString& path, int typeCode);
    void leaveSlot();

    void regionChanged(double left, double top, double width, double height);
    void regionFinished(int x1, int y1, int x2, int y2, bool* cancel);
    void mouseDown(int button, QPoint place); // canvas pixels
    void showContextMenu(QPoint place);       // screen pixels
    void keyDown(int code, int shift);
    void progress(int percent, const QString& message, bool* cancel);
    void download(qint64 read, qint64 total, bool* cancel);

    Services services_;
    int lastSaveRow_ = 1;  // of this document's save dialog
    bool unasked_ = false; // the close has been answered for
    bool filling_ = false; // pages are coming in one by one
    int commandDepth_ = 0;
    std::optional<WaitCursor> waiting_;
};

} // namespace kvn::document
