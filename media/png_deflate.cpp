// SPDX-License-Identifier: MIT
#include "media/png_deflate.h"

#include <libdeflate.h>
#include <zlib.h>

#include <algorithm>
#include <climits>
#include <new>

namespace kfx {

struct Unpacker {
    const PackedParts* parts;
    size_t nextPart;
    size_t left;  // bytes of the current part that the library does not have yet
    z_stream stream;
    bool hasEnded;
};

namespace {

struct FreeDecompressor {
    void operator()(libdeflate_decompressor* it) const { libdeflate_free_decompressor(it); }
};
using Decompressor = std::unique_ptr<libdeflate_decompressor, FreeDecompressor>;

struct FreeCompressor {
    void operator()(libdeflate_compressor* it) const { libdeflate_free_compressor(it); }
};
using Compressor = std::unique_ptr<libdeflate_compressor, FreeCompressor>;

Decompressor MakeDecompressor() {
    Decompressor result(libdeflate_alloc_decompressor());
    if (!result) throw std::bad_alloc();
    return result;
}

// Hands on the next part once the one before is used up.
void FeedUnpacker(Unpacker* unpacker) {
    z_stream& stream = unpacker->stream;
    if (stream.avail_in > 0) return;
    if (unpacker->left == 0) {
        if (unpacker->nextPart == unpacker->parts->size()) return;
        const PackedPart& part = (*unpacker->parts)[unpacker->nextPart++];
        stream.next_in = part.data;
        unpacker->left = part.size;
    }
    stream.avail_in = static_cast<uInt>(std::min<size_t>(unpacker->left, INT_MAX));
    unpacker->left -= stream.avail_in;
}

}  // namespace

bool UnpackWhole(const PackedParts& parts, uint8_t* out, size_t outSize) {
    std::vector<uint8_t> joined;
    size_t size = 0;
    for (const PackedPart& part : parts) size += part.size;
    const bool isWhole = parts.size() == 1;
    if (!isWhole) joined.reserve(size);
    for (const PackedPart& part : parts)
        if (!isWhole) joined.insert(joined.end(), part.data, part.data + part.size);
    // Without a place for the size that came out, only exactly this size is a success.
    return libdeflate_zlib_decompress(MakeDecompressor().get(), isWhole ? parts[0].data : joined.data(), size,
                                      out, outSize, nullptr) == LIBDEFLATE_SUCCESS;
}

void UnpackerDeleter::operator()(Unpacker* unpacker) const {
    inflateEnd(&unpacker->stream);
    delete unpacker;
}

UnpackerOwner MakeUnpacker(const PackedParts& parts) {
    UnpackerOwner unpacker(new Unpacker());
    unpacker->parts = &parts;
    if (inflateInit(&unpacker->stream) != Z_OK) throw std::bad_alloc();
    return unpacker;
}

bool UnpackNext(Unpacker* unpacker, uint8_t* out, size_t size) {
    z_stream& stream = unpacker->stream;
    while (size > 0 && !unpacker->hasEnded) {
        FeedUnpacker(unpacker);
        const auto piece = static_cast<uInt>(std::min<size_t>(size, INT_MAX));
        stream.next_out = out;
        stream.avail_out = piece;
        const int result = inflate(&stream, Z_NO_FLUSH);
        if (result == Z_MEM_ERROR) throw std::bad_alloc();
        // Without progress the data are at their end.
        if (result != Z_OK && result != Z_STREAM_END) return false;
        unpacker->hasEnded = result == Z_STREAM_END;
        out += piece - stream.avail_out;
        size -= piece - stream.avail_out;
    }
    return size == 0;
}

bool EndsUnpacked(Unpacker* unpacker) {
    uint8_t beyond = 0;
    return !UnpackNext(unpacker, &beyond, 1) && unpacker->hasEnded;
}

bool UnpackUpTo(const uint8_t* data, size_t size, size_t limit, std::vector<uint8_t>* out) {
    constexpr size_t kFirstGuess = 8;
    const Decompressor decompressor = MakeDecompressor();
    size_t room = std::min(limit, kFirstGuess * size + 64);
    while (true) {
        out->resize(room);
        size_t got = 0;
        const libdeflate_result result =
            libdeflate_zlib_decompress(decompressor.get(), data, size, out->data(), room, &got);
        if (result == LIBDEFLATE_SUCCESS) {
            out->resize(got);
            return true;
        }
        if (result != LIBDEFLATE_INSUFFICIENT_SPACE || room == limit) break;
        room = std::min(limit, 4 * room);
    }
    out->clear();
    return false;
}

std::vector<uint8_t> Pack(const uint8_t* data, size_t size, int level) {
    const Compressor compressor(libdeflate_alloc_compressor(level));
    if (!compressor) throw std::bad_alloc();
    std::vector<uint8_t> packed(libdeflate_zlib_compress_bound(compressor.get(), size));
    packed.resize(libdeflate_zlib_compress(compressor.get(), data, size, packed.data(), packed.size()));
    return packed;
}

}  // namespace kfx
