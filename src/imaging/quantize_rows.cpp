#include "imaging/quantize_rows.h"

#include <cstddef>
#include <cstring>

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "imaging/quantize_rows.cpp"
#include <hwy/foreach_target.h> // compiles this file once for every instruction set

#include <hwy/highway.h>

HWY_BEFORE_NAMESPACE();
namespace kvn::imaging::HWY_NAMESPACE {

// The four channels of a pixel, and the eight entries of a block, are short fixed vectors, which
// the compiler maps to whatever the instruction set has.
using Channels = std::int32_t __attribute__((vector_size(16)));
using Shorts = std::int16_t __attribute__((vector_size(16)));
using Distances = std::int32_t __attribute__((vector_size(32)));

HWY_INLINE std::int32_t smallest(const Distances& keys) {
    std::int32_t least[8];
    std::memcpy(least, &keys, sizeof least);
    std::int32_t best = least[0];
    for (int i = 1; i < 8; ++i)
        best = least[i] < best ? least[i] : best;
    return best;
}

// The nearest entry. Distance and entry make one number, whose minimum has the lowest entry.
HWY_INLINE std::size_t search(NearestColors& colors, const Spot& spot) {
    const NearestColors::Blocks blocks = colors.blocksAt(spot);
    Distances best{};
    for (const NearestColors::Block* block = blocks.begin; block != blocks.end; ++block) {
        Distances sum{};
        for (std::size_t k = 0; k < 4; ++k) {
            Shorts channel;
            std::memcpy(&channel, block->channel[k].data(), sizeof channel);
            const Distances difference =
                __builtin_convertvector(channel - static_cast<std::int16_t>(spot[k]), Distances);
            sum += difference * difference;
        }
        Shorts entry;
        std::memcpy(&entry, block->entry.data(), sizeof entry);
        const Distances key = (sum << 8) | __builtin_convertvector(entry, Distances);
        best = block == blocks.begin ? key : (key < best ? key : best);
    }
    return static_cast<std::size_t>(smallest(best) & 0xFF);
}

HWY_INLINE Channels load(const Diffusion::Error& error) {
    Channels value;
    std::memcpy(&value, error.data(), sizeof value);
    return value;
}
HWY_INLINE void store(Channels value, Diffusion::Error& error) {
    std::memcpy(error.data(), &value, sizeof value);
}

// `below` holds what the row above left for each pixel, and takes what this row leaves for the
// next: a place is read one step before it is written.
template <int step>
void walk(Diffusion::State& state, const std::uint8_t* spots, const std::int16_t* fixed,
          std::uint8_t* entries) {
    const Channels zero{}, most = zero + 255 * 16;
    const int strength = state.strength;
    Channels ahead{}, behind{}, diagonal{};
    Diffusion::Error* below = state.below.data() + (step > 0 ? 1 : state.width);
    for (int i = 0, x = step > 0 ? 0 : state.width - 1; i < state.width;
         ++i, x += step, below += step) {
        const std::uint8_t* p = spots + std::ptrdiff_t{x} * 4;
        Channels error{};
        if (fixed[x] >= 0) {
            entries[x] = static_cast<std::uint8_t>(fixed[x]);
        } else {
            Channels wanted = Channels{p[0], p[1], p[2], p[3]} * 16 + load(*below) + ahead;
            wanted = wanted < zero ? zero : wanted;
            wanted = wanted > most ? most : wanted;
            const Channels level = (wanted + 8) >> 4;
            Spot spot;
            std::memcpy(spot.data(), &level, sizeof level);
            const std::size_t entry = search(state.colors, spot);
            entries[x] = static_cast<std::uint8_t>(entry);
            error = wanted - load(state.places[entry]);
        }
        ahead = (error * (7 * strength)) >> 8;
        store(behind + ((error * (3 * strength)) >> 8), below[-step]);
        behind = diagonal + ((error * (5 * strength)) >> 8);
        diagonal = (error * strength) >> 8;
    }
    store(behind, below[-step]);
}

void diffuseRow(Diffusion::State& state, bool leftwards, const std::uint8_t* spots,
                const std::int16_t* fixed, std::uint8_t* entries) {
    if (leftwards)
        walk<-1>(state, spots, fixed, entries);
    else
        walk<1>(state, spots, fixed, entries);
}

void searchRow(NearestColors& colors, const std::uint8_t* spots, const std::int16_t* fixed,
               std::uint8_t* entries, int width) {
    for (int x = 0; x < width; ++x, spots += 4)
        entries[x] = static_cast<std::uint8_t>(
            fixed[x] >= 0 ? static_cast<std::size_t>(fixed[x])
                          : search(colors, {spots[0], spots[1], spots[2], spots[3]}));
}

} // namespace kvn::imaging::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace kvn::imaging {

HWY_EXPORT(diffuseRow);
HWY_EXPORT(searchRow);

void nearestRow(NearestColors& colors, const std::uint8_t* spots, const std::int16_t* fixed,
                std::uint8_t* entries, int width) {
    HWY_DYNAMIC_DISPATCH(searchRow)(colors, spots, fixed, entries, width);
}

Diffusion::Diffusion(NearestColors& colors, int width, int strength, bool leftwards)
    : state_{colors, {}, std::vector<Error>(static_cast<std::size_t>(width) + 2), width, strength},
      leftwards_(leftwards) {
    for (const Spot& spot : colors.entries())
        state_.places.push_back({spot[0] * 16, spot[1] * 16, spot[2] * 16, spot[3] * 16});
}

void Diffusion::row(const std::uint8_t* spots, const std::int16_t* fixed, std::uint8_t* entries) {
    HWY_DYNAMIC_DISPATCH(diffuseRow)(state_, leftwards_, spots, fixed, entries);
    leftwards_ = !leftwards_;
}

} // namespace kvn::imaging
#endif
