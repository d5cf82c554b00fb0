// From a PNG's rows of 1- to 16-bit samples to rows of one of the seven types.
#pragma once

#include "imaging/codecs/png_chunks.h"
#include "imaging/raster.h"

namespace kvn::imaging {

ImageType pngImageType(const PngOutline& outline);

class PngRowConverter {
  public:
    explicit PngRowConverter(const PngOutline& outline);

    ImageType type() const { return type_; }
    // The file's rows are the raster's rows, and convert() only copies.
    bool isDirect() const { return isDirect_; }
    void convert(const std::uint8_t* file, std::uint8_t* row) const;

    Palette palette() const;

  private:
    void unpackIndexes(const std::uint8_t* file, std::uint8_t* row) const;
    void convertSamples(const std::uint8_t* file, std::uint8_t* row) const;
    int sample(const std::uint8_t* file, std::size_t index) const;
    std::uint8_t scaled(int sample) const;

    const PngOutline& outline_;
    PngHeader header_;
    ImageType type_;
    bool isDirect_ = false;
    // The colour that is transparent, in the file's own samples.
    std::optional<std::array<int, 3>> key_;
};

} // namespace kvn::imaging
