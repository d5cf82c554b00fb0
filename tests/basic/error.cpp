// The failure type, and the small helpers that every window uses.
#include "basic/error.h"

#include <QTest>
#include <QTimer>

#include "basic/do_events.h"
#include "basic/text.h"
#include "basic/twips.h"

using namespace kvn;

class Error : public QObject {
    Q_OBJECT

  private slots:
    void carriesWhatTheBoxShows() {
        const RuntimeError error(errors::diskFull, "Disk full", "Export.Save");
        QCOMPARE(error.number(), 61);
        QCOMPARE(error.description(), std::string("Disk full"));
        QCOMPARE(error.source(), std::string("Export.Save"));
        QVERIFY(!error.isSilent());
        QVERIFY(RuntimeError(errors::cancelled, "", "").isSilent());
        QCOMPARE(static_cast<std::uint32_t>(errors::cancelled), 0x8004029Au);
    }

    void paddingOnlyAppends() {
        QCOMPARE(padRight("7", 4), QString("7   "));
        QCOMPARE(padRight("12345", 4), QString("12345"));
        QCOMPARE(padRight("", 3), QString("   "));
    }

    void fileNames() {
        QCOMPARE(fileNameOf("/a/b c.png"), QString("b c.png"));
        QCOMPARE(fileNameOf("b.png"), QString("b.png"));
        QCOMPARE(fileNameOf("/a/b\\c.png"), QString("b\\c.png"));
        QCOMPARE(fileNameOf("/a/"), QString());
        QCOMPARE(fileNameOf(""), QString());
    }

    void noUndoInAnyCase() {
        for (const char* label : {"no undo", "No Undo", "NO UNDO"})
            QVERIFY(isNoUndo(label));
        for (const char* label : {"", "no undo ", "undo"})
            QVERIFY(!isNoUndo(label));
    }

    void twips() {
        QCOMPARE(pixelsFromTwips(15), 1);
        QCOMPARE(pixelsFromTwips(22), 1);
        QCOMPARE(pixelsFromTwips(-30), -2);
        QCOMPARE(twipsFromPixels(5), 75.0);
    }

    // What was handed to deleteLater() must outlive the pump: its command still uses it.
    void pumpDeliversButDeletesNothing() {
        bool fired = false;
        QTimer::singleShot(0, this, [&] { fired = true; });
        auto* doomed = new QObject;
        bool gone = false;
        connect(doomed, &QObject::destroyed, this, [&] { gone = true; });
        QTimer::singleShot(0, this, [&] {
            doomed->deleteLater();
            DoEvents();
            QVERIFY(!gone);
        });
        QTRY_VERIFY(gone);
        QVERIFY(fired);
    }
};

QTEST_GUILESS_MAIN(Error)
#include "error.moc"
