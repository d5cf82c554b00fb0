// The real asking service: Qt's own message, colour and file windows, and an input box in the
// program's look. It keeps nothing but the application's title and the folder of the last file
// question.
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

    // The title of a box without one of its own; the application's display name unless set.
    // (A display name that is set would also stand behind every window's title.)
    QString applicationTitle() const;
    void setApplicationTitle(const QString& title) { title_ = title; }

    // Where the next file question without a folder of its own starts. The owner of the settings
    // may keep it from run to run.
    QString folder() const { return folder_; }
    void setFolder(const QString& folder) { folder_ = folder; }

  private:
    QString title_;
    QString folder_;
};

} // namespace kvn::dialogs
