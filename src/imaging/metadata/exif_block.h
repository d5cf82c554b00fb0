// An EXIF block (a small TIFF structure) edited in place: a tag's number is overwritten where it
// stands, so that everything else, maker notes and their offsets included, stays byte for byte.
//
// It is no tag listing (see imaging/exif.h) and trusts nothing: a directory, count or offset that
// leads out of the block counts as absent.
#pragma once

#include <cstdint>
#include <optional>
#include <span>

#include "imaging/metadata.h"

namespace kvn::imaging {

class ExifBlock {
  public:
    enum class Directory { Main, Camera, Thumbnail };

    static constexpr std::uint16_t imageWidth = 0x0100;
    static constexpr std::uint16_t imageLength = 0x0101;
    static constexpr std::uint16_t orientation = 0x0112;
    static constexpr std::uint16_t xResolution = 0x011a;
    static constexpr std::uint16_t yResolution = 0x011b;
    static constexpr std::uint16_t resolutionUnit = 0x0128;
    static constexpr std::uint16_t pixelXDimension = 0xa002;
    static constexpr std::uint16_t pixelYDimension = 0xa003;

    explicit ExifBlock(Bytes bytes);

    const Bytes& bytes() const { return bytes_; }

    // The first value of a byte, 16-bit or 32-bit unsigned tag.
    std::optional<std::uint32_t> number(Directory directory, std::uint16_t tag) const;
    // The first value of an unsigned fraction; nothing for a denominator of 0.
    std::optional<double> fraction(Directory directory, std::uint16_t tag) const;

    // Overwrites the first value of such a tag; one that is too large for a single value turns it
    // into a 32-bit one. False if there is no such tag, or no room in its values.
    bool setNumber(Directory directory, std::uint16_t tag, std::uint32_t value);
    // The same, but adds the tag to the main directory (which moves to the end of the block, its
    // entries unchanged) if it is not there. False if the block has no readable main directory.
    bool putMainNumber(std::uint16_t tag, std::uint16_t value);

    // The JPEG picture of the thumbnail directory; empty if there is none.
    std::span<const std::uint8_t> thumbnail() const;
    // Puts another one in its place; false if it is longer than the old one or there was none.
    bool setThumbnail(std::span<const std::uint8_t> jpeg);
    // Unhooks the thumbnail directory and blanks its picture.
    void removeThumbnail();

  private:
    struct Entry {
        std::uint16_t type = 0;
        std::uint32_t count = 0;
        std::size_t value = 0; // where the value, or its offset, stands
    };

    bool has(std::size_t at, std::size_t size) const;
    std::uint32_t read(std::size_t at, int size) const;
    void write(std::size_t at, std::uint32_t value, int size);
    // Where the directory's entry count stands, 0 if there is none.
    std::size_t start(Directory directory) const;
    std::size_t thumbnailLink() const;
    std::optional<Entry> find(Directory directory, std::uint16_t tag) const;
    // Where the first value stands; 0 if it is no whole number or lies outside the block.
    std::size_t firstValue(const Entry& entry) const;

    Bytes bytes_;
    bool bigEndian_ = false;
    std::size_t main_ = 0;
};

// The orientation that an EXIF block states, 1 where it states none.
int exifOrientation(Bytes exif);

} // namespace kvn::imaging
