// SPDX-License-Identifier: MIT
#include "tests/support/sha256.h"

#include <cstdint>
#include <cstring>
#include <vector>

namespace kfx::test {
namespace {

constexpr uint32_t kRound[64] = {
    0x428a2f98, 0x71374491, 0xb5c0fbcf, 0xe9b5dba5, 0x3956c25b, 0x59f111f1, 0x923f82a4, 0xab1c5ed5,
    0xd807aa98, 0x12835b01, 0x243185be, 0x550c7dc3, 0x72be5d74, 0x80deb1fe, 0x9bdc06a7, 0xc19bf174,
    0xe49b69c1, 0xefbe4786, 0x0fc19dc6, 0x240ca1cc, 0x2de92c6f, 0x4a7484aa, 0x5cb0a9dc, 0x76f988da,
    0x983e5152, 0xa831c66d, 0xb00327c8, 0xbf597fc7, 0xc6e00bf3, 0xd5a79147, 0x06ca6351, 0x14292967,
    0x27b70a85, 0x2e1b2138, 0x4d2c6dfc, 0x53380d13, 0x650a7354, 0x766a0abb, 0x81c2c92e, 0x92722c85,
    0xa2bfe8a1, 0xa81a664b, 0xc24b8b70, 0xc76c51a3, 0xd192e819, 0xd6990624, 0xf40e3585, 0x106aa070,
    0x19a4c116, 0x1e376c08, 0x2748774c, 0x34b0bcb5, 0x391c0cb3, 0x4ed8aa4a, 0x5b9cca4f, 0x682e6ff3,
    0x748f82ee, 0x78a5636f, 0x84c87814, 0x8cc70208, 0x90befffa, 0xa4506ceb, 0xbef9a3f7, 0xc67178f2};

uint32_t Rotate(uint32_t value, int bits) { return value >> bits | value << (32 - bits); }

void Compress(uint32_t state[8], const uint8_t* chunk) {
    uint32_t w[64];
    for (int i = 0; i < 16; ++i)
        w[i] = static_cast<uint32_t>(chunk[4 * i]) << 24 | static_cast<uint32_t>(chunk[4 * i + 1]) << 16 |
               static_cast<uint32_t>(chunk[4 * i + 2]) << 8 | chunk[4 * i + 3];
    for (int i = 16; i < 64; ++i) {
        const uint32_t s0 = Rotate(w[i - 15], 7) ^ Rotate(w[i - 15], 18) ^ w[i - 15] >> 3;
        const uint32_t s1 = Rotate(w[i - 2], 17) ^ Rotate(w[i - 2], 19) ^ w[i - 2] >> 10;
        w[i] = w[i - 16] + s0 + w[i - 7] + s1;
    }
    uint32_t v[8];
    std::memcpy(v, state, sizeof v);
    for (int i = 0; i < 64; ++i) {
        const uint32_t s1 = Rotate(v[4], 6) ^ Rotate(v[4], 11) ^ Rotate(v[4], 25);
        const uint32_t t1 = v[7] + s1 + ((v[4] & v[5]) ^ (~v[4] & v[6])) + kRound[i] + w[i];
        const uint32_t s0 = Rotate(v[0], 2) ^ Rotate(v[0], 13) ^ Rotate(v[0], 22);
        const uint32_t t2 = s0 + ((v[0] & v[1]) ^ (v[0] & v[2]) ^ (v[1] & v[2]));
        std::memmove(v + 1, v, 7 * sizeof *v);
        v[4] += t1;
        v[0] = t1 + t2;
    }
    for (int i = 0; i < 8; ++i) state[i] += v[i];
}

}  // namespace

std::string Sha256(const void* bytes, size_t size) {
    uint32_t state[8] = {0x6a09e667, 0xbb67ae85, 0x3c6ef372, 0xa54ff53a,
                         0x510e527f, 0x9b05688c, 0x1f83d9ab, 0x5be0cd19};
    const auto* input = static_cast<const uint8_t*>(bytes);
    const size_t whole = size / 64;
    for (size_t i = 0; i < whole; ++i) Compress(state, input + 64 * i);
    std::vector<uint8_t> tail(input + 64 * whole, input + size);
    tail.push_back(0x80);
    while (tail.size() % 64 != 56) tail.push_back(0);
    for (int shift = 56; shift >= 0; shift -= 8)
        tail.push_back(static_cast<uint8_t>(uint64_t{size} * 8 >> shift));
    for (size_t i = 0; i < tail.size(); i += 64) Compress(state, tail.data() + i);
    std::string text;
    for (const uint32_t word : state)
        for (int shift = 28; shift >= 0; shift -= 4) text += "0123456789abcdef"[word >> shift & 15];
    return text;
}

}  // namespace kfx::test
