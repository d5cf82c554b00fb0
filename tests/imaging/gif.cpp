// GIF files made by another encoder or byte by byte, held against a plain composition.
#include <QtTest>
#include <gif_lib.h>

#include "imaging/codec_pages.h"
#include "imaging/codecs/all.h"
#include "imaging/codecs/gif_lzw.h"

using namespace kvn;
using namespace kvn::test;

namespace {

using File = std::vector<std::uint8_t>;

struct Frame {
    int x = 0, y = 0, width = 1, height = 1;
    int disposal = 0;
    int transparent = -1;
    std::vector<Rgba> palette{}; // empty: the global one
    File pixels{};
    bool interlaced = false;
};

ColorMapObject* mapOf(const std::vector<Rgba>& colors) {
    int count = 2;
    while (count < static_cast<int>(colors.size()))
        count *= 2;
    ColorMapObject* map = GifMakeMapObject(count, nullptr);
    for (std::size_t i = 0; i < colors.size(); ++i)
        map->Colors[i] = {colors[i].r, colors[i].g, colors[i].b};
    return map;
}

int append(GifFileType* gif, const GifByteType* data, int size) {
    File& file = *static_cast<File*>(gif->UserData);
    file.insert(file.end(), data, data + size);
    return size;
}

void putFrame(GifFileType* gif, const Frame& frame) {
    GraphicsControlBlock control{frame.disposal, false, 1, frame.transparent};
    GifByteType block[4];
    const auto size = EGifGCBToExtension(&control, block);
    EGifPutExtension(gif, GRAPHICS_EXT_FUNC_CODE, static_cast<int>(size), block);
    ColorMapObject* map = frame.palette.empty() ? nullptr : mapOf(frame.palette);
    // The encoder forgets the last frame's table.
    GifFreeMapObject(gif->Image.ColorMap);
    gif->Image.ColorMap = nullptr;
    EGifPutImageDesc(gif, frame.x, frame.y, frame.width, frame.height, frame.interlaced, map);
    if (map) GifFreeMapObject(map);
    std::vector<int> rows;
    if (frame.interlaced)
        for (const auto& [first, step] : {std::pair{0, 8}, {4, 8}, {2, 4}, {1, 2}})
            for (int y = first; y < frame.height; y += step)
                rows.push_back(y);
    else
        for (int y = 0; y < frame.height; ++y)
            rows.push_back(y);
    for (const int y : rows)
        EGifPutLine(gif, const_cast<GifByteType*>(&frame.pixels[std::size_t(y * frame.width)]),
                    frame.width);
}

File gifOf(Size screen, const std::vector<Rgba>& global, const std::vector<Frame>& frames,
           const char* lastComment = nullptr) {
    File file;
    int error = 0;
    GifFileType* gif = EGifOpen(&file, append, &error);
    EGifSetGifVersion(gif, true);
    ColorMapObject* map = mapOf(global);
    EGifPutScreenDesc(gif, screen.width, screen.height, 8, 0, map);
    GifFreeMapObject(map);
    for (const Frame& frame : frames)
        putFrame(gif, frame);
    if (lastComment) EGifPutComment(gif, lastComment);
    EGifCloseFile(gif, &error);
    return file;
}

std::vector<Rgba> colors(int count, unsigned seed) {
    std::mt19937 random(seed);
    std::vector<Rgba> list(static_cast<std::size_t>(count));
    for (Rgba& color : list)
        color = {static_cast<std::uint8_t>(random()), static_cast<std::uint8_t>(random()),
                 static_cast<std::uint8_t>(random()), 255};
    return list;
}

File noise(int count, int values, unsigned seed) {
    std::mt19937 random(seed);
    File pixels(static_cast<std::size_t>(count));
    for (std::uint8_t& pixel : pixels)
        pixel = static_cast<std::uint8_t>(random() % static_cast<unsigned>(values));
    return pixels;
}

// The rules of disposal, pixel by pixel.
class PlainScreen {
  public:
    PlainScreen(Size size, std::vector<Rgba> global)
        : size_(size), global_(std::move(global)), now_(area(), Rgba{0, 0, 0, 0}) {}

    std::vector<Rgba> show(const Frame& frame) {
        const std::vector<Rgba> before = now_;
        const std::vector<Rgba>& palette = frame.palette.empty() ? global_ : frame.palette;
        each(frame, [&](Rgba& pixel, int index) {
            if (index != frame.transparent) pixel = palette[static_cast<std::size_t>(index)];
        });
        std::vector<Rgba> shown = now_;
        if (frame.disposal == 2) each(frame, [](Rgba& pixel, int) { pixel = {0, 0, 0, 0}; });
        if (frame.disposal == 3) now_ = before;
        return shown;
    }

  private:
    std::size_t area() const { return static_cast<std::size_t>(size_.width * size_.height); }
    template <typename Work>
    void each(const Frame& frame, const Work& work) {
        for (int y = 0; y < frame.height; ++y)
            for (int x = 0; x < frame.width; ++x) {
                const int sx = frame.x + x, sy = frame.y + y;
                if (sx >= size_.width || sy >= size_.height) continue;
                work(now_[std::size_t(sy * size_.width + sx)],
                     frame.pixels[std::size_t(y * frame.width + x)]);
            }
    }
    Size size_;
    std::vector<Rgba> global_;
    std::vector<Rgba> now_;
};

// Clear pixels are alike, whatever colour stands behind them.
bool shows(const Raster& raster, const std::vector<Rgba>& expected) {
    for (int y = 0; y < raster.height(); ++y)
        for (int x = 0; x < raster.width(); ++x) {
            const Rgba is = raster.pixel(x, y);
            const Rgba want = expected[static_cast<std::size_t>(y * raster.width() + x)];
            if (is.a != want.a || (want.a != 0 && !(is == want))) return false;
        }
    return true;
}

} // namespace

class GifTest : public QObject {
    Q_OBJECT
  private slots:
    void paletteOrder();
    void lzwAgainstEncoder_data();
    void lzwAgainstEncoder();
    void interlaced();
    void composition_data();
    void composition();
    void pagesKeepTheirTable();
    void screenAndFrameDisagree();
    void comment();
    void cutOff();
    void hostile();
};

void GifTest::paletteOrder() {
    // Doubles, unused entries and the place of the transparent one stay.
    std::vector<Rgba> palette = colors(16, 1);
    palette[9] = palette[2];
    Frame frame{.width = 5, .height = 3, .pixels = noise(15, 11, 2)};
    Raster raster = reread(gifCodec(), gifOf({5, 3}, palette, {frame})).pages.front().raster;
    QCOMPARE(raster.type(), ImageType::Indexed8);
    QVERIFY(raster.palette() == Palette(palette));
    QCOMPARE(allIndices(raster), frame.pixels);
    frame.transparent = 4;
    const File file = gifOf({5, 3}, palette, {frame});
    raster = reread(gifCodec(), file).pages.front().raster;
    palette[4].a = 0;
    QCOMPARE(raster.type(), ImageType::Indexed8Alpha);
    QVERIFY(raster.palette() == Palette(palette));
    QCOMPARE(allIndices(raster), frame.pixels);
    QCOMPARE(gifCodec().facts(file, {}).front().type, ImageType::Indexed8Alpha);
}

void GifTest::lzwAgainstEncoder_data() {
    QTest::addColumn<int>("values");
    for (const int values : {1, 2, 3, 16, 200, 256})
        QTest::addRow("%d", values) << values;
}

// Noise fills the table several times over, flat parts make the longest strings.
void GifTest::lzwAgainstEncoder() {
    QFETCH(const int, values);
    Frame frame{.width = 301, .height = 200, .pixels = noise(301 * 200, values, 3)};
    std::fill_n(frame.pixels.begin() + 20000, 15000, std::uint8_t(values - 1));
    const File file = gifOf({301, 200}, colors(std::max(2, values), 4), {frame});
    QCOMPARE(allIndices(reread(gifCodec(), file).pages.front().raster), frame.pixels);
}

void GifTest::interlaced() {
    for (int height = 1; height < 20; ++height) {
        Frame frame{.width = 3, .height = height, .pixels = noise(3 * height, 8, 5)};
        frame.interlaced = true;
        const File file = gifOf({3, height}, colors(8, 6), {frame});
        QCOMPARE(allIndices(reread(gifCodec(), file).pages.front().raster), frame.pixels);
    }
}

void GifTest::composition_data() {
    QTest::addColumn<int>("localEvery"); // 0: all frames share the global table
    QTest::addColumn<int>("paletteSize");
    QTest::newRow("one table") << 0 << 32;
    QTest::newRow("own tables") << 1 << 32;
    QTest::newRow("mixed") << 3 << 32;
    QTest::newRow("full tables") << 3 << 256;
}

void GifTest::composition() {
    QFETCH(const int, localEvery);
    QFETCH(const int, paletteSize);
    const Size size{23, 17};
    const std::vector<Rgba> global = colors(paletteSize, 7);
    std::mt19937 random(8);
    const auto upTo = [&](int n) { return static_cast<int>(random() % unsigned(n)); };
    for (int run = 0; run < 30; ++run) {
        std::vector<Frame> frames;
        for (int i = 0; i < 12; ++i) {
            Frame frame;
            const bool whole = upTo(4) == 0;
            frame.x = whole ? 0 : upTo(size.width);
            frame.y = whole ? 0 : upTo(size.height);
            frame.width = whole ? size.width : 1 + upTo(size.width);
            frame.height = whole ? size.height : 1 + upTo(size.height);
            frame.disposal = upTo(4);
            frame.transparent = upTo(3) == 0 ? -1 : upTo(3) == 0 ? upTo(paletteSize) : 5;
            if (localEvery && i % localEvery == 0) frame.palette = colors(paletteSize, random());
            frame.pixels = noise(frame.width * frame.height, upTo(2) ? 6 : paletteSize, random());
            frames.push_back(frame);
        }
        const Picture picture = reread(gifCodec(), gifOf(size, global, frames));
        QCOMPARE(picture.pages.size(), frames.size());
        PlainScreen screen(size, global);
        for (std::size_t i = 0; i < frames.size(); ++i)
            QVERIFY(shows(picture.pages[i].raster, screen.show(frames[i])));
    }
}

void GifTest::pagesKeepTheirTable() {
    const std::vector<Rgba> global = colors(8, 9);
    const auto frame = [](int x, int transparent, std::vector<Rgba> palette = {}) {
        return Frame{.x = x,
                     .width = x ? 2 : 4,
                     .height = 2,
                     .transparent = transparent,
                     .palette = std::move(palette),
                     .pixels = noise(x ? 4 : 8, 4, 10)};
    };
    const Picture picture = reread(
        gifCodec(), gifOf({4, 2}, global,
                          {frame(0, -1), frame(2, 7), frame(1, -1, colors(8, 11)), frame(0, -1)}));
    const auto type = [&](std::size_t i) { return picture.pages[i].raster.type(); };
    QCOMPARE(type(0), ImageType::Indexed8);
    // Patches in the same table keep it; a foreign table makes true colour; a frame that replaces
    // everything brings its own table again.
    QCOMPARE(type(1), ImageType::Indexed8);
    QVERIFY(picture.pages[1].raster.palette() == Palette(global));
    QCOMPARE(type(2), ImageType::Rgb24);
    QCOMPARE(type(3), ImageType::Indexed8);
}

void GifTest::screenAndFrameDisagree() {
    const std::vector<Rgba> global = colors(4, 12);
    // A screen without size is that of its first frame.
    Frame frame{.x = 1, .width = 2, .height = 2, .pixels = {0, 1, 2, 3}};
    File file = gifOf({9, 9}, global, {frame});
    file[6] = file[7] = file[8] = file[9] = 0;
    Raster raster = reread(gifCodec(), file).pages.front().raster;
    QCOMPARE(raster.size(), (Size{3, 2}));
    QCOMPARE(raster.pixel(0, 0).a, std::uint8_t{0});
    QCOMPARE(raster.pixel(2, 1), global[3]);
    // A frame wholly outside changes nothing.
    Frame outside = frame;
    outside.x = 60000;
    const Picture picture = reread(gifCodec(), gifOf({3, 2}, global, {frame, outside}));
    QVERIFY(picture.pages[0].raster.samePixels(picture.pages[1].raster));
}

void GifTest::comment() {
    const Frame frame{.pixels = {1}};
    const Picture picture =
        reread(gifCodec(), gifOf({1, 1}, colors(2, 13), {frame, frame}, "behind the last"));
    QCOMPARE(picture.pages[0].metadata->comment, std::string("behind the last"));
    QCOMPARE(picture.pages[1].metadata, picture.pages[0].metadata);
}

void GifTest::cutOff() {
    const std::vector<Rgba> global = colors(64, 14);
    std::vector<Frame> frames;
    for (unsigned i = 0; i < 3; ++i)
        frames.push_back(
            {.width = 20, .height = 20, .transparent = 3, .pixels = noise(400, 64, 15 + i)});
    const File file = gifOf({20, 20}, global, frames);
    const Picture whole = reread(gifCodec(), file);
    std::size_t most = 0;
    for (std::size_t size = 0; size < file.size(); ++size) {
        const File part(file.begin(), file.begin() + static_cast<std::ptrdiff_t>(size));
        if (errorOf(gifCodec(), part) != 0) {
            QCOMPARE(most, std::size_t{0}); // once there is a frame, there is a picture
            continue;
        }
        const Picture picture = reread(gifCodec(), part);
        QVERIFY(picture.pages.size() >= most);
        most = picture.pages.size();
        // Frames before the last one are whole.
        for (std::size_t i = 0; i + 1 < most; ++i)
            QVERIFY(picture.pages[i].raster.samePixels(whole.pages[i].raster));
        if (size + 1 < file.size()) QVERIFY(!picture.warnings.empty());
    }
    QCOMPARE(most, std::size_t{3});
    readDamaged(gifCodec(), file, 3);
}

void GifTest::hostile() {
    File file = gifOf({1, 1}, colors(2, 16), {{.pixels = {0}}});
    for (int i = 6; i < 10; ++i)
        file[std::size_t(i)] = 0xff; // a screen of 65535 x 65535
    QCOMPARE(errorOf(gifCodec(), file), errors::outOfMemory);
    file[7] = file[9] = 0x40; // 16639 x 16639: within the limit, but from a few bytes
    QCOMPARE(errorOf(gifCodec(), file), errors::invalidPicture);
    // Every code is checked against the table that there is.
    std::mt19937 random(17);
    for (int run = 0; run < 3000; ++run) {
        File codes(random() % 40);
        for (std::uint8_t& byte : codes)
            byte = static_cast<std::uint8_t>(random());
        File out(500 + gifLzwSlack);
        const std::size_t count =
            unpackGifLzw(codes, 1 + static_cast<int>(random() % 9), out.data(), 500);
        QVERIFY(count <= 500);
    }
}

QTEST_GUILESS_MAIN(GifTest)
#include "gif.moc"
