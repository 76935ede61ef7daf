// SPDX-License-Identifier: MIT
#include "screens/sheet.h"

#include <algorithm>
#include <filesystem>
#include <system_error>
#include <vector>

#include "media/animation.h"
#include "media/contact_sheet.h"
#include "media/utf8_path.h"

namespace kfx::screens {
namespace {

namespace fs = std::filesystem;

constexpr int kThumbnailWidth = 240;
constexpr int kThumbnailHeight = 200;

std::vector<fs::path> EntriesOf(const fs::path& folder) {
    std::vector<fs::path> entries;
    std::error_code failure;
    for (const fs::directory_entry& entry : fs::directory_iterator(folder, failure))
        entries.push_back(entry.path());
    std::sort(entries.begin(), entries.end());
    return entries;
}

}  // namespace

bool WriteSheet(const std::string& folder, std::string* error) {
    std::vector<Animation> pictures;  // what the rows refer to
    std::vector<SheetRow> rows;
    std::vector<std::vector<size_t>> numbers;
    for (const fs::path& part : EntriesOf(PathOf(folder))) {
        if (!fs::is_directory(part)) continue;
        SheetRow row = {.title = Utf8Of(part.filename()), .pictures = {}};
        for (const fs::path& file : EntriesOf(part)) {
            if (file.extension() != ".png") continue;
            if (!ReadAnimation(Utf8Of(file), &pictures.emplace_back(), error)) return false;
            row.pictures.push_back({.label = Utf8Of(file.stem())});
            numbers.resize(rows.size() + 1);
            numbers.back().push_back(pictures.size() - 1);
        }
        if (!row.pictures.empty()) rows.push_back(std::move(row));
    }
    for (size_t i = 0; i < rows.size(); ++i) {
        for (size_t k = 0; k < rows[i].pictures.size(); ++k) {
            const Animation& picture = pictures[numbers[i][k]];
            rows[i].pictures[k].width = picture.width;
            rows[i].pictures[k].height = picture.height;
            rows[i].pictures[k].pixels = picture.frames[0].pixels.data();
        }
    }
    if (rows.empty()) {
        *error = folder + ": there are no pictures in its folders.";
        return false;
    }
    return WritePng(folder + "/overview.png", DrawContactSheet("", rows, kThumbnailWidth, kThumbnailHeight),
                    error);
}

}  // namespace kfx::screens
