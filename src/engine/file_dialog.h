// The engine's file dialog object: the properties of the next question, then the answer, and for
// an open dialog the picture that was read.
#pragma once

#include <QString>

#include "engine/image.h"
#include "engine/trace.h"

class QWidget;

namespace kvn::engine {

class Dialog {
  public:
    explicit Dialog(Engine& engine);

    void setTraceIdentity(int doc, const QString& name);
    void setOwner(QWidget* owner) { owner_ = owner; }

    void setDefaultExt(const QString& extension);
    void setFilter(const QString& filter);
    void setFilterIndex(int row); // from 1
    int FilterIndex() const { return filterIndex_; }
    void setFlags(quint32 flags); // 0x801004 open, 0x800006 save
    void setOpenMode(int mode);   // 1 open dialog, 0 save dialog
    void setOpenOption(bool on);
    QString FileName() const { return fileName_; }
    QString FileTitle() const;
    // All pages of the file that the open dialog chose; empty if it could not be read.
    engine::Image Image() const { return image_; }
    // Why it could not; empty if it could.
    QString imageError() const { return imageError_; }

    bool ShowOpen();
    bool ShowSave();

  private:
    bool show(bool save);
    void record(const char* property, const QJsonArray& args);

    Engine& engine_;
    TraceIdentity who_{-1, QStringLiteral("Dialog")};
    QWidget* owner_ = nullptr;
    QString defaultExt_, filter_, fileName_, imageError_;
    int filterIndex_ = 1;
    quint32 flags_ = 0;
    engine::Image image_;
};

} // namespace kvn::engine
