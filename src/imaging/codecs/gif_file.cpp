#include "imaging/codecs/gif_file.h"

#include <algorithm>
#include <cstring>
#include <string_view>

#include <gif_lib.h>

#include "basic/error.h"

namespace kvn::imaging {

namespace {

struct Source {
    std::span<const std::uint8_t> bytes;
    std::size_t at = 0;
};

int readBytes(GifFileType* gif, GifByteType* to, int size) {
    auto& source = *static_cast<Source*>(gif->UserData);
    const std::size_t n =
        std::min(static_cast<std::size_t>(std::max(size, 0)), source.bytes.size() - source.at);
    if (n > 0) std::memcpy(to, source.bytes.data() + source.at, n);
    source.at += n;
    return static_cast<int>(n);
}

Palette paletteOf(const ColorMapObject* map) {
    if (!map) return Palette::grayRamp();
    std::vector<Rgba> colors;
    for (int i = 0; i < map->ColorCount; ++i)
        colors.push_back({map->Colors[i].Red, map->Colors[i].Green, map->Colors[i].Blue, 255});
    return Palette(std::move(colors));
}

GifDisposal disposalOf(int mode) {
    if (mode == DISPOSE_BACKGROUND) return GifDisposal::Clear;
    if (mode == DISPOSE_PREVIOUS) return GifDisposal::Restore;
    return GifDisposal::Keep;
}

// An extension whose blocks make up one value.
struct Extension {
    int code = 0;
    std::string name; // of an application
    Bytes data;       // all blocks but the application's first
    Bytes raw;        // the same with the length before each block
};

} // namespace

struct GifFile::State {
    Source source;
    GifFileType* gif = nullptr;
    GraphicsControlBlock control{0, false, 0, NO_TRANSPARENT_COLOR};
    Size screen;
    std::string comment, trouble;
    Bytes xmp, icc;
    bool ended = false;

    ~State() {
        if (gif) DGifCloseFile(gif, nullptr);
    }

    void fail() {
        ended = true;
        const char* reason = GifErrorString(gif->Error);
        trouble = "The GIF file is damaged or cut off";
        if (reason) trouble += std::string(" (") + reason + ")";
        trouble += ".";
    }

    bool readExtension() {
        Extension extension;
        GifByteType* block = nullptr;
        if (DGifGetExtension(gif, &extension.code, &block) == GIF_ERROR) return false;
        bool first = true;
        while (block) {
            const std::size_t length = block[0];
            if (first && extension.code == APPLICATION_EXT_FUNC_CODE) {
                extension.name.assign(block + 1, block + 1 + length);
            } else {
                extension.data.insert(extension.data.end(), block + 1, block + 1 + length);
                extension.raw.insert(extension.raw.end(), block, block + 1 + length);
            }
            first = false;
            if (DGifGetExtensionNext(gif, &block) == GIF_ERROR) return false;
        }
        keep(extension);
        return true;
    }

    void keep(const Extension& extension) {
        if (extension.code == GRAPHICS_EXT_FUNC_CODE) {
            DGifExtensionToGCB(extension.data.size(), extension.data.data(), &control);
        } else if (extension.code == COMMENT_EXT_FUNC_CODE) {
            if (!comment.empty()) comment += '\n';
            comment.append(extension.data.begin(), extension.data.end());
        } else if (extension.name == "ICCRGBG1012") {
            icc = extension.data;
        } else if (extension.name == "XMP DataXMP") {
            // The packet is not cut in blocks; 257 bytes behind it lead any reader of blocks to
            // the end.
            constexpr std::size_t trailer = 257;
            xmp = extension.raw;
            if (xmp.size() > trailer) xmp.resize(xmp.size() - trailer);
        }
    }

    bool readData(GifFrame& frame) {
        GifByteType* block = nullptr;
        if (DGifGetCode(gif, &frame.codeSize, &block) == GIF_ERROR) return false;
        while (block) {
            frame.data.insert(frame.data.end(), block + 1, block + 1 + block[0]);
            if (DGifGetCodeNext(gif, &block) == GIF_ERROR) return false;
        }
        return true;
    }

    std::optional<GifFrame> readFrame() {
        if (DGifGetImageHeader(gif) == GIF_ERROR) {
            fail();
            return std::nullopt;
        }
        const GifImageDesc& image = gif->Image;
        GifFrame frame;
        frame.rect = {image.Left, image.Top, image.Width, image.Height};
        frame.interlaced = image.Interlace;
        frame.palette = paletteOf(image.ColorMap ? image.ColorMap : gif->SColorMap);
        frame.transparent = control.TransparentColor;
        frame.disposal = disposalOf(control.DisposalMode);
        control = {0, false, 0, NO_TRANSPARENT_COLOR};
        if (!readData(frame)) fail();
        if (screen.isEmpty()) screen = {image.Left + image.Width, image.Top + image.Height};
        return frame;
    }

    std::optional<GifFrame> next() {
        while (!ended) {
            GifRecordType record = UNDEFINED_RECORD_TYPE;
            if (DGifGetRecordType(gif, &record) == GIF_ERROR) {
                fail();
            } else if (record == IMAGE_DESC_RECORD_TYPE) {
                return readFrame();
            } else if (record == EXTENSION_RECORD_TYPE) {
                if (!readExtension()) fail();
            } else if (record == TERMINATE_RECORD_TYPE) {
                ended = true;
            }
        }
        return std::nullopt;
    }
};

GifFile::GifFile(std::span<const std::uint8_t> file) : state_(std::make_unique<State>()) {
    state_->source.bytes = file;
    int error = 0;
    state_->gif = DGifOpen(&state_->source, readBytes, &error);
    if (!state_->gif)
        throw RuntimeError(errors::invalidPicture, "The GIF file has no valid header.", "Import");
    state_->screen = {state_->gif->SWidth, state_->gif->SHeight};
}

GifFile::~GifFile() = default;

Size GifFile::screen() const {
    return state_->screen;
}
int GifFile::colorBits() const {
    const ColorMapObject* map = state_->gif->SColorMap;
    return map ? map->BitsPerPixel : 8;
}
std::optional<GifFrame> GifFile::next() {
    return state_->next();
}
double GifFile::fraction() const {
    const Source& source = state_->source;
    return source.bytes.empty()
               ? 1
               : static_cast<double>(source.at) / static_cast<double>(source.bytes.size());
}
const std::string& GifFile::comment() const {
    return state_->comment;
}
const Bytes& GifFile::xmp() const {
    return state_->xmp;
}
const Bytes& GifFile::icc() const {
    return state_->icc;
}
const std::string& GifFile::trouble() const {
    return state_->trouble;
}

namespace {

// Bytes of the colour table that a packed field announces.
std::size_t tableBytes(std::uint8_t packed) {
    return packed & 0x80 ? std::size_t{6} << (packed & 7) : 0;
}

} // namespace

int countGifFrames(std::span<const std::uint8_t> file) {
    constexpr std::size_t headerSize = 13, frameSize = 10;
    if (file.size() < headerSize) return 0;
    int frames = 0;
    std::size_t at = headerSize + tableBytes(file[10]);
    while (at + frameSize <= file.size() && (file[at] == 0x2c || file[at] == 0x21)) {
        const bool frame = file[at] == 0x2c;
        frames += frame;
        // Frame header, table and code size; or the extension's label.
        at += frame ? frameSize + tableBytes(file[at + 9]) + 1 : 2;
        while (at < file.size() && file[at] != 0)
            at += std::size_t{1} + file[at];
        ++at;
    }
    return frames;
}

bool isGif(std::span<const std::uint8_t> file) {
    return file.size() >= 6 && (std::memcmp(file.data(), "GIF87a", 6) == 0 ||
                                std::memcmp(file.data(), "GIF89a", 6) == 0);
}

} // namespace kvn::imaging
