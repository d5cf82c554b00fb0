#include "engine/printer.h"

#include "engine/engine.h"

namespace kvn::engine {

void Printer::setOption1(int value) {
    Trace::Call call(engine_.trace(), who_, QStringLiteral("MyPrinter.Option1"), {value});
}

} // namespace kvn::engine
