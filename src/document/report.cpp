#include "document/report.h"

#include <new>

#include "basic/error.h"
#include "dialogs/asking.h"
#include "document/frmMain.h"
#include "document/roles.h"

namespace kvn::document {

void reportError(dialogs::Asking& asking, QWidget* owner, const RuntimeError& error) {
    if (error.isSilent()) return;
    asking.message({.text = QStringLiteral("Error: ") +
                            QString::fromStdString(error.description()) +
                            QStringLiteral("\nSource: ") + QString::fromStdString(error.source()),
                    .title = {},
                    .icon = dialogs::Icon::Critical,
                    .buttons = dialogs::Buttons::Ok,
                    .owner = owner});
}

void reportNumberedError(frmMain& document, const RuntimeError& error) {
    if (error.isSilent()) return;
    document.services().asking.message(
        {.text = QStringLiteral("Error: %1\n\n").arg(error.number()) +
                 QString::fromStdString(error.description()),
         .title = QString::fromStdString(error.source()),
         .icon = dialogs::Icon::Exclamation,
         .buttons = dialogs::Buttons::Ok,
         .owner = &document});
}

void sayAtWork(const Services& services) {
    services.rules.say(
        QStringLiteral("A document is still at work: wait for its end, or cancel it"));
}

bool guarded(dialogs::Asking& asking, QWidget* owner, const std::function<void()>& work) {
    const auto report = [&](std::int32_t number, const char* text) {
        reportError(asking, owner, RuntimeError(number, text, "Kestrelvane"));
    };
    try {
        work();
        return true;
    } catch (const RuntimeError& error) {
        reportError(asking, owner, error);
    } catch (const std::bad_alloc&) {
        report(errors::outOfMemory, "Out of memory");
    } catch (const std::exception& failure) {
        report(errors::invalidCall, failure.what());
    }
    return false;
}

bool guarded(frmMain& document, const std::function<void()>& work) {
    return guarded(document.services().asking, &document, work);
}

} // namespace kvn::document
