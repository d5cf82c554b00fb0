// Rows of bytes, shared until one holder writes. It knows nothing of pixels.
//
// Copying a PixelBuffer shares the memory; detach() gives this holder memory of its own. Rows
// start at multiples of 64 bytes, and 64 bytes past the last row may be read. Large blocks are
// mapped with huge pages and the last few freed ones are kept for the next request, since fresh
// pages cost more than most operations do.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>

namespace kvn::imaging {

class PixelBuffer {
  public:
    PixelBuffer() = default;
    // Uninitialised rows. Throws RuntimeError(outOfMemory) if the size overflows, is above
    // maxBytes() or the memory is not to be had.
    PixelBuffer(std::size_t rowBytes, int rows) : PixelBuffer(rowBytes, rows, false) {}
    // The same with every byte 0, for less than a fill costs where the memory is fresh.
    static PixelBuffer zeroed(std::size_t rowBytes, int rows) { return {rowBytes, rows, true}; }

    // What one row of so many bytes takes.
    static constexpr std::size_t strideFor(std::size_t rowBytes) {
        return (rowBytes + rowAlignment - 1) / rowAlignment * rowAlignment;
    }

    bool isNull() const { return !block_; }
    int rows() const { return rows_; }
    std::size_t stride() const { return stride_; }
    std::size_t byteSize() const { return stride_ * static_cast<std::size_t>(rows_); }

    const std::uint8_t* data() const;
    const std::uint8_t* row(int y) const { return data() + stride_ * static_cast<std::size_t>(y); }

    // Makes this holder the only one, with a copy if it is not, and gives its memory. Not to be
    // called from two threads at once: detach before the work is split.
    std::uint8_t* detach();

    bool isShared() const { return block_.use_count() > 1; }
    bool sharesWith(const PixelBuffer& other) const { return block_ == other.block_; }

    // The largest single block; 16 GiB unless set. Files have a stricter limit of their own.
    static std::size_t maxBytes();
    static void setMaxBytes(std::size_t bytes);
    // Gives kept blocks back to the system.
    static void trimCache();

  private:
    static constexpr std::size_t rowAlignment = 64;

    struct Block;
    PixelBuffer(std::size_t rowBytes, int rows, bool zeroed);

    std::shared_ptr<Block> block_;
    std::size_t stride_ = 0;
    int rows_ = 0;
};

} // namespace kvn::imaging
