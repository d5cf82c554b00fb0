// TIFF files that our writer makes: every form and compression, metadata, pages, damage.
#include <QtTest>
#include <cmath>
#include <tiffio.h>

#include "imaging/codec_pages.h"
#include "imaging/codecs/all.h"
#include "imaging/codecs/tiff_append.h"
#include "imaging/codecs/tiff_structure.h"
#include "imaging/convert.h"
#include "imaging/metadata/exif_block.h"
#include "imaging/support/exif_maker.h"

using namespace kvn;
using namespace kvn::test;

namespace {

using File = std::vector<std::uint8_t>;

File contents(const QString& path) {
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly)) return {};
    const QByteArray bytes = file.readAll();
    return File(bytes.begin(), bytes.end());
}

// A page of eight grey pixels by the library's own calls.
void makeTiff(const QString& path, const char* mode) {
    TIFF* tiff = TIFFOpen(path.toUtf8().constData(), mode);
    TIFFSetField(tiff, TIFFTAG_IMAGEWIDTH, 4);
    TIFFSetField(tiff, TIFFTAG_IMAGELENGTH, 2);
    TIFFSetField(tiff, TIFFTAG_BITSPERSAMPLE, 8);
    TIFFSetField(tiff, TIFFTAG_PHOTOMETRIC, PHOTOMETRIC_MINISBLACK);
    char pixels[] = "abcdefgh";
    TIFFWriteEncodedStrip(tiff, 0, pixels, 8);
    TIFFClose(tiff);
}

Metadata fullMetadata(const Bytes& exif) {
    Metadata meta;
    meta.xDpi = 300;
    meta.yDpi = 150;
    meta.icc.resize(19, 1);
    meta.icc.insert(meta.icc.begin() + 16, {'R', 'G', 'B', ' '});
    meta.xmp = {'<', 'x', '/', '>'};
    meta.photoshop = {'8', 'B', 'I', 'M', 4, 4, 0, 0, 0, 0, 0, 0};
    meta.iptc = {0x1c, 2, 5, 0, 3, 'a', 'b', 'c'}; // not a whole number of 32-bit words with
    meta.iptc.insert(meta.iptc.end(), {0x1c, 2, 5, 0, 2, 'd', 0}); // a zero at its end
    meta.comment = "a comment";
    meta.exif = exif;
    return meta;
}

// A block with maker, camera directory (exposure time 1/50) and position (latitude "N").
Bytes exifBlock(bool big) {
    Bytes block;
    const auto put = [&](std::uint32_t value, int size) {
        for (int i = 0; i < size; ++i)
            block.push_back(static_cast<std::uint8_t>(value >> 8 * (big ? size - 1 - i : i)));
    };
    const auto entry = [&](std::uint32_t tag, std::uint32_t type, std::uint32_t count,
                           std::uint32_t value) {
        put(tag, 2);
        put(type, 2);
        put(count, 4);
        put(value, 4);
    };
    const auto inlineText = [&](std::uint32_t tag, const char* text) {
        put(tag, 2);
        put(2, 2);
        put(4, 4);
        block.insert(block.end(), text, text + 4);
    };
    block = {std::uint8_t(big ? 'M' : 'I'), std::uint8_t(big ? 'M' : 'I')};
    put(42, 2);
    put(8, 4);
    put(3, 2);
    inlineText(271, "abc");
    entry(34665, 4, 1, 50);
    entry(34853, 4, 1, 80);
    put(0, 4);
    put(1, 2); // at 50
    entry(33434, 5, 1, 68);
    put(0, 4);
    put(1, 4); // at 68
    put(50, 4);
    block.resize(80);
    put(1, 2);
    inlineText(1, "N\0\0");
    put(0, 4);
    return block;
}

double meanDifference(const Raster& a, const Raster& b) {
    double sum = 0;
    for (int y = 0; y < a.height(); ++y)
        for (std::size_t i = 0; i < a.rowBytes(); ++i)
            sum += std::abs(a.view().row(y)[i] - b.view().row(y)[i]);
    return sum / static_cast<double>(a.rowBytes()) / a.height();
}

} // namespace

class TiffTest : public QObject {
    Q_OBJECT
  private slots:
    void roundTrip_data();
    void roundTrip();
    void bitsKeepTheirPalette();
    void metadata_data();
    void metadata();
    void ownTagsAreKept();
    void manyPages();
    void append();
    void appendRefuses();
    void chains();
    void damaged();
};

void TiffTest::roundTrip_data() {
    QTest::addColumn<int>("type");
    QTest::addColumn<int>("compression");
    static constexpr const char* names[] = {"none",     "g3",      "g4", "jpeg",
                                            "packbits", "deflate", "lzw"};
    for (const ImageType type : everyType)
        for (int c = 0; c < 7; ++c)
            QTest::addRow("%s %s", typeName(type), names[c]) << static_cast<int>(type) << c;
}

void TiffTest::roundTrip() {
    QFETCH(const int, type);
    QFETCH(const int, compression);
    WriteOptions options;
    options.tiffCompression = compression;
    options.jpegQuality = 95;
    Task task;
    const bool fax = compression == 1 || compression == 2;
    // One strip and several, with bits left over in the last byte of a row.
    for (const Size size : {Size{1, 1}, Size{61, 37}, Size{1403, 997}}) {
        const Raster source = patterned(static_cast<ImageType>(type), size.width, size.height);
        const File file = written(tiffCodec(), {{source, nullptr, {}}}, options);
        const Picture picture = reread(tiffCodec(), file);
        const Raster& back = picture.pages.front().raster;
        QVERIFY(picture.warnings.empty());
        QCOMPARE(tiffCodec().facts(file, {}).front().type, back.type());
        const bool lossy = compression == 3 &&
                           (source.type() == ImageType::Gray8 || source.type() == ImageType::Rgb24);
        if (lossy) {
            QCOMPARE(back.type(), source.type());
            QVERIFY(size.width < 10 || meanDifference(source, back) < 4);
        } else if (fax) {
            QVERIFY(back.samePixels(convertType(source, ImageType::Bit1, task)));
        } else if (source.type() == ImageType::Indexed8Alpha) {
            QVERIFY(back.samePixels(convertType(source, ImageType::Rgba32, task)));
        } else {
            QVERIFY(back.samePixels(source));
        }
    }
}

void TiffTest::bitsKeepTheirPalette() {
    const Rgba black{0, 0, 0, 255}, white{255, 255, 255, 255}, red{200, 10, 20, 255};
    for (const Palette& palette : {Palette({black, white}), Palette({white, black}),
                                   Palette({white, red}), Palette({red, black})})
        for (int compression = 0; compression < 7; ++compression) {
            Raster source = patterned(ImageType::Bit1, 50, 20);
            source.setPalette(palette);
            WriteOptions options;
            options.tiffCompression = compression;
            const File file = written(tiffCodec(), {{source, nullptr, {}}}, options);
            QVERIFY(reread(tiffCodec(), file).pages.front().raster.samePixels(source));
        }
}

void TiffTest::metadata_data() {
    QTest::addColumn<bool>("big");
    QTest::newRow("little-endian exif") << false;
    QTest::newRow("big-endian exif") << true;
}

void TiffTest::metadata() {
    QFETCH(const bool, big);
    const Metadata meta = fullMetadata(exifBlock(big));
    const Page page{patterned(ImageType::Rgb24, 9, 8), std::make_shared<const Metadata>(meta),
                    "the name"};
    const Page back = reread(tiffCodec(), written(tiffCodec(), {page, page})).pages.back();
    QCOMPARE(back.name, page.name);
    Metadata same = *back.metadata;
    same.exif = meta.exif;
    QVERIFY(same == meta);
    // The block comes back in the file's byte order; its values must be the same.
    const TiffStructure block(back.metadata->exif);
    const TiffDirectory main = *block.directory(block.first());
    QCOMPARE(TiffStructure::text(*main.find(271)), std::string("abc"));
    const TiffDirectory camera = *block.directory(block.number(*main.find(34665)));
    const TiffEntry exposure = *camera.find(33434);
    QCOMPARE(block.number({0, 4, 1, exposure.value.subspan(0, 4)}), std::uint64_t{1});
    QCOMPARE(block.number({0, 4, 1, exposure.value.subspan(4, 4)}), std::uint64_t{50});
    const TiffDirectory place = *block.directory(block.number(*main.find(34853)));
    QCOMPARE(TiffStructure::text(*place.find(1)), std::string("N"));
}

void TiffTest::ownTagsAreKept() {
    constexpr std::uint16_t rating = 18246;
    for (const bool big : {false, true}) {
        Metadata meta;
        meta.exif = ExifMaker(big).make({{rating, 3, 4}}, {}, {});
        const Page page{
            patterned(ImageType::Gray8, 9, 8), std::make_shared<const Metadata>(meta), {}};
        const Page back = reread(tiffCodec(), written(tiffCodec(), {page, page})).pages.back();
        const ExifBlock block(back.metadata->exif);
        QCOMPARE(block.number(ExifBlock::Directory::Main, rating).value_or(0), 4u);
        QCOMPARE(back.name, std::string());
    }
}

void TiffTest::manyPages() {
    std::vector<Page> pages;
    for (int i = 0; i < 40; ++i)
        pages.push_back({patterned(everyType[i % 7], 5 + i, 3 + i, unsigned(i)), nullptr,
                         "page " + std::to_string(i)});
    const Picture picture = reread(tiffCodec(), written(tiffCodec(), pages));
    QCOMPARE(picture.pages.size(), pages.size());
    for (std::size_t i = 0; i < pages.size(); ++i) {
        QCOMPARE(picture.pages[i].name, pages[i].name);
        QCOMPARE(picture.pages[i].raster.size(), pages[i].raster.size());
    }
    ReadLimits few;
    few.maxPages = 3;
    QCOMPARE(reread(tiffCodec(), written(tiffCodec(), pages), few).pages.size(), std::size_t{3});
}

void TiffTest::append() {
    QTemporaryDir folder;
    const QString path = folder.filePath("pages.tif");
    const std::string name = path.toStdString();
    Task task;
    std::vector<Page> pages;
    for (int i = 0; i < 4; ++i) {
        pages.push_back({patterned(everyType[i + 3], 90, 70, unsigned(i)),
                         std::make_shared<const Metadata>(fullMetadata(exifBlock(false))),
                         {}});
        WriteOptions options;
        options.tiffCompression = 6 - i;
        const File before = contents(path);
        appendTiffPage(name, pages.back(), options, task);
        const File after = contents(path);
        QVERIFY(after.size() > before.size());
        // Of what was there, only the link to the next page may differ.
        int changed = 0;
        for (std::size_t at = 0; at < before.size(); ++at)
            changed += before[at] != after[at];
        QVERIFY(changed <= 4);
        const Picture picture = reread(tiffCodec(), after);
        QCOMPARE(picture.pages.size(), pages.size());
        for (std::size_t p = 0; p < pages.size(); ++p)
            if (p != 3) QVERIFY(picture.pages[p].raster.samePixels(pages[p].raster));
        QCOMPARE(picture.pages.back().metadata->exif.empty(), false);
    }
    // Big-endian and 64-bit files are continued in their own way.
    for (const char* mode : {"wb", "w8", "wb8"}) {
        makeTiff(path, mode);
        appendTiffPage(name, pages.front(), {}, task);
        const Picture picture = reread(tiffCodec(), contents(path));
        QCOMPARE(picture.pages.size(), std::size_t{2});
        QVERIFY(picture.pages[1].raster.samePixels(pages.front().raster));
        QCOMPARE(picture.pages[1].metadata->iptc, pages.front().metadata->iptc);
    }
}

void TiffTest::appendRefuses() {
    QTemporaryDir folder;
    const QString path = folder.filePath("other.tif");
    const Page page{patterned(ImageType::Gray8, 5, 5), nullptr, {}};
    Task task;
    const auto refuses = [&](const File& bytes) {
        QFile file(path);
        if (!file.open(QIODevice::WriteOnly)) return false;
        file.write(reinterpret_cast<const char*>(bytes.data()), qint64(bytes.size()));
        file.close();
        try {
            appendTiffPage(path.toStdString(), page, {}, task);
        } catch (const RuntimeError& error) {
            return error.number() == errors::invalidPicture && contents(path) == bytes;
        }
        return false;
    };
    QVERIFY(refuses({'B', 'M', 1, 2, 3, 4, 5, 6, 7, 8, 9}));
    QVERIFY(refuses({}));
    // A loop of pages, in which the last one cannot be found.
    File loop = written(tiffCodec(), {page});
    const TiffStructure structure(loop);
    const std::uint64_t at = structure.first();
    const std::size_t link = at + 2 + 12 * structure.directory(at)->entries.size();
    for (int i = 0; i < 4; ++i)
        loop[link + std::size_t(i)] = static_cast<std::uint8_t>(at >> 8 * i);
    QVERIFY(refuses(loop));
}

void TiffTest::chains() {
    const Page page{patterned(ImageType::Gray8, 5, 5), nullptr, {}};
    File file = written(tiffCodec(), {page, page, page});
    const TiffStructure structure(file);
    const TiffChain chain = tiffChain(structure, 10);
    QCOMPARE(chain.directories.size(), std::size_t{3});
    const auto link = [&](std::size_t i) {
        const std::uint64_t at = chain.directories[i];
        return at + 2 + 12 * structure.directory(at)->entries.size();
    };
    const auto put = [&](std::size_t at, std::uint64_t value) {
        for (int i = 0; i < 4; ++i)
            file[at + std::size_t(i)] = static_cast<std::uint8_t>(value >> 8 * i);
    };
    put(link(2), chain.directories[1]);
    Picture picture = reread(tiffCodec(), file);
    QCOMPARE(picture.pages.size(), std::size_t{3});
    QCOMPARE(picture.warnings.size(), std::size_t{1});
    put(link(1), 0x7fffffff);
    picture = reread(tiffCodec(), file);
    QCOMPARE(picture.pages.size(), std::size_t{2});
    QCOMPARE(picture.warnings.size(), std::size_t{1});
    put(4, 0);
    QCOMPARE(errorOf(tiffCodec(), file), errors::invalidPicture);
}

void TiffTest::damaged() {
    const Bytes exif = exifBlock(false);
    for (int compression = 0; compression < 7; ++compression) {
        WriteOptions options;
        options.tiffCompression = compression;
        const auto meta = std::make_shared<const Metadata>(fullMetadata(exif));
        readDamaged(tiffCodec(),
                    written(tiffCodec(), {{patterned(ImageType::Gray8, 23, 9), meta, {}}}, options),
                    compression == 0 ? 1 : 5);
    }
}

QTEST_GUILESS_MAIN(TiffTest)
#include "tiff.moc"
