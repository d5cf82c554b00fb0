// ICO, and the icons of OS/2: the largest picture of an icon is read; nothing is written.

#include <algorithm>
#include <array>
#include <cstring>
#include <optional>
#include <tuple>

#include "basic/error.h"
#include "imaging/codecs/all.h"
#include "imaging/codecs/fields.h"
#include "imaging/codecs/ico_os2.h"
#include "imaging/codecs/one_page.h"
#include "imaging/codecs/plausible.h"

namespace kvn::imaging {

namespace {

constexpr std::size_t directorySize = 6, entrySize = 16, bitmapHeader = 40;

[[noreturn]] void refuse(const std::string& what) {
    throw RuntimeError(errors::invalidPicture, what, "Import");
}

// One picture of the icon: a PNG file, or a bitmap without file header whose height counts the
// mask of clear pixels that follows it.
struct Entry {
    int width = 0;
    int height = 0;
    int bits = 0;
    int namedBits = 0; // by the directory, where the pictures' own depths are the same
    bool isPng = false;
    std::span<const std::uint8_t> data;

    auto rank() const { return std::tuple(std::int64_t{width} * height, bits, namedBits); }
};

bool startsLikePng(std::span<const std::uint8_t> data) {
    constexpr std::array<std::uint8_t, 8> mark{0x89, 'P', 'N', 'G', '\r', '\n', 0x1a, '\n'};
    return data.size() >= 33 && std::equal(mark.begin(), mark.end(), data.begin());
}

std::optional<Entry> pngEntry(std::span<const std::uint8_t> data) {
    constexpr int channels[] = {1, 0, 3, 1, 2, 0, 4};
    const BigFields fields(data);
    const std::uint32_t width = fields.u32(16), height = fields.u32(20), kind = data[25];
    if (width < 1 || height < 1 || width > 0xffff || height > 0xffff || kind > 6) return {};
    return Entry{static_cast<int>(width),
                 static_cast<int>(height),
                 data[24] * channels[kind],
                 0,
                 true,
                 data};
}

// The directory's sizes are single bytes and often wrong; the pictures' own count.
std::optional<Entry> entryOf(std::span<const std::uint8_t> data) {
    if (startsLikePng(data)) return pngEntry(data);
    const LittleFields fields(data);
    if (data.size() < bitmapHeader || fields.u32(0) != bitmapHeader) return {};
    const std::uint32_t width = fields.u32(4), height = fields.u32(8) / 2, bits = fields.u16(14);
    const bool known = bits == 1 || bits == 4 || bits == 8 || bits == 24 || bits == 32;
    const bool plain = fields.u32(16) == 0; // no run lengths
    if (!known || !plain || width < 1 || height < 1 || width > 0xffff || height > 0xffff) return {};
    return Entry{
        static_cast<int>(width), static_cast<int>(height), static_cast<int>(bits), 0, false, data};
}

std::span<const std::uint8_t> dataOf(std::span<const std::uint8_t> file, std::size_t index) {
    const LittleFields fields(file);
    const std::size_t at = directorySize + index * entrySize;
    return partOf(file, fields.u32(at + 12), fields.u32(at + 8));
}

std::size_t entryCount(std::span<const std::uint8_t> file) {
    return std::min<std::size_t>(LittleFields(file).u16(4),
                                 (file.size() - directorySize) / entrySize);
}

bool isIco(std::span<const std::uint8_t> file) {
    const LittleFields fields(file);
    if (file.size() < directorySize + entrySize || fields.u32(0) != 0x10000) return false;
    // The first picture lies behind the directory and inside the file, and the spare byte is 0.
    const std::uint32_t count = fields.u16(4), size = fields.u32(14), offset = fields.u32(18);
    return count > 0 && count <= 4096 && fields.byte(9) == 0 && size >= bitmapHeader &&
           offset >= directorySize + entrySize && offset < file.size();
}

Entry largestEntry(std::span<const std::uint8_t> file) {
    if (!isIco(file)) refuse("The ICO file has no valid directory.");
    std::optional<Entry> best;
    for (std::size_t i = 0; i < entryCount(file); ++i) {
        std::optional<Entry> entry = entryOf(dataOf(file, i));
        if (!entry) continue;
        entry->namedBits =
            static_cast<int>(LittleFields(file).u16(directorySize + i * entrySize + 6));
        if (!best || entry->rank() > best->rank()) best = entry;
    }
    if (!best) refuse("The ICO file has no picture that can be read.");
    return *best;
}

// Where the parts of a bitmap stand. Rows go from the bottom up, in whole 32-bit words.
struct Bitmap {
    explicit Bitmap(const Entry& entry) {
        const LittleFields fields(entry.data);
        const auto wordsFor = [&](int bits) {
            return (std::size_t(entry.width) * std::size_t(bits) + 31) / 32 * 4;
        };
        if (entry.bits <= 8) {
            const std::uint32_t most = 1u << entry.bits, used = fields.u32(32);
            colors = used == 0 ? most : std::min(used, most);
        }
        stride = wordsFor(entry.bits);
        maskStride = wordsFor(1);
        const std::size_t start = bitmapHeader + 4 * colors;
        const auto rows = static_cast<std::size_t>(entry.height);
        palette = partOf(entry.data, bitmapHeader, 4 * colors);
        pixels = partOf(entry.data, start, stride * rows);
        mask = partOf(entry.data, start + stride * rows, maskStride * rows);
    }

    std::size_t colors = 0, stride = 0, maskStride = 0;
    std::span<const std::uint8_t> palette, pixels, mask;
};

bool bitAt(std::span<const std::uint8_t> row, int x) {
    return row[static_cast<std::size_t>(x) / 8] >> (7 - x % 8) & 1;
}

Rgba colorAt(const Bitmap& bitmap, const std::uint8_t* row, int x, int bits) {
    if (bits >= 24) {
        const std::uint8_t* pixel = row + std::ptrdiff_t{x} * (bits / 8);
        return {pixel[2], pixel[1], pixel[0], bits == 32 ? pixel[3] : std::uint8_t{255}};
    }
    const int place = x * bits;
    const std::size_t index = row[place / 8] >> (8 - bits - place % 8) & ((1 << bits) - 1);
    const LittleFields fields(bitmap.palette);
    return {static_cast<std::uint8_t>(fields.byte(4 * index + 2)),
            static_cast<std::uint8_t>(fields.byte(4 * index + 1)),
            static_cast<std::uint8_t>(fields.byte(4 * index)), 255};
}

bool anyAlpha(std::span<const std::uint8_t> pixels) {
    for (std::size_t at = 3; at < pixels.size(); at += 4)
        if (pixels[at] != 0) return true;
    return false;
}

// 32 bits have alpha if any fourth byte is not 0; all else takes it from the mask.
Raster readBitmap(const Entry& entry, std::vector<std::string>& warnings) {
    const Bitmap bitmap(entry);
    Raster raster(ImageType::Rgba32, entry.width, entry.height);
    const View view = raster.edit();
    const bool ownAlpha = entry.bits == 32 && anyAlpha(bitmap.pixels);
    const std::size_t rows = bitmap.pixels.size() / bitmap.stride;
    for (std::size_t i = 0; i < rows; ++i) {
        const std::uint8_t* from = bitmap.pixels.data() + i * bitmap.stride;
        const auto mask = partOf(bitmap.mask, i * bitmap.maskStride, bitmap.maskStride);
        std::uint8_t* to = view.row(entry.height - 1 - static_cast<int>(i));
        for (int x = 0; x < entry.width; ++x, to += 4) {
            Rgba color = colorAt(bitmap, from, x, entry.bits);
            const bool masked = mask.size() == bitmap.maskStride && bitAt(mask, x);
            if (!ownAlpha) color.a = masked ? 0 : 255;
            to[0] = color.r;
            to[1] = color.g;
            to[2] = color.b;
            to[3] = color.a;
        }
    }
    if (rows < static_cast<std::size_t>(entry.height))
        warnings.push_back("The ICO file is cut off: rows are missing.");
    return raster;
}

class IcoCodec final : public Codec {
  public:
    FileType type() const override { return FileType::Ico; }
    std::string_view name() const override { return "ICO"; }
    std::span<const std::string_view> extensions() const override {
        static constexpr std::array<std::string_view, 1> list{"ico"};
        return list;
    }
    bool recognises(std::span<const std::uint8_t> file) const override {
        return isIco(file) || isOs2Icon(file);
    }

    Picture read(std::span<const std::uint8_t> file, ReadLimits limits, Task& task) const override {
        Picture picture;
        picture.type = FileType::Ico;
        if (isOs2Icon(file)) {
            Page page;
            page.raster = readOs2Icon(file, limits, task, picture.warnings);
            picture.pages.push_back(std::move(page));
            return picture;
        }
        const Entry entry = largestEntry(file);
        if (entry.isPng) {
            picture = pngCodec().read(entry.data, limits, task);
        } else {
            limits.take(entry.width, entry.height, ImageType::Rgba32);
            requirePlausible(entry.width, entry.height, ImageType::Rgba32, entry.data.size());
            Page page;
            page.raster = readBitmap(entry, picture.warnings);
            picture.pages.push_back(std::move(page));
        }
        picture.type = FileType::Ico;
        return picture;
    }

    std::vector<PageFacts> facts(std::span<const std::uint8_t> file,
                                 ReadLimits limits) const override {
        if (isOs2Icon(file)) return {os2IconFacts(file, limits)};
        const Entry entry = largestEntry(file);
        if (entry.isPng) return pngCodec().facts(entry.data, limits);
        limits.take(entry.width, entry.height, ImageType::Rgba32);
        return {{entry.width, entry.height, ImageType::Rgba32, entry.bits}};
    }
};

} // namespace

const Codec& icoCodec() {
    static const IcoCodec codec;
    return codec;
}

} // namespace kvn::imaging
