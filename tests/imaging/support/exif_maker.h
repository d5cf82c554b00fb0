// EXIF blocks and IPTC records made by hand, for tests.
#pragma once

#include <cstdint>
#include <initializer_list>
#include <string_view>
#include <vector>

#include "imaging/metadata.h"

namespace kvn::test {

using imaging::Bytes;

// One tag with a 16-bit or 32-bit number (type 3 or 4).
struct ExifTag {
    int tag = 0;
    int type = 3;
    std::uint32_t value = 0;
};

class ExifMaker {
  public:
    explicit ExifMaker(bool bigEndian) : big_(bigEndian) {}

    // A block with the main directory (a camera name added), the camera directory, and a
    // thumbnail directory if `thumbnail` is not empty.
    Bytes make(std::vector<ExifTag> main, std::vector<ExifTag> camera, const Bytes& thumbnail) {
        block_ = {big_ ? std::uint8_t{'M'} : std::uint8_t{'I'},
                  big_ ? std::uint8_t{'M'} : std::uint8_t{'I'}};
        put(42, 2);
        put(8, 4);
        const std::size_t cameraAt = 8 + size(main.size() + 2);
        const std::size_t thumbnailAt = cameraAt + size(camera.size());
        const std::size_t nameAt = thumbnailAt + (thumbnail.empty() ? 0 : size(2));
        constexpr std::string_view name("Makers & Sons\0", 14);
        main.insert(main.begin(), {0x010f, 2, static_cast<std::uint32_t>(nameAt)});
        main.push_back({0x8769, 4, static_cast<std::uint32_t>(cameraAt)});
        putDirectory(main, thumbnail.empty() ? 0 : thumbnailAt, name.size());
        putDirectory(camera, 0, 1);
        if (!thumbnail.empty())
            putDirectory({{0x0201, 4, static_cast<std::uint32_t>(nameAt + name.size())},
                          {0x0202, 4, static_cast<std::uint32_t>(thumbnail.size())}},
                         0, 1);
        block_.insert(block_.end(), name.begin(), name.end());
        block_.insert(block_.end(), thumbnail.begin(), thumbnail.end());
        return block_;
    }

  private:
    static std::size_t size(std::size_t tags) { return 2 + 12 * tags + 4; }
    void put(std::uint32_t value, int bytes) {
        for (int i = 0; i < bytes; ++i)
            block_.push_back(static_cast<std::uint8_t>(value >> 8 * (big_ ? bytes - 1 - i : i)));
    }
    void putDirectory(const std::vector<ExifTag>& tags, std::size_t next, std::size_t textLength) {
        put(static_cast<std::uint32_t>(tags.size()), 2);
        for (const ExifTag& tag : tags) {
            put(static_cast<std::uint32_t>(tag.tag), 2);
            put(static_cast<std::uint32_t>(tag.type), 2);
            put(tag.type == 2 ? static_cast<std::uint32_t>(textLength) : 1, 4);
            put(tag.value, tag.type == 3 ? 2 : 4);
            if (tag.type == 3) put(0, 2);
        }
        put(static_cast<std::uint32_t>(next), 4);
    }

    bool big_;
    Bytes block_;
};

inline Bytes iptcRecord(int number, std::string_view text) {
    Bytes record{0x1c, 2, static_cast<std::uint8_t>(number), 0,
                 static_cast<std::uint8_t>(text.size())};
    record.insert(record.end(), text.begin(), text.end());
    return record;
}

inline Bytes bytesOf(std::string_view text) {
    return {text.begin(), text.end()};
}

} // namespace kvn::test
