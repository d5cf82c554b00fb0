// Pictures under a key: noise, of which every bit depends on every bit, and back exactly, through
// files too.
#include <QtTest>
#include <algorithm>
#include <bit>
#include <cmath>

#include "basic/error.h"
#include "imaging/codecs/codec.h"
#include "imaging/operation.h"
#include "imaging/operations/cipher/wide_block.h"
#include "reference/pictures.h"

using namespace kvn::imaging;
using namespace reference;

namespace {

Raster ciphered(const char* name, const Raster& source, const std::string& key) {
    Task task;
    return runOperation(*findOperation(name), source, {key}, task).front();
}
Raster encrypted(const Raster& source, const std::string& key = "key") {
    return ciphered("Geometry.Encrypt", source, key);
}
Raster decrypted(const Raster& source, const std::string& key = "key") {
    return ciphered("Geometry.Decrypt", source, key);
}

// The pixels alone, under keys that are made once: making them takes its time.
Raster block(const Raster& source, CipherDirection direction) {
    static const CipherKeys keys("key", 24, 64, 64);
    Raster result = source;
    Task task;
    cipherPixels(result.edit(), keys, direction, task);
    return result;
}

// The bits that differ, a share of all, in the part of the picture between two rows.
double changedShare(const Raster& a, const Raster& b, int y0, int y1) {
    const ConstView one = a.view(), other = b.view();
    int bits = 0;
    for (int y = y0; y < y1; ++y)
        for (std::size_t i = 0; i < a.rowBytes(); ++i)
            bits += std::popcount(static_cast<unsigned>(one.row(y)[i] ^ other.row(y)[i]));
    return bits / (double(a.width()) * bitsPerPixel(a.type()) * (y1 - y0));
}

bool sameColors(const Raster& a, const Raster& b) {
    for (int y = 0; y < a.height(); ++y)
        for (int x = 0; x < a.width(); ++x)
            if (a.pixel(x, y) != b.pixel(x, y)) return false;
    return a.size() == b.size();
}

} // namespace

class CipherTest : public QObject {
    Q_OBJECT

  private slots:
    void comesBackExactly();
    void everyBitDependsOnEveryBit();
    void otherKeysGiveNoise();
    void palettesStayValid();
    void filesKeepThePicture();
};

void CipherTest::comesBackExactly() {
    using enum CipherDirection;
    for (const ImageType type : everyType) {
        for (const Size size : {Size{1, 1}, Size{1, 9}, Size{9, 1}, Size{1, 700}, Size{600, 1},
                                Size{7, 5}, Size{257, 129}, Size{40, 9000}}) {
            const Raster source = noise(type, size);
            const Raster secret = block(source, Encipher), opened = block(source, Decipher);
            if (size.height > 9) QVERIFY(!sameColors(secret, source));
            QVERIFY2(block(secret, Decipher).samePixels(source), nameOf(type).c_str());
            QVERIFY2(block(opened, Encipher).samePixels(source), nameOf(type).c_str());
        }
        const Raster source = noise(type, {37, 21});
        const Raster secret = encrypted(source);
        QCOMPARE(secret.type(), type);
        QVERIFY(!sameColors(secret, source));
        QVERIFY(decrypted(secret).samePixels(source));
    }
    QVERIFY_EXCEPTION_THROWN(encrypted(noise(ImageType::Rgb24, {9, 9}), ""), kvn::RuntimeError);
}

// One pixel, first, last or in between, moves half of all bits, everywhere and in both directions.
void CipherTest::everyBitDependsOnEveryBit() {
    constexpr int height = 300;
    for (const ImageType type : {ImageType::Bit1, ImageType::Gray8, ImageType::Rgba32})
        for (const Point place : {Point{0, 0}, Point{31, height / 2}, Point{63, height - 1}}) {
            const Raster source = Raster::filled(type, 64, height, {255, 255, 255, 255});
            Raster other = source;
            const View view = other.edit();
            view.row(place.y)[static_cast<std::size_t>(place.x * bitsPerPixel(type) / 8)] ^= 1;
            for (const auto direction : {CipherDirection::Encipher, CipherDirection::Decipher}) {
                const Raster a = block(source, direction), b = block(other, direction);
                for (int y = 0; y < height; y += 50) {
                    const double bits = 64.0 * bitsPerPixel(type) * 50;
                    QCOMPARE_LE(std::abs(changedShare(a, b, y, y + 50) - 0.5),
                                2.5 / std::sqrt(bits));
                }
                // What two pictures have in common doesn't show.
                QVERIFY(std::abs(changedShare(a, source, 0, height) - 0.5) < 0.03);
            }
        }
}

void CipherTest::otherKeysGiveNoise() {
    const Raster source = waves({120, 90}, true);
    const Raster secret = encrypted(source, "the key");
    QVERIFY(secret.samePixels(encrypted(source, "the key")));
    for (const char* key : {"the kez", "the key ", "\xc3\xa9"}) {
        const Raster wrong = decrypted(secret, key);
        QVERIFY(std::abs(changedShare(wrong, source, 0, 90) - 0.5) < 0.02);
        QVERIFY(std::abs(changedShare(encrypted(source, key), secret, 0, 90) - 0.5) < 0.02);
    }
    // Each of the 256 values as often as the others.
    std::array<int, 256> counts{};
    for (int y = 0; y < 90; ++y)
        for (std::size_t i = 0; i < secret.rowBytes(); ++i)
            ++counts[secret.view().row(y)[i]];
    double chiSquare = 0;
    const double expected = 120 * 90 * 4 / 256.0;
    for (const int n : counts)
        chiSquare += (n - expected) * (n - expected) / expected;
    QVERIFY(chiSquare < 360); // 255 degrees of freedom: 1 in 20000
}

void CipherTest::palettesStayValid() {
    std::mt19937 random(3);
    for (const std::size_t count : {1, 40, 256})
        for (const std::size_t used :
             {count, (count + 1) / 2, std::min<std::size_t>(256, count + 9)}) {
            Raster source(ImageType::Indexed8Alpha, 70, 40);
            source.setPalette(randomPalette(random, count, true));
            const View view = source.edit();
            for (int y = 0; y < 40; ++y)
                for (int x = 0; x < 70; ++x)
                    view.row(y)[x] = static_cast<std::uint8_t>(random() % used);
            const Raster secret = encrypted(source);
            QCOMPARE(secret.palette().size(), 256u);
            if (used <= count)
                QVERIFY(decrypted(secret).samePixels(source));
            else // black that no palette had
                QVERIFY(sameColors(decrypted(secret), source));
        }
}

void CipherTest::filesKeepThePicture() {
    int files = 0;
    for (const ImageType type : everyType) {
        Raster source = noise(type, {75, 40});
        if (type == ImageType::Indexed8) {
            const auto& colors = source.palette().colors();
            source.setPalette(Palette({colors.begin(), colors.begin() + 256 - 31}));
        }
        const Raster secret = encrypted(source);
        for (const FileType format : {FileType::Bmp, FileType::Pcx, FileType::Png, FileType::Psd,
                                      FileType::Tga, FileType::Tiff}) {
            const auto throughFile = [format](const Raster& raster) {
                const Codec& codec = *codecForType(format);
                const Page page{raster, nullptr, {}};
                MemorySink sink;
                Task task;
                codec.write({&page, 1}, {}, sink, task);
                return codec.read(sink.bytes(), {}, task).pages.front().raster;
            };
            // Can the format hold the type?
            const Raster plain = throughFile(source);
            if (!sameColors(plain, source) || bitsPerPixel(plain.type()) != bitsPerPixel(type))
                continue;
            ++files;
            const std::string name = nameOf(type) + std::to_string(static_cast<int>(format));
            QVERIFY2(sameColors(decrypted(throughFile(secret)), source), name.c_str());
        }
    }
    QVERIFY(files >= 20);
}

QTEST_GUILESS_MAIN(CipherTest)
#include "ops_cipher.moc"
