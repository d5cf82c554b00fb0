// The start window: a picture that stands for half a second and then brings up the frame. A key
// pressed in it takes it away at once; since that stops the timer too, the program then ends
// without its frame.
#pragma once

#include <QTimer>
#include <QWidget>

class QLabel;

namespace kvn::shell {

class frmSplash : public QWidget {
    Q_OBJECT

  public:
    // `picture`: the file with the picture.
    explicit frmSplash(const QString& picture);

  signals:
    // The time is over and the window hidden. Its owner shows the frame, then unloads it.
    void elapsed();
    // Unloaded before its time by a key or a close.
    void unloaded();

  protected:
    void showEvent(QShowEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;
    void closeEvent(QCloseEvent* event) override;

  private:
    QLabel* Image1_;
    QTimer Timer1_;
};

// In the middle of the main screen.
void centerOnScreen(QWidget& window);

} // namespace kvn::shell
