// SPDX-License-Identifier: MIT
#include "media/png_deflate.h"

#include <libdeflate.h>

#include <algorithm>
#include <memory>
#include <new>

namespace kfx {
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

}  // namespace

bool UnpackWhole(const uint8_t* data, size_t size, uint8_t* out, size_t outSize) {
    // Without a place for the size that came out, only exactly this size is a success.
    return libdeflate_zlib_decompress(MakeDecompressor().get(), data, size, out, outSize, nullptr) ==
           LIBDEFLATE_SUCCESS;
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
