#include "imaging/operations/filters/box_kernels.h"

#include <cstring>

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "imaging/operations/filters/box_kernels.cpp"
#include <hwy/foreach_target.h> // compiles this file once for every instruction set

#include <hwy/highway.h>

// Plain loops that the compiler turns into vector code for each of the instruction sets.
HWY_BEFORE_NAMESPACE();
namespace kvn::imaging::HWY_NAMESPACE {

template <class Sum, class Item>
HWY_INLINE void slide(Sum* HWY_RESTRICT column, const Item* HWY_RESTRICT add,
                      const Item* HWY_RESTRICT drop, std::size_t count) {
    for (std::size_t i = 0; i < count; ++i)
        column[i] = static_cast<Sum>(column[i] + add[i] - drop[i]);
}

void slide8(std::uint16_t* column, const std::uint8_t* add, const std::uint8_t* drop,
            std::size_t count) {
    slide(column, add, drop, count);
}
void slide32(std::uint32_t* column, const std::uint32_t* add, const std::uint32_t* drop,
             std::size_t count) {
    slide(column, add, drop, count);
}
void slide64(std::uint64_t* column, const std::uint64_t* add, const std::uint64_t* drop,
             std::size_t count) {
    slide(column, add, drop, count);
}

template <int size, class Sum>
HWY_INLINE void sumFew(const Sum* HWY_RESTRICT row, Sum* HWY_RESTRICT sums, std::size_t count,
                       std::size_t step) {
    for (std::size_t i = 0; i < count; ++i) {
        Sum sum = row[i];
        for (int k = 1; k < size; ++k)
            sum = static_cast<Sum>(sum + row[i + static_cast<std::size_t>(k) * step]);
        sums[i] = sum;
    }
}

// Sums of 1, 2, 4, 8 ... entries by doubling; those that the binary form of the size needs are
// added up, so the work grows with its logarithm only.
template <class Sum>
HWY_INLINE void sumByDoubling(Sum* row, Sum* HWY_RESTRICT sums, std::size_t count, std::size_t size,
                              std::size_t step) {
    std::memset(sums, 0, count * sizeof(Sum));
    std::size_t done = 0, length = count + (size - 1) * step;
    for (std::size_t bit = 1; bit <= size; bit *= 2) {
        if (size & bit) {
            const Sum* HWY_RESTRICT part = row + done * step;
            for (std::size_t i = 0; i < count; ++i)
                sums[i] = static_cast<Sum>(sums[i] + part[i]);
            done += bit;
        }
        if (bit * 2 > size) break;
        length -= bit * step;
        // In place: entry i is read for the last time when it is written.
        const std::size_t ahead = bit * step;
        for (std::size_t i = 0; i < length; ++i)
            row[i] = static_cast<Sum>(row[i] + row[i + ahead]);
    }
}

template <class Sum>
HWY_INLINE void sum(Sum* row, Sum* sums, std::size_t count, int size, int step) {
    const auto distance = static_cast<std::size_t>(step);
    switch (size) {
    case 3:
        return sumFew<3>(row, sums, count, distance);
    case 5:
        return sumFew<5>(row, sums, count, distance);
    case 7:
        return sumFew<7>(row, sums, count, distance);
    case 9:
        return sumFew<9>(row, sums, count, distance);
    default:
        return sumByDoubling(row, sums, count, static_cast<std::size_t>(size), distance);
    }
}

void sum16(std::uint16_t* row, std::uint16_t* sums, std::size_t count, int size, int step) {
    sum(row, sums, count, size, step);
}
void sum32(std::uint32_t* row, std::uint32_t* sums, std::size_t count, int size, int step) {
    sum(row, sums, count, size, step);
}
void sum64(std::uint64_t* row, std::uint64_t* sums, std::size_t count, int size, int step) {
    sum(row, sums, count, size, step);
}

template <class Sum>
HWY_INLINE void blend(const std::uint8_t* HWY_RESTRICT pixels, const Sum* HWY_RESTRICT sums,
                      std::uint8_t* HWY_RESTRICT out, std::size_t count, float keep, float gain) {
    for (std::size_t i = 0; i < count; ++i) {
        const float value = static_cast<float>(pixels[i]) * keep +
                            static_cast<float>(static_cast<std::int32_t>(sums[i])) * gain + 0.5f;
        int level = static_cast<int>(value);
        level = level < 0 ? 0 : level;
        out[i] = static_cast<std::uint8_t>(level > 255 ? 255 : level);
    }
}

void blend16(const std::uint8_t* pixels, const std::uint16_t* sums, std::uint8_t* out,
             std::size_t count, float keep, float gain) {
    blend(pixels, sums, out, count, keep, gain);
}
void blend32(const std::uint8_t* pixels, const std::uint32_t* sums, std::uint8_t* out,
             std::size_t count, float keep, float gain) {
    blend(pixels, sums, out, count, keep, gain);
}

} // namespace kvn::imaging::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace kvn::imaging {

HWY_EXPORT(slide8);
HWY_EXPORT(slide32);
HWY_EXPORT(slide64);
HWY_EXPORT(sum16);
HWY_EXPORT(sum32);
HWY_EXPORT(sum64);
HWY_EXPORT(blend16);
HWY_EXPORT(blend32);

void slideBytes(std::uint16_t* column, const std::uint8_t* add, const std::uint8_t* drop,
                std::size_t count) {
    HWY_DYNAMIC_DISPATCH(slide8)(column, add, drop, count);
}
void slideSums(std::uint32_t* column, const std::uint32_t* add, const std::uint32_t* drop,
               std::size_t count) {
    HWY_DYNAMIC_DISPATCH(slide32)(column, add, drop, count);
}
void slideSums(std::uint64_t* column, const std::uint64_t* add, const std::uint64_t* drop,
               std::size_t count) {
    HWY_DYNAMIC_DISPATCH(slide64)(column, add, drop, count);
}
void sumAlong(std::uint16_t* row, std::uint16_t* sums, std::size_t count, int size, int step) {
    HWY_DYNAMIC_DISPATCH(sum16)(row, sums, count, size, step);
}
void sumAlong(std::uint32_t* row, std::uint32_t* sums, std::size_t count, int size, int step) {
    HWY_DYNAMIC_DISPATCH(sum32)(row, sums, count, size, step);
}
void sumAlong(std::uint64_t* row, std::uint64_t* sums, std::size_t count, int size, int step) {
    HWY_DYNAMIC_DISPATCH(sum64)(row, sums, count, size, step);
}
void blendSums(const std::uint8_t* pixels, const std::uint16_t* sums, std::uint8_t* out,
               std::size_t count, float keep, float gain) {
    HWY_DYNAMIC_DISPATCH(blend16)(pixels, sums, out, count, keep, gain);
}
void blendSums(const std::uint8_t* pixels, const std::uint32_t* sums, std::uint8_t* out,
               std::size_t count, float keep, float gain) {
    HWY_DYNAMIC_DISPATCH(blend32)(pixels, sums, out, count, keep, gain);
}

} // namespace kvn::imaging
#endif
