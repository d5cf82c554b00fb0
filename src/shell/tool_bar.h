// The side bar with the tool buttons, the group `cmd`. It shows which tool is pressed and reports
// clicks; it does not know what a tool does.
#pragma once

#include <QFrame>
#include <QHash>
#include <vector>

class QToolButton;

namespace kvn::shell {

class ToolBar : public QFrame {
    Q_OBJECT

  public:
    explicit ToolBar(QWidget* parent);

    // Tools without a button are passed over.
    void setPressed(int tool, bool pressed);
    bool isPressed(int tool) const;

    QSize sizeHint() const override;
    QSize minimumSizeHint() const override { return {0, 0}; }

  signals:
    void toolClicked(int tool);

  protected:
    void resizeEvent(QResizeEvent* event) override;

  private:
    struct Bar { // one of asxBars1, asxBars2
        QFrame* frame;
        std::vector<QToolButton*> buttons;
        int gapBefore;
    };

    Bar makeBar(const char* name, const char* title, int first, int count, int gap);
    int columnsFor(int height) const;
    int heightWith(int columns) const;
    void arrange();

    std::vector<Bar> bars_;
    QHash<int, QToolButton*> cmd_;
};

} // namespace kvn::shell
