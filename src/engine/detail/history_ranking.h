// How far the contents of all undo steps are from the present.
#pragma once

#include <vector>

#include "engine/detail/history_content.h"

namespace kvn::engine::detail {

struct Ranked {
    Content* content = nullptr;
    Content* toward = nullptr; // the same page one step nearer to the present; may be null
    int rank = 0;              // in steps: 0 the present, 1 what one undo or redo needs
};

// Every content once, nearest first; those of earlier timelines before others of the same rank.
std::vector<Ranked> rankContents(const std::vector<Timeline*>& timelines);

} // namespace kvn::engine::detail
