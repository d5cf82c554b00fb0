#include "imaging/operation.h"

#include <algorithm>
#include <cassert>
#include <cmath>
#include <limits>
#include <new>
#include <stdexcept>
#include <utility>

#include "basic/error.h"
#include "basic/numbers.h"
#include "imaging/operations/families.h"

namespace kvn::imaging {

namespace {

using Family = std::span<const Operation* const> (*)();
constexpr Family families[] = {
    artOperations,     basicGeometryOperations, channelOperations, cipherOperations,
    filterOperations,  generateOperations,      paletteOperations, resampleOperations,
    retouchOperations, textureOperations,       toneOperations,    transformOperations,
};

std::vector<const Operation*> sortedOperations() {
    std::vector<const Operation*> all;
    for (const Family family : families) {
        const auto operations = family();
        all.insert(all.end(), operations.begin(), operations.end());
    }
    std::ranges::sort(all, {}, &Operation::name);
    assert(std::ranges::adjacent_find(all, {}, &Operation::name) == all.end());
    return all;
}

// Built by appending: joining a literal and a string trips a false alarm of gcc 12.
std::string quoted(const Argument& argument, std::string_view before, std::string_view after) {
    std::string text(before);
    text += '"';
    text += argument.name;
    text += '"';
    text += after;
    return text;
}

[[noreturn]] void fail(const Operation& operation, std::int32_t number, const std::string& text) {
    const std::string name(operation.name);
    throw RuntimeError(number, name + ": " + text, name);
}

[[noreturn]] void failKind(const Operation& operation, const Argument& argument) {
    fail(operation, errors::typeMismatch, quoted(argument, "type mismatch in ", ""));
}

// Numbers and booleans as a real number; a true boolean is -1, as everywhere in the system.
bool isNumeric(const Value& value) {
    return std::holds_alternative<bool>(value) || std::holds_alternative<std::int64_t>(value) ||
           std::holds_alternative<double>(value);
}
double numeric(const Value& value) {
    if (const bool* flag = std::get_if<bool>(&value)) return *flag ? -1 : 0;
    if (const auto* whole = std::get_if<std::int64_t>(&value)) return static_cast<double>(*whole);
    return std::get<double>(value);
}

Value toInteger(const Operation& operation, const Argument& argument, const Value& value) {
    if (!isNumeric(value)) failKind(operation, argument);
    if (std::holds_alternative<std::int64_t>(value)) return value;
    const double rounded = roundHalfEven(numeric(value));
    constexpr double limit = 0x1p63;
    if (!(rounded >= -limit && rounded < limit))
        fail(operation, errors::overflow, quoted(argument, "overflow in ", ""));
    return static_cast<std::int64_t>(rounded);
}

Value toNumber(const Operation& operation, const Argument& argument, const Value& value) {
    if (!isNumeric(value)) failKind(operation, argument);
    const double number = numeric(value);
    if (!std::isfinite(number))
        fail(operation, errors::overflow, quoted(argument, "overflow in ", ""));
    return number;
}

void checkMatrix(const Operation& operation, const Argument& argument, const Matrix& matrix) {
    const bool whole =
        matrix.rows > 0 && matrix.columns > 0 &&
        matrix.values.size() ==
            static_cast<std::size_t>(matrix.rows) * static_cast<std::size_t>(matrix.columns) &&
        std::ranges::all_of(matrix.values, [](double v) { return std::isfinite(v); });
    if (!whole)
        fail(operation, errors::invalidCall, quoted(argument, "", " is no whole table of numbers"));
}

void checkImage(const Operation& operation, const Argument& argument, const RasterRef& image) {
    if (!image || image->isEmpty())
        fail(operation, errors::invalidCall, quoted(argument, "", " is no picture"));
}

template <class T>
const T& expect(const Operation& operation, const Argument& argument, const Value& value) {
    const T* found = std::get_if<T>(&value);
    if (!found) failKind(operation, argument);
    return *found;
}

Value toKind(const Operation& operation, const Argument& argument, Value value) {
    switch (argument.kind) {
    case ArgumentKind::Integer:
        return toInteger(operation, argument, value);
    case ArgumentKind::Number:
        return toNumber(operation, argument, value);
    case ArgumentKind::Boolean:
        if (!isNumeric(value)) failKind(operation, argument);
        return numeric(value) != 0;
    case ArgumentKind::Text:
        expect<std::string>(operation, argument, value);
        break;
    case ArgumentKind::Color:
        expect<Rgba>(operation, argument, value);
        break;
    case ArgumentKind::Point:
        expect<Point>(operation, argument, value);
        break;
    case ArgumentKind::Matrix:
        checkMatrix(operation, argument, expect<Matrix>(operation, argument, value));
        break;
    case ArgumentKind::Image:
        checkImage(operation, argument, expect<RasterRef>(operation, argument, value));
        break;
    case ArgumentKind::Palette:
        expect<Palette>(operation, argument, value);
        break;
    }
    return value;
}

void checkRange(const Operation& operation, const Argument& argument, const Value& value) {
    if (!argument.enforced || !isNumeric(value)) return;
    const double number = numeric(value);
    if (number >= argument.minimum && number <= argument.maximum) return;
    fail(operation, errors::invalidCall,
         quoted(argument, "", " must be from ") + numberText(argument.minimum) + " to " +
             numberText(argument.maximum));
}

bool isNone(const Value& value) {
    const auto* image = std::get_if<RasterRef>(&value);
    return std::holds_alternative<Nothing>(value) || (image && !*image);
}

std::vector<Raster> run(const Operation& operation, const Raster& source,
                        const Arguments& arguments, Task& task) {
    if (operation.runPages) return operation.runPages(source, arguments, task);
    std::vector<Raster> pages;
    pages.push_back(operation.run(source, arguments, task));
    return pages;
}

} // namespace

int Arguments::integer(std::size_t i) const {
    using Limits = std::numeric_limits<int>;
    return static_cast<int>(
        std::clamp<std::int64_t>(std::get<std::int64_t>(values_[i]), Limits::min(), Limits::max()));
}

std::span<const Operation* const> operations() {
    static const std::vector<const Operation*> all = sortedOperations();
    return all;
}

const Operation* findOperation(std::string_view name) {
    const auto all = operations();
    const auto found = std::ranges::lower_bound(all, name, {}, &Operation::name);
    return found != all.end() && (*found)->name == name ? *found : nullptr;
}

Arguments checkArguments(const Operation& operation, std::vector<Value> values) {
    const auto described = operation.arguments;
    if (values.size() > described.size())
        fail(operation, errors::invalidCall, "too many arguments");
    values.resize(described.size()); // what is missing is Nothing
    for (std::size_t i = 0; i < described.size(); ++i) {
        const Argument& argument = described[i];
        if (isNone(values[i])) {
            if (!argument.optional)
                fail(operation, errors::invalidCall, quoted(argument, "", " is missing"));
            values[i] = Nothing{};
            continue;
        }
        values[i] = toKind(operation, argument, std::move(values[i]));
        checkRange(operation, argument, values[i]);
    }
    return Arguments(std::move(values));
}

std::vector<Raster> runOperation(const Operation& operation, const Raster& source,
                                 std::vector<Value> values, Task& task) {
    const Arguments arguments = checkArguments(operation, std::move(values));
    if (operation.needsSource && source.isEmpty())
        fail(operation, errors::invalidCall, "there is no picture");
    try {
        return run(operation, source, arguments, task);
    } catch (const std::bad_alloc&) {
        fail(operation, errors::outOfMemory, "out of memory");
    } catch (const std::length_error&) {
        fail(operation, errors::outOfMemory, "out of memory");
    }
}

} // namespace kvn::imaging
