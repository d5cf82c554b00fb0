// From a chosen menu item to whoever carries it out. It holds no logic of its own: the item says
// by what route, the command tables hold the members.
#pragma once

#include <QString>

#include "document/services.h"
#include "shell/menu/item.h"

namespace kvn::document {
class CommandTable;
}

namespace kvn::shell {

class FrameCommands;

class CommandRouter {
  public:
    CommandRouter(const document::Services& services, const FrameCommands& frame)
        : services_(services), frame_(frame) {}

    // Failures end in the error box.
    void run(const menu::Item& item) const;

  private:
    void runActive(const QString& member, int index) const;
    void runAll(const QString& member, int index) const;

    document::Services services_;
    const FrameCommands& frame_;
};

// Whether what the item calls has been built. Submenus and separators call nothing.
bool isBuilt(const menu::Item& item, const document::CommandTable& commands);

} // namespace kvn::shell
