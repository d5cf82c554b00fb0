// Whole files in, streams out.
#pragma once

#include <cstdint>
#include <cstdio>
#include <functional>
#include <memory>
#include <span>
#include <string>
#include <vector>

namespace kvn::imaging {

// The bytes of a file, read at once or, above 256 MB, mapped.
class FileBytes {
  public:
    // UTF-8 path. Throws RuntimeError: fileNotFound, permissionDenied, pathAccess (a folder, a
    // device), deviceIo.
    explicit FileBytes(const std::string& path);
    ~FileBytes();
    FileBytes(const FileBytes&) = delete;
    FileBytes& operator=(const FileBytes&) = delete;

    std::span<const std::uint8_t> bytes() const { return bytes_; }

  private:
    std::unique_ptr<std::uint8_t[]> owned_;
    void* mapped_ = nullptr;
    std::span<const std::uint8_t> bytes_;
};

// Where a codec writes. Every failure is thrown as RuntimeError (diskFull, deviceIo).
class ByteSink {
  public:
    virtual ~ByteSink() = default;
    virtual void write(const void* data, std::size_t size) = 0;
    virtual void seek(std::uint64_t position) = 0; // from the start; within what was written
    virtual std::uint64_t position() const = 0;
    virtual std::uint64_t size() const = 0;
    // For formats whose library reads back what it wrote.
    virtual std::size_t readAt(std::uint64_t position, void* data, std::size_t size) = 0;
};

class MemorySink : public ByteSink {
  public:
    void write(const void* data, std::size_t size) override;
    void seek(std::uint64_t position) override;
    std::uint64_t position() const override { return position_; }
    std::uint64_t size() const override { return bytes_.size(); }
    std::size_t readAt(std::uint64_t position, void* data, std::size_t size) override;
    std::vector<std::uint8_t>& bytes() { return bytes_; }

  private:
    std::vector<std::uint8_t> bytes_;
    std::uint64_t position_ = 0;
};

// Writes a new file beside `path`, lets `fill` write into it, flushes it to disk and puts it in
// the place of `path`. If anything throws, the new file is removed and the old one stands as it
// was. Keeps the old file's permissions, follows a symbolic link to its target. Throws
// RuntimeError: pathAccess, permissionDenied, diskFull, deviceIo.
void replaceFile(const std::string& path, const std::function<void(ByteSink&)>& fill);

} // namespace kvn::imaging
