// SPDX-License-Identifier: MIT
// PNG rows to RGBA.
#include <algorithm>
#include <cstring>
#include <memory>

#include "media/png_deflate.h"
#include "media/png_filter.h"
#include "media/png_format.h"

namespace kfx {
namespace {

constexpr size_t kValues = 256;

// A part of the picture that has rows of its own: every `stepX`th pixel of every `stepY`th row.
struct Pass {
    int left;
    int top;
    int stepX;
    int stepY;
};

constexpr Pass kWholePicture = {.left = 0, .top = 0, .stepX = 1, .stepY = 1};
constexpr Pass kInterlaced[] = {
    {.left = 0, .top = 0, .stepX = 8, .stepY = 8}, {.left = 4, .top = 0, .stepX = 8, .stepY = 8},
    {.left = 0, .top = 4, .stepX = 4, .stepY = 8}, {.left = 2, .top = 0, .stepX = 4, .stepY = 4},
    {.left = 0, .top = 2, .stepX = 2, .stepY = 4}, {.left = 1, .top = 0, .stepX = 2, .stepY = 2},
    {.left = 0, .top = 1, .stepX = 1, .stepY = 2},
};

int Count(int size, int start, int step) { return size <= start ? 0 : (size - start + step - 1) / step; }

struct Rows {
    const PngFormat* format;
    int width;   // of the picture
    int height;  // of the picture
    uint8_t* rgba;
    uint8_t* indices;             // null when they are not asked for
    bool isInPalette = true;      // all indices so far
    uint8_t values[4 * kValues];  // RGBA of samples of up to 8 bits: grey or of the palette
};

uint8_t Rounded(const uint8_t* sample) {
    return RoundPngSample(static_cast<uint32_t>(sample[0] << 8 | sample[1]), 65535);
}

void FillValues(Rows* rows) {
    const PngFormat& format = *rows->format;
    const unsigned most = (1u << std::min(format.depth, 8)) - 1;
    for (size_t i = 0; i < kValues; ++i) {
        uint8_t* value = rows->values + 4 * i;
        if (format.colors == kPngPalette) {
            // Viewers show black where the palette has no entry.
            const RgbColor color = i < format.palette.size() ? format.palette[i] : RgbColor();
            const uint8_t alpha = i < format.alphas.size() ? format.alphas[i] : 255;
            value[0] = color.red;
            value[1] = color.green;
            value[2] = color.blue;
            value[3] = alpha;
        } else {
            std::fill_n(value, 3, static_cast<uint8_t>(i * 255 / most));
            value[3] = format.hasKey && format.key[0] == i ? 0 : 255;
        }
    }
}

// One sample a pixel, of 1 to 8 bits.
void ExpandValues(Rows* rows, const uint8_t* row, int count, int stepX, uint8_t* out, uint8_t* indices) {
    const auto depth = static_cast<unsigned>(rows->format->depth);
    const unsigned mask = (1u << depth) - 1;
    size_t greatest = 0;
    unsigned shift = 8;
    for (int x = 0; x < count; ++x, out += 4 * stepX) {
        shift -= depth;
        const size_t value = *row >> shift & mask;
        if (shift == 0) {
            shift = 8;
            ++row;
        }
        std::memcpy(out, rows->values + 4 * value, 4);
        greatest = std::max(greatest, value);
        if (!indices) continue;
        *indices = static_cast<uint8_t>(value);
        indices += stepX;
    }
    rows->isInPalette &= greatest < rows->format->palette.size();
}

void ExpandGreyAlpha(const uint8_t* row, int count, int stepX, uint8_t* out) {
    for (int x = 0; x < count; ++x, row += 2, out += 4 * stepX) {
        std::fill_n(out, 3, row[0]);
        out[3] = row[1];
    }
}

void ExpandRgb(const PngFormat& format, const uint8_t* row, int count, int stepX, uint8_t* out) {
    for (int x = 0; x < count; ++x, row += 3, out += 4 * stepX) {
        std::memcpy(out, row, 3);
        const bool isKey =
            format.hasKey && row[0] == format.key[0] && row[1] == format.key[1] && row[2] == format.key[2];
        out[3] = isKey ? 0 : 255;
    }
}

void ExpandRgba(const uint8_t* row, int count, int stepX, uint8_t* out) {
    for (int x = 0; x < count; ++x, row += 4, out += 4 * stepX) std::memcpy(out, row, 4);
}

// Samples of 16 bits.
void ExpandWords(const PngFormat& format, const uint8_t* row, int count, int stepX, uint8_t* out) {
    const auto channels = static_cast<size_t>(ChannelsOf(format));
    const size_t colors = channels < 3 ? 1 : 3;
    for (int x = 0; x < count; ++x, row += 2 * channels, out += 4 * stepX) {
        bool isKey = format.hasKey;
        for (size_t i = 0; i < colors; ++i) {
            out[i] = Rounded(row + 2 * i);
            isKey &= format.key[i] == BigWord16(row + 2 * i);
        }
        if (colors == 1) out[1] = out[2] = out[0];
        out[3] = colors == channels ? 255 : Rounded(row + 2 * colors);
        if (isKey) out[3] = 0;
    }
}

void ExpandRow(Rows* rows, const uint8_t* row, const Pass& pass, int y, int count) {
    const size_t start =
        static_cast<size_t>(y) * static_cast<size_t>(rows->width) + static_cast<size_t>(pass.left);
    uint8_t* out = rows->rgba + 4 * start;
    const PngFormat& format = *rows->format;
    const int channels = ChannelsOf(format);
    if (format.depth == 16)
        ExpandWords(format, row, count, pass.stepX, out);
    else if (channels == 1)
        ExpandValues(rows, row, count, pass.stepX, out, rows->indices ? rows->indices + start : nullptr);
    else if (channels == 2)
        ExpandGreyAlpha(row, count, pass.stepX, out);
    else if (channels == 3)
        ExpandRgb(format, row, count, pass.stepX, out);
    else
        ExpandRgba(row, count, pass.stepX, out);
}

// Where rows come from: the unpacked data of a picture, or the packed ones. Samples of 16 bits take two to
// three times the memory of what they become, so that they are unpacked row by row.
struct RowSource {
    std::unique_ptr<uint8_t[]> unpacked;
    uint8_t* at;             // the next row in `unpacked`
    UnpackerOwner unpacker;  // null: everything is unpacked
    std::vector<uint8_t> rows[2];
};

// The next row of `size` bytes, whose filter stands before it; null when there is none. It stays until two
// rows later.
uint8_t* NextRow(RowSource* source, size_t size) {
    if (!source->unpacker) {
        uint8_t* const row = source->at + 1;
        source->at = row + size;
        return row;
    }
    source->rows[0].swap(source->rows[1]);
    std::vector<uint8_t>& row = source->rows[0];
    row.resize(size + 2);
    return UnpackNext(source->unpacker.get(), row.data(), size + 1) ? row.data() + 1 : nullptr;
}

// False when a row is missing or has no known filter.
bool ExpandPass(Rows* rows, const Pass& pass, RowSource* source) {
    const int count = Count(rows->width, pass.left, pass.stepX);
    if (count == 0) return true;
    const size_t size = PngRowBytes(*rows->format, count);
    const std::vector<uint8_t> zeros(size + 1);
    const uint8_t* above = zeros.data();
    for (int y = pass.top; y < rows->height; y += pass.stepY) {
        uint8_t* const row = NextRow(source, size);
        if (!row || !UndoPngFilter(row[-1], above, size, PngFilterStep(*rows->format), row)) return false;
        ExpandRow(rows, row, pass, y, count);
        above = row;
    }
    return true;
}

// The bytes of all rows of the passes.
size_t UnpackedSize(const PngFormat& format, int width, int height, const Pass* first, const Pass* end) {
    size_t size = 0;
    for (const Pass* pass = first; pass != end; ++pass) {
        const int columns = Count(width, pass->left, pass->stepX);
        const auto lines = static_cast<size_t>(Count(height, pass->top, pass->stepY));
        if (columns != 0) size += lines * (PngRowBytes(format, columns) + 1);
    }
    return size;
}

// False when the data are damaged.
bool OpenRows(const PngFormat& format, const PackedParts& data, size_t unpackedSize, RowSource* source) {
    size_t packed = 0;
    for (const PackedPart& part : data) packed += part.size;
    // A small file that says that it is a large picture costs no memory.
    if (unpackedSize / kMostUnpacked > packed) return false;
    if (format.depth == 16) {
        source->unpacker = MakeUnpacker(data);
        return true;
    }
    source->unpacked = std::make_unique_for_overwrite<uint8_t[]>(unpackedSize + 1);
    source->at = source->unpacked.get();
    return UnpackWhole(data, source->at, unpackedSize);
}

}  // namespace

const char* DecodePngPixels(const PngFormat& format, int width, int height, const PackedParts& data,
                            std::vector<uint8_t>* rgba, std::vector<uint8_t>* indices) {
    if (format.colors == kPngPalette && format.palette.empty()) return "it has no palette";
    const Pass* first = format.interlaced ? std::begin(kInterlaced) : &kWholePicture;
    const Pass* end = format.interlaced ? std::end(kInterlaced) : &kWholePicture + 1;
    constexpr const char* kDamaged = "its picture data are damaged";
    RowSource source = {};
    if (!OpenRows(format, data, UnpackedSize(format, width, height, first, end), &source)) return kDamaged;
    const size_t area = static_cast<size_t>(width) * static_cast<size_t>(height);
    rgba->resize(4 * area);
    const bool hasIndices = indices && format.colors == kPngPalette;
    if (indices) indices->resize(hasIndices ? area : 0);
    Rows rows = {.format = &format,
                 .width = width,
                 .height = height,
                 .rgba = rgba->data(),
                 .indices = hasIndices ? indices->data() : nullptr,
                 .values = {}};
    FillValues(&rows);
    for (const Pass* pass = first; pass != end; ++pass)
        if (!ExpandPass(&rows, *pass, &source)) return kDamaged;
    if (source.unpacker && !EndsUnpacked(source.unpacker.get())) return kDamaged;
    if (hasIndices && !rows.isInPalette) indices->clear();
    return nullptr;
}

}  // namespace kfx
