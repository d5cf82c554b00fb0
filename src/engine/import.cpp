#include <QClipboard>
#include <QGuiApplication>
#include <QImage>
#include <QMimeData>
#include <cstring>

#include "basic/error.h"
#include "basic/text.h"
#include "engine/detail/download.h"
#include "engine/detail/file_io.h"
#include "engine/detail/page_list.h"
#include "engine/detail/qt_image.h"
#include "engine/detail/runner.h"
#include "engine/detail/trace_values.h"
#include "engine/image.h"

namespace kvn::engine {

using detail::ListState;
using detail::PageList;
using detail::PageState;
using imaging::ImageType;

namespace {

// One page of a file goes into the page meant; all pages of a file take the place of the list.
void place(ListState& next, PageList& list, quint64 target, std::vector<PageState> pages,
           bool whole) {
    for (const PageState& page : pages)
        list.markSaved(page);
    if (whole) {
        next.pages = std::move(pages);
        next.current = 0;
        return;
    }
    PageState& page = detail::pageForReplacing(next, list, target);
    const quint64 id = page.id;
    page = std::move(pages.front());
    page.id = id;
}

// A picture that came from no file.
void placeRaster(ListState& next, PageList& list, quint64 target, imaging::Raster raster) {
    if (raster.isEmpty())
        throw RuntimeError(errors::invalidPicture, "There is no picture.", "Import");
    PageState page;
    page.stamp = PageList::nextId();
    page.raster = std::move(raster);
    const bool first = next.pages.empty();
    PageState& to = detail::pageForReplacing(next, list, target);
    page.id = to.id;
    to = std::move(page);
    if (first) list.markSaved(to);
}

QImage clipboardImage() {
    const QMimeData* data = QGuiApplication::clipboard()->mimeData();
    if (!data) return {};
    const QImage image = qvariant_cast<QImage>(data->imageData());
    return image.isNull() ? QImage::fromData(data->data("image/png")) : image;
}

// The pixels of another image of the same type, size and palette, from the bytes of an array.
imaging::Raster rasterFrom(const PixelArray& array, const imaging::Raster& like) {
    const auto wanted = static_cast<qint64>(array.width) * array.height * array.components;
    const int components = std::max(1, imaging::bytesPerPixel(like.type()));
    if (array.width != like.width() || array.height != like.height() ||
        array.components != components || array.bytes.size() != wanted)
        throw RuntimeError(errors::invalidCall, "The pixel array does not fit the image.",
                           "Import.FromPixels");
    imaging::Raster raster = like;
    const imaging::View view = raster.edit();
    const auto* from = reinterpret_cast<const std::uint8_t*>(array.bytes.constData());
    const std::size_t line = static_cast<std::size_t>(array.width) * components;
    for (int y = 0; y < view.height; ++y, from += line) {
        if (like.type() != ImageType::Bit1) {
            std::memcpy(view.row(y), from, line);
            continue;
        }
        std::memset(view.row(y), 0, raster.rowBytes());
        for (int x = 0; x < view.width; ++x)
            if (from[x]) view.row(y)[x >> 3] |= static_cast<std::uint8_t>(0x80 >> (x & 7));
    }
    return raster;
}

} // namespace

void Import::FromFile(const QString& path, int page, const QString& label) {
    PageList& list = detail::listOf(target_);
    detail::changeState(list, {"Import.FromFile", {path, page, label}, label, "Load"},
                        [&](ListState& next, imaging::Task& task) {
                            place(next, list, target_.page, detail::readFile(path, page, task),
                                  page == 0);
                        });
}

void Import::FromBytes(const QByteArray& bytes, int page, const QString& label) {
    PageList& list = detail::listOf(target_);
    detail::changeState(list, {"Import.FromBytes", {bytes.size(), page, label}, label, "Load"},
                        [&](ListState& next, imaging::Task& task) {
                            place(next, list, target_.page,
                                  detail::readBytes(bytes, {}, page, task), page == 0);
                        });
}

void Import::FromClipboard(const QString& label) {
    PageList& list = detail::listOf(target_);
    detail::changeState(list, {"Import.FromClipboard", {label}, label, "Paste"},
                        [&](ListState& next, imaging::Task&) {
                            const QImage image = clipboardImage();
                            if (image.isNull())
                                throw RuntimeError(errors::invalidPicture,
                                                   "The clipboard holds no picture.",
                                                   "Import.FromClipboard");
                            placeRaster(next, list, target_.page, detail::fromQImage(image));
                        });
}

void Import::FromImgX(const Image& source, int flag, const QString& label) {
    PageList& list = detail::listOf(target_);
    const QJsonArray args{detail::traced(source), flag, label};
    const QString name = detail::nameOfMaking(source.ref(), "Copy Image");
    detail::changeState(list, {"Import.FromImgX", args, label, name},
                        [&](ListState& next, imaging::Task&) {
                            const PageState& from = detail::pageOf(source.ref());
                            const bool changed = source.ref().list->isChanged(from);
                            const bool first = next.pages.empty();
                            PageState& page = detail::pageForReplacing(next, list, target_.page);
                            // Everything but the place in the list is the source's.
                            const quint64 id = page.id;
                            page = from;
                            page.id = id;
                            page.stamp = PageList::nextId();
                            if (first && !changed) list.markSaved(page);
                            if (list.singlePage) next = {{page}, 0};
                        });
    if (label.isEmpty()) list.made.clear();
}

void Import::FromPicture(const QPixmap& picture, const QString& label) {
    PageList& list = detail::listOf(target_);
    detail::changeState(list, {"Import.FromPicture", {QJsonValue(), label}, label, "Load"},
                        [&](ListState& next, imaging::Task&) {
                            placeRaster(next, list, target_.page,
                                        detail::fromQImage(picture.toImage()));
                        });
}

void Import::FromPixels(const PixelArray& pixels, const QString& label) {
    PageList& list = detail::listOf(target_);
    const QJsonArray args{pixels.bytes.size(), label};
    detail::changeState(list, {"Import.FromPixels", args, label, "Set Pixels"},
                        [&](ListState& next, imaging::Task&) {
                            const imaging::Raster& like = detail::pageOf(target_).raster;
                            detail::replaceContent(
                                detail::pageForReplacing(next, list, target_.page),
                                rasterFrom(pixels, like));
                        });
}

void Import::FromURL(const QString& url, const QString& label) {
    PageList& list = detail::listOf(target_);
    const QJsonArray args{url, label};
    // The picture may have become another while the bytes came; then it is not overwritten.
    const quint64 before = list.generation;
    QByteArray bytes;
    std::exception_ptr failure;
    try {
        bytes = detail::download(QUrl::fromUserInput(url), [&](qint64 read, qint64 total) {
            return list.observer && list.observer->download(read, total);
        });
    } catch (const RuntimeError&) {
        failure = std::current_exception();
    }
    detail::changeState(list, {"Import.FromURL", args, label, "Download"},
                        [&](ListState& next, imaging::Task& task) {
                            if (failure) std::rethrow_exception(failure);
                            if (list.generation != before) throw imaging::Cancelled{};
                            const QString name = QUrl(url).fileName();
                            place(next, list, target_.page, detail::readBytes(bytes, name, 0, task),
                                  true);
                        });
}

void Import::New(int width, int height, const Color& color, int type, const QString& label) {
    PageList& list = detail::listOf(target_);
    const QJsonArray args{width, height, detail::traced(color), type, label};
    detail::changeState(
        list, {"Import.New", args, label, "New Image"}, [&](ListState& next, imaging::Task&) {
            if (!imaging::isImageType(type))
                throw RuntimeError(errors::invalidCall, "There is no such image type.",
                                   "Import.New");
            if (width < 1 || height < 1)
                throw RuntimeError(errors::invalidCall,
                                   "Width and height of an image must be 1 or more.", "Import.New");
            placeRaster(next, list, target_.page,
                        imaging::Raster::filled(static_cast<ImageType>(type), width, height,
                                                detail::rgbaOf(color)));
        });
}

} // namespace kvn::engine
