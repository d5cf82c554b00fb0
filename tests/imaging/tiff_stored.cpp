// TIFF files that the library's own calls make, in the forms that our writer never uses.
#include <QtTest>
#include <cmath>
#include <functional>
#include <tiffio.h>

#include "imaging/codec_pages.h"
#include "imaging/codecs/all.h"
#include "imaging/codecs/tiff_structure.h"
#include "imaging/metadata/orientation.h"

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

// A file of one page by the library: `fields` sets what differs from 8-bit grey in one strip.
// `data` are the strips or tiles one behind the other, all of one size.
struct Stored {
    int width = 4, height = 2, bits = 8, samples = 1;
    int photometric = PHOTOMETRIC_MINISBLACK;
    int compression = COMPRESSION_NONE;
    const char* mode = "w";
    std::function<void(TIFF*)> fields{};
    int chunks = 1;
    bool tiled = false;

    File file(const void* data, std::size_t size) const {
        QTemporaryDir folder;
        const QString path = folder.filePath("stored.tif");
        TIFF* tiff = TIFFOpen(path.toUtf8().constData(), mode);
        TIFFSetField(tiff, TIFFTAG_IMAGEWIDTH, width);
        TIFFSetField(tiff, TIFFTAG_IMAGELENGTH, height);
        TIFFSetField(tiff, TIFFTAG_BITSPERSAMPLE, bits);
        TIFFSetField(tiff, TIFFTAG_SAMPLESPERPIXEL, samples);
        TIFFSetField(tiff, TIFFTAG_PHOTOMETRIC, photometric);
        TIFFSetField(tiff, TIFFTAG_COMPRESSION, compression);
        TIFFSetField(tiff, TIFFTAG_PLANARCONFIG, PLANARCONFIG_CONTIG);
        if (fields) fields(tiff);
        // The library turns bytes round in place.
        File copy(static_cast<const std::uint8_t*>(data),
                  static_cast<const std::uint8_t*>(data) + size);
        const auto part = static_cast<tmsize_t>(size) / chunks;
        for (int i = 0; i < chunks; ++i) {
            const auto index = static_cast<std::uint32_t>(i);
            if (tiled)
                TIFFWriteEncodedTile(tiff, index, copy.data() + i * part, part);
            else
                TIFFWriteEncodedStrip(tiff, index, copy.data() + i * part, part);
        }
        TIFFClose(tiff);
        return contents(path);
    }
    template <typename T>
    Raster read(const std::vector<T>& data) const {
        return reread(tiffCodec(), file(data.data(), data.size() * sizeof(T))).pages.front().raster;
    }
};

} // namespace

class TiffStoredTest : public QObject {
    Q_OBJECT
  private slots:
    void greyOfAllDepths();
    void numbersOtherThanUnsigned();
    void premultipliedAlpha();
    void extraSamples();
    void inks();
    void lab();
    void palettes();
    void planesAndTiles();
    void brightnessAndColour();
    void orientations();
    void fillOrderAndByteOrder();
    void damagedStrip();
    void refused();
};

void TiffStoredTest::greyOfAllDepths() {
    // 0, then an odd value, then the largest of each depth, rounded to 8 bits.
    for (const int bits : {2, 3, 4, 6, 8, 10, 12, 14, 16, 20, 24, 32}) {
        const std::uint64_t most = (std::uint64_t{1} << bits) - 1;
        const std::uint64_t odd = most * 5 / 8;
        File data;
        if (bits == 16 || bits == 24 || bits == 32) {
            for (const std::uint64_t value : {std::uint64_t{0}, odd, most})
                for (int i = 0; i < bits / 8; ++i)
                    data.push_back(static_cast<std::uint8_t>(value >> 8 * i)); // this machine's
        } else {
            std::vector<bool> stream;
            for (const std::uint64_t value : {std::uint64_t{0}, odd, most})
                for (int i = bits - 1; i >= 0; --i)
                    stream.push_back((value >> i & 1) != 0);
            data.resize((stream.size() + 7) / 8);
            for (std::size_t i = 0; i < stream.size(); ++i)
                data[i / 8] |= static_cast<std::uint8_t>(stream[i] << (7 - i % 8));
        }
        for (const char* mode : {"wl", "wb"})
            for (const int photometric : {PHOTOMETRIC_MINISBLACK, PHOTOMETRIC_MINISWHITE}) {
                const Raster raster = Stored{.width = 3,
                                             .height = 1,
                                             .bits = bits,
                                             .photometric = photometric,
                                             .mode = mode}
                                          .read(data);
                const auto middle = static_cast<std::uint8_t>(
                    std::lround(255.0 * static_cast<double>(odd) / static_cast<double>(most)));
                const bool white = photometric == PHOTOMETRIC_MINISWHITE;
                const File expected = white ? File{255, static_cast<std::uint8_t>(255 - middle), 0}
                                            : File{0, middle, 255};
                QCOMPARE(raster.type(), ImageType::Gray8);
                QCOMPARE(allIndices(raster), expected);
            }
    }
}

void TiffStoredTest::numbersOtherThanUnsigned() {
    const auto format = [](int kind) {
        return [kind](TIFF* tiff) { TIFFSetField(tiff, TIFFTAG_SAMPLEFORMAT, kind); };
    };
    Stored real{.width = 6, .height = 1, .bits = 32, .fields = format(SAMPLEFORMAT_IEEEFP)};
    const std::vector<float> reals{0, 0.5F, 1, 7, -3, std::nanf("")};
    QCOMPARE(allIndices(real.read(reals)), File({0, 128, 255, 255, 0, 0}));
    real.bits = 64;
    QCOMPARE(allIndices(real.read(std::vector<double>(reals.begin(), reals.end()))),
             File({0, 128, 255, 255, 0, 0}));
    real.bits = 16; // 1.0, 0.5, the least number, -1, infinity, 0
    QCOMPARE(
        allIndices(real.read(std::vector<std::uint16_t>{0x3c00, 0x3800, 1, 0xbc00, 0x7c00, 0})),
        File({255, 128, 0, 0, 255, 0}));
    // Stated limits count.
    real.bits = 32;
    real.fields = [](TIFF* tiff) {
        TIFFSetField(tiff, TIFFTAG_SAMPLEFORMAT, SAMPLEFORMAT_IEEEFP);
        TIFFSetField(tiff, TIFFTAG_SMINSAMPLEVALUE, -4.0);
        TIFFSetField(tiff, TIFFTAG_SMAXSAMPLEVALUE, 6.0);
    };
    QCOMPARE(allIndices(real.read(reals)), File({102, 115, 128, 255, 26, 0}));
    Stored whole{.width = 3, .height = 1, .bits = 16, .fields = format(SAMPLEFORMAT_INT)};
    QCOMPARE(allIndices(whole.read(std::vector<std::int16_t>{-32768, 0, 32767})),
             File({0, 128, 255}));
    whole.fields = format(SAMPLEFORMAT_COMPLEXINT);
    QCOMPARE(errorOf(tiffCodec(), whole.file("\0\0\0\0\0\0", 6)), errors::invalidPicture);
}

void TiffStoredTest::premultipliedAlpha() {
    const auto alpha = [](std::uint16_t kind) {
        return [kind](TIFF* tiff) { TIFFSetField(tiff, TIFFTAG_EXTRASAMPLES, 1, &kind); };
    };
    Stored stored{.width = 3,
                  .height = 1,
                  .samples = 4,
                  .photometric = PHOTOMETRIC_RGB,
                  .fields = alpha(EXTRASAMPLE_ASSOCALPHA)};
    const File data{10, 20, 40, 40, 7, 8, 9, 0, 100, 0, 200, 100};
    Raster raster = stored.read(data);
    QCOMPARE(raster.pixel(0, 0), (Rgba{64, 128, 255, 40}));
    QCOMPARE(raster.pixel(1, 0), (Rgba{0, 0, 0, 0}));
    QCOMPARE(raster.pixel(2, 0), (Rgba{255, 0, 255, 100})); // more than there can be
    stored.fields = alpha(EXTRASAMPLE_UNASSALPHA);
    QCOMPARE(stored.read(data).pixel(1, 0), (Rgba{7, 8, 9, 0}));
    // At 16 bits the division comes before the rounding.
    Stored deep{
        .width = 1, .height = 1, .bits = 16, .samples = 2, .fields = alpha(EXTRASAMPLE_ASSOCALPHA)};
    QCOMPARE(deep.read(std::vector<std::uint16_t>{100, 200}).pixel(0, 0), (Rgba{128, 128, 128, 1}));
}

void TiffStoredTest::extraSamples() {
    const File data{1, 2, 3, 4, 5, 6, 7, 8};
    Stored stored{.width = 2, .height = 1, .samples = 4, .photometric = PHOTOMETRIC_RGB};
    // A fourth sample that the file does not explain is alpha, one "of no meaning" is not.
    QCOMPARE(stored.read(data).pixel(1, 0), (Rgba{5, 6, 7, 8}));
    stored.fields = [](TIFF* tiff) {
        const std::uint16_t kind = EXTRASAMPLE_UNSPECIFIED;
        TIFFSetField(tiff, TIFFTAG_EXTRASAMPLES, 1, &kind);
    };
    QCOMPARE(stored.read(data).pixel(1, 0), (Rgba{5, 6, 7, 255}));
    // Alpha need not be the first extra one.
    Stored gray{.width = 2, .height = 1, .samples = 4, .fields = [](TIFF* tiff) {
                    const std::uint16_t kinds[] = {0, 0, EXTRASAMPLE_UNASSALPHA};
                    TIFFSetField(tiff, TIFFTAG_EXTRASAMPLES, 3, kinds);
                }};
    QCOMPARE(gray.read(data).pixel(1, 0), (Rgba{5, 5, 5, 8}));
}

void TiffStoredTest::inks() {
    Stored stored{.width = 3, .height = 1, .samples = 4, .photometric = PHOTOMETRIC_SEPARATED};
    stored.fields = [](TIFF* tiff) { TIFFSetField(tiff, TIFFTAG_ICCPROFILE, 4, "CMYK"); };
    const File data{0, 0, 0, 0, 255, 0, 51, 0, 100, 0, 0, 128};
    const File file = stored.file(data.data(), data.size());
    const Page page = reread(tiffCodec(), file).pages.front();
    QCOMPARE(page.raster.pixel(0, 0), (Rgba{255, 255, 255, 255}));
    QCOMPARE(page.raster.pixel(1, 0), (Rgba{0, 255, 204, 255}));
    QCOMPARE(page.raster.pixel(2, 0), (Rgba{77, 127, 127, 255}));
    // The profile speaks of inks that are no more.
    QVERIFY(page.metadata->icc.empty());
}

void TiffStoredTest::lab() {
    // White, black, and the red of sRGB, L 54.29 a 80.80 b 69.89 under D50.
    const File cie{255, 0, 0, 0, 0, 0, 138, 81, 70};
    const File icc{255, 128, 128, 0, 128, 128, 138, 209, 198};
    for (const bool signedForm : {true, false}) {
        Stored stored{.width = 3,
                      .height = 1,
                      .samples = 3,
                      .photometric = signedForm ? PHOTOMETRIC_CIELAB : PHOTOMETRIC_ICCLAB};
        const Raster raster = stored.read(signedForm ? cie : icc);
        QCOMPARE(raster.pixel(0, 0), (Rgba{255, 255, 255, 255}));
        QCOMPARE(raster.pixel(1, 0), (Rgba{0, 0, 0, 255}));
        const Rgba red = raster.pixel(2, 0);
        QVERIFY(red.r > 252 && red.g < 6 && red.b < 6);
    }
}

void TiffStoredTest::palettes() {
    std::vector<std::uint16_t> map(256);
    for (std::size_t i = 0; i < 16; ++i)
        map[i] = static_cast<std::uint16_t>((15 - i) * 0x1100 + 0xff);
    const auto set = [&](TIFF* tiff) {
        TIFFSetField(tiff, TIFFTAG_COLORMAP, map.data(), map.data(), map.data());
    };
    Stored stored{
        .width = 4, .height = 1, .bits = 4, .photometric = PHOTOMETRIC_PALETTE, .fields = set};
    const Raster raster = stored.read(File{0x0f, 0x21});
    QCOMPARE(raster.type(), ImageType::Indexed8);
    QCOMPARE(raster.palette().size(), std::size_t{16});
    QCOMPARE(allIndices(raster), File({0, 15, 2, 1}));
    QCOMPARE(raster.pixel(2, 0), (Rgba{0xdd, 0xdd, 0xdd, 255}));
    // One bit of index and one of something else, in turn and in planes.
    for (const int config : {PLANARCONFIG_CONTIG, PLANARCONFIG_SEPARATE}) {
        const bool planes = config == PLANARCONFIG_SEPARATE;
        Stored pair = stored;
        pair.bits = 1;
        pair.samples = 2;
        pair.chunks = planes ? 2 : 1;
        pair.fields = [&](TIFF* tiff) {
            set(tiff);
            TIFFSetField(tiff, TIFFTAG_PLANARCONFIG, config);
            const std::uint16_t kind = EXTRASAMPLE_UNSPECIFIED;
            TIFFSetField(tiff, TIFFTAG_EXTRASAMPLES, 1, &kind);
        };
        const File data = planes ? File{0x60, 0xf0} : File{0b01111100};
        QCOMPARE(allIndices(pair.read(data)), File({0, 1, 1, 0}));
    }
    // Numbers of 8 bits where 16 belong.
    for (std::uint16_t& value : map)
        value &= 0xff;
    map[2] = 77;
    QCOMPARE(stored.read(File{0x0f, 0x21}).pixel(2, 0), (Rgba{77, 77, 77, 255}));
    // More colours than a palette in memory has.
    map.assign(65536, 0);
    map[0x0202] = 0x4dff;
    stored.bits = 16;
    QCOMPARE(stored.read(File{0, 0, 1, 1, 0, 0, 2, 2}).pixel(3, 0), (Rgba{77, 77, 77, 255}));
}

void TiffStoredTest::planesAndTiles() {
    const Raster source = patterned(ImageType::Rgb24, 100, 70);
    // Planes of strips.
    const auto planar = [](TIFF* tiff) {
        TIFFSetField(tiff, TIFFTAG_PLANARCONFIG, PLANARCONFIG_SEPARATE);
        TIFFSetField(tiff, TIFFTAG_ROWSPERSTRIP, 35);
    };
    File data;
    for (std::size_t c = 0; c < 3; ++c)
        for (int y = 0; y < 70; ++y)
            for (std::size_t x = 0; x < 100; ++x)
                data.push_back(source.view().row(y)[3 * x + c]);
    for (const int compression : {COMPRESSION_NONE, COMPRESSION_LZW}) {
        Stored stored{.width = 100,
                      .height = 70,
                      .samples = 3,
                      .photometric = PHOTOMETRIC_RGB,
                      .compression = compression,
                      .fields = planar,
                      .chunks = 6};
        QVERIFY(stored.read(data).samePixels(source));
    }
    // Tiles that reach over the right and the lower edge.
    data.assign(std::size_t{4 * 3} * 32 * 32 * 3, 0x55);
    for (int y = 0; y < 70; ++y)
        for (int x = 0; x < 100; ++x)
            for (int c = 0; c < 3; ++c)
                data[std::size_t(((y / 32 * 4 + x / 32) * 1024 + y % 32 * 32 + x % 32) * 3 + c)] =
                    source.view().row(y)[3 * x + c];
    Stored tiled{.width = 100,
                 .height = 70,
                 .samples = 3,
                 .photometric = PHOTOMETRIC_RGB,
                 .compression = COMPRESSION_ADOBE_DEFLATE,
                 .fields =
                     [](TIFF* tiff) {
                         TIFFSetField(tiff, TIFFTAG_TILEWIDTH, 32);
                         TIFFSetField(tiff, TIFFTAG_TILELENGTH, 32);
                     },
                 .chunks = 12,
                 .tiled = true};
    QVERIFY(tiled.read(data).samePixels(source));
    // Bits in tiles.
    tiled = {.width = 40,
             .height = 16,
             .bits = 1,
             .fields =
                 [](TIFF* tiff) {
                     TIFFSetField(tiff, TIFFTAG_TILEWIDTH, 32);
                     TIFFSetField(tiff, TIFFTAG_TILELENGTH, 16);
                 },
             .chunks = 2,
             .tiled = true};
    data.assign(128, 0);
    data[4 * 3] = 0x80;      // row 3 of the first tile
    data[64 + 4 * 5] = 0x01; // row 5 of the second, its 8th pixel
    const Raster bits = tiled.read(data);
    QCOMPARE(bits.index(0, 3), std::uint8_t{1});
    QCOMPARE(bits.index(39, 5), std::uint8_t{1});
    QCOMPARE(bits.index(38, 5), std::uint8_t{0});
}

void TiffStoredTest::brightnessAndColour() {
    // Colour at half the resolution: a block of 2 x 2 brightnesses, then its two colour values.
    Stored stored{.width = 2,
                  .height = 2,
                  .samples = 3,
                  .photometric = PHOTOMETRIC_YCBCR,
                  .fields = [](TIFF* tiff) {
                      const float range[] = {0, 255, 128, 255, 128, 255};
                      TIFFSetField(tiff, TIFFTAG_YCBCRSUBSAMPLING, 2, 2);
                      TIFFSetField(tiff, TIFFTAG_REFERENCEBLACKWHITE, range);
                  }};
    const Raster raster = stored.read(File{0, 85, 170, 255, 128, 128});
    const File grays{0, 85, 170, 255};
    for (int i = 0; i < 4; ++i) {
        const auto gray = grays[std::size_t(i)];
        QCOMPARE(raster.pixel(i % 2, i / 2), (Rgba{gray, gray, gray, 255}));
    }
}

void TiffStoredTest::orientations() {
    Task task;
    const Raster source = patterned(ImageType::Gray8, 4, 2);
    File data;
    for (int y = 0; y < 2; ++y)
        data.insert(data.end(), source.view().row(y), source.view().row(y) + 4);
    for (int orientation = 1; orientation <= 8; ++orientation) {
        Stored stored{.fields = [orientation](TIFF* tiff) {
            TIFFSetField(tiff, TIFFTAG_ORIENTATION, orientation);
            TIFFSetField(tiff, TIFFTAG_XRESOLUTION, 200.0);
            TIFFSetField(tiff, TIFFTAG_YRESOLUTION, 100.0);
        }};
        const File file = stored.file(data.data(), data.size());
        const Page page = reread(tiffCodec(), file).pages.front();
        QVERIFY(page.raster.samePixels(turnedUpright(source, orientation, task)));
        QCOMPARE(page.metadata->xDpi, orientation > 4 ? 100.0 : 200.0);
        QCOMPARE(tiffCodec().facts(file, {}).front().width, page.raster.width());
    }
}

void TiffStoredTest::fillOrderAndByteOrder() {
    Stored stored{.width = 8, .height = 1, .bits = 1, .fields = [](TIFF* tiff) {
                      TIFFSetField(tiff, TIFFTAG_FILLORDER, FILLORDER_LSB2MSB);
                  }};
    // The library writes the bytes as they are given; the first pixel is the lowest bit.
    File file = stored.file("\x03", 1);
    const Raster raster = reread(tiffCodec(), file).pages.front().raster;
    QCOMPARE(allIndices(raster).front(), raster.index(1, 0));
    QVERIFY(raster.index(0, 0) != raster.index(7, 0));
    // Group 3 in one and two dimensions, with reversed bits, and group 4.
    const Raster source = patterned(ImageType::Bit1, 200, 40);
    File data;
    for (int y = 0; y < 40; ++y)
        data.insert(data.end(), source.view().row(y), source.view().row(y) + 25);
    for (const int options : {0, 1, 5})
        for (const int order : {FILLORDER_MSB2LSB, FILLORDER_LSB2MSB}) {
            Stored fax{.width = 200,
                       .height = 40,
                       .bits = 1,
                       .compression = COMPRESSION_CCITTFAX3,
                       .fields = [=](TIFF* tiff) {
                           TIFFSetField(tiff, TIFFTAG_GROUP3OPTIONS, options);
                           TIFFSetField(tiff, TIFFTAG_FILLORDER, order);
                       }};
            QVERIFY(fax.read(data).samePixels(source));
        }
}

void TiffStoredTest::damagedStrip() {
    const Raster source = patterned(ImageType::Rgb24, 300, 40);
    File data;
    for (int y = 0; y < 40; ++y)
        data.insert(data.end(), source.view().row(y), source.view().row(y) + 900);
    for (const int compression :
         {COMPRESSION_PACKBITS, COMPRESSION_LZW, COMPRESSION_ADOBE_DEFLATE}) {
        Stored stored{.width = 300,
                      .height = 40,
                      .samples = 3,
                      .photometric = PHOTOMETRIC_RGB,
                      .compression = compression,
                      .fields = [compression](TIFF* tiff) {
                          if (compression != COMPRESSION_PACKBITS)
                              TIFFSetField(tiff, TIFFTAG_PREDICTOR, PREDICTOR_HORIZONTAL);
                      }};
        File file = stored.file(data.data(), data.size());
        // The count of bytes that the strip has: halved, the strip ends too early.
        const TiffStructure structure(file);
        const TiffEntry count =
            *structure.directory(structure.first())->find(TIFFTAG_STRIPBYTECOUNTS);
        const auto half = static_cast<std::uint32_t>(structure.number(count) / 2);
        const std::size_t at = static_cast<std::size_t>(count.value.data() - file.data());
        for (std::size_t i = 0; i < count.value.size(); ++i)
            file[at + i] = static_cast<std::uint8_t>(half >> 8 * i);
        const Picture picture = reread(tiffCodec(), file);
        QCOMPARE(picture.warnings.size(), std::size_t{1});
        const Raster& raster = picture.pages.front().raster;
        QVERIFY(raster.cropped({0, 0, 300, 15}).samePixels(source.cropped({0, 0, 300, 15})));
        QCOMPARE(raster.pixel(150, 39), (Rgba{0, 0, 0, 255}));
    }
}

void TiffStoredTest::refused() {
    const auto page = [](int width, int height, int bits, int samples) {
        const int rows = height > 100 ? height : 1;
        return Stored{.width = width,
                      .height = height,
                      .bits = bits,
                      .samples = samples,
                      .fields = [rows](TIFF* t) { TIFFSetField(t, TIFFTAG_ROWSPERSTRIP, rows); }}
            .file("\0", 1);
    };
    QCOMPARE(errorOf(tiffCodec(), page(60000, 60000, 8, 1)), errors::outOfMemory);
    QCOMPARE(errorOf(tiffCodec(), page(20000, 20000, 8, 1)), errors::invalidPicture);
    QCOMPARE(errorOf(tiffCodec(), page(5, 5, 8, 3000)), errors::invalidPicture);
    QCOMPARE(errorOf(tiffCodec(), page(5, 5, 40, 1)), errors::invalidPicture);
    ReadLimits small;
    small.pixelBytes = 24;
    QCOMPARE(errorOf(tiffCodec(), page(5, 5, 8, 1), small), errors::outOfMemory);
    Task task;
    MemorySink sink;
    QVERIFY_THROWS_EXCEPTION(RuntimeError, tiffCodec().write({}, {}, sink, task));
}

QTEST_GUILESS_MAIN(TiffStoredTest)
#include "tiff_stored.moc"
