// The desktop's list of recent files: entered, counted, and nobody else's entry lost.
#include "document/recent_files.h"

#include <QDateTime>
#include <QFile>
#include <QTemporaryDir>
#include <QTest>
#include <QTimeZone>

using kvn::document::enterRecentFile;

class RecentFiles : public QObject {
    Q_OBJECT

    const QDateTime now_{QDate(2026, 3, 4), QTime(5, 6, 7), QTimeZone::utc()};

    static QByteArray read(const QString& path) {
        QFile file(path);
        return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
    }
    static void write(const QString& path, const QByteArray& text) {
        QFile file(path);
        QVERIFY(file.open(QIODevice::WriteOnly));
        file.write(text);
    }

  private slots:
    void startsAList() {
        QTemporaryDir folder;
        const QString list = folder.filePath("deep/down/recently-used.xbel");
        QVERIFY(enterRecentFile(list, "/pictures/a b & \"c\".png", now_));
        const QByteArray text = read(list);
        QVERIFY(text.contains("href=\"file:///pictures/a%20b%20&amp;%20%22c%22.png\""));
        QVERIFY(text.contains("added=\"2026-03-04T05:06:07.000000Z\""));
        QVERIFY(text.contains("<mime:mime-type type=\"image/png\"/>"));
        QVERIFY(text.contains("count=\"1\""));
        QCOMPARE(QFile::permissions(list) & (QFile::ReadGroup | QFile::ReadOther),
                 QFile::Permissions());
    }

    void keepsWhatOthersWrote() {
        QTemporaryDir folder;
        const QString list = folder.filePath("list.xbel");
        write(list, "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
                    "<xbel version=\"1.0\" "
                    "xmlns:bookmark=\"http://www.freedesktop.org/standards/desktop-bookmarks\"\n"
                    "xmlns:mime=\"http://www.freedesktop.org/standards/shared-mime-info\">\n"
                    "<bookmark href=\"file:///other.txt\" added=\"2020-01-01T00:00:00Z\"><title>An "
                    "&lt;old&gt; one</title></bookmark>\n"
                    "<bookmark href=\"file:///a.png\" added=\"2020-01-01T00:00:00Z\">\n"
                    "<info><metadata owner=\"http://freedesktop.org\"><mime:mime-type "
                    "type=\"image/png\"/>\n"
                    "<bookmark:applications><bookmark:application name=\"viewer\" exec=\"viewer "
                    "%u\" count=\"7\"/></bookmark:applications>\n"
                    "</metadata></info>\n"
                    "</bookmark>\n"
                    "</xbel>");
        QVERIFY(enterRecentFile(list, "/a.png", now_));
        QVERIFY(enterRecentFile(list, "/a.png", now_));
        const QByteArray text = read(list);
        QVERIFY(text.contains("<title>An &lt;old&gt; one</title>"));
        QVERIFY(text.contains("name=\"viewer\" exec=\"viewer %u\" count=\"7\""));
        QCOMPARE(text.count("href=\"file:///a.png\""), 1);
        QCOMPARE(text.count("added=\"2020-01-01T00:00:00Z\""), 2);
        QVERIFY(text.contains("count=\"2\""));
    }

    void brokenListsAreLeftAlone_data() {
        QTest::addColumn<QByteArray>("content");
        QTest::newRow("empty") << QByteArray();
        QTest::newRow("cut off") << QByteArray(
            "<?xml version=\"1.0\"?><xbel><bookmark href=\"x\">");
        QTest::newRow("another format") << QByteArray("<html></html>");
        QTest::newRow("binary") << QByteArray("\x00\x01\xff", 3);
        QTest::newRow("deep") << "<xbel>" + QByteArray("<a>").repeated(100000);
        QTest::newRow("entities") << QByteArray(
            "<!DOCTYPE x [<!ENTITY a \"aaaaaaaaaa\"><!ENTITY b \"&a;&a;&a;&a;&a;&a;\">"
            "<!ENTITY c \"&b;&b;&b;&b;&b;&b;&b;&b;&b;\"><!ENTITY d "
            "\"&c;&c;&c;&c;&c;&c;&c;&c;&c;\"><!ENTITY e \"&d;&d;&d;&d;&d;&d;&d;&d;\">"
            "]><xbel><bookmark href=\"&e;\"/></xbel>");
    }
    void brokenListsAreLeftAlone() {
        QFETCH(QByteArray, content);
        QTemporaryDir folder;
        const QString list = folder.filePath("list.xbel");
        write(list, content);
        QVERIFY(!enterRecentFile(list, "/a.png", now_));
        QCOMPARE(read(list), content);
        QVERIFY(!enterRecentFile(folder.path(), "/a.png", now_)); // a folder is no list
    }
};

QTEST_GUILESS_MAIN(RecentFiles)
#include "recent_files.moc"
