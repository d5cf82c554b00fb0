#include "shell/MDIMain.h"

#include <QCloseEvent>
#include <QDragEnterEvent>
#include <QDropEvent>
#include <QHBoxLayout>
#include <QMdiArea>
#include <QMenuBar>
#include <QMimeData>
#include <QShortcut>
#include <QStatusBar>
#include <QTextEdit>
#include <QTimer>
#include <QToolButton>

#include "basic/settings_store.h"
#include "dialogs/look.h"
#include "document/commands.h"
#include "document/document_actions.h"
#include "document/frmMain.h"
#include "document/program_state.h"
#include "document/report.h"
#include "document/settings.h"
#include "shell/beside_program.h"
#include "shell/color_strip.h"
#include "shell/command_router.h"
#include "shell/document_windows.h"
#include "shell/frame_commands.h"
#include "shell/frame_place.h"
#include "shell/menu_rules.h"
#include "shell/menu_tree.h"
#include "shell/pane_keys.h"
#include "shell/tool_bar.h"
#include "shell/tool_select.h"
#include "shell/top_bar.h"
#include "shell/window_list.h"

namespace kvn::shell {

using document::frmMain;

namespace {

constexpr int remarkTime = 8000; // milliseconds that a remark stands in the status strip

QStringList localFiles(const QMimeData& data) {
    QStringList paths;
    for (const QUrl& url : data.urls())
        if (url.isLocalFile()) paths.append(url.toLocalFile());
    return paths;
}

} // namespace

MDIMain::MDIMain(engine::Engine& engine, dialogs::Asking& asking, dialogs::frmProgress& progress,
                 document::ProgramState& state, CRegister& store, ProcessHooks hooks)
    : state_(state), store_(store), hooks_(std::move(hooks)),
      windows_(std::make_unique<DocumentWindows>(*this)) {
    setObjectName(QStringLiteral("MDIMain"));
    setWindowTitle(QStringLiteral("OML Kestrel Vane"));
    setAcceptDrops(true);
    buildBars();
    menus_ = std::make_unique<MenuTree>(
        *menuBar(), [this](const menu::Item& item) { return isBuilt(item, state_.commands); });
    services_ = std::make_unique<document::Services>(
        document::Services{engine, asking, progress, state_, *menus_, *this, *windows_, *this});
    rules_ = std::make_unique<MenuRules>(*menus_, state_, *windows_);
    commands_ = std::make_unique<FrameCommands>(
        FrameContext{*services_, *menus_, *windows_, hooks_.endNow,
                     [this](const QString& file) { launchBeside(state_, file); }});
    router_ = std::make_unique<CommandRouter>(*services_, *commands_);
    connectMenus();
}

// The documents go first: they hold on to the menus and rules.
MDIMain::~MDIMain() {
    windows_.reset();
}

void MDIMain::buildBars() {
    menuBar()->setNativeMenuBar(false);
    menuBar()->setObjectName(QStringLiteral("MenuBar"));
    // What a narrow frame shows in place of the menus that do not fit.
    if (auto* more = menuBar()->findChild<QToolButton*>(QStringLiteral("qt_menubar_ext_button"))) {
        more->setIcon(dialogs::icon(QStringLiteral("go-next")));
        more->setAccessibleName(QStringLiteral("More menus"));
    }
    statusBar()->setObjectName(QStringLiteral("StatusBar"));
    statusBar()->setSizeGripEnabled(false);
    // The strip paints its text, so nobody else would learn of it.
    statusBar()->setAccessibleName(QStringLiteral("Status"));
    connect(statusBar(), &QStatusBar::messageChanged, statusBar(),
            &QWidget::setAccessibleDescription);
    auto* client = new QWidget(this);
    TopBar_ = new TopBar(client);
    LeftBar_ = new ToolBar(client);
    ColorsBg_ = new ColorStrip(state_, TopBar_);
    TopBar_->setColors(ColorsBg_);
    auto* middle = new QHBoxLayout;
    middle->setSpacing(0);
    middle->addWidget(LeftBar_);
    middle->addWidget(&windows_->area(), 1);
    auto* column = new QVBoxLayout(client);
    column->setContentsMargins(0, 0, 0, 0);
    column->setSpacing(0);
    column->addWidget(TopBar_);
    column->addLayout(middle, 1);
    setCentralWidget(client);
    connect(LeftBar_, &ToolBar::toolClicked, this, &MDIMain::SelectTool);
    connect(ColorsBg_, &ColorStrip::exchanged, this, &MDIMain::setTextColors);
}

void MDIMain::connectMenus() {
    const auto& services = *services_;
    const auto guard = [this](auto work) {
        document::guarded(services_->asking, this, std::function<void()>(work));
    };
    connect(menus_.get(), &MenuTree::chosen, this,
            [this](const menu::Item& item) { router_->run(item); });
    connect(menus_->menuOf(QStringLiteral("mnumEdit")), &QMenu::aboutToShow, this,
            [this, guard] { guard([this] { rules_->editPulledDown(); }); });
    connect(menus_->menuOf(QStringLiteral("mnumImages")), &QMenu::aboutToShow, this,
            [this, guard] { guard([this] { rules_->imagesPulledDown(); }); });
    connect(menus_->menuOf(QStringLiteral("mnuImport")), &QMenu::aboutToShow, this,
            [this] { rules_->importPulledDown(Twain_ && !Twain_->Sources().isEmpty()); });
    connect(windows_.get(), &DocumentWindows::activated, this,
            [](frmMain* form) { document::documentActivated(*form); });
    connect(windows_.get(), &DocumentWindows::listChanged, this, &MDIMain::rebuildWindowList);
    connect(windows_.get(), &DocumentWindows::emptyAreaDoubleClicked, this,
            [services] { document::openDocument(services); });
    // The key of the menu command would end the program without asking: this one closes the frame.
    connect(new QShortcut(QKeySequence(QStringLiteral("Ctrl+Q")), this), &QShortcut::activated,
            this, &QWidget::close);
    installPaneKeys(*this, windows_->area(), {LeftBar_, TopBar_});
}

void MDIMain::load() {
    Splash1_.open(pathBeside(state_, QStringLiteral("Splash.spl")));
    Splash1_.show();
    applySkin(this, QString());
    applySkin(LeftBar_, QStringLiteral("Side Toolbar"));
    applySkin(TopBar_, QStringLiteral("Toolbar"));
    applySkin(ColorsBg_, QStringLiteral("Toolbar2"));
    hooks_.setTitle(QStringLiteral("Kestrlvane"));
    LeftBar_->setBackgroundRole(QPalette::Button);
    Twain_ = std::make_unique<engine::Twain>();
    MyPrinter_ = std::make_unique<engine::Printer>(services_->engine);
    MyPrinter_->setOption1(0);
    restoreFramePlace(*this);
    Splash1_.close();
    show();
    windows_->area().setFocus();
    SelectTool(0);
    update();
    EnDisMenuItems(false);
    loadSettings();
    storePen();
    menus_->setVisible(QStringLiteral("mnumDraw"), menu::single, false);
    // The menu's mark is set by design, whatever was stored.
    state_.settings.DoubleBuffer = menus_->isChecked(QStringLiteral("mnuSettings"), 3);
}

// A stored number that is none is reported; the program then runs with its defaults.
void MDIMain::loadSettings() {
    document::guarded(services_->asking, this,
                      [this] { document::LoadSettings(state_.settings, store_); });
}

void MDIMain::storePen() {
    state_.PenWidth = 1;
    state_.PenLineStyle = 0;
    state_.PenFillStyle = -1;
    state_.PenOpacity = 100.0;
    state_.PenTextureMode = 2;
    state_.PenTexturePreset = -1;
}

void MDIMain::EnDisMenuItems(bool enable) {
    rules_->EnDisMenuItems(enable);
}

void MDIMain::ImageMenusEnabled(bool enable) {
    rules_->ImageMenusEnabled(enable);
}

void MDIMain::UpdateStatus(const QString& x, const QString& y, const QString& width,
                           const QString& height) {
    TopBar_->UpdateStatus(x, y, width, height);
}

void MDIMain::say(const QString& text) {
    statusBar()->showMessage(text, remarkTime);
}

void MDIMain::SelectTool(int tool) {
    selectTool(tool, state_, *LeftBar_);
    TopBar_->placeCoords();
}

void MDIMain::applySkin(QWidget* widget, const QString& skin) {
    dialogs::applySkin(widget, skin);
}

// The text box of the active document follows the wells.
void MDIMain::setTextColors() {
    const frmMain* form = windows_->ActiveForm();
    if (!form || !state_.IsAnyOpened()) return;
    QPalette colors = form->TextInput2->palette();
    colors.setColor(QPalette::Text, ColorsBg_->qtColor(0));
    colors.setColor(QPalette::Base, ColorsBg_->qtColor(1));
    form->TextInput2->setPalette(colors);
}

void MDIMain::rebuildWindowList() {
    fillWindowList(*menus_->menuOf(QStringLiteral("mnuWindow")), *windows_);
}

void MDIMain::closeEvent(QCloseEvent* event) {
    if (!document::closeAll(*services_)) {
        event->ignore();
        return;
    }
    document::SaveSettings(state_.settings, store_);
    saveFramePlace(*this);
    event->accept();
    hooks_.endSoon();
}

void MDIMain::dragEnterEvent(QDragEnterEvent* event) {
    if (!localFiles(*event->mimeData()).isEmpty()) event->acceptProposedAction();
}

void MDIMain::dropEvent(QDropEvent* event) {
    const QStringList paths = localFiles(*event->mimeData());
    event->acceptProposedAction();
    openLater(paths);
}

void MDIMain::openLater(const QStringList& paths) {
    QTimer::singleShot(0, this, [this, paths] { document::openFiles(*services_, paths); });
}

void MDIMain::bringToFront() {
    if (isMinimized()) setWindowState(windowState() & ~Qt::WindowMinimized);
    raise();
    activateWindow();
}

} // namespace kvn::shell
