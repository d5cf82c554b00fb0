#include "document/alpha_masks.h"

#include <QCoreApplication>
#include <QDir>

#include "basic/error.h"
#include "document/program_state.h"
#include "document/roles.h"
#include "engine/image.h"

namespace kvn::document {
namespace {

QString group() {
    return QStringLiteral("mnuChannelsAlphaAddMask");
}
constexpr int firstMask = 2; // 0 asks for a file, 1 is a separator

bool isPicture(const QString& path) {
    try {
        return engine::Utility().FileInfo(path).isImage;
    } catch (const RuntimeError&) {
        return false;
    }
}

} // namespace

QString alphaMaskFolder(const ProgramState& state) {
    const QString beside = state.programFolder.isEmpty() ? QCoreApplication::applicationDirPath()
                                                         : state.programFolder;
    return beside + QStringLiteral("/AlphaMasks");
}

void LoadAlphaMaskList(MenuState& menus, const QString& folder) {
    QStringList names;
    const QDir entries(folder);
    for (const QString& name : entries.entryList(QDir::Files, QDir::Name))
        if (isPicture(entries.filePath(name))) names += name;
    menus.setVisible(QStringLiteral("mnuChannelsAlpha"), 0, !names.isEmpty());
    menus.resizeGroup(group(), firstMask, static_cast<int>(names.size()));
    for (int i = 0; i < names.size(); ++i)
        menus.setCaption(group(), firstMask + i, names[i].replace(u'&', QStringLiteral("&&")));
}

} // namespace kvn::document
