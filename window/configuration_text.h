// SPDX-License-Identifier: MIT
// The configuration file as text: one table ties each key to its variable. Free of Windows.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <ctime>

namespace kfx {

constexpr uint32_t kConfigBoolean = 1;        // 32-bit 0 or 1
constexpr uint32_t kConfigText = 2;           // a buffer of kTextBytes
constexpr uint32_t kConfigNumber = 4;         // 32 bits, written unsigned
constexpr uint32_t kConfigWriteOnly = 0x100;  // the file cannot change it

struct ConfigKey {
    const char* name;
    void* variable;  // into `settings`
    uint32_t flags;  // kConfig... and attributes that nobody here reads
    uint32_t attribute = 0;
};

// The keys in the order in which the file is written.
const ConfigKey& ConfigKeyAt(size_t index);
size_t ConfigKeyCount();

// Writes the whole file: header lines with the local time of `now`, then every key.
void WriteConfigurationText(std::FILE* file, std::time_t now);

// Applies every line of the file to the settings. Unknown keys are skipped, bad numbers are 0. With
// `shiftHeld` no row of the table may be changed, so the file is passed over.
void ReadConfigurationText(std::FILE* file, bool shiftHeld);

// Applies one line as it stands in the file. False: no row takes it.
bool ApplyConfigurationLine(const char* line, bool shiftHeld);

}  // namespace kfx
