#include <algorithm>
#include <array>
#include <cstring>
#include <limits>
#include <memory>
#include <optional>
#include <thread>

#include "basic/error.h"
#include "imaging/codecs/jpeg.h"
#include "imaging/codecs/jpeg_library.h"
#include "imaging/codecs/jpeg_metadata.h"
#include "imaging/codecs/jpeg_trailer.h"
#include "imaging/metadata/exif_block.h"
#include "imaging/metadata/orientation.h"

namespace kvn::imaging {

namespace {

[[noreturn]] void refuse(const std::string& why) {
    throw RuntimeError(errors::invalidPicture, "The JPEG file cannot be read: " + why + ".",
                       "Import");
}

JpegFrame checkedFrame(const JpegOutline& outline) {
    if (!outline.frame) refuse("it has no picture");
    const JpegFrame& frame = *outline.frame;
    if (frame.isLossless()) refuse("lossless JPEG is not supported");
    if (frame.precision != 8)
        refuse(std::to_string(frame.precision) + " bits a channel are not supported");
    if (frame.components != 1 && frame.components != 3 && frame.components != 4)
        refuse("pictures of " + std::to_string(frame.components) + " channels are not supported");
    return frame;
}

ImageType typeFor(int components) {
    return components == 1 ? ImageType::Gray8 : ImageType::Rgb24;
}

// Even an empty picture costs one bit for each block of 64 pixels. A large one in a file that
// falls short of half of that is nothing but a claim, and decoding it would take memory and time
// for no picture.
void checkPlausible(const JpegFrame& frame, std::size_t fileSize) {
    constexpr std::uint64_t alwaysFine = 50'000'000, pixelsByte = 1024;
    const std::uint64_t pixels = std::uint64_t(frame.width) * std::uint64_t(frame.height);
    if (pixels > alwaysFine && pixels / pixelsByte > fileSize)
        refuse("it ends long before its picture of " + std::to_string(frame.width) + " x " +
               std::to_string(frame.height) + " pixels");
}

class Decoder {
  public:
    Decoder(std::span<const std::uint8_t> file, ReadLimits& limits) : file_(file) {
        info_.err = errors_.manager();
        must([&] {
            jpeg_create_decompress(&info_);
            jpeg_mem_src(&info_, file.data(), static_cast<unsigned long>(file.size()));
            jpeg_read_header(&info_, TRUE);
        });
        width_ = static_cast<int>(info_.image_width);
        height_ = static_cast<int>(info_.image_height);
        isCmyk_ = info_.jpeg_color_space == JCS_CMYK || info_.jpeg_color_space == JCS_YCCK;
        const bool isGray = info_.jpeg_color_space == JCS_GRAYSCALE;
        info_.out_color_space = isGray ? JCS_GRAYSCALE : isCmyk_ ? JCS_CMYK : JCS_RGB;
        type_ = isGray ? ImageType::Gray8 : ImageType::Rgb24;
        limits.take(width_, height_, type_);
        guardScans(limits);
    }
    // False if there is a scan that cannot be begun, see brokenAt().
    bool start() {
        return errors_.guarded([&] { jpeg_start_decompress(&info_); });
    }
    // After start().
    Raster decode(Task& task);
    // Where in the file the part begins that could not be read, 0 if nothing before it is a
    // picture.
    std::size_t brokenAt() const;
    // Decodes the rows from `from` to `to` alone; rows before them are passed over, which takes
    // half the time of decoding them. False if anything at all was wrong.
    bool decodePart(const View& view, int from, int to);

    // Worth to be decoded by two at once.
    bool isLargeAndSimple() {
        constexpr std::int64_t large = 1'000'000;
        return !isCmyk_ && !jpeg_has_multiple_scans(&info_) &&
               std::int64_t{width_} * height_ > large;
    }
    ImageType type() const { return type_; }
    Size size() const { return {width_, height_}; }
    int bandRows() const { return info_.max_v_samp_factor * DCTSIZE; }
    bool isCmyk() const { return isCmyk_; }
    // Empty if nothing was wrong.
    std::string warning() const { return failure_.empty() ? errors_.firstWarning() : failure_; }
    std::string error() const { return errors_.message(); }

  private:
    template <typename Calls>
    void must(const Calls& calls) {
        if (!errors_.guarded(calls)) refuse(errors_.message());
    }
    void guardScans(const ReadLimits& limits);
    static void onProgress(j_common_ptr info);

    // Decodes rows from output_scanline up to `end`. False when the library gave up.
    bool decodeRows(const View& view, int end);
    void convertCmyk(std::uint8_t* rgb) const;
    // The row behind the last one that has data in the file.
    int endOfData() const;

    // A member, so that it goes even when the constructor throws.
    struct Library : jpeg_decompress_struct {
        Library() : jpeg_decompress_struct{} {}
        ~Library() { jpeg_destroy_decompress(this); }
        Library(const Library&) = delete;
        Library& operator=(const Library&) = delete;
    };
    struct Progress {
        jpeg_progress_mgr manager{};
        JpegErrors* errors = nullptr;
        int mostScans = 0;
    };

    std::span<const std::uint8_t> file_;
    JpegErrors errors_;
    Library info_;
    Progress progress_;
    int width_ = 0, height_ = 0;
    ImageType type_ = ImageType::Rgb24;
    bool isCmyk_ = false;
    Bytes cmyk_; // one row
    std::string failure_;
};

// Files of several scans can ask for any number of passes over the whole picture, and hold all
// coefficients in memory, two bytes a sample. Usual files have about ten scans.
void Decoder::guardScans(const ReadLimits& limits) {
    constexpr int usualScans = 24;
    constexpr std::int64_t pixelPasses = 1'000'000'000;
    const std::int64_t passes = pixelPasses / (std::int64_t{width_} * height_);
    progress_.mostScans = static_cast<int>(std::clamp<std::int64_t>(passes, usualScans, 500));
    progress_.errors = &errors_;
    progress_.manager.progress_monitor = &Decoder::onProgress;
    info_.progress = &progress_.manager;
    constexpr std::uint64_t workspace = 64 << 20;
    const std::uint64_t samples =
        std::uint64_t(width_) * std::uint64_t(height_) * std::uint64_t(info_.num_components);
    if (jpeg_has_multiple_scans(&info_) && 2 * samples > limits.pixelBytes + workspace)
        throw RuntimeError(errors::outOfMemory,
                           "The JPEG file's coding needs more memory than the limit for files.",
                           "Import");
}

void Decoder::onProgress(j_common_ptr common) {
    const auto* info = reinterpret_cast<j_decompress_ptr>(common);
    const auto* progress = reinterpret_cast<const Progress*>(common->progress);
    if (info->input_scan_number > progress->mostScans)
        progress->errors->giveUp("it has too many scans");
}

std::size_t Decoder::brokenAt() const {
    const bool tooMany = info_.input_scan_number > progress_.mostScans;
    if (!jpeg_has_multiple_scans(const_cast<Library*>(&info_)) || tooMany) return 0;
    // Behind the end the library reads bytes of its own.
    const std::uint8_t* const next = info_.src->next_input_byte;
    const bool inside = next >= file_.data() && next <= file_.data() + file_.size();
    std::size_t at = inside ? static_cast<std::size_t>(next - file_.data()) : file_.size();
    // Back to the marker: within coded pixels there are only fill bytes and restart markers.
    const auto isMarker = [&](std::uint8_t code) {
        return code != 0 && code != 0xff && (code < 0xd0 || code > 0xd7);
    };
    while (at >= 2 && !(file_[at - 2] == 0xff && isMarker(file_[at - 1])))
        --at;
    return at >= 2 ? at - 2 : 0;
}

Raster Decoder::decode(Task& task) {
    if (isCmyk_) cmyk_.resize(static_cast<std::size_t>(width_) * 4);
    Raster raster = Raster::uninitialized(type_, width_, height_);
    const View view = raster.edit();
    int row = 0, end = height_;
    for (int band = 0; row < end; ++band) {
        const bool whole = decodeRows(view, std::min(row + bandRows(), end));
        row = static_cast<int>(info_.output_scanline);
        if (!whole) {
            if (row == 0) refuse(errors_.message());
            failure_ = errors_.message();
            end = row;
        }
        end = std::min(end, endOfData());
        if (band % 8 == 0) task.report(static_cast<double>(row) / height_);
    }
    for (int y = end; y < height_; ++y)
        std::memset(view.row(y), 0, rowBytes(type_, width_));
    return raster;
}

bool Decoder::decodePart(const View& view, int from, int to) {
    return errors_.guarded([&] {
        jpeg_start_decompress(&info_);
        if (from > 0) jpeg_skip_scanlines(&info_, static_cast<JDIMENSION>(from));
    }) && decodeRows(view, to) &&
           warning().empty();
}

int Decoder::endOfData() const {
    const int last = errors_.dataEndedIn();
    // With restart markers the decoder finds its way again, unless the file itself is over. In a
    // file of several scans a later one that is cut only lacks detail.
    const bool resumes = info_.restart_interval != 0 && !errors_.fileEnded();
    if (last < 0 || resumes || info_.input_scan_number > 1 || info_.progressive_mode)
        return height_;
    return static_cast<int>(std::min<std::int64_t>(height_, (last + std::int64_t{1}) * bandRows()));
}

bool Decoder::decodeRows(const View& view, int end) {
    return errors_.guarded([&] {
        while (static_cast<int>(info_.output_scanline) < end) {
            const int y = static_cast<int>(info_.output_scanline);
            if (isCmyk_) {
                JSAMPROW row = cmyk_.data();
                jpeg_read_scanlines(&info_, &row, 1);
                convertCmyk(view.row(y));
                continue;
            }
            std::array<JSAMPROW, 4> rows{};
            const int count = std::min(end - y, static_cast<int>(rows.size()));
            for (int i = 0; i < count; ++i)
                rows[static_cast<std::size_t>(i)] = view.row(y + i);
            jpeg_read_scanlines(&info_, rows.data(), static_cast<JDIMENSION>(count));
        }
    });
}

void Decoder::convertCmyk(std::uint8_t* rgb) const {
    // Adobe's programs store the inks inverted, that is, as light.
    const int flip = info_.saw_Adobe_marker ? 0 : 0xff;
    const std::uint8_t* ink = cmyk_.data();
    for (int x = 0; x < width_; ++x, ink += 4, rgb += 3) {
        const int light = ink[3] ^ flip;
        for (int channel = 0; channel < 3; ++channel)
            rgb[channel] = mul255(ink[channel] ^ flip, light);
    }
}

// A large picture by two decoders, the second of which runs over the upper part's codes only to
// find where the lower part begins. Nothing for a file that is not whole: that is read in order.
std::optional<Raster> decodeInTwo(std::span<const std::uint8_t> file, Decoder& upper, Task& task) {
    ReadLimits same; // the picture is counted already
    same.pixelBytes = std::numeric_limits<std::uint64_t>::max();
    Decoder lower(file, same);
    const int height = upper.size().height;
    Raster raster = Raster::uninitialized(upper.type(), upper.size().width, height);
    const View view = raster.edit();
    // Where both take the same time.
    const int split = static_cast<int>(height * 0.67) / upper.bandRows() * upper.bandRows();
    std::array<bool, 2> whole{};
    parallelRows(
        2, task,
        [&](int part, int end) {
            for (; part < end; ++part)
                whole[static_cast<std::size_t>(part)] = part == 0
                                                            ? upper.decodePart(view, 0, split)
                                                            : lower.decodePart(view, split, height);
        },
        1);
    if (!whole[0] || !whole[1]) return {};
    return raster;
}

// The picture of a file of several scans without the one that cannot be begun and those behind it.
Raster decodeEarlierScans(std::span<const std::uint8_t> file, std::unique_ptr<Decoder>& decoder,
                          Task& task) {
    const std::size_t end = decoder->brokenAt();
    if (end == 0) refuse(decoder->error());
    ReadLimits same; // the picture is counted already
    auto shorter = std::make_unique<Decoder>(file.first(end), same);
    if (!shorter->start()) refuse(decoder->error());
    decoder = std::move(shorter);
    return decoder->decode(task);
}

bool hasTwoThreads(const Task& task) {
    return task.threads == 0 ? std::thread::hardware_concurrency() > 1 : task.threads > 1;
}

} // namespace

Picture readJpeg(std::span<const std::uint8_t> file, ReadLimits limits, Task& task) {
    const JpegOutline outline = outlineJpeg(file);
    const JpegFrame frame = checkedFrame(outline);
    auto metadata = std::make_shared<Metadata>(jpegMetadata(outline));
    const int orientation = exifOrientation(metadata->exif);
    ReadLimits(limits).take(frame.width, frame.height, typeFor(frame.components),
                            swapsSides(orientation));
    checkPlausible(frame, file.size());
    metadata->trailer = jpegTrailer(file);
    Picture picture;
    picture.type = FileType::Jpeg;

    auto decoder = std::make_unique<Decoder>(file, limits);
    std::optional<Raster> decoded;
    if (decoder->isLargeAndSimple() && hasTwoThreads(task)) {
        decoded = decodeInTwo(file, *decoder, task);
        if (!decoded) decoder = std::make_unique<Decoder>(file, limits);
    }
    if (!decoded)
        decoded =
            decoder->start() ? decoder->decode(task) : decodeEarlierScans(file, decoder, task);
    Raster raster = *std::move(decoded);
    if (const std::string warning = decoder->warning(); !warning.empty())
        picture.warnings.push_back("The JPEG file is damaged: " + warning + ".");
    if (decoder->isCmyk()) metadata->icc.clear();

    raster = turnedUpright(raster, orientation, task);
    picture.pages.push_back({std::move(raster), std::move(metadata), {}});
    return picture;
}

std::vector<PageFacts> jpegFacts(std::span<const std::uint8_t> file, ReadLimits limits) {
    const JpegOutline outline = outlineJpeg(file);
    const JpegFrame frame = checkedFrame(outline);
    const ImageType type = typeFor(frame.components);
    const bool turned = swapsSides(exifOrientation(jpegMetadata(outline).exif));
    limits.take(frame.width, frame.height, type, turned);
    PageFacts facts{frame.width, frame.height, type, frame.precision * frame.components};
    if (turned) std::swap(facts.width, facts.height);
    return {facts};
}

} // namespace kvn::imaging
