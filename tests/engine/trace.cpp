#include "engine/trace.h"

#include <QFile>
#include <QJsonDocument>
#include <QTemporaryDir>
#include <QTest>

using namespace kvn::engine;

class TraceTest : public QObject {
    Q_OBJECT

  private slots:
    void linesHaveTheirKeysInReadingOrder();
    void callsStandInTheOrderOfTheirBegin();
    void recordsAreKeptOnDemand();
    void fileIsAppendedAndMayBeUnwritable();

  private:
    static QList<QByteArray> lines(const QString& path) {
        QFile file(path);
        if (!file.open(QIODevice::ReadOnly)) return {};
        QList<QByteArray> all = file.readAll().split('\n');
        all.removeLast(); // what stands behind the last line end: nothing
        return all;
    }
};

void TraceTest::linesHaveTheirKeysInReadingOrder() {
    const QTemporaryDir folder;
    const QString path = folder.filePath("trace.jsonl");
    Trace trace;
    trace.setFile(path);
    {
        Trace::Call call(trace, {0, "imgxAction"}, "Effects.Blur", {25.0, 7, false, ""});
        call.setStep("Blur");
    }
    {
        Trace::Call call(trace, {-1, "Dialog"}, "Dialog.ShowOpen",
                         {QJsonValue::Null, 0.5, 16777216.0, QJsonArray{-1.0, 2}, "a\"\n\\é"});
        call.setError(57, "Device \"I/O\" error");
    }
    const QList<QByteArray> all = lines(path);
    QCOMPARE(all.size(), 2);
    // Out of the macros, which the meta-object compiler cannot read with raw text in them.
    const char* const first = R"({"doc":0,"on":"imgxAction","op":"Effects.Blur",)"
                              R"("args":[25,7,false,""],"step":"Blur"})";
    const char* const second = R"({"doc":null,"on":"Dialog","op":"Dialog.ShowOpen",)"
                               R"("args":[null,0.5,16777216,[-1,2],"a\"\n\\é"],)"
                               R"("error":{"number":57,"text":"Device \"I/O\" error"}})";
    QCOMPARE(all[0], QByteArray(first));
    QCOMPARE(all[1], QByteArray(second));
}

void TraceTest::callsStandInTheOrderOfTheirBegin() {
    const QTemporaryDir folder;
    const QString path = folder.filePath("trace.jsonl");
    Trace trace;
    trace.setKept(true);
    trace.setFile(path);
    {
        const Trace::Call outer(trace, {1, "ImgX"}, "outer", {});
        { const Trace::Call inner(trace, {1, "ImgX"}, "inner", {}); }
        // The inner one has ended, but its place is behind the outer one.
        QCOMPARE(lines(path).size(), 0);
        QVERIFY(trace.records().empty());
    }
    const Trace::Call open(trace, {1, "ImgX"}, "open", {});
    const std::vector<TraceRecord> records = trace.records();
    QCOMPARE(records.size(), std::size_t{2});
    QCOMPARE(records[0].op, "outer");
    QCOMPARE(records[1].op, "inner");
    // Flushed while the trace is still alive.
    QCOMPARE(lines(path).size(), 2);
}

void TraceTest::recordsAreKeptOnDemand() {
    Trace trace;
    { const Trace::Call lost(trace, {0, "ImgX"}, "lost", {}); }
    QVERIFY(trace.records().empty());
    trace.setKept(true);
    {
        Trace::Call call(trace, {-1, "Twain"}, "kept", {1, "two"});
        call.setStep("");
        call.setError(-5, "failed");
    }
    const QJsonObject expected{{"doc", QJsonValue::Null},
                               {"on", "Twain"},
                               {"op", "kept"},
                               {"args", QJsonArray{1, "two"}},
                               {"step", ""},
                               {"error", QJsonObject{{"number", -5}, {"text", "failed"}}}};
    QCOMPARE(trace.records().size(), std::size_t{1});
    QCOMPARE(trace.records().front().toJson(), expected);
    trace.clear();
    QVERIFY(trace.records().empty());
}

void TraceTest::fileIsAppendedAndMayBeUnwritable() {
    const QTemporaryDir folder;
    const QString path = folder.filePath("trace.jsonl");
    for (int run = 0; run < 2; ++run) {
        Trace trace;
        trace.setFile(path);
        { const Trace::Call call(trace, {0, "ImgX"}, "written", {}); }
        trace.setFile(folder.filePath("no/such/folder/trace.jsonl"));
        { const Trace::Call call(trace, {0, "ImgX"}, "nowhere", {}); }
    }
    QCOMPARE(lines(path).size(), 2);
}

QTEST_GUILESS_MAIN(TraceTest)
#include "trace.moc"
