// The wait pointer for as long as the object lives. Nothing happens where no display exists.
#pragma once

namespace kvn::document {

class WaitCursor {
  public:
    WaitCursor();
    ~WaitCursor();
    WaitCursor(const WaitCursor&) = delete;
    WaitCursor& operator=(const WaitCursor&) = delete;
};

} // namespace kvn::document
