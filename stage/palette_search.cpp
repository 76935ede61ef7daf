// SPDX-License-Identifier: MIT
#include "stage/palette_search.h"

#include <cstdint>
#include <cstdlib>

#include "driven/settings_folder.h"
#include "framework/number_text.h"
#include "media/file_io.h"

namespace kfx::stage {
namespace {

constexpr char kFileName[] = "kfxplug1.ini";

enum class SearchKey { Brightness, Contrast, Fast };

// In the order of the plug-in's list of names; none of the others that begin alike stands before them.
struct SearchRow {
    const char* name;
    SearchKey key;
};

constexpr SearchRow kRows[] = {
    {"DitherBrightness", SearchKey::Brightness},
    {"DitherContrast", SearchKey::Contrast},
    {"FastRemap", SearchKey::Fast},
};

const SearchRow* FindRow(const std::string& key) {
    for (const SearchRow& row : kRows) {
        if (!key.empty() && std::string(row.name).compare(0, key.size(), key) == 0) return &row;
    }
    return nullptr;
}

}  // namespace

void TakeSearchLine(const std::string& line, PaletteSearch* search) {
    if (line.empty() || line[0] == ';') return;
    size_t end = 0;
    while (end < line.size() && static_cast<unsigned char>(line[end]) > ' ' && line[end] != '=') ++end;
    const SearchRow* const row = FindRow(line.substr(0, end));
    if (!row) return;
    size_t value = line.find_first_not_of(' ', end);
    if (value != std::string::npos && line[value] == '=') {
        value = line.find_first_not_of('=', value);
        if (value != std::string::npos) value = line.find_first_not_of(' ', value);
    }
    const auto number =
        static_cast<int32_t>(ParseDecimal(value == std::string::npos ? "" : line.c_str() + value));
    if (row->key == SearchKey::Fast) search->fast = number != 0;
    if (row->key == SearchKey::Brightness) search->ditherBrightness = number;
    if (row->key == SearchKey::Contrast) search->ditherContrast = number;
}

void ReadPaletteSearch(PaletteSearch* search) {
    const std::string folder = driven::SettingsFolder();
    std::vector<uint8_t> content;
    std::string error;
    if (folder.empty() || !ReadWholeFile(folder + kFileName, &content, &error)) return;
    std::string line;
    for (const uint8_t byte : content) {
        if (byte >= ' ') line += static_cast<char>(byte);
        if (byte != '\n') continue;
        TakeSearchLine(line, search);
        line.clear();
    }
    TakeSearchLine(line, search);
}

}  // namespace kfx::stage
