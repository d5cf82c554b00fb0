// Numbers of several bytes inside a file, in either byte order.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>

#include "imaging/metadata.h"

namespace kvn::imaging {

// Reads at an offset from the start; what lies behind the end reads as 0.
template <bool BigEndian>
class FieldsOf {
  public:
    explicit FieldsOf(std::span<const std::uint8_t> bytes) : bytes_(bytes) {}
    std::uint32_t byte(std::size_t at) const { return at < bytes_.size() ? bytes_[at] : 0; }
    std::uint32_t u16(std::size_t at) const {
        return BigEndian ? byte(at) << 8 | byte(at + 1) : byte(at) | byte(at + 1) << 8;
    }
    std::uint32_t u32(std::size_t at) const {
        return BigEndian ? u16(at) << 16 | u16(at + 2) : u16(at) | u16(at + 2) << 16;
    }
    std::uint64_t u64(std::size_t at) const {
        const std::uint64_t first = u32(at), second = u32(at + 4);
        return BigEndian ? first << 32 | second : first | second << 32;
    }

  private:
    std::span<const std::uint8_t> bytes_;
};
using LittleFields = FieldsOf<false>;
using BigFields = FieldsOf<true>;

// The lowest `size` bytes of the value at the end of `out`.
inline void putLittle(Bytes& out, std::uint64_t value, int size) {
    for (int i = 0; i < size; ++i)
        out.push_back(static_cast<std::uint8_t>(value >> 8 * i));
}
inline void putBig(Bytes& out, std::uint64_t value, int size) {
    for (int i = size - 1; i >= 0; --i)
        out.push_back(static_cast<std::uint8_t>(value >> 8 * i));
}

// The part of the bytes that lies in both ranges; empty if none does.
inline std::span<const std::uint8_t> partOf(std::span<const std::uint8_t> bytes, std::uint64_t at,
                                            std::uint64_t size) {
    if (at >= bytes.size()) return {};
    const auto start = static_cast<std::size_t>(at);
    const std::size_t rest = bytes.size() - start;
    return bytes.subspan(start, size < rest ? static_cast<std::size_t>(size) : rest);
}

} // namespace kvn::imaging
