// What the engine's file dialog needs of the window that shows it.
#pragma once

#include <QString>

class QWidget;

namespace kvn::engine {

struct FileRequest {
    bool save = false;
    QString filter;      // display text and pattern in turn, separated by '|'
    int filterIndex = 1; // row from 1
    QString defaultExt;  // without the dot
    QString folder;      // empty: wherever the last one was
    QString fileName;    // proposed name, may be empty
    quint32 flags = 0;   // common dialog flags: 2 overwrite prompt, 0x1000 file must exist
    QWidget* owner = nullptr;
};

struct FileAnswer {
    bool accepted = false;
    QString path;
    int filterIndex = 1;
};

class FileChooser {
  public:
    virtual ~FileChooser() = default;
    virtual FileAnswer chooseFile(const FileRequest& request) = 0;
};

} // namespace kvn::engine
