// Small files of every format, to be damaged: what our writers make, and by hand what they do not.
#pragma once

#include <memory>

#include "imaging/codecs/codec.h"
#include "imaging/support/exif_maker.h"
#include "imaging/support/metafile_maker.h"

namespace kvn::test {

// Two frames of 3 by 2 pixels, four colours, the second frame on a part of the screen.
inline const imaging::Bytes handMadeGif = {
    'G', 'I', 'F', '8', '9', 'a', 3, 0,   2,    0,    0x91, 0,    0,    0,    0,    0, 255,
    0,   0,   0,   255, 0,   0,   0, 255, 0x21, 0xF9, 4,    0x09, 10,   0,    0,    0, 0x2C,
    0,   0,   0,   0,   3,   0,   2, 0,   0,    2,    4,    0x84, 0x12, 0x23, 0x05, 0, 0x2C,
    1,   0,   0,   0,   2,   0,   1, 0,   0,    2,    2,    0x0C, 0x0A, 0,    0x3B};

inline imaging::Raster stripes(imaging::ImageType type, int width, int height) {
    imaging::Raster raster(type, width, height);
    for (int y = 0; y < height; ++y)
        for (int x = 0; x < width; ++x)
            raster.setPixel(x, y,
                            {static_cast<std::uint8_t>(x * 7), static_cast<std::uint8_t>(y * 11),
                             static_cast<std::uint8_t>((x ^ y) * 8), 200});
    return raster;
}

// Every kind of metadata that a file can hold.
inline imaging::MetadataRef fullMetadata() {
    auto metadata = std::make_shared<imaging::Metadata>();
    metadata->comment = "a comment";
    metadata->xDpi = metadata->yDpi = 300;
    metadata->icc = imaging::Bytes(200, 7);
    metadata->exif = ExifMaker(true).make({{0x0112, 3, 6}}, {{0xa002, 3, 37}}, {1, 2, 3, 4});
    metadata->iptc = iptcRecord(25, "a word");
    metadata->xmp = bytesOf("<x:xmpmeta xmlns:x='adobe:ns:meta/'/>");
    return metadata;
}

inline std::vector<imaging::Bytes> sampleFiles(const imaging::Codec& codec, int width, int height) {
    using namespace imaging;
    if (!codec.canWrite())
        return codec.type() == FileType::Gif ? std::vector<Bytes>{handMadeGif}
                                             : std::vector<Bytes>{};
    std::vector<Bytes> files;
    WriteOptions options;
    for (int type = 0; type < imageTypeCount; ++type) {
        options.tiffCompression = type;
        options.bmpRle = options.jpegProgressive = options.wmfPlaceable = type % 2;
        const Raster raster = stripes(static_cast<ImageType>(type), width, height);
        const Page pages[] = {{raster, fullMetadata(), {}}, {raster, nullptr, {}}};
        MemorySink sink;
        Task task;
        codec.write({pages, codec.holdsPages() ? 2u : 1u}, options, sink, task);
        files.push_back(std::move(sink.bytes()));
    }
    if (codec.type() == FileType::Wmf) files.push_back(drawnWmf());
    if (codec.type() == FileType::Emf) files.push_back(drawnEmf());
    return files;
}

} // namespace kvn::test
