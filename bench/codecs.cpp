// Reading and writing 24 megapixels beside the bare codec library doing the same.
#include <benchmark/benchmark.h>
#include <cstdio>
#include <cstring>
#include <gif_lib.h>
#include <jpeglib.h>
#include <map>
#include <png.h>
#include <tiffio.h>

#include "bench/photo.h"
#include "imaging/byte_io.h"
#include "imaging/codecs/codec.h"
#include "tests/imaging/support/metafile_maker.h"

namespace {

using namespace kvn::imaging;

const Raster& picture() {
    static const Raster raster = kvn::bench::photo();
    return raster;
}

std::vector<std::uint8_t> encoded(FileType type, const WriteOptions& options = {}) {
    const Page page{picture(), nullptr, {}};
    MemorySink sink;
    Task task;
    codecForType(type)->write({&page, 1}, options, sink, task);
    return std::move(sink.bytes());
}

const std::vector<std::uint8_t>& file(FileType type, int tiffCompression = 0) {
    static std::map<std::pair<int, int>, std::vector<std::uint8_t>> files;
    auto& bytes = files[{static_cast<int>(type), tiffCompression}];
    if (bytes.empty()) bytes = encoded(type, {.tiffCompression = tiffCompression});
    return bytes;
}

void ourRead(benchmark::State& state, FileType type, int compression) {
    const auto& bytes = file(type, compression);
    for (auto _ : state) {
        Task task;
        benchmark::DoNotOptimize(codecForType(type)->read(bytes, {}, task));
    }
}

// The greens as a GIF, made by the library.
const std::vector<std::uint8_t>& gifFile() {
    static std::vector<std::uint8_t> bytes;
    if (!bytes.empty()) return bytes;
    const ConstView view = picture().view();
    GifFileType* gif = EGifOpen(
        &bytes,
        [](GifFileType* file, const GifByteType* from, int size) {
            auto& to = *static_cast<std::vector<std::uint8_t>*>(file->UserData);
            to.insert(to.end(), from, from + size);
            return size;
        },
        nullptr);
    std::vector<GifColorType> colors(256);
    ColorMapObject* map = GifMakeMapObject(256, colors.data());
    EGifPutScreenDesc(gif, view.width, view.height, 8, 0, map);
    EGifPutImageDesc(gif, 0, 0, view.width, view.height, false, nullptr);
    std::vector<GifPixelType> row(static_cast<std::size_t>(view.width));
    for (int y = 0; y < view.height; ++y) {
        for (int x = 0; x < view.width; ++x)
            row[static_cast<std::size_t>(x)] = view.row(y)[3 * x + 1];
        EGifPutLine(gif, row.data(), view.width);
    }
    EGifCloseFile(gif, nullptr);
    GifFreeMapObject(map);
    return bytes;
}

void ourGifRead(benchmark::State& state) {
    const auto& bytes = gifFile();
    for (auto _ : state) {
        Task task;
        benchmark::DoNotOptimize(codecForType(FileType::Gif)->read(bytes, {}, task));
    }
}

void ourWrite(benchmark::State& state, FileType type, int compression) {
    std::size_t size = 0;
    for (auto _ : state)
        size = encoded(type, {.tiffCompression = compression}).size();
    state.counters["bytes"] = static_cast<double>(size);
}

// A chart on a screen of 1200 x 900: grid, two thousand lines of curves, filled figures, labels.
std::vector<std::uint8_t> chart() {
    kvn::test::EmfMaker emf;
    for (int i = 0; i < 40; ++i)
        emf.add(27, {0, i * 22}).add(54, {1200, i * 22}).text(5, i * 22, "Label of a line");
    emf.pen(1, 0, 2, 0xc02020).brush(2, 0x40c080);
    for (int i = 0; i < 2000; ++i)
        emf.add(27, {i * 37 % 1200, i * 17 % 900}).add(54, {i * 53 % 1200, i * 29 % 900});
    for (int i = 0; i < 200; ++i)
        emf.add(42, {i * 37 % 1100, i * 17 % 800, i * 37 % 1100 + 60, i * 17 % 800 + 40});
    return emf.file(1200, 900);
}

void drawingRead(benchmark::State& state) {
    const auto bytes = chart();
    for (auto _ : state) {
        Task task;
        benchmark::DoNotOptimize(codecForType(FileType::Emf)->read(bytes, {}, task));
    }
}

// --- the libraries alone -----------------------------------------------------------------------

void bareJpegRead(benchmark::State& state) {
    const auto& bytes = file(FileType::Jpeg);
    Raster target = picture();
    const View view = target.edit();
    for (auto _ : state) {
        jpeg_decompress_struct jpeg;
        jpeg_error_mgr errors;
        jpeg.err = jpeg_std_error(&errors);
        jpeg_create_decompress(&jpeg);
        jpeg_mem_src(&jpeg, bytes.data(), bytes.size());
        jpeg_read_header(&jpeg, TRUE);
        jpeg_start_decompress(&jpeg);
        while (jpeg.output_scanline < jpeg.output_height) {
            JSAMPROW row = view.row(static_cast<int>(jpeg.output_scanline));
            jpeg_read_scanlines(&jpeg, &row, 1);
        }
        jpeg_finish_decompress(&jpeg);
        jpeg_destroy_decompress(&jpeg);
    }
}

void bareJpegWrite(benchmark::State& state) {
    const ConstView view = picture().view();
    for (auto _ : state) {
        jpeg_compress_struct jpeg;
        jpeg_error_mgr errors;
        jpeg.err = jpeg_std_error(&errors);
        jpeg_create_compress(&jpeg);
        unsigned char* out = nullptr;
        unsigned long size = 0;
        jpeg_mem_dest(&jpeg, &out, &size);
        jpeg.image_width = static_cast<JDIMENSION>(view.width);
        jpeg.image_height = static_cast<JDIMENSION>(view.height);
        jpeg.input_components = 3;
        jpeg.in_color_space = JCS_RGB;
        jpeg_set_defaults(&jpeg);
        jpeg_set_quality(&jpeg, 75, TRUE);
        jpeg_start_compress(&jpeg, TRUE);
        while (jpeg.next_scanline < jpeg.image_height) {
            JSAMPROW row = const_cast<JSAMPROW>(view.row(static_cast<int>(jpeg.next_scanline)));
            jpeg_write_scanlines(&jpeg, &row, 1);
        }
        jpeg_finish_compress(&jpeg);
        jpeg_destroy_compress(&jpeg);
        free(out);
    }
}

struct Source {
    const std::uint8_t* data;
    std::size_t left;
};

void bareGifRead(benchmark::State& state) {
    const auto& bytes = gifFile();
    std::vector<GifPixelType> pixels(24'000'000);
    for (auto _ : state) {
        Source source{bytes.data(), bytes.size()};
        GifFileType* gif = DGifOpen(
            &source,
            [](GifFileType* file, GifByteType* to, int size) {
                auto& from = *static_cast<Source*>(file->UserData);
                const std::size_t n = std::min(static_cast<std::size_t>(size), from.left);
                std::memcpy(to, from.data, n);
                from.data += n;
                from.left -= n;
                return static_cast<int>(n);
            },
            nullptr);
        GifRecordType kind = UNDEFINED_RECORD_TYPE;
        DGifGetRecordType(gif, &kind);
        DGifGetImageDesc(gif);
        for (int y = 0; y < gif->Image.Height; ++y)
            DGifGetLine(gif, pixels.data() + std::ptrdiff_t{y} * gif->Image.Width,
                        gif->Image.Width);
        DGifCloseFile(gif, nullptr);
    }
}

void barePngRead(benchmark::State& state) {
    const auto& bytes = file(FileType::Png);
    Raster target = picture();
    const View view = target.edit();
    for (auto _ : state) {
        Source source{bytes.data(), bytes.size()};
        png_structp png = png_create_read_struct(PNG_LIBPNG_VER_STRING, nullptr, nullptr, nullptr);
        png_infop info = png_create_info_struct(png);
        png_set_read_fn(png, &source, [](png_structp p, png_bytep to, png_size_t size) {
            auto& from = *static_cast<Source*>(png_get_io_ptr(p));
            std::memcpy(to, from.data, size);
            from.data += size;
            from.left -= size;
        });
        png_read_info(png, info);
        for (int y = 0; y < view.height; ++y)
            png_read_row(png, view.row(y), nullptr);
        png_destroy_read_struct(&png, &info, nullptr);
    }
}

void barePngWrite(benchmark::State& state) {
    const ConstView view = picture().view();
    std::size_t size = 0;
    for (auto _ : state) {
        std::vector<std::uint8_t> out;
        png_structp png = png_create_write_struct(PNG_LIBPNG_VER_STRING, nullptr, nullptr, nullptr);
        png_infop info = png_create_info_struct(png);
        png_set_write_fn(
            png, &out,
            [](png_structp p, png_bytep from, png_size_t count) {
                auto& to = *static_cast<std::vector<std::uint8_t>*>(png_get_io_ptr(p));
                to.insert(to.end(), from, from + count);
            },
            nullptr);
        png_set_IHDR(png, info, static_cast<png_uint_32>(view.width),
                     static_cast<png_uint_32>(view.height), 8, PNG_COLOR_TYPE_RGB,
                     PNG_INTERLACE_NONE, PNG_COMPRESSION_TYPE_DEFAULT, PNG_FILTER_TYPE_DEFAULT);
        png_set_compression_level(png, 6);
        png_set_filter(png, 0, PNG_ALL_FILTERS);
        png_write_info(png, info);
        for (int y = 0; y < view.height; ++y)
            png_write_row(png, view.row(y));
        png_write_end(png, info);
        png_destroy_write_struct(&png, &info);
        size = out.size();
    }
    state.counters["bytes"] = static_cast<double>(size);
}

void bareTiffWrite(benchmark::State& state, int scheme) {
    const ConstView view = picture().view();
    const char* path = "/tmp/kvn-bench.tif";
    for (auto _ : state) {
        TIFF* tiff = TIFFOpen(path, "w");
        TIFFSetField(tiff, TIFFTAG_IMAGEWIDTH, view.width);
        TIFFSetField(tiff, TIFFTAG_IMAGELENGTH, view.height);
        TIFFSetField(tiff, TIFFTAG_SAMPLESPERPIXEL, 3);
        TIFFSetField(tiff, TIFFTAG_BITSPERSAMPLE, 8);
        TIFFSetField(tiff, TIFFTAG_PHOTOMETRIC, PHOTOMETRIC_RGB);
        TIFFSetField(tiff, TIFFTAG_PLANARCONFIG, PLANARCONFIG_CONTIG);
        TIFFSetField(tiff, TIFFTAG_COMPRESSION, scheme);
        if (scheme != COMPRESSION_NONE && scheme != COMPRESSION_PACKBITS)
            TIFFSetField(tiff, TIFFTAG_PREDICTOR, 2);
        TIFFSetField(tiff, TIFFTAG_ROWSPERSTRIP, TIFFDefaultStripSize(tiff, 0));
        for (int y = 0; y < view.height; ++y)
            TIFFWriteScanline(tiff, const_cast<std::uint8_t*>(view.row(y)),
                              static_cast<std::uint32_t>(y), 0);
        TIFFClose(tiff);
    }
}

void bareTiffRead(benchmark::State& state, int compression) {
    const auto& bytes = file(FileType::Tiff, compression);
    const char* path = "/tmp/kvn-bench.tif";
    if (std::FILE* out = std::fopen(path, "wb")) {
        std::fwrite(bytes.data(), 1, bytes.size(), out);
        std::fclose(out);
    }
    Raster target = picture();
    const View view = target.edit();
    for (auto _ : state) {
        TIFF* tiff = TIFFOpen(path, "r");
        for (int y = 0; y < view.height; ++y)
            TIFFReadScanline(tiff, view.row(y), static_cast<std::uint32_t>(y), 0);
        TIFFClose(tiff);
    }
}

constexpr int none = 0, packbits = 4, deflate = 5, lzw = 6; // rows of the compression list

#define KVN_TIMED ->Unit(benchmark::kMillisecond)->UseRealTime()
BENCHMARK_CAPTURE(ourRead, jpeg, FileType::Jpeg, none) KVN_TIMED;
BENCHMARK(bareJpegRead) KVN_TIMED;
BENCHMARK_CAPTURE(ourWrite, jpeg, FileType::Jpeg, none) KVN_TIMED;
BENCHMARK(bareJpegWrite) KVN_TIMED;
BENCHMARK_CAPTURE(ourRead, png, FileType::Png, none) KVN_TIMED;
BENCHMARK(barePngRead) KVN_TIMED;
BENCHMARK_CAPTURE(ourWrite, png, FileType::Png, none) KVN_TIMED;
BENCHMARK(barePngWrite) KVN_TIMED;
BENCHMARK_CAPTURE(ourRead, tiff, FileType::Tiff, none) KVN_TIMED;
BENCHMARK_CAPTURE(bareTiffRead, none, none) KVN_TIMED;
BENCHMARK_CAPTURE(ourRead, tiff_lzw, FileType::Tiff, lzw) KVN_TIMED;
BENCHMARK_CAPTURE(bareTiffRead, lzw, lzw) KVN_TIMED;
BENCHMARK_CAPTURE(ourRead, tiff_deflate, FileType::Tiff, deflate) KVN_TIMED;
BENCHMARK_CAPTURE(bareTiffRead, deflate, deflate) KVN_TIMED;
BENCHMARK_CAPTURE(ourRead, emf, FileType::Emf, none) KVN_TIMED;
BENCHMARK_CAPTURE(ourWrite, emf, FileType::Emf, none) KVN_TIMED;
BENCHMARK(drawingRead) KVN_TIMED;
BENCHMARK_CAPTURE(ourWrite, tiff, FileType::Tiff, none) KVN_TIMED;
BENCHMARK_CAPTURE(bareTiffWrite, none, COMPRESSION_NONE) KVN_TIMED;
BENCHMARK_CAPTURE(ourWrite, tiff_lzw, FileType::Tiff, lzw) KVN_TIMED;
BENCHMARK_CAPTURE(bareTiffWrite, lzw, COMPRESSION_LZW) KVN_TIMED;
BENCHMARK_CAPTURE(ourWrite, tiff_deflate, FileType::Tiff, deflate) KVN_TIMED;
BENCHMARK_CAPTURE(bareTiffWrite, deflate, COMPRESSION_ADOBE_DEFLATE) KVN_TIMED;
BENCHMARK_CAPTURE(ourRead, tiff_packbits, FileType::Tiff, packbits) KVN_TIMED;
BENCHMARK_CAPTURE(bareTiffRead, packbits, packbits) KVN_TIMED;
BENCHMARK_CAPTURE(ourWrite, tiff_packbits, FileType::Tiff, packbits) KVN_TIMED;
BENCHMARK_CAPTURE(bareTiffWrite, packbits, COMPRESSION_PACKBITS) KVN_TIMED;
BENCHMARK(ourGifRead) KVN_TIMED;
BENCHMARK(bareGifRead) KVN_TIMED;
// There is no library beside these.
BENCHMARK_CAPTURE(ourRead, psd, FileType::Psd, none) KVN_TIMED;
BENCHMARK_CAPTURE(ourWrite, psd, FileType::Psd, none) KVN_TIMED;
BENCHMARK_CAPTURE(ourRead, bmp, FileType::Bmp, none) KVN_TIMED;
BENCHMARK_CAPTURE(ourWrite, bmp, FileType::Bmp, none) KVN_TIMED;
BENCHMARK_CAPTURE(ourRead, pcx, FileType::Pcx, none) KVN_TIMED;
BENCHMARK_CAPTURE(ourWrite, pcx, FileType::Pcx, none) KVN_TIMED;
BENCHMARK_CAPTURE(ourRead, tga, FileType::Tga, none) KVN_TIMED;
BENCHMARK_CAPTURE(ourWrite, tga, FileType::Tga, none) KVN_TIMED;

} // namespace

BENCHMARK_MAIN();
