// When menu items may be used. The rules run at exactly three moments: a document was opened or
// the last one closed, a menu is pulled down, another document became active. Nothing runs while
// the program is idle.
#pragma once

namespace kvn::document {
class DocumentHost;
struct ProgramState;
} // namespace kvn::document

namespace kvn::shell {

class MenuTree;

class MenuRules {
  public:
    MenuRules(MenuTree& menus, const document::ProgramState& state, document::DocumentHost& host)
        : menus_(menus), state_(state), host_(host) {}

    void EnDisMenuItems(bool enable);
    // The seven menus that make no sense without an image.
    void ImageMenusEnabled(bool enable);

    void editPulledDown();
    void importPulledDown(bool anyScanner);
    void imagesPulledDown();

  private:
    void metadataItems();

    MenuTree& menus_;
    const document::ProgramState& state_;
    document::DocumentHost& host_;
};

} // namespace kvn::shell
