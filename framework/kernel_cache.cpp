// SPDX-License-Identifier: MIT
#include "framework/kernel_cache.h"

#include <cstring>

namespace kfx {
namespace {

void Empty(KernelCache* cache) {
    if (cache->address) UnlockMemory(cache->memory);
    FreeMemory(cache->memory);
    cache->memory = nullptr;
    cache->address = nullptr;
    cache->keyBytes = 0;
    cache->filled = false;
}

}  // namespace

KernelCache::~KernelCache() { Empty(this); }

void* CachedTable(KernelCache* cache, const void* key, size_t keyBytes, size_t bytes, bool* fresh) {
    if (cache->filled && cache->bytes == bytes && cache->keyBytes == keyBytes &&
        std::memcmp(cache->key, key, keyBytes) == 0) {
        *fresh = false;
        return cache->address;
    }
    Empty(cache);
    if (keyBytes > kMostCacheKeyBytes) return nullptr;
    cache->memory = AllocateMemory(bytes);
    cache->address = LockMemory(cache->memory);
    if (!cache->address) {
        Empty(cache);
        return nullptr;
    }
    cache->bytes = bytes;
    std::memcpy(cache->key, key, keyBytes);
    cache->keyBytes = keyBytes;
    *fresh = true;
    return cache->address;
}

void KeepTable(KernelCache* cache) { cache->filled = cache->address != nullptr; }

}  // namespace kfx
