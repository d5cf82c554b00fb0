// What stands in a file after it went through a document, as other programs see it.
#include <QProcess>
#include <QRegularExpression>
#include <QStandardPaths>

#include "camera_file.h"

using namespace kvn;
using namespace kvn::test;

namespace {

// The tags as a program lists them, but for those about coding and place in the file.
QStringList listed(const QString& program, const QStringList& options, const QString& file) {
    QProcess process;
    process.start(program, options + QStringList{file});
    if (!process.waitForFinished() || process.exitCode() > 1) return {};
    static const QRegularExpression other(
        "\\[(System|ExifTool|File)\\]|Offset|StripByteCounts|Thumbnail(Image|Length)|JPEGInter|"
        "IPTCNAA|IPTCDigest|ExifTag|GPSTag|Compression");
    QStringList tags;
    for (const QByteArray& line : process.readAllStandardOutput().split('\n'))
        if (const QString text = QString::fromUtf8(line).simplified(); !text.contains(other))
            tags += text;
    tags.sort();
    return tags;
}

} // namespace

class Saving : public QObject {
    Q_OBJECT

    MetadataDesk desk_;

  private slots:
    void maskDecides_data() {
        QTest::addColumn<quint32>("mask");
        QTest::addColumn<QList<bool>>("kept"); // EXIF, XMP, IPTC
        QTest::newRow("all") << 0x3fffU << QList{true, true, true};
        QTest::newRow("marker 1 alone") << 1U << QList{true, true, false};
        QTest::newRow("marker 1 not") << 0x3ffeU << QList{false, false, true};
        QTest::newRow("none") << 0U << QList{false, false, false};
    }
    void maskDecides() {
        QFETCH(const quint32, mask);
        QFETCH(const QList<bool>, kept);
        frmMain* document = desk_.open(cameraFile(desk_, "a.jpg"));
        QCOMPARE(document->ImgX->JPEGMarkers(), 0x3fffU);
        document->ImgX->setJPEGMarkers(mask);
        document->Save();
        const QByteArray file = desk_.bytes("a.jpg");
        const QList<bool> found{file.contains("Makers & Sons"), file.contains("xmpmeta"),
                                file.contains("8BIM")};
        QCOMPARE(found, kept);
        QVERIFY(file.contains("a comment"));
    }

    void otherProgramsSeeTheSameTags_data() {
        QTest::addColumn<const Codec*>("codec");
        QTest::newRow("jpg") << &jpegCodec();
        QTest::newRow("png") << &pngCodec();
        QTest::newRow("tif") << &tiffCodec();
        QTest::newRow("psd") << &psdCodec();
    }
    void otherProgramsSeeTheSameTags() {
        QFETCH(const Codec*, codec);
        const QString name = QString("a.") + QTest::currentDataTag();
        for (const auto& [program, options] :
             {std::pair{QString("exiftool"), QStringList{"-a", "-u", "-s", "-G1"}},
              std::pair{QString("exiv2"), QStringList{"-pa"}}}) {
            if (QStandardPaths::findExecutable(program).isEmpty()) QSKIP("a lister is missing");
            const QString file = cameraFile(desk_, name, cameraMetadata(), *codec);
            const QStringList before = listed(program, options, file);
            QVERIFY(before.size() > 8);
            frmMain* document = desk_.open(file);
            document->Save();
            QCOMPARE(listed(program, options, file), before);
            // One pixel changed.
            document->ImgX->Info().SetPixel(5, 5, engine::Color(255, 0, 0));
            document->Save();
            QCOMPARE(listed(program, options, file), before);
        }
    }

    void onlyTheShownImageOfSeveral() {
        frmMain* document = desk_.open(desk_.tiff("pages.tif", 3));
        for (const auto& [name, row, remarks] :
             {std::tuple{"a.tif", 4, 0}, std::tuple{"a.png", 2, 1}}) {
            desk_.rules.said.clear();
            desk_.user.files.push_back({true, desk_.path(name), row});
            document->SaveAs();
            QCOMPARE(desk_.rules.said.size(), remarks);
        }
        QVERIFY(desk_.rules.said.first().contains("Only the shown image of 3"));
    }
};

QTEST_MAIN(Saving)
#include "saving.moc"
