// SPDX-License-Identifier: MIT
// How the program's heap gets memory from the system.
#pragma once

namespace kfx::cli {

// To be called once, before anything large is allocated. Pictures then reuse memory that others have freed,
// and the system is asked for large pages: fetching 4 KiB at a time took a quarter of a short run. Only speed
// depends on it.
void PrepareHeap();

}  // namespace kfx::cli
