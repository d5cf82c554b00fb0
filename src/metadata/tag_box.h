// Read-only text of "name = value" lines: names stand out, long values hang below their own line's
// start, and Copy without a selection takes the line of the cursor.
#pragma once

#include <QTextEdit>

namespace kvn::metadata {

class TagColors;

class TagBox : public QTextEdit {
    Q_OBJECT

  public:
    explicit TagBox(QWidget* parent);

    void setLines(const QString& text);

  signals:
    void findRequested();

  protected:
    void keyPressEvent(QKeyEvent* event) override;
    void contextMenuEvent(QContextMenuEvent* event) override;
    void changeEvent(QEvent* event) override;

  private:
    TagColors* colors_;
};

} // namespace kvn::metadata
