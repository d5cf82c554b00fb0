// The directories of a TIFF structure, classic or big, as they stand in the file: tags with the
// bytes of their values. Used for what the TIFF library does not give unchanged, and to look at a
// file before the library does. EXIF blocks are such structures too.
#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <vector>

namespace kvn::imaging {

struct TiffEntry {
    std::uint16_t tag = 0;
    std::uint16_t type = 0;
    std::uint64_t count = 0;
    std::span<const std::uint8_t> value; // in the file's byte order; empty if outside the file
};

struct TiffDirectory {
    std::vector<TiffEntry> entries;
    std::uint64_t next = 0; // where the following directory stands, 0 for none
    const TiffEntry* find(std::uint16_t tag) const;
};

class TiffStructure {
  public:
    // No copy is made.
    explicit TiffStructure(std::span<const std::uint8_t> file);

    static bool recognises(std::span<const std::uint8_t> file);

    std::span<const std::uint8_t> bytes() const { return file_; }
    bool bigEndian() const { return bigEndian_; }
    bool isBig() const { return big_; } // with 64-bit offsets
    std::uint64_t first() const { return first_; }

    // The directory at `offset`; nothing if it does not lie in the file.
    std::optional<TiffDirectory> directory(std::uint64_t offset) const;

    // The first value of an entry of whole numbers, 0 if there is none.
    std::uint64_t number(const TiffEntry& entry) const;
    // Text without its final zero.
    static std::string text(const TiffEntry& entry);

  private:
    std::uint64_t read(std::uint64_t at, int size) const;
    bool has(std::uint64_t at, std::uint64_t size) const;

    std::span<const std::uint8_t> file_;
    bool bigEndian_ = false;
    bool big_ = false;
    std::uint64_t first_ = 0;
};

// Where the pages of a file stand.
struct TiffChain {
    std::vector<std::uint64_t> directories;
    std::string trouble; // why it ends before its end, empty if it does not
};

// Follows the chain of directories. It ends at a directory seen before, at one outside the file,
// after `maxPages`, and where the directories' values together grow far beyond the file, which
// only overlapping ones can do.
TiffChain tiffChain(const TiffStructure& file, int maxPages);

// Bytes of one value of a field type, 0 for an unknown type.
int tiffTypeSize(std::uint16_t type);

} // namespace kvn::imaging
