// What can be found out about the machine and the libraries the program runs on, for bug reports.
// Nothing about the user or their files is in it.
#pragma once

#include <QList>
#include <QString>

namespace kvn::shell {

struct Fact {
    QString name;
    QString value;
};

QList<Fact> systemInformation();

// One fact a line, the values one below the other. Empty for none.
QString factsText(const QList<Fact>& facts);

} // namespace kvn::shell
