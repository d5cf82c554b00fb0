#include "engine/detail/imgx_view_access.h"

#include <QAccessible>
#include <QAccessibleWidget>

#include "engine/imgx.h"

namespace kvn::engine::detail {

namespace {

class CanvasAccess : public QAccessibleWidget {
  public:
    explicit CanvasAccess(ImgX* control) : QAccessibleWidget(control, QAccessible::Canvas) {}

    QString text(QAccessible::Text kind) const override {
        if (kind != QAccessible::Description) return QAccessibleWidget::text(kind);
        const auto* control = static_cast<const ImgX*>(object());
        if (control->IsEmpty()) return ImgX::tr("No picture");
        const engine::Info info = control->Info();
        return ImgX::tr("%1 by %2 pixels at %3 percent")
            .arg(info.Width())
            .arg(info.Height())
            .arg(control->Zoom() * 100, 0, 'g', 4);
    }
};

QAccessibleInterface* canvasAccess(const QString&, QObject* object) {
    auto* control = qobject_cast<ImgX*>(object);
    return control ? new CanvasAccess(control) : nullptr;
}

} // namespace

void installCanvasAccess() {
    static const bool once = [] {
        QAccessible::installFactory(canvasAccess);
        return true;
    }();
    Q_UNUSED(once);
}

} // namespace kvn::engine::detail
