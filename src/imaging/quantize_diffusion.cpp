#include "imaging/quantize_diffusion.h"

#include <cstddef>
#include <cstring>

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "imaging/quantize_diffusion.cpp"
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
HWY_INLINE std::size_t search(const NearestColors& colors, const Spot& spot) {
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

template <int step>
void walk(Diffusion::State& state, const std::uint8_t* spots, const std::int16_t* fixed,
          std::uint8_t* entries) {
    const Channels zero{}, most = zero + 255 * 16;
    Channels ahead{}, behind{}, diagonal{};
    Diffusion::Error* below = state.below.data() + (step > 0 ? 1 : state.width);
    for (int i = 0, x = step > 0 ? 0 : state.width - 1; i < state.width;
         ++i, x += step, below += step) {
        const std::uint8_t* p = spots + std::ptrdiff_t{x} * 4;
        Channels error{};
        if (fixed[x] >= 0) {
            entries[x] = static_cast<std::uint8_t>(fixed[x]);
        } else {
            Channels wanted = Channels{p[0], p[1], p[2], p[3]} * 16 + ahead + load(*below);
            wanted = wanted < zero ? zero : wanted;
            wanted = wanted > most ? most : wanted;
            const Channels level = (wanted + 8) >> 4;
            Spot spot;
            std::memcpy(spot.data(), &level, sizeof level);
            const std::size_t entry = search(*state.colors, spot);
            entries[x] = static_cast<std::uint8_t>(entry);
            error = wanted - load(state.places[entry]);
        }
        ahead = (error * 7) >> 4;
        const Channels backward = (error * 3) >> 4, down = (error * 5) >> 4;
        store(behind + backward, below[-step]);
        behind = diagonal + down;
        diagonal = error - ahead - backward - down;
    }
    store(behind, below[-step]);
}

void walkRow(Diffusion::State& state, bool leftwards, const std::uint8_t* spots,
             const std::int16_t* fixed, std::uint8_t* entries) {
    if (leftwards)
        walk<-1>(state, spots, fixed, entries);
    else
        walk<1>(state, spots, fixed, entries);
}

} // namespace kvn::imaging::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace kvn::imaging {

HWY_EXPORT(walkRow);

Diffusion::Diffusion(const NearestColors& colors, int width, bool leftwards)
    : state_{&colors, {}, std::vector<Error>(static_cast<std::size_t>(width) + 2), width},
      leftwards_(leftwards) {
    for (int i = 0; i < colors.size(); ++i) {
        const Spot& spot = colors.spot(i);
        state_.places.push_back({spot[0] * 16, spot[1] * 16, spot[2] * 16, spot[3] * 16});
    }
}

void Diffusion::row(const std::uint8_t* spots, const std::int16_t* fixed, std::uint8_t* entries) {
    HWY_DYNAMIC_DISPATCH(walkRow)(state_, leftwards_, spots, fixed, entries);
    leftwards_ = !leftwards_;
}

} // namespace kvn::imaging
#endif
