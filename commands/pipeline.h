// SPDX-License-Identifier: MIT
// A command's jobs in turn. Between two of them the frames stand in true colour, so that nothing is lost: the
// palette and all that goes with it are the last one's.
#pragma once

#include <vector>

#include "commands/engine.h"

namespace kfx::commands {

// Builds the session's source through all jobs into session->built, with what the plug-in does not carry in
// session->record. The session's source is used up. False: `*failure` says why.
bool RunJobs(const OpenEngine& engine, HostSession* session, std::vector<Job> jobs, Failure* failure);

}  // namespace kfx::commands
