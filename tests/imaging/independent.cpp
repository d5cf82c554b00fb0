// Formats without a library of their own beside another program: it reads what we write, and we
// read what it writes. JPEG, PNG, TIFF and GIF stand beside their libraries in tests of their own.
#include <QProcess>
#include <QStandardPaths>
#include <QTemporaryDir>
#include <QtTest>

#include "imaging/codec_pages.h"
#include "imaging/support/sample_files.h"

using namespace kvn;
using namespace kvn::test;

namespace {

QByteArray converted(const QStringList& arguments, const QByteArray& input = {}) {
    QProcess process;
    process.start("convert", arguments);
    process.write(input);
    process.closeWriteChannel();
    process.waitForFinished();
    return process.exitCode() == 0 ? process.readAllStandardOutput() : QByteArray();
}

QByteArray bytesOf(const std::vector<std::uint8_t>& file) {
    return {reinterpret_cast<const char*>(file.data()), static_cast<qsizetype>(file.size())};
}

// Red, green, blue and alpha of all pixels.
QByteArray pixelsOf(const Raster& raster) {
    QByteArray out;
    for (int y = 0; y < raster.height(); ++y)
        for (int x = 0; x < raster.width(); ++x) {
            const Rgba color = raster.pixel(x, y);
            for (const std::uint8_t value : {color.r, color.g, color.b, color.a})
                out.append(static_cast<char>(value));
        }
    return out;
}

// The largest difference; that of colours counts only if `alpha` does.
int farthest(const QByteArray& a, const QByteArray& b, bool alpha) {
    if (a.size() != b.size() || a.isEmpty()) return 256;
    int most = 0;
    for (qsizetype i = 0; i < a.size(); ++i)
        if (alpha || i % 4 != 3)
            most = std::max(
                most, std::abs(static_cast<std::uint8_t>(a[i]) - static_cast<std::uint8_t>(b[i])));
    return most;
}

QByteArray onWhite(QByteArray pixels) {
    for (qsizetype i = 0; i + 3 < pixels.size(); i += 4) {
        const int alpha = static_cast<std::uint8_t>(pixels[i + 3]);
        for (qsizetype c = i; c < i + 3; ++c) {
            const int value = static_cast<std::uint8_t>(pixels[c]);
            pixels[c] = static_cast<char>(255 - ((255 - value) * alpha + 127) / 255);
        }
    }
    return pixels;
}

struct Format {
    FileType type;
    const char* name; // the program's
    bool alpha;       // it reads alpha
    bool white;       // colours count as they look on white, which it rounds them for
    // What it reads wrong, not only from us: bitmaps in PCX; palettes, and alpha of greys, in PSD.
    std::initializer_list<ImageType> unreadable;
};

const Format formats[] = {
    {FileType::Bmp, "BMP", true, false, {}},
    {FileType::Pcx, "PCX", false, false, {ImageType::Bit1}},
    {FileType::Tga, "TGA", true, false, {}},
    {FileType::Psd, "PSD", true, true, {ImageType::Indexed8, ImageType::GrayAlpha16}},
    {FileType::Wbmp, "WBMP", false, false, {}},
};

} // namespace

class Independent : public QObject {
    Q_OBJECT

  private slots:
    void initTestCase() {
        if (QStandardPaths::findExecutable("convert").isEmpty()) QSKIP("ImageMagick is missing");
    }

    void readsOurFiles() {
        for (const Format& format : formats)
            for (const ImageType type : everyType) {
                if (std::ranges::find(format.unreadable, type) != format.unreadable.end()) continue;
                const Codec& codec = *codecForType(format.type);
                const Raster source = patterned(type, 37, 23);
                const auto file = written(codec, {{source, nullptr, {}}});
                const QString input = QString("%1:-[0]").arg(format.name);
                const QByteArray theirs =
                    converted({input, "-auto-orient", "-depth", "8", "RGBA:-"}, bytesOf(file));
                const QByteArray ours = pixelsOf(reread(codec, file).pages.front().raster);
                const int most = format.white ? farthest(onWhite(theirs), onWhite(ours), true) - 1
                                              : farthest(theirs, ours, format.alpha);
                QVERIFY2(most <= 0,
                         qPrintable(QString("%1 %2: %3")
                                        .arg(format.name, typeName(type), QString::number(most))));
            }
    }

    void itsFilesAreRead() {
        const Raster source = patterned(ImageType::Rgba32, 37, 23);
        const Raster opaque = patterned(ImageType::Rgb24, 37, 23);
        struct Case {
            const char* output;
            FileType type;
            bool alpha;
            QStringList options;
        };
        const Case cases[] = {
            {"BMP3:-", FileType::Bmp, false, {}},
            {"BMP:-", FileType::Bmp, true, {}},
            {"BMP2:-", FileType::Bmp, false, {}},
            {"BMP3:-", FileType::Bmp, false, {"-colors", "9", "-compress", "RLE"}},
            {"BMP3:-", FileType::Bmp, false, {"-monochrome"}},
            {"PCX:-", FileType::Pcx, false, {}},
            {"PCX:-", FileType::Pcx, false, {"-colors", "99"}},
            {"PSD:-", FileType::Psd, false, {"-compress", "RLE"}},
            {"PSD:-", FileType::Psd, false, {"-compress", "None", "-colorspace", "Gray"}},
            {"PSD:-", FileType::Psd, false, {"-monochrome"}},
            {"ICO:-", FileType::Ico, true, {}},
            // Without being told, it writes TGA upside down.
            {"TGA:-", FileType::Tga, true, {"-orient", "TopLeft"}},
            {"TGA:-", FileType::Tga, false, {"-orient", "TopLeft", "-compress", "RLE"}},
            {"TGA:-", FileType::Tga, false, {"-orient", "TopLeft", "-colors", "99"}},
            {"TGA:-", FileType::Tga, false, {"-orient", "TopLeft", "-colorspace", "Gray"}},
            {"WBMP:-", FileType::Wbmp, false, {"-monochrome"}},
        };
        for (const Case& c : cases) {
            const Raster& from = c.alpha ? source : opaque;
            QStringList arguments{"-size", "37x23", "-depth", "8", "RGBA:-"};
            const QByteArray reduced =
                converted(arguments + c.options + QStringList{"RGBA:-"}, pixelsOf(from));
            arguments += c.options;
            arguments << "-alpha" << (c.alpha ? "on" : "off") << c.output;
            const QByteArray file = converted(arguments, pixelsOf(from));
            const std::vector<std::uint8_t> bytes(file.begin(), file.end());
            const Codec* codec = codecForContent(bytes, "");
            QVERIFY2(codec && codec->type() == c.type, c.output);
            const QByteArray ours = pixelsOf(reread(*codec, bytes).pages.front().raster);
            QVERIFY2(farthest(ours, reduced, c.alpha) == 0,
                     qPrintable(QString(c.output) + c.options.join(' ')));
        }
    }
};

QTEST_GUILESS_MAIN(Independent)
#include "independent.moc"
