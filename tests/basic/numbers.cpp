// The conversion rules that every input of the program shares.
#include "basic/numbers.h"

#include <QTest>
#include <cmath>
#include <limits>

#include "basic/error.h"

using namespace kvn;

namespace {

// The number of the error that `work` throws, 0 if it throws none.
template <typename Work>
int errorOf(Work work) {
    try {
        work();
    } catch (const RuntimeError& error) {
        return error.number();
    }
    return 0;
}

const double infinity = std::numeric_limits<double>::infinity();

} // namespace

class Numbers : public QObject {
    Q_OBJECT

  private slots:
    void prefix_data() {
        QTest::addColumn<QByteArray>("text");
        QTest::addColumn<double>("value");
        QTest::addColumn<bool>("whole"); // whether all of it is a number
        const auto row = [](const char* text, double value, bool whole) {
            QTest::newRow(text) << QByteArray(text) << value << whole;
        };
        row("", 0, false);
        row("abc", 0, false);
        row("12a", 12, false);
        row("a12", 0, false);
        row("-", 0, false);
        row(".", 0, false);
        row("+-3", 0, false);
        row("2.", 2, true);
        row(".5", 0.5, true);
        row("-.5", -0.5, true);
        row("+7", 7, true);
        row("  42\t", 42, true);
        row("4 2", 4, false);
        row("1,5", 1, false); // the point is the decimal mark everywhere
        row("1.5.5", 1.5, false);
        row("1e3", 1000, true);
        row("1e", 1, false);
        row("1e+", 1, false);
        row("1E-2x", 0.01, false);
        row("0x10", 0, false);
        row("inf", 0, false);
        row("nan", 0, false);
        row("1e400", infinity, true);
        row("-1e400", -infinity, true);
        row("1e-400", 0, true);
        row("00012", 12, true);
    }
    void prefix() {
        QFETCH(QByteArray, text);
        QFETCH(double, value);
        QFETCH(bool, whole);
        QCOMPARE(numericPrefix(text.toStdString()), value);
        QCOMPARE(isNumericText(text.toStdString()), whole);
        QCOMPARE(errorOf([&] { numberFromText(text.toStdString()); }),
                 whole ? 0 : errors::typeMismatch);
    }

    void integersRoundToEvenAndKnowTheirRange() {
        QCOMPARE(int(toByte(0.5)), 0);
        QCOMPARE(int(toByte(1.5)), 2);
        QCOMPARE(int(toByte(2.5)), 2);
        QCOMPARE(int(toByte(255.5 - 1e-9)), 255);
        QCOMPARE(int(toByte(-0.5)), 0);
        QCOMPARE(int(toInt16(-2.5)), -2);
        QCOMPARE(int(toInt16(32767.4)), 32767);
        QCOMPARE(toInt32(-2147483648.0), std::numeric_limits<std::int32_t>::min());
        for (const double value : {255.5, -0.51, 300.0, infinity, std::nan("")})
            QCOMPARE(errorOf([&] { toByte(value); }), errors::overflow);
        for (const double value : {32767.5, -32769.0, 1e10})
            QCOMPARE(errorOf([&] { toInt16(value); }), errors::overflow);
        for (const double value : {2147483647.5, -2147483648.6, -infinity})
            QCOMPARE(errorOf([&] { toInt32(value); }), errors::overflow);
    }

    void booleans() {
        for (const char* text : {"True", "TRUE", " true ", "1", "-1", "0.5"})
            QVERIFY2(booleanFromText(text), text);
        for (const char* text : {"False", "false", "0", "0.0", "-0"})
            QVERIFY2(!booleanFromText(text), text);
        for (const char* text : {"", "yes", "1x"})
            QCOMPARE(errorOf([&] { booleanFromText(text); }), errors::typeMismatch);
        QCOMPARE(booleanText(true), std::string("True"));
        QVERIFY(!booleanFromText(booleanText(false)));
    }

    void numbersAsText() {
        QCOMPARE(numberText(640), std::string("640"));
        QCOMPARE(numberText(-0.0), std::string("0"));
        QCOMPARE(numberText(0.1), std::string("0.1"));
        for (const double value : {1.0 / 3, -2.5e-7, 1e21, 123456789.125})
            QCOMPARE(numericPrefix(numberText(value)), value);
    }

    void oneDecimal_data() {
        QTest::addColumn<double>("value");
        QTest::addColumn<QString>("text");
        QTest::newRow("whole") << 150.0 << "150.";
        QTest::newRow("half up") << 156.25 << "156.3";
        QTest::newRow("carry") << 99.96 << "100.";
        QTest::newRow("below one") << 0.42 << ".4";
        QTest::newRow("nothing left") << 0.04 << ".";
        QTest::newRow("zero") << 0.0 << ".";
        QTest::newRow("negative") << -1.25 << "-1.3";
        QTest::newRow("negative nothing") << -0.04 << ".";
        QTest::newRow("large") << 1818.9894 << "1819.";
    }
    void oneDecimal() {
        QFETCH(double, value);
        QFETCH(QString, text);
        QCOMPARE(QString::fromStdString(oneDecimalText(value)), text);
    }
};

QTEST_GUILESS_MAIN(Numbers)
#include "numbers.moc"
