#include "imaging/metadata/exif_block.h"

#include <algorithm>

namespace kvn::imaging {

namespace {

constexpr std::size_t entrySize = 12;
constexpr std::uint16_t cameraPointer = 0x8769;
constexpr std::uint16_t thumbnailOffset = 0x0201;
constexpr std::uint16_t thumbnailLength = 0x0202;
enum : std::uint16_t { typeByte = 1, typeShort = 3, typeLong = 4, typeFraction = 5 };

} // namespace

ExifBlock::ExifBlock(Bytes bytes) : bytes_(std::move(bytes)) {
    if (!has(0, 8)) return;
    const bool little = bytes_[0] == 'I' && bytes_[1] == 'I';
    bigEndian_ = bytes_[0] == 'M' && bytes_[1] == 'M';
    if (!little && !bigEndian_) return;
    if (read(2, 2) != 42) return;
    const std::size_t offset = read(4, 4);
    if (offset >= 8 && has(offset, 2)) main_ = offset;
}

bool ExifBlock::has(std::size_t at, std::size_t size) const {
    return at <= bytes_.size() && size <= bytes_.size() - at;
}

std::uint32_t ExifBlock::read(std::size_t at, int size) const {
    std::uint32_t value = 0;
    for (int i = 0; i < size; ++i) {
        const int byte = bigEndian_ ? i : size - 1 - i;
        value = value << 8 | bytes_[at + static_cast<std::size_t>(byte)];
    }
    return value;
}

void ExifBlock::write(std::size_t at, std::uint32_t value, int size) {
    for (int i = 0; i < size; ++i) {
        const int byte = bigEndian_ ? size - 1 - i : i;
        bytes_[at + static_cast<std::size_t>(byte)] = static_cast<std::uint8_t>(value >> (8 * i));
    }
}

std::size_t ExifBlock::thumbnailLink() const {
    if (main_ == 0) return 0;
    const std::size_t link = main_ + 2 + entrySize * read(main_, 2);
    return has(link, 4) ? link : 0;
}

std::size_t ExifBlock::start(Directory directory) const {
    if (directory == Directory::Main || main_ == 0) return main_;
    std::size_t offset = 0;
    if (directory == Directory::Camera) {
        offset = number(Directory::Main, cameraPointer).value_or(0);
    } else if (const std::size_t link = thumbnailLink(); link != 0) {
        offset = read(link, 4);
    }
    return offset >= 8 && has(offset, 2) ? offset : 0;
}

std::optional<ExifBlock::Entry> ExifBlock::find(Directory directory, std::uint16_t tag) const {
    const std::size_t at = start(directory);
    if (at == 0) return {};
    const std::size_t count = read(at, 2);
    for (std::size_t i = 0; i < count; ++i) {
        const std::size_t entry = at + 2 + entrySize * i;
        if (!has(entry, entrySize)) return {};
        if (read(entry, 2) != tag) continue;
        return Entry{static_cast<std::uint16_t>(read(entry + 2, 2)), read(entry + 4, 4), entry + 8};
    }
    return {};
}

namespace {

int valueSize(std::uint16_t type) {
    if (type == typeByte) return 1;
    if (type == typeShort) return 2;
    return type == typeLong ? 4 : 0;
}

} // namespace

std::size_t ExifBlock::firstValue(const Entry& entry) const {
    const int size = valueSize(entry.type);
    if (size == 0 || entry.count < 1) return 0;
    const bool isInside = entry.count <= 4 / static_cast<std::uint32_t>(size);
    const std::size_t at = isInside ? entry.value : read(entry.value, 4);
    return has(at, static_cast<std::size_t>(size)) ? at : 0;
}

std::optional<std::uint32_t> ExifBlock::number(Directory directory, std::uint16_t tag) const {
    const auto entry = find(directory, tag);
    const std::size_t at = entry ? firstValue(*entry) : 0;
    if (at == 0) return {};
    return read(at, valueSize(entry->type));
}

std::optional<double> ExifBlock::fraction(Directory directory, std::uint16_t tag) const {
    const auto entry = find(directory, tag);
    if (!entry || entry->count < 1 || entry->type != typeFraction) return {};
    const std::size_t at = read(entry->value, 4);
    if (!has(at, 8) || read(at + 4, 4) == 0) return {};
    return static_cast<double>(read(at, 4)) / read(at + 4, 4);
}

bool ExifBlock::setNumber(Directory directory, std::uint16_t tag, std::uint32_t value) {
    const auto entry = find(directory, tag);
    const std::size_t at = entry ? firstValue(*entry) : 0;
    if (at == 0) return false;
    const int size = valueSize(entry->type);
    const bool fits = size == 4 || value >> 8 * size == 0;
    if (!fits && entry->count != 1) return false;
    if (!fits) write(entry->value - 6, typeLong, 2);
    write(at, value, fits ? size : 4);
    return true;
}

bool ExifBlock::putMainNumber(std::uint16_t tag, std::uint16_t value) {
    if (setNumber(Directory::Main, tag, value)) return true;
    const std::size_t link = thumbnailLink();
    const std::size_t count = main_ == 0 ? 0 : read(main_, 2);
    if (link == 0 || count >= 0xffff) return false;
    bytes_.resize(bytes_.size() + bytes_.size() % 2);

    std::size_t before = 0;
    while (before < count && read(main_ + 2 + entrySize * before, 2) < tag)
        ++before;
    const auto old = bytes_.begin() + static_cast<std::ptrdiff_t>(main_ + 2);
    const auto split = old + static_cast<std::ptrdiff_t>(entrySize * before);
    Bytes moved(2);
    moved.insert(moved.end(), old, split);
    moved.resize(moved.size() + entrySize);
    moved.insert(moved.end(), split, bytes_.begin() + static_cast<std::ptrdiff_t>(link + 4));

    const std::size_t at = bytes_.size();
    bytes_.insert(bytes_.end(), moved.begin(), moved.end());
    main_ = at;
    write(4, static_cast<std::uint32_t>(at), 4);
    write(at, static_cast<std::uint32_t>(count + 1), 2);
    const std::size_t entry = at + 2 + entrySize * before;
    write(entry, tag, 2);
    write(entry + 2, typeShort, 2);
    write(entry + 4, 1, 4);
    write(entry + 8, value, 2);
    return true;
}

std::span<const std::uint8_t> ExifBlock::thumbnail() const {
    const auto offset = number(Directory::Thumbnail, thumbnailOffset);
    const auto length = number(Directory::Thumbnail, thumbnailLength);
    if (!offset || !length || *length < 4 || !has(*offset, *length)) return {};
    const std::span<const std::uint8_t> jpeg(bytes_.data() + *offset, *length);
    return jpeg[0] == 0xff && jpeg[1] == 0xd8 ? jpeg : std::span<const std::uint8_t>{};
}

bool ExifBlock::setThumbnail(std::span<const std::uint8_t> jpeg) {
    const auto old = thumbnail();
    if (old.empty() || jpeg.size() > old.size()) return false;
    const std::ptrdiff_t at = old.data() - bytes_.data();
    const std::size_t space = old.size();
    if (!setNumber(Directory::Thumbnail, thumbnailLength, static_cast<std::uint32_t>(jpeg.size())))
        return false;
    std::fill_n(bytes_.begin() + at, space, std::uint8_t{0});
    std::copy(jpeg.begin(), jpeg.end(), bytes_.begin() + at);
    return true;
}

void ExifBlock::removeThumbnail() {
    const auto old = thumbnail();
    std::fill_n(bytes_.begin() + (old.empty() ? 0 : old.data() - bytes_.data()), old.size(),
                std::uint8_t{0});
    if (const std::size_t link = thumbnailLink(); link != 0) write(link, 0, 4);
}

int exifOrientation(Bytes exif) {
    return static_cast<int>(ExifBlock(std::move(exif))
                                .number(ExifBlock::Directory::Main, ExifBlock::orientation)
                                .value_or(1));
}

} // namespace kvn::imaging
