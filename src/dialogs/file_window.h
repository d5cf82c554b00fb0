// The file window of the program: Qt's own (so that it works alike on every desktop and can be
// driven by assistive tools), with the program's filters and its rule that the name to save under
// fits the type that is shown.
#pragma once

#include <QFileDialog>

#include "dialogs/file_filter.h"
#include "engine/file_chooser.h"

class QComboBox;
class QLineEdit;

namespace kvn::dialogs {

class FileWindow : public QFileDialog {
    Q_OBJECT

  public:
    // `folder`: where to start when the request names none.
    FileWindow(const engine::FileRequest& request, const QString& folder);

    // What the user chose; valid once the window was accepted.
    engine::FileAnswer answer() const;

  public slots:
    void accept() override;

  private:
    void start(const QString& folder);
    void offerFolders();
    void arrange();
    void followRow();
    void followName(const QString& name);
    int row() const;

    engine::FileRequest request_;
    FileFilter filter_;
    QLineEdit* name_;
    QComboBox* types_;
    QString nameBefore_; // what stood there when another row was chosen
};

} // namespace kvn::dialogs
