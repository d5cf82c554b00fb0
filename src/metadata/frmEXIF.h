// The window that lists tags, EXIF and IPTC alike: plain text, one "name = value" a line, to be
// read, searched and copied. There is one for the whole program; each listing takes the place of
// the one before.
#pragma once

#include <QList>
#include <QWidget>

#include "engine/metadata.h"

namespace kvn::metadata {

class FindBar;
class TagBox;

class frmEXIF : public QWidget {
    Q_OBJECT

  public:
    explicit frmEXIF(QWidget* owner);

    // Shows the items in the owner's window of this kind, made if it has none, and brings it to
    // the front. It goes when the user closes it.
    static void list(const QList<engine::MetadataItem>& items, QWidget* owner);

    TagBox* txtExif = nullptr;

  protected:
    void keyPressEvent(QKeyEvent* event) override;

  private:
    FindBar* find_;
};

} // namespace kvn::metadata
