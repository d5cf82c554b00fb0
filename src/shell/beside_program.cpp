#include "shell/beside_program.h"

#include <QCoreApplication>
#include <QDesktopServices>
#include <QFileInfo>
#include <QUrl>

#include "document/program_state.h"

namespace kvn::shell {

QString pathBeside(const document::ProgramState& state, const QString& file) {
    const QString folder = state.programFolder.isEmpty() ? QCoreApplication::applicationDirPath()
                                                         : state.programFolder;
    return folder + u'/' + file;
}

void launchBeside(const document::ProgramState& state, const QString& file) {
    const QString path = pathBeside(state, file);
    if (QFileInfo::exists(path)) QDesktopServices::openUrl(QUrl::fromLocalFile(path));
}

QString manualFile(const document::ProgramState& state) {
    const QString compiled = QStringLiteral("kvn.chm");
    return QFileInfo::exists(pathBeside(state, compiled)) ? compiled
                                                          : QStringLiteral("manual/index.html");
}

} // namespace kvn::shell
