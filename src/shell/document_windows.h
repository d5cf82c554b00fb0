// The area of the frame in which the document windows live: it takes them in, shows, arranges and
// closes them, and knows which one is the active one.
#pragma once

#include <QObject>
#include <vector>

#include "document/roles.h"

class QMdiArea;
class QMdiSubWindow;
class QWidget;

namespace kvn::shell {

class DocumentWindows : public QObject, public document::DocumentHost {
    Q_OBJECT

  public:
    enum class Order { Cascade = 0, TileHorizontal = 1, TileVertical = 2 };

    // `frame` owns modal windows and the area.
    explicit DocumentWindows(QWidget& frame);
    ~DocumentWindows() override;

    void adopt(document::frmMain* document) override;
    void present(document::frmMain* document) override;
    void activate(document::frmMain* document) override;
    void close(document::frmMain* document) override;
    document::frmMain* ActiveForm() const override;
    QWidget* window() override { return &frame_; }

    QMdiArea& area() { return *area_; }
    void arrange(Order order);
    // The shown windows in the order of their opening.
    std::vector<document::frmMain*> shown() const;

  signals:
    void emptyAreaDoubleClicked();
    void activated(document::frmMain* document);
    // The list of shown windows, a title or the active one has changed.
    void listChanged();

  protected:
    bool eventFilter(QObject* watched, QEvent* event) override;

  private:
    QMdiSubWindow* windowOf(document::frmMain* document) const;
    void windowActivated(QMdiSubWindow* window);
    void takeFirstPlace(document::frmMain* document);
    // Takes a document off the lists. Its pointer is looked for and not followed.
    void forget(const document::frmMain* document);
    void cascade();
    void tile(bool columns);

    QWidget& frame_;
    QMdiArea* area_;
    // Shown documents, the last active one in front.
    std::vector<document::frmMain*> recent_;
    std::vector<document::frmMain*> presented_; // in the order of their opening
    document::frmMain* announced_ = nullptr;    // by the last activated()
    int placed_ = 0;
};

} // namespace kvn::shell
