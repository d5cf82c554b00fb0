// The pixels of one TIFF page.
#pragma once

#include <mutex>
#include <vector>

#include "imaging/codecs/tiff_layout.h"
#include "imaging/task.h"

namespace kvn::imaging {

// Library handles on one file, one for each thread that decodes. They are kept for the next page.
class TiffReaderPool {
  public:
    explicit TiffReaderPool(std::span<const std::uint8_t> file) : file_(file) {}

    std::span<const std::uint8_t> file() const { return file_; }

    // A handle of one's own, with the directory current and ready for decoding, until the lease
    // ends. Throws invalidPicture.
    class Lease {
      public:
        Lease(TiffReaderPool& pool, std::uint64_t directory);
        ~Lease();
        Lease(const Lease&) = delete;
        Lease& operator=(const Lease&) = delete;
        const TiffReader& operator*() const { return *kept_.reader; }
        const TiffReader* operator->() const { return kept_.reader.get(); }

      private:
        friend class TiffReaderPool;
        TiffReaderPool& pool_;
        struct Kept {
            std::unique_ptr<TiffReader> reader;
            std::uint64_t directory = 0;
        };
        Kept kept_;
    };

  private:
    std::span<const std::uint8_t> file_;
    std::mutex mutex_;
    std::vector<Lease::Kept> idle_;
};

// As stored, not turned. What is damaged or missing is black; `complete` tells whether anything
// is. Strips and tiles are decoded on all cores.
Raster decodeTiffPage(TiffReaderPool& pool, std::uint64_t directory, const TiffLayout& layout,
                      Task& task, bool& complete);

} // namespace kvn::imaging
