#include "imaging/codecs/jpeg_segments.h"

#include <algorithm>

namespace kvn::imaging {

namespace {

constexpr int startOfScan = 0xda;
constexpr int endOfImage = 0xd9;

bool standsAlone(int marker) {
    return marker == 0x01 || (marker >= 0xd0 && marker <= 0xd8);
}

// Start of frame, without the three other uses of that range (tables and a reserved one).
bool isFrame(int marker) {
    return (marker & 0xf0) == 0xc0 && marker != 0xc4 && marker != 0xc8 && marker != 0xcc;
}

std::optional<JpegFrame> frameOf(const JpegSegment& segment) {
    const auto& d = segment.data;
    if (d.size() < 6) return {};
    return JpegFrame{segment.marker & 15, d[0], d[3] << 8 | d[4], d[1] << 8 | d[2], d[5]};
}

} // namespace

bool JpegSegment::startsWith(std::string_view name) const {
    return data.size() >= name.size() &&
           std::equal(name.begin(), name.end(), data.begin(),
                      [](char a, std::uint8_t b) { return static_cast<std::uint8_t>(a) == b; });
}

bool isJpeg(std::span<const std::uint8_t> file) {
    return file.size() >= 3 && file[0] == 0xff && file[1] == 0xd8 && file[2] == 0xff;
}

JpegOutline outlineJpeg(std::span<const std::uint8_t> file) {
    JpegOutline outline;
    std::size_t at = 2;
    while (at + 4 <= file.size()) {
        // Any bytes may stand between segments, and any number of 0xff before a marker.
        if (file[at] != 0xff || file[at + 1] == 0xff || file[at + 1] == 0) {
            ++at;
            continue;
        }
        const int marker = file[at + 1];
        if (marker == startOfScan || marker == endOfImage) break;
        if (standsAlone(marker)) {
            at += 2;
            continue;
        }
        const std::size_t length = static_cast<std::size_t>(file[at + 2] << 8 | file[at + 3]);
        const std::size_t end = at + 2 + length;
        if (length < 2 || end > file.size()) break;
        const JpegSegment segment{marker, at, end, file.subspan(at + 4, length - 2)};
        if (isFrame(marker) && !outline.frame) outline.frame = frameOf(segment);
        if (segment.isApplication() || marker == JpegSegment::comment)
            outline.segments.push_back(segment);
        at = end;
    }
    outline.scan = std::min(at, file.size());
    return outline;
}

} // namespace kvn::imaging
