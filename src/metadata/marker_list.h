// A list of check boxes that is easy to work: a click anywhere on a line turns its box, Space turns
// the boxes of all selected lines, and a hint in dim letters stands at the end of a line.
#pragma once

#include <QListWidget>

namespace kvn::metadata {

class MarkerList : public QListWidget {
    Q_OBJECT

  public:
    explicit MarkerList(QWidget* parent);

    void addLine(const QString& text, const QString& hint, bool checked);
    void checkAll(bool on);

    // All lines at once, without scrolling.
    QSize sizeHint() const override;

  protected:
    void keyPressEvent(QKeyEvent* event) override;
};

} // namespace kvn::metadata
