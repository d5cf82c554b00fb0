#include "imaging/codecs/png_chunks.h"

#include <limits>

#include <libdeflate.h>

#include "imaging/codecs/png_text.h"
#include "imaging/codecs/zlib_data.h"

namespace kvn::imaging {

namespace {

constexpr double inchesPerMetre = 0.0254;
constexpr double gammaUnit = 100000;

std::uint32_t read32(std::span<const std::uint8_t> data, std::size_t at) {
    return static_cast<std::uint32_t>(data[at]) << 24 |
           static_cast<std::uint32_t>(data[at + 1]) << 16 |
           static_cast<std::uint32_t>(data[at + 2]) << 8 | data[at + 3];
}

void append32(Bytes& to, std::uint32_t value) {
    for (int shift = 24; shift >= 0; shift -= 8)
        to.push_back(static_cast<std::uint8_t>(value >> shift));
}

bool isValid(int depth, int color) {
    switch (color) {
    case 0:
        return depth == 1 || depth == 2 || depth == 4 || depth == 8 || depth == 16;
    case 3:
        return depth == 1 || depth == 2 || depth == 4 || depth == 8;
    case 2:
    case 4:
    case 6:
        return depth == 8 || depth == 16;
    default:
        return false;
    }
}

std::optional<PngHeader> headerOf(std::span<const std::uint8_t> data) {
    if (data.size() != 13 || !isValid(data[8], data[9])) return {};
    if (data[10] != 0 || data[11] != 0 || data[12] > 1) return {};
    constexpr std::uint32_t longest = std::numeric_limits<int>::max();
    const std::uint32_t width = read32(data, 0), height = read32(data, 4);
    if (width > longest || height > longest) return {};
    return PngHeader{static_cast<int>(width), static_cast<int>(height), data[8],
                     static_cast<PngColor>(data[9]), data[12] == 1};
}

void readDensity(std::span<const std::uint8_t> data, Metadata& metadata) {
    if (data.size() != 9 || data[8] != 1) return;
    metadata.xDpi = read32(data, 0) * inchesPerMetre;
    metadata.yDpi = read32(data, 4) * inchesPerMetre;
}

// Name, end mark, method, then the compressed profile.
Bytes readProfile(std::span<const std::uint8_t> data) {
    const auto end = std::ranges::find(data, std::uint8_t{0});
    const auto at = static_cast<std::size_t>(end - data.begin()) + 2;
    return at < data.size() ? inflateZlib(data.subspan(at)).value_or(Bytes{}) : Bytes{};
}

bool isLower(char c) {
    return c >= 'a' && c <= 'z';
}
bool isLetter(char c) {
    return isLower(c) || (c >= 'A' && c <= 'Z');
}

// Chunks that depend on nothing but themselves may be carried over an edit: those that say so by
// a lower-case fourth letter, and the ones on the meaning of the samples.
bool isCarried(std::string_view name) {
    if (name == "sRGB" || name == "cHRM" || name == "cICP") return true;
    return std::ranges::all_of(name, isLetter) && isLower(name[0]) && isLower(name[3]);
}

void takeMetadata(std::string_view name, std::span<const std::uint8_t> data, Metadata& metadata) {
    if (name == "gAMA" && data.size() == 4) {
        metadata.gamma = read32(data, 0) / gammaUnit;
    } else if (name == "pHYs") {
        readDensity(data, metadata);
    } else if (name == "iCCP") {
        metadata.icc = readProfile(data);
    } else if (name == "eXIf") {
        metadata.exif.assign(data.begin(), data.end());
    } else if (name == "tEXt" || name == "zTXt" || name == "iTXt") {
        takePngText(name, data, metadata);
    } else if (isCarried(name)) {
        metadata.pngChunks.push_back({std::string(name), {data.begin(), data.end()}});
    }
}

void takeChunk(std::string_view name, std::span<const std::uint8_t> data, PngOutline& outline) {
    if (name == "PLTE") {
        outline.palette = data.first(std::min<std::size_t>(data.size() / 3, 256) * 3);
    } else if (name == "tRNS") {
        outline.transparency = data;
    } else if (name == "IDAT") {
        outline.data.push_back(data);
        outline.dataBytes += data.size();
    } else {
        takeMetadata(name, data, outline.metadata);
    }
}

} // namespace

PngOutline outlinePng(std::span<const std::uint8_t> file) {
    PngOutline outline;
    bool whole = true;
    for (std::size_t at = pngSignature.size(); at + 8 <= file.size();) {
        const std::size_t length = read32(file, at);
        const std::string_view name(reinterpret_cast<const char*>(file.data()) + at + 4, 4);
        const std::size_t rest = file.size() - at - 8;
        const bool isCut = length + 4 > rest;
        const auto data = file.subspan(at + 8, std::min(length, rest));
        const bool isSound = !isCut && libdeflate_crc32(0, file.data() + at + 4, length + 4) ==
                                           read32(file, at + 8 + length);
        whole = whole && isSound;
        if (name == "IEND") {
            outline.intact = whole;
            break;
        }
        if (name == "IHDR") {
            if (!outline.header && isSound) outline.header = headerOf(data);
            if (!outline.header) break;
        } else if (isSound || name == "IDAT" || name == "PLTE") {
            takeChunk(name, data, outline);
        }
        if (isCut) break;
        at += 12 + length;
    }
    return outline;
}

void appendPngChunk(Bytes& to, std::string_view name, std::span<const std::uint8_t> data) {
    append32(to, static_cast<std::uint32_t>(data.size()));
    const std::size_t begin = to.size();
    to.insert(to.end(), name.begin(), name.end());
    to.insert(to.end(), data.begin(), data.end());
    append32(to, libdeflate_crc32(0, to.data() + begin, to.size() - begin));
}

namespace {

void appendProfile(Bytes& to, const Bytes& profile) {
    constexpr std::string_view name("icc\0\0", 5); // with its end and the compression method
    Bytes data(name.begin(), name.end());
    const Bytes packed = deflateZlib(profile);
    data.insert(data.end(), packed.begin(), packed.end());
    appendPngChunk(to, "iCCP", data);
}

void appendDensity(Bytes& to, double xDpi, double yDpi) {
    const auto perMetre = [](double dpi) {
        return static_cast<std::uint32_t>(std::clamp(dpi / inchesPerMetre + 0.5, 1.0, 2e9));
    };
    Bytes data;
    append32(data, perMetre(xDpi));
    append32(data, perMetre(yDpi));
    data.push_back(1);
    appendPngChunk(to, "pHYs", data);
}

} // namespace

void appendPngMetadata(Bytes& to, const Metadata& metadata) {
    for (const PngChunk& chunk : metadata.pngChunks)
        // A file says either the profile or that it is sRGB.
        if (chunk.name != "sRGB" || metadata.icc.empty())
            appendPngChunk(to, chunk.name, chunk.data);
    if (metadata.gamma > 0) {
        Bytes data;
        append32(data, static_cast<std::uint32_t>(std::min(metadata.gamma * gammaUnit + 0.5, 2e9)));
        appendPngChunk(to, "gAMA", data);
    }
    if (!metadata.icc.empty()) appendProfile(to, metadata.icc);
    if (metadata.xDpi > 0 && metadata.yDpi > 0) appendDensity(to, metadata.xDpi, metadata.yDpi);
    if (!metadata.exif.empty()) appendPngChunk(to, "eXIf", metadata.exif);
    appendPngTexts(to, metadata);
}

} // namespace kvn::imaging
