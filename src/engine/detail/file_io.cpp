#include "engine/detail/file_io.h"

#include "basic/error.h"
#include "basic/text.h"
#include "engine/detail/page_list.h"
#include "imaging/codecs/codec.h"

namespace kvn::engine::detail {
namespace {

QString extensionOf(const QString& name) {
    const QString file = fileNameOf(name);
    const auto dot = file.lastIndexOf(u'.');
    return dot < 0 ? QString() : file.mid(dot + 1);
}

std::vector<PageState> pagesFrom(std::span<const std::uint8_t> bytes, const QString& name, int page,
                                 imaging::Task& task) {
    const std::string source = "Import";
    const imaging::Codec* codec = imaging::codecForContent(bytes, extensionOf(name).toStdString());
    if (!codec)
        throw RuntimeError(errors::invalidPicture, "The file is no picture of a known format.",
                           source);
    imaging::Picture picture = codec->read(bytes, {}, task);
    if (picture.pages.empty())
        throw RuntimeError(errors::invalidPicture, "The file holds no picture.", source);
    const auto count = static_cast<int>(picture.pages.size());
    if (page < 0 || page > count)
        throw RuntimeError(errors::subscriptOutOfRange,
                           "The file has no image number " + std::to_string(page) + ".", source);
    std::vector<PageState> states;
    for (int i = page == 0 ? 0 : page - 1; i < (page == 0 ? count : page); ++i) {
        imaging::Page& read = picture.pages[static_cast<std::size_t>(i)];
        PageState state;
        state.id = PageList::nextId();
        state.stamp = PageList::nextId();
        state.raster = std::move(read.raster);
        state.metadata = std::move(read.metadata);
        state.name = fileNameOf(name).toStdString();
        state.pageName = std::move(read.name);
        state.fileType = picture.type;
        states.push_back(std::move(state));
    }
    return states;
}

} // namespace

std::vector<PageState> readFile(const QString& path, int page, imaging::Task& task) {
    const imaging::FileBytes file(path.toStdString());
    return pagesFrom(file.bytes(), path, page, task);
}

std::vector<PageState> readBytes(const QByteArray& bytes, const QString& name, int page,
                                 imaging::Task& task) {
    const auto* data = reinterpret_cast<const std::uint8_t*>(bytes.constData());
    return pagesFrom({data, static_cast<std::size_t>(bytes.size())}, name, page, task);
}

} // namespace kvn::engine::detail
