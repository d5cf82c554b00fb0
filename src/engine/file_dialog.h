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
    // All pages of the file that the open dialog chose, read when they are first asked for; empty
    // if it could not be read.
    engine::Image Image();
    // Why it could not; empty if it could.
    QString imageError();
    // Lets the picture go, once it was taken over: a second holder would keep its pixels.
    void forgetImage();
    // Whose window follows the reading; a null image for none.
    void setProgressTarget(const engine::Image& target) { progressTarget_ = target; }
    // Takes a file that the user named elsewhere as if the open dialog had chosen it.
    void chooseFile(const QString& path);

    bool ShowOpen();
    bool ShowSave();

  private:
    bool show(bool save);
    void read();
    void record(const char* property, const QJsonArray& args);

    Engine& engine_;
    TraceIdentity who_{-1, QStringLiteral("Dialog")};
    QWidget* owner_ = nullptr;
    QString defaultExt_, filter_, fileName_, imageError_;
    int filterIndex_ = 1;
    quint32 flags_ = 0;
    engine::Image image_, progressTarget_;
    bool unread_ = false;
};

} // namespace kvn::engine
