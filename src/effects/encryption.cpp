// Making a picture unreadable under a key, and readable again. Works on the shown picture itself.
#include <QLineEdit>

#include "basic/error.h"
#include "dialogs/asking.h"
#include "document/frmMain.h"
#include "document/report.h"
#include "effects/groups.h"
#include "effects/parameters.h"
#include "engine/operations.h"

namespace kvn::effects {
namespace {

struct Words {
    const char* title;
    Row row;
};

constexpr Words encryption{"Encryption", text("Encryption Key:", "")};
constexpr Words decryption{"Decryption", text("Decryption Key:", "")};

// Empty if the user cancelled or typed nothing.
QString askKey(frmMain& document, const Words& words) {
    OneDialog dialog(document);
    if (!ask(document, dialog.make(), words.title, {&words.row, 1})) return {};
    return dialog.make().txtText(0)->text();
}

void run(frmMain& document, const Words& words,
         void (engine::Geometry::*operation)(const QString& key, const QString& label)) {
    try {
        const QString key = askKey(document, words);
        engine::Geometry geometry = document.ImgX->Geometry();
        if (!key.isEmpty()) (geometry.*operation)(key, {});
    } catch (const RuntimeError& error) {
        document::reportNumberedError(document, error);
    }
}

constexpr document::Command commands[] = {
    {"DemosEncrypt", [](frmMain& d, int) { run(d, encryption, &engine::Geometry::Encrypt); }},
    {"DemosDecrypt", [](frmMain& d, int) { run(d, decryption, &engine::Geometry::Decrypt); }},
};

} // namespace

std::span<const document::Command> encryptionCommands() {
    return commands;
}

} // namespace kvn::effects
