#include <algorithm>
#include <array>

#include "basic/error.h"
#include "imaging/codecs/jpeg.h"
#include "imaging/codecs/jpeg_library.h"
#include "imaging/codecs/jpeg_metadata.h"
#include "imaging/codecs/jpeg_trailer.h"
#include "imaging/metadata/for_writing.h"

namespace kvn::imaging {

namespace {

constexpr int fullChromaFrom = 90;
// Tables made for the picture cost a second pass and save 2 to 6 percent. Small pictures get
// them; large ones are coded in bands on all cores, with the standard tables.
constexpr std::int64_t smallPicture = 1'000'000;
constexpr std::uint8_t firstRestart = 0xd0;

// How rows reach the library.
struct RowForm {
    J_COLOR_SPACE space = JCS_RGB;
    int channels = 3;
    bool converts = false;
    bool gray = false;
};

bool isGray(const Raster& raster) {
    if (!hasPalette(raster.type()))
        return raster.type() == ImageType::Gray8 || raster.type() == ImageType::GrayAlpha16;
    return std::ranges::all_of(raster.palette().colors(),
                               [](Rgba c) { return c.r == c.g && c.g == c.b; });
}

RowForm formFor(const Raster& raster) {
    if (raster.type() == ImageType::Rgb24) return {};
    if (raster.type() == ImageType::Rgba32) return {JCS_EXT_RGBX, 4, false, false};
    if (isGray(raster)) return {JCS_GRAYSCALE, 1, raster.type() != ImageType::Gray8, true};
    return {JCS_RGB, 3, true, false};
}

void convertRow(const Raster& raster, const RowForm& form, int y, std::uint8_t* to) {
    const std::uint8_t* from = raster.view().row(y);
    for (int x = 0; x < raster.width(); ++x) {
        if (raster.type() == ImageType::GrayAlpha16) {
            *to++ = from[2 * x];
            continue;
        }
        const int index =
            raster.type() == ImageType::Bit1 ? from[x >> 3] >> (7 - (x & 7)) & 1 : from[x];
        const Rgba color = raster.palette()[static_cast<std::size_t>(index)];
        *to++ = color.r;
        if (form.channels == 1) continue;
        *to++ = color.g;
        *to++ = color.b;
    }
}

// Codes the rows y0 to y1 of a picture as a JPEG of their own.
class Encoder {
  public:
    Encoder(const Raster& raster, const WriteOptions& options, int y0, int y1)
        : raster_(raster), form_(formFor(raster)), y0_(y0), y1_(y1) {
        info_.err = errors_.manager();
        output_.resize(std::size_t{64} << 10);
        must([&] { jpeg_create_compress(&info_); });
        setUp(options);
    }

    void optimise() { info_.optimize_coding = TRUE; }
    void progressive() {
        must([&] { jpeg_simple_progression(&info_); });
    }
    void setJfif(const Jfif& jfif);
    void setRestartInterval(int blocks) { info_.restart_interval = static_cast<unsigned>(blocks); }
    int bandRows() const { return info_.comp_info[0].v_samp_factor * DCTSIZE; }
    int blocksInRow() const {
        const int blockWidth = info_.comp_info[0].h_samp_factor * DCTSIZE;
        return (raster_.width() + blockWidth - 1) / blockWidth;
    }

    void start(const std::vector<JpegMarker>& markers, const std::vector<Bytes>& comments);
    void writeRows(Task* task, ByteSink* sink);
    void finish() {
        must([&] { jpeg_finish_compress(&info_); });
    }
    // What is coded and not yet given to a sink.
    std::span<const std::uint8_t> output() const {
        return {output_.data(), output_.size() - destination_.manager.free_in_buffer};
    }

  private:
    template <typename Calls>
    void must(const Calls& calls) {
        if (!errors_.guarded(calls))
            throw RuntimeError(errors::invalidCall,
                               "The JPEG file cannot be written: " + errors_.message() + ".",
                               "Export");
    }
    void setUp(const WriteOptions& options);
    void drain(ByteSink& sink);
    static void onStart(j_compress_ptr) {}
    static boolean onFull(j_compress_ptr info);

    // A member, so that it goes even when the constructor throws.
    struct Library : jpeg_compress_struct {
        Library() : jpeg_compress_struct{} {}
        ~Library() { jpeg_destroy_compress(this); }
        Library(const Library&) = delete;
        Library& operator=(const Library&) = delete;
    };
    struct Destination {
        jpeg_destination_mgr manager{};
        Encoder* self = nullptr;
    };

    const Raster& raster_;
    RowForm form_;
    int y0_, y1_;
    JpegErrors errors_;
    Library info_;
    Destination destination_;
    Bytes output_;
    Bytes row_;
};

void Encoder::setUp(const WriteOptions& options) {
    destination_.self = this;
    destination_.manager.next_output_byte = output_.data();
    destination_.manager.free_in_buffer = output_.size();
    destination_.manager.init_destination = &Encoder::onStart;
    destination_.manager.term_destination = &Encoder::onStart;
    destination_.manager.empty_output_buffer = &Encoder::onFull;
    info_.dest = &destination_.manager;
    info_.image_width = static_cast<JDIMENSION>(raster_.width());
    info_.image_height = static_cast<JDIMENSION>(y1_ - y0_);
    info_.input_components = form_.channels;
    info_.in_color_space = form_.space;
    const int quality = std::clamp(options.jpegQuality, 1, 100);
    must([&] {
        jpeg_set_defaults(&info_);
        jpeg_set_quality(&info_, quality, TRUE);
    });
    info_.smoothing_factor = std::clamp(options.jpegSmoothing, 0, 100);
    if (quality >= fullChromaFrom) {
        info_.comp_info[0].h_samp_factor = 1;
        info_.comp_info[0].v_samp_factor = 1;
    }
}

boolean Encoder::onFull(j_compress_ptr info) {
    Encoder& self = *reinterpret_cast<Destination*>(info->dest)->self;
    const std::size_t used = self.output_.size();
    try {
        self.output_.resize(2 * used);
    } catch (const std::bad_alloc&) {
        self.errors_.giveUp("out of memory");
    }
    info->dest->next_output_byte = self.output_.data() + used;
    info->dest->free_in_buffer = used;
    return TRUE;
}

void Encoder::setJfif(const Jfif& jfif) {
    info_.write_JFIF_header = jfif.isWritten ? TRUE : FALSE;
    info_.JFIF_major_version = static_cast<UINT8>(jfif.majorVersion);
    info_.JFIF_minor_version = static_cast<UINT8>(jfif.minorVersion);
    info_.density_unit = static_cast<UINT8>(jfif.unit);
    info_.X_density = static_cast<UINT16>(jfif.x);
    info_.Y_density = static_cast<UINT16>(jfif.y);
}

void Encoder::start(const std::vector<JpegMarker>& markers, const std::vector<Bytes>& comments) {
    must([&] { jpeg_start_compress(&info_, TRUE); });
    const auto put = [&](int marker, const Bytes& data) {
        must([&] {
            jpeg_write_marker(&info_, marker, data.data(), static_cast<unsigned>(data.size()));
        });
    };
    for (const JpegMarker& marker : markers)
        put(JPEG_APP0 + marker.number, marker.data);
    for (const Bytes& comment : comments)
        put(JPEG_COM, comment);
}

void Encoder::writeRows(Task* task, ByteSink* sink) {
    constexpr int rowsAtOnce = 64;
    const ConstView view = raster_.view();
    row_.resize(form_.converts ? static_cast<std::size_t>(raster_.width() * form_.channels) : 0);
    for (int y = y0_; y < y1_;) {
        const int end = std::min(y + rowsAtOnce, y1_);
        must([&] {
            for (; y < end; ++y) {
                auto* row = const_cast<JSAMPROW>(view.row(y));
                if (form_.converts) {
                    convertRow(raster_, form_, y, row_.data());
                    row = row_.data();
                }
                jpeg_write_scanlines(&info_, &row, 1);
            }
        });
        if (sink) drain(*sink);
        if (task) task->report(static_cast<double>(y - y0_) / (y1_ - y0_));
    }
}

void Encoder::drain(ByteSink& sink) {
    const auto ready = output();
    sink.write(ready.data(), ready.size());
    destination_.manager.next_output_byte = output_.data();
    destination_.manager.free_in_buffer = output_.size();
}

struct Job {
    const Raster& raster;
    const WriteOptions& options;
    std::vector<JpegMarker> markers;
    std::vector<Bytes> comments;
    Jfif jfif;
};

void writeWhole(const Job& job, bool optimise, ByteSink& sink, Task& task) {
    Encoder encoder(job.raster, job.options, 0, job.raster.height());
    encoder.setJfif(job.jfif);
    if (job.options.jpegProgressive) encoder.progressive();
    if (optimise) encoder.optimise();
    encoder.start(job.markers, job.comments);
    encoder.writeRows(&task, &sink);
    encoder.finish();
    sink.write(encoder.output().data(), encoder.output().size());
}

// The first band's file is the head of the whole: only the height in its frame header is wrong.
void setHeight(Bytes& file, int height) {
    for (std::size_t at = 2; at + 7 < file.size();) {
        if (file[at + 1] == 0xc0) {
            file[at + 5] = static_cast<std::uint8_t>(height >> 8);
            file[at + 6] = static_cast<std::uint8_t>(height);
            return;
        }
        at += 2 + static_cast<std::size_t>(file[at + 2] << 8 | file[at + 3]);
    }
}

// The coded data of a band's file, without the headers before and the end marker behind it.
std::span<const std::uint8_t> codedPart(std::span<const std::uint8_t> file) {
    const std::size_t scan = outlineJpeg(file).scan;
    const std::size_t header = static_cast<std::size_t>(file[scan + 2] << 8 | file[scan + 3]);
    const std::size_t begin = scan + 2 + header;
    return file.subspan(begin, file.size() - 2 - begin);
}

Bytes codeBand(const Job& job, int y0, int y1, int interval) {
    const bool first = y0 == 0;
    Encoder encoder(job.raster, job.options, y0, y1);
    encoder.setJfif(job.jfif);
    if (first) encoder.setRestartInterval(interval);
    encoder.start(first ? job.markers : std::vector<JpegMarker>{},
                  first ? job.comments : std::vector<Bytes>{});
    encoder.writeRows(nullptr, nullptr);
    encoder.finish();
    const auto file = encoder.output();
    if (!first) {
        const auto coded = codedPart(file);
        return {coded.begin(), coded.end()};
    }
    Bytes head(file.begin(), file.end() - 2);
    setHeight(head, job.raster.height());
    return head;
}

// Bands of whole block rows, coded each on its own and joined by restart markers, after which a
// decoder starts afresh anyway. The pixels are those of a file coded in one go.
void writeBands(const Job& job, ByteSink& sink, Task& task) {
    constexpr int mostBands = 64, mostBlocks = 65535;
    const Encoder probe(job.raster, job.options, 0, 1);
    const int height = job.raster.height(), blocks = probe.blocksInRow();
    const int blockRows = (height + probe.bandRows() - 1) / probe.bandRows();
    const int rowsPerBand =
        std::max(1, std::min((blockRows + mostBands - 1) / mostBands, mostBlocks / blocks));
    const int bandHeight = rowsPerBand * probe.bandRows();
    const int bands = (height + bandHeight - 1) / bandHeight;

    std::vector<Bytes> coded(static_cast<std::size_t>(bands));
    parallelRows(
        bands, task,
        [&](int from, int to) {
            for (int band = from; band < to; ++band)
                coded[static_cast<std::size_t>(band)] =
                    codeBand(job, band * bandHeight, std::min((band + 1) * bandHeight, height),
                             rowsPerBand * blocks);
        },
        1);
    for (int band = 0; band < bands; ++band) {
        const Bytes& part = coded[static_cast<std::size_t>(band)];
        sink.write(part.data(), part.size());
        const bool last = band == bands - 1;
        const std::uint8_t marker =
            last ? 0xd9 : static_cast<std::uint8_t>(firstRestart + band % 8);
        sink.write(std::array<std::uint8_t, 2>{0xff, marker}.data(), 2);
    }
}

void checkSides(const Raster& raster) {
    if (std::max(raster.width(), raster.height()) <= JPEG_MAX_DIMENSION) return;
    throw RuntimeError(errors::invalidCall,
                       "A JPEG file holds at most " + std::to_string(JPEG_MAX_DIMENSION) +
                           " pixels a side; the picture has " + std::to_string(raster.width()) +
                           " x " + std::to_string(raster.height()) + ".",
                       "Export");
}

} // namespace

void writeJpeg(const Page& page, const WriteOptions& options, ByteSink& sink, Task& task) {
    const Raster& raster = page.raster;
    checkSides(raster);
    const Metadata metadata = metadataForWriting(page.metadata ? *page.metadata : Metadata{},
                                                 raster, formFor(raster).gray);
    const Job job{raster, options, jpegSegmentsFor(metadata, options.jpegMarkers),
                  jpegCommentsFor(metadata), jfifFor(metadata, options.jpegMarkers)};
    const bool small = std::int64_t{raster.width()} * raster.height() <= smallPicture;
    // Smoothing looks at the rows around a block, so bands would show.
    if (small || options.jpegProgressive || options.jpegSmoothing > 0)
        writeWhole(job, small, sink, task);
    else
        writeBands(job, sink, task);
    const Bytes trailer = jpegTrailerFor(metadata, raster, options.jpegMarkers);
    if (!trailer.empty()) sink.write(trailer.data(), trailer.size());
}

} // namespace kvn::imaging
