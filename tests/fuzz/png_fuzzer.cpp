// SPDX-License-Identifier: MIT
// PNG files, as they are and with checksums made right, so that damage reaches what stands behind them: once
// with the picture data of the input, once with these taken for rows that are still to be compressed.
#include "media/png_deflate.h"
#include "media/png_format.h"
#include "tests/fuzz/animation_promises.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size);

namespace {

using Bytes = std::vector<uint8_t>;

constexpr uint32_t kFrameDataChunk = kfx::PngName("fdAT");
constexpr size_t kSequenceSize = 4;

Bytes Repaired(const uint8_t* data, size_t size, bool packs) {
    Bytes file;
    kfx::PutPngSignature(&file);
    size_t at = kfx::kPngSignatureSize;
    kfx::PngChunk chunk;
    while (kfx::NextPngChunk(data, size, &at, &chunk)) {
        const size_t head = chunk.name == kFrameDataChunk ? kSequenceSize : 0;
        const bool isData = chunk.name == kFrameDataChunk || chunk.name == kfx::kDataChunk;
        Bytes content(chunk.data, chunk.data + chunk.size);
        if (packs && isData && content.size() >= head) {
            const Bytes packed =
                kfx::Pack(content.data() + head, content.size() - head, kfx::kFastestPacking);
            content.resize(head);
            content.insert(content.end(), packed.begin(), packed.end());
        }
        kfx::PutPngChunk(&file, chunk.name, content);
    }
    return file;
}

}  // namespace

int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    kfx::test::ReadAnimationOrAbort(data, size);
    for (const bool packs : {false, true}) {
        const Bytes file = Repaired(data, size, packs);
        kfx::test::ReadAnimationOrAbort(file.data(), file.size());
    }
    return 0;
}
