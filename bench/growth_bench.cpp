// SPDX-License-Identifier: MIT
// Prints the tables of growth of docs/performance.md: growth_bench [--quick].
#include <cstdio>
#include <cstring>

#include "bench/growth.h"
#include "framework/memory_guards.h"

int main(int argc, char** argv) {
    using namespace kfx::bench;
    const bool quick = argc == 2 && std::strcmp(argv[1], "--quick") == 0;
    if (argc > 1 && !quick) {
        std::fputs("usage: growth_bench [--quick]\n", stderr);
        return 2;
    }
    const kfx::FreedMemoryKept kept;  // as in a build
    const Patience patience =
        quick ? Patience{.milliseconds = 5, .runs = 1} : Patience{.milliseconds = 60, .runs = 2};
    const auto print = [](const char* title, const GrowthTable& table, size_t firstCounted) {
        std::printf("%s\n\n%s\n", title, MarkdownOf(table, firstCounted).c_str());
        std::fflush(stdout);
    };
    print("Square pictures:", GrowthOfSides({16, 32, 64, 128, 256, 512, 1024, 2048, 4096, 8192}, patience),
          2);
    print("Frames of 64 x 48:", GrowthOfFrames({1, 2, 5, 10, 20, 50, 100, 200, 500, 1000, 2000}, patience),
          0);
    print("One picture of 4096 x 4096 with so many colours; 250 at last in two ways that are hard to hash:",
          GrowthOfColors({2, 16, 64, 250, 256, 257, 300, 1000, 10000, 100000, 1000000, 16777216}, 4096,
                         patience),
          0);
    return 0;
}
