// What the frame carries out itself: opening and closing documents, windows, help, and the few
// switches that belong to no document. Found by name, as documents' commands are.
#pragma once

#include <QString>
#include <functional>
#include <string_view>

#include "document/services.h"

namespace kvn::shell {

class DocumentWindows;
class MenuTree;

// What the commands need. The callbacks are the frame's own.
struct FrameContext {
    document::Services services;
    MenuTree& menus;
    DocumentWindows& windows;
    std::function<void()> exit;                      // ends the process at once
    std::function<void(const QString& file)> launch; // opens a file beside the program
};

class FrameCommands {
  public:
    explicit FrameCommands(FrameContext context) : context_(std::move(context)) {}

    static bool contains(std::string_view member, int index);
    // Throws RuntimeError(memberNotFound) for a name that is not there.
    void run(std::string_view member, int index) const;

  private:
    FrameContext context_;
};

} // namespace kvn::shell
