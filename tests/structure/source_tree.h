// SPDX-License-Identifier: MIT
// The project's own sources as text, for the tests that hold the layout to its rules.
#pragma once

#include <map>
#include <string>
#include <vector>

namespace kfx {

struct SourceFile {
    std::string path;  // from the root, with forward slashes
    std::vector<std::string> lines;
    std::vector<std::string> ownIncludes;     // #include "...", as written
    std::vector<std::string> systemIncludes;  // #include <...>, as written
};

// Every .h and .cpp file of the project's folders below the working directory, by path.
std::map<std::string, SourceFile> ReadSourceTree();

// The first folder of a path: "framework" for framework/cpu.h, "tests" for tests/host/x.cpp.
std::string TopFolder(const std::string& path);

}  // namespace kfx
