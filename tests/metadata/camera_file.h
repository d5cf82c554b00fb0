// A picture file as a camera makes it, for tests of metadata.
#pragma once

#include "document/desk.h"
#include "imaging/codec_pages.h"
#include "imaging/codecs/all.h"
#include "imaging/support/exif_maker.h"
#include "metadata/metadata_commands.h"

namespace kvn::test {

// A desk at which the metadata commands are known.
struct MetadataDesk : Desk {
    MetadataDesk() { metadata::addMetadataCommands(state.commands); }

    bool run(frmMain& document, int index) {
        return document::runCommand(document, "Metadata", index);
    }
    QByteArray bytes(const QString& name) const {
        QFile file(path(name));
        return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
    }
};

// Dark on the left, so that a small one shows the same as a large one.
inline Raster slope(int width, int height) {
    Raster raster(ImageType::Rgb24, width, height);
    for (int y = 0; y < height; ++y)
        for (int x = 0; x < width; ++x) {
            const auto level = static_cast<std::uint8_t>(x * 255 / width);
            raster.setPixel(x, y, {level, level, level, 255});
        }
    return raster;
}

inline Bytes jpegOf(const Raster& raster) {
    return written(jpegCodec(), {{raster, nullptr, {}}});
}

inline Metadata cameraMetadata() {
    Metadata metadata;
    metadata.exif = ExifMaker(true).make({{0x0112, 3, 1}, {0x0213, 3, 1}},
                                         {{0x8827, 3, 400}, {0xa002, 4, 64}, {0xa003, 3, 48}},
                                         jpegOf(slope(16, 12)));
    metadata.iptc = iptcRecord(25, "one");
    for (const std::uint8_t byte : iptcRecord(120, "a caption"))
        metadata.iptc.push_back(byte);
    metadata.xmp = bytesOf("<x:xmpmeta xmlns:x='adobe:ns:meta/'><rdf:RDF xmlns:rdf="
                           "'http://www.w3.org/1999/02/22-rdf-syntax-ns#'><rdf:Description "
                           "rdf:about='' xmlns:xmp='http://ns.adobe.com/xap/1.0/' xmp:Rating='4'/>"
                           "</rdf:RDF></x:xmpmeta>");
    metadata.comment = "a comment";
    metadata.xDpi = metadata.yDpi = 300;
    return metadata;
}

inline QString cameraFile(const Desk& desk, const QString& name,
                          const Metadata& metadata = cameraMetadata(),
                          const Codec& codec = jpegCodec()) {
    const auto file =
        written(codec, {{slope(64, 48), std::make_shared<const Metadata>(metadata), {}}});
    return desk.file(name, QByteArray(reinterpret_cast<const char*>(file.data()),
                                      static_cast<qsizetype>(file.size())));
}

} // namespace kvn::test
