// The TIFF library over bytes in memory and over a sink: handles that close themselves and keep
// the library's messages to themselves. Nothing is thrown through the library.
#pragma once

#include <cstdint>
#include <exception>
#include <memory>
#include <span>
#include <string>

#include <tiffio.h>

#include "imaging/byte_io.h"

namespace kvn::imaging {

class TiffReader {
  public:
    // Throws RuntimeError(invalidPicture) for a broken header. Reads no directory yet.
    explicit TiffReader(std::span<const std::uint8_t> file);
    ~TiffReader();
    TiffReader(const TiffReader&) = delete;
    TiffReader& operator=(const TiffReader&) = delete;

    // Makes the directory at `offset` the current one. Throws invalidPicture if it cannot be
    // used.
    void select(std::uint64_t offset);
    TIFF* get() const { return tiff_; }
    // The library's first error since the last select(), empty if none.
    const std::string& error() const { return state_->error; }

    // A field of whole numbers with the library's default for a missing one.
    std::uint16_t word(std::uint32_t tag) const;

    struct State {
        std::span<const std::uint8_t> file;
        std::uint64_t at = 0;
        std::string error;
    };

  private:
    std::unique_ptr<State> state_; // the library holds its address
    TIFF* tiff_ = nullptr;
};

class TiffWriter {
  public:
    // `mode` as the library's: "w" with "l" or "b" for the byte order and "8" for 64-bit
    // offsets; "a" continues the file that stands in the sink.
    TiffWriter(ByteSink& sink, const std::string& mode);
    ~TiffWriter();
    TiffWriter(const TiffWriter&) = delete;
    TiffWriter& operator=(const TiffWriter&) = delete;

    TIFF* get() const { return tiff_; }
    // Throws what went wrong in the sink, or RuntimeError(deviceIo) with the library's message,
    // if `ok` is false.
    void require(bool ok) const;
    template <typename... Value>
    void set(std::uint32_t tag, Value... value) const {
        require(TIFFSetField(tiff_, tag, value...) == 1);
    }

    struct State {
        ByteSink* sink = nullptr;
        std::uint64_t at = 0; // may be past the end, until something is written there
        std::exception_ptr failure;
        std::string error;
    };

  private:
    std::unique_ptr<State> state_;
    TIFF* tiff_ = nullptr;
};

} // namespace kvn::imaging
