#include "shell/menu/tree.h"

namespace kvn::shell::menu {

namespace {

constexpr Item items[] = {
    active("mnuMetadata", 0, "EXIF Tags...").tip("List the camera's notes in the picture"),
    active("mnuMetadata", 1, "EXIF Thumbnail").tip("Add the camera's small picture as an image"),
    active("mnuMetadata", 2, "IPTC Tags...").tip("List title, author and other press notes"),
    active("mnuMetadata", 3, "JPEG Markers to Save...")
        .tip("Choose which notes a saved JPEG file keeps"),
    active("mnuMetadata", 4, "Copy Markers to existing image")
        .tip("Copy the notes of one JPEG file to another"),
};

} // namespace

std::span<const Item> metadataMenu() {
    return items;
}

} // namespace kvn::shell::menu
