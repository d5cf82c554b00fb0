#include "imaging/codecs/tiff_structure.h"

#include <algorithm>
#include <array>
#include <unordered_set>

namespace kvn::imaging {

const TiffEntry* TiffDirectory::find(std::uint16_t tag) const {
    const auto found = std::ranges::find(entries, tag, &TiffEntry::tag);
    return found == entries.end() ? nullptr : &*found;
}

int tiffTypeSize(std::uint16_t type) {
    constexpr std::array<int, 19> sizes{0, 1, 1, 2, 4, 8, 1, 1, 2, 4, 8, 4, 8, 4, 0, 0, 8, 8, 8};
    return type < sizes.size() ? sizes[type] : 0;
}

bool TiffStructure::recognises(std::span<const std::uint8_t> file) {
    if (file.size() < 8) return false;
    const bool little = file[0] == 'I' && file[1] == 'I' && file[3] == 0;
    const bool big = file[0] == 'M' && file[1] == 'M' && file[2] == 0;
    const std::uint8_t version = little ? file[2] : file[3];
    return (little || big) && (version == 42 || version == 43);
}

TiffStructure::TiffStructure(std::span<const std::uint8_t> file) : file_(file) {
    if (!recognises(file)) return;
    bigEndian_ = file[0] == 'M';
    big_ = read(2, 2) == 43;
    first_ = big_ ? read(8, 8) : read(4, 4);
}

bool TiffStructure::has(std::uint64_t at, std::uint64_t size) const {
    return at <= file_.size() && size <= file_.size() - at;
}

// A number of the file, 0 outside of it.
std::uint64_t TiffStructure::read(std::uint64_t at, int size) const {
    if (!has(at, static_cast<std::uint64_t>(size))) return 0;
    std::uint64_t value = 0;
    for (int i = 0; i < size; ++i) {
        const std::uint64_t byte = file_[at + static_cast<std::uint64_t>(i)];
        value |= byte << 8 * (bigEndian_ ? size - 1 - i : i);
    }
    return value;
}

std::optional<TiffDirectory> TiffStructure::directory(std::uint64_t offset) const {
    const int countSize = big_ ? 8 : 2, wordSize = big_ ? 8 : 4;
    const std::uint64_t entrySize = big_ ? 20 : 12;
    if (offset < 8 || !has(offset, static_cast<std::uint64_t>(countSize))) return std::nullopt;
    const std::uint64_t count = read(offset, countSize);
    const std::uint64_t start = offset + static_cast<std::uint64_t>(countSize);
    if (count == 0 || count > 65535 || !has(start, count * entrySize)) return std::nullopt;
    TiffDirectory directory;
    directory.entries.reserve(count);
    for (std::uint64_t i = 0; i < count; ++i) {
        const std::uint64_t at = start + i * entrySize;
        TiffEntry entry;
        entry.tag = static_cast<std::uint16_t>(read(at, 2));
        entry.type = static_cast<std::uint16_t>(read(at + 2, 2));
        entry.count = read(at + 4, wordSize);
        const auto size = static_cast<std::uint64_t>(tiffTypeSize(entry.type));
        const std::uint64_t place = at + 4 + static_cast<std::uint64_t>(wordSize);
        if (size > 0 && entry.count <= file_.size() / size) {
            const std::uint64_t bytes = entry.count * size;
            const std::uint64_t value =
                bytes <= static_cast<std::uint64_t>(wordSize) ? place : read(place, wordSize);
            if (has(value, bytes)) entry.value = file_.subspan(value, bytes);
        }
        directory.entries.push_back(entry);
    }
    directory.next = read(start + count * entrySize, wordSize);
    return directory;
}

std::uint64_t TiffStructure::number(const TiffEntry& entry) const {
    const int size = tiffTypeSize(entry.type);
    if (entry.value.empty()) return 0;
    return read(static_cast<std::uint64_t>(entry.value.data() - file_.data()), size);
}

std::string TiffStructure::text(const TiffEntry& entry) {
    std::string text(entry.value.begin(), entry.value.end());
    while (!text.empty() && text.back() == '\0')
        text.pop_back();
    return text;
}

TiffChain tiffChain(const TiffStructure& file, int maxPages) {
    // Pages may share values, a colour profile for example; a page's own ones cannot outgrow the
    // file.
    const std::uint64_t budget = (std::uint64_t{256} << 20) + 16 * file.bytes().size();
    std::uint64_t spent = 0;
    TiffChain chain;
    std::unordered_set<std::uint64_t> seen;
    for (std::uint64_t at = file.first(); at != 0;) {
        const std::optional<TiffDirectory> directory = file.directory(at);
        if (!seen.insert(at).second)
            chain.trouble = "The TIFF file's pages lead back to an earlier one.";
        else if (!directory)
            chain.trouble = "The TIFF file is damaged or cut off: a page's directory is missing.";
        else if (static_cast<int>(chain.directories.size()) >= maxPages)
            chain.trouble = "The TIFF file has more pages than the limit for files.";
        if (!chain.trouble.empty()) break;
        for (const TiffEntry& entry : directory->entries)
            spent += 64 + entry.value.size();
        if (spent > budget) {
            chain.trouble = "The TIFF file's directories overlap.";
            break;
        }
        chain.directories.push_back(at);
        at = directory->next;
    }
    return chain;
}

} // namespace kvn::imaging
