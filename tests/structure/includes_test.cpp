// SPDX-License-Identifier: MIT
// Which folder may include which, as the table in docs/architecture.md says.
#include <gtest/gtest.h>

#include <algorithm>
#include <cctype>
#include <functional>
#include <set>

#include "tests/structure/source_tree.h"

namespace kfx {
namespace {

// The exported entry points: to the plug-in what `main` is to a program.
const std::string kEntryPoints = "host/entry_points_windows";

// What each folder may include besides itself. Tests and benchmarks may include everything.
const std::map<std::string, std::set<std::string>> kMayInclude = {
    {"resources", {}},
    {"host", {}},
    {"framework", {"host", "resources"}},
    {"kernels", {"framework"}},
    {"effects", {"framework", "kernels", "resources"}},
    {"builder", {"framework", "host", "kernels", "resources"}},
    {"documents", {"framework", "resources"}},
    {"window", {"builder", "documents", "effects", "framework", "host", "kernels", "resources"}},
    {kEntryPoints, {"host", "resources", "window"}},
    {"media", {}},
    {"commands", {"builder", "documents", "effects", "framework", "host", "kernels", "media", "resources"}},
    {"driven", {"commands", "host"}},
    {"stage", {"commands", "driven", "effects", "framework", "host", "media"}},
    {"cli", {"commands", "driven", "media"}},
    {"screens", {"commands", "driven", "host", "media", "stage"}},
};

// Folders that are compiled natively too, and a single pair of files.
const std::set<std::string> kPortable = {"host",
                                         "framework",
                                         "kernels",
                                         "effects",
                                         "builder",
                                         "media",
                                         "commands",
                                         "cli",
                                         "documents/document_text",
                                         "stage/wall_engine",
                                         "stage/wall_layout",
                                         "stage/wall_render",
                                         "stage/wall_settings",
                                         "stage/wall_source",
                                         "stage/variation",
                                         "stage/variation_table",
                                         "window/configuration_text",
                                         "window/control_texts"};

// The row of the table that holds for a file.
std::string PlaceOf(const std::string& path) {
    return path.rfind(kEntryPoints, 0) == 0 ? kEntryPoints : TopFolder(path);
}

// The headers of the command line's parser take longer to compile than a whole command; other files declare
// and read options with the functions of these two.
const std::set<std::string> kIncludesParser = {"commands/parser.cpp", "commands/parser_words.cpp"};

bool IsWindowsHeader(std::string name) {
    std::transform(name.begin(), name.end(), name.begin(),
                   [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
    static const std::set<std::string> headers = {"windows.h",  "windowsx.h", "commctrl.h", "commdlg.h",
                                                  "shellapi.h", "shlobj.h",   "wingdi.h",   "winuser.h",
                                                  "winbase.h",  "windef.h",   "winnt.h",    "objbase.h"};
    return headers.count(name) != 0;
}

TEST(Includes, Every_own_include_names_an_existing_file_from_the_root) {
    const auto sources = ReadSourceTree();
    ASSERT_GT(sources.size(), 1u) << "run from the root of the sources";
    for (const auto& [path, source] : sources) {
        for (const auto& include : source.ownIncludes) {
            if (include.find('/') == std::string::npos) continue;  // a third-party header
            EXPECT_TRUE(sources.count(include)) << path << " includes \"" << include << "\"";
        }
    }
}

TEST(Includes, No_files_include_each_other_in_a_circle) {
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

TEST(Includes, Folders_include_only_what_their_place_on_the_way_allows) {
    for (const auto& [path, source] : ReadSourceTree()) {
        const std::string from = PlaceOf(path);
        const auto allowed = kMayInclude.find(from);
        if (allowed == kMayInclude.end()) continue;
        for (const auto& include : source.ownIncludes) {
            const std::string to = PlaceOf(include);
            if (include.find('/') == std::string::npos || to == from) continue;
            EXPECT_TRUE(allowed->second.count(to)) << path << " includes \"" << include << "\"";
        }
    }
}

TEST(Includes, The_table_names_every_folder_and_allows_nothing_that_nobody_uses) {
    std::map<std::string, std::set<std::string>> used;
    for (const auto& [path, source] : ReadSourceTree()) {
        const std::string from = PlaceOf(path);
        if (from == "tests" || from == "bench") continue;
        EXPECT_TRUE(kMayInclude.count(from)) << path;
        for (const auto& include : source.ownIncludes)
            if (include.find('/') != std::string::npos && PlaceOf(include) != from)
                used[from].insert(PlaceOf(include));
    }
    for (const auto& [from, allowed] : kMayInclude)
        for (const auto& to : allowed) EXPECT_TRUE(used[from].count(to)) << from << " may include " << to;
}

TEST(Includes, The_table_is_a_graph_without_a_circle) {
    std::map<std::string, int> height;  // of each place above what it includes
    for (size_t round = 0; round <= kMayInclude.size(); ++round) {
        bool raised = false;
        for (const auto& [from, allowed] : kMayInclude)
            for (const auto& to : allowed)
                if (height[from] <= height[to]) {
                    height[from] = height[to] + 1;
                    raised = true;
                }
        if (!raised) return;
    }
    ADD_FAILURE() << "folders may include each other in a circle";
}

TEST(Includes, Portable_folders_include_no_windows_header_outside_their_windows_files) {
    for (const auto& [path, source] : ReadSourceTree()) {
        const std::string name = path.substr(0, path.rfind('.'));
        if (!kPortable.count(TopFolder(path)) && !kPortable.count(name)) continue;
        if (path.find("_windows.") != std::string::npos) continue;
        for (const auto& include : source.systemIncludes) {
            EXPECT_FALSE(IsWindowsHeader(include)) << path << " includes <" << include << ">";
        }
    }
}

TEST(Includes, Only_two_files_include_the_parser_of_the_command_line) {
    std::set<std::string> including;
    for (const auto& [path, source] : ReadSourceTree()) {
        for (const auto* includes : {&source.systemIncludes, &source.ownIncludes}) {
            if (std::any_of(includes->begin(), includes->end(),
                            [](const std::string& include) { return include.rfind("CLI/", 0) == 0; }))
                including.insert(path);
        }
    }
    EXPECT_EQ(including, kIncludesParser);
}

}  // namespace
}  // namespace kfx
