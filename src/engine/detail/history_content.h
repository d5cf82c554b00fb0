// What undo steps are made of. Everything here is guarded by the lock of the store.
#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "engine/detail/history.h"
#include "engine/detail/history_patch.h"

namespace kvn::engine::detail {

struct Content;
struct Timeline;
using ContentRef = std::shared_ptr<Content>;

// The pixels of one page at one time. They never change; the form they are kept in does:
//   raw                  as the picture that had them left them
//   patch without base   the whole picture, packed
//   patch with base      what is different from another content
// Bases never form a circle, and a content without raw pixels has a patch. The one exception is
// an open content: the live pixels after a change in place that is still under way. It gets its
// raw pixels when the history next sees the live state.
struct Content : std::enable_shared_from_this<Content> {
    explicit Content(const imaging::Raster& shape)
        : type(shape.type()), width(shape.width()), height(shape.height()) {}

    imaging::ImageType type;
    int width;
    int height;

    imaging::Raster raw;
    Patch patch;
    ContentRef base;
    const Timeline* owner = nullptr; // who met it first
    bool isBusy = false;             // a job is at work with it
    bool isPinned = false;  // an exchange is about to write to its raw pixels: none may share them
    bool isPacking = false; // of these, a job that holds a share of `raw`
    bool isCommon = false;  // several histories need it, so it must not come to lean on live pixels
    bool wantsWhole = false; // a difference would have led in a circle

    bool isOpen() const { return raw.isEmpty() && !patch; }
    bool fits(const imaging::Raster& raster) const {
        return raster.type() == type && raster.width() == width && raster.height() == height;
    }
    // Bytes of `raw` that nobody else has a use for.
    std::uint64_t ownRawBytes() const {
        return raw.isEmpty() || (raw.isShared() && !isPacking) ? 0 : raw.byteSize();
    }
    std::uint64_t bytesInMemory() const { return ownRawBytes() + patch.bytesInMemory(); }
};

bool leansOn(const Content& content, const Content& other);
bool leansOnOpen(const Content& content);
void makeCommon(Content& content);
void setBase(Content& content, ContentRef base);

// How to make the pixels of a content; taken under the lock, followed without it.
class Recipe {
  public:
    Recipe() = default;
    // Throws RuntimeError(invalidCall) if the content leans on one that is open.
    explicit Recipe(const Content& content);
    // Throws RuntimeError(outOfMemory, deviceIo).
    imaging::Raster make();

  private:
    imaging::ImageType type_ = imaging::ImageType::Rgb24;
    int width_ = 0;
    int height_ = 0;
    imaging::Raster raw_;
    std::vector<Patch> patches_; // the last comes first
};

struct StepPage {
    PageState state; // without its pixels
    imaging::Palette palette;
    ContentRef content; // null if the page had no pixels
};

struct Step {
    std::string label;
    std::vector<StepPage> pages;
    int current = -1;
    std::uint64_t order = 0; // grows with time
    bool isInPlace = false;

    const StepPage* find(std::uint64_t id, std::size_t likelyIndex) const;
};

// The steps of one history.
struct Timeline {
    std::vector<Step> undo; // the newest last
    std::vector<Step> redo; // the next last
    // What the newest step drove out: comes back if that step is taken back.
    std::vector<Step> parkedRedo;
    std::vector<Step> parkedOldest;
    // Which contents the live pages had when last seen. Label and order mean nothing.
    Step present;
};

} // namespace kvn::engine::detail
