// SPDX-License-Identifier: MIT
#include "builder/color_cells.h"

#include <gtest/gtest.h>

#include <random>
#include <vector>

namespace kfx::test {
namespace {

// More pixels than a cell has room for before it is emptied.
constexpr size_t kMorePixels = 3 * (size_t{1} << 18) + 12345;

std::vector<uint8_t> RandomPixels(size_t count, uint32_t seed) {
    std::mt19937 random(seed);
    std::vector<uint8_t> pixels(3 * count);
    for (uint8_t& channel : pixels) channel = static_cast<uint8_t>(random());
    return pixels;
}

// What the deepest nodes must hold: each pixel added by itself.
std::vector<ColorNode> SumsOf(const std::vector<uint8_t>& pixels, const ColorCube& cube) {
    std::vector<ColorNode> nodes(CubeNodes(cube.depth));
    for (size_t i = 0; i < pixels.size(); i += 3) {
        const int64_t blue = pixels[i], green = pixels[i + 1], red = pixels[i + 2];
        ColorNode& leaf = nodes[LeafOf(cube, pixels[i + 2], pixels[i + 1], pixels[i])];
        ++leaf.count;
        leaf.red += red;
        leaf.green += green;
        leaf.blue += blue;
        leaf.squares += red * red + green * green + blue * blue;
    }
    return nodes;
}

void ExpectSums(const std::vector<ColorNode>& expected, const ColorCube& cube) {
    for (uint32_t node = 0; node < expected.size(); ++node) {
        ASSERT_EQ(cube.nodes[node].count, expected[node].count) << "node " << node;
        ASSERT_EQ(cube.nodes[node].red, expected[node].red) << "node " << node;
        ASSERT_EQ(cube.nodes[node].green, expected[node].green) << "node " << node;
        ASSERT_EQ(cube.nodes[node].blue, expected[node].blue) << "node " << node;
        ASSERT_EQ(cube.nodes[node].squares, expected[node].squares) << "node " << node;
    }
}

TEST(ColorCells, The_deepest_nodes_get_the_sums_of_single_pixels) {
    for (uint32_t depth = 2; depth <= kMostCubeDepth; ++depth) {
        ColorCube cube(depth);
        ColorCells cells;
        ASSERT_TRUE(cube.nodes && cells.cells);
        const auto pixels = RandomPixels(5001, depth);
        AddPixels(&cells, pixels.data(), 5001, &cube);
        EmptyCells(&cells, &cube);
        ExpectSums(SumsOf(pixels, cube), cube);
        if (HasFatalFailure()) return;
    }
}

// Equal pixels of the brightest colour are the most that a cell's sums can grow by.
TEST(ColorCells, No_sum_overflows_however_many_equal_pixels_come) {
    ColorCube cube(kMostCubeDepth);
    ColorCells cells;
    ASSERT_TRUE(cube.nodes && cells.cells);
    const std::vector<uint8_t> pixels(3 * kMorePixels, 255);
    AddPixels(&cells, pixels.data(), static_cast<int32_t>(kMorePixels), &cube);
    AddPixels(&cells, pixels.data(), static_cast<int32_t>(kMorePixels), &cube);
    EmptyCells(&cells, &cube);
    std::vector<uint8_t> all = pixels;
    all.insert(all.end(), pixels.begin(), pixels.end());
    ExpectSums(SumsOf(all, cube), cube);
}

TEST(ColorCells, Cells_that_were_emptied_start_anew) {
    ColorCube cube(kMostCubeDepth);
    ColorCells cells;
    ASSERT_TRUE(cube.nodes && cells.cells);
    const auto pixels = RandomPixels(300, 1);
    AddPixels(&cells, pixels.data(), 300, &cube);
    EmptyCells(&cells, &cube);
    EmptyCells(&cells, &cube);
    ExpectSums(SumsOf(pixels, cube), cube);
    EXPECT_EQ(cells.pending, 0u);
}

}  // namespace
}  // namespace kfx::test
