// What every codec has in common towards files that announce too much or end too early, and
// pictures that a format cannot hold.
#include <QElapsedTimer>
#include <QtTest>
#include <cstring>
#include <sys/resource.h>

#include "imaging/codec_pages.h"
#include "imaging/pixel_buffer.h"
#include "imaging/support/sample_files.h"

using namespace kvn;
using namespace kvn::test;

namespace {

using File = std::vector<std::uint8_t>;

void overwrite(File& file, std::size_t at, std::uint64_t value, int size, bool big) {
    for (int i = 0; i < size; ++i)
        file[at + static_cast<std::size_t>(i)] =
            static_cast<std::uint8_t>(value >> 8 * (big ? size - 1 - i : i));
}

std::size_t placeOf(const File& file, const File& mark) {
    const auto found = std::search(file.begin(), file.end(), mark.begin(), mark.end());
    return static_cast<std::size_t>(found - file.begin());
}

// Where a small file of the format says how large the picture is.
struct SideFields {
    FileType type;
    std::size_t (*place)(const File&);
    std::size_t step; // from the one side to the other
    int bytes;
    bool big;
    std::uint32_t side; // together more than two gigapixels, if the fields can hold that
};

// A place that every file has, whatever stands in it.
template <std::size_t Place>
std::size_t fixed(const File&) {
    return Place;
}

constexpr SideFields sideFields[] = {
    {FileType::Jpeg,
     [](const File& f) {
         return placeOf(f, {0xff, 0xc0}) + 5;
     },
     2, 2, true, 65500},
    {FileType::Png, fixed<16>, 4, 4, true, 46400},
    // The tags 256 and 257 of 16 bits, in the order of the bytes.
    {FileType::Tiff,
     [](const File& f) {
         return placeOf(f, {0, 1, 3, 0, 1, 0, 0, 0}) + 8;
     },
     12, 2, false, 46400},
    {FileType::Gif, fixed<6>, 2, 2, false, 65535},
    {FileType::Bmp, fixed<18>, 4, 4, false, 46400},
    {FileType::Psd, fixed<14>, 4, 4, true, 46400},
    {FileType::Pcx, fixed<8>, 2, 2, false, 65534},
    {FileType::Tga, fixed<12>, 2, 2, false, 65535},
};

std::size_t peakKilobytes() {
    rusage usage{};
    getrusage(RUSAGE_SELF, &usage);
    return static_cast<std::size_t>(usage.ru_maxrss);
}

// Leaves blocks of that size for the next request, full of one byte.
void poison(std::size_t bytes, int value) {
    PixelBuffer::trimCache();
    std::vector<PixelBuffer> blocks;
    for (int i = 0; i < 3; ++i) {
        blocks.emplace_back(bytes, 1);
        std::memset(blocks.back().detach(), value, bytes);
    }
}

} // namespace

class Limits : public QObject {
    Q_OBJECT

  private slots:
    void hugeSidesAreRefusedAtOnce_data();
    void hugeSidesAreRefusedAtOnce();
    void hugeSidesLaidByHand();
    void missingPixelsAreNoOldMemory_data();
    void missingPixelsAreNoOldMemory();
    void writersRefuseWhatFieldsCannotHold();
    void narrowPicturesCountWithTheirPadding();
};

void Limits::hugeSidesAreRefusedAtOnce_data() {
    QTest::addColumn<int>("row");
    for (int i = 0; const SideFields& fields : sideFields)
        QTest::addRow("%s", std::string(codecForType(fields.type)->name()).c_str()) << i++;
}

void Limits::hugeSidesAreRefusedAtOnce() {
    QFETCH(const int, row);
    const SideFields& fields = sideFields[row];
    const Codec& codec = *codecForType(fields.type);
    // Not progressive, not zipped.
    constexpr auto index = static_cast<std::size_t>(ImageType::GrayAlpha16);
    const std::vector<Bytes> files = sampleFiles(codec, 3, 3);
    File file = files[std::min(index, files.size() - 1)];
    const std::size_t at = fields.place(file);
    QVERIFY(at + fields.step < file.size());
    overwrite(file, at, fields.side, fields.bytes, fields.big);
    overwrite(file, at + fields.step, fields.side, fields.bytes, fields.big);
    const std::size_t before = peakKilobytes();
    QElapsedTimer timer;
    timer.start();
    const int error = errorOf(codec, file);
    QVERIFY(error == errors::outOfMemory || error == errors::invalidPicture);
    QVERIFY(timer.elapsed() < 2000);
    QVERIFY(peakKilobytes() - before < 64 << 10);
}

void Limits::hugeSidesLaidByHand() {
    // Sides in groups of seven bits; a bitmap of 32 bits in a file that names no size.
    const File wbmp{0, 0, 0x82, 0xea, 0x40, 0x82, 0xea, 0x40, 0xff, 0xff};
    File ico{0, 0, 1, 0, 1, 0, 0, 0, 0, 0, 1, 0, 32, 0, 60, 0, 0, 0, 22, 0, 0, 0, 40};
    ico.resize(82);
    overwrite(ico, 26, 46400, 4, false);
    overwrite(ico, 30, 2 * 46400, 4, false);
    overwrite(ico, 34, 32 << 16 | 1, 4, false);
    const std::pair<FileType, File> files[] = {{FileType::Wbmp, wbmp}, {FileType::Ico, ico}};
    const std::size_t before = peakKilobytes();
    for (const auto& [type, file] : files) {
        const int error = errorOf(*codecForType(type), file);
        QVERIFY(error == errors::outOfMemory || error == errors::invalidPicture);
    }
    QVERIFY(peakKilobytes() - before < 64 << 10);
}

void Limits::missingPixelsAreNoOldMemory_data() {
    QTest::addColumn<int>("type");
    for (const Codec* codec : codecs())
        if (codec->canWrite())
            QTest::addRow("%s", std::string(codec->name()).c_str())
                << static_cast<int>(codec->type());
}

void Limits::missingPixelsAreNoOldMemory() {
    QFETCH(const int, type);
    const Codec& codec = *codecForType(static_cast<FileType>(type));
    // Large enough for blocks that are used again.
    for (const ImageType kind : {ImageType::Rgb24, ImageType::Rgba32})
        for (const int compression : {0, 4, 5, 6}) {
            if (compression > 0 && codec.type() != FileType::Tiff) continue;
            const Raster source = patterned(kind, 1500, 1000);
            File file = written(codec, {{source, nullptr, {}}},
                                {.tiffCompression = compression, .bmpRle = true});
            file.resize(file.size() * 2 / 5);
            std::vector<Picture> pictures;
            for (const int value : {0x5a, 0xa5}) {
                poison(source.byteSize(), value);
                try {
                    pictures.push_back(reread(codec, file));
                } catch (const RuntimeError&) {
                    // Some have at the end what is needed first: a directory, the merged picture.
                    constexpr FileType late[] = {FileType::Tiff, FileType::Wmf, FileType::Emf,
                                                 FileType::Psd};
                    QVERIFY(std::ranges::find(late, codec.type()) != std::end(late));
                }
            }
            if (pictures.empty()) continue;
            const Raster& raster = pictures[0].pages.front().raster;
            QVERIFY(raster.samePixels(pictures[1].pages.front().raster));
            const Rgba missing = raster.pixel(1499, codec.type() == FileType::Bmp ? 0 : 999);
            // A JPEG's last rows go on in its grey; a PSD has the reds of all rows first.
            if (codec.type() != FileType::Jpeg && codec.type() != FileType::Psd)
                QVERIFY(missing.a == 0 || missing == (Rgba{0, 0, 0, 255}));
            QVERIFY(!pictures[0].warnings.empty());
        }
}

void Limits::writersRefuseWhatFieldsCannotHold() {
    struct Case {
        FileType type;
        int longest;
    };
    constexpr Case cases[] = {{FileType::Jpeg, 65500},
                              {FileType::Pcx, 65535},
                              {FileType::Tga, 65535},
                              {FileType::Wmf, 32767},
                              {FileType::Psd, 30000}};
    for (const auto [type, longest] : cases)
        for (const bool wide : {true, false}) {
            const Codec& codec = *codecForType(type);
            const auto save = [&](int side) {
                const Raster raster(ImageType::Bit1, wide ? side : 1, wide ? 1 : side);
                return written(codec, {{raster, nullptr, {}}});
            };
            QCOMPARE(errorOf(codec, save(longest)), 0);
            try {
                save(longest + 1);
                QFAIL("a side that the format does not have was written");
            } catch (const RuntimeError& error) {
                QCOMPARE(error.number(), errors::invalidCall);
                QVERIFY(error.description().find(std::to_string(longest)) != std::string::npos);
            }
        }
}

void Limits::narrowPicturesCountWithTheirPadding() {
    ReadLimits limits{.pixelBytes = 1 << 20};
    QVERIFY_THROWS_EXCEPTION(RuntimeError, limits.take(1, 20000, ImageType::Gray8));
    limits.take(1, 16000, ImageType::Gray8);
    // What is turned afterwards counts as the larger of both.
    limits = {.pixelBytes = 1 << 20};
    limits.take(20000, 1, ImageType::Gray8);
    QVERIFY_THROWS_EXCEPTION(RuntimeError, limits.take(20000, 1, ImageType::Gray8, true));
}

QTEST_GUILESS_MAIN(Limits)
#include "limits.moc"
