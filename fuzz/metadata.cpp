// Any bytes as an EXIF block, as IPTC records, as image resources and as a JPEG's markers: listed,
// edited for a picture, copied from file to file.
#include "basic/error.h"
#include "fuzz/one_input.h"
#include "imaging/codecs/all.h"
#include "imaging/exif.h"
#include "imaging/metadata/copy.h"
#include "imaging/metadata/for_writing.h"
#include "imaging/metadata/photoshop.h"

using namespace kvn;
using namespace kvn::imaging;

namespace {

const Bytes& plainJpeg() {
    static const Bytes jpeg = [] {
        const Page page{Raster(ImageType::Rgb24, 8, 8), nullptr, {}};
        MemorySink sink;
        Task task;
        jpegCodec().write({&page, 1}, {}, sink, task);
        return sink.bytes();
    }();
    return jpeg;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const fuzz::InputClock clock;
    Metadata metadata;
    metadata.exif = metadata.iptc = metadata.photoshop = metadata.xmp = metadata.icc =
        Bytes(data, data + size);
    exifTags(metadata);
    exifThumbnail(metadata);
    iptcTags(metadata);
    metadata.iptc = iptcInPhotoshop(metadata.photoshop);
    iptcTags(metadata);
    metadataForWriting(metadata, Raster(ImageType::Rgb24, 16, 16), false);
    for (const auto& [source, destination] :
         {std::pair{metadata.exif, plainJpeg()}, std::pair{plainJpeg(), metadata.exif}}) {
        try {
            jpegWithMetadataOf(source, destination);
        } catch (const RuntimeError&) {
            // Bytes that are no JPEG.
        }
    }
    return 0;
}
