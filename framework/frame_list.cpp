// SPDX-License-Identifier: MIT
#include "framework/frame_list.h"

#include "framework/memory_guards.h"

namespace kfx {

bool AppendFrame(FrameList* list, const FrameEntry& entry) {
    const size_t bytes = (static_cast<size_t>(list->count) + 1) * sizeof entry;
    const MemoryHandle grown = list->entries ? ResizeMemory(list->entries, bytes) : AllocateMemory(bytes);
    if (!grown) return false;
    list->entries = grown;
    ++list->count;
    if (PutFrame(*list, list->count - 1, entry)) return true;
    --list->count;
    return false;
}

bool GetFrame(const FrameList& list, int32_t index, FrameEntry* entry) {
    if (index < 0 || index >= list.count) return false;
    const MemoryLock lock(list.entries);
    if (!lock.address) return false;
    *entry = static_cast<const FrameEntry*>(lock.address)[index];
    return true;
}

bool PutFrame(const FrameList& list, int32_t index, const FrameEntry& entry) {
    if (index < 0 || index >= list.count) return false;
    const MemoryLock lock(list.entries);
    if (!lock.address) return false;
    static_cast<FrameEntry*>(lock.address)[index] = entry;
    return true;
}

void FreeFrames(FrameList* list) {
    FrameEntry entry;
    for (int32_t i = 0; i < list->count; ++i) {
        if (!GetFrame(*list, i, &entry)) continue;
        FreeMemory(entry.image);
        FreeMemory(entry.changeMask);
    }
    FreeMemory(list->entries);
    *list = FrameList{};
}

}  // namespace kfx
