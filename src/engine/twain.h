// The engine's scanner object. Every document has one, and so has the frame. It holds no picture:
// what a scan brings goes to whoever asked for it.
#pragma once

#include <QStringList>

namespace kvn::engine {

class Twain {
  public:
    // The scanners that a scan can use, by the names their service gives them. Empty until a
    // service has reported some.
    const QStringList& Sources() const { return sources_; }
    void setSources(const QStringList& names) { sources_ = names; }

  private:
    QStringList sources_;
};

} // namespace kvn::engine
