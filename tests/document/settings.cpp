// The eleven settings: defaults, both ways through the store, and texts that are no values.
#include "document/settings.h"

#include <QFile>
#include <QTemporaryDir>
#include <QTest>
#include <memory>

#include "basic/error.h"
#include "basic/settings_store.h"
#include "document/program_state.h"

using namespace kvn;

class SettingsTest : public QObject {
    Q_OBJECT

    std::unique_ptr<QTemporaryDir> home_;
    CRegister store_;

    void put(const QString& name, const QString& text) {
        QVERIFY(store_.REGSaveSetting(0x80000002u, "SOFTWARE\\Ombrelight\\Kestrelvane Settings\\",
                                      name, text));
    }

  private slots:
    void init() {
        home_ = std::make_unique<QTemporaryDir>();
        qputenv("XDG_CONFIG_HOME", home_->path().toLocal8Bit());
        qputenv("XDG_CONFIG_DIRS", home_->filePath("system").toLocal8Bit());
    }

    void defaults() {
        document::Settings settings;
        settings.JpgQuality = 1;
        document::LoadSettings(settings, store_);
        QCOMPARE(settings.JpgQuality, qint16(75));
        QCOMPARE(settings.JpgSmoothing, qint16(0));
        QVERIFY(!settings.JpgProgressive);
        QCOMPARE(settings.TiffCompression, qint16(0));
        QVERIFY(!settings.BmpRle);
        QVERIFY(settings.WmfPlaceable);
        QVERIFY(settings.AlphaDisplayChecker);
        QCOMPARE(settings.BackgroundColor, 0xFFFFFF);
        QVERIFY(settings.FlattenAlphaOnSave);
        QCOMPARE(settings.DitherError, qint16(20));
        QVERIFY(settings.DoubleBuffer);
    }

    // The file itself, so that a value of another version or machine is found under its name.
    void storedForm() {
        document::Settings settings;
        settings.JpgQuality = 1000; // ranges are advice
        settings.JpgProgressive = true;
        settings.BackgroundColor = 0x123456;
        settings.DoubleBuffer = false;
        document::SaveSettings(settings, store_);
        QFile file(home_->filePath("kestrelvane/settings.conf"));
        QVERIFY(file.open(QIODevice::ReadOnly));
        const QString expected =
            "[HKEY_LOCAL_MACHINE\\SOFTWARE\\Ombrelight\\Kestrelvane Settings]\n"
            "JPG Quaity=1000\n"
            "JPG Smoothing=0\n"
            "JPG Progressive=True\n"
            "TIFF Compression=0\n"
            "BMP RLE Compression=False\n"
            "WMF Placeable=True\n"
            "Alpha Display=True\n"
            "Background Color=1193046\n"
            "Flattern Alpha=True\n"
            "Dither Error=20\n"
            "Double Buffer=False\n";
        const QString text = QString::fromUtf8(file.readAll());
        QVERIFY2(text.endsWith(expected), qPrintable(text));
        document::Settings read;
        document::LoadSettings(read, store_);
        QCOMPARE(read.JpgQuality, qint16(1000));
        QVERIFY(read.JpgProgressive && !read.DoubleBuffer);
        QCOMPARE(read.BackgroundColor, 0x123456);
    }

    void numbersCountAsTruthValues() {
        put("JPG Progressive", "1");
        put("WMF Placeable", "0");
        document::Settings settings;
        document::LoadSettings(settings, store_);
        QVERIFY(settings.JpgProgressive && !settings.WmfPlaceable);
    }

    void badTextsLeaveTheDefaults_data() {
        QTest::addColumn<QString>("name");
        QTest::addColumn<QString>("text");
        QTest::addColumn<int>("number");
        QTest::newRow("text") << "JPG Quaity"
                              << "abc" << errors::typeMismatch;
        QTest::newRow("empty") << "Dither Error"
                               << "" << errors::typeMismatch;
        QTest::newRow("too large") << "JPG Quaity"
                                   << "40000" << errors::overflow;
        QTest::newRow("no truth value") << "Double Buffer"
                                        << "maybe" << errors::typeMismatch;
    }
    void badTextsLeaveTheDefaults() {
        QFETCH(QString, name);
        QFETCH(QString, text);
        QFETCH(int, number);
        put("JPG Smoothing", "9"); // a good one before it is not taken alone
        put(name, text);
        document::Settings settings;
        try {
            document::LoadSettings(settings, store_);
            QFAIL("it must throw");
        } catch (const RuntimeError& error) {
            QCOMPARE(error.number(), number);
        }
        QCOMPARE(settings.JpgSmoothing, qint16(0));
        QCOMPARE(settings.JpgQuality, qint16(75));
    }
};

QTEST_GUILESS_MAIN(SettingsTest)
#include "settings.moc"
