#include "shell/menu/tree.h"

namespace kvn::shell::menu {

namespace {

// The list grows behind this row while the program runs.
constexpr Item listItems[] = {
    active("mnuImagesImage", 0, "No Image").marked().tip("Copy this image over the current one"),
};

constexpr Item typeItems[] = {
    active("mnuImageType", 0, "1-bit (2 color)").marked(),
    active("mnuImageType", 1, "8-bit Colormapped").marked(),
    active("mnuImageType", 2, "8-bit Colormapped w/ Alpha").marked(),
    active("mnuImageType", 3, "8-bit Grayscale").marked(),
    active("mnuImageType", 4, "16-bit Grayscale w/ Alpha").marked(),
    active("mnuImageType", 5, "24-bit RGB").marked(),
    active("mnuImageType", 6, "32-bit RGB w/ Alpha").marked(),
};

constexpr Item items[] = {
    submenu("mnuImages", 0, "&Images", listItems)
        .tip("Copy an image of this document over the current one"),
    line("mnuImages", 1),
    submenu("mnuImages", 2, "Current &Image Type", typeItems)
        .tip("Convert the current image to another type"),
    line("mnuImages", 3),
    active("mnuImages", 4, "Next Image").tip("Go to the next image").picture("go-next"),
    active("mnuImages", 5, "Previous Image")
        .tip("Go to the image before this one")
        .picture("go-previous"),
    active("mnuImages", 6, "Add Image...").tip("Insert a file as an image").picture("list-add"),
    active("mnuImages", 7, "Remove Image")
        .tip("Take the current image out of the document")
        .picture("list-remove"),
    line("mnuImages", 8),
    active("mnuImages", 9, "Append Image to TIFF")
        .tip("Write the image as a further page of a TIFF file"),
    line("mnuImages", 10),
    active("mnuImages", 11, "Set Background Image...")
        .tip("Choose the picture behind transparent parts"),
    active("mnuImages", 12, "Clear Background Image")
        .tip("Take the picture behind transparent parts away"),
    line("mnuImagesDash"),
    active("mnuDrawImage", "Draw Image...")
        .calls("Draw_Image")
        .tip("Place another picture on this one"),
};

} // namespace

std::span<const Item> imagesMenu() {
    return items;
}

} // namespace kvn::shell::menu
