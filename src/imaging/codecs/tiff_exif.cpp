#include "imaging/codecs/tiff_exif.h"

#include <algorithm>
#include <array>
#include <bit>

namespace kvn::imaging {

namespace {

constexpr std::uint16_t cameraTag = 34665, positionTag = 34853, interoperabilityTag = 40965;

bool isPointer(std::uint16_t tag) {
    return tag == cameraTag || tag == positionTag || tag == interoperabilityTag;
}

// What is carried of a page's own directory.
constexpr std::array<std::uint16_t, 18> ownTags{269,    // document
                                                270,    // description
                                                271,    // maker
                                                272,    // model
                                                305,    // program
                                                306,    // time
                                                315,    // artist
                                                316,    // computer
                                                318,    // white point
                                                319,    // primary colours
                                                18246,  // rating
                                                18249,  // the same in percent
                                                33432,  // copyright
                                                40091,  // title
                                                40092,  // comment
                                                40093,  // author
                                                40094,  // keywords
                                                40095}; // subject

// Longer ones are data of some program in the place of a text, and a JPEG file has no room for
// them.
constexpr std::size_t longestOwnValue = 8192;

bool isCarried(const TiffEntry& entry) {
    return std::ranges::find(ownTags, entry.tag) != ownTags.end() && !entry.value.empty() &&
           entry.value.size() <= longestOwnValue;
}

// A fraction is two numbers.
void turnValue(Bytes& value, std::uint16_t type, bool turns) {
    constexpr std::uint16_t fraction = 5, signedFraction = 10;
    const bool halves = type == fraction || type == signedFraction;
    const std::ptrdiff_t size = halves ? 4 : tiffTypeSize(type);
    if (!turns || size < 2) return;
    for (auto at = value.begin(); value.end() - at >= size; at += size)
        std::reverse(at, at + size);
}

// Lays directories out one behind the other.
class Layout {
  public:
    Layout(const TiffStructure& source, std::uint32_t position, bool bigEndian)
        : source_(source), position_(position), bigEndian_(bigEndian) {}

    Bytes& bytes() { return bytes_; }

    // Gives the maker's note the place in the new file that it had in the old one, if that is
    // near and still free: most makers count offsets from the beginning of the file.
    void keepPlaceOf(const TiffEntry& note) {
        constexpr std::size_t near = 48 << 10;
        const auto place = static_cast<std::size_t>(note.value.data() - source_.bytes().data());
        if (note.value.size() <= 4 || place < position_ + bytes_.size()) return;
        if (place + note.value.size() > position_ + near) return;
        bytes_.resize(place - position_);
        bytes_.insert(bytes_.end(), note.value.begin(), note.value.end());
        kept_ = note.value.data();
        keptPlace_ = static_cast<std::uint32_t>(place);
    }

    void put(std::size_t at, std::uint32_t value, int size) {
        for (int i = 0; i < size; ++i) {
            const int shift = 8 * (bigEndian_ ? size - 1 - i : i);
            bytes_[at + static_cast<std::size_t>(i)] = static_cast<std::uint8_t>(value >> shift);
        }
    }

    // Returns where it stands in the new file. `depth` ends loops of pointers.
    std::uint32_t add(const std::vector<TiffEntry>& entries, int depth) {
        if (bytes_.size() % 2 != 0) bytes_.push_back(0);
        const std::size_t start = bytes_.size();
        std::vector<const TiffEntry*> kept;
        for (const TiffEntry& entry : entries)
            if (isKept(entry, depth)) kept.push_back(&entry);
        bytes_.resize(start + 2 + 12 * kept.size() + 4);
        put(start, static_cast<std::uint32_t>(kept.size()), 2);
        for (std::size_t i = 0; i < kept.size(); ++i)
            addEntry(start + 2 + 12 * i, *kept[i], depth);
        return position_ + static_cast<std::uint32_t>(start);
    }

  private:
    bool isKept(const TiffEntry& entry, int depth) const {
        // No camera writes as much: a broken count.
        constexpr std::size_t mostBytes = 16 << 20;
        if (isPointer(entry.tag)) return depth > 0 && target(entry).has_value();
        return !entry.value.empty() && entry.value.size() <= mostBytes && entry.type <= 13;
    }

    std::optional<TiffDirectory> target(const TiffEntry& entry) const {
        return source_.directory(source_.number(entry));
    }

    void addEntry(std::size_t at, const TiffEntry& entry, int depth) {
        put(at, entry.tag, 2);
        if (isPointer(entry.tag)) {
            const std::uint32_t place = add(target(entry)->entries, depth - 1);
            put(at + 2, 4, 2);
            put(at + 4, 1, 4);
            put(at + 8, place, 4);
            return;
        }
        put(at + 2, entry.type, 2);
        put(at + 4, static_cast<std::uint32_t>(entry.count), 4);
        if (kept_ && entry.value.data() == kept_) {
            put(at + 8, keptPlace_, 4);
            return;
        }
        const Bytes value = turned(entry);
        if (value.size() <= 4) {
            std::ranges::copy(value, bytes_.begin() + static_cast<std::ptrdiff_t>(at + 8));
            return;
        }
        if (bytes_.size() % 2 != 0) bytes_.push_back(0);
        put(at + 8, position_ + static_cast<std::uint32_t>(bytes_.size()), 4);
        bytes_.insert(bytes_.end(), value.begin(), value.end());
    }

    // The value in the new file's byte order.
    Bytes turned(const TiffEntry& entry) const {
        Bytes value(entry.value.begin(), entry.value.end());
        turnValue(value, entry.type, source_.bigEndian() != bigEndian_);
        return value;
    }

    const TiffStructure& source_;
    std::uint32_t position_;
    bool bigEndian_;
    Bytes bytes_;
    const std::uint8_t* kept_ = nullptr; // the note in the source
    std::uint32_t keptPlace_ = 0;
};

// The maker's note of the directory that a page's or a block's own one points to.
void keepPlaceOfNote(Layout& layout, const TiffStructure& source, const TiffDirectory& main) {
    constexpr std::uint16_t noteTag = 37500;
    const TiffEntry* pointer = main.find(cameraTag);
    const auto camera =
        pointer ? source.directory(source.number(*pointer)) : std::optional<TiffDirectory>{};
    const TiffEntry* note = camera ? camera->find(noteTag) : nullptr;
    if (note) layout.keepPlaceOf(*note);
}

// The value in the byte order of this machine.
Bytes nativeValue(const TiffStructure& source, const TiffEntry& entry) {
    Bytes value(entry.value.begin(), entry.value.end());
    turnValue(value, entry.type, source.bigEndian() != (std::endian::native == std::endian::big));
    return value;
}

constexpr int pointerDepth = 2;

} // namespace

Bytes exifOfTiffPage(const TiffStructure& file, const TiffDirectory& page) {
    std::vector<TiffEntry> entries;
    for (const TiffEntry& entry : page.entries)
        if (isCarried(entry) || entry.tag == cameraTag || entry.tag == positionTag)
            entries.push_back(entry);
    if (entries.empty()) return {};
    Layout layout(file, 0, file.bigEndian());
    layout.bytes().resize(8);
    layout.bytes()[0] = layout.bytes()[1] = file.bigEndian() ? 'M' : 'I';
    layout.put(2, 42, 2);
    keepPlaceOfNote(layout, file, page);
    layout.put(4, layout.add(entries, pointerDepth), 4);
    return std::move(layout.bytes());
}

PlacedExif placeExif(const Bytes& exif, std::uint32_t position, bool bigEndian) {
    PlacedExif placed;
    if (!TiffStructure::recognises(exif)) return placed;
    const TiffStructure block(exif);
    const std::optional<TiffDirectory> main = block.directory(block.first());
    if (!main) return placed;
    Layout layout(block, position, bigEndian);
    const auto place = [&](std::uint16_t tag) -> std::uint32_t {
        const TiffEntry* entry = main->find(tag);
        const auto target =
            entry ? block.directory(block.number(*entry)) : std::optional<TiffDirectory>{};
        return target ? layout.add(target->entries, pointerDepth - 1) : 0;
    };
    keepPlaceOfNote(layout, block, *main);
    placed.camera = place(cameraTag);
    placed.position = place(positionTag);
    for (const TiffEntry& entry : main->entries)
        if (isCarried(entry))
            placed.own.push_back({entry.tag, entry.type, nativeValue(block, entry)});
    placed.bytes = std::move(layout.bytes());
    return placed;
}

bool isBigEndianExif(const Bytes& exif) {
    return TiffStructure::recognises(exif) && exif[0] == 'M';
}

} // namespace kvn::imaging
