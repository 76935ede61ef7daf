// SPDX-License-Identifier: MIT
// Files of every writer on several threads.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <string>

#include "media/animation_writer.h"
#include "media/file_io.h"
#include "tests/media/gif_builder.h"
#include "tests/media/gif_scenes.h"
#include "tests/media/job_threads.h"
#include "tests/media/own_folder.h"
#include "tests/media/reading.h"

namespace kfx {
namespace {

using test::Bytes;
using test::JobThreads;
using test::OwnFolder;
using test::RandomAnimation;

constexpr int32_t kThreads[] = {2, 8};
constexpr size_t kMostFiles = 20;
constexpr int32_t kMadeAhead = 4;  // files of a series that two threads make at a time

// Runs jobs from the last to the first, each by another worker than the one before.
bool RunBackwards(int32_t threads, int32_t count, void* user, RunOneJob job) {
    for (int32_t i = count; i-- > 0;)
        if (!job(user, i, i % threads)) return false;
    return true;
}

std::vector<JobRunner> Runners() {
    std::vector<JobRunner> runners = {{.threads = 3, .run = RunBackwards}};
    for (const int32_t threads : kThreads) runners.push_back(JobThreads(threads));
    return runners;
}

struct NamedGif {
    std::string name;
    GifAnimation gif;
};

std::vector<NamedGif> Gifs() {
    std::vector<NamedGif> gifs;
    for (const test::GifScene& scene : test::kGifScenes) gifs.push_back({scene.name, scene.make(41, 33, 5)});
    gifs.push_back({"one frame", test::kGifScenes[0].make(41, 33, 1)});
    gifs.push_back({"two frames", test::kGifScenes[0].make(60, 50, 2)});
    gifs.push_back({"hundreds of small frames", test::kGifScenes[0].make(8, 6, 300)});
    gifs.push_back({"large enough for samples", test::kGifScenes[0].make(130, 100, 3)});
    return gifs;
}

struct NamedAnimation {
    std::string name;
    Animation animation;
};

// Frames with one and several palettes, without a palette, opaque, transparent and half transparent.
std::vector<NamedAnimation> Animations() {
    std::vector<NamedAnimation> animations;
    for (const NamedGif& named : Gifs()) {
        Bytes file;
        std::string error;
        EXPECT_TRUE(EncodeGif(named.gif, &file, &error)) << error;
        animations.push_back({named.name, test::ReadOrFail(file)});
    }
    animations.push_back({"opaque noise", RandomAnimation(19, 13, 11, 11, false)});
    animations.push_back({"transparent noise", RandomAnimation(19, 13, 11, 12, true)});
    return animations;
}

TEST(WriterJobs, A_GIF_has_the_same_bytes_on_any_number_of_threads) {
    for (const NamedGif& named : Gifs()) {
        for (const int lossy : {0, 40}) {
            Bytes expected, found;
            std::string error;
            ASSERT_TRUE(EncodeGif(named.gif, &expected, &error, {.lossy = lossy})) << error;
            for (const JobRunner& runner : Runners()) {
                ASSERT_TRUE(EncodeGif(named.gif, &found, &error, {.lossy = lossy, .jobs = runner})) << error;
                EXPECT_TRUE(found == expected) << named.name << ", lossy " << lossy << ", " << runner.threads;
            }
        }
    }
}

TEST(WriterJobs, An_APNG_has_the_same_bytes_on_any_number_of_threads) {
    for (const NamedAnimation& named : Animations()) {
        Bytes expected, found;
        std::string error;
        ASSERT_TRUE(EncodeApng(named.animation, &expected, &error)) << error;
        for (const JobRunner& runner : Runners()) {
            ASSERT_TRUE(EncodeApng(named.animation, &found, &error, {.jobs = runner})) << error;
            EXPECT_TRUE(found == expected) << named.name << ", " << runner.threads;
        }
    }
}

// The files of a series, one after the other.
std::vector<Bytes> Series(const std::string& path, const Animation& animation, const JobRunner& jobs) {
    std::string error;
    const auto recipeOf = [](size_t frame) { return "recipe " + std::to_string(frame); };
    EXPECT_TRUE(WritePngFrames(path, animation, &error, recipeOf, {.jobs = jobs})) << error;
    std::vector<Bytes> files;
    for (const std::string& name : PngFramePaths(path, animation.frames.size())) {
        EXPECT_TRUE(ReadWholeFile(name, &files.emplace_back(), &error)) << error;
        std::filesystem::remove(name);
    }
    return files;
}

TEST(WriterJobs, A_series_of_PNG_files_has_the_same_bytes_on_any_number_of_threads) {
    const OwnFolder folder;
    const std::string path = folder.File("series.png");
    for (const NamedAnimation& named : Animations()) {
        if (named.animation.frames.size() > kMostFiles) continue;  // making files takes time
        const std::vector<Bytes> expected = Series(path, named.animation, JobRunner());
        for (const JobRunner& runner : Runners())
            EXPECT_TRUE(Series(path, named.animation, runner) == expected)
                << named.name << ", " << runner.threads;
    }
    EXPECT_TRUE(std::filesystem::is_empty(folder.path));
}

// Gives up at one of the jobs, as a program does that has no memory for it.
int32_t failingJob = 0;

bool RunUntilFailure(int32_t, int32_t count, void* user, RunOneJob job) {
    for (int32_t i = 0; i < count; ++i)
        if (i == failingJob || !job(user, i, 0)) return false;
    return true;
}

TEST(WriterJobs, A_job_that_fails_leaves_no_file) {
    const JobRunner runner = {.threads = 2, .run = RunUntilFailure};
    const GifAnimation gif = test::kGifScenes[0].make(30, 20, 5);
    const Animation animation = RandomAnimation(30, 20, 5, 3, true);
    const OwnFolder folder;
    const std::string path = folder.File("series.png");
    for (failingJob = 0; failingJob < 5; ++failingJob) {
        Bytes file;
        std::string error;
        EXPECT_FALSE(EncodeGif(gif, &file, &error, {.jobs = runner}));
        EXPECT_EQ(error, "there is not enough memory to write the GIF file");
        EXPECT_TRUE(file.empty());
        EXPECT_FALSE(EncodeApng(animation, &file, &error, {.jobs = runner}));
        EXPECT_EQ(error, "there is not enough memory to write the PNG file");
        EXPECT_TRUE(file.empty());
        EXPECT_FALSE(EncodeWebp(animation, &file, &error, {.jobs = runner}));
        EXPECT_EQ(error, "there is not enough memory to write the WebP file");
        EXPECT_TRUE(file.empty());
        if (failingJob >= kMadeAhead) continue;
        EXPECT_FALSE(WritePngFrames(path, animation, &error, nullptr, {.jobs = runner}));
        EXPECT_THAT(error, ::testing::EndsWith(": there is not enough memory to write the PNG file."));
        EXPECT_TRUE(std::filesystem::is_empty(folder.path));
    }
}

}  // namespace
}  // namespace kfx
