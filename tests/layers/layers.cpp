// Holds the #include lines and the CMake files against the list on the architecture page.
#include <QDirIterator>
#include <QFile>
#include <QMap>
#include <QRegularExpression>
#include <QSet>
#include <QtTest>

class Layers : public QObject {
    Q_OBJECT

  private slots:
    void initTestCase();
    void includesGoDownwards();
    void librariesLinkWhatThePageSays();
    void engineHeadersHideImaging();
    void imagingKnowsNoQt();

  private:
    static QString read(const QString& path) {
        QFile file(path);
        return file.open(QIODevice::ReadOnly) ? QString::fromUtf8(file.readAll()) : QString();
    }
    QStringList sources(const QString& folder, const QStringList& patterns) const {
        QStringList paths;
        QDirIterator it(root_ + "/src/" + folder, patterns, QDir::Files,
                        QDirIterator::Subdirectories);
        while (it.hasNext())
            paths.append(it.next());
        return paths;
    }
    static QStringList includes(const QString& text, const char* pattern) {
        QStringList found;
        QRegularExpression expression(pattern, QRegularExpression::MultilineOption);
        for (auto it = expression.globalMatch(text); it.hasNext();)
            found.append(it.next().captured(1));
        return found;
    }

    QString root_ = qEnvironmentVariable("KVN_SOURCE_DIR");
    QMap<QString, QSet<QString>> allowed_;
};

void Layers::initTestCase() {
    const QString page = read(root_ + "/ARCHITECTURE.md");
    const QRegularExpression row("^\\| (\\w+) \\| ([\\w, ]*)\\|",
                                 QRegularExpression::MultilineOption);
    for (auto it = row.globalMatch(page); it.hasNext();) {
        const auto match = it.next();
        if (match.captured(1) == "folder") continue;
        QSet<QString>& names = allowed_[match.captured(1)];
        for (const QString& name : match.captured(2).split(',', Qt::SkipEmptyParts))
            if (!name.trimmed().isEmpty()) names.insert(name.trimmed());
    }
    QCOMPARE(allowed_.size(), 10);
    QVERIFY(allowed_["engine"].contains("imaging") && !allowed_["document"].contains("imaging"));
}

void Layers::includesGoDownwards() {
    QStringList wrong;
    int checked = 0;
    for (auto folder = allowed_.cbegin(); folder != allowed_.cend(); ++folder)
        for (const QString& path : sources(folder.key(), {"*.h", "*.cpp"}))
            for (const QString& target : includes(read(path), "^#include \"(\\w+)/")) {
                ++checked;
                if (target != folder.key() && !folder.value().contains(target))
                    wrong.append(path + " includes " + target);
            }
    QVERIFY2(wrong.isEmpty(), qPrintable(wrong.join('\n')));
    QVERIFY(checked > 100);
}

void Layers::librariesLinkWhatThePageSays() {
    const QRegularExpression uses("USES ([\\w ]+?)(LINKS|PRIVATE|[\\n)])");
    for (auto folder = allowed_.cbegin(); folder != allowed_.cend(); ++folder) {
        const QString text = read(root_ + "/src/" + folder.key() + "/CMakeLists.txt");
        for (const QString& name : uses.match(text).captured(1).split(' ', Qt::SkipEmptyParts))
            QVERIFY2(folder.value().contains(name), qPrintable(folder.key() + " links " + name));
    }
}

void Layers::engineHeadersHideImaging() {
    for (const QString& path : sources("engine", {"*.h"})) {
        if (path.contains("/detail/")) continue;
        QVERIFY2(includes(read(path), "^#include \"(imaging)/").isEmpty(), qPrintable(path));
    }
}

void Layers::imagingKnowsNoQt() {
    for (const QString& path : sources("imaging", {"*.h", "*.cpp"}))
        QVERIFY2(includes(read(path), "^#include <(Q\\w+|Qt\\w+/.*)>").isEmpty(), qPrintable(path));
}

QTEST_GUILESS_MAIN(Layers)
#include "layers.moc"
