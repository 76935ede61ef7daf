// SPDX-License-Identifier: MIT
// A process that has chosen binary files as what fopen opens when its mode does not say.
#pragma once

#include <fcntl.h>

#include <cstdlib>

namespace kfx::test {

struct BinaryFiles {
    BinaryFiles() : before(_fmode) { _fmode = _O_BINARY; }
    ~BinaryFiles() { _fmode = before; }
    BinaryFiles(const BinaryFiles&) = delete;
    BinaryFiles& operator=(const BinaryFiles&) = delete;

    const int before;
};

}  // namespace kfx::test
