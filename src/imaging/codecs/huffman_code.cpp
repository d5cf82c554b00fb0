#include "imaging/codecs/huffman_code.h"

#include <algorithm>
#include <vector>

namespace kvn::imaging {

namespace {

constexpr int longest = 15;

struct Leaf {
    std::uint32_t frequency;
    std::uint16_t symbol;
};

// How many leaves lie at each depth of the Huffman tree over the sorted leaves. Inner nodes are
// made in order of their weight, so two queues replace a heap (van Leeuwen 1976).
std::array<int, 64> depthCounts(const std::vector<Leaf>& leaves) {
    const std::size_t n = leaves.size();
    std::vector<std::uint64_t> weight(n);
    std::vector<std::size_t> parent(2 * n);
    std::size_t leaf = 0, inner = 0;
    const auto takeLighter = [&](std::size_t made, std::size_t node) {
        const bool fromLeaves =
            leaf < n && (inner >= made || leaves[leaf].frequency <= weight[inner]);
        if (fromLeaves) {
            parent[leaf] = n + node;
            return std::uint64_t{leaves[leaf++].frequency};
        }
        parent[n + inner] = n + node;
        return weight[inner++];
    };
    for (std::size_t node = 0; node + 1 < n; ++node) {
        const std::uint64_t first = takeLighter(node, node);
        weight[node] = first + takeLighter(node, node);
    }
    std::array<int, 64> counts{};
    std::vector<int> depth(2 * n, 0);
    for (std::size_t i = 2 * n - 2; i-- > n;)
        depth[i] = depth[parent[i]] + 1;
    for (std::size_t i = 0; i < n; ++i)
        ++counts[static_cast<std::size_t>(std::min(depth[parent[i]] + 1, 63))];
    return counts;
}

// Lifts what lies below `limit` up to it and pays by lengthening shorter codes, until the code
// fits (Kraft's sum is 1 again).
void limitDepth(std::array<int, 64>& counts, int limit) {
    for (std::size_t d = 63; d > static_cast<std::size_t>(limit); --d) {
        counts[static_cast<std::size_t>(limit)] += counts[d];
        counts[d] = 0;
    }
    std::int64_t sum = 0;
    for (int d = 1; d <= limit; ++d)
        sum += std::int64_t{counts[static_cast<std::size_t>(d)]} << (limit - d);
    for (; sum > std::int64_t{1} << limit; --sum) {
        int d = limit - 1;
        while (counts[static_cast<std::size_t>(d)] == 0)
            --d;
        // One code of length d and one of the longest become two of length d + 1.
        --counts[static_cast<std::size_t>(d)];
        counts[static_cast<std::size_t>(d) + 1] += 2;
        --counts[static_cast<std::size_t>(limit)];
    }
}

} // namespace

void huffmanLengths(std::span<const std::uint32_t> frequencies, int limit,
                    std::span<std::uint8_t> lengths) {
    std::ranges::fill(lengths, std::uint8_t{0});
    std::vector<Leaf> leaves;
    leaves.reserve(frequencies.size());
    for (std::size_t i = 0; i < frequencies.size(); ++i)
        if (frequencies[i] > 0) leaves.push_back({frequencies[i], static_cast<std::uint16_t>(i)});
    if (leaves.size() < 2) {
        for (const Leaf& leaf : leaves)
            lengths[leaf.symbol] = 1;
        return;
    }
    std::ranges::stable_sort(leaves, {}, &Leaf::frequency);
    auto counts = depthCounts(leaves);
    limitDepth(counts, limit);
    std::size_t next = 0; // the rarest symbols get the longest codes
    for (int d = limit; d >= 1; --d)
        for (int i = 0; i < counts[static_cast<std::size_t>(d)]; ++i)
            lengths[leaves[next++].symbol] = static_cast<std::uint8_t>(d);
}

void huffmanCodes(std::span<const std::uint8_t> lengths, std::span<std::uint16_t> codes) {
    std::array<std::uint32_t, longest + 2> next{};
    for (const std::uint8_t length : lengths)
        if (length > 0) ++next[length + std::size_t{1}];
    for (std::size_t d = 1; d < next.size(); ++d)
        next[d] += next[d - 1];
    // next[d] is now the number of shorter codes; turn it into the first code of each length.
    std::uint32_t code = 0;
    std::array<std::uint32_t, longest + 1> first{};
    for (std::size_t d = 1; d <= longest; ++d) {
        first[d] = code;
        code = (code + (next[d + 1] - next[d])) << 1;
    }
    for (std::size_t i = 0; i < lengths.size(); ++i) {
        std::uint32_t value = lengths[i] > 0 ? first[lengths[i]]++ : 0;
        std::uint32_t reversed = 0;
        for (int bit = 0; bit < lengths[i]; ++bit, value >>= 1)
            reversed = reversed << 1 | (value & 1);
        codes[i] = static_cast<std::uint16_t>(reversed);
    }
}

} // namespace kvn::imaging
