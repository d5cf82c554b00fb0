#include "dialogs/progress_bar.h"

#include <QAccessible>
#include <QAccessibleWidget>
#include <algorithm>

namespace kvn::dialogs {

namespace {

class BarAccess : public QAccessibleWidget, public QAccessibleValueInterface {
  public:
    explicit BarAccess(ProgressBar* bar) : QAccessibleWidget(bar, QAccessible::ProgressBar) {}

    void* interface_cast(QAccessible::InterfaceType type) override {
        return type == QAccessible::ValueInterface ? static_cast<QAccessibleValueInterface*>(this)
                                                   : QAccessibleWidget::interface_cast(type);
    }
    QString text(QAccessible::Text kind) const override {
        return kind == QAccessible::Value ? QString::number(percent()) + u'%'
                                          : QAccessibleWidget::text(kind);
    }
    QVariant currentValue() const override { return percent(); }
    void setCurrentValue(const QVariant&) override {}
    QVariant maximumValue() const override { return 100; }
    QVariant minimumValue() const override { return 0; }
    QVariant minimumStepSize() const override { return 1; }

  private:
    int percent() const { return static_cast<const ProgressBar*>(object())->percent(); }
};

QAccessibleInterface* barAccess(const QString&, QObject* object) {
    auto* bar = qobject_cast<ProgressBar*>(object);
    return bar ? new BarAccess(bar) : nullptr;
}

void installBarAccess() {
    static const bool once = [] {
        QAccessible::installFactory(barAccess);
        return true;
    }();
    Q_UNUSED(once);
}

} // namespace

ProgressBar::ProgressBar(QWidget* parent) : QFrame(parent), picInner_(new QFrame(this)) {
    installBarAccess();
    setObjectName(QStringLiteral("picProgress"));
    setAccessibleName(QStringLiteral("Progress"));
    picInner_->setObjectName(QStringLiteral("picInner"));
}

void ProgressBar::setPercent(int percent) {
    percent_ = std::clamp(percent, 0, 100);
    placeBar();
    QAccessibleValueChangeEvent event(this, percent_);
    QAccessible::updateAccessibility(&event);
}

void ProgressBar::placeBar() {
    const int length = static_cast<int>(width() * percent_ / 100.0 + 0.5);
    picInner_->setGeometry(0, 0, std::max(1, length), height());
}

void ProgressBar::resizeEvent(QResizeEvent* event) {
    QFrame::resizeEvent(event);
    placeBar();
}

} // namespace kvn::dialogs
