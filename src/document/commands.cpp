#include "document/commands.h"

#include <stdexcept>

#include "basic/error.h"
#include "document/frmMain.h"
#include "document/program_state.h"
#include "document/report.h"

namespace kvn::document {

void CommandTable::add(std::span<const Command> commands) {
    for (const Command& command : commands)
        if (!commands_.emplace(QString::fromLatin1(command.name), command).second)
            throw std::logic_error(std::string("command entered twice: ") + command.name);
}

bool CommandTable::contains(const QString& name) const {
    return commands_.contains(name);
}

const Command& CommandTable::find(const QString& name) const {
    const auto found = commands_.find(name);
    if (found == commands_.end())
        throw RuntimeError(errors::memberNotFound, "Object doesn't support this property or method",
                           "Kestrelvane");
    return found->second;
}

void callMember(frmMain& document, const QString& name, int index) {
    const Command& command = document.services().state.commands.find(name);
    const frmMain::Work work(document);
    command.run(document, index);
}

bool runCommand(frmMain& document, const QString& name, int index) {
    if (document.isBusy()) {
        sayAtWork(document.services());
        return false;
    }
    return guarded(document, [&] { callMember(document, name, index); });
}

} // namespace kvn::document
