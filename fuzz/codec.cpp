// One codec, KVN_FUZZ_CODEC, over any bytes: facts and pixels are read, and what came out is
// written again. Anything but a picture within the limits or a RuntimeError is a finding.
#include "basic/error.h"
#include "fuzz/one_input.h"
#include "imaging/codecs/all.h"

using namespace kvn;
using namespace kvn::imaging;

namespace {

constexpr std::uint64_t pixelBytes = std::uint64_t{1} << 20; // small, for many runs a second

void require(bool isTrue) {
    if (!isTrue) __builtin_trap();
}

Picture read(const Codec& codec, std::span<const std::uint8_t> file) {
    Task task;
    task.threads = 1;
    try {
        return codec.read(file, {.pixelBytes = pixelBytes}, task);
    } catch (const RuntimeError& error) {
        require(!error.description().empty());
        return {};
    }
}

std::uint64_t bytesOf(const Picture& picture) {
    std::uint64_t bytes = 0;
    for (const auto& page : picture.pages)
        bytes += page.raster.byteSize();
    return bytes;
}

void write(const Codec& codec, const Picture& picture) {
    if (!codec.canWrite() || picture.pages.empty()) return;
    MemorySink sink;
    Task task;
    task.threads = 1;
    const std::span<const Page> pages = picture.pages;
    try {
        codec.write(codec.holdsPages() ? pages : pages.first(1), {}, sink, task);
    } catch (const RuntimeError& error) {
        // A side that can be read may still be one too long to write.
        require(error.number() == errors::invalidCall);
        return;
    }
    const Picture again = read(codec, sink.bytes());
    require(!again.pages.empty() &&
            again.pages.front().raster.size() == picture.pages.front().raster.size());
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const fuzz::InputClock clock;
    const Codec& codec = KVN_FUZZ_CODEC();
    const std::span<const std::uint8_t> file(data, size);
    codec.recognises(file);
    try {
        codec.facts(file, {.pixelBytes = pixelBytes});
    } catch (const RuntimeError&) {
        // Reading says whether the message is good.
    }
    fuzz::fillNewMemoryWith(0x00);
    const Picture picture = read(codec, file);
    const std::uint64_t bytes = bytesOf(picture);
    require(bytes <= pixelBytes);
    constexpr std::uint64_t small = 64 << 10; // costs little to do more with
    if (bytes > small) return 0;
    fuzz::fillNewMemoryWith(0xFF);
    const Picture other = read(codec, file);
    require(other.pages.size() == picture.pages.size());
    for (std::size_t i = 0; i < picture.pages.size(); ++i)
        require(picture.pages[i].raster.samePixels(other.pages[i].raster)); // no old memory
    write(codec, picture);
    return 0;
}
