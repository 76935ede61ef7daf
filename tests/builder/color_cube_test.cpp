// SPDX-License-Identifier: MIT
#include "builder/color_cube.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <random>
#include <vector>

#include "builder/color_cells.h"

namespace kfx::test {
namespace {

struct Color {
    uint32_t red;
    uint32_t green;
    uint32_t blue;
};

std::vector<Color> RandomColors(size_t count, uint32_t seed) {
    std::mt19937 random(seed);
    std::vector<Color> colors(count);
    const auto level = [&random] { return static_cast<uint32_t>(random() & 255); };
    for (Color& color : colors) color = {level(), level(), level()};
    return colors;
}

void AddColors(const std::vector<Color>& colors, ColorCube* cube) {
    std::vector<uint8_t> pixels;
    for (const Color& color : colors)
        for (const uint32_t channel : {color.blue, color.green, color.red})
            pixels.push_back(static_cast<uint8_t>(channel));
    ColorCells cells;
    ASSERT_TRUE(cells.cells);
    AddPixels(&cells, pixels.data(), static_cast<int32_t>(colors.size()), cube);
    EmptyCells(&cells, cube);
}

// The node of a level that holds a colour, found by halving each channel level by level.
uint32_t NodeByHalving(uint32_t level, const Color& color) {
    uint32_t node = 0;
    for (uint32_t i = 0; i < level; ++i) {
        const uint32_t bit = 7 - i;
        node = 8 * node + 1 +
               ((color.red >> bit & 1) << 2 | (color.green >> bit & 1) << 1 | (color.blue >> bit & 1));
    }
    return node;
}

uint32_t CountColors(const ColorCube& cube) {
    uint8_t palette[3 * 256];
    return AssignPalette(cube, palette);
}

TEST(ColorCube, A_colour_lies_in_the_node_that_halving_its_channels_leads_to) {
    for (uint32_t depth = 2; depth <= kMostCubeDepth; ++depth) {
        const ColorCube cube(depth);
        ASSERT_TRUE(cube.nodes);
        for (const Color& color : RandomColors(500, depth))
            ASSERT_EQ(LeafOf(cube, color.red, color.green, color.blue), NodeByHalving(depth, color));
    }
}

TEST(ColorCube, Every_node_sums_up_its_pixels_and_their_distances_to_its_midpoint) {
    constexpr uint32_t kDepth = 3;
    ColorCube cube(kDepth);
    ASSERT_TRUE(cube.nodes);
    const std::vector<Color> colors = RandomColors(2000, 5);
    AddColors(colors, &cube);
    SumUpCube(&cube);
    for (uint32_t level = 0; level <= kDepth; ++level) {
        std::vector<ColorNode> expected(CubeNodes(kDepth));
        for (const Color& color : colors) {
            ColorNode& node = expected[NodeByHalving(level, color)];
            const uint32_t side = 256u >> level;  // of the node's part of the space
            ++node.count;
            node.red += color.red;
            node.green += color.green;
            node.blue += color.blue;
            for (const uint32_t c : {color.red, color.green, color.blue}) {
                const int64_t twice = int64_t{2} * c - (int64_t{2} * (c & ~(side - 1)) + side - 1);
                node.error += twice * twice;
            }
        }
        for (uint32_t node = 0; node < expected.size(); ++node) {
            if (expected[node].count == 0) continue;
            ASSERT_EQ(cube.nodes[node].count, expected[node].count) << "node " << node;
            ASSERT_EQ(cube.nodes[node].red, expected[node].red) << "node " << node;
            ASSERT_EQ(cube.nodes[node].green, expected[node].green) << "node " << node;
            ASSERT_EQ(cube.nodes[node].blue, expected[node].blue) << "node " << node;
            ASSERT_EQ(cube.nodes[node].error, expected[node].error) << "node " << node;
        }
    }
}

TEST(ColorCube, Reducing_leaves_no_more_colours_than_wanted_and_loses_no_pixel) {
    const std::vector<Color> colors = RandomColors(3000, 8);
    for (const uint32_t limit : {1u, 2u, 7u, 64u, 255u, 256u}) {
        ColorCube cube(CubeDepthFor(limit));
        ASSERT_TRUE(cube.nodes);
        AddColors(colors, &cube);
        SumUpCube(&cube);
        ASSERT_TRUE(ReduceCube(&cube, limit));
        EXPECT_LE(CountColors(cube), limit);
        EXPECT_GE(CountColors(cube), 1u);
        int64_t pixels = 0;
        for (uint32_t node = 0; node < CubeNodes(cube.depth); ++node) pixels += cube.nodes[node].count;
        EXPECT_EQ(pixels, 3000) << limit;
    }
}

TEST(ColorCube, Few_colours_come_out_as_they_are) {
    const std::vector<Color> colors = {{0, 0, 0}, {255, 255, 255}, {200, 16, 80}};
    ColorCube cube(CubeDepthFor(256));
    ASSERT_TRUE(cube.nodes);
    AddColors(colors, &cube);
    SumUpCube(&cube);
    ASSERT_TRUE(ReduceCube(&cube, 256));
    uint8_t palette[3 * 256];
    ASSERT_EQ(AssignPalette(cube, palette), 3u);
    for (const Color& color : colors) {
        bool found = false;
        for (int i = 0; i < 3; ++i)
            found |= palette[3 * i] == color.red && palette[3 * i + 1] == color.green &&
                     palette[3 * i + 2] == color.blue;
        EXPECT_TRUE(found) << color.red;
    }
}

TEST(ColorCube, The_depth_grows_with_the_colours_wanted) {
    EXPECT_EQ(CubeDepthFor(1), 2u);
    EXPECT_EQ(CubeDepthFor(256), kMostCubeDepth);
    for (uint32_t colors = 2; colors <= 256; ++colors)
        EXPECT_GE(CubeDepthFor(colors), CubeDepthFor(colors - 1));
}

}  // namespace
}  // namespace kfx::test
