// SPDX-License-Identifier: MIT
// Messages to users are the project's own sentences.
#include <gtest/gtest.h>

#include <set>

#include "tests/structure/source_tree.h"
#include "tests/support/plain_message.h"

namespace kfx {
namespace {

// The folders whose texts reach the user of a command.
const std::set<std::string> kFolders = {"cli", "commands", "driven", "media"};

// What gives the words of a library or of the system.
constexpr const char* kForeignTexts[] = {
    "lodepng_error_text", "GifErrorString", "format_message", "jpeg_std_message",
    "strerror",           ".message()",     "perror"};

// The parser's texts are looked at for the option that they are about, and replaced.
const std::set<std::string> kReadsParserTexts = {"commands/parser.cpp"};

std::vector<std::string> TextsIn(const std::string& line) {
    std::vector<std::string> texts;
    for (size_t start = line.find('"'); start != std::string::npos; start = line.find('"', start)) {
        size_t end = start + 1;
        while (end < line.size() && line[end] != '"') end += line[end] == '\\' ? 2 : 1;
        if (end >= line.size()) break;
        texts.push_back(line.substr(start + 1, end - start - 1));
        start = end + 1;
    }
    return texts;
}

TEST(Messages, No_text_comes_from_a_library_or_the_system) {
    size_t files = 0;
    for (const auto& [path, source] : ReadSourceTree()) {
        if (!kFolders.count(TopFolder(path))) continue;
        ++files;
        for (size_t i = 0; i < source.lines.size(); ++i) {
            const std::string place = path + ":" + std::to_string(i + 1);
            for (const char* call : kForeignTexts) {
                EXPECT_EQ(source.lines[i].find(call), std::string::npos) << place << ": " << call;
            }
            const bool takesText = source.lines[i].find(".what()") != std::string::npos;
            EXPECT_FALSE(takesText && !kReadsParserTexts.count(path)) << place;
        }
    }
    EXPECT_GT(files, 60u);
}

TEST(Messages, No_text_has_the_words_of_a_library) {
    size_t texts = 0;
    for (const auto& [path, source] : ReadSourceTree()) {
        if (!kFolders.count(TopFolder(path))) continue;
        for (size_t i = 0; i < source.lines.size(); ++i) {
            if (source.lines[i].rfind("#include", 0) == 0) continue;
            for (const std::string& text : TextsIn(source.lines[i])) {
                // A sentence has spaces; names of keys, chunks and functions have none.
                if (text.find(' ') == std::string::npos) continue;
                ++texts;
                EXPECT_EQ(test::LibraryWordIn(text), "") << path << ":" << i + 1 << ": " << text;
            }
        }
    }
    EXPECT_GT(texts, 150u);
}

}  // namespace
}  // namespace kfx
