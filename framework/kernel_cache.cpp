// SPDX-License-Identifier: MIT
#include "framework/kernel_cache.h"

#include <cstring>

namespace kfx {
namespace {

void Empty(KeptTable* table) {
    if (table->address) UnlockMemory(table->memory);
    FreeMemory(table->memory);
    table->memory = nullptr;
    table->address = nullptr;
    table->keyBytes = 0;
    table->filled = false;
}

}  // namespace

KeptTable::~KeptTable() { Empty(this); }

void* CachedTable(KeptTable* table, const void* key, size_t keyBytes, size_t bytes, bool* fresh) {
    if (table->filled && table->bytes == bytes && table->keyBytes == keyBytes &&
        std::memcmp(table->key, key, keyBytes) == 0) {
        *fresh = false;
        return table->address;
    }
    Empty(table);
    if (keyBytes > kMostCacheKeyBytes) return nullptr;
    table->memory = AllocateMemory(bytes);
    table->address = LockMemory(table->memory);
    if (!table->address) {
        Empty(table);
        return nullptr;
    }
    table->bytes = bytes;
    std::memcpy(table->key, key, keyBytes);
    table->keyBytes = keyBytes;
    *fresh = true;
    return table->address;
}

void KeepTable(KeptTable* table) { table->filled = table->address != nullptr; }

}  // namespace kfx
