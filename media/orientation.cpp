// SPDX-License-Identifier: MIT
#include "media/orientation.h"

#include <cstring>

namespace kfx {
namespace {

constexpr size_t kHeaderSize = 8;
constexpr size_t kEntrySize = 12;
constexpr unsigned kOrientationTag = 0x0112;
constexpr unsigned kShort = 3;  // the type of 16 bits

// By the numbers 1 to 8 of EXIF.
constexpr Orientation kOrientations[] = {
    {.swapsSides = false, .mirrorsX = false, .mirrorsY = false},
    {.swapsSides = false, .mirrorsX = true, .mirrorsY = false},
    {.swapsSides = false, .mirrorsX = true, .mirrorsY = true},
    {.swapsSides = false, .mirrorsX = false, .mirrorsY = true},
    {.swapsSides = true, .mirrorsX = false, .mirrorsY = false},
    {.swapsSides = true, .mirrorsX = true, .mirrorsY = false},
    {.swapsSides = true, .mirrorsX = true, .mirrorsY = true},
    {.swapsSides = true, .mirrorsX = false, .mirrorsY = true},
};

// TIFF data in either order of bytes.
struct Tiff {
    const std::vector<uint8_t>* bytes;
    bool bigEndian;
};

unsigned Read16(const Tiff& tiff, size_t at) {
    const uint8_t* bytes = tiff.bytes->data() + at;
    return tiff.bigEndian ? static_cast<unsigned>(bytes[0] << 8 | bytes[1])
                          : static_cast<unsigned>(bytes[1] << 8 | bytes[0]);
}

size_t Read32(const Tiff& tiff, size_t at) {
    const size_t first = Read16(tiff, at);
    const size_t second = Read16(tiff, at + 2);
    return tiff.bigEndian ? first << 16 | second : second << 16 | first;
}

// False: these are no TIFF data.
bool OpenTiff(const std::vector<uint8_t>& bytes, Tiff* tiff) {
    if (bytes.size() < kHeaderSize) return false;
    const bool bigEndian = bytes[0] == 'M';
    *tiff = {.bytes = &bytes, .bigEndian = bigEndian};
    return std::memcmp(bytes.data(), bigEndian ? "MM\0*" : "II*\0", 4) == 0;
}

// Where the orientation's value of 16 bits stands; 0 when there is none.
size_t FindOrientation(const std::vector<uint8_t>& exif, Tiff* opened) {
    if (!OpenTiff(exif, opened)) return 0;
    const Tiff& tiff = *opened;
    const size_t size = tiff.bytes->size();
    const size_t directory = Read32(tiff, 4);
    if (directory > size || size - directory < 2) return 0;
    const size_t count = Read16(tiff, directory);
    for (size_t i = 0; i < count; ++i) {
        const size_t entry = directory + 2 + kEntrySize * i;
        if (entry + kEntrySize > size) return 0;
        if (Read16(tiff, entry) == kOrientationTag)
            return Read16(tiff, entry + 2) == kShort && Read32(tiff, entry + 4) == 1 ? entry + 8 : 0;
    }
    return 0;
}

// XMP may repeat what EXIF says, as an attribute or as an element.
void SetXmpUpright(std::vector<uint8_t>* xmp) {
    constexpr char kName[] = "tiff:Orientation";
    std::string text(xmp->begin(), xmp->end());
    for (size_t at = text.find(kName); at != std::string::npos; at = text.find(kName, at + 1)) {
        size_t digit = at + std::strlen(kName);
        while (digit < text.size() && std::strchr("=\"'> \t\r\n", text[digit]) && text[digit] != '\0')
            ++digit;
        if (digit < text.size() && text[digit] >= '2' && text[digit] <= '8') (*xmp)[digit] = '1';
    }
}

}  // namespace

int OrientationNumber(const std::vector<uint8_t>& exif) {
    Tiff tiff = {};
    const size_t at = FindOrientation(exif, &tiff);
    return at ? static_cast<int>(Read16(tiff, at)) : 0;
}

Orientation TakeOrientation(Metadata* metadata) {
    std::vector<uint8_t>* const exif = &metadata->exif;
    const int number = OrientationNumber(*exif);
    if (number < 2 || number > static_cast<int>(std::size(kOrientations))) return {};
    Tiff tiff = {};
    const size_t at = FindOrientation(*exif, &tiff);
    (*exif)[tiff.bigEndian ? at : at + 1] = 0;
    (*exif)[tiff.bigEndian ? at + 1 : at] = 1;
    SetXmpUpright(&metadata->xmp);
    return kOrientations[number - 1];
}

}  // namespace kfx
