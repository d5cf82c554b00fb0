// Everything a document window is given when it is made.
#pragma once

namespace kvn::engine {
class Engine;
}
namespace kvn::dialogs {
class Asking;
class frmProgress;
} // namespace kvn::dialogs

namespace kvn::document {

struct ProgramState;
class MenuState;
class FrameRules;
class DocumentHost;
class SkinHost;

struct Services {
    engine::Engine& engine;
    dialogs::Asking& asking;
    dialogs::frmProgress& progress;
    ProgramState& state;
    MenuState& menus;
    FrameRules& rules;
    DocumentHost& host;
    SkinHost& skins;
};

} // namespace kvn::document
