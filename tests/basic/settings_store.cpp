// The store of named texts: what is written is read back, by whom, and what bad files do.
#include "basic/settings_store.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QTemporaryDir>
#include <QTest>
#include <csignal>
#include <memory>
#include <sys/resource.h>

using namespace kvn;

namespace {

constexpr quint32 machine = 0x80000002u, user = 0x80000001u;
const char path[] = "SOFTWARE\\Ombrelight\\Kestrelvane Settings\\";

} // namespace

class SettingsStore : public QObject {
    Q_OBJECT

    std::unique_ptr<QTemporaryDir> home_, system_;
    CRegister store_;

    QString userFile() const { return home_->filePath("kestrelvane/settings.conf"); }
    QString systemFile() const { return system_->filePath("kestrelvane/settings.conf"); }
    static void write(const QString& file, const QByteArray& text) {
        QDir().mkpath(QFileInfo(file).path());
        QFile out(file);
        QVERIFY(out.open(QIODevice::WriteOnly));
        QCOMPARE(out.write(text), text.size());
    }
    static QByteArray read(const QString& file) {
        QFile in(file);
        return in.open(QIODevice::ReadOnly) ? in.readAll() : QByteArray();
    }
    QString get(const char* name) const { return store_.REGGetSetting(machine, path, name, "-"); }

  private slots:
    void init() {
        home_ = std::make_unique<QTemporaryDir>();
        system_ = std::make_unique<QTemporaryDir>();
        qputenv("XDG_CONFIG_HOME", home_->path().toLocal8Bit());
        qputenv("XDG_CONFIG_DIRS", system_->path().toLocal8Bit());
    }

    void firstRunGivesDefaults() {
        QCOMPARE(get("JPG Quaity"), QString("-"));
        QVERIFY(!QFile::exists(userFile()));
    }

    void roundTrip_data() {
        QTest::addColumn<QString>("name");
        QTest::addColumn<QString>("text");
        QTest::newRow("plain") << "JPG Quaity"
                               << "75";
        QTest::newRow("empty") << "Empty"
                               << "";
        QTest::newRow("key's own") << "*"
                                   << "own";
        QTest::newRow("marks in the name") << "a=b\\c"
                                           << "1";
        QTest::newRow("comment in the name") << "#x"
                                             << "1";
        QTest::newRow("section in the name") << "[x]"
                                             << "1";
        QTest::newRow("lines") << "n"
                               << "one\ntwo\r\nthree";
        QTest::newRow("marks") << "n"
                               << "\\n=[]# \\";
        QTest::newRow("blanks") << "n"
                                << "  x ";
        QTest::newRow("beyond Latin") << QString::fromUtf8("größe") << QString::fromUtf8("写真");
    }
    void roundTrip() {
        QFETCH(QString, name);
        QFETCH(QString, text);
        QVERIFY(store_.REGSaveSetting(machine, path, "neighbour", "kept"));
        QVERIFY(store_.REGSaveSetting(machine, path, name, text));
        QCOMPARE(store_.REGGetSetting(machine, path, name, "default"), text);
        QVERIFY(store_.REGSaveSetting(machine, path, name, "second"));
        QCOMPARE(store_.REGGetSetting(machine, path, name, "default"), QString("second"));
        QCOMPARE(get("neighbour"), QString("kept"));
        QVERIFY(store_.REGDeleteSetting(machine, path, name));
        QCOMPARE(store_.REGGetSetting(machine, path, name, "default"), QString("default"));
        QCOMPARE(get("neighbour"), QString("kept"));
    }

    void keysAreApart() {
        QVERIFY(store_.REGSaveSetting(machine, path, "n", "machine"));
        QVERIFY(store_.REGSaveSetting(user, path, "n", "user"));
        QVERIFY(store_.REGSaveSetting(machine, "SOFTWARE\\Other", "n", "other"));
        QCOMPARE(get("n"), QString("machine"));
        // One backslash at either end does not count, and neither does case.
        QCOMPARE(
            store_.REGGetSetting(machine, "\\software\\OMBRELIGHT\\Kestrelvane Settings", "N", "-"),
            QString("machine"));
        QCOMPARE(store_.REGGetSetting(user, path, "n", "-"), QString("user"));
        QCOMPARE(store_.GetAllKeys(machine, "\\SOFTWARE\\"), QStringList({"Ombrelight", "Other"}));
        QCOMPARE(store_.GetAllKeys(machine, "SOFTWARE\\Ombrelight"),
                 QStringList({"Kestrelvane Settings"}));
        QVERIFY(store_.GetAllKeys(machine, path).isEmpty());
    }

    void usersFileOverridesTheSystems() {
        const QByteArray system = "[HKEY_LOCAL_MACHINE\\SOFTWARE\\Ombrelight\\Kestrelvane "
                                  "Settings]\nJPG Quaity=90\nDither Error=5\n";
        write(systemFile(), system);
        QCOMPARE(get("JPG Quaity"), QString("90"));
        QVERIFY(store_.REGSaveSetting(machine, path, "JPG Quaity", "40"));
        QCOMPARE(get("JPG Quaity"), QString("40"));
        QCOMPARE(get("Dither Error"), QString("5"));
        QCOMPARE(read(systemFile()), system);
        QVERIFY(store_.REGDeleteSetting(machine, path, "JPG Quaity"));
        QCOMPARE(get("JPG Quaity"), QString("90"));
    }

    void badFilesGiveDefaults_data() {
        QTest::addColumn<QByteArray>("content");
        QTest::newRow("no section") << QByteArray("JPG Quaity=90\n");
        QTest::newRow("no equals sign") << QByteArray("[HKEY_LOCAL_MACHINE\\x]\nJPG Quaity\n");
        QTest::newRow("open section") << QByteArray("[HKEY_LOCAL_MACHINE\nJPG Quaity=1\n");
        QTest::newRow("binary") << QByteArray("\x00\xff\xfe[=]\\\n=\\\n[", 12);
        QTest::newRow("one mark") << QByteArray("[");
        QTest::newRow("huge") << QByteArray(5 << 20, '[');
    }
    void badFilesGiveDefaults() {
        QFETCH(QByteArray, content);
        write(userFile(), content);
        QCOMPARE(get("JPG Quaity"), QString("-"));
        QVERIFY(store_.REGSaveSetting(machine, path, "JPG Quaity", "33"));
        QCOMPARE(get("JPG Quaity"), QString("33"));
    }

    void unwritablePlaceIsNoFailure() {
        write(home_->filePath("kestrelvane"), "a file where the folder should be");
        QVERIFY(!store_.REGSaveSetting(machine, path, "n", "1"));
        QCOMPARE(get("n"), QString("-"));
        QVERIFY(store_.REGDeleteSetting(machine, path, "n"));
    }

    void fullDiskLeavesTheOldFile() {
        QVERIFY(store_.REGSaveSetting(machine, path, "n", "1"));
        const QByteArray before = read(userFile());
        rlimit old{};
        getrlimit(RLIMIT_FSIZE, &old);
        std::signal(SIGXFSZ, SIG_IGN); // then a write beyond the limit fails as on a full disk
        const rlimit tight{20, old.rlim_max};
        setrlimit(RLIMIT_FSIZE, &tight);
        const bool saved = store_.REGSaveSetting(machine, path, "n", "2");
        setrlimit(RLIMIT_FSIZE, &old);
        QVERIFY(!saved);
        QCOMPARE(read(userFile()), before);
        QCOMPARE(QDir(home_->filePath("kestrelvane")).entryList(QDir::Files).size(), 1);
    }

    // A regular close saves everything; a file that nothing changes in keeps its date.
    void sameTextIsNotWrittenAgain() {
        QVERIFY(store_.REGSaveSetting(machine, path, "n", "1"));
        const QByteArray marked = read(userFile()) + "# by hand\n";
        write(userFile(), marked);
        QVERIFY(store_.REGSaveSetting(machine, path, "n", "1"));
        QCOMPARE(read(userFile()), marked);
    }
};

QTEST_GUILESS_MAIN(SettingsStore)
#include "settings_store.moc"
