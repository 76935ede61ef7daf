// SPDX-License-Identifier: MIT
// docs/farms.md shows the scripts of farm/ as they are.
#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <map>
#include <sstream>
#include <string>

namespace kfx {
namespace {

namespace fs = std::filesystem;

std::string ContentOf(const fs::path& path) {
    std::ifstream file(path, std::ios::binary);
    EXPECT_TRUE(file) << path;
    std::ostringstream content;
    content << file.rdbuf();
    return content.str();
}

// What stands between "```LANGUAGE farm/NAME" and "```", by its name.
std::map<std::string, std::string> ShownScripts() {
    std::map<std::string, std::string> shown;
    std::istringstream document(ContentOf("docs/farms.md"));
    std::string name;
    for (std::string line; std::getline(document, line);) {
        if (line.rfind("```", 0) == 0) {
            const size_t place = line.find(" farm/");
            name = place == std::string::npos ? "" : line.substr(place + 1);
            EXPECT_EQ(shown.count(name), 0u) << name << " is shown twice";
        } else if (!name.empty()) {
            shown[name] += line + "\n";
        }
    }
    return shown;
}

TEST(Farms, The_document_shows_every_script_as_it_is) {
    const auto shown = ShownScripts();
    size_t scripts = 0;
    for (const auto& entry : fs::directory_iterator("farm")) {
        const std::string name = entry.path().generic_string();
        ++scripts;
        ASSERT_EQ(shown.count(name), 1u) << name << " is not shown";
        EXPECT_EQ(shown.at(name), ContentOf(entry.path())) << name;
    }
    EXPECT_EQ(shown.size(), scripts);
    EXPECT_GE(scripts, 7u);
}

}  // namespace
}  // namespace kfx
