// Bits in the order of the deflate format: the first one is the lowest of its byte.
#pragma once

#include <algorithm>
#include <bit>
#include <cstdint>
#include <cstring>
#include <span>

#include "imaging/metadata.h"

namespace kvn::imaging {

// Appends to `out`. Room is made ahead, so that single codes are stored without a check.
class BitWriter {
  public:
    // Goes on at the bit `bitsUsed` (0..7) of the last byte; 0 starts a new byte.
    explicit BitWriter(Bytes& out, int bitsUsed = 0) : out_(out), used_(out.size()) {
        if (bitsUsed == 0) return;
        bits_ = out_.back();
        count_ = bitsUsed;
        --used_;
    }
    ~BitWriter() { out_.resize(used_); }
    BitWriter(const BitWriter&) = delete;
    BitWriter& operator=(const BitWriter&) = delete;

    // Room for that many bytes more, beside what is pending.
    void reserve(std::size_t bytes) { out_.resize(used_ + bytes + 16); }

    // At most 56 bits between two calls of flush().
    void add(std::uint64_t bits, int count) {
        bits_ |= bits << count_;
        count_ += count;
    }
    void flush() {
        static_assert(std::endian::native == std::endian::little);
        std::memcpy(out_.data() + used_, &bits_, 8);
        used_ += static_cast<std::size_t>(count_ >> 3);
        bits_ >>= count_ & 56;
        count_ &= 7;
    }
    // An empty stored block, which ends on a byte.
    void sync() {
        reserve(16);
        flush();
        add(0, 3);
        count_ = (count_ + 7) & ~7;
        flush();
        add(0xffff0000u, 32);
        flush();
    }

  private:
    Bytes& out_;
    std::size_t used_; // whole bytes written
    std::uint64_t bits_ = 0;
    int count_ = 0;
};

// Reads past the end as zeros; atEnd() tells.
class BitReader {
  public:
    explicit BitReader(std::span<const std::uint8_t> data) : data_(data) {}

    // Up to 24 bits.
    std::uint32_t peek(int count) const {
        std::uint32_t value = 0;
        const std::size_t byte = at_ >> 3;
        if (byte < data_.size())
            std::memcpy(&value, data_.data() + byte, std::min<std::size_t>(4, data_.size() - byte));
        return value >> (at_ & 7) & ((std::uint32_t{1} << count) - 1);
    }
    void skip(std::size_t count) { at_ += count; }
    std::uint32_t take(int count) {
        const std::uint32_t value = peek(count);
        skip(static_cast<std::size_t>(count));
        return value;
    }
    void alignToByte() { at_ = (at_ + 7) & ~std::size_t{7}; }
    std::size_t position() const { return at_; }
    bool atEnd() const { return at_ > data_.size() * 8; }

  private:
    std::span<const std::uint8_t> data_;
    std::size_t at_ = 0; // in bits
};

} // namespace kvn::imaging
