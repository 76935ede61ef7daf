// SPDX-License-Identifier: MIT
// What the beginning of a file says must be what its whole content says.
#include <sys/mman.h>
#include <unistd.h>

#include <algorithm>
#include <cctype>
#include <cstdlib>
#include <string>

#include "commands/picture_header.h"
#include "media/animation.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size);

int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    const int file = memfd_create("input", 0);
    if (file < 0 || write(file, data, size) != static_cast<ssize_t>(size)) std::abort();
    kfx::commands::PictureHeader header;
    std::string error;
    const bool read =
        kfx::commands::ReadPictureHeader("/proc/self/fd/" + std::to_string(file), &header, &error);
    close(file);
    if (read == header.format.empty() || read != error.empty()) std::abort();

    std::string whole = kfx::FormatNameOf(data, size);
    std::transform(whole.begin(), whole.end(), whole.begin(),
                   [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
    if (whole != header.format) std::abort();
    return 0;
}
