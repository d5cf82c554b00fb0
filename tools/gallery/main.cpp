// kvn-gallery: the page of small pictures that shows every operation, made anew or checked. An
// operation of the table without a row, a row without its pictures or an old page is exit status 1.
#include <QDir>
#include <QFileInfo>
#include <QStringList>
#include <cstdio>
#include <exception>
#include <map>
#include <set>

#include "../probe/arguments.h"
#include "basic/error.h"
#include "files.h"
#include "imaging/byte_io.h"
#include "imaging/compose.h"
#include "page.h"
#include "pictures.h"

namespace kvn::gallery {
namespace {

using imaging::ImageType;
using imaging::Raster;

constexpr const char* pageName = "README.md";

// The one argument too long to be written out: 255 down to 0.
QString inverseTable() {
    QStringList numbers;
    for (int i = 255; i >= 0; --i)
        numbers.append(QString::number(i));
    return numbers.join(',');
}

std::vector<probe::Step> stepsOf(const char* words) {
    QStringList list = QString::fromUtf8(words).split(' ', Qt::SkipEmptyParts);
    list.replaceInStrings(QStringLiteral("inverse"), inverseTable());
    return list.isEmpty() ? std::vector<probe::Step>() : probe::stepsFrom(list);
}

std::vector<Raster> run(const char* words, std::vector<Raster> pages) {
    for (const probe::Step& step : stepsOf(words)) {
        imaging::Task task;
        pages = imaging::runOperation(*step.operation, pages.front(), step.values, task);
    }
    return pages;
}

Raster resized(const Raster& picture, int width) {
    const std::string words = "Geometry.Resize " + std::to_string(width) + " 0 15";
    return run(words.c_str(), {picture}).front();
}

Raster sourcePicture(const std::string& name, Source source) {
    if (source == Source::None) return Raster(ImageType::Rgb24, 1, 1);
    static std::map<std::string, Raster> read;
    Raster& picture = read[name];
    if (picture.isEmpty()) picture = readPicture(name + (name == "photo" ? ".jpg" : ".png"));
    constexpr int small = 180;
    return source == Source::Small ? resized(picture, small) : picture;
}

// On a chequered ground where it is clear.
Raster opaque(const Raster& picture) {
    if (!imaging::hasAlpha(picture.type())) return picture;
    constexpr int square = 8;
    Raster ground = Raster::uninitialized(ImageType::Rgb24, picture.width(), picture.height());
    const imaging::View view = ground.edit();
    for (int y = 0; y < view.height; ++y)
        for (int x = 0; x < 3 * view.width; ++x)
            view.row(y)[x] = (x / 3 / square + y / square) % 2 ? 150 : 200;
    imaging::Task task;
    imaging::drawOver(ground, picture, {}, {}, task);
    return ground;
}

void make(const Entry& entry) {
    const Source source = entry.row->source;
    const bool halved =
        source == Source::Large || source == Source::Photo || source == Source::Face;
    auto picture = entry.pictures.begin();
    for (const std::string& name : entry.sources) {
        std::vector<Raster> pages = run(entry.row->first, {sourcePicture(name, source)});
        for (Raster& page : run(entry.row->words, std::move(pages))) {
            if (picture == entry.pictures.end())
                throw RuntimeError(errors::invalidCall, "more pages than the row tells", "gallery");
            if (halved) page = resized(page, page.width() / 2);
            writePicture(*picture++, opaque(page));
        }
    }
}

void makeAll(const std::vector<Entry>& entries) {
    writePictures(".");
    for (const Entry& entry : entries) {
        try {
            make(entry);
        } catch (const RuntimeError& error) {
            std::fprintf(stderr, "kvn-gallery: %s: %s\n", entry.row->caption, error.what());
        }
    }
    imaging::replaceFile(pageName, [&](imaging::ByteSink& sink) {
        const std::string text = pageText(entries);
        sink.write(text.data(), text.size());
    });
}

// Prints what is missing, a line each, and gives the number of lines.
int faults(const std::vector<Entry>& entries) {
    int count = 0;
    const auto fault = [&](const std::string& text) {
        std::fprintf(stderr, "kvn-gallery: %s\n", text.c_str());
        ++count;
    };
    std::set<std::string_view> shown;
    for (const Entry& entry : entries) {
        shown.insert(entry.operation);
        try {
            for (const char* words : {entry.row->first, entry.row->words})
                for (const probe::Step& step : stepsOf(words))
                    imaging::checkArguments(*step.operation, step.values);
        } catch (const RuntimeError& error) {
            fault(std::string(entry.row->caption) + ": " + error.what());
        }
        for (const std::string& picture : entry.pictures)
            if (!QFileInfo::exists(QString::fromStdString(picture))) fault("no picture " + picture);
    }
    for (const imaging::Operation* operation : imaging::operations())
        if (!shown.contains(operation->name)) fault("no row shows " + std::string(operation->name));
    const imaging::FileBytes page(pageName);
    const std::string text(page.bytes().begin(), page.bytes().end());
    if (text != pageText(entries)) fault(std::string(pageName) + " is not of these rows");
    return count;
}

bool work(int argc, char** argv) {
    const bool check = argc == 3 && std::string_view(argv[2]) == "--check";
    if (argc != 2 && !check) {
        std::fprintf(stderr, "usage: kvn-gallery FOLDER [--check]\n");
        return false;
    }
    if (!QDir::setCurrent(QString::fromLocal8Bit(argv[1])))
        throw RuntimeError(errors::pathAccess, "there is no such folder", "gallery");
    const std::vector<Entry> all = entries();
    if (!check) makeAll(all);
    return faults(all) == 0;
}

} // namespace
} // namespace kvn::gallery

int main(int argc, char** argv) {
    try {
        return kvn::gallery::work(argc, argv) ? 0 : 1;
    } catch (const std::exception& error) {
        std::fprintf(stderr, "kvn-gallery: %s\n", error.what());
        return 1;
    }
}
