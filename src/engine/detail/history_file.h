// The unnamed temporary file that takes undo steps when memory has to be spared. It vanishes with
// the process, however that ends.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <mutex>

namespace kvn::engine::detail {

class SpillFile;

// Bytes that stand in the file; their space is given back with the last holder.
class Extent {
  public:
    Extent(std::shared_ptr<SpillFile> file, std::uint64_t offset, std::uint64_t size);
    ~Extent();
    Extent(const Extent&) = delete;
    Extent& operator=(const Extent&) = delete;

    std::uint64_t size() const { return size_; }
    // May be called from several threads. Throws RuntimeError(deviceIo).
    void read(std::uint64_t offset, void* data, std::size_t size) const;

  private:
    std::shared_ptr<SpillFile> file_;
    std::uint64_t offset_;
    std::uint64_t size_;
};
using ExtentRef = std::shared_ptr<const Extent>;

class SpillFile : public std::enable_shared_from_this<SpillFile> {
  public:
    SpillFile() = default;
    ~SpillFile();
    SpillFile(const SpillFile&) = delete;
    SpillFile& operator=(const SpillFile&) = delete;

    // Null if the file cannot be made or the disk is full. May be called from several threads.
    ExtentRef write(const void* data, std::uint64_t size);
    std::uint64_t bytes() const; // what its extents take

  private:
    friend class Extent;
    bool open();
    void release(std::uint64_t offset, std::uint64_t size);

    mutable std::mutex mutex_;
    int file_ = -1;
    // Space is not looked for: extents follow one another and leave holes that take no disk.
    std::uint64_t end_ = 0;
    std::uint64_t used_ = 0;
};

} // namespace kvn::engine::detail
