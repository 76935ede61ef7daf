// SPDX-License-Identifier: MIT
#include "commands/part_file.h"

#include <algorithm>
#include <cstring>
#include <fstream>
#include <utility>

#include "commands/command_line.h"
#include "commands/fingerprint.h"
#include "commands/text.h"
#include "media/png_deflate.h"
#include "media/utf8_path.h"

namespace kfx::commands {
namespace {

constexpr char kMagic[] = "KFXPART1";
constexpr size_t kMagicBytes = 8;
constexpr size_t kHashBytes = 32;  // in hexadecimal digits
constexpr int kLevel = 3;          // quick; dithered pictures hardly become smaller with more
constexpr uint32_t kMostSide = 65535;
constexpr uint32_t kLongestTime = 1u << 30;
constexpr char kDamaged[] = "this part is damaged; make it again";

using Bytes = std::vector<uint8_t>;

void Put(uint32_t number, Bytes* out) {
    for (int i = 0; i < 4; ++i) out->push_back(static_cast<uint8_t>(number >> 8 * i));
}

// A signed number keeps its 32 bits.
void PutSigned(int number, Bytes* out) { Put(static_cast<uint32_t>(number), out); }

void PutBytes(const uint8_t* data, size_t size, Bytes* out) {
    Put(static_cast<uint32_t>(size), out);
    out->insert(out->end(), data, data + size);
}

void PutBytes(const Bytes& bytes, Bytes* out) { PutBytes(bytes.data(), bytes.size(), out); }

void PutText(const std::string& text, Bytes* out) {
    Put(static_cast<uint32_t>(text.size()), out);
    out->insert(out->end(), text.begin(), text.end());
}

void PutColor(RgbColor color, Bytes* out) { out->insert(out->end(), {color.red, color.green, color.blue}); }

void PutPalette(const std::vector<RgbColor>& palette, Bytes* out) {
    Put(static_cast<uint32_t>(palette.size()), out);
    for (const RgbColor color : palette) PutColor(color, out);
}

// What is left to read. Once something is missing, everything reads as nothing.
struct Reader {
    const uint8_t* at;
    const uint8_t* end;
    bool failed = false;
};

size_t Rest(const Reader& reader) { return static_cast<size_t>(reader.end - reader.at); }

const uint8_t* Take(size_t size, Reader* reader) {
    if (reader->failed || size > Rest(*reader)) {
        reader->failed = true;
        return nullptr;
    }
    return std::exchange(reader->at, reader->at + size);
}

uint32_t TakeNumber(Reader* reader) {
    const uint8_t* const bytes = Take(4, reader);
    uint32_t number = 0;
    for (int i = 0; bytes && i < 4; ++i) number |= uint32_t{bytes[i]} << 8 * i;
    return number;
}

// A number up to `most`.
uint32_t TakeUpTo(uint32_t most, Reader* reader) {
    const uint32_t number = TakeNumber(reader);
    if (number > most) reader->failed = true;
    return reader->failed ? 0 : number;
}

int TakeSigned(Reader* reader) { return static_cast<int>(TakeNumber(reader)); }

Bytes TakeBytes(Reader* reader) {
    const size_t size = TakeNumber(reader);
    const uint8_t* const bytes = Take(size, reader);
    return bytes ? Bytes(bytes, bytes + size) : Bytes();
}

std::string TakeText(Reader* reader) {
    const Bytes bytes = TakeBytes(reader);
    return {bytes.begin(), bytes.end()};
}

RgbColor TakeColor(Reader* reader) {
    const uint8_t* const bytes = Take(3, reader);
    return bytes ? RgbColor{.red = bytes[0], .green = bytes[1], .blue = bytes[2]} : RgbColor{};
}

std::vector<RgbColor> TakePalette(Reader* reader) {
    std::vector<RgbColor> palette(TakeUpTo(256, reader));
    for (RgbColor& color : palette) color = TakeColor(reader);
    return palette;
}

Bytes EncodeHead(const PartFile& part) {
    Bytes head;
    const SourceRecord& record = part.record;
    Put(static_cast<uint32_t>(part.first), &head);
    Put(static_cast<uint32_t>(part.built.frames.size()), &head);
    head.push_back(part.thresholdApplied ? 1 : 0);
    PutSigned(part.built.width, &head);
    PutSigned(part.built.height, &head);
    PutPalette(part.built.palette, &head);
    PutText(part.built.comment, &head);
    if (part.first > 0) return head;
    PutSigned(record.loopCount, &head);
    head.push_back(record.ownPalette ? 1 : 0);
    head.push_back(record.hasBackground ? 1 : 0);
    PutColor(record.background, &head);
    PutText(record.comment, &head);
    PutBytes(record.metadata.colorProfile, &head);
    PutBytes(record.metadata.exif, &head);
    PutBytes(record.metadata.xmp, &head);
    return head;
}

bool TakeFlag(Reader* reader) {
    const uint8_t* const byte = Take(1, reader);
    return byte && *byte != 0;
}

// False: the head is damaged.
bool DecodeHead(Reader reader, PartFile* part) {
    SourceRecord* const record = &part->record;
    part->first = TakeNumber(&reader);
    part->count = TakeNumber(&reader);
    part->thresholdApplied = TakeFlag(&reader);
    part->built.width = static_cast<int>(TakeUpTo(kMostSide, &reader));
    part->built.height = static_cast<int>(TakeUpTo(kMostSide, &reader));
    part->built.palette = TakePalette(&reader);
    part->built.comment = TakeText(&reader);
    part->built.complete = true;
    record->width = part->built.width;
    record->height = part->built.height;
    if (part->first == 0) {
        record->loopCount = TakeSigned(&reader);
        record->ownPalette = TakeFlag(&reader);
        record->hasBackground = TakeFlag(&reader);
        record->background = TakeColor(&reader);
        record->comment = TakeText(&reader);
        record->metadata.colorProfile = TakeBytes(&reader);
        record->metadata.exif = TakeBytes(&reader);
        record->metadata.xmp = TakeBytes(&reader);
    }
    return !reader.failed && Rest(reader) == 0 && part->count > 0 && part->built.width > 0 &&
           part->built.height > 0;
}

// The frame's numbers, then its pixels and its alpha, packed.
Bytes EncodeFrame(const BuiltFrame& frame, const SourceFrame& source) {
    Bytes block;
    block.push_back(frame.indexed ? 1 : 0);
    block.push_back(source.alpha.empty() ? 0 : 1);
    PutSigned(frame.transparentIndex, &block);
    PutPalette(frame.palette, &block);
    PutSigned(source.delay, &block);
    PutSigned(source.milliseconds, &block);
    Bytes pixels = frame.pixels;
    pixels.insert(pixels.end(), source.alpha.begin(), source.alpha.end());
    PutBytes(Pack(pixels.data(), pixels.size(), kLevel), &block);
    return block;
}

// False: the frame is damaged.
bool DecodeFrame(Reader reader, size_t pixels, BuiltFrame* frame, SourceFrame* source) {
    frame->indexed = TakeFlag(&reader);
    const bool hasAlpha = TakeFlag(&reader);
    frame->transparentIndex = TakeSigned(&reader);
    if (frame->transparentIndex < -1 || frame->transparentIndex > UINT8_MAX) return false;
    frame->palette = TakePalette(&reader);
    source->delay = static_cast<int>(TakeUpTo(kLongestTime, &reader));
    source->milliseconds = TakeSigned(&reader);
    if (source->milliseconds < kNoMilliseconds || source->milliseconds > int{kLongestTime}) return false;
    const size_t packed = TakeNumber(&reader);
    const uint8_t* const data = Take(packed, &reader);
    const size_t size = pixels * (frame->indexed ? 1 : 3);
    if (!data || packed == 0 || Rest(reader) != 0 || size / kMostUnpacked > packed) return false;
    frame->pixels.resize(size + (hasAlpha ? pixels : 0));
    if (!UnpackWhole({{.data = data, .size = packed}}, frame->pixels.data(), frame->pixels.size()))
        return false;
    const auto alpha = frame->pixels.begin() + static_cast<std::ptrdiff_t>(size);
    source->alpha.assign(alpha, frame->pixels.end());
    frame->pixels.resize(size);
    // Writers look each index up in the frame's palette.
    return !frame->indexed || std::all_of(frame->pixels.begin(), frame->pixels.end(), [&](uint8_t index) {
        return index < frame->palette.size() || index == frame->transparentIndex;
    });
}

// The file between magic and hash. Without `isChecked`, which says that this was done before, the hash is
// compared. False: it is another file, or damaged; `*error` is a clause.
bool FindContent(const Bytes& file, bool isChecked, Reader* reader, std::string* error) {
    if (file.size() < kMagicBytes || std::memcmp(file.data(), kMagic, kMagicBytes) != 0) {
        *error = "this is no part of an animation; kestrel apply makes one with --survey";
        return false;
    }
    *error = kDamaged;
    if (file.size() < kMagicBytes + kHashBytes) return false;
    const uint8_t* const hash = file.data() + file.size() - kHashBytes;
    *reader = {.at = file.data() + kMagicBytes, .end = hash};
    if (isChecked) return true;
    const std::string wanted = HashOfBytes(file.data(), file.size() - kHashBytes);
    return std::memcmp(hash, wanted.data(), kHashBytes) == 0;
}

Reader TakeBlock(Reader* reader) {
    const size_t size = TakeNumber(reader);
    const uint8_t* const start = Take(size, reader);
    return start ? Reader{.at = start, .end = start + size}
                 : Reader{.at = nullptr, .end = nullptr, .failed = true};
}

}  // namespace

std::vector<uint8_t> EncodePart(const PartFile& part) {
    Bytes file(kMagic, kMagic + kMagicBytes);
    PutText(part.survey, &file);
    PutBytes(EncodeHead(part), &file);
    for (size_t i = 0; i < part.built.frames.size(); ++i)
        PutBytes(EncodeFrame(part.built.frames[i], part.record.frames[i]), &file);
    const std::string hash = HashOfBytes(file.data(), file.size());
    file.insert(file.end(), hash.begin(), hash.end());
    return file;
}

bool DecodePart(const std::vector<uint8_t>& file, PartFile* part, std::string* error) {
    *part = {};
    Reader reader = {};
    if (!FindContent(file, false, &reader, error)) return false;
    part->survey = TakeText(&reader);
    const Reader head = TakeBlock(&reader);
    return !reader.failed && DecodeHead(head, part);
}

bool DecodeFrames(const std::vector<uint8_t>& file, const PartFile& part, BuiltAnimation* built,
                  SourceRecord* record, std::string* error) {
    Reader reader = {};
    if (!FindContent(file, true, &reader, error)) return false;
    TakeText(&reader);
    TakeBlock(&reader);
    const size_t pixels = static_cast<size_t>(part.built.width) * static_cast<size_t>(part.built.height);
    for (size_t i = 0; i < part.count; ++i) {
        BuiltFrame frame;
        SourceFrame source;
        const Reader block = TakeBlock(&reader);
        if (reader.failed || !DecodeFrame(block, pixels, &frame, &source)) return false;
        frame.sourceIndex = record->frames.size();
        record->transparent = record->transparent || !source.alpha.empty();
        built->frames.push_back(std::move(frame));
        record->frames.push_back(std::move(source));
    }
    return Rest(reader) == 0;
}

void ExplainPart(const std::string& input, std::string* error) {
    char beginning[kMagicBytes] = {};
    std::ifstream file(PathOf(SystemPath(input)), std::ios::binary);
    if (file.read(beginning, sizeof beginning) && std::memcmp(beginning, kMagic, sizeof beginning) == 0)
        *error = input + ": this is a part of an animation; kestrel join puts parts together.";
}

}  // namespace kfx::commands
