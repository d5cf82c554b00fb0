#include "document/file_types.h"

namespace kvn::document {
namespace {

struct Row {
    FileTypeRow type;
    bool preselected; // for files that were loaded as this type
};

// In the order of the save filter.
constexpr Row rows[] = {
    {{1, "jpg"}, true}, {{2, "png"}, true},  {{9, "psd"}, true},   {{3, "tif"}, true},
    {{4, "pcx"}, true}, {{5, "tga"}, true},  {{10, "wbmp"}, true}, {{6, "bmp"}, true},
    {{7, "wmf"}, true}, {{8, "emf"}, false},
};

} // namespace

QString openFilter() {
    return QStringLiteral(
        "All Images|*.jpg;*.gif;*.bmp;*.png;*.psd;*.tif;*.pcx;*.tga;*.wbmp;*.wmf;*.emf;*.tla|"
        "Joint Photographic Experts Group  <JPG>|*.jpg|"
        "Graphics Interchange Format  <GIF>|*.gif|"
        "Windows Bitmap  <BMP>|*.bmp|"
        "Portable Network Graphics  <PNG>|*.png|"
        "Photoshop  <PSD>|*.psd|"
        "Tagged Image File  <TIF>|*.tif|"
        "ZSoft PaintBrush  <PCX>|*.pcx|"
        "Truevision Targa  <TGA>|*.tga|"
        "Wireless Bitmap  <WBMP>|*.wbmp|"
        "Windows Meta File  <WMF>|*.wmf|"
        "Windows Enhanced Meta File <EMF>|*.emf|"
        "All Files|*.*");
}

QString saveFilter() {
    return QStringLiteral("Joint Photographic Experts Group  <JPG>|*.jpg|"
                          "Portable Network Graphics  <PNG>|*.png|"
                          "Photoshop  <PSD>|*.psd|"
                          "Tagged Image File  <TIF>|*.tif|"
                          "ZSoft PaintBrush  <PCX>|*.pcx|"
                          "Truevision Targa  <TGA>|*.tga|"
                          "Wireless Bitmap  <WBMP>|*.wbmp|"
                          "Windows Bitmap  <BMP>|*.bmp|"
                          "Windows Metafile  <WMF>|*.wmf|"
                          "Windows Enhanced Metafile  <EMF>|*.emf");
}

QString tiffFilter() {
    return QStringLiteral("TIFF Images|*.tif;*.tiff");
}

FileTypeRow FileTypeOfIndex(int row) {
    constexpr int count = sizeof rows / sizeof *rows;
    return row >= 1 && row <= count ? rows[row - 1].type : FileTypeRow{0, ""};
}

int rowOfFileType(int code) {
    int row = 0;
    for (const Row& candidate : rows) {
        ++row;
        if (candidate.preselected && candidate.type.code == code) return row;
    }
    return 0;
}

} // namespace kvn::document
