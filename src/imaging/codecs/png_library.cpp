#include "imaging/codecs/png_library.h"

#include <csetjmp>
#include <cstring>

#include <png.h>

namespace kvn::imaging {

namespace {

// libpng's failures leave by longjmp, which must cross no destructor: every call into it goes
// through guarded().
class Reader {
  public:
    Reader(std::span<const std::uint8_t> file, PngRawRows& result) : file_(file), result_(result) {
        png_ = png_create_read_struct(PNG_LIBPNG_VER_STRING, this, &Reader::onError,
                                      &Reader::onWarning);
        if (!png_) throw std::bad_alloc();
        guarded([&] {
            info_ = png_create_info_struct(png_);
            png_set_read_fn(png_, this, &Reader::onRead);
            png_set_user_limits(png_, PNG_UINT_31_MAX, PNG_UINT_31_MAX);
            png_set_crc_action(png_, PNG_CRC_WARN_USE, PNG_CRC_WARN_USE);
            // The metadata is read elsewhere; nothing here is spent on it.
            png_set_keep_unknown_chunks(png_, PNG_HANDLE_CHUNK_NEVER, nullptr, -1);
        });
    }
    ~Reader() { png_destroy_read_struct(&png_, &info_, nullptr); }
    Reader(const Reader&) = delete;
    Reader& operator=(const Reader&) = delete;

    // Reads the header. False if it does not agree with what is expected.
    bool start(const PngHeader& header) {
        return guarded([&] {
                   png_read_info(png_, info_);
                   passes_ = png_set_interlace_handling(png_);
                   png_start_read_image(png_);
               }) &&
               png_get_rowbytes(png_, info_) == header.rowBytes();
    }
    int passes() const { return passes_; }
    // Of an early pass, each pixel fills the area that later ones refine.
    bool readRow(std::uint8_t* row) {
        return guarded([&] { png_read_row(png_, nullptr, row); });
    }

  private:
    template <typename Calls>
    bool guarded(const Calls& calls) {
        if (setjmp(jump_) != 0) return false;
        calls();
        return true;
    }
    static Reader& of(png_structp png) { return *static_cast<Reader*>(png_get_error_ptr(png)); }
    static void note(png_structp png, const char* message) {
        std::string& kept = of(png).result_.message;
        if (kept.empty()) kept = message;
    }
    [[noreturn]] static void onError(png_structp png, const char* message) {
        note(png, message);
        std::longjmp(of(png).jump_, 1);
    }
    static void onWarning(png_structp png, const char* message) { note(png, message); }
    static void onRead(png_structp png, png_bytep to, std::size_t size) {
        auto& self = *static_cast<Reader*>(png_get_io_ptr(png));
        if (size > self.file_.size() - self.at_) png_error(png, "the file ends too early");
        std::memcpy(to, self.file_.data() + self.at_, size);
        self.at_ += size;
    }

    std::span<const std::uint8_t> file_;
    std::size_t at_ = 0;
    PngRawRows& result_;
    png_structp png_ = nullptr;
    png_infop info_ = nullptr;
    std::jmp_buf jump_{};
    int passes_ = 1;
};

} // namespace

PngRawRows readPngRows(std::span<const std::uint8_t> file, const PngHeader& header, Task& task) {
    PngRawRows result;
    Reader reader(file, result);
    if (!reader.start(header)) return result;
    result.rows = PixelBuffer(header.rowBytes(), header.height);
    std::uint8_t* data = result.rows.detach();
    std::memset(data, 0, result.rows.byteSize());
    const std::size_t stride = result.rows.stride();
    const double total = static_cast<double>(reader.passes()) * header.height;
    for (int pass = 0; pass < reader.passes(); ++pass)
        for (int y = 0; y < header.height; ++y) {
            if (!reader.readRow(data + stride * static_cast<std::size_t>(y))) return result;
            result.count = std::max(result.count, y + 1);
            if (y % 64 == 0) task.report((pass * static_cast<double>(header.height) + y) / total);
        }
    return result;
}

} // namespace kvn::imaging
