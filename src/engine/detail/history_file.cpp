#include "engine/detail/history_file.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <string>
#include <utility>

#include "basic/error.h"

namespace kvn::engine::detail {

namespace {

constexpr std::uint64_t blockBytes = 4096; // holes are made in whole blocks

int openIn(const std::string& folder) {
    const int file = ::open(folder.c_str(), O_TMPFILE | O_RDWR | O_CLOEXEC, 0600);
    if (file >= 0) return file;
    // Some file systems know no unnamed files: make one and take its name away.
    std::string name = folder + "/kestrelvane-XXXXXX";
    const int named = mkostemp(name.data(), O_CLOEXEC);
    if (named >= 0) unlink(name.c_str());
    return named;
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

Extent::Extent(std::shared_ptr<SpillFile> file, std::uint64_t offset, std::uint64_t size)
    : file_(std::move(file)), offset_(offset), size_(size) {}

Extent::~Extent() {
    file_->release(offset_, size_);
}

void Extent::read(std::uint64_t offset, void* data, std::size_t size) const {
    auto* to = static_cast<std::uint8_t*>(data);
    offset += offset_;
    while (size > 0) {
        const ssize_t done = pread(file_->file_, to, size, static_cast<off_t>(offset));
        if (done < 0 && errno == EINTR) continue;
        if (done <= 0)
            throw RuntimeError(errors::deviceIo, "The undo step could not be read back.", "Undo");
        to += done;
        offset += static_cast<std::uint64_t>(done);
        size -= static_cast<std::size_t>(done);
    }
}

SpillFile::~SpillFile() {
    if (file_ >= 0) close(file_);
}

bool SpillFile::open() {
    if (file_ >= 0) return true;
    // /tmp comes last: it may live in memory, which would defeat the purpose.
    const char* chosen = std::getenv("TMPDIR");
    for (const char* folder : {chosen, "/var/tmp", "/tmp"})
        if (folder && *folder && (file_ = openIn(folder)) >= 0) return true;
    return false;
}

ExtentRef SpillFile::write(const void* data, std::uint64_t size) {
    std::uint64_t offset = 0;
    {
        const std::lock_guard lock(mutex_);
        if (!open()) return nullptr;
        offset = end_;
        end_ += (size + blockBytes - 1) / blockBytes * blockBytes;
        used_ += size;
    }
    // From here the extent's destructor gives the space back, whatever happens.
    auto extent = std::make_shared<const Extent>(shared_from_this(), offset, size);
    if (!writeAll(file_, static_cast<const std::uint8_t*>(data), size, offset)) return nullptr;
    return extent;
}

void SpillFile::release(std::uint64_t offset, std::uint64_t size) {
    const std::lock_guard lock(mutex_);
    const std::uint64_t whole = (size + blockBytes - 1) / blockBytes * blockBytes;
    used_ -= size;
    if (used_ == 0)
        end_ = 0;
    else if (offset + whole == end_)
        end_ = offset;
    else {
        // Where holes are not to be had the space comes back with the last extent.
        fallocate(file_, FALLOC_FL_PUNCH_HOLE | FALLOC_FL_KEEP_SIZE, static_cast<off_t>(offset),
                  static_cast<off_t>(whole));
        return;
    }
    if (ftruncate(file_, static_cast<off_t>(end_)) != 0) return;
}

std::uint64_t SpillFile::bytes() const {
    const std::lock_guard lock(mutex_);
    return used_;
}

} // namespace kvn::engine::detail
