// The tools of the frame's tool bar as data. A tool's id is the index of its button in the group
// `cmd`.
#pragma once

#include <span>

namespace kvn::shell {

struct Tool {
    int id;
    const char* tip;  // also the button's accessible name
    const char* hint; // for the status strip
    const char* icon; // one of the program's own or a freedesktop name
};

std::span<const Tool> tools();

inline constexpr int toolCount = 21; // ids 0 to 20, not all of them with a button

} // namespace kvn::shell
