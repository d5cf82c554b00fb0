// The base style under the style sheet: Fusion with flat document title bars, quiet metrics and
// the program's icons in Qt's own boxes.
#pragma once

#include <QProxyStyle>

class QStyleOptionTitleBar;

namespace kvn::dialogs {

class LookStyle : public QProxyStyle {
    Q_OBJECT

  public:
    LookStyle();

    void drawComplexControl(ComplexControl control, const QStyleOptionComplex* option,
                            QPainter* painter, const QWidget* widget) const override;
    void drawPrimitive(PrimitiveElement element, const QStyleOption* option, QPainter* painter,
                       const QWidget* widget) const override;
    int pixelMetric(PixelMetric metric, const QStyleOption* option,
                    const QWidget* widget) const override;
    int styleHint(StyleHint hint, const QStyleOption* option, const QWidget* widget,
                  QStyleHintReturn* data) const override;
    QIcon standardIcon(StandardPixmap which, const QStyleOption* option,
                       const QWidget* widget) const override;

  private:
    void drawTitleBar(const QStyleOptionTitleBar& bar, QPainter& painter,
                      const QWidget* widget) const;
    void drawTitleButton(const QStyleOptionTitleBar& bar, SubControl button, QPainter& painter,
                         const QWidget* widget) const;
};

} // namespace kvn::dialogs
