// SPDX-License-Identifier: MIT
// Stage is ended by force while it saves over a file: the file is the old one or the whole new one, and the
// next Stage opens it and saves over it.
#include "tests/stage/stage_program.h"

#include <algorithm>

#include "tests/support/tried.h"

namespace kfx::test {
namespace {

using namespace stage;

constexpr int kFrames = 100;

struct KilledStage : StageWindow {
    // Stage itself asks about a file whose ending it adds.
    const std::string typed = folder.path + "saved.jpg", output = typed + ".gif";

    void SetUp() override { WriteTestGif(input, kFrames); }

    // Up to the moment at which the new file's name has been given.
    void SaveOver() {
        ASSERT_NO_FATAL_FAILURE(Open({input}));
        ASSERT_TRUE(WaitForTitle("in.gif - Kestrel Stage"));
        ASSERT_NO_FATAL_FAILURE(Build("Solarize"));
        Run(kSave);
        ASSERT_NO_FATAL_FAILURE(ChooseFile("Save As", typed));
        ASSERT_NO_FATAL_FAILURE(AnswerMessage(IDYES));
    }

    // Files that Stage writes before they get their names.
    bool IsWriting() const {
        const std::vector<std::string> names = FilesIn(folder.path);
        return std::any_of(names.begin(), names.end(), [](const std::string& name) {
            return name.find(".kestrel-part") != std::string::npos;
        });
    }
};

TEST_F(KilledStage, While_it_saves_leaves_the_old_file_or_the_new_one) {
    WriteTestGif(output, 2);
    const std::string old = ReadText(output);
    ASSERT_NO_FATAL_FAILURE(SaveOver());
    ASSERT_TRUE(WaitForText(kStatusText, "Saved saved.jpg.gif"));
    const std::string whole = ReadText(output);
    ASSERT_NE(whole, old);
    ASSERT_NO_FATAL_FAILURE(Close(false));

    for (const bool whileWriting : {false, true, true}) {
        WriteText(output, old);
        ASSERT_NO_FATAL_FAILURE(SaveOver());
        // Either at once, or when its new file is there; it may have got its name by then.
        if (whileWriting) WaitFor([&] { return IsWriting() || ReadText(output) != old; });
        EndProgram(&stage);
        const std::string content = ReadText(output);
        EXPECT_TRUE(content == old || content == whole);
        AddTried("kills of Stage");
    }
    ASSERT_NO_FATAL_FAILURE(SaveOver());
    ASSERT_TRUE(WaitForText(kStatusText, "Saved saved.jpg.gif"));
    EXPECT_TRUE(ReadText(output) == whole);
    EXPECT_FALSE(IsWriting()) << "what the ended ones left is gone";
    ASSERT_NO_FATAL_FAILURE(Close(false));
}

}  // namespace
}  // namespace kfx::test
