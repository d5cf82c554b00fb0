// info, decode, convert: what a file holds, its exact pixels, another format.
#include <QDir>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <cstdio>

#include "basic/error.h"
#include "basic/numbers.h"
#include "commands.h"
#include "imaging/byte_io.h"
#include "imaging/codecs/codec.h"
#include "imaging/exif.h"
#include "imaging/quantize.h"

namespace kvn::probe {
namespace {

imaging::Picture read(const QString& path, const imaging::Codec** used = nullptr) {
    const imaging::FileBytes file(path.toStdString());
    const imaging::Codec* codec =
        imaging::codecForContent(file.bytes(), path.section('.', -1).toStdString());
    if (!codec)
        throw RuntimeError(errors::invalidPicture, "the file is no picture of a known format",
                           "kvn-probe");
    if (used) *used = codec;
    imaging::Task task;
    return codec->read(file.bytes(), {}, task);
}

QJsonObject pageFacts(const imaging::Page& page) {
    static const imaging::Metadata none;
    const imaging::Metadata& data = page.metadata ? *page.metadata : none;
    const imaging::Raster& raster = page.raster;
    constexpr int countedUpTo = 1 << 24;
    return {{"width", raster.width()},
            {"height", raster.height()},
            {"type", static_cast<int>(raster.type())},
            {"depth", imaging::bitsPerPixel(raster.type())},
            {"colors", imaging::countColors(raster, countedUpTo)},
            {"paletteSize", static_cast<int>(raster.palette().size())},
            {"xDpi", data.xDpi},
            {"yDpi", data.yDpi},
            {"profileBytes", static_cast<qint64>(data.icc.size())},
            {"exif", static_cast<int>(imaging::exifTags(data).size())},
            {"iptc", static_cast<int>(imaging::iptcTags(data).size())},
            {"xmpBytes", static_cast<qint64>(data.xmp.size())},
            {"comment", QString::fromStdString(data.comment)},
            {"name", QString::fromStdString(page.name)}};
}

void print(const QJsonObject& object) {
    const QByteArray text = QJsonDocument(object).toJson(QJsonDocument::Indented);
    std::fwrite(text.constData(), 1, static_cast<std::size_t>(text.size()), stdout);
}

void apply(imaging::WriteOptions& options, const QString& setting) {
    const QString key = setting.section('=', 0, 0);
    const std::string value = setting.section('=', 1).toStdString();
    const auto whole = [&] { return toInt32(numberFromText(value)); };
    if (key == "JpegQuality")
        options.jpegQuality = whole();
    else if (key == "JpegSmoothing")
        options.jpegSmoothing = whole();
    else if (key == "JpegProgressive")
        options.jpegProgressive = booleanFromText(value);
    else if (key == "TiffCompression")
        options.tiffCompression = whole();
    else if (key == "BmpRle")
        options.bmpRle = booleanFromText(value);
    else if (key == "WmfPlaceable")
        options.wmfPlaceable = booleanFromText(value);
    else if (key == "JPEGMarkers")
        options.jpegMarkers = static_cast<std::uint32_t>(whole());
    else
        throw RuntimeError(errors::invalidCall,
                           "unknown setting '" + key.toStdString() +
                               "' (JpegQuality, JpegSmoothing, JpegProgressive, TiffCompression, "
                               "BmpRle, WmfPlaceable, JPEGMarkers)",
                           "kvn-probe");
}

} // namespace

void info(const QString& file) {
    const imaging::Codec* codec = nullptr;
    const imaging::Picture picture = read(file, &codec);
    QJsonArray pages;
    for (const imaging::Page& page : picture.pages)
        pages.append(pageFacts(page));
    QJsonArray warnings;
    for (const std::string& warning : picture.warnings)
        warnings.append(QString::fromStdString(warning));
    const std::string_view name = codec->name();
    print({{"type", static_cast<int>(picture.type)},
           {"format", QString::fromUtf8(name.data(), static_cast<qsizetype>(name.size()))},
           {"pages", pages},
           {"warnings", warnings}});
}

void decode(const QString& file, const QString& folder) {
    const imaging::Picture picture = read(file);
    if (!QDir().mkpath(folder))
        throw RuntimeError(errors::pathAccess, "cannot make the folder", "kvn-probe");
    const imaging::Codec& png = *imaging::codecForType(imaging::FileType::Png);
    int number = 0;
    for (const imaging::Page& page : picture.pages) {
        // The pixels alone: a profile or gamma would let other programs show others.
        const imaging::Page bare{page.raster, nullptr, {}};
        const QString path = QDir(folder).filePath(QString::number(number++) + ".png");
        imaging::replaceFile(path.toStdString(), [&](imaging::ByteSink& sink) {
            imaging::Task task;
            png.write({&bare, 1}, {}, sink, task);
        });
    }
    for (const std::string& warning : picture.warnings)
        std::fprintf(stderr, "warning: %s\n", warning.c_str());
}

void convert(const QString& in, const QString& out, const QStringList& settings) {
    imaging::WriteOptions options;
    for (const QString& setting : settings)
        apply(options, setting);
    const imaging::Codec* codec = imaging::codecForExtension(out.section('.', -1).toStdString());
    if (!codec || !codec->canWrite())
        throw RuntimeError(errors::invalidCall, "no format to write for this file name",
                           "kvn-probe");
    const imaging::Picture picture = read(in);
    const std::size_t count = codec->holdsPages() ? picture.pages.size() : 1;
    imaging::replaceFile(out.toStdString(), [&](imaging::ByteSink& sink) {
        imaging::Task task;
        codec->write({picture.pages.data(), count}, options, sink, task);
    });
}

} // namespace kvn::probe
