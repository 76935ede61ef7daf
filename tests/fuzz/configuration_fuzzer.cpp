// SPDX-License-Identifier: MIT
// The configuration file's reader: holding Shift changes nothing, and whatever was understood can be written.
#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <cstdlib>

#include "framework/settings.h"
#include "tests/fuzz/input_file.h"
#include "window/configuration_text.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size);

namespace {

const kfx::Settings kCompiledIn = kfx::settings;

// Bytes between the variables are copied with them.
bool AreCompiledIn(const kfx::Settings& settings) {
    const auto* const bytes = reinterpret_cast<const uint8_t*>(&settings);
    return std::equal(bytes, bytes + sizeof settings, reinterpret_cast<const uint8_t*>(&kCompiledIn));
}

void Read(std::FILE* file, bool shiftHeld) {
    std::rewind(file);
    kfx::settings = kCompiledIn;
    kfx::ReadConfigurationText(file, shiftHeld);
}

}  // namespace

int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    std::FILE* file = kfx::test::OpenInput(data, size);
    Read(file, true);
    if (!AreCompiledIn(kfx::settings)) std::abort();
    Read(file, false);
    std::fclose(file);

    std::FILE* written = std::tmpfile();
    if (!written) std::abort();
    kfx::WriteConfigurationText(written, 0);
    std::fclose(written);
    return 0;
}
