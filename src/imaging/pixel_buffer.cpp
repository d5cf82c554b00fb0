#include "imaging/pixel_buffer.h"

#include <sys/mman.h>

#include <algorithm>
#include <atomic>
#include <cstring>
#include <fstream>
#include <mutex>
#include <new>
#include <string>
#include <utility>
#include <vector>

#include "basic/error.h"

namespace kvn::imaging {

namespace {

constexpr std::size_t readAhead = 64; // lets vector code load whole registers at the end
constexpr std::size_t largeBlock = std::size_t{4} << 20;
constexpr std::size_t hugePage = std::size_t{2} << 20;
constexpr std::size_t checkedBlock = std::size_t{256} << 20;
constexpr std::size_t cacheBytes = std::size_t{256} << 20;
constexpr std::size_t cacheCount = 6;

std::atomic<std::size_t> largestBlock{std::size_t{16} << 30};

[[noreturn]] void throwOutOfMemory() {
    throw RuntimeError(errors::outOfMemory, "Out of memory", "Imaging");
}

std::size_t roundUp(std::size_t bytes, std::size_t unit) {
    return (bytes + unit - 1) / unit * unit;
}

// What the kernel can still hand out, swap included. The kernel promises more than it has and
// then kills the process that takes it, so big requests are measured against this first.
std::size_t availableBytes() {
    std::ifstream file("/proc/meminfo");
    std::string key, unit;
    std::size_t kilobytes = 0, sum = 0;
    bool known = false;
    while (file >> key >> kilobytes && std::getline(file, unit)) {
        if (key != "MemAvailable:" && key != "SwapFree:") continue;
        sum += kilobytes << 10;
        known = true;
    }
    return known ? sum : ~std::size_t{0};
}

struct Mapping {
    std::uint8_t* data = nullptr;
    std::size_t size = 0;
};

// Maps more than asked for and cuts the ends off, so that the block starts on a huge page.
Mapping mapFresh(std::size_t size) {
    const std::size_t outer = size + hugePage;
    void* raw = mmap(nullptr, outer, PROT_READ | PROT_WRITE,
                     MAP_PRIVATE | MAP_ANONYMOUS | MAP_NORESERVE, -1, 0);
    if (raw == MAP_FAILED) return {};
    auto* base = static_cast<std::uint8_t*>(raw);
    const std::size_t head = roundUp(reinterpret_cast<std::uintptr_t>(base), hugePage) -
                             reinterpret_cast<std::uintptr_t>(base);
    if (head > 0) munmap(base, head);
    if (hugePage - head > 0) munmap(base + head + size, hugePage - head);
    madvise(base + head, size, MADV_HUGEPAGE);
    return {base + head, size};
}

// Freed large blocks, oldest first. It is never destroyed: pictures may outlive it at exit.
class BlockCache {
  public:
    static BlockCache& instance() {
        static auto* cache = new BlockCache;
        return *cache;
    }

    // The smallest kept block that is large enough and wastes at most a quarter; null if none.
    Mapping take(std::size_t size) {
        const std::lock_guard lock(mutex_);
        auto best = kept_.end();
        for (auto it = kept_.begin(); it != kept_.end(); ++it)
            if (it->size >= size && it->size <= size + size / 4 &&
                (best == kept_.end() || it->size <= best->size))
                best = it;
        if (best == kept_.end()) return {};
        const Mapping found = *best;
        kept_.erase(best);
        total_ -= found.size;
        return found;
    }

    void give(Mapping mapping) {
        std::vector<Mapping> dropped;
        {
            const std::lock_guard lock(mutex_);
            kept_.push_back(mapping);
            total_ += mapping.size;
            while (total_ > cacheBytes || kept_.size() > cacheCount) {
                total_ -= kept_.front().size;
                dropped.push_back(kept_.front());
                kept_.erase(kept_.begin());
            }
        }
        release(dropped);
    }

    void clear() {
        std::vector<Mapping> dropped;
        {
            const std::lock_guard lock(mutex_);
            dropped.swap(kept_);
            total_ = 0;
        }
        release(dropped);
    }

  private:
    BlockCache() { kept_.reserve(cacheCount + 1); }

    static void release(const std::vector<Mapping>& mappings) {
        for (const Mapping& mapping : mappings)
            munmap(mapping.data, mapping.size);
    }

    std::mutex mutex_;
    std::vector<Mapping> kept_;
    std::size_t total_ = 0;
};

Mapping mapOrReuse(std::size_t size, bool& fresh) {
    fresh = false;
    if (const Mapping kept = BlockCache::instance().take(size); kept.data) return kept;
    fresh = true;
    if (size >= checkedBlock && size > availableBytes()) {
        PixelBuffer::trimCache();
        if (size > availableBytes()) return {};
    }
    if (const Mapping mapped = mapFresh(size); mapped.data) return mapped;
    PixelBuffer::trimCache();
    return mapFresh(size);
}

} // namespace

struct PixelBuffer::Block {
    Block(std::size_t bytes, bool zeroed) : isMapped(bytes >= largeBlock) {
        bool fresh = false;
        if (isMapped) {
            memory = mapOrReuse(roundUp(bytes, hugePage), fresh);
        } else {
            memory = {static_cast<std::uint8_t*>(
                          ::operator new (bytes, std::align_val_t{rowAlignment}, std::nothrow)),
                      bytes};
        }
        if (!memory.data) throwOutOfMemory();
        if (zeroed && !fresh) std::memset(memory.data, 0, bytes);
    }
    ~Block() {
        if (isMapped)
            BlockCache::instance().give(memory);
        else
            ::operator delete (memory.data, std::align_val_t{rowAlignment});
    }
    Block(const Block&) = delete;
    Block& operator=(const Block&) = delete;

    Mapping memory;
    bool isMapped;
};

PixelBuffer::PixelBuffer(std::size_t rowBytes, int rows, bool zeroed) {
    const std::size_t limit = maxBytes();
    if (rows <= 0 || rowBytes == 0 || rowBytes > limit) throwOutOfMemory();
    stride_ = strideFor(rowBytes);
    rows_ = rows;
    if (stride_ > limit / static_cast<std::size_t>(rows)) throwOutOfMemory();
    try {
        block_ = std::make_shared<Block>(byteSize() + readAhead, zeroed);
    } catch (const std::bad_alloc&) {
        throwOutOfMemory();
    }
}

const std::uint8_t* PixelBuffer::data() const {
    return block_ ? block_->memory.data : nullptr;
}

std::uint8_t* PixelBuffer::detach() {
    if (!block_) return nullptr;
    if (block_.use_count() == 1) {
        // use_count alone orders nothing. Taking and dropping a share puts this thread's writes
        // after the reads of a holder that has just let go.
        std::shared_ptr<Block>(block_).reset();
        return block_->memory.data;
    }
    PixelBuffer copy(stride_, rows_);
    std::memcpy(copy.block_->memory.data, data(), byteSize());
    *this = std::move(copy);
    return block_->memory.data;
}

std::size_t PixelBuffer::maxBytes() {
    return largestBlock.load();
}
void PixelBuffer::setMaxBytes(std::size_t bytes) {
    largestBlock.store(bytes);
}
void PixelBuffer::trimCache() {
    BlockCache::instance().clear();
}

} // namespace kvn::imaging
