// The document window: one open picture, its working copies, its file and its life. Commands are
// members found by name through the command table (document/commands.h).
#pragma once

#include <QWidget>
#include <memory>

#include "basic/error.h"
#include "document/services.h"
#include "engine/file_dialog.h"
#include "engine/imgx.h"

class QLabel;
class QFrame;

namespace kvn::document {

class frmMain : public QWidget {
    Q_OBJECT

  public:
    frmMain(const Services& services, QWidget* parent);
    ~frmMain() override;

    // --- fields ---------------------------------------------------------------
    QString FilePath;
    bool Saved = false;
    qint16 DocIndex = 0;
    bool SaveAsCancelled = false;
    QString DisplayName;
    bool IsTiff = false;
    QString TiffPath;
    engine::Image ScratchImage, ScratchImage2;

    engine::ImgX* ImgX = nullptr;       // the shown picture and the document's undo stack
    engine::ImgX* imgxAction = nullptr; // the working copy of commands
    engine::ImgX* ImgXBuffer = nullptr; // stands there, takes no part
    engine::Dialog Dialog;

    void setDocIndex(qint16 index); // also names the slot in the trace

    // --- life -----------------------------------------------------------------
    bool NewImage();
    bool LoadImage();
    void LoadURL(const QString& url);
    void Save();
    void SaveAs();
    bool KillMe(); // True when the close must be cancelled
    bool AskToSaveChanges();
    void RaiseError(const RuntimeError& error);
    void ApplySaveSettings();
    // Shows a file that the user named without the dialog (drop, recent files).
    bool LoadFile(const QString& path);

    const Services& services() const { return services_; }

  protected:
    void closeEvent(QCloseEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;

  private:
    Services services_;
};

} // namespace kvn::document
