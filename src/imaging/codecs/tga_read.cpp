#include "imaging/codecs/tga_read.h"

#include <algorithm>
#include <cstring>

#include "basic/error.h"
#include "imaging/codecs/fields.h"
#include "imaging/codecs/one_page.h"
#include "imaging/codecs/tga_format.h"
#include "imaging/convert.h"
#include "imaging/metadata/utf8.h"

namespace kvn::imaging {

namespace {

[[noreturn]] void refuse(const std::string& what) {
    throw RuntimeError(errors::invalidPicture, what, "Import");
}

bool hasFooter(std::span<const std::uint8_t> file) {
    return file.size() >= tga::headerSize + tga::footerSize &&
           std::ranges::equal(file.last(tga::signature.size()), tga::signature);
}

// The extension area; empty if there is none.
std::span<const std::uint8_t> extensionOf(std::span<const std::uint8_t> file) {
    if (!hasFooter(file)) return {};
    const std::uint32_t at = LittleFields(file).u32(file.size() - tga::footerSize);
    const auto area = partOf(file, at, tga::extensionSize);
    const bool whole = at >= tga::headerSize && area.size() == tga::extensionSize &&
                       LittleFields(area).u16(0) >= tga::extensionSize;
    return whole ? area : std::span<const std::uint8_t>{};
}

bool depthFits(int kind, int bits) {
    switch (kind) {
    case 1:
        return bits == 8 || bits == 16;
    case 2:
        return bits == 15 || bits == 16 || bits == 24 || bits == 32;
    case 3:
        return bits == 8 || bits == 16;
    default:
        return false;
    }
}

bool paletteFits(std::span<const std::uint8_t> file) {
    const int bits = file[7];
    if (file[1] == 0) return (file[2] & 7) != 1;
    return bits == 15 || bits == 16 || bits == 24 || bits == 32;
}

std::uint8_t fiveBits(std::uint32_t value) {
    value &= 31;
    return static_cast<std::uint8_t>(value << 3 | value >> 2);
}

Rgba color16(std::uint32_t value) {
    return {fiveBits(value >> 10), fiveBits(value >> 5), fiveBits(value), 255};
}

// `most` is how many an index can tell apart.
std::vector<Rgba> readColors(std::span<const std::uint8_t> bytes, std::size_t first, int bits,
                             TgaAlpha alpha, std::size_t most) {
    const std::size_t size = static_cast<std::size_t>(bits + 7) / 8;
    const LittleFields fields(bytes);
    std::vector<Rgba> colors(std::min(first, most));
    bool anyAlpha = alpha == TgaAlpha::Straight;
    for (std::size_t at = 0; at + size <= bytes.size() && colors.size() < most; at += size) {
        if (size == 2) {
            colors.push_back(color16(fields.u16(at)));
            continue;
        }
        colors.push_back({bytes[at + 2], bytes[at + 1], bytes[at],
                          size == 4 ? bytes[at + 3] : std::uint8_t{255}});
        anyAlpha = anyAlpha || (size == 4 && bytes[at + 3] != 0);
    }
    if (!anyAlpha || alpha == TgaAlpha::None)
        for (Rgba& color : colors)
            color.a = 255;
    return colors;
}

void setColors(TgaHeader& header, std::vector<Rgba> colors) {
    if (colors.empty()) refuse("The TGA file has no palette.");
    if (header.bits == 8) {
        header.palette = Palette(std::move(colors));
        return;
    }
    const bool opaque = std::ranges::all_of(colors, [](Rgba c) { return c.a == 255; });
    header.alpha = opaque ? TgaAlpha::None : TgaAlpha::Straight;
    header.manyColors = std::move(colors);
    header.manyColors.resize(std::size_t{1} << 16);
}

std::string trimmed(std::string_view text) {
    text = text.substr(0, text.find('\0'));
    while (!text.empty() && text.back() == ' ')
        text.remove_suffix(1);
    return std::string(text);
}

// Four lines; one that is full goes on in the next.
std::string commentIn(std::span<const std::uint8_t> extension) {
    std::string comment;
    bool goesOn = true;
    for (std::size_t i = 0; i < tga::commentLines; ++i) {
        const auto line =
            extension.subspan(tga::commentAt + i * (tga::commentWidth + 1), tga::commentWidth);
        std::string text(line.begin(), line.end());
        const bool full = text.find('\0') == std::string::npos;
        text = full ? text : trimmed(text);
        if (!text.empty()) comment += (goesOn || comment.empty() ? "" : "\n") + text;
        goesOn = full;
    }
    return utf8FromLatin1(trimmed(comment));
}

TgaAlpha alphaOf(const TgaHeader& header, int attributeBits,
                 std::span<const std::uint8_t> extension) {
    const bool possible = header.bits == 32 || (header.kind == TgaKind::Gray && header.bits == 16);
    const bool oneBit = header.kind == TgaKind::Color && header.bits == 16 && attributeBits > 0;
    const bool palette = header.kind == TgaKind::Palette;
    if (!possible && !oneBit && !palette) return TgaAlpha::None;
    if (extension.empty()) return TgaAlpha::Undecided;
    switch (extension[tga::attributesAt]) {
    case 1: // to be ignored
        return TgaAlpha::None;
    case 3:
        return TgaAlpha::Straight;
    case 4:
        return TgaAlpha::Premultiplied;
    case 2: // kept for the writer's own use
        return TgaAlpha::Undecided;
    default: // "no alpha" is also what writers leave who never filled the field
        return attributeBits > 0 ? TgaAlpha::Undecided : TgaAlpha::None;
    }
}

// The file's pixels one row after another; packets may go on from row to row.
class Rows {
  public:
    Rows(const TgaHeader& header, std::size_t unit)
        : data_(header.pixels), packed_(header.packed), unit_(unit) {}

    // Fills the row, with zeros from where the data end; false if there was nothing left.
    bool next(std::span<std::uint8_t> row) {
        if (count_ == 0 && at_ + unit_ > data_.size()) return false;
        std::size_t done = 0;
        while (done < row.size() && (count_ > 0 || startPacket()))
            done += run_ ? repeat(row.subspan(done)) : copy(row.subspan(done));
        std::fill(row.begin() + static_cast<std::ptrdiff_t>(done), row.end(), 0);
        return done > 0;
    }

  private:
    bool startPacket() {
        if (!packed_) {
            count_ = (data_.size() - at_) / unit_;
            return count_ > 0;
        }
        if (at_ + 1 + unit_ > data_.size()) {
            at_ = data_.size();
            return false;
        }
        const std::uint8_t head = data_[at_++];
        run_ = (head & 0x80) != 0;
        count_ = (head & 0x7f) + std::size_t{1};
        value_ = data_.data() + at_;
        if (run_)
            at_ += unit_;
        else
            count_ = std::min(count_, (data_.size() - at_) / unit_);
        return true;
    }
    std::size_t repeat(std::span<std::uint8_t> row) {
        const std::size_t n = std::min(count_, row.size() / unit_);
        for (std::size_t i = 0; i < n; ++i)
            std::memcpy(row.data() + i * unit_, value_, unit_);
        count_ -= n;
        return n * unit_;
    }
    std::size_t copy(std::span<std::uint8_t> row) {
        const std::size_t n = std::min(count_, row.size() / unit_);
        std::memcpy(row.data(), data_.data() + at_, n * unit_);
        at_ += n * unit_;
        count_ -= n;
        return n * unit_;
    }

    std::span<const std::uint8_t> data_;
    bool packed_;
    std::size_t unit_;
    std::size_t at_ = 0;
    std::size_t count_ = 0; // pixels left of the packet
    bool run_ = false;
    const std::uint8_t* value_ = nullptr;
};

void putColor(std::uint8_t* to, Rgba color, int channels) {
    to[0] = color.r;
    to[1] = color.g;
    to[2] = color.b;
    if (channels == 4) to[3] = color.a;
}

void convertRow(const TgaHeader& header, const std::uint8_t* from, std::uint8_t* to) {
    const std::ptrdiff_t channels = bytesPerPixel(header.type());
    const std::ptrdiff_t unit = (header.bits + 7) / 8;
    const std::ptrdiff_t step = header.rightToLeft ? -channels : channels;
    if (header.rightToLeft) to += channels * (header.width - 1);
    for (int x = 0; x < header.width; ++x, from += unit, to += step) {
        if (!header.manyColors.empty()) {
            putColor(to, header.manyColors[from[0] | std::size_t{from[1]} << 8],
                     static_cast<int>(channels));
        } else if (header.kind != TgaKind::Color) {
            std::memcpy(to, from, static_cast<std::size_t>(channels));
        } else if (unit == 2) {
            const std::uint32_t value = from[0] | std::uint32_t{from[1]} << 8;
            Rgba color = color16(value);
            color.a = value & 0x8000 ? 255 : 0;
            putColor(to, color, static_cast<int>(channels));
        } else {
            putColor(to, {from[2], from[1], from[0], unit == 4 ? from[3] : std::uint8_t{255}},
                     static_cast<int>(channels));
        }
    }
}

bool anyAlpha(ConstView view) {
    const std::size_t step = static_cast<std::size_t>(bytesPerPixel(view.type));
    const std::size_t size = rowBytes(view.type, view.width);
    for (int y = 0; y < view.height; ++y)
        for (std::size_t at = step - 1; at < size; at += step)
            if (view.row(y)[at] != 0) return true;
    return false;
}

void divideByAlpha(const View& view) {
    const int channels = bytesPerPixel(view.type);
    for (int y = 0; y < view.height; ++y) {
        std::uint8_t* pixel = view.row(y);
        for (int x = 0; x < view.width; ++x, pixel += channels) {
            const int alpha = pixel[channels - 1];
            for (int c = 0; alpha != 0 && c < channels - 1; ++c)
                pixel[c] =
                    static_cast<std::uint8_t>(std::min(255, (pixel[c] * 255 + alpha / 2) / alpha));
        }
    }
}

} // namespace

ImageType TgaHeader::type() const {
    const bool withAlpha = alpha != TgaAlpha::None;
    switch (kind) {
    case TgaKind::Palette:
        if (!manyColors.empty()) return withAlpha ? ImageType::Rgba32 : ImageType::Rgb24;
        return palette.hasTransparency() ? ImageType::Indexed8Alpha : ImageType::Indexed8;
    case TgaKind::Gray:
        return withAlpha ? ImageType::GrayAlpha16 : ImageType::Gray8;
    default:
        return withAlpha ? ImageType::Rgba32 : ImageType::Rgb24;
    }
}

bool isTga(std::span<const std::uint8_t> file) {
    if (file.size() <= tga::headerSize) return false;
    const LittleFields fields(file);
    const int type = file[2];
    const bool known = (type >= 1 && type <= 3) || (type >= 9 && type <= 11);
    const bool sized = fields.u16(12) > 0 && fields.u16(14) > 0;
    if (!known || file[1] > 1 || !sized || !depthFits(type & 7, file[16])) return false;
    constexpr int attributes = 0x0f, interleaving = 0xc0;
    return hasFooter(file) ||
           (paletteFits(file) && (file[17] & attributes) <= 8 && !(file[17] & interleaving));
}

TgaHeader readTgaHeader(std::span<const std::uint8_t> file) {
    if (!isTga(file)) refuse("The TGA file has no valid header.");
    const LittleFields fields(file);
    TgaHeader header;
    header.width = static_cast<int>(fields.u16(12));
    header.height = static_cast<int>(fields.u16(14));
    constexpr TgaKind kinds[] = {TgaKind::Palette, TgaKind::Color, TgaKind::Gray};
    header.kind = kinds[(file[2] & 7) - 1];
    header.packed = file[2] > 8;
    header.bits = file[16];
    header.rightToLeft = (file[17] & 0x10) != 0;
    header.topDown = (file[17] & 0x20) != 0;
    const auto extension = extensionOf(file);
    header.alpha = alphaOf(header, file[17] & 0x0f, extension);
    if (!extension.empty()) header.comment = commentIn(extension);
    std::uint64_t at = tga::headerSize + std::uint64_t{file[0]};
    std::vector<Rgba> colors;
    if (file[1] == 1) {
        const int bits = file[7];
        const std::uint64_t size = std::uint64_t{fields.u16(5)} * ((std::uint64_t(bits) + 7) / 8);
        if (header.kind == TgaKind::Palette && paletteFits(file))
            colors = readColors(partOf(file, at, size), fields.u16(3), bits, header.alpha,
                                std::size_t{1} << header.bits);
        at += size;
    }
    if (header.kind == TgaKind::Palette) setColors(header, std::move(colors));
    header.pixels = partOf(file, at, file.size());
    return header;
}

Raster readTgaPixels(const TgaHeader& header, Task& task, std::vector<std::string>& warnings) {
    Raster raster = Raster::uninitialized(header.type(), header.width, header.height);
    if (hasPalette(raster.type())) raster.setPalette(header.palette);
    const View view = raster.edit();
    const std::size_t unit = static_cast<std::size_t>(header.bits + 7) / 8;
    std::vector<std::uint8_t> row(unit * static_cast<std::size_t>(header.width));
    Rows rows(header, unit);
    int y = 0;
    for (; y < header.height && rows.next(row); ++y)
        convertRow(header, row.data(), view.row(header.topDown ? y : header.height - 1 - y));
    const bool alphaBytes = !hasPalette(raster.type()) && hasAlpha(raster.type());
    blackenMissingRows(view, raster.palette(), y, header.topDown, "TGA", warnings);
    if (!alphaBytes) return raster;
    if (header.alpha == TgaAlpha::Premultiplied) divideByAlpha(view);
    if (header.alpha != TgaAlpha::Undecided) return raster;
    const int top = header.topDown ? 0 : header.height - y;
    if (y > 0 && anyAlpha(ConstView{view.row(top), view.stride, view.width, y, view.type}))
        return raster;
    const bool gray = header.kind == TgaKind::Gray;
    return convertType(raster, gray ? ImageType::Gray8 : ImageType::Rgb24, task);
}

} // namespace kvn::imaging
