#include "imaging/codecs/tiff_handle.h"

#include <algorithm>
#include <array>
#include <cstdarg>
#include <cstdio>
#include <cstring>
#include <mutex>

#include "basic/error.h"

namespace kvn::imaging {

namespace {

// The most that the library may ask for at once: a strip of a picture at the limit for files.
constexpr tmsize_t mostAtOnce = tmsize_t{2} << 30;

// Some of the library's messages go past the handle's own functions.
void silenceGlobalHandlers() {
    static std::once_flag once;
    std::call_once(once, [] {
        TIFFSetErrorHandler(nullptr);
        TIFFSetWarningHandler(nullptr);
    });
}

template <typename State>
int keepError(TIFF*, void* user, const char*, const char* format, va_list arguments) {
    std::string& error = static_cast<State*>(user)->error;
    if (!error.empty()) return 1;
    char text[512];
    std::vsnprintf(text, sizeof text, format, arguments);
    error = text;
    return 1;
}

int dropWarning(TIFF*, void*, const char*, const char*, va_list) {
    return 1;
}

struct Options {
    TIFFOpenOptions* options = TIFFOpenOptionsAlloc();
    ~Options() { TIFFOpenOptionsFree(options); }
};

template <typename State>
void prepare(const Options& options, State& state) {
    silenceGlobalHandlers();
    if (!options.options) throw std::bad_alloc();
    TIFFOpenOptionsSetErrorHandlerExtR(options.options, keepError<State>, &state);
    TIFFOpenOptionsSetWarningHandlerExtR(options.options, dropWarning, nullptr);
    TIFFOpenOptionsSetMaxSingleMemAlloc(options.options, mostAtOnce);
}

std::uint64_t sought(std::uint64_t at, std::uint64_t size, toff_t offset, int whence) {
    if (whence == SEEK_SET) return offset;
    return (whence == SEEK_CUR ? at : size) + offset;
}

// Reading from memory.

TiffReader::State& reading(thandle_t handle) {
    return *static_cast<TiffReader::State*>(handle);
}

tmsize_t readMemory(thandle_t handle, void* to, tmsize_t size) {
    TiffReader::State& state = reading(handle);
    if (size <= 0 || state.at >= state.file.size()) return 0;
    const std::size_t n = std::min(static_cast<std::size_t>(size), state.file.size() - state.at);
    std::memcpy(to, state.file.data() + state.at, n);
    state.at += n;
    return static_cast<tmsize_t>(n);
}

tmsize_t writeNothing(thandle_t, void*, tmsize_t) {
    return 0;
}

toff_t seekMemory(thandle_t handle, toff_t offset, int whence) {
    TiffReader::State& state = reading(handle);
    return state.at = sought(state.at, state.file.size(), offset, whence);
}

int closeNothing(thandle_t) {
    return 0;
}

toff_t memorySize(thandle_t handle) {
    return reading(handle).file.size();
}

int mapMemory(thandle_t handle, void** base, toff_t* size) {
    // The library reads only: the file was opened for that.
    *base = const_cast<std::uint8_t*>(reading(handle).file.data());
    *size = reading(handle).file.size();
    return 1;
}

void unmapNothing(thandle_t, void*, toff_t) {}

// Writing to a sink. An exception is kept until the library has returned.

template <typename Result, typename Work>
Result guarded(thandle_t handle, Result failed, const Work& work) {
    auto& state = *static_cast<TiffWriter::State*>(handle);
    if (state.failure) return failed;
    try {
        return work(state);
    } catch (...) {
        state.failure = std::current_exception();
        return failed;
    }
}

tmsize_t readSink(thandle_t handle, void* to, tmsize_t size) {
    return guarded<tmsize_t>(handle, -1, [&](TiffWriter::State& state) {
        const std::size_t n = state.sink->readAt(state.at, to, static_cast<std::size_t>(size));
        state.at += n;
        return static_cast<tmsize_t>(n);
    });
}

// The library writes a directory's values before the directory itself, and leaves a gap for it.
void fillUpTo(ByteSink& sink, std::uint64_t position) {
    constexpr std::array<char, 4096> zeros{};
    sink.seek(sink.size());
    while (sink.size() < position)
        sink.write(zeros.data(), std::min<std::uint64_t>(zeros.size(), position - sink.size()));
}

tmsize_t writeSink(thandle_t handle, void* data, tmsize_t size) {
    return guarded<tmsize_t>(handle, -1, [&](TiffWriter::State& state) {
        if (state.at > state.sink->size()) fillUpTo(*state.sink, state.at);
        if (state.at != state.sink->position()) state.sink->seek(state.at);
        state.sink->write(data, static_cast<std::size_t>(size));
        state.at += static_cast<std::uint64_t>(size);
        return size;
    });
}

toff_t seekSink(thandle_t handle, toff_t offset, int whence) {
    return guarded<toff_t>(handle, static_cast<toff_t>(-1), [&](TiffWriter::State& state) {
        return state.at = sought(state.at, state.sink->size(), offset, whence);
    });
}

toff_t sinkSize(thandle_t handle) {
    return guarded<toff_t>(handle, 0,
                           [](TiffWriter::State& state) -> toff_t { return state.sink->size(); });
}

int mapNothing(thandle_t, void**, toff_t*) {
    return 0;
}

} // namespace

TiffReader::TiffReader(std::span<const std::uint8_t> file) : state_(std::make_unique<State>()) {
    state_->file = file;
    const Options options;
    prepare(options, *state_);
    tiff_ = TIFFClientOpenExt("", "rh", state_.get(), readMemory, writeNothing, seekMemory,
                              closeNothing, memorySize, mapMemory, unmapNothing, options.options);
    if (!tiff_)
        throw RuntimeError(errors::invalidPicture, "The TIFF file has no valid header.", "Import");
}

TiffReader::~TiffReader() {
    if (tiff_) TIFFClose(tiff_);
}

void TiffReader::select(std::uint64_t offset) {
    state_->error.clear();
    if (TIFFSetSubDirectory(tiff_, offset)) return;
    std::string text = "The TIFF file's page cannot be read";
    text += error().empty() ? "." : " (" + error() + ").";
    throw RuntimeError(errors::invalidPicture, text, "Import");
}

std::uint16_t TiffReader::word(std::uint32_t tag) const {
    std::uint16_t value = 0;
    TIFFGetFieldDefaulted(tiff_, tag, &value);
    return value;
}

TiffWriter::TiffWriter(ByteSink& sink, const std::string& mode)
    : state_(std::make_unique<State>()) {
    state_->sink = &sink;
    const Options options;
    prepare(options, *state_);
    tiff_ = TIFFClientOpenExt("", mode.c_str(), state_.get(), readSink, writeSink, seekSink,
                              closeNothing, sinkSize, mapNothing, unmapNothing, options.options);
    require(tiff_ != nullptr);
}

TiffWriter::~TiffWriter() {
    // Writes what is pending. After a failure nothing more reaches the sink.
    if (tiff_) TIFFCleanup(tiff_);
}

void TiffWriter::require(bool ok) const {
    if (state_->failure) std::rethrow_exception(state_->failure);
    if (ok) return;
    std::string text = "The TIFF file cannot be written";
    text += state_->error.empty() ? "." : " (" + state_->error + ").";
    throw RuntimeError(errors::deviceIo, text, "Export");
}

} // namespace kvn::imaging
