// Chooses which JPEG markers are kept when a picture is saved: a list of fourteen check boxes over
// a bit mask. It only edits its copy of the mask; the caller sets it, shows the window through
// Asking::showModal and reads it back.
#pragma once

#include <QDialog>

namespace kvn::metadata {

class MarkerList;

class frmJPEGMarkers : public QDialog {
    Q_OBJECT

  public:
    explicit frmJPEGMarkers(QWidget* owner);

    // Bit i-1 is marker i. Bits above the list's are kept until a line is changed.
    quint32 Markers = 0;
    // True once the user left by Cancel, Esc or the close box.
    bool Cancelled = false;
    // True while LoadList runs: no change of the list is the user's then.
    bool Loading = false;

    // Fills the list from Markers.
    void LoadList();

    MarkerList* lstJPEGMarkers = nullptr;

  public slots:
    void reject() override;

  private:
    void listChanged();
    void showListMenu(const QPoint& at);
};

} // namespace kvn::metadata
