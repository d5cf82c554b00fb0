// Vector icons of one colour that follow the colour of the text, light or dark, enabled or not.
#pragma once

#include <QIconEngine>
#include <QString>

namespace kvn::dialogs {

// Draws the opaque parts of a vector file in the palette's text colour.
class InkIconEngine : public QIconEngine {
  public:
    explicit InkIconEngine(const QString& file) : file_(file) {}

    void paint(QPainter* painter, const QRect& rect, QIcon::Mode mode, QIcon::State state) override;
    QPixmap pixmap(const QSize& size, QIcon::Mode mode, QIcon::State state) override;
    QPixmap scaledPixmap(const QSize& size, QIcon::Mode mode, QIcon::State state,
                         qreal scale) override;
    QIconEngine* clone() const override { return new InkIconEngine(file_); }
    QString key() const override { return QStringLiteral("KvnInk"); }
    bool isNull() override { return file_.isEmpty(); }

  private:
    QString file_;
};

} // namespace kvn::dialogs
