// Deflate streams made in pieces, read back by zlib.
#include <QtTest>

#include <random>

#include <zlib.h>

#include "imaging/codecs/deflate.h"
#include "imaging/codecs/huffman_deflate.h"

using namespace kvn::imaging;

namespace {

// Empty if the stream is not a valid one that ends where it should.
Bytes inflated(const Bytes& stream, std::size_t size) {
    Bytes data(size + 1);
    uLongf got = data.size();
    if (uncompress(data.data(), &got, stream.data(), stream.size()) != Z_OK) return {};
    data.resize(got);
    return data;
}

Bytes noise(std::size_t size, unsigned seed, unsigned range) {
    std::mt19937 random(seed);
    Bytes data(size);
    for (auto& byte : data)
        byte = static_cast<std::uint8_t>(random() % range);
    return data;
}

// Few common bytes and very many rare ones: the code would be longer than the format allows.
Bytes steep(std::size_t size) {
    std::mt19937 random(5);
    Bytes data(size);
    for (auto& byte : data) {
        int value = 0;
        while (value < 60 && random() % 2 == 0)
            ++value;
        byte = static_cast<std::uint8_t>(value);
    }
    for (std::size_t i = 0; i < 200; ++i)
        data[i * 7] = static_cast<std::uint8_t>(56 + i);
    return data;
}

Bytes runs(std::size_t size) {
    std::mt19937 random(9);
    Bytes data;
    while (data.size() < size)
        data.insert(data.end(), random() % 700, static_cast<std::uint8_t>(random() % 3));
    data.resize(size);
    return data;
}

Bytes words(std::size_t size) {
    std::mt19937 random(2);
    const std::vector<std::string> list{"picture ", "pixel ", "palette\n", "a ", "of the ", "row "};
    std::string text;
    while (text.size() < size)
        text += list[random() % list.size()];
    return {text.begin(), text.begin() + static_cast<std::ptrdiff_t>(size)};
}

} // namespace

class DeflateTest : public QObject {
    Q_OBJECT

  private slots:
    void everyKindOfDataComesBack_data() {
        QTest::addColumn<QByteArray>("content");
        const auto row = [](const char* name, const Bytes& data) {
            QTest::addRow("%s", name) << QByteArray(reinterpret_cast<const char*>(data.data()),
                                                    static_cast<qsizetype>(data.size()));
        };
        row("nothing", {});
        row("one byte", {77});
        row("two equal bytes", {77, 77});
        row("one value", Bytes(300'000, 200));
        row("all values", noise(200'001, 1, 256));
        row("few values", noise(65'536, 2, 3));
        row("block and a byte", noise(65'537, 3, 40));
        row("steep", steep(150'000));
        row("runs", runs(200'000));
        row("words", words(100'000));
    }
    void everyKindOfDataComesBack() {
        QFETCH(QByteArray, content);
        const Bytes data(content.begin(), content.end());
        QCOMPARE(inflated(zlibStream(data), data.size()), data);

        // The coder without strings, whatever the choice above was.
        Bytes stream = zlibHead();
        appendHuffmanBlocks(data, stream);
        const Bytes tail = zlibTail(adler32Of(data));
        stream.insert(stream.end(), tail.begin(), tail.end());
        QCOMPARE(inflated(stream, data.size()), data);
    }

    // Pieces of both coders and of every block kind, joined in any order.
    void piecesJoin() {
        Bytes whole, stream = zlibHead();
        std::uint32_t adler = adler32Of({});
        for (const Bytes& part : {words(90'000), noise(70'001, 4, 256), Bytes(3, 1), steep(70'000),
                                  Bytes{}, runs(40'000), words(12), noise(10, 1, 256)}) {
            appendDeflatePiece(part, stream);
            adler = adler32Joined(adler, adler32Of(part), part.size());
            whole.insert(whole.end(), part.begin(), part.end());
        }
        QCOMPARE(adler, adler32Of(whole));
        const Bytes tail = zlibTail(adler);
        stream.insert(stream.end(), tail.begin(), tail.end());
        QCOMPARE(inflated(stream, whole.size()), whole);
    }

    // What zlib ends as it likes, at any level, can be opened for more behind it.
    void finishedStreamsAreOpened() {
        for (const int level : {0, 1, 6, 9})
            for (const int strategy : {Z_DEFAULT_STRATEGY, Z_FIXED, Z_HUFFMAN_ONLY, Z_RLE})
                for (const std::size_t size :
                     {std::size_t{0}, std::size_t{5}, std::size_t{99'999}}) {
                    const Bytes data = words(size);
                    Bytes packed(size + 1000);
                    z_stream z{};
                    QCOMPARE(deflateInit2(&z, level, Z_DEFLATED, -15, 9, strategy), Z_OK);
                    z.next_in = const_cast<Bytef*>(data.data());
                    z.avail_in = static_cast<uInt>(size);
                    z.next_out = packed.data();
                    z.avail_out = static_cast<uInt>(packed.size());
                    QCOMPARE(::deflate(&z, Z_FINISH), Z_STREAM_END);
                    packed.resize(z.total_out);
                    deflateEnd(&z);

                    Bytes stream = zlibHead();
                    const std::size_t begin = stream.size();
                    stream.insert(stream.end(), packed.begin(), packed.end());
                    openDeflateStream(stream, begin);
                    Bytes both = data;
                    both.push_back('!');
                    appendHuffmanBlocks(Bytes{'!'}, stream);
                    const Bytes tail = zlibTail(adler32Of(both));
                    stream.insert(stream.end(), tail.begin(), tail.end());
                    QCOMPARE(inflated(stream, both.size()), both);
                }
    }

    // The choice is worth its while: text by strings, noise of a photograph without.
    void packsTightly() {
        QVERIFY(zlibStream(words(100'000)).size() < 25'000);
        const Bytes residues = noise(300'000, 8, 16); // four bits of information each
        QVERIFY(zlibStream(residues).size() < 154'000);
    }
};

QTEST_GUILESS_MAIN(DeflateTest)
#include "deflate.moc"
