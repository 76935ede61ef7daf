// SPDX-License-Identifier: MIT
// The octree of the quantizer: red-green-blue space halved along each channel from level to level. Every node
// knows its pixels, their colour sums and how far they lie from its midpoint; the nodes of least error are
// merged into their parents until few enough colours are left. After Gervautz and Purgathofer, "A Simple
// Method for Color Quantization: Octree Quantization" (1988), which merges the nodes with the fewest pixels;
// here those with the least error are merged.
#pragma once

#include <cstdint>

#include "framework/memory_guards.h"

namespace kfx {

struct ColorNode {
    int64_t count;  // pixels; once reduced, only those that ended here
    int64_t red;    // sums over those pixels
    int64_t green;
    int64_t blue;
    int64_t squares;  // sum of all three channels' squares
    // Four times the sum of the squared distances to the midpoint: its channels are halves, so this is a
    // whole number. 0: the node holds no pixels.
    int64_t error;
    uint32_t rank;        // place of the error among all different errors, from 1
    uint32_t leastAbove;  // the least rank among the node's ancestors, root excepted
    uint32_t nextKilled;  // links the nodes that share leastAbove
};

constexpr uint32_t kMostCubeDepth = 5;  // a limit of 256 colours

// The complete tree: children of node i stand at 8 * i + 1 to 8 * i + 8, the root is 0.
constexpr uint32_t CubeNodes(uint32_t depth) {
    uint32_t nodes = 1;
    for (uint32_t i = 0; i < depth; ++i) nodes = 8 * nodes + 1;
    return nodes;
}
// A tree with more nodes would have to be cut by a level; ours has far fewer.
constexpr uint32_t kCubeNodeCap = 266817;
static_assert(CubeNodes(kMostCubeDepth) <= kCubeNodeCap, "the cube needs no pruning");

struct ColorCube {
    explicit ColorCube(uint32_t levels) : depth(levels), nodes(CubeNodes(levels)) {}

    const uint32_t depth;
    const Scratch<ColorNode> nodes;  // test its address before use
};

// The depth for a palette of that many colours: 2 to 5.
uint32_t CubeDepthFor(uint32_t colors);

// The deepest node that holds a colour.
uint32_t LeafOf(const ColorCube& cube, uint32_t red, uint32_t green, uint32_t blue);

// Fills the inner nodes and every error from what the deepest nodes hold.
void SumUpCube(ColorCube* cube);

// Merges nodes until at most `limit` (at least 1) colours are left. False: memory ran out.
bool ReduceCube(ColorCube* cube, uint32_t limit);

// Writes the mean colour of every node that holds pixels, children before parents, as red-green-blue triples.
// Returns how many. The palette takes 256; the cube must hold no more.
uint32_t AssignPalette(const ColorCube& cube, uint8_t* palette);

}  // namespace kfx
