// SPDX-License-Identifier: MIT
#include "tests/structure/source_tree.h"

#include <filesystem>
#include <fstream>

namespace kfx {

namespace {

constexpr char kResults[] = "out";  // what ./run makes

// Sorts the line's include, if it is one, into the source's lists.
void NoteInclude(const std::string& line, SourceFile& source) {
    const size_t hash = line.find_first_not_of(' ');
    if (hash == std::string::npos || line[hash] != '#') return;
    const size_t word = line.find_first_not_of(' ', hash + 1);
    if (word == std::string::npos || line.compare(word, 7, "include") != 0) return;
    const size_t open = line.find_first_of("<\"", word);
    if (open == std::string::npos) return;
    const size_t close = line.find_first_of(">\"", open + 1);
    if (close == std::string::npos) return;
    auto& includes = line[open] == '<' ? source.systemIncludes : source.ownIncludes;
    includes.push_back(line.substr(open + 1, close - open - 1));
}

SourceFile ReadSource(const std::filesystem::path& path) {
    SourceFile source;
    source.path = path.generic_string();
    std::ifstream file(path);
    for (std::string line; std::getline(file, line);) {
        NoteInclude(line, source);
        source.lines.push_back(line);
    }
    return source;
}

}  // namespace

std::map<std::string, SourceFile> ReadSourceTree() {
    std::map<std::string, SourceFile> sources;
    for (const auto& folder : std::filesystem::directory_iterator(".")) {
        const std::string name = folder.path().filename().string();
        if (!folder.is_directory() || name[0] == '.' || name == kResults) continue;
        for (const auto& entry : std::filesystem::recursive_directory_iterator(name)) {
            const auto extension = entry.path().extension();
            if (extension != ".h" && extension != ".cpp") continue;
            SourceFile source = ReadSource(entry.path());
            sources.emplace(source.path, std::move(source));
        }
    }
    return sources;
}

std::string TopFolder(const std::string& path) { return path.substr(0, path.find('/')); }

}  // namespace kfx
