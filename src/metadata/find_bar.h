// A strip that finds words in a text box while they are typed. Hidden until it is opened.
#pragma once

#include <QFrame>

class QKeyEvent;
class QLabel;
class QLineEdit;
class QTextEdit;

namespace kvn::metadata {

class FindBar : public QFrame {
    Q_OBJECT

  public:
    FindBar(QTextEdit& text, QWidget* parent);

    void open();
    void close();
    // To the next or previous place; round the end. Opens the strip if nothing is looked for.
    void step(bool forward);

  protected:
    void keyPressEvent(QKeyEvent* event) override;

  private:
    void search();

    QTextEdit& text_;
    QLineEdit* txtFind_;
    QLabel* lblFound_;
};

} // namespace kvn::metadata
