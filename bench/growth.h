// SPDX-License-Identifier: MIT
// How time grows with the sides of a picture, the number of frames and the number of colours: nanoseconds a
// pixel, which stay the same where growth is linear.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace kfx::bench {

// How long measuring may take: each cell is run until its runs have taken so long together, and at least
// `runs` times.
struct Patience {
    double milliseconds;
    int runs;
};

struct GrowthRow {
    std::string name;            // "8192 x 8192"
    std::vector<double> values;  // nanoseconds a pixel, for each column; 0: it could not be run
};

struct GrowthTable {
    std::string what;  // of the rows: "frame"
    std::vector<std::string> columns;
    std::vector<GrowthRow> rows;
};

// Square pictures: an effect that moves bytes, one that samples, one that adds up products at its heaviest,
// and builds of the one frame.
GrowthTable GrowthOfSides(const std::vector<int32_t>& sides, const Patience& patience);

// Animations of small frames: builds, and GIF files.
GrowthTable GrowthOfFrames(const std::vector<int32_t>& counts, const Patience& patience);

// Square pictures of `side` pixels with so many colours, and two with 250 colours that tables by hashing do
// badly with: the steps of a palette.
GrowthTable GrowthOfColors(const std::vector<int32_t>& counts, int32_t side, const Patience& patience);

// In Markdown. The last line is each column's greatest step: a value by the one above it, from row
// `firstCounted` on. Near 1 or below, time grows with the pixels; what does not depend on them makes the
// first values large.
std::string MarkdownOf(const GrowthTable& table, size_t firstCounted);

}  // namespace kfx::bench
