// SPDX-License-Identifier: MIT
#include "builder/color_cube.h"

#include <algorithm>

namespace kfx {
namespace {

constexpr uint32_t kChildren = 8;
constexpr uint32_t kNever = UINT32_MAX;  // as a rank: no such error

uint32_t ParentOf(uint32_t node) { return (node - 1) / kChildren; }

// Nodes above the deepest level.
uint32_t InnerNodes(const ColorCube& cube) { return CubeNodes(cube.depth - 1); }

void AddPixelsOf(const ColorNode& from, ColorNode* to) {
    to->count += from.count;
    to->red += from.red;
    to->green += from.green;
    to->blue += from.blue;
}

void ClearPixels(ColorNode* node) { node->count = node->red = node->green = node->blue = 0; }

// Twice the midpoint of a node, per channel: an odd number.
struct Midpoint {
    int64_t red;
    int64_t green;
    int64_t blue;
};

// The sum of (2c - 2m)^2, from the sums of c and c^2: whole numbers, so the order of adding does not matter.
int64_t ErrorOf(const ColorNode& node, const Midpoint& mid) {
    return 4 * node.squares - 4 * (mid.red * node.red + mid.green * node.green + mid.blue * node.blue) +
           node.count * (mid.red * mid.red + mid.green * mid.green + mid.blue * mid.blue);
}

void SetErrors(ColorCube* cube, uint32_t node, const Midpoint& mid, uint32_t level) {
    ColorNode* nodes = cube->nodes.address;
    nodes[node].error = ErrorOf(nodes[node], mid);
    if (level == cube->depth) return;
    const int64_t step = 128 >> level;
    for (uint32_t id = 0; id < kChildren; ++id) {
        const uint32_t child = kChildren * node + 1 + id;
        if (nodes[child].count == 0) continue;
        const Midpoint childMid = {.red = mid.red + (id & 4 ? step : -step),
                                   .green = mid.green + (id & 2 ? step : -step),
                                   .blue = mid.blue + (id & 1 ? step : -step)};
        SetErrors(cube, child, childMid, level + 1);
    }
}

// Replaces errors by their places in ascending order; returns the number of different ones.
uint32_t RankErrors(ColorCube* cube, uint32_t* order, uint32_t count) {
    ColorNode* nodes = cube->nodes.address;
    std::sort(order, order + count,
              [nodes](uint32_t a, uint32_t b) { return nodes[a].error < nodes[b].error; });
    uint32_t rank = 0;
    int64_t last = 0;
    for (uint32_t i = 0; i < count; ++i) {
        ColorNode& node = nodes[order[i]];
        if (node.error != last) ++rank;
        last = node.error;
        node.rank = rank;
    }
    return rank;
}

uint32_t LeastRankOfChildren(const ColorCube& cube, uint32_t node) {
    const ColorNode* child = cube.nodes.address + kChildren * node + 1;
    uint32_t least = kNever;
    for (uint32_t id = 0; id < kChildren; ++id)
        if (child[id].error) least = std::min(least, child[id].rank);
    return least;
}

// The least threshold (as a rank) at which a node holds pixels of its own: a leaf always does, any other node
// once a child has been merged into it.
uint32_t HoldsPixelsFrom(const ColorCube& cube, uint32_t node) {
    return node < InnerNodes(cube) ? LeastRankOfChildren(cube, node) : 0;
}

// What the passes need to know, an entry for each rank.
struct PassTables {
    int32_t* counted;       // change in the number of standing nodes that hold pixels
    uint32_t* firstKilled;  // list of the nodes whose ancestor of least error has this rank; 0: none
};

void FillTables(ColorCube* cube, const uint32_t* order, uint32_t count, const PassTables& tables) {
    ColorNode* nodes = cube->nodes.address;
    for (uint32_t node = 1; node < CubeNodes(cube->depth); ++node) {
        const uint32_t parent = ParentOf(node);
        nodes[node].leastAbove = parent ? std::min(nodes[parent].rank, nodes[parent].leastAbove) : kNever;
    }
    for (uint32_t i = 0; i < count; ++i) {
        ColorNode& node = nodes[order[i]];
        const uint32_t from = HoldsPixelsFrom(*cube, order[i]);
        const uint32_t to = std::min(node.rank, node.leastAbove);
        if (from < to) {
            ++tables.counted[from];
            --tables.counted[to];
        }
        if (node.leastAbove != kNever) {
            node.nextKilled = tables.firstKilled[node.leastAbove];
            tables.firstKilled[node.leastAbove] = order[i];
        }
    }
}

// The threshold (as a rank) of the last merging pass.
//
// A pass has a threshold t and looks at every node, children before parents:
// - a node whose error is at most t is merged into its parent, with everything below it;
// - any other node counts as a colour if it holds pixels, and its error is proposed as the next threshold.
// The passes end when no more colours than wanted were counted; otherwise the least error proposed is the
// next threshold. A node below a merged one was looked at earlier in the same pass: if its own error is above
// t, it was counted and proposed its error, although it is merged now. So a pass may count too many and
// another one follow. tests/reference/ does the passes one by one and defines the result.
//
// Example with at most 2 colours wanted. Below the root stand A (error 4) with the leaves A1 (error 1) and A2
// (error 7), and B (error 20) with the leaf B1 (error 9). At first the leaves hold the pixels.
//   t = 0: nothing is merged. A1, A2 and B1 count: 3. The least error proposed is A1's, 1.
//   t = 1: A1 is merged into A. A, A2 and B1 count: 3. The least error proposed is A's, 4.
//   t = 4: A is merged into the root, with A2 below it. A2, the root and B1 count: 3, though only two of them
//          are left. The least error proposed is A2's, 7.
//   t = 7: nothing more is merged. The root and B1 count: 2, and the passes end.
//
// Errors never change, so the ranks alone say what a pass does: t takes their values in ascending order,
// without those of nodes that an earlier pass has merged. The root is never merged: its error, the sum over
// all pixels, is larger than every other by more than 1 whenever there are more colours than wanted.
uint32_t LastThreshold(const ColorCube& cube, uint32_t limit, const uint32_t* order, uint32_t count,
                       const PassTables& tables) {
    const ColorNode* nodes = cube.nodes.address;
    const uint32_t rootHoldsPixelsFrom = LeastRankOfChildren(cube, 0);
    uint32_t threshold = 0;
    uint32_t previous = 0;
    int64_t standing = tables.counted[0];
    uint32_t next = 0;  // in `order`
    for (;;) {
        int64_t colors = standing + (rootHoldsPixelsFrom <= threshold);
        for (uint32_t rank = previous + 1; rank <= threshold; ++rank)
            for (uint32_t i = tables.firstKilled[rank]; i; i = nodes[i].nextKilled)
                colors += HoldsPixelsFrom(cube, i) <= threshold && threshold < nodes[i].rank;
        if (colors <= static_cast<int64_t>(limit)) return threshold;
        while (next < count &&
               (nodes[order[next]].rank <= threshold || nodes[order[next]].leastAbove <= previous))
            ++next;
        if (next == count) return threshold;
        previous = threshold;
        const uint32_t risen = nodes[order[next]].rank;
        for (uint32_t rank = threshold + 1; rank <= risen; ++rank) standing += tables.counted[rank];
        threshold = risen;
    }
}

void MergeUpTo(ColorCube* cube, uint32_t threshold) {
    ColorNode* nodes = cube->nodes.address;
    for (uint32_t node = 0; node < InnerNodes(*cube); ++node) ClearPixels(&nodes[node]);
    for (uint32_t node = CubeNodes(cube->depth) - 1; node > 0; --node) {
        if (nodes[node].rank > threshold && nodes[node].leastAbove > threshold) continue;
        AddPixelsOf(nodes[node], &nodes[ParentOf(node)]);
        ClearPixels(&nodes[node]);
    }
}

void Assign(const ColorCube& cube, uint32_t node, uint32_t level, uint8_t* palette, uint32_t* used) {
    const ColorNode& from = cube.nodes.address[node];
    if (level < cube.depth)
        for (uint32_t id = 0; id < kChildren; ++id)
            if (cube.nodes.address[kChildren * node + 1 + id].error)
                Assign(cube, kChildren * node + 1 + id, level + 1, palette, used);
    if (from.count == 0) return;
    uint8_t* entry = palette + 3 * (*used)++;
    // Rounded to nearest: (sum + count / 2) / count in whole numbers.
    entry[0] = static_cast<uint8_t>((2 * from.red + from.count) / (2 * from.count));
    entry[1] = static_cast<uint8_t>((2 * from.green + from.count) / (2 * from.count));
    entry[2] = static_cast<uint8_t>((2 * from.blue + from.count) / (2 * from.count));
}

}  // namespace

uint32_t CubeDepthFor(uint32_t colors) {
    uint32_t depth = 0;
    for (uint32_t rest = colors; rest != 0; rest /= 4) ++depth;
    return std::clamp<uint32_t>(depth, 2, kMostCubeDepth);
}

uint32_t LeafOf(const ColorCube& cube, uint32_t red, uint32_t green, uint32_t blue) {
    uint32_t node = 0;
    for (uint32_t bit = 7; bit > 7 - cube.depth; --bit)
        node = kChildren * node + 1 + ((red >> bit & 1) * 4 + (green >> bit & 1) * 2 + (blue >> bit & 1));
    return node;
}

void SumUpCube(ColorCube* cube) {
    ColorNode* nodes = cube->nodes.address;
    for (uint32_t node = CubeNodes(cube->depth) - 1; node > 0; --node) {
        ColorNode* parent = &nodes[ParentOf(node)];
        AddPixelsOf(nodes[node], parent);
        parent->squares += nodes[node].squares;
    }
    SetErrors(cube, 0, {.red = 255, .green = 255, .blue = 255}, 0);
}

bool ReduceCube(ColorCube* cube, uint32_t limit) {
    const uint32_t nodeCount = CubeNodes(cube->depth);
    const Scratch<uint32_t> order(nodeCount);
    if (!order) return false;
    uint32_t count = 0;
    uint32_t leaves = 0;
    for (uint32_t node = 1; node < nodeCount; ++node) {
        if (!cube->nodes.address[node].error) continue;
        order.address[count++] = node;
        leaves += node >= InnerNodes(*cube);
    }
    if (leaves <= limit) {
        for (uint32_t node = 0; node < InnerNodes(*cube); ++node) ClearPixels(&cube->nodes.address[node]);
        return true;
    }
    const uint32_t ranks = RankErrors(cube, order.address, count);
    const Scratch<int32_t> counted(size_t{ranks} + 1);
    const Scratch<uint32_t> firstKilled(size_t{ranks} + 1);
    if (!counted || !firstKilled) return false;
    const PassTables tables = {.counted = counted.address, .firstKilled = firstKilled.address};
    FillTables(cube, order.address, count, tables);
    MergeUpTo(cube, LastThreshold(*cube, limit, order.address, count, tables));
    return true;
}

uint32_t AssignPalette(const ColorCube& cube, uint8_t* palette) {
    uint32_t used = 0;
    Assign(cube, 0, 0, palette, &used);
    return used;
}

}  // namespace kfx
