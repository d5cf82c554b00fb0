// The description of one imaging operation, and the table of all.
//
// An operation is described once: contract name, arguments with kind and documented range, undo
// name, neighbourhood, alpha rule, what it does with each image type. Argument checks, trace,
// tests, documentation and the probe all read this description.
#pragma once

#include <cstdint>
#include <memory>
#include <span>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

#include "imaging/raster.h"
#include "imaging/task.h"

namespace kvn::imaging {

// A table of numbers, row by row.
struct Matrix {
    int rows = 0;
    int columns = 0;
    std::vector<double> values;
    double at(int row, int column) const {
        return values[static_cast<std::size_t>(row * columns + column)];
    }
    bool operator==(const Matrix&) const = default;
};

using RasterRef = std::shared_ptr<const Raster>;
using Nothing = std::monostate;

// One argument as it is passed. A whole number may be given where a real one is wanted; a real
// one where a whole one is wanted is rounded half to even; booleans and numbers convert.
using Value = std::variant<Nothing, bool, std::int64_t, double, std::string, Rgba, Point, Matrix,
                           RasterRef, Palette>;

enum class ArgumentKind {
    Integer,
    Number,
    Boolean,
    Text,
    Color,
    Point,
    Matrix, // also byte tables: one row
    Image,
    Palette,
};

struct Argument {
    std::string_view name;
    ArgumentKind kind = ArgumentKind::Integer;
    // The documented range, both included; advice, not enforced, unless `enforced`.
    double minimum = 0;
    double maximum = 0;
    std::string_view unit; // "px", "%", "degrees", or empty
    std::string_view note; // what the value means, one line
    bool optional = false; // Nothing is accepted
    bool enforced = false; // outside the range: RuntimeError(invalidCall)
};

enum class AlphaRule {
    None,         // touches neither colour nor alpha of a pixel (moves, cuts)
    Weighted,     // colours are mixed in proportion to their alpha
    ColorOnly,    // alpha is carried over unchanged
    EveryChannel, // alpha is treated like a colour channel
    AlphaOnly,    // colours are carried over unchanged
    Defines,      // the result's alpha is the operation's own
};

enum class TypeRule {
    Keeps,    // the result has the source's type
    Promotes, // 1-bit and palette pictures become 24-bit, or 32-bit where they have alpha
    Fixed,    // the description's note names the result's type
};

// Arguments after the checks: every one has the kind the description tells.
class Arguments {
  public:
    explicit Arguments(std::vector<Value> values) : values_(std::move(values)) {}

    std::size_t size() const { return values_.size(); }
    const Value& operator[](std::size_t i) const { return values_[i]; }
    bool isNothing(std::size_t i) const { return std::holds_alternative<Nothing>(values_[i]); }
    int integer(std::size_t i) const; // saturated to the range of int
    double number(std::size_t i) const { return std::get<double>(values_[i]); }
    bool boolean(std::size_t i) const { return std::get<bool>(values_[i]); }
    const std::string& text(std::size_t i) const { return std::get<std::string>(values_[i]); }
    Rgba color(std::size_t i) const { return std::get<Rgba>(values_[i]); }
    Point point(std::size_t i) const { return std::get<Point>(values_[i]); }
    const Matrix& matrix(std::size_t i) const { return std::get<Matrix>(values_[i]); }
    const Raster& image(std::size_t i) const { return *std::get<RasterRef>(values_[i]); }
    const Palette& palette(std::size_t i) const { return std::get<Palette>(values_[i]); }

  private:
    std::vector<Value> values_;
};

struct Operation {
    std::string_view name;                    // as the contract has it: "Effects.Blur"
    std::string_view undoName;                // "Blur"
    std::span<const Argument> arguments = {}; // without the undo label
    // The new picture. Reads `source` only; the source stays whole whatever happens.
    Raster (*run)(const Raster& source, const Arguments& arguments, Task& task) = nullptr;
    int border = 0; // pixels around an output pixel that are read; -1: any, or depends
    AlphaRule alpha = AlphaRule::Weighted;
    TypeRule types = TypeRule::Promotes;
    std::string_view note; // one sentence for the documentation
    // For operations that give several pages, the pages; `run` is then null.
    std::vector<Raster> (*runPages)(const Raster& source, const Arguments& arguments,
                                    Task& task) = nullptr;
    bool needsSource = true; // false: makes a picture from nothing
};

// All operations, sorted by name.
std::span<const Operation* const> operations();
// Null if there is none of that name.
const Operation* findOperation(std::string_view name);

// Converts and checks the values against the description. Throws RuntimeError: invalidCall with
// operation and argument named for a wrong number of arguments or a value out of an enforced
// range, typeMismatch for a kind that does not convert.
Arguments checkArguments(const Operation& operation, std::vector<Value> values);

// Runs it: checks, then run or runPages (a single page otherwise). bad_alloc comes out as
// RuntimeError(outOfMemory); Cancelled passes through.
std::vector<Raster> runOperation(const Operation& operation, const Raster& source,
                                 std::vector<Value> values, Task& task);

} // namespace kvn::imaging
