// The engine's printer object, one for the program. It lives as long as the frame.
#pragma once

#include "engine/trace.h"

namespace kvn::engine {

class Engine;

class Printer {
  public:
    explicit Printer(Engine& engine) : engine_(engine) {}

    // A number that the program writes before each job and never reads back.
    void setOption1(int value);

  private:
    Engine& engine_;
    TraceIdentity who_{-1, QStringLiteral("MyPrinter")};
};

} // namespace kvn::engine
