// One row of the menu tree as data. The tables of this folder are the only place where names,
// captions, indexes, shortcuts and routes of menu items stand.
#pragma once

#include <span>
#include <string_view>

namespace kvn::shell::menu {

// Who carries a command out.
enum class Route : unsigned char {
    None,   // a submenu or a separator
    Active, // the member of the active document
    All,    // the member of every open document, in slot order
    Frame,  // a command of the frame
};

inline constexpr int single = -1; // the index of an item that is in no group

struct Item {
    std::string_view name; // its own, or that of its group
    int index = single;    // within the group
    std::string_view caption;
    Route route = Route::None;
    std::string_view member;        // what the route calls
    std::span<const Item> children; // a submenu's
    std::string_view shortcut = {}; // portable texts, parted by ' '
    std::string_view hint = {};     // for the status strip; empty: that of the menu above
    std::string_view window = {};   // a command that its member goes on to call
    std::string_view icon = {};     // freedesktop name or one of ours
    bool isMenu = false;
    bool checkable = false;
    bool checked = false; // by design
    bool enabled = true;  // by design
    bool visible = true;  // by design

    constexpr bool isSeparator() const { return caption == "-"; }

    // Each returns a changed copy, so that a table reads as one line an item.
    constexpr Item keys(std::string_view text) const {
        Item copy = *this;
        copy.shortcut = text;
        return copy;
    }
    constexpr Item tip(std::string_view text) const {
        Item copy = *this;
        copy.hint = text;
        return copy;
    }
    constexpr Item picture(std::string_view freedesktopName) const {
        Item copy = *this;
        copy.icon = freedesktopName;
        return copy;
    }
    constexpr Item calls(std::string_view memberName) const {
        Item copy = *this;
        copy.member = memberName;
        return copy;
    }
    constexpr Item opens(std::string_view windowName) const {
        Item copy = *this;
        copy.window = windowName;
        return copy;
    }
    constexpr Item marked(bool on = false) const {
        Item copy = *this;
        copy.checkable = true;
        copy.checked = on;
        return copy;
    }
    constexpr Item disabled() const {
        Item copy = *this;
        copy.enabled = false;
        return copy;
    }
    constexpr Item hidden() const {
        Item copy = *this;
        copy.visible = false;
        return copy;
    }
};

// A command's member is named as its item without the leading "mnu", unless told otherwise.
constexpr std::string_view memberOf(std::string_view name) {
    return name.starts_with("mnu") ? name.substr(3) : name;
}

constexpr Item command(Route route, std::string_view name, int index, std::string_view caption) {
    return {.name = name,
            .index = index,
            .caption = caption,
            .route = route,
            .member = memberOf(name),
            .children = {}};
}
constexpr Item active(std::string_view name, int index, std::string_view caption) {
    return command(Route::Active, name, index, caption);
}
constexpr Item active(std::string_view name, std::string_view caption) {
    return active(name, single, caption);
}
constexpr Item all(std::string_view name, int index, std::string_view caption) {
    return command(Route::All, name, index, caption);
}
constexpr Item frame(std::string_view name, int index, std::string_view caption) {
    return command(Route::Frame, name, index, caption);
}
constexpr Item frame(std::string_view name, std::string_view caption) {
    return frame(name, single, caption);
}
constexpr Item submenu(std::string_view name, int index, std::string_view caption,
                       std::span<const Item> children) {
    return {.name = name,
            .index = index,
            .caption = caption,
            .member = {},
            .children = children,
            .isMenu = true};
}
constexpr Item submenu(std::string_view name, std::string_view caption,
                       std::span<const Item> children) {
    return submenu(name, single, caption, children);
}
constexpr Item line(std::string_view name, int index = single) {
    return {.name = name, .index = index, .caption = "-", .member = {}, .children = {}};
}

} // namespace kvn::shell::menu
