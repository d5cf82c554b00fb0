// EMF records with text.
#include <algorithm>

#include "imaging/codecs/metafile/emf_record.h"
#include "imaging/codecs/metafile/text.h"

namespace kvn::imaging::metafile {

namespace {

constexpr std::size_t mostCharacters = 65536;

std::vector<Character> textAt(const Drawing& d, const EmfRecord& r, std::uint64_t at,
                              std::uint64_t count, bool wide) {
    const auto bytes =
        partOf(r.bytes, at, std::min<std::uint64_t>(count, mostCharacters) * (wide ? 2 : 1));
    return wide ? decodeUtf16(bytes) : decodeBytes(bytes, d.state().font.charset);
}

draw::Box boxAt(const EmfRecord& r, std::size_t at) {
    draw::Box box;
    box.add(r.point(at));
    box.add(r.point(at + 8));
    return box;
}

// The block that starts at `at`: place, text, options, rectangle, advances.
void drawBlock(Drawing& d, const EmfRecord& r, std::size_t at, bool wide) {
    TextLine line;
    line.at = r.point(at);
    line.options = r.i32(at + 16);
    line.rect = boxAt(r, at + 20);
    const std::uint32_t count = r.u32(at + 8);
    line.text = textAt(d, r, r.u32(at + 12), count, wide);
    const std::uint32_t advances = r.u32(at + 36);
    if (advances != 0) {
        const std::size_t step = line.options & textPairs ? 8 : 4;
        const std::size_t there =
            r.countAt(advances, std::min<std::uint64_t>(count, mostCharacters), step);
        for (std::size_t i = 0; i < there; ++i)
            line.advances.push_back(r.i32(advances + i * step));
    }
    drawText(d, line);
}

template <bool Wide>
void textOut(Drawing& d, const EmfRecord& r) {
    drawBlock(d, r, 36, Wide);
}

template <bool Wide>
void polyTextOut(Drawing& d, const EmfRecord& r) {
    constexpr std::size_t blockSize = 40;
    for (std::size_t i = 0; i < r.countAt(40, r.u32(36), blockSize); ++i)
        drawBlock(d, r, 40 + i * blockSize, Wide);
}

void smallTextOut(Drawing& d, const EmfRecord& r) {
    constexpr std::uint32_t noRect = 0x100, narrow = 0x200;
    const std::uint32_t options = r.u32(20);
    TextLine line;
    line.at = r.point(8);
    line.options = static_cast<int>(options);
    std::size_t at = 36;
    if (!(options & noRect)) {
        line.rect = boxAt(r, at);
        at += 16;
    }
    line.text = textAt(d, r, at, r.u32(16), !(options & narrow));
    drawText(d, line);
}

constexpr EmfEntry entries[] = {
    {83, textOut<false>},    {84, textOut<true>}, {96, polyTextOut<false>},
    {97, polyTextOut<true>}, {108, smallTextOut},
};

} // namespace

std::span<const EmfEntry> emfTextRecords() {
    return entries;
}

} // namespace kvn::imaging::metafile
