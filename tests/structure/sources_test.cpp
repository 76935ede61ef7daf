// SPDX-License-Identifier: MIT
// What every source file has in common.
#include <gtest/gtest.h>

#include <algorithm>
#include <iterator>
#include <regex>

#include "tests/structure/source_tree.h"

namespace kfx {
namespace {

// Past this a file holds more than one thing.
constexpr size_t kLongestFile = 400;

bool EndsWith(const std::string& text, const std::string& end) {
    return text.size() >= end.size() && text.compare(text.size() - end.size(), end.size(), end) == 0;
}

TEST(Sources, Begin_with_the_licence_line) {
    for (const auto& [path, source] : ReadSourceTree()) {
        ASSERT_FALSE(source.lines.empty()) << path;
        EXPECT_EQ(source.lines.front(), "// SPDX-License-Identifier: MIT") << path;
    }
}

TEST(Sources, Stay_short_enough_to_read) {
    for (const auto& [path, source] : ReadSourceTree()) {
        EXPECT_LE(source.lines.size(), kLongestFile) << path;
    }
}

TEST(Sources, Headers_are_guarded_by_pragma_once) {
    for (const auto& [path, source] : ReadSourceTree()) {
        if (!EndsWith(path, ".h")) continue;
        size_t guards = 0;
        for (const auto& line : source.lines) guards += line == "#pragma once";
        EXPECT_EQ(guards, 1u) << path;
    }
}

TEST(Sources, Hold_no_tabs_and_no_trailing_spaces) {
    for (const auto& [path, source] : ReadSourceTree()) {
        for (size_t i = 0; i < source.lines.size(); ++i) {
            const std::string& line = source.lines[i];
            EXPECT_EQ(line.find('\t'), std::string::npos) << path << ":" << i + 1;
            EXPECT_FALSE(EndsWith(line, " ")) << path << ":" << i + 1;
            EXPECT_FALSE(EndsWith(line, "\r")) << path << ":" << i + 1;
        }
    }
}

// Whoever looks for hand-written vector instructions finds them in one folder. Elsewhere a loop is compiled
// twice with Fastest().
TEST(Sources, Keep_intrinsics_in_kernels) {
    const std::regex vector("\\b(_mm\\d*_(?!getcsr|setcsr)|__m(64|128|256|512))");
    for (const auto& [path, source] : ReadSourceTree()) {
        if (TopFolder(path) == "kernels" || path == "tests/structure/sources_test.cpp") continue;
        for (size_t i = 0; i < source.lines.size(); ++i) {
            const std::string& line = source.lines[i];
            if (line.find("_m") == std::string::npos) continue;
            EXPECT_FALSE(std::regex_search(line, vector)) << path << ":" << i + 1;
        }
    }
}

// A record that no test writes out a second time would be its own proof.
TEST(Sources, Every_effects_controls_stand_in_a_test_of_its_own) {
    const auto sources = ReadSourceTree();
    std::string tests;
    size_t effects = 0;
    for (const auto& [path, source] : sources)
        if (path.find("tests/effects/") == 0)
            for (const auto& line : source.lines)
                std::copy_if(line.begin(), line.end(), std::back_inserter(tests),
                             [](char c) { return c != ' '; });
    const std::regex record("^const Effect (k\\w+) =.*");
    for (const auto& [path, source] : sources) {
        if (TopFolder(path) != "effects") continue;
        for (const auto& line : source.lines) {
            std::smatch match;
            if (!std::regex_match(line, match, record)) continue;
            ++effects;
            const std::string call = "ExpectControls(" + match[1].str() + ",";
            EXPECT_NE(tests.find(call), std::string::npos) << path << ": no test has " << call;
        }
    }
    EXPECT_GE(effects, 20u);
}

// A library's last bit differs from compiler to compiler, and from thread to thread where it computes with
// x87 code; framework/math/elementary.h has functions whose does not. Square roots and roundings are exact
// anywhere.
TEST(Sources, Take_elementary_functions_from_the_framework) {
    const std::regex call(
        R"((^|[^\w.>])(std::)?((a?(sin|cos|tan)h?|atan2|exp2?|expm1|pow|hypot|cbrt|log(2|10|1p)?)[fl]?)\()");
    size_t read = 0;
    for (const auto& [path, source] : ReadSourceTree()) {
        const std::string folder = TopFolder(path);
        static const std::set<std::string> exact = {"framework", "kernels", "effects", "builder"};
        if (!exact.count(folder) && path.find("tests/reference/") != 0) continue;
        ++read;
        for (size_t i = 0; i < source.lines.size(); ++i) {
            const std::string code = source.lines[i].substr(0, source.lines[i].find("//"));
            EXPECT_FALSE(std::regex_search(code, call)) << path << ":" << i + 1 << ": " << source.lines[i];
        }
    }
    EXPECT_GT(read, 100u);
}

}  // namespace
}  // namespace kfx
