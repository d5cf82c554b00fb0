#include "shell/program.h"

#include <cstdlib>
#include <optional>

#include "basic/settings_store.h"
#include "dialogs/frmProgress.h"
#include "dialogs/look.h"
#include "dialogs/qt_asking.h"
#include "document/commands.h"
#include "document/program_state.h"
#include "document/report.h"
#include "effects/commands.h"
#include "engine/engine.h"
#include "metadata/metadata_commands.h"
#include "shell/MDIMain.h"
#include "shell/application.h"
#include "shell/beside_program.h"
#include "shell/desktop_service.h"
#include "shell/frmSplash.h"
#include "shell/version.h"

namespace kvn::shell {

namespace {

// Name of the desktop entry, which a Wayland desktop takes the icon from.
const char* const desktopEntry = "org.kestrelvane.kestrelvane";

constexpr int splashPaintTime = 50; // milliseconds until the splash is surely on the screen

void setNames() {
    QCoreApplication::setApplicationName(QStringLiteral("kestrelvane"));
    QCoreApplication::setApplicationVersion(programVersion());
    QGuiApplication::setDesktopFileName(QString::fromLatin1(desktopEntry));
    // The end is decided here: between splash and frame no window is open for a moment.
    QGuiApplication::setQuitOnLastWindowClosed(false);
}

// Everything that lives as long as the process, in the order in which it depends on each other.
struct Program {
    engine::Engine engine;
    dialogs::QtAsking asking;
    dialogs::frmProgress progress;
    document::ProgramState state;
    CRegister store;
    DesktopService desktop;
    std::optional<MDIMain> frame;

    Program() {
        const QString traceFile = qEnvironmentVariable("KESTRELVANE_TRACE");
        if (!traceFile.isEmpty()) engine.trace().setFile(traceFile);
        engine.setFileChooser(&asking);
        document::addDocumentCommands(state.commands);
        effects::addEffectsCommands(state.commands);
        metadata::addMetadataCommands(state.commands);
    }

    void makeFrame() {
        if (frame) return;
        frame.emplace(engine, asking, progress, state, store,
                      ProcessHooks{
                          [this](const QString& title) { asking.setApplicationTitle(title); },
                          [] { std::_Exit(EXIT_SUCCESS); },
                          [] { QCoreApplication::quit(); },
                      });
    }

    void showFrame() {
        makeFrame();
        frame->load();
        QObject::connect(&desktop, &DesktopService::activated, &*frame, &MDIMain::bringToFront);
        QObject::connect(&desktop, &DesktopService::openRequested, &*frame, &MDIMain::openLater);
        desktop.start();
    }
};

} // namespace

int runProgram(int argc, char** argv) {
    Application app(argc, argv);
    setNames();
    dialogs::installLook(app);
    Program program;
    app.setReport([&](std::exception_ptr failure) {
        document::guarded(program.asking, QApplication::activeWindow(),
                          [&] { std::rethrow_exception(failure); });
    });

    auto splash =
        std::make_unique<frmSplash>(pathBeside(program.state, QStringLiteral("Splash.spl")));
    QObject::connect(splash.get(), &frmSplash::unloaded, &app, &QCoreApplication::quit);
    QObject::connect(splash.get(), &frmSplash::elapsed, &app, [&] {
        program.showFrame();
        splash.release()->deleteLater();
    });
    splash->show();
    // The frame is put together while the splash stands; it is shown when its time is over.
    QTimer::singleShot(splashPaintTime, &app, [&] { program.makeFrame(); });
    return QCoreApplication::exec();
}

} // namespace kvn::shell
