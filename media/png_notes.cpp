// SPDX-License-Identifier: MIT
#include "media/png_notes.h"

#include <algorithm>
#include <cstring>
#include <string_view>

#include "media/png_deflate.h"
#include "media/recipe_note.h"

namespace kfx {
namespace {

using Bytes = std::vector<uint8_t>;

constexpr uint32_t kProfileChunk = PngName("iCCP");
constexpr uint32_t kExifChunk = PngName("eXIf");
constexpr uint32_t kBackgroundChunk = PngName("bKGD");
constexpr uint32_t kLatinChunk = PngName("tEXt");
constexpr uint32_t kPackedLatinChunk = PngName("zTXt");
constexpr uint32_t kTextChunk = PngName("iTXt");  // in UTF-8

constexpr std::string_view kXmpKeyword = "XML:com.adobe.xmp";
constexpr std::string_view kCommentKeyword = "Comment";
constexpr std::string_view kRecipeKeyword = "Kestrel recipe";
constexpr std::string_view kProfileName = "ICC profile";
constexpr size_t kLongText = 1024;   // bytes from which a comment is compressed
constexpr size_t kLongRecipe = 256;  // its words repeat themselves, so that less of it is worth packing

// The part of a chunk that was not read yet.
struct Rest {
    const uint8_t* data;
    size_t size;
};

// The text up to the next zero, which is skipped; false when there is none.
bool TakeString(Rest* rest, std::string_view* text) {
    const auto* end =
        rest->size == 0 ? nullptr : static_cast<const uint8_t*>(std::memchr(rest->data, 0, rest->size));
    if (!end) return false;
    const auto length = static_cast<size_t>(end - rest->data);
    *text = {reinterpret_cast<const char*>(rest->data), length};
    *rest = {end + 1, rest->size - length - 1};
    return true;
}

bool TakeByte(Rest* rest, uint8_t* byte) {
    if (rest->size == 0) return false;
    *byte = *rest->data;
    *rest = {rest->data + 1, rest->size - 1};
    return true;
}

bool UnpackNote(const Rest& rest, PngNoteReader* reader, Bytes* note) {
    if (!UnpackUpTo(rest.data, rest.size, reader->room, note)) return false;
    reader->room -= note->size();
    return true;
}

bool IsUtf8(const Bytes& text) {
    for (size_t i = 0; i < text.size();) {
        const uint8_t first = text[i++];
        if (first < 0x80) continue;
        size_t more = 0;
        if (first >= 0xC2 && first <= 0xDF) more = 1;
        if (first >= 0xE0 && first <= 0xEF) more = 2;
        if (first >= 0xF0 && first <= 0xF4) more = 3;
        if (more == 0 || text.size() - i < more) return false;
        for (; more > 0; --more)
            if ((text[i++] & 0xC0) != 0x80) return false;
    }
    return true;
}

// Text of Latin 1, as the format has it; many programs store UTF-8 all the same, which stays.
Bytes Utf8Of(const Bytes& text) {
    if (IsUtf8(text)) return text;
    Bytes result;
    for (const uint8_t letter : text) {
        if (letter >= 0x80) result.push_back(static_cast<uint8_t>(0xC0 | letter >> 6));
        result.push_back(letter < 0x80 ? letter : static_cast<uint8_t>(0x80 | (letter & 0x3F)));
    }
    return result;
}

void AddComment(const Bytes& text, Animation* animation) {
    if (!animation->comment.empty()) animation->comment += '\n';
    animation->comment.append(text.begin(), text.end());
}

void TakeRecipe(const Bytes& text, Animation* animation) {
    const std::string recipe(text.begin(), text.end());
    if (IsRecipe(recipe)) animation->recipe = recipe;
}

void TakeText(const PngChunk& chunk, PngNoteReader* reader) {
    Rest rest = {chunk.data, chunk.size};
    std::string_view keyword;
    if (!TakeString(&rest, &keyword)) return;
    const bool isXmp = chunk.name == kTextChunk && keyword == kXmpKeyword;
    const bool isRecipe = keyword == kRecipeKeyword;
    if (!isXmp && !isRecipe && keyword != kCommentKeyword) return;
    uint8_t isPacked = chunk.name == kPackedLatinChunk ? 1 : 0;
    uint8_t method = 0;
    if (chunk.name == kTextChunk && !TakeByte(&rest, &isPacked)) return;
    if (chunk.name != kLatinChunk && !TakeByte(&rest, &method)) return;
    std::string_view language;
    std::string_view translatedKeyword;
    if (chunk.name == kTextChunk && (!TakeString(&rest, &language) || !TakeString(&rest, &translatedKeyword)))
        return;
    if (isPacked > 1 || (isPacked == 1 && method != 0)) return;
    Bytes text(rest.data, rest.data + rest.size);
    if (isPacked == 1 && !UnpackNote(rest, reader, &text)) return;
    if (isXmp)
        reader->animation->metadata.xmp = std::move(text);
    else if (isRecipe)
        TakeRecipe(text, reader->animation);
    else
        AddComment(chunk.name == kTextChunk ? text : Utf8Of(text), reader->animation);
}

void TakeProfile(const PngChunk& chunk, PngNoteReader* reader) {
    Rest rest = {chunk.data, chunk.size};
    std::string_view name;
    uint8_t method = 0;
    Bytes profile;
    if (TakeString(&rest, &name) && TakeByte(&rest, &method) && method == 0 &&
        UnpackNote(rest, reader, &profile))
        reader->animation->metadata.colorProfile = std::move(profile);
}

void TakeBackground(const PngChunk& chunk, const PngFormat& format, Animation* animation) {
    const bool isGrey = IsGrey(format);
    RgbColor color;
    if (format.colors == kPngPalette) {
        if (chunk.size != 1 || chunk.data[0] >= format.palette.size()) return;
        color = format.palette[chunk.data[0]];
    } else if (chunk.size != (isGrey ? 2 : 6)) {
        return;
    } else {
        const uint32_t most = (1u << format.depth) - 1;
        const auto sample = [&](size_t i) {
            return RoundPngSample(std::min(BigWord16(chunk.data + i), most), most);
        };
        color =
            isGrey ? RgbColor{sample(0), sample(0), sample(0)} : RgbColor{sample(0), sample(2), sample(4)};
    }
    animation->hasBackground = true;
    animation->background = color;
}

bool HasSpace(const Bytes& profile, const char* colorSpace) {
    return profile.size() >= 20 && std::memcmp(profile.data() + 16, colorSpace, 4) == 0;
}

void PutText(Bytes* data, std::string_view text) {
    data->insert(data->end(), text.begin(), text.end());
    data->push_back(0);
}

void PutProfile(Bytes* file, const Bytes& profile, const PngFormat& format) {
    // A profile of grey tones says nothing about colours, which the pictures have by now.
    if (profile.empty() || (HasSpace(profile, "GRAY") && !IsGrey(format))) return;
    Bytes data;
    PutText(&data, kProfileName);
    data.push_back(0);
    const Bytes packed = Pack(profile.data(), profile.size(), kSmallestPacking);
    data.insert(data.end(), packed.begin(), packed.end());
    PutPngChunk(file, kProfileChunk, data);
}

// A text of the keyword, compressed from so many bytes on.
void PutTextChunk(Bytes* file, std::string_view keyword, const std::string& content, size_t packedFrom) {
    Bytes text(content.begin(), content.end());
    std::erase(text, uint8_t{0});
    if (text.empty()) return;
    const bool isAscii = std::all_of(text.begin(), text.end(), [](uint8_t letter) { return letter < 0x80; });
    const bool isLatin = isAscii || !IsUtf8(text);
    const bool isPacked = text.size() >= packedFrom;
    if (isPacked) text = Pack(text.data(), text.size(), kSmallestPacking);
    Bytes data;
    PutText(&data, keyword);
    if (!isLatin) data.insert(data.end(), {static_cast<uint8_t>(isPacked ? 1 : 0), 0, 0, 0});
    if (isLatin && isPacked) data.push_back(0);
    data.insert(data.end(), text.begin(), text.end());
    PutPngChunk(file, !isLatin ? kTextChunk : isPacked ? kPackedLatinChunk : kLatinChunk, data);
}

void PutXmp(Bytes* file, const Bytes& xmp) {
    // Readers take a zero for the end of the text.
    if (xmp.empty() || std::find(xmp.begin(), xmp.end(), uint8_t{0}) != xmp.end()) return;
    Bytes data;
    PutText(&data, kXmpKeyword);
    data.insert(data.end(), {0, 0, 0, 0});  // not compressed, as programs that search for it want it
    data.insert(data.end(), xmp.begin(), xmp.end());
    PutPngChunk(file, kTextChunk, data);
}

// The entry of an opaque colour, added when there is a free one; false when not.
bool EntryOf(RgbColor color, PngFormat* format, uint8_t* entry) {
    size_t i = 0;
    while (i < format->palette.size() &&
           !(format->palette[i] == color && (i >= format->alphas.size() || format->alphas[i] == 255)))
        ++i;
    if (i == size_t{1} << format->depth) return false;
    if (i == format->palette.size()) format->palette.push_back(color);
    *entry = static_cast<uint8_t>(i);
    return true;
}

// What the background's chunk contains; nothing when the format cannot say this colour.
Bytes BackgroundOf(RgbColor color, PngFormat* format) {
    Bytes data;
    if (format->colors == kPngPalette) {
        uint8_t entry = 0;
        if (EntryOf(color, format, &entry)) data.push_back(entry);
        return data;
    }
    if (format->colors == kPngRgb || format->colors == kPngRgba) {
        for (const uint8_t sample : {color.red, color.green, color.blue}) PutBigWord16(&data, sample);
        return data;
    }
    const unsigned unit = 255u / ((1u << format->depth) - 1);
    if (color == RgbColor{color.red, color.red, color.red} && color.red % unit == 0)
        PutBigWord16(&data, color.red / unit);
    return data;
}

}  // namespace

void TakePngNote(const PngChunk& chunk, const PngFormat& format, PngNoteReader* reader) {
    switch (chunk.name) {
        case kProfileChunk:
            if (IsPngChunkWhole(chunk)) TakeProfile(chunk, reader);
            break;
        case kLatinChunk:
        case kPackedLatinChunk:
        case kTextChunk:
            if (IsPngChunkWhole(chunk)) TakeText(chunk, reader);
            break;
        case kExifChunk:
            if (IsPngChunkWhole(chunk))
                reader->animation->metadata.exif.assign(chunk.data, chunk.data + chunk.size);
            break;
        case kBackgroundChunk:
            if (IsPngChunkWhole(chunk)) TakeBackground(chunk, format, reader->animation);
            break;
        default:
            break;
    }
}

bool MayBeGrey(const Metadata& metadata) {
    return metadata.colorProfile.empty() || HasSpace(metadata.colorProfile, "GRAY");
}

void PutPngHead(Bytes* file, int width, int height, const Animation& notes, PngFormat* format) {
    const Bytes background = notes.hasBackground ? BackgroundOf(notes.background, format) : Bytes();
    Bytes header;
    PutBigWord32(&header, static_cast<uint32_t>(width));
    PutBigWord32(&header, static_cast<uint32_t>(height));
    header.insert(header.end(), {static_cast<uint8_t>(format->depth), format->colors, 0, 0, 0});
    PutPngSignature(file);
    PutPngChunk(file, kHeaderChunk, header);
    PutProfile(file, notes.metadata.colorProfile, *format);
    Bytes palette;
    for (const RgbColor color : format->palette)
        palette.insert(palette.end(), {color.red, color.green, color.blue});
    if (!palette.empty()) PutPngChunk(file, kPaletteChunk, palette);
    Bytes transparency = format->alphas;
    for (int i = 0; i < ChannelsOf(*format) && format->hasKey; ++i)
        PutBigWord16(&transparency, format->key[i]);
    if (!transparency.empty()) PutPngChunk(file, kTransparencyChunk, transparency);
    if (!background.empty()) PutPngChunk(file, kBackgroundChunk, background);
    PutTextChunk(file, kCommentKeyword, notes.comment, kLongText);
    PutTextChunk(file, kRecipeKeyword, notes.recipe, kLongRecipe);
    PutXmp(file, notes.metadata.xmp);
    if (!notes.metadata.exif.empty()) PutPngChunk(file, kExifChunk, notes.metadata.exif);
}

}  // namespace kfx
