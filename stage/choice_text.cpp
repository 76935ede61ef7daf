// SPDX-License-Identifier: MIT
#include "stage/choice_text.h"

#include <cstdio>

namespace kfx::stage {

using namespace commands;

namespace {

struct WayName {
    FitWay way;
    const char* name;
};

constexpr WayName kWayNames[] = {
    {FitWay::Colors, "Fewer colours"},
    {FitWay::Scale, "Smaller picture"},
    {FitWay::Frames, "Fewer frames"},
    {FitWay::Lossy, "Small inaccuracies"},
    {FitWay::ScaleAndLossy, "Smaller, inaccurate"},
};

std::string Plural(size_t count, const std::string& noun) {
    return std::to_string(count) + " " + noun + (count == 1 ? "" : "s");
}

// Hundredths of a unit, rounded up.
std::string InUnit(uint64_t bytes, uint64_t unit, const char* name) {
    const uint64_t hundredths = (bytes * 100 + unit - 1) / unit;
    char text[40];
    if (hundredths >= 10000)
        std::snprintf(text, sizeof text, "%llu %s", static_cast<unsigned long long>((hundredths + 99) / 100),
                      name);
    else
        std::snprintf(text, sizeof text, "%llu.%02llu %s", static_cast<unsigned long long>(hundredths / 100),
                      static_cast<unsigned long long>(hundredths % 100), name);
    return text;
}

std::string ColorsText(const FitSettings& settings) {
    if (settings.palette.empty()) return "";
    if (settings.palette == "original") return "the source's palette";
    if (settings.palette != "custom") return "palette " + settings.palette;
    return "one palette of " + std::to_string(settings.colors > 0 ? settings.colors : 256) + " colours";
}

}  // namespace

std::string NameOfWay(FitWay way) {
    for (const WayName& row : kWayNames) {
        if (row.way == way) return row.name;
    }
    return "";
}

std::string SizeText(uint64_t bytes) {
    constexpr uint64_t kKilo = 1000, kMega = kKilo * kKilo;
    if (bytes < kKilo) return std::to_string(bytes) + " bytes";
    return bytes < kMega ? InUnit(bytes, kKilo, "KB") : InUnit(bytes, kMega, "MB");
}

std::string ByteCountText(uint64_t bytes) {
    std::string digits = std::to_string(bytes);
    for (size_t end = digits.size(); end > 3; end -= 3) digits.insert(end - 3, ",");
    return digits + " bytes";
}

std::string FactsText(const FitTrial& trial) {
    return Plural(trial.frames, "frame") + ", " + std::to_string(trial.width) + " x " +
           std::to_string(trial.height) + ", " + Plural(trial.colors, "colour");
}

std::string ChangesText(const FitSettings& settings) {
    std::string text;
    const auto add = [&text](const std::string& part) {
        if (!part.empty()) text += (text.empty() ? "" : ", ") + part;
    };
    if (settings.edits.shrink < 100) add(std::to_string(settings.edits.shrink) + " % of the width");
    if (settings.edits.every == 2) add("every 2nd frame");
    if (settings.edits.every == 3) add("every 3rd frame");
    add(ColorsText(settings));
    if (settings.dither) add("dithered");
    if (settings.supercompress) add("supercompressed");
    if (settings.lossy > 0) add("pixels differ by a little (loss " + std::to_string(settings.lossy) + ")");
    return text.empty() ? "Nothing was changed" : text;
}

std::string ChoiceText(const FitChoice& choice) {
    const FitTrial& trial = choice.trial;
    return NameOfWay(choice.way) + ", " + SizeText(trial.bytes) + ", " + FactsText(trial) + ", " +
           ChangesText(trial.settings);
}

}  // namespace kfx::stage
