#include "shell/menu/tree.h"

namespace kvn::shell::menu {

namespace {

constexpr Item importItems[] = {
    frame("mnuSelectTwain", "Select Twain Source...").tip("Choose the scanner to use"),
    frame("mnuAcquireTwain", "Acquire Twain Image")
        .tip("Scan a picture into the document")
        .picture("document-scan"),
    line("mnuImportDash"),
    active("mnuCaptureScreen", "Capture Screen").tip("Take a picture of the whole screen"),
    active("mnuCaptureRect", "Capture Rectangle").tip("Take a picture of an area of the screen"),
    active("mnuCaptureWindow", "Capture Window").tip("Take a picture of another window"),
};

constexpr Item encryptionItems[] = {
    active("mnuDemosEncrypt", "&Encrypt Image")
        .tip("Make the picture unreadable without its key")
        .picture("document-encrypt"),
    active("mnuDemosDecrypt", "&Decrypt Image")
        .tip("Make an encrypted picture readable again")
        .picture("document-decrypt"),
};

constexpr Item printItems[] = {
    frame("mnuPrintSettings", 0, "Top Left").tip("Print at the top left of the page"),
    frame("mnuPrintSettings", 1, "Centered").tip("Print in the middle of the page"),
    frame("mnuPrintSettings", 2, "Fit to Page").tip("Print as large as the page").keys("Ctrl+P"),
};

constexpr Item items[] = {
    frame("mnuOpen", "&Open...").tip("Open a picture file").picture("document-open").keys("Ctrl+O"),
    frame("mnuOpenURL", "Open from &URL...")
        .tip("Download a picture from an address")
        .picture("document-open-remote"),
    submenu("mnuImport", "&Import", importItems)
        .tip("Scan or take a picture of the screen")
        .picture("document-import"),
    line("mnuFileDash", 0),
    frame("mnuNew", "&New...")
        .tip("Make a new, empty picture")
        .picture("document-new")
        .keys("Ctrl+N"),
    frame("mnuClose", "&Close")
        .tip("Close the active document")
        .picture("document-close")
        .keys("Ctrl+W"),
    line("mnuFileDash", 1),
    active("mnuSaveAs", "Save &As...")
        .tip("Save a copy under another name or type")
        .picture("document-save-as")
        .keys("Ctrl+Shift+S"),
    active("mnuSave", "&Save")
        .tip("Save to the file the picture came from")
        .picture("document-save")
        .keys("Ctrl+S"),
    line("mnuFileDash", 2),
    submenu("mnuEncryption", "Encryption", encryptionItems)
        .tip("Make the picture unreadable, and readable again"),
    line("mnuFileDash", 3),
    frame("mnuPageSetup", "Page Setup...")
        .tip("Choose paper and margins")
        .picture("document-page-setup"),
    submenu("mnuPrint", "Print", printItems).tip("Print the picture").picture("document-print"),
    line("mnuFileDash", 4),
    // No key: the command ends the program without asking, which no slip of a finger should do.
    frame("mnuExit", "E&xit")
        .tip("End the program at once, without saving anything")
        .picture("application-exit"),
};

} // namespace

std::span<const Item> fileMenu() {
    return items;
}

} // namespace kvn::shell::menu
