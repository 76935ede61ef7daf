// SPDX-License-Identifier: MIT
#include "tests/reference/reference_table.h"

#include "framework/memory_guards.h"

namespace kfx::test {
namespace {

// Counts the offset up as the coordinate does; where it would reach the size it jumps back by a cell.
struct Cell {
    int64_t base = 0;
    int64_t offset = 0;

    void Advance(int64_t size) {
        if (++offset < size) return;
        offset = -size;
        base += 2 * size;
    }
};

}  // namespace

ImageHandle ReferenceGlassBlock(ImageHandle source, const KernelInput& input) {
    const int64_t size = input.values[0];
    const ImageLock from(source);
    if (size < 1) return nullptr;
    MemoryOwner owner(CreateLike(from.image));
    const ImageLock to(owner.memory);
    if (!to.image) return nullptr;
    Cell row;
    for (int32_t y = 0; y < from.image->height; ++y, row.Advance(size)) {
        int64_t r = row.base + 2 * row.offset;
        if (r >= from.image->height) r = from.image->height - 1;
        Cell column;
        for (int32_t x = 0; x < from.image->width; ++x, column.Advance(size)) {
            int64_t c = column.base + 2 * column.offset;
            if (c >= from.image->width) c = x;
            SetDibPixel(to.image, x, y,
                        GetDibPixel(from.image, static_cast<int32_t>(c), static_cast<int32_t>(r)));
        }
    }
    return owner.Release();
}

}  // namespace kfx::test
