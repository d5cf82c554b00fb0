// A whole frame for tests: real engine and documents, a scripted user, folders of its own for
// settings and state, and a process that only notes what was asked of it.
#pragma once

#include <QAction>
#include <QApplication>
#include <QDir>
#include <QMenu>
#include <QThreadPool>
#include <memory>

#include "basic/settings_store.h"
#include "document/desk.h"
#include "document/settings.h"
#include "effects/commands.h"
#include "shell/MDIMain.h"
#include "shell/document_windows.h"
#include "shell/menu_tree.h"

namespace kvn::test {

struct Frame {
    QTemporaryDir folder;
    engine::Engine engine;
    ScriptedUser user;
    dialogs::frmProgress progress;
    document::ProgramState state;
    CRegister store;
    QString title;
    bool endedNow = false, endedSoon = false;
    std::unique_ptr<shell::MDIMain> window;

    Frame() {
        for (const char* name : {"XDG_CONFIG_HOME", "XDG_STATE_HOME", "XDG_DATA_HOME"})
            qputenv(name, folder.path().toUtf8());
        engine.trace().setKept(true);
        engine.setFileChooser(&user);
        state.programFolder = folder.path();
        document::addDocumentCommands(state.commands);
        effects::addEffectsCommands(state.commands);
        shell::ProcessHooks hooks{[this](const QString& text) { title = text; },
                                  [this] { endedNow = true; }, [this] { endedSoon = true; }};
        window = std::make_unique<shell::MDIMain>(engine, user, progress, state, store, hooks);
    }

    // The desktop's list of files is written in the background, into the folder that goes now.
    ~Frame() {
        window.reset();
        QThreadPool::globalInstance()->waitForDone();
    }

    void start() {
        window->load();
        QVERIFY(QTest::qWaitForWindowExposed(window.get()));
    }
    shell::MenuTree& menus() { return window->menus(); }
    shell::DocumentWindows& windows() { return window->windows(); }
    void choose(const char* name, int index = -1) {
        QAction* item = menus().action(QString::fromLatin1(name), index);
        QVERIFY2(item && item->isEnabled(), name);
        item->trigger();
    }
    void store_(const char* name, const QString& text) {
        store.REGSaveSetting(document::settingsRoot, QString::fromLatin1(document::settingsPath),
                             QString::fromLatin1(name), text);
    }
    QString stored(const char* name) {
        return store.REGGetSetting(document::settingsRoot,
                                   QString::fromLatin1(document::settingsPath),
                                   QString::fromLatin1(name), QStringLiteral("(none)"));
    }
    QString picture(const QString& name, int width = 32, int height = 24) const {
        QImage image(width, height, QImage::Format_RGB32);
        image.fill(qRgb(10, 20, 30));
        image.save(folder.filePath(name), "PNG");
        return folder.filePath(name);
    }
    // Opens a picture through the menu.
    document::frmMain* open(const QString& name, int width = 32, int height = 24) {
        user.files.push_back({true, picture(name, width, height), 1});
        choose("mnuOpen");
        return windows().ActiveForm();
    }
    // The items that the rules hold usable, built or not, by object name.
    QStringList enabledItems() {
        QStringList names;
        for (const QAction* item : window->findChildren<QAction*>()) {
            const QString name = item->objectName();
            if (name.isEmpty() || item->isSeparator()) continue;
            const int bracket = name.indexOf(u'(');
            const int index = bracket < 0 ? -1 : name.mid(bracket + 1).chopped(1).toInt();
            if (menus().isEnabled(name.left(bracket), index)) names.append(name);
        }
        names.sort();
        names.removeDuplicates();
        return names;
    }
};

} // namespace kvn::test
