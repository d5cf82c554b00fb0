#include "imaging/quantize_rows.h"

#include <algorithm>
#include <cstddef>
#include <limits>
#include <utility>

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "imaging/quantize_rows.cpp"
#include <hwy/foreach_target.h> // compiles this file once for every instruction set

#include <hwy/highway.h>

HWY_BEFORE_NAMESPACE();
namespace kvn::imaging::HWY_NAMESPACE {

namespace hn = hwy::HWY_NAMESPACE;
using Block = NearestColors::Block;

#if HWY_TARGET == HWY_SCALAR // no vectors: the four channels of a pixel one by one

using Channels = Diffusion::Error;

template <class Change>
HWY_INLINE Channels each(Channels value, const Change& change) {
    for (std::size_t k = 0; k < 4; ++k)
        value[k] = static_cast<std::int16_t>(change(value[k], k));
    return value;
}
HWY_INLINE Channels zero() {
    return {};
}
HWY_INLINE Channels load(const Diffusion::Error& error) {
    return error;
}
HWY_INLINE void store(Channels value, Diffusion::Error& error) {
    error = value;
}
HWY_INLINE Channels loadSixteenfold(const std::uint8_t* p) {
    return each(Channels{}, [p](int, std::size_t k) { return p[k] * 16; });
}
HWY_INLINE Channels add(Channels a, Channels b) {
    return each(a, [&b](int v, std::size_t k) { return v + b[k]; });
}
HWY_INLINE Channels subtract(Channels a, Channels b) {
    return each(a, [&b](int v, std::size_t k) { return v - b[k]; });
}
HWY_INLINE Channels clamped(Channels a, int low, int high) {
    return each(a, [=](int v, std::size_t) { return v < low ? low : v > high ? high : v; });
}
// The value times factor / 65536, rounded down.
HWY_INLINE Channels scaled(Channels a, Channels factor) {
    return each(a, [&factor](int v, std::size_t k) { return (v * factor[k]) >> 16; });
}
HWY_INLINE PackedSpot roundedLevels(Channels a) {
    PackedSpot spot = 0;
    for (std::size_t k = 0; k < 4; ++k)
        spot |= static_cast<PackedSpot>((a[k] + 8) >> 4) << (16 * k);
    return spot;
}
HWY_INLINE std::int32_t smallestKey(const Block& block, PackedSpot packed) {
    const Spot spot = unpackedSpot(packed);
    std::int32_t best = 0;
    for (std::size_t i = 0; i < NearestColors::blockSize; ++i) {
        const int r = block.redGreen[2 * i] - spot[0], g = block.redGreen[2 * i + 1] - spot[1];
        const int b = block.blueAlpha[2 * i] - spot[2], a = block.blueAlpha[2 * i + 1] - spot[3];
        const std::int32_t key = (r * r + g * g + b * b + a * a) << 8 | block.entry[i];
        if (i == 0 || key < best) best = key;
    }
    return best;
}

#else

using Four = hn::FixedTag<std::int16_t, 4>;
using Channels = hn::Vec<Four>;

HWY_INLINE Channels zero() {
    return hn::Zero(Four());
}
HWY_INLINE Channels load(const Diffusion::Error& error) {
    return hn::LoadU(Four(), error.data());
}
HWY_INLINE void store(Channels value, Diffusion::Error& error) {
    hn::StoreU(value, Four(), error.data());
}
HWY_INLINE Channels loadSixteenfold(const std::uint8_t* p) {
    const hn::FixedTag<std::uint8_t, 4> bytes;
    return hn::ShiftLeft<4>(hn::PromoteTo(Four(), hn::LoadU(bytes, p)));
}
HWY_INLINE Channels add(Channels a, Channels b) {
    return hn::Add(a, b);
}
HWY_INLINE Channels subtract(Channels a, Channels b) {
    return hn::Sub(a, b);
}
HWY_INLINE Channels clamped(Channels a, int low, int high) {
    const Four d;
    return hn::Min(hn::Max(a, hn::Set(d, static_cast<std::int16_t>(low))),
                   hn::Set(d, static_cast<std::int16_t>(high)));
}
// The value times factor / 65536, rounded down.
HWY_INLINE Channels scaled(Channels a, Channels factor) {
    return hn::MulHigh(a, factor);
}
HWY_INLINE PackedSpot roundedLevels(Channels a) {
    const auto levels = hn::ShiftRight<4>(hn::Add(a, hn::Set(Four(), 8)));
    return hn::GetLane(hn::BitCast(hn::FixedTag<std::uint64_t, 1>(), levels));
}
HWY_INLINE std::int32_t smallestKey(const Block& block, PackedSpot spot) {
    const hn::CappedTag<std::int16_t, 2 * NearestColors::blockSize> d;
    const hn::Repartition<std::int32_t, decltype(d)> dd;
    const auto redGreen = hn::BitCast(d, hn::Set(dd, static_cast<std::int32_t>(spot)));
    const auto blueAlpha = hn::BitCast(d, hn::Set(dd, static_cast<std::int32_t>(spot >> 32)));
    auto best = hn::Set(dd, std::numeric_limits<std::int32_t>::max());
    for (std::size_t i = 0; i < NearestColors::blockSize; i += hn::Lanes(dd)) {
        const auto one = hn::Sub(hn::Load(d, &block.redGreen[2 * i]), redGreen);
        const auto two = hn::Sub(hn::Load(d, &block.blueAlpha[2 * i]), blueAlpha);
        auto odd = hn::Zero(dd);
        auto sum = hn::ReorderWidenMulAccumulate(dd, one, one, hn::Zero(dd), odd);
        sum = hn::ReorderWidenMulAccumulate(dd, two, two, sum, odd);
        sum = hn::RearrangeToOddPlusEven(sum, odd);
        best = hn::Min(best, hn::Or(hn::ShiftLeft<8>(sum), hn::Load(dd, &block.entry[i])));
    }
    return hn::GetLane(hn::MinOfLanes(dd, best));
}

#endif

// The nearest entry. Distance and entry make one number, whose minimum has the lowest entry.
template <bool withAlpha>
HWY_INLINE std::size_t search(NearestColors& colors, PackedSpot spot) {
    const NearestColors::Blocks blocks = colors.blocksAt<withAlpha>(spot);
    std::int32_t best = smallestKey(*blocks.begin, spot);
    for (const Block* block = blocks.begin + 1; block != blocks.end; ++block)
        best = std::min(best, smallestKey(*block, spot));
    return static_cast<std::size_t>(best & 0xFF);
}

// One row in the making. `below` holds what the row above left for each pixel, and takes what this
// row leaves for the next: a place is read one step before it is written.
template <bool withAlpha, int step>
class Walk {
  public:
    HWY_INLINE Walk(Diffusion::State& state, const Diffusion::Row& row)
        : state_(state), row_(row), below_(state.below.data() + (step > 0 ? 1 : state.width)) {}

    HWY_INLINE void pixel(int x) {
        Channels error = zero();
        if (row_.fixed[x] >= 0) {
            row_.entries[x] = static_cast<std::uint8_t>(row_.fixed[x]);
        } else {
            const Channels pixel = loadSixteenfold(row_.spots + std::ptrdiff_t{x} * 4);
            const Channels wanted = clamped(add(add(pixel, load(*below_)), ahead_), 0, 255 * 16);
            const std::size_t entry = search<withAlpha>(state_.colors, roundedLevels(wanted));
            row_.entries[x] = static_cast<std::uint8_t>(entry);
            error = subtract(wanted, load(state_.places[entry]));
        }
        const Diffusion::Weights& weights = state_.weights[row_.strength[x]];
        ahead_ = scaled(error, load(weights[0]));
        store(add(behind_, scaled(error, load(weights[1]))), below_[-step]);
        behind_ = add(diagonal_, scaled(error, load(weights[2])));
        diagonal_ = scaled(error, load(weights[3]));
        below_ += step;
    }
    HWY_INLINE void finish() { store(behind_, below_[-step]); }

  private:
    Diffusion::State& state_;
    const Diffusion::Row row_;
    Diffusion::Error* below_;
    Channels ahead_ = zero(), behind_ = zero(), diagonal_ = zero();
};

// Each pixel waits for the one before; rows of other strips have something to do meanwhile.
template <bool withAlpha, int step, std::size_t... lane>
HWY_INLINE void walk(const Diffusion::Lane* lanes, std::index_sequence<lane...>) {
    Walk<withAlpha, step> walks[] = {{lanes[lane].diffusion->state(), lanes[lane].row}...};
    const int width = lanes->diffusion->state().width;
    for (int i = 0, x = step > 0 ? 0 : width - 1; i < width; ++i, x += step)
        (walks[lane].pixel(x), ...);
    (walks[lane].finish(), ...);
}

template <bool withAlpha, int step>
void walkLanes(const Diffusion::Lane* lanes, std::size_t count) {
    for (; count >= 4; count -= 4, lanes += 4)
        walk<withAlpha, step>(lanes, std::make_index_sequence<4>());
    for (; count >= 2; count -= 2, lanes += 2)
        walk<withAlpha, step>(lanes, std::make_index_sequence<2>());
    if (count > 0) walk<withAlpha, step>(lanes, std::make_index_sequence<1>());
}

void diffuseRows(const Diffusion::Lane* lanes, std::size_t count, bool withAlpha, bool leftwards) {
    const auto kernel = withAlpha ? (leftwards ? walkLanes<true, -1> : walkLanes<true, 1>)
                                  : (leftwards ? walkLanes<false, -1> : walkLanes<false, 1>);
    kernel(lanes, count);
}

template <bool withAlpha>
void searchPixels(NearestColors& colors, const std::uint8_t* spots, const std::int16_t* fixed,
                  std::uint8_t* entries, int width) {
    for (int x = 0; x < width; ++x, spots += 4) {
        if (fixed[x] >= 0)
            entries[x] = static_cast<std::uint8_t>(fixed[x]);
        else
            entries[x] = static_cast<std::uint8_t>(
                search<withAlpha>(colors, roundedLevels(loadSixteenfold(spots))));
    }
}

void searchRow(NearestColors& colors, const std::uint8_t* spots, const std::int16_t* fixed,
               std::uint8_t* entries, int width) {
    const auto kernel = colors.withAlpha() ? searchPixels<true> : searchPixels<false>;
    kernel(colors, spots, fixed, entries, width);
}

} // namespace kvn::imaging::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace kvn::imaging {

HWY_EXPORT(diffuseRows);
HWY_EXPORT(searchRow);

void nearestRow(NearestColors& colors, const std::uint8_t* spots, const std::int16_t* fixed,
                std::uint8_t* entries, int width) {
    HWY_DYNAMIC_DISPATCH(searchRow)(colors, spots, fixed, entries, width);
}

Diffusion::Diffusion(NearestColors& colors, int width, bool leftwards)
    : state_{colors, {}, {}, std::vector<Error>(static_cast<std::size_t>(width) + 2), width},
      leftwards_(leftwards) {
    for (const Spot& spot : colors.entries()) {
        Error& place = state_.places.emplace_back();
        for (std::size_t k = 0; k < 4; ++k)
            place[k] = static_cast<std::int16_t>(spot[k] * 16);
    }
    for (int strength = 0; strength <= fullStrength; ++strength) {
        Weights& weights = state_.weights.emplace_back();
        const int sixteenths[4] = {7, 3, 5, 1};
        for (std::size_t i = 0; i < 4; ++i)
            weights[i].fill(static_cast<std::int16_t>(sixteenths[i] * strength * (65536 / 256)));
    }
}

void Diffusion::rows(std::span<const Lane> lanes) {
    const Diffusion& first = *lanes.front().diffusion;
    HWY_DYNAMIC_DISPATCH(diffuseRows)
    (lanes.data(), lanes.size(), first.state_.colors.withAlpha(), first.leftwards_);
    for (const Lane& lane : lanes)
        lane.diffusion->leftwards_ = !lane.diffusion->leftwards_;
}

} // namespace kvn::imaging
#endif
