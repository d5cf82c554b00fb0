// The real asking service: Qt's own message, colour and file windows, and an input box in the
// program's look. It holds no state but the folder of the last file question.
#pragma once

#include "dialogs/asking.h"

namespace kvn::dialogs {

class QtAsking : public Asking {
  public:
    Answer message(const Message& message) override;
    QString inputBox(const QString& prompt, const QString& title, const QString& defaultText,
                     QWidget* owner) override;
    std::optional<quint32> color(quint32 start, QWidget* owner) override;
    // Runs events until the window is hidden, closed or destroyed. Other windows of the program
    // take no input meanwhile.
    void showModal(QDialog& window) override;
    engine::FileAnswer chooseFile(const engine::FileRequest& request) override;

    // Where the next file question without a folder of its own starts. The owner of the settings
    // may keep it from run to run.
    QString folder() const { return folder_; }
    void setFolder(const QString& folder) { folder_ = folder; }

  private:
    QString folder_;
};

} // namespace kvn::dialogs
