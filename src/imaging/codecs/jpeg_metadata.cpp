#include "imaging/codecs/jpeg_metadata.h"

#include <algorithm>
#include <cmath>
#include <map>
#include <string_view>
#include <tuple>
#include <utility>

#include "imaging/metadata/exif_block.h"
#include "imaging/metadata/photoshop.h"

namespace kvn::imaging {

namespace {

using namespace std::string_view_literals;

constexpr auto jfifName = "JFIF\0"sv;
constexpr auto jfifExtensionName = "JFXX\0"sv;
constexpr auto exifName = "Exif\0\0"sv;
constexpr auto exifMark = "Exif\0"sv; // some writers fill the sixth byte with something else
constexpr auto xmpName = "http://ns.adobe.com/xap/1.0/\0"sv;
constexpr auto iccName = "ICC_PROFILE\0"sv;
constexpr auto photoshopName = "Photoshop 3.0\0"sv;
constexpr auto adobeName = "Adobe"sv;
constexpr auto pictureIndexName = "MPF\0"sv;

constexpr std::size_t longestSegment = 65533;
constexpr double centimetresPerInch = 2.54;

void append(Bytes& to, std::span<const std::uint8_t> from) {
    to.insert(to.end(), from.begin(), from.end());
}

void readDensity(const JpegSegment& jfif, Metadata& metadata) {
    if (jfif.data.size() < 12) return;
    const int unit = jfif.data[7];
    const double scale = unit == 1 ? 1.0 : unit == 2 ? centimetresPerInch : 0.0;
    metadata.xDpi = scale * (jfif.data[8] << 8 | jfif.data[9]);
    metadata.yDpi = scale * (jfif.data[10] << 8 | jfif.data[11]);
}

// Cameras write the resolution into EXIF alone. Dots per inch, across and down; 0 if unknown.
std::pair<double, double> exifDensity(const Bytes& block) {
    const ExifBlock exif(block);
    using enum ExifBlock::Directory;
    const auto unit = exif.number(Main, ExifBlock::resolutionUnit).value_or(2);
    const double scale = unit == 2 ? 1.0 : unit == 3 ? centimetresPerInch : 0.0;
    return {scale * exif.fraction(Main, ExifBlock::xResolution).value_or(0),
            scale * exif.fraction(Main, ExifBlock::yResolution).value_or(0)};
}

// The profile's pieces are numbered from 1 and may stand in any order.
class IccPieces {
  public:
    void add(const JpegSegment& segment) {
        if (segment.data.size() < iccName.size() + 2) return;
        pieces_.try_emplace(segment.data[iccName.size()], segment.data.subspan(iccName.size() + 2));
        count_ = segment.data[iccName.size() + 1];
    }
    Bytes profile() const {
        Bytes whole;
        int expected = 1;
        for (const auto& [number, piece] : pieces_) {
            if (number != expected++) return {};
            append(whole, piece);
        }
        return expected == count_ + 1 ? whole : Bytes{};
    }

  private:
    std::map<int, std::span<const std::uint8_t>> pieces_;
    int count_ = 0;
};

// True if the segment is one that a new file must not repeat.
bool isOfOldFile(const JpegSegment& segment) {
    return (segment.application() == 0 && segment.startsWith(jfifExtensionName)) ||
           (segment.application() == 2 && segment.startsWith(pictureIndexName)) ||
           (segment.application() == 14 && segment.startsWith(adobeName));
}

Bytes contentBehind(const JpegSegment& segment, std::string_view name) {
    const auto rest = segment.data.subspan(name.size());
    return {rest.begin(), rest.end()};
}

// Several comments as one text. Some writers end each with a zero, which is no part of the text.
std::string joined(const std::vector<Bytes>& comments) {
    std::string text;
    for (const Bytes& comment : comments) {
        if (!text.empty()) text += '\n';
        text.append(comment.begin(), comment.end());
        while (text.ends_with('\0'))
            text.pop_back();
    }
    return text;
}

// The segments that a field of Metadata has room for. False: an opaque marker.
bool takeKnown(const JpegSegment& segment, Metadata& metadata, IccPieces& icc) {
    const int number = segment.application();
    if (number == 0 && segment.startsWith(jfifName)) {
        readDensity(segment, metadata);
        return false;
    } else if (number == 1 && segment.startsWith(exifMark) &&
               segment.data.size() > exifName.size() && metadata.exif.empty()) {
        metadata.exif = contentBehind(segment, exifName);
    } else if (number == 1 && segment.startsWith(xmpName) && metadata.xmp.empty()) {
        metadata.xmp = contentBehind(segment, xmpName);
    } else if (number == 2 && segment.startsWith(iccName)) {
        icc.add(segment);
    } else if (number == 13 && segment.startsWith(photoshopName)) {
        append(metadata.photoshop, segment.data.subspan(photoshopName.size()));
    } else {
        return isOfOldFile(segment);
    }
    return true;
}

} // namespace

Metadata jpegMetadata(const JpegOutline& outline) {
    Metadata metadata;
    IccPieces icc;
    std::vector<Bytes> comments;
    for (const JpegSegment& segment : outline.segments) {
        const Bytes data(segment.data.begin(), segment.data.end());
        if (segment.marker == JpegSegment::comment)
            comments.push_back(data);
        else if (!takeKnown(segment, metadata, icc))
            metadata.jpegMarkers.push_back({segment.application(), data});
    }
    metadata.comment = joined(comments);
    if (comments.size() > 1 ||
        (comments.size() == 1 && comments.front().size() != metadata.comment.size()))
        for (const Bytes& comment : comments)
            metadata.jpegMarkers.push_back({JpegMarker::comment, comment});
    metadata.icc = icc.profile();
    metadata.iptc = iptcInPhotoshop(metadata.photoshop);
    if (metadata.xDpi <= 0 || metadata.yDpi <= 0)
        std::tie(metadata.xDpi, metadata.yDpi) = exifDensity(metadata.exif);
    return metadata;
}

namespace {

JpegMarker named(int number, std::string_view name, std::span<const std::uint8_t> content) {
    JpegMarker marker{number, Bytes(name.begin(), name.end())};
    append(marker.data, content);
    return marker;
}

void addWhole(std::vector<JpegMarker>& to, int number, std::string_view name,
              const Bytes& content) {
    if (!content.empty() && name.size() + content.size() <= longestSegment)
        to.push_back(named(number, name, content));
}

void addIcc(std::vector<JpegMarker>& to, std::span<const std::uint8_t> profile) {
    constexpr std::size_t room = longestSegment - iccName.size() - 2;
    const std::size_t count = (profile.size() + room - 1) / room;
    if (count > 255) return;
    for (std::size_t i = 0; i < count; ++i) {
        Bytes piece{static_cast<std::uint8_t>(i + 1), static_cast<std::uint8_t>(count)};
        append(piece, profile.subspan(i * room, std::min(room, profile.size() - i * room)));
        to.push_back(named(2, iccName, piece));
    }
}

void addPhotoshop(std::vector<JpegMarker>& to, std::span<const std::uint8_t> blocks) {
    constexpr std::size_t room = longestSegment - photoshopName.size();
    for (std::size_t at = 0; at < blocks.size(); at += room)
        to.push_back(
            named(13, photoshopName, blocks.subspan(at, std::min(room, blocks.size() - at))));
}

bool isKept(int number, std::uint32_t mask) {
    if (number < 1 || number > 14) return mask != 0;
    return (mask >> (number - 1) & 1) != 0;
}

bool isJfif(const JpegMarker& marker) {
    return marker.number == 0 && marker.data.size() >= jfifName.size() + 2 &&
           std::equal(jfifName.begin(), jfifName.end(), marker.data.begin());
}

} // namespace

std::vector<JpegMarker> jpegSegmentsFor(const Metadata& metadata, std::uint32_t mask) {
    std::vector<JpegMarker> all;
    addWhole(all, 1, exifName, metadata.exif);
    addWhole(all, 1, xmpName, metadata.xmp);
    addIcc(all, metadata.icc);
    if (!metadata.photoshop.empty()) {
        addPhotoshop(all, metadata.photoshop);
    } else if (!metadata.iptc.empty()) {
        addPhotoshop(all, photoshopFromIptc(metadata.iptc));
    }
    for (const JpegMarker& marker : metadata.jpegMarkers)
        if (!isJfif(marker) && marker.number != JpegMarker::comment)
            addWhole(all, marker.number, {}, marker.data);
    std::erase_if(all, [&](const JpegMarker& marker) { return !isKept(marker.number, mask); });
    std::ranges::stable_sort(all, {}, &JpegMarker::number);
    return all;
}

std::vector<Bytes> jpegCommentsFor(const Metadata& metadata) {
    std::vector<Bytes> comments;
    for (const JpegMarker& marker : metadata.jpegMarkers)
        if (marker.number == JpegMarker::comment) comments.push_back(marker.data);
    if (joined(comments) == metadata.comment) return comments;
    const std::size_t length = std::min(metadata.comment.size(), longestSegment);
    return {Bytes(metadata.comment.begin(),
                  metadata.comment.begin() + static_cast<std::ptrdiff_t>(length))};
}

namespace {

void setDensity(Jfif& jfif, double xDpi, double yDpi) {
    constexpr double most = 65535;
    if (!(xDpi > 0 && yDpi > 0 && xDpi <= most && yDpi <= most)) return;
    const auto error = [](double value) { return std::abs(value - std::round(value)); };
    const double x = xDpi / centimetresPerInch, y = yDpi / centimetresPerInch;
    // 118 dots per centimetre are 299.72 per inch: the unit that the file came in is the one in
    // which both numbers are whole.
    const bool metric = x >= 1 && y >= 1 && error(x) + error(y) + 1e-6 < error(xDpi) + error(yDpi);
    const auto whole = [](double value) {
        return std::max(1, static_cast<int>(std::lround(value)));
    };
    jfif.unit = metric ? 2 : 1;
    jfif.x = whole(metric ? x : xDpi);
    jfif.y = whole(metric ? y : yDpi);
}

} // namespace

Jfif jfifFor(const Metadata& metadata, std::uint32_t mask) {
    Jfif jfif;
    setDensity(jfif, metadata.xDpi, metadata.yDpi);
    const auto kept = std::ranges::find_if(metadata.jpegMarkers, isJfif);
    if (kept != metadata.jpegMarkers.end()) {
        jfif.majorVersion = kept->data[jfifName.size()];
        jfif.minorVersion = kept->data[jfifName.size() + 1];
        return jfif;
    }
    const bool hasExif = !metadata.exif.empty() && isKept(1, mask);
    const auto same = [](double a, double b) { return std::abs(a - b) < 0.01; };
    const auto [x, y] = exifDensity(metadata.exif);
    jfif.isWritten = !hasExif || !same(x, metadata.xDpi) || !same(y, metadata.yDpi);
    return jfif;
}

} // namespace kvn::imaging
