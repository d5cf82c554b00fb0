// The bar of the progress window within its frame. Assistive programs read it as a progress bar
// with its value, which a plain frame would not tell them.
#pragma once

#include <QFrame>

namespace kvn::dialogs {

class ProgressBar : public QFrame {
    Q_OBJECT

  public:
    explicit ProgressBar(QWidget* parent = nullptr);

    // The bar stays within its frame for any value.
    void setPercent(int percent);
    int percent() const { return percent_; }

  protected:
    void resizeEvent(QResizeEvent* event) override;

  private:
    void placeBar();

    QFrame* picInner_;
    int percent_ = 0;
};

} // namespace kvn::dialogs
