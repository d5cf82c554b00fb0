#include "imaging/raster.h"

#include <cstring>
#include <utility>

#include "basic/error.h"

namespace kvn::imaging {

namespace {

PixelBuffer allocate(ImageType type, int width, int height, bool zeroed) {
    if (width < 1 || height < 1)
        throw RuntimeError(errors::invalidCall, "A picture needs at least one pixel", "Imaging");
    const std::size_t bytes = rowBytes(type, width);
    return zeroed ? PixelBuffer::zeroed(bytes, height) : PixelBuffer(bytes, height);
}

// The bytes that stand for a colour in a type that stores whole bytes. Palette types: its index.
void encode(ImageType type, const Palette& palette, Rgba color, std::uint8_t* bytes) {
    switch (type) {
    case ImageType::Bit1:
    case ImageType::Indexed8:
        color.a = 255;
        [[fallthrough]];
    case ImageType::Indexed8Alpha:
        bytes[0] = static_cast<std::uint8_t>(palette.nearest(color));
        break;
    case ImageType::Gray8:
        bytes[0] = luma(color.r, color.g, color.b);
        break;
    case ImageType::GrayAlpha16:
        bytes[0] = luma(color.r, color.g, color.b);
        bytes[1] = color.a;
        break;
    case ImageType::Rgba32:
        bytes[3] = color.a;
        [[fallthrough]];
    case ImageType::Rgb24:
        bytes[0] = color.r;
        bytes[1] = color.g;
        bytes[2] = color.b;
        break;
    }
}

void fillRow(const View& view, int y, const std::uint8_t* bytes) {
    std::uint8_t* row = view.row(y);
    const std::size_t payload = rowBytes(view.type, view.width);
    const auto step = static_cast<std::size_t>(bytesPerPixel(view.type));
    if (step == 0) {
        std::memset(row, bytes[0] ? 0xFF : 0, payload);
    } else if (step == 1) {
        std::memset(row, bytes[0], payload);
    } else {
        for (std::size_t i = 0; i < payload; i += step)
            std::memcpy(row + i, bytes, step);
    }
}

// Bits x.. of `from`, moved to the start of `to`.
void copyBits(const std::uint8_t* from, int x, std::uint8_t* to, int width) {
    from += x / 8;
    const int shift = x % 8;
    const int bytes = (width + 7) / 8;
    const int available = (shift + width + 7) / 8;
    for (int i = 0; i < bytes; ++i) {
        const int next = i + 1 < available ? from[i + 1] : 0;
        to[i] = static_cast<std::uint8_t>(((from[i] << 8 | next) << shift) >> 8);
    }
}

bool sameRow(ImageType type, int width, const std::uint8_t* a, const std::uint8_t* b) {
    if (type != ImageType::Bit1) return std::memcmp(a, b, rowBytes(type, width)) == 0;
    const auto whole = static_cast<std::size_t>(width / 8);
    if (std::memcmp(a, b, whole) != 0) return false;
    const int rest = width % 8;
    return rest == 0 || ((a[whole] ^ b[whole]) >> (8 - rest)) == 0;
}

} // namespace

Raster::Raster(ImageType type, int width, int height)
    : type_(type), width_(width), height_(height), pixels_(allocate(type, width, height, true)) {
    if (type == ImageType::Bit1) palette_ = Palette::blackAndWhite();
}

Raster Raster::uninitialized(ImageType type, int width, int height) {
    Raster raster;
    raster.pixels_ = allocate(type, width, height, false);
    raster.type_ = type;
    raster.width_ = width;
    raster.height_ = height;
    if (type == ImageType::Bit1) raster.palette_ = Palette::blackAndWhite();
    return raster;
}

Raster Raster::filled(ImageType type, int width, int height, Rgba color) {
    Raster raster = uninitialized(type, width, height);
    if (type == ImageType::Indexed8) raster.palette_ = Palette({{color.r, color.g, color.b, 255}});
    if (type == ImageType::Indexed8Alpha) raster.palette_ = Palette({color});
    std::uint8_t bytes[4] = {};
    encode(type, raster.palette_, color, bytes);
    const View view = raster.edit();
    fillRow(view, 0, bytes);
    for (int y = 1; y < height; ++y)
        std::memcpy(view.row(y), view.row(0), raster.rowBytes());
    return raster;
}

ConstView Raster::view() const {
    return {pixels_.data(), pixels_.stride(), width_, height_, type_};
}

View Raster::edit() {
    return {pixels_.detach(), pixels_.stride(), width_, height_, type_};
}

Rgba Raster::pixel(int x, int y) const {
    if (x < 0 || y < 0 || x >= width_ || y >= height_) return {0, 0, 0, 0};
    if (hasPalette(type_)) {
        Rgba color = palette_[index(x, y)];
        if (!hasAlpha(type_)) color.a = 255;
        return color;
    }
    const std::uint8_t* p = pixels_.row(y) + x * bytesPerPixel(type_);
    switch (type_) {
    case ImageType::Gray8:
        return {p[0], p[0], p[0], 255};
    case ImageType::GrayAlpha16:
        return {p[0], p[0], p[0], p[1]};
    case ImageType::Rgba32:
        return {p[0], p[1], p[2], p[3]};
    default:
        return {p[0], p[1], p[2], 255};
    }
}

std::uint8_t Raster::index(int x, int y) const {
    if (x < 0 || y < 0 || x >= width_ || y >= height_) return 0;
    const std::uint8_t* row = pixels_.row(y);
    switch (type_) {
    case ImageType::Bit1:
        return (row[x / 8] >> (7 - x % 8)) & 1;
    case ImageType::Indexed8:
    case ImageType::Indexed8Alpha:
    case ImageType::Gray8:
        return row[x];
    case ImageType::GrayAlpha16:
        return row[2 * x];
    default:
        return 0;
    }
}

void Raster::setPixel(int x, int y, Rgba color) {
    if (x < 0 || y < 0 || x >= width_ || y >= height_) return;
    std::uint8_t bytes[4] = {};
    encode(type_, palette_, color, bytes);
    std::uint8_t* row = edit().row(y);
    const auto step = static_cast<std::size_t>(bytesPerPixel(type_));
    if (step > 0) {
        std::memcpy(row + static_cast<std::size_t>(x) * step, bytes, step);
        return;
    }
    const int bit = 0x80 >> (x % 8);
    row[x / 8] = static_cast<std::uint8_t>(bytes[0] & 1 ? row[x / 8] | bit : row[x / 8] & ~bit);
}

Raster Raster::cropped(const Rect& rect) const {
    const Rect part = rect.intersected(this->rect());
    if (part.isEmpty())
        throw RuntimeError(errors::invalidCall, "The rectangle lies outside the picture",
                           "Imaging");
    if (part == this->rect()) return *this;
    Raster result = uninitialized(type_, part.width, part.height);
    result.palette_ = palette_;
    const View to = result.edit();
    const int step = bytesPerPixel(type_);
    for (int y = 0; y < part.height; ++y) {
        const std::uint8_t* from = pixels_.row(part.y + y);
        if (step == 0)
            copyBits(from, part.x, to.row(y), part.width);
        else
            std::memcpy(to.row(y), from + static_cast<std::size_t>(part.x) * step,
                        result.rowBytes());
    }
    return result;
}

bool Raster::samePixels(const Raster& other) const {
    if (type_ != other.type_ || size() != other.size()) return false;
    if (hasPalette(type_) && palette_ != other.palette_) return false;
    if (sharesPixelsWith(other)) return true;
    for (int y = 0; y < height_; ++y)
        if (!sameRow(type_, width_, pixels_.row(y), other.pixels_.row(y))) return false;
    return true;
}

} // namespace kvn::imaging
