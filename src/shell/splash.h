// The picture that stands while the frame loads, read from a file beside the program. A missing
// or damaged file shows nothing and stops nothing.
#pragma once

#include <QString>
#include <memory>

class QLabel;

namespace kvn::shell {

class Splash {
  public:
    Splash();
    ~Splash();

    void open(const QString& path);
    void show();
    void close();
    bool isOpen() const { return window_ != nullptr; }

  private:
    std::unique_ptr<QLabel> window_;
};

} // namespace kvn::shell
