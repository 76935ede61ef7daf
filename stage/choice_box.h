// SPDX-License-Identifier: MIT
// The box in which a user chooses among several files: they play in step, side by side.
#pragma once

#include <functional>
#include <memory>
#include <string>
#include <vector>

#include <windows.h>

#include "stage/film.h"
#include "stage/picture_drawing.h"

namespace kfx::stage {

struct OfferedFile {
    std::shared_ptr<const Film> film;
    std::string name;
    std::vector<std::string> lines;  // below the name
    std::string whole;               // all of it in one line, for screen readers
};

struct Offer {
    std::string sentence;  // above the files
    std::vector<OfferedFile> files;
    size_t first = 0;  // has the focus at the beginning
    PictureGround ground = {};
    // Called with the chosen file and the box. True: it is done, and the box closes.
    std::function<bool(HWND box, size_t file)> take;
};

constexpr int kFirstOfferedFile = 600;  // the control of a file; the others follow

// Shows the box until a file has been taken, or the user wants none.
void ShowOffer(HWND owner, const Offer& offer);

}  // namespace kfx::stage
