// SPDX-License-Identifier: MIT
// A frame's way through the folders runs one way: who may include whom.
#include <gtest/gtest.h>

#include <algorithm>
#include <cctype>
#include <functional>
#include <set>

#include "tests/structure/source_tree.h"

namespace kfx {
namespace {

// What each folder may include besides itself. Tests and benchmarks may include everything.
const std::map<std::string, std::set<std::string>> kMayInclude = {
    {"resources", {}},
    {"host", {"framework"}},
    {"framework", {"host", "resources"}},
    {"effects", {"framework", "resources"}},
    {"builder", {"effects", "framework", "host", "resources"}},
    {"documents", {"framework", "resources"}},
    {"window", {"builder", "documents", "effects", "framework", "host", "resources"}},
    {"media", {}},
    {"stage", {"host", "media"}},
    {"cli", {"builder", "documents", "effects", "framework", "host", "media", "resources"}},
};

// The exported entry points stand at the way's very start: the host calls them, they open the window.
const std::map<std::string, std::set<std::string>> kMayIncludeBesides = {
    {"host/entry_points_windows.cpp", {"resources", "window"}},
};

// Folders that are compiled natively too.
const std::set<std::string> kPortable = {"host",      "framework", "effects", "builder",
                                         "documents", "media",     "cli"};

bool IsWindowsHeader(std::string name) {
    std::transform(name.begin(), name.end(), name.begin(),
                   [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
    static const std::set<std::string> headers = {"windows.h",  "windowsx.h", "commctrl.h", "commdlg.h",
                                                  "shellapi.h", "shlobj.h",   "wingdi.h",   "winuser.h",
                                                  "winbase.h",  "windef.h",   "winnt.h",    "objbase.h"};
    return headers.count(name) != 0;
}

TEST(Includes, EveryOwnIncludeNamesAnExistingFileFromTheRoot) {
    const auto sources = ReadSourceTree();
    ASSERT_GT(sources.size(), 1u) << "run from the root of the sources";
    for (const auto& [path, source] : sources) {
        for (const auto& include : source.ownIncludes) {
            if (include.find('/') == std::string::npos) continue;  // a third-party header
            EXPECT_TRUE(sources.count(include)) << path << " includes \"" << include << "\"";
        }
    }
}

TEST(Includes, NoFilesIncludeEachOtherInACircle) {
    const auto sources = ReadSourceTree();
    std::map<std::string, int> state;  // 0 not seen, 1 on the way, 2 done
    std::vector<std::string> way;
    std::function<void(const std::string&)> visit = [&](const std::string& path) {
        if (state[path] == 2) return;
        if (state[path] == 1) {
            std::string circle;
            for (auto step = std::find(way.begin(), way.end(), path); step != way.end(); ++step) {
                circle += *step + " -> ";
            }
            ADD_FAILURE() << circle << path;
            return;
        }
        state[path] = 1;
        way.push_back(path);
        for (const auto& include : sources.at(path).ownIncludes) {
            if (sources.count(include)) visit(include);
        }
        way.pop_back();
        state[path] = 2;
    };
    for (const auto& [path, source] : sources) visit(path);
}

TEST(Includes, FoldersIncludeOnlyWhatTheirPlaceOnTheWayAllows) {
    for (const auto& [path, source] : ReadSourceTree()) {
        const std::string from = TopFolder(path);
        const auto allowed = kMayInclude.find(from);
        if (allowed == kMayInclude.end()) continue;
        const auto besides = kMayIncludeBesides.find(path);
        for (const auto& include : source.ownIncludes) {
            const std::string to = TopFolder(include);
            if (include.find('/') == std::string::npos || to == from) continue;
            if (besides != kMayIncludeBesides.end() && besides->second.count(to)) continue;
            EXPECT_TRUE(allowed->second.count(to)) << path << " includes \"" << include << "\"";
        }
    }
}

TEST(Includes, PortableFoldersIncludeNoWindowsHeaderOutsideTheirWindowsFiles) {
    for (const auto& [path, source] : ReadSourceTree()) {
        if (!kPortable.count(TopFolder(path))) continue;
        if (path.find("_windows.") != std::string::npos) continue;
        for (const auto& include : source.systemIncludes) {
            EXPECT_FALSE(IsWindowsHeader(include)) << path << " includes <" << include << ">";
        }
    }
}

}  // namespace
}  // namespace kfx
