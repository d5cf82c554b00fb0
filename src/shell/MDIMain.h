// The frame: menus, bars and the area of the document windows, put together and kept in step.
// What happens on a command stands in the command tables; when a menu item may be used, in
// menu_rules.h. It is made empty; load() brings it up.
#pragma once

#include <QMainWindow>
#include <functional>
#include <memory>

#include "document/roles.h"
#include "document/services.h"
#include "engine/printer.h"
#include "engine/twain.h"
#include "shell/splash.h"

namespace kvn {
class CRegister;
}

namespace kvn::shell {

class ColorStrip;
class CommandRouter;
class DocumentWindows;
class FrameCommands;
class MenuRules;
class MenuTree;
class ToolBar;
class TopBar;

// What the frame does to the process around it.
struct ProcessHooks {
    std::function<void(const QString& title)> setTitle; // of boxes without one of their own
    std::function<void()> endNow;                       // no return, nothing saved
    std::function<void()> endSoon;                      // after a regular close
};

class MDIMain : public QMainWindow, public document::FrameRules, public document::SkinHost {
    Q_OBJECT

  public:
    MDIMain(engine::Engine& engine, dialogs::Asking& asking, dialogs::frmProgress& progress,
            document::ProgramState& state, CRegister& store, ProcessHooks hooks);
    ~MDIMain() override;

    // Shows the frame and makes it ready, in a fixed order of steps.
    void load();
    // Opens files from the event loop: whoever named them is not kept waiting.
    void openLater(const QStringList& paths);
    void bringToFront();

    void EnDisMenuItems(bool enable) override;
    void ImageMenusEnabled(bool enable) override;
    void UpdateStatus(const QString& x, const QString& y, const QString& width,
                      const QString& height) override;
    void say(const QString& text) override;
    void SelectTool(int tool) override;
    void applySkin(QWidget* widget, const QString& skin) override;

    MenuTree& menus() { return *menus_; }
    DocumentWindows& windows() { return *windows_; }
    document::Services& services() { return *services_; }

  protected:
    void closeEvent(QCloseEvent* event) override;
    void dragEnterEvent(QDragEnterEvent* event) override;
    void dropEvent(QDropEvent* event) override;

  private:
    void buildBars();
    void connectMenus();
    void rebuildWindowList();
    void setTextColors();
    void loadSettings();
    void storePen();

    document::ProgramState& state_;
    CRegister& store_;
    ProcessHooks hooks_;
    Splash Splash1_;
    std::unique_ptr<engine::Twain> Twain_;
    std::unique_ptr<engine::Printer> MyPrinter_;

    std::unique_ptr<DocumentWindows> windows_;
    std::unique_ptr<MenuTree> menus_;
    std::unique_ptr<document::Services> services_;
    std::unique_ptr<MenuRules> rules_;
    std::unique_ptr<FrameCommands> commands_;
    std::unique_ptr<CommandRouter> router_;
    TopBar* TopBar_ = nullptr;
    ToolBar* LeftBar_ = nullptr;
    ColorStrip* ColorsBg_ = nullptr;
};

} // namespace kvn::shell
