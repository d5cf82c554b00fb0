// What documents need of the frame, one small interface for each role.
#pragma once

#include <QString>

class QPoint;
class QWidget;

namespace kvn::document {

class frmMain;

// The menu items, by name and by index within their group (-1: an item of its own).
class MenuState {
  public:
    virtual ~MenuState() = default;
    virtual void setEnabled(const QString& name, int index, bool on) = 0;
    virtual bool isEnabled(const QString& name, int index) const = 0;
    virtual void setChecked(const QString& name, int index, bool on) = 0;
    virtual bool isChecked(const QString& name, int index) const = 0;
    virtual void setCaption(const QString& name, int index, const QString& caption) = 0;
    virtual void setVisible(const QString& name, int index, bool on) = 0;
    // Makes the group have exactly the items `first` to `first + count - 1` behind its designed
    // ones, adding and removing at the end. Captions are then set one by one.
    virtual void resizeGroup(const QString& name, int first, int count) = 0;
    // Shows a menu of the tree as a context menu, in screen coordinates; not while it is disabled.
    virtual void popUp(const QString& name, const QPoint& place) = 0;
};

// The frame's rules and read-outs.
class FrameRules {
  public:
    virtual ~FrameRules() = default;
    virtual void EnDisMenuItems(bool enable) = 0;
    virtual void ImageMenusEnabled(bool enable) = 0;
    virtual void UpdateStatus(const QString& x, const QString& y, const QString& width,
                              const QString& height) = 0;
    // A short remark in the status strip, for what needs no answer.
    virtual void say(const QString& text) = 0;
    // Changes the current tool on the frame and on every open document.
    virtual void SelectTool(int tool) = 0;
};

// Where document windows live.
class DocumentHost {
  public:
    virtual ~DocumentHost() = default;
    // Takes a new, hidden document window in.
    virtual void adopt(frmMain* document) = 0;
    // Shows it, sized to its picture within the frame, and makes it the active one.
    virtual void present(frmMain* document) = 0;
    // Brings a shown document to the front, its size untouched.
    virtual void activate(frmMain* document) = 0;
    // Closes the window that holds the document, hidden or not, as its close button would: the
    // document's closeEvent may refuse. Deletes it (later) if it was closed.
    virtual void close(frmMain* document) = 0;
    virtual frmMain* ActiveForm() const = 0;
    // The owner of modal windows.
    virtual QWidget* window() = 0;
};

// Applies the program's look to a window, by the name of a skin: "" (the default), "Side
// Toolbar", "Toolbar", "Toolbar2".
class SkinHost {
  public:
    virtual ~SkinHost() = default;
    virtual void applySkin(QWidget* widget, const QString& skin) = 0;
};

} // namespace kvn::document
