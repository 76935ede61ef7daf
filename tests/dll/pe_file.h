// SPDX-License-Identifier: MIT
// What a Windows executable file says about itself, read from its bytes without loading it.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace kfx {

struct PeFile {
    uint16_t machine = 0;
    uint16_t characteristics = 0;
    uint16_t dllCharacteristics = 0;
    uint32_t symbols = 0;                    // in the symbol table; 0: there is none
    std::vector<std::string> exportedNames;  // sorted, as the file keeps them
    uint32_t exportedFunctions = 0;          // with those exported by ordinal only
    std::vector<std::string> importedLibraries;
};

// Reads a 64-bit PE file; false when it is missing or not one.
bool ReadPeFile(const char* path, PeFile& file);

}  // namespace kfx
