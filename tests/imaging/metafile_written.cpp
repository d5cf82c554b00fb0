// WMF and EMF files that our writers make, held against a reader of the test's own.
#include <QtTest>

#include "imaging/codec_pages.h"
#include "imaging/codecs/all.h"
#include "imaging/codecs/fields.h"

using namespace kvn;
using namespace kvn::test;

namespace {

struct Stored {
    std::size_t dibAt = 0, pixelsAt = 0; // in the file
    int bits = 0, width = 0, height = 0;
};

Stored storedAt(const Bytes& file, std::size_t dib) {
    const LittleFields f(file);
    Stored stored{dib, 0, int(f.u16(dib + 14)), int(f.u32(dib + 4)), int(f.u32(dib + 8))};
    stored.pixelsAt = dib + f.u32(dib) + 4 * f.u32(dib + 32);
    return stored;
}

// The one bitmap of a WMF, with every record's length checked on the way.
Stored bitmapInWmf(const Bytes& file, std::size_t headerAt) {
    const LittleFields f(file);
    Stored stored;
    std::size_t longest = 0, at = headerAt + 18;
    for (; f.u16(at + 4) != 0; at += 2 * f.u32(at)) {
        longest = std::max<std::size_t>(longest, f.u32(at));
        if (f.u16(at + 4) == 0xf43) stored = storedAt(file, at + 28);
        if (f.u32(at) < 3) return {};
    }
    const bool sizes = f.u32(headerAt + 6) * 2 == file.size() - headerAt && at + 6 == file.size();
    return sizes && longest == f.u32(headerAt + 12) ? stored : Stored{};
}

Stored bitmapInEmf(const Bytes& file) {
    const LittleFields f(file);
    Stored stored;
    std::size_t at = 0, records = 1;
    for (; f.u32(at) != 14; at += f.u32(at + 4), ++records) {
        if (f.u32(at + 4) < 8 || at >= file.size()) return {};
        if (f.u32(at) == 81) stored = storedAt(file, at + f.u32(at + 48));
        if (f.u32(at) == 114) stored = storedAt(file, at + f.u32(at + 84));
    }
    const bool sizes = f.u32(48) == file.size() && at + 20 == file.size();
    return sizes && records == f.u32(52) ? stored : Stored{};
}

Rgba storedPixel(const Bytes& file, const Stored& s, int x, int y) {
    const std::size_t stride = (std::size_t(s.width) * std::size_t(s.bits) + 31) / 32 * 4;
    const std::size_t row = s.pixelsAt + stride * std::size_t(s.height - 1 - y);
    const LittleFields f(file);
    std::size_t at = row + std::size_t(x) * std::size_t(s.bits) / 8;
    std::uint8_t alpha = 255;
    if (s.bits == 32) alpha = file[at + 3];
    if (s.bits <= 8) {
        const unsigned index = s.bits == 8 ? file[at] : file[at] >> (7 - x % 8) & 1;
        at = s.dibAt + 40 + 4 * index;
    }
    return {file[at + 2], file[at + 1], file[at], alpha};
}

} // namespace

class MetafileWrittenTest : public QObject {
    Q_OBJECT
  private slots:
    void writtenWmf();
    void writtenEmf();
    void writtenFilesOpenAsTheyWere();
    void writersRefuse();
};

void MetafileWrittenTest::writtenWmf() {
    for (const ImageType type : everyType)
        for (const bool placeable : {true, false}) {
            const Raster source = patterned(type, 13, 9);
            auto metadata = std::make_shared<Metadata>();
            metadata->xDpi = metadata->yDpi = 200;
            const Bytes file =
                written(wmfCodec(), {{source, metadata, {}}}, {.wmfPlaceable = placeable});
            const LittleFields f(file);
            QCOMPARE(f.u32(0) == 0x9ac6cdd7, placeable);
            std::uint32_t sum = 0;
            for (std::size_t at = 0; placeable && at < 22; at += 2)
                sum ^= f.u16(at);
            QCOMPARE(sum, 0u);
            if (placeable) QCOMPARE(f.u16(14), 200u);
            const Stored stored = bitmapInWmf(file, placeable ? 22 : 0);
            QCOMPARE(stored.width, 13);
            QCOMPARE(stored.bits, type == ImageType::Bit1                                   ? 1
                                  : type == ImageType::Gray8 || type == ImageType::Indexed8 ? 8
                                                                                            : 24);
            for (int y = 0; y < 9; ++y)
                for (int x = 0; x < 13; ++x) {
                    Rgba expected = source.pixel(x, y);
                    expected.a = 255;
                    QCOMPARE(storedPixel(file, stored, x, y), expected);
                }
        }
}

void MetafileWrittenTest::writtenEmf() {
    for (const ImageType type : everyType) {
        const Raster source = patterned(type, 13, 9);
        const Bytes file = written(emfCodec(), {{source, nullptr, {}}});
        const Stored stored = bitmapInEmf(file);
        QCOMPARE(stored.height, 9);
        for (int y = 0; y < 9; ++y)
            for (int x = 0; x < 13; ++x) {
                Rgba expected = source.pixel(x, y);
                if (hasAlpha(type))
                    for (std::uint8_t* c : {&expected.r, &expected.g, &expected.b})
                        *c = mul255(*c, expected.a);
                QCOMPARE(storedPixel(file, stored, x, y), expected);
            }
    }
}

// A file that holds just one bitmap opens as that, in its type and with its palette.
void MetafileWrittenTest::writtenFilesOpenAsTheyWere() {
    auto metadata = std::make_shared<Metadata>();
    for (const double dpi : {0.0, 72.0, 96.0, 300.0, 1200.0})
        for (const ImageType type : everyType)
            for (const Codec* codec : {&wmfCodec(), &emfCodec()}) {
                metadata->xDpi = metadata->yDpi = dpi;
                const Raster source = patterned(type, 61, 37);
                const Bytes file = written(*codec, {{source, metadata, {}}});
                QVERIFY(codecForContent(file, "") == codec);
                const Picture picture = reread(*codec, file);
                QVERIFY(picture.warnings.empty());
                const Page& page = picture.pages.front();
                if (!hasAlpha(type))
                    QVERIFY(page.raster.samePixels(source));
                else
                    QCOMPARE(page.raster.type(),
                             codec == &emfCodec() ? ImageType::Rgba32 : ImageType::Rgb24);
                QCOMPARE(page.metadata->xDpi, dpi > 0 ? dpi : 96);
                const PageFacts facts = codec->facts(file, {}).front();
                QCOMPARE(facts.width, 61);
                QCOMPARE(facts.type, page.raster.type());
            }
}

void MetafileWrittenTest::writersRefuse() {
    const auto refused = [](const Codec& codec, const Raster& raster) {
        try {
            written(codec, {{raster, nullptr, {}}});
        } catch (const RuntimeError& error) {
            return error.number() == errors::invalidCall;
        }
        return false;
    };
    QVERIFY(refused(wmfCodec(), Raster(ImageType::Bit1, 32768, 1)));
    QVERIFY(!refused(wmfCodec(), Raster(ImageType::Bit1, 1, 32767)));
    QVERIFY(!refused(emfCodec(), Raster(ImageType::Bit1, 40000, 1)));
}

QTEST_GUILESS_MAIN(MetafileWrittenTest)
#include "metafile_written.moc"
