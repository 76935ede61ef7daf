// SPDX-License-Identifier: MIT
#include "framework/frame_list.h"

#include <algorithm>

#include "framework/memory_guards.h"

namespace kfx {
namespace {

// Makes room for what one more entry owns. False: memory ran out, the list is as before.
bool MakeOwnedRoom(FrameList* list) {
    constexpr int32_t kFirstRoom = 16;
    if (list->count < list->ownedRoom) return true;
    const int32_t room = std::max(kFirstRoom, 2 * list->ownedRoom);
    auto* owned =
        static_cast<OwnedImages*>(AllocateFixedTable(static_cast<size_t>(room) * sizeof(OwnedImages)));
    if (!owned) return false;
    std::copy_n(list->owned, list->count, owned);
    FreeFixedTable(list->owned);
    list->owned = owned;
    list->ownedRoom = room;
    return true;
}

}  // namespace

bool AppendFrame(FrameList* list, const FrameEntry& entry) {
    if (!MakeOwnedRoom(list)) return false;
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
    if (!lock) return false;
    *entry = static_cast<const FrameEntry*>(lock.address)[index];
    return true;
}

bool PutFrame(const FrameList& list, int32_t index, const FrameEntry& entry) {
    if (index < 0 || index >= list.count) return false;
    const MemoryLock lock(list.entries);
    if (!lock) return false;
    static_cast<FrameEntry*>(lock.address)[index] = entry;
    list.owned[index] = {entry.image, entry.changeMask};
    return true;
}

bool ReplaceImage(const FrameList& list, int32_t index, FrameEntry entry, ImageHandle image) {
    const ImageHandle old = entry.image;
    entry.image = image;
    const bool replaced = PutFrame(list, index, entry);
    FreeMemory(replaced ? old : image);
    return replaced;
}

void FreeFrames(FrameList* list) {
    for (int32_t i = 0; i < list->count; ++i) {
        FreeMemory(list->owned[i].image);
        FreeMemory(list->owned[i].changeMask);
    }
    FreeFixedTable(list->owned);
    FreeMemory(list->entries);
    *list = FrameList{};
}

}  // namespace kfx
