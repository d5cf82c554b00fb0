#include <QFileInfo>

#include "basic/error.h"
#include "engine/detail/page_list.h"
#include "engine/detail/runner.h"
#include "engine/detail/trace_values.h"
#include "engine/image.h"
#include "engine/metadata.h"
#include "engine/palette.h"
#include "imaging/convert.h"
#include "imaging/exif.h"

namespace kvn::engine {

using detail::ListState;
using detail::PageList;
using detail::pageOf;
using detail::PageState;
using imaging::ImageType;

bool Info::Changed() const {
    const PageState* page = detail::listOf(page_).find(page_.page);
    return page && page_.list->isChanged(*page);
}

int Info::ColorCount() const {
    const imaging::Raster& raster = pageOf(page_).raster;
    switch (raster.type()) {
    case ImageType::Bit1:
        return 2;
    case ImageType::Indexed8:
    case ImageType::Indexed8Alpha:
        return static_cast<int>(raster.palette().size());
    case ImageType::Gray8:
    case ImageType::GrayAlpha16:
        return 256;
    default:
        return 1 << 24;
    }
}

int Info::ColorDepth() const {
    return imaging::bitsPerPixel(pageOf(page_).raster.type());
}

void Info::ConvertType(const QString& label, int type) {
    PageList& list = detail::listOf(page_);
    detail::changeState(list, {"Info.ConvertType", {label, type}, label, "Convert Type"},
                        [&](ListState& next, imaging::Task& task) {
                            if (!imaging::isImageType(type))
                                throw RuntimeError(errors::invalidCall,
                                                   "There is no such image type.",
                                                   "Info.ConvertType");
                            const imaging::Raster& source = pageOf(page_).raster;
                            imaging::Raster converted =
                                imaging::convertType(source, static_cast<ImageType>(type), task);
                            detail::replaceContent(detail::pageForReplacing(next, list, page_.page),
                                                   std::move(converted));
                        });
}

void Info::CopyMetadata(const QString& source, const QString& destination) {
    PageList& list = detail::listOf(page_);
    detail::recordCall(list.engine(), list.who, "Info.CopyMetadata", {source, destination}, [&] {
        const std::string from = source.toStdString(), to = destination.toStdString();
        if (QFileInfo::exists(destination)) return imaging::copyMetadata(from, to);
        const PageState& page = pageOf(page_);
        detail::ProgressReport progress(list, "Save");
        imaging::copyMetadata(from, {page.raster, page.metadata, {}}, list.options, to,
                              progress.task());
    });
}

engine::Exif Info::Exif() const {
    return engine::Exif(page_);
}
engine::Iptc Info::Iptc() const {
    return engine::Iptc(page_);
}
int Info::FileType() const {
    return static_cast<int>(pageOf(page_).fileType);
}

Color Info::GetPixel(int x, int y) const {
    const imaging::Raster& raster = pageOf(page_).raster;
    const bool indexed = imaging::hasPalette(raster.type());
    return detail::colorOf(raster.pixel(x, y), indexed ? raster.index(x, y) : 0);
}

void Info::SetPixel(int x, int y, const Color& color) {
    PageList& list = detail::listOf(page_);
    const int index = list.indexOf(page_.page);
    if (index < 0) throw RuntimeError(errors::objectNotSet, "There is no image.", "Info.SetPixel");
    PageState& page = list.state.pages[static_cast<std::size_t>(index)];
    const bool shown = list.observer && index == list.state.current;
    // The first of a run of pixels; the others go on from its content.
    if (page.stamp != list.pixelStamp) list.history.hold(list.state);
    if (shown) list.observer->releasePicture();
    page.raster.setPixel(x, y, detail::rgbaOf(color));
    list.pixelStamp = page.stamp = PageList::nextId();
    ++list.generation;
    if (shown) list.observer->pixelSet(x, y);
}

bool Info::HasAlpha() const {
    return imaging::hasAlpha(pageOf(page_).raster.type());
}
int Info::Width() const {
    return pageOf(page_).raster.width();
}
int Info::Height() const {
    return pageOf(page_).raster.height();
}
int Info::ListIndex() const {
    return detail::listOf(page_).indexOf(page_.page);
}
QString Info::Name() const {
    return QString::fromStdString(pageOf(page_).name);
}
int Info::TypeIndex() const {
    return static_cast<int>(pageOf(page_).raster.type());
}

engine::Palette Info::Palette() const {
    return engine::Palette(page_);
}

engine::Image Info::Image() const {
    const PageState* page = page_.list ? page_.list->find(page_.page) : nullptr;
    return page ? engine::Image({page_.list, page->id}) : engine::Image(page_);
}

} // namespace kvn::engine
