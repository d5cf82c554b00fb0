#include "engine/detail/history_file.h"

#include <fcntl.h>
#include <sys/mman.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <iterator>
#include <string>
#include <utility>

#include "basic/error.h"

namespace kvn::engine::detail {

namespace {

// Of files and of memory.
constexpr std::uint64_t blockBytes = 4096;
constexpr std::size_t pagedFrom = std::size_t{64} << 10;

std::uint64_t wholeBlocks(std::uint64_t size) {
    return (size + blockBytes - 1) / blockBytes * blockBytes;
}

[[noreturn]] void throwOutOfMemory() {
    throw RuntimeError(errors::outOfMemory, "Out of memory", "Undo");
}

int openIn(const std::string& folder) {
    const int file = ::open(folder.c_str(), O_TMPFILE | O_RDWR | O_CLOEXEC, 0600);
    if (file >= 0) return file;
    // Some file systems know no unnamed files: make one and take its name away.
    std::string name = folder + "/kestrelvane-XXXXXX";
    const int named = mkostemp(name.data(), O_CLOEXEC);
    if (named >= 0) unlink(name.c_str());
    return named;
}

bool readAll(int file, std::uint8_t* data, std::uint64_t size, std::uint64_t offset) {
    while (size > 0) {
        const ssize_t done = pread(file, data, size, static_cast<off_t>(offset));
        if (done < 0 && errno == EINTR) continue;
        if (done <= 0) return false;
        data += done;
        offset += static_cast<std::uint64_t>(done);
        size -= static_cast<std::uint64_t>(done);
    }
    return true;
}

bool writeAll(int file, const std::uint8_t* data, std::uint64_t size, std::uint64_t offset) {
    while (size > 0) {
        const ssize_t done = pwrite(file, data, size, static_cast<off_t>(offset));
        if (done < 0 && errno == EINTR) continue;
        if (done <= 0) return false;
        data += done;
        offset += static_cast<std::uint64_t>(done);
        size -= static_cast<std::uint64_t>(done);
    }
    return true;
}

} // namespace

ByteBlock::ByteBlock(std::size_t size) : size_(size) {
    if (size < pagedFrom) {
        data_ = static_cast<std::uint8_t*>(std::malloc(std::max<std::size_t>(size, 1)));
        if (!data_) throwOutOfMemory();
        return;
    }
    pagedSize_ = wholeBlocks(size);
    void* memory = mmap(nullptr, pagedSize_, PROT_READ | PROT_WRITE,
                        MAP_PRIVATE | MAP_ANONYMOUS | MAP_NORESERVE, -1, 0);
    if (memory == MAP_FAILED) throwOutOfMemory();
    data_ = static_cast<std::uint8_t*>(memory);
}

ByteBlock::~ByteBlock() {
    if (pagedSize_ > 0)
        munmap(data_, pagedSize_);
    else
        std::free(data_);
}

void ByteBlock::shrink(std::size_t size) {
    size_ = size;
    if (pagedSize_ == 0) return;
    // At least one page stays, so that the block keeps its kind.
    const std::size_t kept = std::max<std::size_t>(wholeBlocks(size), blockBytes);
    if (kept < pagedSize_) munmap(data_ + kept, pagedSize_ - kept);
    pagedSize_ = kept;
}

Extent::Extent(std::shared_ptr<SpillFile> file, std::uint64_t offset, std::uint64_t size)
    : file_(std::move(file)), offset_(offset), size_(size) {}

Extent::~Extent() {
    file_->release(offset_, size_);
}

void Extent::read(std::uint64_t offset, std::uint64_t size, void* data) const {
    if (!readAll(file_->file_, static_cast<std::uint8_t*>(data), size, offset_ + offset))
        throw RuntimeError(errors::deviceIo, "The undo step could not be read back.", "Undo");
}

std::shared_ptr<const ByteBlock> Extent::read() const {
    auto bytes = std::make_shared<ByteBlock>(size_);
    read(0, size_, bytes->data());
    return bytes;
}

SpillFile::~SpillFile() {
    if (file_ >= 0) close(file_);
}

bool SpillFile::open() {
    // /tmp comes last: it may live in memory, which would defeat the purpose.
    const char* chosen = std::getenv("TMPDIR");
    for (const char* folder : {chosen, "/var/tmp", "/tmp"})
        if (file_ < 0 && folder && *folder) file_ = openIn(folder);
    return file_ >= 0;
}

ExtentRef SpillFile::write(const ByteBlock& bytes) {
    ExtentRef extent;
    {
        const std::lock_guard lock(mutex_);
        if (!open()) return nullptr;
        // From here the extent's destructor gives the space back, whatever happens.
        extent =
            std::make_shared<const Extent>(shared_from_this(), reserve(bytes.size()), bytes.size());
    }
    return writeAll(file_, bytes.data(), bytes.size(), extent->offset()) ? extent : nullptr;
}

// The smallest free piece that is large enough, or new space at the end.
std::uint64_t SpillFile::reserve(std::uint64_t size) {
    const std::uint64_t needed = wholeBlocks(size);
    auto best = free_.end();
    for (auto it = free_.begin(); it != free_.end(); ++it)
        if (it->second >= needed && (best == free_.end() || it->second < best->second)) best = it;
    used_ += size;
    if (best == free_.end()) return std::exchange(end_, end_ + needed);
    const auto [offset, found] = *best;
    free_.erase(best);
    if (found > needed) free_[offset + needed] = found - needed;
    return offset;
}

void SpillFile::release(std::uint64_t offset, std::uint64_t size) {
    const std::lock_guard lock(mutex_);
    used_ -= size;
    auto at = free_.emplace(offset, wholeBlocks(size)).first;
    if (const auto next = std::next(at);
        next != free_.end() && at->first + at->second == next->first) {
        at->second += next->second;
        free_.erase(next);
    }
    if (at != free_.begin())
        if (const auto before = std::prev(at); before->first + before->second == at->first) {
            before->second += at->second;
            free_.erase(at);
            at = before;
        }
    if (at->first + at->second < end_) return;
    end_ = at->first;
    free_.erase(at);
    if (ftruncate(file_, static_cast<off_t>(end_)) != 0) return; // it comes with the next one
}

std::uint64_t SpillFile::bytes() const {
    const std::lock_guard lock(mutex_);
    return used_;
}

} // namespace kvn::engine::detail
