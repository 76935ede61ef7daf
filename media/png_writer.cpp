// SPDX-License-Identifier: MIT
#include <algorithm>
#include <new>

#include "media/animation_writer.h"
#include "media/file_io.h"
#include "media/number_pattern.h"
#include "media/png_compress.h"
#include "media/png_notes.h"

namespace kfx {
namespace {

constexpr size_t kLeastDigits = 3;
constexpr char kNoMemory[] = "there is not enough memory to write the PNG file";
constexpr size_t kFilesAhead = 2;  // files for each thread that are made before they are written

using Bytes = std::vector<uint8_t>;

constexpr size_t kSmallPicture = 4096;  // pixels up to which each format is compressed in full

// A file of a series.
struct PngFile {
    std::string recipe;
    bool isMade = false;
    Bytes bytes = {};
    std::string clause = {};  // why it is not made
};

struct SplitName {
    std::string stem;  // with the folder
    std::string extension;
};

SplitName SplitExtension(const std::string& path) {
    const size_t folderEnd = path.find_last_of("/\\");
    const size_t nameStart = folderEnd == std::string::npos ? 0 : folderEnd + 1;
    const size_t dot = path.rfind('.');
    if (dot == std::string::npos || dot <= nameStart) return {path, ".png"};
    return {path.substr(0, dot), path.substr(dot)};
}

// The one colour of all transparent pixels, when no opaque one has it and there is no other alpha.
bool FindKey(const uint8_t* rgba, size_t pixels, PackedColor* key) {
    constexpr PackedColor kRgb = 0xFFFFFF;
    bool isFound = false;
    for (size_t i = 0; i < pixels; ++i) {
        if (rgba[4 * i + 3] != 0) continue;
        const PackedColor color = PackedColorAt(rgba + 4 * i) & kRgb;
        if (isFound && color != *key) return false;
        isFound = true;
        *key = color;
    }
    for (size_t i = 0; i < pixels; ++i)
        if (rgba[4 * i + 3] != 0 && (PackedColorAt(rgba + 4 * i) & kRgb) == *key) return false;
    return isFound;
}

// Whether a pixel takes at least six times the bits that it has with the palette: a large picture does not
// become smaller so.
bool IsMuchWider(const PngFormat& format, const PngFormat& first) {
    constexpr int kMuch = 6;
    return ChannelsOf(format) * format.depth >= kMuch * ChannelsOf(first) * first.depth;
}

void EncodeChecked(int width, int height, const uint8_t* rgba, const Animation& notes, int effort,
                   Bytes* file) {
    const size_t pixels = static_cast<size_t>(width) * static_cast<size_t>(height);
    ColorCensus census;
    CountColors(rgba, pixels, &census);
    PngFormatOptions choices = {.mayBeGrey = MayBeGrey(notes.metadata)};
    choices.hasKey = !census.isOpaque && census.isSolid && FindKey(rgba, pixels, &choices.key);
    const std::vector<PngFormat> formats = PngFormatsFor(census, choices);
    PngFormat best;
    Bytes data;
    size_t least = SIZE_MAX;
    for (const PngFormat& format : formats) {
        if (pixels > kSmallPicture && IsMuchWider(format, formats[0])) continue;
        const PngRows rows = MakePngRows(format, rgba, width, height);
        Bytes compressed = pixels <= kSmallPicture ? CompressPngRows(rows, effort) : Bytes();
        const size_t size =
            PngPaletteBytes(format) +
            (compressed.empty() && formats.size() > 1 ? EstimatePngRows(rows) : compressed.size());
        if (size >= least) continue;
        least = size;
        best = format;
        data = std::move(compressed);
    }
    if (data.empty()) data = CompressPngRows(MakePngRows(best, rgba, width, height), effort);
    PutPngHead(file, width, height, notes, &best);
    PutPngChunk(file, kDataChunk, data);
    PutPngChunk(file, kEndChunk, {});
}

}  // namespace

bool EncodePng(int width, int height, const uint8_t* rgba, Bytes* file, std::string* error,
               const Animation& notes, const PngOptions& options) {
    file->clear();
    if (width < 1 || height < 1) {
        *error = "a PNG picture needs at least one pixel";
        return false;
    }
    try {
        EncodeChecked(width, height, rgba, notes, options.effort, file);
        return true;
    } catch (const std::bad_alloc&) {
        *error = kNoMemory;
        file->clear();
        return false;
    }
}

bool WritePng(const std::string& path, const Picture& picture, std::string* error) {
    const auto encode = [&picture](size_t, std::vector<uint8_t>* file, std::string* clause) {
        return EncodePng(picture.width, picture.height, picture.pixels.data(), file, clause);
    };
    return WriteWholeFiles({path}, encode, error);
}

std::vector<std::string> PngFramePaths(const std::string& path, size_t frameCount) {
    const size_t file = path.find_last_of("/\\") + 1;  // 0 without a folder
    NumberPattern pattern;
    if (ParseNumberPattern(path.substr(file), &pattern)) {
        pattern.before.insert(0, path, 0, file);
    } else if (frameCount == 1) {
        return {path};
    } else {
        const SplitName name = SplitExtension(path);
        const size_t lastDigits = std::to_string(frameCount == 0 ? 0 : frameCount - 1).size();
        pattern = {name.stem + "-", name.extension, std::max(kLeastDigits, lastDigits)};
    }
    std::vector<std::string> paths;
    for (size_t i = 0; i < frameCount; ++i)
        paths.push_back(pattern.before + PaddedNumber(i, pattern.width) + pattern.behind);
    return paths;
}

bool WritePngFrames(const std::string& path, const Animation& animation, std::string* error,
                    const RecipeOfFrame& recipeOf, const PngOptions& options) {
    if (animation.frames.empty()) {
        *error = path + ": there are no frames to write.";
        return false;
    }
    Animation notes;
    notes.comment = animation.comment;
    notes.hasBackground = animation.hasBackground;
    notes.background = animation.background;
    notes.metadata = animation.metadata;
    const auto encode = [&](size_t i, const std::string& recipe, Bytes* file, std::string* clause) {
        Animation own = notes;
        own.recipe = recipe;
        return EncodePng(animation.width, animation.height, animation.frames[i].pixels.data(), file, clause,
                         own, options);
    };
    const size_t count = animation.frames.size();
    const auto workers = static_cast<size_t>(WorkersFor(options.jobs, count));
    std::vector<PngFile> ahead(workers > 1 ? kFilesAhead * workers : 1);
    const auto makeAhead = [&](size_t first) {
        const size_t made = std::min(ahead.size(), count - first);
        for (size_t k = 0; k < made; ++k) ahead[k] = {.recipe = recipeOf ? recipeOf(first + k) : ""};
        RunJobs(options.jobs, made, [&](size_t k, size_t) {
            PngFile& own = ahead[k];
            own.isMade = encode(first + k, own.recipe, &own.bytes, &own.clause);
        });
    };
    const auto makeContent = [&](size_t i, Bytes* file, std::string* clause) {
        const size_t place = i % ahead.size();
        try {
            if (place == 0) makeAhead(i);
        } catch (const std::bad_alloc&) {
            *clause = kNoMemory;
            return false;
        }
        *file = std::move(ahead[place].bytes);
        *clause = std::move(ahead[place].clause);
        return ahead[place].isMade;
    };
    return WriteWholeFiles(PngFramePaths(path, count), makeContent, error);
}

}  // namespace kfx
