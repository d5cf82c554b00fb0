#include "files.h"

#include "basic/error.h"
#include "imaging/byte_io.h"
#include "imaging/codecs/codec.h"

namespace kvn::gallery {
namespace {

constexpr int quality = 60; // hundreds of pictures in few megabytes

std::string ending(const std::string& path) {
    return path.substr(path.rfind('.') + 1);
}

} // namespace

imaging::Raster readPicture(const std::string& path) {
    const imaging::FileBytes file(path);
    const imaging::Codec* codec = imaging::codecForContent(file.bytes(), ending(path));
    if (!codec) throw RuntimeError(errors::invalidPicture, path + " is no picture", "gallery");
    imaging::Task task;
    return codec->read(file.bytes(), {}, task).pages.at(0).raster;
}

void writePicture(const std::string& path, const imaging::Raster& picture) {
    imaging::Page page;
    page.raster = picture;
    imaging::WriteOptions options;
    options.jpegQuality = quality;
    options.jpegProgressive = true; // smaller
    imaging::replaceFile(path, [&](imaging::ByteSink& sink) {
        imaging::Task task;
        imaging::codecForExtension(ending(path))->write({&page, 1}, options, sink, task);
    });
}

} // namespace kvn::gallery
