#include <QClipboard>
#include <QGuiApplication>
#include <QImage>
#include <QMimeData>
#include <cstring>

#include "basic/error.h"
#include "engine/detail/page_list.h"
#include "engine/detail/qt_image.h"
#include "engine/detail/runner.h"
#include "engine/image.h"
#include "imaging/byte_io.h"
#include "imaging/codecs/tiff_append.h"

namespace kvn::engine {

using detail::PageList;
using detail::PageState;

namespace {

// The picture on the clipboard, turned into what a taker asks for only when it asks. Holding it
// costs nothing until the document changes.
class ClipboardPicture : public QMimeData {
  public:
    explicit ClipboardPicture(imaging::Raster raster) : raster_(std::move(raster)) {}

    bool hasFormat(const QString& type) const override { return formats().contains(type); }
    QStringList formats() const override { return {"application/x-qt-image"}; }

  protected:
    QVariant retrieveData(const QString& type, QMetaType) const override {
        if (type != QLatin1String("application/x-qt-image")) return {};
        if (image_.isNull()) image_ = detail::toQImage(raster_);
        return image_;
    }

  private:
    imaging::Raster raster_;
    mutable QImage image_;
};

imaging::Page fileForm(const PageState& page) {
    return {page.raster, page.metadata, page.pageName};
}

const imaging::Codec& codecForSaving(const QString& path, int typeCode) {
    const auto type = static_cast<imaging::FileType>(typeCode);
    const imaging::Codec* codec = typeCode == 0 ? nullptr : imaging::codecForType(type);
    if (path.isEmpty())
        throw RuntimeError(errors::pathAccess, "The image has no file name. Use Save As.",
                           "Export.Save");
    if (!codec || !codec->canWrite())
        throw RuntimeError(errors::invalidCall,
                           "Images cannot be saved in this format. Use Save As.", "Export.Save");
    return *codec;
}

} // namespace

void Export::AppendToTiff(const QString& path) {
    PageList& list = detail::listOf(source_);
    detail::recordCall(list.engine(), list.who, "Export.AppendToTiff", {path}, [&] {
        detail::ProgressReport progress(list, "Append to TIFF");
        imaging::appendTiffPage(path.toStdString(), fileForm(detail::pageOf(source_)), list.options,
                                progress.task());
    });
}

void Export::CopyToClipboard() {
    PageList& list = detail::listOf(source_);
    detail::recordCall(list.engine(), list.who, "Export.CopyToClipboard", {}, [&] {
        QGuiApplication::clipboard()->setMimeData(
            new ClipboardPicture(detail::pageOf(source_).raster));
    });
}

PixelArray Export::GetPixels() const {
    const imaging::Raster& raster = detail::pageOf(source_).raster;
    const imaging::ConstView view = raster.view();
    PixelArray array;
    array.type = static_cast<int>(raster.type());
    array.width = view.width;
    array.height = view.height;
    array.components = std::max(1, imaging::bytesPerPixel(raster.type()));
    const qsizetype line = qsizetype{view.width} * array.components;
    array.bytes.resize(line * view.height);
    char* to = array.bytes.data();
    for (int y = 0; y < view.height; ++y, to += line) {
        if (raster.type() != imaging::ImageType::Bit1) {
            std::memcpy(to, view.row(y), static_cast<std::size_t>(line));
            continue;
        }
        for (int x = 0; x < view.width; ++x)
            to[x] = static_cast<char>(view.row(y)[x >> 3] >> (7 - (x & 7)) & 1);
    }
    return array;
}

QPixmap Export::Picture() const {
    return QPixmap::fromImage(detail::toQImage(detail::pageOf(source_).raster));
}

void Export::Save(const QString& path, int typeCode, int flag, int pages) {
    PageList& list = detail::listOf(source_);
    const QJsonArray args{path, typeCode, flag, pages};
    detail::recordCall(list.engine(), list.who, "Export.Save", args, [&] {
        const imaging::Codec& codec = codecForSaving(path, typeCode);
        std::vector<imaging::Page> content;
        if (codec.holdsPages() && source_.page == 0)
            for (const PageState& page : list.state.pages)
                content.push_back(fileForm(page));
        else
            content.push_back(fileForm(detail::pageOf(source_)));
        if (content.empty()) detail::pageOf(source_); // says that there is no image
        detail::ProgressReport progress(list, "Save");
        imaging::replaceFile(path.toStdString(), [&](imaging::ByteSink& sink) {
            codec.write(content, list.options, sink, progress.task());
        });
        if (codec.holdsPages() || list.state.pages.size() == 1)
            list.markSaved();
        else
            list.markSaved(detail::pageOf(source_));
    });
}

} // namespace kvn::engine
