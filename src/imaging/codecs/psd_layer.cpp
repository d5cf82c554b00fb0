#include "imaging/codecs/psd_layer.h"

#include <algorithm>
#include <iterator>
#include <string_view>

#include "imaging/codecs/fields.h"

namespace kvn::imaging {

namespace {

constexpr std::uint32_t block = 0x3842494d, normal = 0x6e6f726d; // "8BIM", "norm"
constexpr std::uint32_t alphaId = 0xffff;
constexpr std::size_t recordAt = 6; // behind the length and the number of layers

// Names, numbers and colours of labels: properties that do not change what is seen.
constexpr std::uint32_t harmless[] = {
    0x6c756e69, 0x6c796964, 0x6c6e7372, 0x6c636c72, // luni lyid lnsr lclr
    0x66787270, 0x6c737066, 0x73686d64,             // fxrp lspf shmd
};

// `extra` is the part of the record behind the blend mode: mask, blending ranges, name, blocks.
bool isPlain(std::span<const std::uint8_t> extra) {
    const BigFields fields(extra);
    if (fields.u32(0) != 0) return false; // a mask
    std::uint64_t at = 8 + std::uint64_t{fields.u32(4)};
    if (at >= extra.size()) return at == extra.size();
    at += (fields.byte(static_cast<std::size_t>(at)) + 4u) / 4 * 4;
    while (at + 12 <= extra.size()) {
        const auto here = static_cast<std::size_t>(at);
        const std::uint32_t key = fields.u32(here + 4), size = fields.u32(here + 8);
        const bool known = std::ranges::find(harmless, key) != std::end(harmless);
        if (fields.u32(here) != block || !known) return false;
        at += 12 + std::uint64_t{size} + size % 2;
    }
    return true;
}

} // namespace

PsdChannels coveringPsdLayer(std::span<const std::uint8_t> section, int width, int height,
                             int colors) {
    const BigFields fields(section);
    const std::uint32_t layers = fields.u16(4);
    const std::size_t count = fields.u16(recordAt + 16);
    const bool covers = fields.u32(recordAt) == 0 && fields.u32(recordAt + 4) == 0 &&
                        fields.u32(recordAt + 8) == static_cast<std::uint32_t>(height) &&
                        fields.u32(recordAt + 12) == static_cast<std::uint32_t>(width);
    if (layers != 0xffff || !covers || count != static_cast<std::size_t>(colors) + 1) return {};
    const std::size_t blend = recordAt + 18 + 6 * count;
    constexpr std::uint32_t opaqueAndUnclipped = 0xff00, hidden = 2;
    const bool shown = fields.u32(blend) == block && fields.u32(blend + 4) == normal &&
                       fields.u16(blend + 8) == opaqueAndUnclipped &&
                       !(fields.byte(blend + 10) & hidden);
    const std::uint32_t extraSize = fields.u32(blend + 12);
    if (!shown || !isPlain(partOf(section, blend + 16, extraSize))) return {};
    PsdChannels channels(count);
    std::uint64_t at = blend + 16 + std::uint64_t{extraSize};
    for (std::size_t i = 0; i < count; ++i) {
        const std::uint32_t id = fields.u16(recordAt + 18 + 6 * i);
        const std::uint32_t size = fields.u32(recordAt + 20 + 6 * i);
        const std::size_t place = id == alphaId ? count - 1 : id;
        const auto data = partOf(section, at, size);
        if (place >= count || (place == count - 1 && id != alphaId)) return {};
        if (data.size() < 2 || data.size() < size || BigFields(data).u16(0) > 1) return {};
        channels[place] = data;
        at += size;
    }
    const bool all = std::ranges::none_of(channels, [](auto data) { return data.empty(); });
    return all ? channels : PsdChannels{};
}

PsdLayerFrame psdLayerFrame(int width, int height, const std::vector<std::uint64_t>& dataBytes) {
    constexpr std::string_view name("\x05Layer\0\0", 8);
    Bytes record;
    putBig(record, 0xffff, 2); // one layer; negative: the merged picture has transparency
    putBig(record, 0, 8);
    putBig(record, static_cast<std::uint64_t>(height), 4);
    putBig(record, static_cast<std::uint64_t>(width), 4);
    putBig(record, dataBytes.size(), 2);
    std::uint64_t total = 0;
    for (std::size_t i = 0; i < dataBytes.size(); ++i) {
        putBig(record, i + 1 == dataBytes.size() ? alphaId : i, 2);
        putBig(record, dataBytes[i], 4);
        total += dataBytes[i];
    }
    putBig(record, block, 4);
    putBig(record, normal, 4);
    putBig(record, 0xff000000, 4); // opaque, unclipped, visible
    putBig(record, 8 + name.size(), 4);
    putBig(record, 0, 8); // neither mask nor blending ranges
    record.insert(record.end(), name.begin(), name.end());
    const std::uint64_t info = record.size() + total, padding = info % 2;
    PsdLayerFrame frame;
    putBig(frame.start, 4 + info + padding + 4, 4);
    putBig(frame.start, info + padding, 4);
    frame.start.insert(frame.start.end(), record.begin(), record.end());
    frame.end.resize(static_cast<std::size_t>(padding) + 4); // and no global mask
    return frame;
}

} // namespace kvn::imaging
