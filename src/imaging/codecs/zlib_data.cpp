#include "imaging/codecs/zlib_data.h"

#include <algorithm>
#include <memory>
#include <new>

#include <libdeflate.h>

namespace kvn::imaging {

std::optional<Bytes> inflateZlib(std::span<const std::uint8_t> stream, std::size_t most) {
    struct Free {
        void operator()(libdeflate_decompressor* d) const { libdeflate_free_decompressor(d); }
    };
    const std::unique_ptr<libdeflate_decompressor, Free> inflater(libdeflate_alloc_decompressor());
    if (!inflater) throw std::bad_alloc();
    std::size_t room = std::min(most, 4 * stream.size() + 256);
    for (;;) {
        Bytes data(room);
        std::size_t size = 0;
        const auto result = libdeflate_zlib_decompress(inflater.get(), stream.data(), stream.size(),
                                                       data.data(), data.size(), &size);
        if (result == LIBDEFLATE_SUCCESS) {
            data.resize(size);
            return data;
        }
        if (result != LIBDEFLATE_INSUFFICIENT_SPACE || room >= most) return {};
        room = std::min(most, 4 * room);
    }
}

Bytes deflateZlib(std::span<const std::uint8_t> data) {
    struct Free {
        void operator()(libdeflate_compressor* c) const { libdeflate_free_compressor(c); }
    };
    constexpr int level = 9;
    const std::unique_ptr<libdeflate_compressor, Free> compressor(
        libdeflate_alloc_compressor(level));
    if (!compressor) throw std::bad_alloc();
    Bytes stream(libdeflate_zlib_compress_bound(compressor.get(), data.size()));
    stream.resize(libdeflate_zlib_compress(compressor.get(), data.data(), data.size(),
                                           stream.data(), stream.size()));
    return stream;
}

} // namespace kvn::imaging
