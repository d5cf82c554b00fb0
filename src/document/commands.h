// The command table: what a document can be asked to do, by name. Menus, keys and buttons hold
// names only; each folder enters its own commands at start-up.
#pragma once

#include <QString>
#include <map>
#include <span>

namespace kvn::document {

class frmMain;

struct Command {
    const char* name;
    // `index` is the one within the menu group, -1 where there is none.
    void (*run)(frmMain& document, int index);
};

class CommandTable {
  public:
    // A name entered twice is a mistake of the program (std::logic_error).
    void add(std::span<const Command> commands);
    bool contains(const QString& name) const;
    // Throws RuntimeError(memberNotFound) for a name that is not there.
    const Command& find(const QString& name) const;

  private:
    std::map<QString, Command> commands_;
};

// Enters the commands of this folder: files, view, undo, pages, selection.
void addDocumentCommands(CommandTable& table);

// Runs a command on a document and passes its failures on, an unknown name among them.
void callMember(frmMain& document, const QString& name, int index = -1);

// The same for a user's click: a failure ends in the error box. Returns whether the command came
// to its end. A document that is still at work on another command is left alone.
bool runCommand(frmMain& document, const QString& name, int index = -1);

} // namespace kvn::document
