// The tag lists. The one place that knows Exiv2.
#include <algorithm>
#include <mutex>

#include <exiv2/exiv2.hpp>

#include "imaging/exif.h"
#include "imaging/metadata/utf8.h"

namespace kvn::imaging {

namespace {

constexpr std::size_t longestValue = 8000;

// Exiv2 reports oddities of files on standard error unless told not to.
void silenceExiv2() {
    static std::once_flag done;
    std::call_once(done, [] { Exiv2::LogMsg::setLevel(Exiv2::LogMsg::mute); });
}

// Runs `work`, which may throw anything that a broken block brings about.
template <typename Work>
void quietly(const Work& work) {
    silenceExiv2();
    try {
        work();
    } catch (const std::exception&) {
        // What was read before stands.
    }
}

std::string readable(std::string text) {
    if (!isUtf8(text)) text = utf8FromLatin1(text);
    while (!text.empty() && (text.back() == '\0' || text.back() == ' ' || text.back() == '\n'))
        text.pop_back();
    std::ranges::replace_if(
        text, [](char c) { return c >= 0 && c < ' '; }, ' ');
    if (text.size() <= longestValue) return text;
    std::size_t end = longestValue;
    while (end > 0 && (text[end] & 0xc0) == 0x80)
        --end;
    text.resize(end);
    return text.append(" ...");
}

// Comments are printed with the name of their character set in front.
std::string_view withoutCharset(std::string_view text) {
    constexpr std::string_view mark = "charset=";
    if (!text.starts_with(mark)) return text;
    const bool isQuoted = text.substr(mark.size(), 1) == "\"";
    const std::size_t end = isQuoted ? text.find('"', mark.size() + 1) : text.find(' ');
    const std::size_t begin = end == std::string::npos ? end : text.find_first_not_of("\" ", end);
    return begin == std::string::npos ? std::string_view{} : text.substr(begin);
}

// Maker notes and tables are runs of numbers that nobody reads.
bool isBulk(const Exiv2::Metadatum& datum) {
    constexpr long longestRun = 64;
    const auto count = static_cast<long>(datum.count());
    return count > longestRun && datum.typeId() != Exiv2::asciiString &&
           datum.typeId() != Exiv2::string && datum.typeId() != Exiv2::comment;
}

void add(std::vector<MetadataTag>& tags, const Exiv2::Metadatum& datum,
         const std::string& printed) {
    std::string value = readable(std::string(withoutCharset(printed)));
    const bool isNumbers = value.find_first_not_of("0123456789-/ ") == std::string::npos;
    if (isBulk(datum) && (isNumbers || value.ends_with(" ..."))) {
        value.clear();
        value += '(';
        value += std::to_string(datum.size());
        value += " bytes)";
    }
    tags.push_back({datum.tagName(), std::move(value)});
}

Exiv2::ExifData exifDataOf(const Metadata& metadata) {
    Exiv2::ExifData data;
    if (!metadata.exif.empty())
        quietly([&] {
            Exiv2::ExifParser::decode(data, metadata.exif.data(),
                                      static_cast<std::uint32_t>(metadata.exif.size()));
        });
    return data;
}

// Exiv2 0.27 has public members where 0.28 has functions.
template <typename Buffer>
Bytes bytesOf(const Buffer& buffer) {
    if constexpr (requires { buffer.pData_; }) {
        return {buffer.pData_, buffer.pData_ + buffer.size_};
    } else {
        return {buffer.c_data(), buffer.c_data() + buffer.size()};
    }
}

} // namespace

std::vector<MetadataTag> exifTags(const Metadata& metadata) {
    const Exiv2::ExifData data = exifDataOf(metadata);
    std::vector<MetadataTag> tags;
    for (const Exiv2::Exifdatum& datum : data)
        quietly([&] { add(tags, datum, datum.print(&data)); });
    return tags;
}

std::vector<MetadataTag> iptcTags(const Metadata& metadata) {
    std::vector<MetadataTag> tags;
    if (metadata.iptc.empty()) return tags;
    Exiv2::IptcData data;
    quietly([&] {
        Exiv2::IptcParser::decode(data, metadata.iptc.data(),
                                  static_cast<std::uint32_t>(metadata.iptc.size()));
    });
    for (const Exiv2::Iptcdatum& datum : data)
        quietly([&] { add(tags, datum, datum.print()); });
    return tags;
}

Bytes exifThumbnail(const Metadata& metadata) {
    Bytes thumbnail;
    const Exiv2::ExifData data = exifDataOf(metadata);
    quietly([&] { thumbnail = bytesOf(Exiv2::ExifThumbC(data).copy()); });
    return thumbnail;
}

} // namespace kvn::imaging
