// SPDX-License-Identifier: MIT
// All pictures of a folder on one sheet.
#pragma once

#include <string>

namespace kfx::screens {

// Writes overview.png into the folder (UTF-8): a row of thumbnails for the PNG files of each subfolder, in
// the order of their names. False: `*error` is one sentence.
bool WriteSheet(const std::string& folder, std::string* error);

}  // namespace kfx::screens
