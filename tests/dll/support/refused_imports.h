// SPDX-License-Identifier: MIT
// Makes single calls of a loaded module to what it imports fail, whatever the function and its arguments are.
#pragma once

#include <windows.h>

#include <cstdint>
#include <map>
#include <string>
#include <vector>

namespace kfx::test {

// How a function fails.
struct Refusal {
    const char* function;
    uint64_t answer = 0;
    bool worksFirst = false;  // as fclose: it closes the file even where its last bytes could not be written
    uint32_t firstCalls = 2;  // this many of the first calls are refused, each in a session of its own
    bool alone = false;       // nothing else is refused in such a session
};

// Counts the module's calls to these functions and can refuse one call to each. The module's
// import table stays changed, so this must outlive the module.
class RefusedImports {
public:
    RefusedImports(HMODULE module, const std::vector<Refusal>& refusals);
    ~RefusedImports();
    RefusedImports(const RefusedImports&) = delete;
    RefusedImports& operator=(const RefusedImports&) = delete;

    // The module's call with this number, from 1, to the function fails.
    void Refuse(const std::string& function, uint32_t call);

    // Calls so far; 0 for a function that the module does not import.
    uint32_t CallsTo(const std::string& function) const;

private:
    struct Counter {
        uint32_t calls;
        uint32_t refused;  // 0: none
    };

    uint8_t* code_;                            // the gates that the module calls
    std::map<std::string, Counter> counters_;  // their addresses stand in the gates
};

}  // namespace kfx::test
