// SPDX-License-Identifier: MIT
#include "window/configuration_text.h"

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
    {"AddDescriptiveCommentBlock", &settings.addDescriptiveCommentBlock, B | 0x8000, 103},
    {"CurrentFileName", settings.currentFileName, T, 0},
    {"DitherBrightness", &settings.ditherBrightness, N | 0x10, 100},
    {"DitherContrast", &settings.ditherContrast, N | 0x10, 101},
    {"FastRemap", &settings.fastRemap, B | 0x8000, 102},
    {"FileNamePath", settings.fileNamePath, T, 0},
    {"FirstRun", &settings.firstRun, B, 0},
    {"ImageFile", settings.imageFile, T, 0},
    {"LocalBackgroundColor", &settings.localBackgroundColor, N, 0},
    {"LocalBackgroundUse", &settings.localBackgroundUse, B, 0},
    {"MainDither", &settings.mainDither, B, 0},
    {"MainEffect", &settings.mainEffect, N, 0},
    {"MainMaskBackground", &settings.mainMaskBackground, B, 0},
    {"MainPalette", &settings.mainPalette, N, 0},
    {"MainRolling", &settings.mainRolling, B, 0},
    {"MainSupercompress", &settings.mainSupercompress, B, 0},
    {"OpenPath", settings.openPath, T, 0},
    {"PatchLevel", &settings.patchLevel, N | kConfigWriteOnly, 0},
    {"ReloadPreviousSession", &settings.reloadPreviousSession, B, 0},
    {"SampleWindowKeyLine", &settings.sampleWindowKeyLine, B, 0},
    {"ShowFileOpenPreview", &settings.showFileOpenPreview, B, 0},
    {"Style000Depth", &settings.style000Depth, N, 0},
    {"Style000Radius", &settings.style000Radius, N, 0},
    {"Style001CenterX", &settings.style001CenterX, N, 0},
    {"Style001CenterY", &settings.style001CenterY, N, 0},
    {"Style001Intensity", &settings.style001Intensity, N, 0},
    {"Style002Size", &settings.style002Size, N, 0},
    {"Style003Angle", &settings.style003Angle, N, 0},
    {"Style004Depth", &settings.style004Depth, N, 0},
    {"Style004Radius", &settings.style004Radius, N, 0},
    {"Style005Level", &settings.style005Level, N, 0},
    {"Style006Radius", &settings.style006Radius, N, 0},
    {"Style007Cycles", &settings.style007Cycles, N, 0},
    {"Style007Displacement", &settings.style007Displacement, N, 0},
    {"Style008Aperture", &settings.style008Aperture, N, 0},
    {"Style009Amplitude", &settings.style009Amplitude, N, 0},
    {"Style009CenterX", &settings.style009CenterX, N, 0},
    {"Style009CenterY", &settings.style009CenterY, N, 0},
    {"Style009Dissipate", &settings.style009Dissipate, B, 0},
    {"Style009Energy", &settings.style009Energy, N, 0},
    {"Style009Phase", &settings.style009Phase, N, 0},
    {"Style009Wavelength", &settings.style009Wavelength, N, 0},
    {"Style010Bri", &settings.style010Bri, N, 0},
    {"Style010ChannelsEnable", &settings.style010ChannelsEnable, B, 0},
    {"Style010ChannelsOption", &settings.style010ChannelsOption, N, 0},
    {"Style010HSBEnable", &settings.style010HSBEnable, B, 0},
    {"Style010Hue", &settings.style010Hue, N, 0},
    {"Style010InvertColors", &settings.style010InvertColors, B, 0},
    {"Style010Sat", &settings.style010Sat, N, 0},
    {"Style011Density", &settings.style011Density, N, 0},
    {"Style011Size", &settings.style011Size, N, 0},
    {"Style012Threshold", &settings.style012Threshold, N, 0},
    {"Style014Angle", &settings.style014Angle, N, 0},
    {"Style014Depth", &settings.style014Depth, N, 0},
    {"Style014Radius", &settings.style014Radius, N, 0},
    {"Style015Angle", &settings.style015Angle, N, 0},
    {"Style017Radius", &settings.style017Radius, N, 0},
    {"Style017CenterX", &settings.style017CenterX, N, 0},
    {"Style017CenterY", &settings.style017CenterY, N, 0},
    {"Style018Radius", &settings.style018Radius, N, 0},
    {"Style018CenterX", &settings.style018CenterX, N, 0},
    {"Style018CenterY", &settings.style018CenterY, N, 0},
    {"Style019Distributed", &settings.style019Distributed, B, 0},
    {"Truecolour", &settings.truecolour, B, 0},
    {"UpdateDelay", &settings.updateDelay, N, 0},
    {"VersionNumber", &settings.versionNumber, N | kConfigWriteOnly, 0},
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
        for (int i = 0; i < kTextBytes - 1 && value[i]; ++i) text[i] = value[i];
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
