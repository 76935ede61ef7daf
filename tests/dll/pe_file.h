// SPDX-License-Identifier: MIT
// What a Windows executable file says about itself, read from its bytes without loading it.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace kfx {

struct PeSection {
    std::string name;
    uint32_t characteristics = 0;
    uint32_t address = 0;  // from the start of the loaded image
    std::string bytes;     // as the file has them
};

struct PeFile {
    uint16_t machine = 0;
    uint16_t characteristics = 0;
    uint16_t dllCharacteristics = 0;
    uint16_t subsystemMajor = 0;  // the oldest version of Windows
    uint16_t subsystemMinor = 0;
    uint32_t time = 0;  // of its linking, in seconds since 1970
    std::vector<PeSection> sections;
    uint32_t symbols = 0;                    // in the symbol table; 0: there is none
    std::vector<std::string> exportedNames;  // sorted, as the file keeps them
    uint32_t exportedFunctions = 0;          // with those exported by ordinal only
    std::vector<std::string> importedLibraries;
};

// Reads a 64-bit PE file; false when it is missing or not one.
bool ReadPeFile(const char* path, PeFile& file);

}  // namespace kfx
