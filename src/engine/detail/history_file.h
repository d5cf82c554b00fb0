// The unnamed temporary file that takes undo steps when memory has to be spared. It vanishes with
// the process, however that ends. It goes through the cache of the system: where there is memory
// to spare, a step comes back as quickly as a copy in memory.
#pragma once

#include <cstddef>
#include <cstdint>
#include <map>
#include <memory>
#include <mutex>

namespace kvn::engine::detail {

// Uninitialised memory whose end can be given back.
class ByteBlock {
  public:
    explicit ByteBlock(std::size_t size); // throws RuntimeError(outOfMemory)
    ~ByteBlock();
    ByteBlock(const ByteBlock&) = delete;
    ByteBlock& operator=(const ByteBlock&) = delete;

    std::uint8_t* data() const { return data_; }
    std::size_t size() const { return size_; }
    void shrink(std::size_t size);

  private:
    std::uint8_t* data_ = nullptr;
    std::size_t size_;
    std::size_t pagedSize_ = 0; // in whole pages; 0 for a block of the common heap
};

class SpillFile;

// Bytes that stand in the file; their space is given back with the last holder.
class Extent {
  public:
    Extent(std::shared_ptr<SpillFile> file, std::uint64_t offset, std::uint64_t size);
    ~Extent();
    Extent(const Extent&) = delete;
    Extent& operator=(const Extent&) = delete;

    std::uint64_t offset() const { return offset_; }
    std::uint64_t size() const { return size_; }
    // Both throw RuntimeError(deviceIo, outOfMemory) and may be called from several threads.
    std::shared_ptr<const ByteBlock> read() const;
    void read(std::uint64_t offset, std::uint64_t size, void* data) const;

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
    ExtentRef write(const ByteBlock& bytes);
    std::uint64_t bytes() const; // what its extents take

  private:
    friend class Extent;
    bool open();
    std::uint64_t reserve(std::uint64_t size);
    void release(std::uint64_t offset, std::uint64_t size);

    mutable std::mutex mutex_;
    int file_ = -1;
    std::uint64_t end_ = 0;
    std::uint64_t used_ = 0;
    // Offset and size of what lies free before the end. Writing there again costs a tenth of
    // making the file longer.
    std::map<std::uint64_t, std::uint64_t> free_;
};

} // namespace kvn::engine::detail
