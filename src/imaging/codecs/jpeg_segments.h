// The marker segments in front of a JPEG's coded data: which there are, where they stand, what
// the frame header says. Looks only; nothing is decoded or allocated by what the file claims.
#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <string_view>
#include <vector>

namespace kvn::imaging {

struct JpegSegment {
    int marker = 0;                     // the byte behind the 0xff
    std::size_t begin = 0;              // offset of the 0xff in the file
    std::size_t end = 0;                // one past the last byte
    std::span<const std::uint8_t> data; // without marker and length

    static constexpr int comment = 0xfe;
    bool isApplication() const { return marker >= 0xe0 && marker <= 0xef; }
    int application() const { return marker - 0xe0; }
    bool startsWith(std::string_view name) const;
};

struct JpegFrame {
    int process = 0; // 0 baseline, 1 extended, 2 progressive, ... the low nibble of the marker
    int precision = 8;
    int width = 0;
    int height = 0;
    int components = 0;
    bool isLossless() const { return (process & 3) == 3; }
};

struct JpegOutline {
    std::vector<JpegSegment> segments; // applications and comments, in order
    std::optional<JpegFrame> frame;
    std::size_t scan = 0; // where the first coded scan begins, or the file ends
};

bool isJpeg(std::span<const std::uint8_t> file);
JpegOutline outlineJpeg(std::span<const std::uint8_t> file);

} // namespace kvn::imaging
