// SPDX-License-Identifier: MIT
// Stage is ended by force while it saves over a file: the file is the old one or the whole new one, and the
// next Stage opens it and saves over it.
#include "tests/stage/stage_program.h"

#include <filesystem>

#include "media/file_io.h"
#include "media/utf8_path.h"
#include "tests/support/tried.h"

namespace kfx::test {
namespace {

using namespace stage;

constexpr int kFrames = 100;

// A save whose moment is missed is tried again, so many times in all.
constexpr int kMostTries = 30;

// A file that another program shows: until it is closed, no other one gets its name.
struct ShownFile {
    explicit ShownFile(const std::string& path)
        : handle(CreateFileW(PathOf(path).c_str(), GENERIC_READ, FILE_SHARE_READ | FILE_SHARE_WRITE, nullptr,
                             OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr)) {}
    ~ShownFile() {
        if (handle != INVALID_HANDLE_VALUE) CloseHandle(handle);
    }
    ShownFile(const ShownFile&) = delete;
    ShownFile& operator=(const ShownFile&) = delete;

    const HANDLE handle;
};

// 0: there is none at this moment.
uintmax_t SizeOf(const std::string& path) {
    std::error_code failure;
    const uintmax_t size = std::filesystem::file_size(PathOf(path), failure);
    return failure ? 0 : size;
}

struct KilledStage : StageWindow {
    // Stage itself asks about a file whose ending it adds.
    const std::string typed = folder.path + "saved.jpg", output = typed + ".gif";
    std::string old, whole;

    void SetUp() override { WriteTestGif(input, kFrames); }

    // Up to the moment at which the new file's name has been given.
    void SaveOver() {
        ASSERT_NO_FATAL_FAILURE(Open({input}));
        ASSERT_TRUE(WaitForTitle("in.gif - Kestrel Stage"));
        ASSERT_NO_FATAL_FAILURE(Build("Solarize"));
        Run(kSave);
        ASSERT_NO_FATAL_FAILURE(ChooseFile(typed));
        ASSERT_NO_FATAL_FAILURE(AnswerMessage(IDYES));
    }

    // Files that Stage writes before they get their names.
    std::vector<std::string> Parts() const {
        std::vector<std::string> names = FilesIn(folder.path);
        std::erase_if(
            names, [](const std::string& name) { return name.find(kTemporaryEnding) == std::string::npos; });
        return names;
    }

    // Whether the new file is there in part, has got its name, or was refused it. Stage is at work on these
    // files, so that nothing may be asked of them that can fail.
    bool HasWritten() const {
        std::error_code ignored;
        return std::filesystem::exists(PathOf(output + kTemporaryEnding), ignored) ||
               SizeOf(output) == whole.size() || DialogOf(stage.processId, "Kestrel Stage") != nullptr;
    }

    // Saves over the old file and ends Stage: at once, or when it has begun to write.
    void EndWhileSaving(bool isWaitedFor) {
        ASSERT_NO_FATAL_FAILURE(SaveOver());
        if (isWaitedFor) {
            ASSERT_TRUE(WaitFor([this] { return HasWritten(); }));
        }
        EndProgram(&stage);
        AddTried("kills of Stage");
    }

    void Restore() const {
        for (const std::string& part : Parts()) DeleteFileAt(folder.path + part);
        WriteText(output, old);
    }
};

TEST_F(KilledStage, While_it_saves_leaves_the_old_file_or_the_new_one) {
    WriteTestGif(output, 2);
    old = ReadText(output);
    ASSERT_NO_FATAL_FAILURE(SaveOver());
    ASSERT_TRUE(WaitForText(kStatusText, "Saved saved.jpg.gif"));
    whole = ReadText(output);
    ASSERT_NE(whole.size(), old.size());
    ASSERT_NO_FATAL_FAILURE(Close(false));

    for (const bool isWaitedFor : {false, true}) {
        Restore();
        ASSERT_NO_FATAL_FAILURE(EndWhileSaving(isWaitedFor));
        const std::string content = ReadText(output);
        EXPECT_TRUE(content == old || content == whole);
    }
    // It may have been too late for both. While the old file is shown elsewhere, Stage tries for a second to
    // give the new one its name.
    for (int i = 0; i < kMostTries && (i == 0 || Parts().empty()); ++i) {
        Restore();
        {
            const ShownFile shown(output);
            ASSERT_NE(shown.handle, INVALID_HANDLE_VALUE);
            ASSERT_NO_FATAL_FAILURE(EndWhileSaving(true));
        }
        EXPECT_TRUE(ReadText(output) == old);
    }
    ASSERT_FALSE(Parts().empty()) << "none was ended while it wrote";

    ASSERT_NO_FATAL_FAILURE(SaveOver());
    ASSERT_TRUE(WaitForText(kStatusText, "Saved saved.jpg.gif"));
    EXPECT_TRUE(ReadText(output) == whole);
    EXPECT_TRUE(Parts().empty()) << "what the ended one left is gone";
    ASSERT_NO_FATAL_FAILURE(Close(false));
}

}  // namespace
}  // namespace kfx::test
