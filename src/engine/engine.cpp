#include "engine/engine.h"

#include "engine/detail/history.h"

namespace kvn::engine {

Engine::Engine() : history_(std::make_unique<detail::HistoryStore>()) {}

Engine::~Engine() = default;

} // namespace kvn::engine
