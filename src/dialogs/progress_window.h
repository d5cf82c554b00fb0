// The window of the progress report: a bar, a text and a Cancel button. It knows no operation; the
// progress object moves it.
#pragma once

#include <QDialog>

class QLabel;
class QPushButton;

namespace kvn::dialogs {

class ProgressBar;

class ProgressWindow : public QDialog {
    Q_OBJECT

  public:
    explicit ProgressWindow(QWidget* owner);

    // Makes `owner`'s window the one this stands above.
    void setOwner(QWidget* owner);
    void setMessage(const QString& message);
    // Bar and title of a report of `percent`; the bar stays within its frame for any value.
    void setPercent(int percent);
    // The bar as an operation begins with it, one pixel wide, and the plain title.
    void setStart();

  signals:
    void cancelClicked();

  public slots:
    // Esc and the close box mean Cancel; the window goes when the operation answers.
    void reject() override;

  protected:
    void closeEvent(QCloseEvent* event) override;

  private:
    ProgressBar* picProgress_;
    QLabel* lblProgressText_;
    QPushButton* btnCancel_;
};

} // namespace kvn::dialogs
