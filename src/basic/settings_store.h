// Named text values under keys, kept between runs: a tree of keys as a registry has it, stored as
// plain text. A file for the whole machine gives values that the user's own file overrides; only
// the latter is written. Holds no values itself: every call looks at the files.
//
// The files are kestrelvane/settings.conf in the user's and in the system's configuration
// folders: a line "[ROOT\path]" for each key, then "name=text" lines. '\' escapes '\', '=',
// a leading '#', and line ends (as \n, \r).
#pragma once

#include <QString>
#include <QStringList>

namespace kvn {

class CRegister {
  public:
    // `default_` if there is no such value or it cannot be read. "*" names the key's own value.
    QString REGGetSetting(quint32 root, const QString& path, const QString& name,
                          const QString& default_) const;
    // False if it could not be written.
    bool REGSaveSetting(quint32 root, const QString& path, const QString& name,
                        const QString& text);
    // Takes the user's value away. False if it could not be written; a missing value is no
    // failure.
    bool REGDeleteSetting(quint32 root, const QString& path, const QString& name);
    // The names of the keys right below the path.
    QStringList GetAllKeys(quint32 root, const QString& path) const;
};

} // namespace kvn
