#include "basic/error.h"

#include <utility>

namespace kvn {

RuntimeError::RuntimeError(std::int32_t number, const std::string& description, std::string source)
    : std::runtime_error(description), number_(number), source_(std::move(source)) {}

bool RuntimeError::isSilent() const {
    return number_ == errors::cancelled;
}

} // namespace kvn
