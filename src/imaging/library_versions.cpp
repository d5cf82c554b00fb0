#include "imaging/library_versions.h"

#include <cstddef>
#include <cstdio>

#include <exiv2/exiv2.hpp>
#include <gif_lib.h>
#include <hwy/highway.h>
#include <jpeglib.h>
#include <libdeflate.h>
#include <opencv2/core/utility.hpp>
#include <png.h>
#include <sodium.h>
#include <tiffio.h>
#include <zlib.h>

#define KVN_TEXT_OF(x) #x
#define KVN_TEXT(x) KVN_TEXT_OF(x)

namespace kvn::imaging {

namespace {

std::string dotted(int major, int minor, int patch) {
    return std::to_string(major) + '.' + std::to_string(minor) + '.' + std::to_string(patch);
}

// The last word of the first line: "LIBTIFF, Version 4.5.0", then lines about its makers.
std::string tiffVersion() {
    const std::string text = TIFFGetVersion();
    const std::string line = text.substr(0, text.find('\n'));
    return line.substr(line.rfind(' ') + 1);
}

} // namespace

std::vector<std::pair<std::string, std::string>> libraryVersions() {
    return {
        {"libjpeg-turbo", KVN_TEXT(LIBJPEG_TURBO_VERSION)},
        {"libpng", png_get_libpng_ver(nullptr)},
        {"libtiff", tiffVersion()},
        {"giflib", dotted(GIFLIB_MAJOR, GIFLIB_MINOR, GIFLIB_RELEASE)},
        {"Exiv2", Exiv2::version()},
        {"OpenCV", cv::getVersionString()},
        {"Highway", dotted(HWY_MAJOR, HWY_MINOR, HWY_PATCH)},
        {"libdeflate", LIBDEFLATE_VERSION_STRING},
        {"zlib", zlibVersion()},
        {"libsodium", sodium_version_string()},
    };
}

} // namespace kvn::imaging
