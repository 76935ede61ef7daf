// SPDX-License-Identifier: MIT
#include "kernels/kept_points.h"

#include "framework/cpu.h"

namespace kfx {

KeptPoints KeepPoints(KeptTable* table, const void* key, size_t keyBytes, int32_t width, int32_t height) {
    const size_t rowBytes = static_cast<size_t>((width + kPointsAGroup - 1) / kPointsAGroup) * kGroupBytes;
    const auto rows = static_cast<size_t>(height);
    if (!UseAvx2() || width < kPointsAGroup || rows > kLargestKeptTable / rowBytes) return {};
    bool fresh;
    auto* bytes = static_cast<uint8_t*>(
        CachedTable(table, key, keyBytes, rows * rowBytes + kGroupAlignment + rows, &fresh));
    if (!bytes) return {};
    // Each row has a mark of its own, so that what an abandoned frame has filled is kept as well.
    KeepTable(table);
    const size_t beyond = reinterpret_cast<uintptr_t>(bytes) % kGroupAlignment;
    uint8_t* const groups = bytes + (beyond ? kGroupAlignment - beyond : 0);
    return {.rowFilled = groups + rows * rowBytes, .groups = groups, .rowBytes = rowBytes};
}

KeptRow KeptRowAt(const KeptPoints& points, int32_t y) {
    if (!points.groups) return {};
    return {.groups = points.groups + static_cast<size_t>(y) * points.rowBytes,
            .filled = points.rowFilled + y};
}

}  // namespace kfx
