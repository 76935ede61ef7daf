// SPDX-License-Identifier: MIT
// What a child of the timing harness answers, line by line.
#include <gtest/gtest.h>

#include <cstdlib>
#include <map>
#include <set>
#include <sstream>
#include <string>
#include <vector>

#include "bench/child.h"
#include "tests/bench/shot_files.h"

namespace kfx::bench {
namespace {

using Lines = std::vector<std::string>;

// The answers to these lines, asked one after the other in one session.
Lines Ask(const std::vector<Job>& jobs, const Lines& questions, const char* lineEnd = "\n") {
    std::string text;
    for (const std::string& question : questions) text += question + lineEnd;
    std::istringstream input(text);
    std::ostringstream output;
    AnswerQuestions(jobs, input, output);
    std::istringstream answers(output.str());
    Lines lines;
    for (std::string line; std::getline(answers, line);) lines.push_back(line);
    return lines;
}

Lines SplitAtTabs(const std::string& line) {
    Lines parts;
    std::istringstream text(line);
    for (std::string part; std::getline(text, part, '\t');) parts.push_back(part);
    return parts;
}

double MillisecondsIn(const std::string& answer) {
    return answer.rfind("ms ", 0) == 0 ? std::atof(answer.c_str() + 3) : -1;
}

// Counts how often it is made ready and run, and checks what it is given.
struct CountingJob {
    int prepared = 0;
    int runs = 0;
    bool fails = false;
    int32_t lastWidth = 0;

    Job Make() {
        const auto prepare = [this](const Shot& shot) -> Run {
            ++prepared;
            lastWidth = shot.width;
            if (shot.frames.count < 2) return nullptr;
            return [this] { return ++runs, !fails; };
        };
        return {.name = "count",
                .variant = "default",
                .operation = "counting",
                .allFrames = true,
                .prepare = prepare};
    }
};

TEST(BenchChild, Lists_its_jobs_with_tabs_between_and_an_end) {
    CountingJob job;
    EXPECT_EQ(Ask({job.Make()}, {"list"}), (Lines{"item\t0\tcount\tdefault\tcounting\tanimation", "end"}));
}

TEST(BenchChild, Makes_a_job_ready_once_for_each_shot_and_runs_it_when_asked) {
    CountingJob job;
    const test::ShotFile file(8, 6, 2);
    const Lines answers = Ask({job.Make()}, {file.Question("A"), "run 0 A", "run 0 A", "run 0 A"});
    ASSERT_EQ(answers.size(), 4u);
    EXPECT_EQ(answers[0], "ok");
    for (size_t i = 1; i < answers.size(); ++i) EXPECT_GE(MillisecondsIn(answers[i]), 0) << answers[i];
    EXPECT_EQ(job.prepared, 1);
    EXPECT_EQ(job.runs, 3);
}

TEST(BenchChild, A_shot_that_comes_again_replaces_the_one_before) {
    CountingJob job;
    const test::ShotFile file(8, 6, 2), wider(10, 6, 2);
    Ask({job.Make()}, {file.Question("A"), "run 0 A", wider.Question("A"), "run 0 A"});
    EXPECT_EQ(job.prepared, 2);
    EXPECT_EQ(job.lastWidth, 10);
}

TEST(BenchChild, Says_no_to_what_it_cannot_do) {
    CountingJob job;
    const test::ShotFile file(8, 6, 2), still(8, 6, 1);
    job.fails = true;
    EXPECT_EQ(Ask({job.Make()}, {file.Question("A"), still.Question("S"), "run 0 A", "run 0 S", "run 1 A",
                                 "run 0 B", "run", "bound 0 A", "what", ""}),
              (Lines{"ok", "ok", "no", "no", "no", "no", "no", "no", "no", "no"}));
}

TEST(BenchChild, Refuses_a_file_that_is_missing_or_shorter_than_the_frames) {
    const test::ShotFile file(8, 6, 1);
    EXPECT_EQ(Ask({}, {"frame A 8 6 2 " + file.path, "frame A 8 6 1 " + file.path + ".missing",
                       "frame A 0 6 1 " + file.path, "frame A 8 6", "frame A 8 6 1 " + file.path}),
              (Lines{"no", "no", "no", "no", "ok"}));
}

TEST(BenchChild, Ends_when_told_to_and_takes_both_kinds_of_line_ends) {
    const test::ShotFile file(8, 6, 1);
    EXPECT_EQ(Ask({}, {file.Question("A"), "list", "quit", "list"}, "\r\n"), (Lines{"ok", "end"}));
}

// All jobs that a harness may ask for, by job and variant.
std::map<std::string, std::set<std::string>> VariantsOf(const std::vector<Job>& jobs) {
    std::map<std::string, std::set<std::string>> variants;
    for (const Job& job : jobs) {
        const bool isNew = variants[job.name].insert(job.variant).second;
        EXPECT_TRUE(isNew) << job.name << " " << job.variant << " stands twice";
    }
    return variants;
}

TEST(BenchChild, Knows_every_effect_and_step_of_a_build_under_the_names_of_other_programs) {
    const auto variants = VariantsOf(ListJobs(false));
    for (const char* name : {"emboss", "lens-flare", "glass-block", "radial-blur", "gaussian-blur", "obscure",
                             "oil-painting", "zoom-blur", "water-drops", "ripple", "hsb-channels", "raster",
                             "solarize", "motion-blur", "swirl", "implode", "explode"}) {
        ASSERT_EQ(variants.count(name), 1u) << name;
        EXPECT_EQ(variants.at(name).count("default"), 1u) << name;
        EXPECT_EQ(variants.at(name).count("heavy"), 1u) << name;
    }
    for (const char* name : {"bump", "neon", "normalize", "quantize", "remap", "remap-fast", "dither",
                             "dither-fast", "diff", "diff-file", "scaler", "gif-read", "gif-write"})
        EXPECT_EQ(variants.count(name), 1u) << name;
    for (const char* name : {"swirl", "implode", "explode", "ripple"})
        EXPECT_EQ(variants.at(name).count("later"), 1u) << name << " keeps tables";
}

TEST(BenchChild, A_reference_stands_beside_every_effect_and_does_no_other_job) {
    const auto product = VariantsOf(ListJobs(false)), reference = VariantsOf(ListJobs(true));
    for (const auto& [name, variants] : reference) {
        ASSERT_EQ(product.count(name), 1u) << name;
        for (const std::string& variant : variants) EXPECT_EQ(product.at(name).count(variant), 1u) << name;
    }
    for (const Job& job : ListEffectJobs(false)) EXPECT_EQ(reference.count(job.name), 1u) << job.name;
}

class BenchJobs : public testing::TestWithParam<bool> {};

TEST_P(BenchJobs, Every_job_runs_on_a_picture_or_an_animation) {
    const std::vector<Job> jobs = ListJobs(GetParam());
    const test::ShotFile picture(70, 52, 1), animation(20, 14, 3);
    Lines questions = {picture.Question("P"), animation.Question("A")};
    for (size_t i = 0; i < jobs.size(); ++i)
        for (int run = 0; run < 2; ++run)
            questions.push_back("run " + std::to_string(i) + (jobs[i].allFrames ? " A" : " P"));
    const Lines answers = Ask(jobs, questions);
    ASSERT_EQ(answers.size(), questions.size());
    for (size_t i = 2; i < answers.size(); ++i)
        EXPECT_GE(MillisecondsIn(answers[i]), 0) << jobs[(i - 2) / 2].name << ": " << answers[i];
}

INSTANTIATE_TEST_SUITE_P(Product, BenchJobs, testing::Values(false));
INSTANTIATE_TEST_SUITE_P(Reference, BenchJobs, testing::Values(true));

TEST(BenchChild, Measures_the_machine_and_tells_what_bounds_each_effect) {
    const std::vector<Job> jobs = ListJobs(false);
    const test::ShotFile file(64, 48, 1);
    Lines questions = {file.Question("P"), "limits P"};
    for (size_t i = 0; i < jobs.size(); ++i) questions.push_back("bound " + std::to_string(i) + " P");
    const Lines answers = Ask(jobs, questions);
    size_t at = 1;
    for (; at < answers.size() && answers[at] != "end"; ++at) {
        const Lines limit = SplitAtTabs(answers[at]);
        ASSERT_EQ(limit.size(), 3u) << answers[at];
        EXPECT_EQ(limit[0], "limit");
        EXPECT_GT(std::atof(limit[2].c_str()), 0) << answers[at];
    }
    EXPECT_GE(at, 9u);
    const std::set<std::string> without = {"diff-file", "gif-read", "gif-write", "build", "build-dither"};
    ASSERT_EQ(answers.size(), at + 1 + jobs.size());
    for (size_t i = 0; i < jobs.size(); ++i) {
        const std::string& answer = answers[at + 1 + i];
        if (without.count(jobs[i].name)) {
            EXPECT_EQ(answer, "no") << jobs[i].name;
            continue;
        }
        const Lines bound = SplitAtTabs(answer);
        ASSERT_EQ(bound.size(), 3u) << jobs[i].name << ": " << answer;
        EXPECT_GT(std::atof(bound[1].c_str()), 0) << jobs[i].name;
        EXPECT_NE(bound[2], "") << jobs[i].name;
    }
}

}  // namespace
}  // namespace kfx::bench
