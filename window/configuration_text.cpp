// SPDX-License-Identifier: MIT
#include "window/configuration_text.h"

#include <algorithm>
#include <cstring>
#include <iterator>

#include "framework/number_text.h"
#include "framework/settings.h"

namespace kfx {
namespace {

constexpr uint32_t B = kConfigBoolean;
constexpr uint32_t N = kConfigNumber;
constexpr uint32_t T = kConfigText;

// In the order of the file, which is alphabetical but for Implode's and Explode's radius. The attributes
// beside four of the rows are kept as they are; neither reader nor writer looks at them.
constexpr ConfigKey kKeys[] = {
    {.name = "AddDescriptiveCommentBlock",
     .variable = &settings.addDescriptiveCommentBlock,
     .flags = B | 0x8000,
     .attribute = 103},
    {.name = "CurrentFileName", .variable = settings.currentFileName, .flags = T},
    {.name = "DitherBrightness", .variable = &settings.ditherBrightness, .flags = N | 0x10, .attribute = 100},
    {.name = "DitherContrast", .variable = &settings.ditherContrast, .flags = N | 0x10, .attribute = 101},
    {.name = "FastRemap", .variable = &settings.fastRemap, .flags = B | 0x8000, .attribute = 102},
    {.name = "FileNamePath", .variable = settings.fileNamePath, .flags = T},
    {.name = "FirstRun", .variable = &settings.firstRun, .flags = B},
    {.name = "ImageFile", .variable = settings.imageFile, .flags = T},
    {.name = "LocalBackgroundColor", .variable = &settings.localBackgroundColor, .flags = N},
    {.name = "LocalBackgroundUse", .variable = &settings.localBackgroundUse, .flags = B},
    {.name = "MainDither", .variable = &settings.mainDither, .flags = B},
    {.name = "MainEffect", .variable = &settings.mainEffect, .flags = N},
    {.name = "MainMaskBackground", .variable = &settings.mainMaskBackground, .flags = B},
    {.name = "MainPalette", .variable = &settings.mainPalette, .flags = N},
    {.name = "MainRolling", .variable = &settings.mainRolling, .flags = B},
    {.name = "MainSupercompress", .variable = &settings.mainSupercompress, .flags = B},
    {.name = "OpenPath", .variable = settings.openPath, .flags = T},
    {.name = "PatchLevel", .variable = &settings.patchLevel, .flags = N | kConfigWriteOnly},
    {.name = "ReloadPreviousSession", .variable = &settings.reloadPreviousSession, .flags = B},
    {.name = "SampleWindowKeyLine", .variable = &settings.sampleWindowKeyLine, .flags = B},
    {.name = "ShowFileOpenPreview", .variable = &settings.showFileOpenPreview, .flags = B},
    {.name = "Style000Depth", .variable = &settings.style000Depth, .flags = N},
    {.name = "Style000Radius", .variable = &settings.style000Radius, .flags = N},
    {.name = "Style001CenterX", .variable = &settings.style001CenterX, .flags = N},
    {.name = "Style001CenterY", .variable = &settings.style001CenterY, .flags = N},
    {.name = "Style001Intensity", .variable = &settings.style001Intensity, .flags = N},
    {.name = "Style002Size", .variable = &settings.style002Size, .flags = N},
    {.name = "Style003Angle", .variable = &settings.style003Angle, .flags = N},
    {.name = "Style004Depth", .variable = &settings.style004Depth, .flags = N},
    {.name = "Style004Radius", .variable = &settings.style004Radius, .flags = N},
    {.name = "Style005Level", .variable = &settings.style005Level, .flags = N},
    {.name = "Style006Radius", .variable = &settings.style006Radius, .flags = N},
    {.name = "Style007Cycles", .variable = &settings.style007Cycles, .flags = N},
    {.name = "Style007Displacement", .variable = &settings.style007Displacement, .flags = N},
    {.name = "Style008Aperture", .variable = &settings.style008Aperture, .flags = N},
    {.name = "Style009Amplitude", .variable = &settings.style009Amplitude, .flags = N},
    {.name = "Style009CenterX", .variable = &settings.style009CenterX, .flags = N},
    {.name = "Style009CenterY", .variable = &settings.style009CenterY, .flags = N},
    {.name = "Style009Dissipate", .variable = &settings.style009Dissipate, .flags = B},
    {.name = "Style009Energy", .variable = &settings.style009Energy, .flags = N},
    {.name = "Style009Phase", .variable = &settings.style009Phase, .flags = N},
    {.name = "Style009Wavelength", .variable = &settings.style009Wavelength, .flags = N},
    {.name = "Style010Bri", .variable = &settings.style010Bri, .flags = N},
    {.name = "Style010ChannelsEnable", .variable = &settings.style010ChannelsEnable, .flags = B},
    {.name = "Style010ChannelsOption", .variable = &settings.style010ChannelsOption, .flags = N},
    {.name = "Style010HSBEnable", .variable = &settings.style010HSBEnable, .flags = B},
    {.name = "Style010Hue", .variable = &settings.style010Hue, .flags = N},
    {.name = "Style010InvertColors", .variable = &settings.style010InvertColors, .flags = B},
    {.name = "Style010Sat", .variable = &settings.style010Sat, .flags = N},
    {.name = "Style011Density", .variable = &settings.style011Density, .flags = N},
    {.name = "Style011Size", .variable = &settings.style011Size, .flags = N},
    {.name = "Style012Threshold", .variable = &settings.style012Threshold, .flags = N},
    {.name = "Style014Angle", .variable = &settings.style014Angle, .flags = N},
    {.name = "Style014Depth", .variable = &settings.style014Depth, .flags = N},
    {.name = "Style014Radius", .variable = &settings.style014Radius, .flags = N},
    {.name = "Style015Angle", .variable = &settings.style015Angle, .flags = N},
    {.name = "Style017Radius", .variable = &settings.style017Radius, .flags = N},
    {.name = "Style017CenterX", .variable = &settings.style017CenterX, .flags = N},
    {.name = "Style017CenterY", .variable = &settings.style017CenterY, .flags = N},
    {.name = "Style018Radius", .variable = &settings.style018Radius, .flags = N},
    {.name = "Style018CenterX", .variable = &settings.style018CenterX, .flags = N},
    {.name = "Style018CenterY", .variable = &settings.style018CenterY, .flags = N},
    {.name = "Style019Distributed", .variable = &settings.style019Distributed, .flags = B},
    {.name = "Truecolour", .variable = &settings.truecolour, .flags = B},
    {.name = "UpdateDelay", .variable = &settings.updateDelay, .flags = N},
    {.name = "VersionNumber", .variable = &settings.versionNumber, .flags = N | kConfigWriteOnly},
};

constexpr size_t kLineBytes = 260;  // lines are read in pieces of 259 characters

// Characters are unsigned here, so that a path with accents is not taken for control characters.
unsigned char CodeOf(char c) { return static_cast<unsigned char>(c); }

const char* SkipAll(const char* text, char c) {
    while (*text == c) ++text;
    return text;
}

// The first readable row whose name begins with the key: an abbreviation finds the first match in table
// order, and an empty key the first row of all.
const ConfigKey* FindKey(const char* key, size_t length) {
    for (const ConfigKey& row : kKeys)
        if (!(row.flags & kConfigWriteOnly) && std::strncmp(row.name, key, length) == 0) return &row;
    return nullptr;
}

void StoreValue(const ConfigKey& key, const char* value) {
    if (key.flags & kConfigText) {
        auto* text = static_cast<char*>(key.variable);
        std::memset(text, 0, kTextBytes);
        std::copy_n(value, std::min(std::strlen(value), size_t{kTextBytes - 1}), text);
    } else {
        const uint32_t number = ParseDecimal(value);
        std::memcpy(key.variable, &number, sizeof number);
    }
}

// The local time as "Mon Nov 16 03:57:00 2026"; empty for a time outside the calendar.
const char* TimeText(std::time_t now) {
    const char* text = std::ctime(&now);
    return text ? text : "";
}

}  // namespace

const ConfigKey& ConfigKeyAt(size_t index) { return kKeys[index]; }

size_t ConfigKeyCount() { return std::size(kKeys); }

void WriteConfigurationText(std::FILE* file, std::time_t now) {
    // The misspelling is part of the format.
    std::fputs(";Quorvane Labs animtion plugin configuration file\n", file);
    std::fputs(";Edit this at your own risk\n", file);
    std::fprintf(file, ";Last updated %24.24s\n", TimeText(now));
    std::fputs(";\n[PlugIn]\n", file);
    for (const ConfigKey& row : kKeys) {
        if (row.flags & kConfigText) {
            std::fprintf(file, "%s = %s\n", row.name, static_cast<const char*>(row.variable));
        } else {
            uint32_t number;
            std::memcpy(&number, row.variable, sizeof number);
            std::fprintf(file, "%s = %u\n", row.name, number);
        }
    }
}

bool ApplyConfigurationLine(const char* line, bool shiftHeld) {
    if (line[0] == ';') return false;
    char text[kLineBytes] = "";
    for (size_t i = 0; i + 1 < sizeof text && CodeOf(line[i]) >= ' '; ++i) text[i] = line[i];

    size_t keyLength = 0;
    while (CodeOf(text[keyLength]) > ' ' && text[keyLength] != '=') ++keyLength;
    const ConfigKey* key = shiftHeld ? nullptr : FindKey(text, keyLength);
    if (!key) return false;
    const char* value = SkipAll(text + keyLength, ' ');
    if (*value == '=') value = SkipAll(SkipAll(value, '='), ' ');
    StoreValue(*key, value);
    return true;
}

void ReadConfigurationText(std::FILE* file, bool shiftHeld) {
    char line[kLineBytes];
    while (std::fgets(line, sizeof line, file)) ApplyConfigurationLine(line, shiftHeld);
}

}  // namespace kfx
