// Every codec over files that are damaged at random: it gives a picture within the limits or says
// what is wrong. Crashes, hangs and wild reads show here, best in a sanitizer build.
#include <QtTest>
#include <random>

#include "basic/error.h"
#include "imaging/codecs/codec.h"
#include "imaging/support/sample_files.h"

using namespace kvn;
using namespace kvn::imaging;
using test::sampleFiles;

namespace {

using File = std::vector<std::uint8_t>;

// One kind of harm each time: bytes turned over, a field at its extreme, an end cut off, a part
// doubled or taken out. The first bytes stay more often than not, or nothing would be tried.
File damaged(File file, std::mt19937& random) {
    const auto at = [&](std::size_t from) {
        return from + random() % std::max<std::size_t>(1, file.size() - from);
    };
    const std::size_t from = random() % 4 ? std::min<std::size_t>(4, file.size()) : 0;
    switch (random() % 5) {
    case 0:
        for (unsigned n = random() % 8 + 1; n > 0; --n)
            file[std::min(at(from), file.size() - 1)] ^=
                static_cast<std::uint8_t>(1u << random() % 8);
        break;
    case 1: {
        const std::size_t place = at(from);
        const std::uint8_t value = random() % 2 ? 0xFF : 0x7F;
        for (std::size_t i = place; i < std::min(file.size(), place + 4); ++i)
            file[i] = value;
        break;
    }
    case 2:
        file.resize(at(0));
        break;
    case 3: {
        const std::size_t place = at(from);
        const std::size_t count = std::min<std::size_t>(random() % 16, file.size() - place);
        const File part(file.begin() + static_cast<long>(place),
                        file.begin() + static_cast<long>(place + count));
        file.insert(file.begin() + static_cast<long>(place), part.begin(), part.end());
        break;
    }
    default: {
        const std::size_t place = at(from);
        const std::size_t count = std::min<std::size_t>(random() % 16, file.size() - place);
        file.erase(file.begin() + static_cast<long>(place),
                   file.begin() + static_cast<long>(place + count));
    }
    }
    return file;
}

} // namespace

class Damaged : public QObject {
    Q_OBJECT

  private slots:
    void everyCodecStandsIt_data();
    void everyCodecStandsIt();
};

void Damaged::everyCodecStandsIt_data() {
    QTest::addColumn<int>("type");
    for (const Codec* codec : codecs())
        if (!sampleFiles(*codec, 1, 1).empty())
            QTest::addRow("%s", std::string(codec->name()).c_str())
                << static_cast<int>(codec->type());
}

void Damaged::everyCodecStandsIt() {
    QFETCH(int, type);
    const Codec& codec = *codecForType(static_cast<FileType>(type));
    ReadLimits limits;
    limits.pixelBytes = 8 << 20;
    int read = 0, refused = 0;
    std::mt19937 random(20u);
    for (const File& whole : sampleFiles(codec, 37, 23)) {
        QCOMPARE(codecForContent(whole, std::string(codec.extensions().front())), &codec);
        for (int i = 0; i < 1500; ++i) {
            const File file = damaged(whole, random);
            if (file.empty()) continue;
            try {
                codec.facts(file, limits);
            } catch (const RuntimeError&) {
                // Only that it ends in nothing else counts.
            }
            try {
                Task task;
                const Picture picture = codec.read(file, limits, task);
                std::uint64_t bytes = 0;
                for (const Page& page : picture.pages) {
                    QVERIFY(page.raster.width() > 0 && page.raster.height() > 0);
                    bytes += page.raster.byteSize();
                    const Rgba last =
                        page.raster.pixel(page.raster.width() - 1, page.raster.height() - 1);
                    Q_UNUSED(last);
                }
                QVERIFY(bytes <= limits.pixelBytes);
                ++read;
            } catch (const RuntimeError& error) {
                QVERIFY(!error.description().empty());
                ++refused;
            }
        }
    }
    // A test that never came to a picture, or was never refused one, tried nothing.
    QVERIFY2(read > 20 && refused > 5, qPrintable(QString("%1 %2").arg(read).arg(refused)));
}

QTEST_GUILESS_MAIN(Damaged)
#include "damaged.moc"
