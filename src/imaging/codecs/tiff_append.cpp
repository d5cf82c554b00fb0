#include "imaging/codecs/tiff_append.h"

#include <limits>
#include <memory>

#include "basic/error.h"
#include "imaging/codecs/tiff_structure.h"
#include "imaging/codecs/tiff_write.h"

namespace kvn::imaging {

namespace {

// Null if there is no such file.
std::unique_ptr<FileBytes> oldFile(const std::string& path) {
    try {
        return std::make_unique<FileBytes>(path);
    } catch (const RuntimeError& error) {
        if (error.number() == errors::fileNotFound) return nullptr;
        throw;
    }
}

void requireRoom(std::span<const std::uint8_t> file, const Page& page) {
    const TiffStructure structure(file);
    // The library looks for the last page without an eye for loops.
    const TiffChain chain = tiffChain(structure, std::numeric_limits<int>::max());
    if (!chain.trouble.empty())
        throw RuntimeError(errors::invalidPicture, "No page can be appended. " + chain.trouble,
                           "Export");
    constexpr std::uint64_t classicBytes = 0xffffffff;
    if (!structure.isBig() && file.size() + mostTiffBytes(page) > classicBytes)
        throw RuntimeError(errors::invalidCall,
                           "No page can be appended: the TIFF file would grow past 4 GB.",
                           "Export");
}

} // namespace

void appendTiffPage(const std::string& path, const Page& page, const WriteOptions& options,
                    Task& task) {
    const std::unique_ptr<FileBytes> old = oldFile(path);
    if (!old) {
        replaceFile(path,
                    [&](ByteSink& sink) { writeTiff(std::span(&page, 1), options, sink, task); });
        return;
    }
    const std::span<const std::uint8_t> bytes = old->bytes();
    if (!TiffStructure::recognises(bytes))
        throw RuntimeError(errors::invalidPicture,
                           "No page can be appended: the file is not a TIFF file.", "Export");
    requireRoom(bytes, page);
    // Onto a copy, which takes the file's place when it is whole.
    replaceFile(path, [&](ByteSink& sink) {
        sink.write(bytes.data(), bytes.size());
        const TiffWriter writer(sink, "a");
        writeTiffPage(writer, sink, page, options, 0, 1, task);
    });
}

} // namespace kvn::imaging
