#include "imaging/byte_io.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstring>
#include <random>

#include <fcntl.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <sys/xattr.h>
#include <unistd.h>

#include "basic/error.h"

namespace kvn::imaging {

namespace {

constexpr std::size_t mapFrom = std::size_t{256} << 20;
constexpr std::size_t sinkBuffer = std::size_t{256} << 10;

[[noreturn]] void fail(std::int32_t number, const std::string& text, const std::string& path) {
    throw RuntimeError(number, text + ": \"" + path + "\".", "Files");
}

[[noreturn]] void failErrno(int error, const std::string& path) {
    switch (error) {
    case ENOENT:
    case ENOTDIR:
        fail(errors::fileNotFound, "The file or its folder does not exist", path);
    case EACCES:
    case EPERM:
    case EROFS:
    case ETXTBSY:
        fail(errors::permissionDenied, "There is no permission for the file or its folder", path);
    case EISDIR:
    case ELOOP:
    case ENAMETOOLONG:
    case EINVAL:
        fail(errors::pathAccess, "The path does not lead to a file", path);
    case ENOSPC:
    case EDQUOT:
    case EFBIG:
        fail(errors::diskFull, "There is not enough room on the disk to write the file", path);
    default:
        fail(errors::deviceIo, std::string("The device failed (") + std::strerror(error) + ")",
             path);
    }
}

class Descriptor {
  public:
    explicit Descriptor(int number) : number_(number) {}
    ~Descriptor() { close(); }
    Descriptor(const Descriptor&) = delete;
    Descriptor& operator=(const Descriptor&) = delete;
    int get() const { return number_; }
    // The error of the close itself: some file systems report a full disk only here.
    int close() {
        const int error = number_ >= 0 && ::close(number_) != 0 ? errno : 0;
        number_ = -1;
        return error;
    }

  private:
    int number_;
};

// Reads until `size` bytes or the end; a file that shrinks meanwhile gives less.
std::size_t readFully(int fd, std::uint8_t* to, std::size_t size, const std::string& path) {
    std::size_t done = 0;
    while (done < size) {
        const ssize_t n = ::read(fd, to + done, size - done);
        if (n < 0 && errno == EINTR) continue;
        if (n < 0) failErrno(errno, path);
        if (n == 0) break;
        done += static_cast<std::size_t>(n);
    }
    return done;
}

} // namespace

FileBytes::FileBytes(const std::string& path) {
    // Without O_NONBLOCK a named pipe would block here for ever.
    const Descriptor file(::open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK));
    if (file.get() < 0) failErrno(errno, path);
    struct stat info {};
    if (::fstat(file.get(), &info) != 0) failErrno(errno, path);
    if (!S_ISREG(info.st_mode)) failErrno(EISDIR, path);
    const auto size = static_cast<std::size_t>(info.st_size);
    if (size > mapFrom) {
        void* map = ::mmap(nullptr, size, PROT_READ, MAP_PRIVATE, file.get(), 0);
        if (map == MAP_FAILED) failErrno(errno, path);
        mapped_ = map;
        bytes_ = {static_cast<const std::uint8_t*>(map), size};
        return;
    }
    owned_ = std::make_unique_for_overwrite<std::uint8_t[]>(std::max<std::size_t>(size, 1));
    bytes_ = {owned_.get(), readFully(file.get(), owned_.get(), size, path)};
}

FileBytes::~FileBytes() {
    if (mapped_) ::munmap(mapped_, bytes_.size());
}

void MemorySink::write(const void* data, std::size_t size) {
    const auto* from = static_cast<const std::uint8_t*>(data);
    const std::size_t overlap = std::min<std::size_t>(size, bytes_.size() - position_);
    std::copy(from, from + overlap, bytes_.begin() + static_cast<std::ptrdiff_t>(position_));
    bytes_.insert(bytes_.end(), from + overlap, from + size);
    position_ += size;
}

void MemorySink::seek(std::uint64_t position) {
    position_ = std::min<std::uint64_t>(position, bytes_.size());
}

std::size_t MemorySink::readAt(std::uint64_t position, void* data, std::size_t size) {
    if (position >= bytes_.size()) return 0;
    const std::size_t n = std::min<std::size_t>(size, bytes_.size() - position);
    std::memcpy(data, bytes_.data() + position, n);
    return n;
}

namespace {

class FileSink : public ByteSink {
  public:
    FileSink(int fd, std::string path) : fd_(fd), path_(std::move(path)) {
        buffer_.reserve(sinkBuffer);
    }

    void write(const void* data, std::size_t size) override {
        if (buffer_.size() + size > sinkBuffer) flush();
        const auto* from = static_cast<const std::uint8_t*>(data);
        if (size >= sinkBuffer) {
            writeOut(from, size);
        } else {
            buffer_.insert(buffer_.end(), from, from + size);
        }
        size_ = std::max(size_, position());
    }

    void seek(std::uint64_t position) override {
        flush();
        start_ = std::min(position, size_);
    }

    std::uint64_t position() const override { return start_ + buffer_.size(); }
    std::uint64_t size() const override { return size_; }

    std::size_t readAt(std::uint64_t position, void* data, std::size_t size) override {
        flush();
        auto* to = static_cast<std::uint8_t*>(data);
        std::size_t done = 0;
        while (done < size) {
            const ssize_t n =
                ::pread(fd_, to + done, size - done, static_cast<off_t>(position + done));
            if (n < 0 && errno == EINTR) continue;
            if (n < 0) failErrno(errno, path_);
            if (n == 0) break;
            done += static_cast<std::size_t>(n);
        }
        return done;
    }

    void flush() {
        writeOut(buffer_.data(), buffer_.size());
        buffer_.clear();
    }

  private:
    void writeOut(const std::uint8_t* from, std::size_t size) {
        while (size > 0) {
            const ssize_t n = ::pwrite(fd_, from, size, static_cast<off_t>(start_));
            if (n < 0 && errno == EINTR) continue;
            if (n < 0) failErrno(errno, path_);
            from += n;
            size -= static_cast<std::size_t>(n);
            start_ += static_cast<std::uint64_t>(n);
        }
    }

    int fd_;
    std::string path_;
    std::vector<std::uint8_t> buffer_; // belongs at start_
    std::uint64_t start_ = 0;
    std::uint64_t size_ = 0;
};

std::string folderOf(const std::string& path) {
    const std::size_t slash = path.find_last_of('/');
    if (slash == std::string::npos) return ".";
    return slash == 0 ? "/" : path.substr(0, slash);
}

// Where a chain of symbolic links ends, whether or not anything stands there.
std::string followLinks(std::string path) {
    constexpr int mostLinks = 40;
    for (int i = 0; i < mostLinks; ++i) {
        std::array<char, 4096> target{};
        const ssize_t n = ::readlink(path.c_str(), target.data(), target.size() - 1);
        if (n < 0) return path;
        const std::string text(target.data(), static_cast<std::size_t>(n));
        path = text.starts_with('/') ? text : folderOf(path) + "/" + text;
    }
    failErrno(ELOOP, path);
}

// The new file until it has its final name.
class TemporaryFile {
  public:
    explicit TemporaryFile(const std::string& folder, const std::string& target) {
        std::random_device random;
        for (int attempt = 0; attempt < 100; ++attempt) {
            path_ = folder + "/.kvn-" + std::to_string(random()) + ".tmp";
            fd_ = ::open(path_.c_str(), O_RDWR | O_CREAT | O_EXCL | O_CLOEXEC, 0666);
            if (fd_ >= 0) return;
            if (errno == ENOENT || errno == ENOTDIR)
                fail(errors::pathAccess, "The folder does not exist", target);
            if (errno != EEXIST) failErrno(errno, target);
        }
        failErrno(EEXIST, target);
    }
    ~TemporaryFile() {
        if (!path_.empty()) ::unlink(path_.c_str());
    }
    TemporaryFile(const TemporaryFile&) = delete;
    TemporaryFile& operator=(const TemporaryFile&) = delete;

    int descriptor() const { return fd_; }
    void renameTo(const std::string& target) {
        if (::rename(path_.c_str(), target.c_str()) != 0) failErrno(errno, target);
        path_.clear();
    }

  private:
    std::string path_;
    int fd_ = -1;
};

// Access lists, labels and notes that the file system keeps beside a file, as far as it lets us.
void copyAttributes(const std::string& from, int to) {
    const ssize_t size = ::listxattr(from.c_str(), nullptr, 0);
    if (size <= 0) return;
    std::string names(static_cast<std::size_t>(size), '\0'), value;
    const ssize_t listed = ::listxattr(from.c_str(), names.data(), names.size());
    names.resize(static_cast<std::size_t>(std::max<ssize_t>(listed, 0)));
    for (std::size_t at = 0; at < names.size(); at += std::strlen(&names[at]) + 1) {
        const ssize_t bytes = ::getxattr(from.c_str(), &names[at], nullptr, 0);
        value.resize(static_cast<std::size_t>(std::max<ssize_t>(bytes, 0)));
        const ssize_t got = ::getxattr(from.c_str(), &names[at], value.data(), value.size());
        if (got >= 0) ::fsetxattr(to, &names[at], value.data(), static_cast<std::size_t>(got), 0);
    }
}

void takeOver(const std::string& path, const struct stat& old, int fd) {
    // Group and owner are a courtesy: only a privileged user may give files away.
    if (::fchown(fd, old.st_uid, old.st_gid) != 0) errno = 0;
    ::fchmod(fd, old.st_mode & 07777);
    copyAttributes(path, fd);
}

} // namespace

void replaceFile(const std::string& path, const std::function<void(ByteSink&)>& fill) {
    if (path.empty()) failErrno(EINVAL, path);
    const std::string target = followLinks(path);
    struct stat old {};
    const bool exists = ::stat(target.c_str(), &old) == 0;
    if (exists && !S_ISREG(old.st_mode)) failErrno(EISDIR, path);
    // The rename below would pass over a write protection.
    if (exists && ::access(target.c_str(), W_OK) != 0) failErrno(errno, path);

    const std::string folder = folderOf(target);
    TemporaryFile temporary(folder, path);
    Descriptor file(temporary.descriptor());
    FileSink sink(file.get(), path);
    fill(sink);
    sink.flush();
    if (exists) takeOver(target, old, file.get());
    if (::fsync(file.get()) != 0) failErrno(errno, path);
    if (const int error = file.close(); error != 0) failErrno(error, path);
    temporary.renameTo(target);
    // So that the name, too, outlives a power cut; file systems that cannot do it say so.
    const Descriptor directory(::open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    if (directory.get() >= 0) ::fsync(directory.get());
}

} // namespace kvn::imaging
