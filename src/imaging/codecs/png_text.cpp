#include "imaging/codecs/png_text.h"

#include <algorithm>
#include <charconv>
#include <optional>

#include "imaging/codecs/png_chunks.h"
#include "imaging/codecs/zlib_data.h"
#include "imaging/metadata/photoshop.h"
#include "imaging/metadata/utf8.h"

namespace kvn::imaging {

namespace {

constexpr std::string_view xmpKeyword = "XML:com.adobe.xmp";
constexpr std::string_view commentKeyword = "Comment";
constexpr std::string_view iptcKeyword = "Raw profile type iptc";
constexpr std::string_view exifKeyword = "Raw profile type exif";
constexpr std::string_view exifKeyword2 = "Raw profile type APP1";
constexpr std::string_view exifMark{"Exif\0\0", 6};

using Data = std::span<const std::uint8_t>;

std::string textOf(Data data) {
    return {data.begin(), data.end()};
}

// The bytes up to the next zero, which is passed over.
std::optional<std::string> takeUntilZero(Data& data) {
    const auto end = std::ranges::find(data, std::uint8_t{0});
    if (end == data.end()) return {};
    const auto size = static_cast<std::size_t>(end - data.begin());
    const std::string text = textOf(data.first(size));
    data = data.subspan(size + 1);
    return text;
}

std::optional<std::string> inflatedText(Data data) {
    const auto bytes = inflateZlib(data);
    return bytes ? std::optional(textOf(*bytes)) : std::nullopt;
}

// What stands behind the keyword, as UTF-8.
std::optional<std::string> contentOf(std::string_view chunk, Data data) {
    if (chunk == "tEXt") return utf8FromLatin1(textOf(data));
    if (chunk == "zTXt") {
        if (data.empty() || data[0] != 0) return {};
        const auto text = inflatedText(data.subspan(1));
        return text ? std::optional(utf8FromLatin1(*text)) : std::nullopt;
    }
    if (data.size() < 2) return {};
    const bool isCompressed = data[0] == 1;
    data = data.subspan(2);
    if (!takeUntilZero(data) || !takeUntilZero(data)) return {}; // language, translated keyword
    return isCompressed ? inflatedText(data) : std::optional(textOf(data));
}

// The text names its language, or the keyword in it.
bool isTranslated(std::string_view chunk, Data behindKeyword) {
    return chunk == "iTXt" && behindKeyword.size() >= 4 &&
           (behindKeyword[2] != 0 || behindKeyword[3] != 0);
}

int hexDigit(char c) {
    if (c >= '0' && c <= '9') return c - '0';
    if (c >= 'a' && c <= 'f') return c - 'a' + 10;
    return -1;
}

// A line break, the kind, the length, then hexadecimal digits in lines.
Bytes bytesFromProfileText(std::string_view text) {
    const std::size_t kind = text.find_first_not_of('\n');
    const std::size_t line = text.find('\n', kind);
    if (kind == std::string_view::npos || line == std::string_view::npos) return {};
    text.remove_prefix(line);
    text.remove_prefix(std::min(text.find_first_not_of(" \n"), text.size()));
    std::size_t length = 0;
    const auto parsed = std::from_chars(text.data(), text.data() + text.size(), length);
    text.remove_prefix(static_cast<std::size_t>(parsed.ptr - text.data()));
    Bytes bytes;
    int high = -1;
    for (const char c : text) {
        const int digit = hexDigit(c);
        if (digit < 0) continue;
        if (high >= 0) bytes.push_back(static_cast<std::uint8_t>(high << 4 | digit));
        high = high >= 0 ? -1 : digit;
    }
    return bytes.size() == length ? bytes : Bytes{};
}

std::string profileText(std::string_view kind, Data bytes) {
    constexpr std::string_view digits = "0123456789abcdef";
    constexpr std::size_t bytesPerLine = 36;
    std::string text("\n");
    text.append(kind).append("\n").append(std::to_string(bytes.size()));
    for (std::size_t i = 0; i < bytes.size(); ++i) {
        if (i % bytesPerLine == 0) text += '\n';
        text += digits[bytes[i] >> 4];
        text += digits[bytes[i] & 15];
    }
    return text + "\n";
}

void takeExifText(const std::string& content, Metadata& metadata) {
    Bytes bytes = bytesFromProfileText(content);
    const auto mark = static_cast<std::ptrdiff_t>(exifMark.size());
    if (bytes.size() > exifMark.size() &&
        std::equal(exifMark.begin(), exifMark.end(), bytes.begin()))
        bytes.erase(bytes.begin(), bytes.begin() + mark);
    if (metadata.exif.empty()) metadata.exif = std::move(bytes);
}

void takeIptcText(const std::string& content, Metadata& metadata) {
    const Bytes bytes = bytesFromProfileText(content);
    metadata.iptc = iptcInPhotoshop(bytes);
    if (!metadata.iptc.empty()) {
        metadata.photoshop = bytes;
    } else if (!bytes.empty() && bytes[0] == 0x1c) {
        metadata.iptc = bytes; // the bare records
    }
}

} // namespace

void takePngText(std::string_view chunk, Data data, Metadata& metadata) {
    const Data whole = data;
    const auto keyword = takeUntilZero(data);
    if (!keyword) return;
    const auto content = contentOf(chunk, data);
    if (!content) return;
    if (*keyword == xmpKeyword) {
        metadata.xmp.assign(content->begin(), content->end());
    } else if (*keyword == exifKeyword || *keyword == exifKeyword2) {
        takeExifText(*content, metadata);
    } else if (*keyword == iptcKeyword) {
        takeIptcText(*content, metadata);
    } else if (*keyword == commentKeyword && metadata.comment.empty()) {
        metadata.comment = *content;
    } else if (isTranslated(chunk, data)) {
        metadata.pngChunks.push_back({std::string(chunk), {whole.begin(), whole.end()}});
    } else {
        metadata.text.emplace_back(utf8FromLatin1(*keyword), *content);
    }
}

namespace {

void append(Bytes& to, std::string_view text) {
    to.insert(to.end(), text.begin(), text.end());
}

void appendText(Bytes& to, std::string_view keyword, const std::string& text) {
    constexpr std::size_t longestKeyword = 79;
    const auto latinKeyword = latin1FromUtf8(keyword);
    if (!latinKeyword || latinKeyword->empty() || latinKeyword->size() > longestKeyword) return;
    Bytes data;
    append(data, *latinKeyword);
    const auto latin = latin1FromUtf8(text);
    if (latin && keyword != xmpKeyword) {
        data.push_back(0);
        append(data, *latin);
        return appendPngChunk(to, "tEXt", data);
    }
    data.insert(data.end(), {0, 0, 0, 0, 0}); // not compressed; no language, no translation
    append(data, text);
    appendPngChunk(to, "iTXt", data);
}

} // namespace

void appendPngTexts(Bytes& to, const Metadata& metadata) {
    if (!metadata.comment.empty()) appendText(to, commentKeyword, metadata.comment);
    for (const auto& [keyword, text] : metadata.text)
        appendText(to, keyword, text);
    if (!metadata.xmp.empty()) appendText(to, xmpKeyword, textOf(metadata.xmp));
    if (metadata.iptc.empty() && metadata.photoshop.empty()) return;
    const Bytes blocks =
        metadata.photoshop.empty() ? photoshopFromIptc(metadata.iptc) : metadata.photoshop;
    Bytes data;
    append(data, iptcKeyword);
    data.insert(data.end(), {0, 0});
    const std::string text = profileText("iptc", blocks);
    const Bytes packed =
        deflateZlib({reinterpret_cast<const std::uint8_t*>(text.data()), text.size()});
    data.insert(data.end(), packed.begin(), packed.end());
    appendPngChunk(to, "zTXt", data);
}

} // namespace kvn::imaging
