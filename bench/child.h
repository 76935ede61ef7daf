// SPDX-License-Identifier: MIT
// The line protocol by which a timing harness has jobs run in another process, also in one under Wine. Each
// line is a question; the child answers in lines:
//
//     frame SHOT WIDTH HEIGHT FRAMES PATH   ok, or no when the raw file could not be read (see bench/shot.h)
//     list                                  for each job item, number, job, variant, operation and what it
//                                           works on ("picture": the first frame; "animation": all frames),
//                                           with tabs between; then end
//     run NUMBER SHOT                       ms and the milliseconds of one run on the shot's frames, or no
//     limits SHOT                           limit, name and rate with tabs between, measured now with copies
//                                           as large as the shot's frame, best values so far; then end
//     bound NUMBER SHOT                     bound, the least milliseconds for a frame, and what takes that
//                                           long, with tabs between, or no; by the limits measured so far
//     quit                                  the child ends, as at the end of its input
//
// Any other line is answered with no.
#pragma once

#include <iosfwd>
#include <vector>

#include "bench/job.h"

namespace kfx::bench {

void AnswerQuestions(const std::vector<Job>& jobs, std::istream& questions, std::ostream& answers);

}  // namespace kfx::bench
