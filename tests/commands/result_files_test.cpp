// SPDX-License-Identifier: MIT
#include "commands/result_files.h"

#include <gtest/gtest.h>

#include "tests/cli/test_files.h"

namespace kfx::commands {
namespace {

using test::FileExists;
using test::FilesIn;
using test::ReadText;
using test::TemporaryFolder;
using test::WriteText;

using Names = std::vector<std::string>;

struct ResultFiles : ::testing::Test {
    const TemporaryFolder folder;
    std::string error;

    // Frames of one palette colour each.
    static BuiltAnimation Built(size_t frames) {
        BuiltAnimation built;
        built.width = 2;
        built.height = 2;
        built.palette = {{0, 0, 0}, {255, 0, 0}, {0, 255, 0}, {0, 0, 255}};
        for (size_t i = 0; i < frames; ++i) {
            BuiltFrame frame;
            frame.indexed = true;
            frame.pixels.assign(4, static_cast<uint8_t>(i));
            frame.palette = built.palette;
            frame.sourceIndex = i;
            built.frames.push_back(frame);
        }
        built.complete = true;
        return built;
    }

    static SourceRecord Source(size_t frames, int delay) {
        SourceRecord source;
        source.width = 2;
        source.height = 2;
        source.frames.resize(frames);
        for (auto& frame : source.frames) frame.delay = delay;
        return source;
    }

    bool Write(const std::string& name, size_t frames, int delay, WrittenResult* written) {
        return WriteResult(folder.path + name, Built(frames), Source(frames, delay), ResultOptions(), written,
                           &error);
    }
};

TEST_F(ResultFiles, Only_several_frames_as_png_are_several_files) {
    EXPECT_EQ(ResultPaths("a/out.gif", 3), Names{"a/out.gif"});
    EXPECT_EQ(ResultPaths("a/out.webp", 3), Names{"a/out.webp"});
    EXPECT_EQ(ResultPaths("a/out.png", 1), Names{"a/out.png"});
    EXPECT_EQ(ResultPaths("a/out.png", 2), (Names{"a/out-000.png", "a/out-001.png"}));
}

TEST_F(ResultFiles, One_file_of_a_series_that_exists_keeps_all_from_being_written) {
    const Names files = {folder.path + "out-000.png", folder.path + "out-001.png"};
    EXPECT_TRUE(MayWriteResult(files, {}, false, &error)) << error;
    WriteText(files[1], "mine");
    EXPECT_FALSE(MayWriteResult(files, {}, false, &error));
    EXPECT_EQ(error, files[1] + ": the file exists; use --force to replace it.");
    EXPECT_TRUE(MayWriteResult(files, {}, true, &error)) << error;
}

TEST_F(ResultFiles, An_input_is_never_replaced) {
    const std::string input = folder.path + "in.gif";
    WriteText(input, "mine");
    EXPECT_FALSE(MayWriteResult({folder.path + "./in.gif"}, {input}, true, &error));
    EXPECT_EQ(error,
              folder.path + "./in.gif: the result cannot replace its own source; choose another name.");
}

TEST_F(ResultFiles, The_bytes_are_those_of_all_files) {
    WrittenResult written;
    ASSERT_TRUE(Write("out.png", 3, 10, &written)) << error;
    ASSERT_EQ(written.files.size(), 3u);
    uint64_t bytes = 0;
    for (const std::string& file : written.files) bytes += ReadText(file).size();
    EXPECT_EQ(written.bytes, bytes);
    EXPECT_EQ(FilesIn(folder.path), (Names{"out-000.png", "out-001.png", "out-002.png"}));
}

TEST_F(ResultFiles, Times_that_viewers_lengthen_are_noted) {
    WrittenResult written;
    ASSERT_TRUE(Write("slow.gif", 2, 10, &written)) << error;
    EXPECT_EQ(written.note, "");
    ASSERT_TRUE(Write("fast.gif", 2, 1, &written)) << error;
    EXPECT_NE(written.note, "");
    ASSERT_TRUE(Write("fast.webp", 2, 1, &written)) << error;
    EXPECT_NE(written.note, "");
}

TEST_F(ResultFiles, A_folder_that_does_not_exist_is_named_as_the_user_wrote_it) {
    WrittenResult written;
    EXPECT_FALSE(Write("none/out.gif", 1, 10, &written));
    EXPECT_EQ(error.find(folder.path + "none/out.gif: the file cannot be written"), 0u) << error;
    EXPECT_FALSE(FileExists(folder.path + "none"));
}

}  // namespace
}  // namespace kfx::commands
