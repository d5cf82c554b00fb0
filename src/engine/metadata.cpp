#include "engine/metadata.h"

#include "basic/error.h"
#include "engine/detail/file_io.h"
#include "engine/detail/page_list.h"
#include "imaging/exif.h"
#include "imaging/metadata/exif_block.h"
#include "imaging/metadata/orientation.h"

namespace kvn::engine {
namespace {

std::vector<MetadataItem> items(const std::vector<imaging::MetadataTag>& tags) {
    std::vector<MetadataItem> list;
    list.reserve(tags.size());
    for (const imaging::MetadataTag& tag : tags)
        list.push_back({QString::fromStdString(tag.name), QString::fromStdString(tag.value)});
    return list;
}

const imaging::Metadata& metadataOf(const detail::PageRef& page) {
    static const imaging::Metadata none;
    const detail::PageState& state = detail::pageOf(page);
    return state.metadata ? *state.metadata : none;
}

MetadataItem itemAt(const std::vector<MetadataItem>& list, int index, const char* source) {
    if (index < 0 || index >= static_cast<int>(list.size()))
        throw RuntimeError(errors::subscriptOutOfRange, "Subscript out of range", source);
    return list[static_cast<std::size_t>(index)];
}

} // namespace

void Exif::Load(int) {
    items_ = items(imaging::exifTags(metadataOf(page_)));
    loaded_ = true;
}

int Exif::Count() {
    if (!loaded_) Load(-1);
    return static_cast<int>(items_.size());
}

MetadataItem Exif::Item(int index) {
    if (!loaded_) Load(-1);
    return itemAt(items_, index, "Exif.Item");
}

bool Exif::HasThumbnail() const {
    return !imaging::exifThumbnail(metadataOf(page_)).empty();
}

Image Exif::Thumbnail() const {
    const imaging::Metadata& metadata = metadataOf(page_);
    const imaging::Bytes bytes = imaging::exifThumbnail(metadata);
    if (bytes.empty()) return {};
    Image thumbnail(detail::listOf(page_).engine(), "Thumbnail");
    detail::PageList& list = *thumbnail.ref().list;
    imaging::Task task;
    try {
        list.state.pages = detail::readBytes(QByteArray(reinterpret_cast<const char*>(bytes.data()),
                                                        static_cast<qsizetype>(bytes.size())),
                                             {}, 0, task);
    } catch (const RuntimeError&) {
        // A thumbnail that cannot be read is none.
        return {};
    }
    // It lies as the camera was held, and the block that says so is the picture's.
    using imaging::ExifBlock;
    const auto held =
        ExifBlock(metadata.exif).number(ExifBlock::Directory::Main, ExifBlock::orientation);
    imaging::Raster& raster = list.state.pages.front().raster;
    raster = imaging::turnedUpright(raster, static_cast<int>(held.value_or(1)), task);
    list.state.current = 0;
    list.markSaved();
    return thumbnail;
}

void Iptc::Load(int) {
    items_ = items(imaging::iptcTags(metadataOf(page_)));
    loaded_ = true;
}

int Iptc::Count() {
    if (!loaded_) Load(-1);
    return static_cast<int>(items_.size());
}

MetadataItem Iptc::Item(int index) {
    if (!loaded_) Load(-1);
    return itemAt(items_, index, "Iptc.Item");
}

} // namespace kvn::engine
