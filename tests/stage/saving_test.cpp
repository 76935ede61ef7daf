// SPDX-License-Identifier: MIT
// What comes out of Stage: files, frames, the clipboard.
#include "tests/stage/stage_program.h"

namespace kfx::test {
namespace {

using namespace stage;

struct Saving : StageWindow {
    std::string output = folder.path + "saved.gif";

    void OpenAndBuild() {
        ASSERT_NO_FATAL_FAILURE(Open({input}));
        ASSERT_TRUE(WaitForTitle("in.gif - Kestrel Stage"));
        ASSERT_NO_FATAL_FAILURE(Build("Solarize"));
    }
};

TEST_F(Saving, A_saved_result_is_no_unsaved_work) {
    ASSERT_NO_FATAL_FAILURE(OpenAndBuild());
    EXPECT_TRUE(WaitForTitle("*in.gif - Kestrel Stage"));
    Run(kSave);
    ASSERT_NO_FATAL_FAILURE(ChooseFile(output));
    EXPECT_TRUE(WaitForText(kStatusText, "Saved saved.gif"));
    EXPECT_TRUE(WaitForTitle("in.gif - Kestrel Stage"));
    EXPECT_EQ(ReadBack(output).frames.size(), 3u);
    ASSERT_NO_FATAL_FAILURE(Close(false));
}

TEST_F(Saving, A_file_whose_ending_is_added_is_asked_about_before_it_is_replaced) {
    const std::string kept = folder.path + "saved.jpg.gif", typed = folder.path + "saved.jpg";
    WriteText(kept, "kept");
    ASSERT_NO_FATAL_FAILURE(OpenAndBuild());
    Run(kSave);
    ASSERT_NO_FATAL_FAILURE(ChooseFile(typed));
    ASSERT_NO_FATAL_FAILURE(AnswerMessage(IDNO));
    EXPECT_EQ(ReadText(kept), "kept");
    ASSERT_NO_FATAL_FAILURE(ChooseFile(typed));
    ASSERT_NO_FATAL_FAILURE(AnswerMessage(IDYES));
    EXPECT_TRUE(WaitForText(kStatusText, "Saved saved.jpg.gif"));
    EXPECT_EQ(ReadBack(kept).frames.size(), 3u);
    ASSERT_NO_FATAL_FAILURE(Close(false));
}

// The system's dialog would not take the name of a write-protected file on Windows: the ending is added to
// it.
TEST_F(Saving, A_write_protected_file_is_told_and_stays) {
    const std::string kept = folder.path + "saved.jpg.gif", typed = folder.path + "saved.jpg";
    WriteText(kept, "kept");
    ASSERT_TRUE(SetFileAttributesA(kept.c_str(), FILE_ATTRIBUTE_READONLY));
    ASSERT_NO_FATAL_FAILURE(OpenAndBuild());
    Run(kSave);
    ASSERT_NO_FATAL_FAILURE(ChooseFile(typed));
    ASSERT_NO_FATAL_FAILURE(AnswerMessage(IDYES));
    EXPECT_EQ(MessageText(), kept + ": is write-protected.");
    ASSERT_NO_FATAL_FAILURE(AnswerMessage(IDOK));
    EXPECT_EQ(ReadText(kept), "kept");
    EXPECT_TRUE(WaitForTitle("*in.gif - Kestrel Stage")) << "still unsaved";
    EXPECT_TRUE(SetFileAttributesA(kept.c_str(), FILE_ATTRIBUTE_NORMAL));
    ASSERT_NO_FATAL_FAILURE(Close(true));
}

TEST_F(Saving, Unsaved_work_can_be_saved_when_the_window_closes) {
    ASSERT_NO_FATAL_FAILURE(OpenAndBuild());
    PostMessageA(window, WM_CLOSE, 0, 0);
    HWND box = nullptr;
    ASSERT_NO_FATAL_FAILURE(WaitForDialog("Kestrel Stage", &box));
    PostMessageA(box, WM_COMMAND, IDYES, 0);
    ASSERT_NO_FATAL_FAILURE(ChooseFile(output));
    EXPECT_EQ(WaitForEnd(&this->stage), 0);
    EXPECT_EQ(ReadBack(output).frames.size(), 3u);
}

TEST_F(Saving, The_frames_are_exported_as_numbered_files) {
    ASSERT_NO_FATAL_FAILURE(Open({input}));
    ASSERT_TRUE(WaitForTitle("in.gif - Kestrel Stage"));
    Run(kExportFrames);
    ASSERT_NO_FATAL_FAILURE(ChooseFile(folder.path + "frame.png"));
    EXPECT_TRUE(WaitForText(kStatusText, "Exported frame-000.png to frame-002.png"));
    EXPECT_TRUE(FileExists(folder.path + "frame-002.png"));
    ASSERT_NO_FATAL_FAILURE(Close(false));
}

TEST_F(Saving, A_copied_frame_is_on_the_clipboard_with_its_alpha_and_as_png) {
    WriteTestGif(input, 2, true);
    ASSERT_NO_FATAL_FAILURE(Open({input}));
    ASSERT_TRUE(WaitForTitle("in.gif - Kestrel Stage"));
    Run(kFirstFrame);
    Run(kCopyFrame);
    ASSERT_TRUE(WaitForText(kStatusText, "Copied frame 1"));
    ASSERT_TRUE(WaitFor([] { return OpenClipboard(nullptr) != 0; }));
    const HANDLE bitmap = GetClipboardData(CF_DIBV5);
    ASSERT_NE(bitmap, nullptr);
    const auto* header = static_cast<const BITMAPV5HEADER*>(GlobalLock(bitmap));
    EXPECT_EQ(header->bV5Width, kTestWidth);
    EXPECT_EQ(header->bV5Height, kTestHeight);
    const auto* rows = reinterpret_cast<const uint8_t*>(header) + header->bV5Size;
    const Frame frame = ReadBack(input).frames[0];
    // The last row of the picture comes first.
    const size_t last = 4 * static_cast<size_t>(kTestWidth) * (kTestHeight - 1);
    for (size_t x = 0; x < 4 * static_cast<size_t>(kTestWidth); x += 4) {
        ASSERT_EQ(rows[x + 3], frame.pixels[last + x + 3]) << x;
        ASSERT_EQ(rows[x], frame.pixels[last + x + 2]) << x;
    }
    GlobalUnlock(bitmap);
    EXPECT_NE(GetClipboardData(RegisterClipboardFormatA("PNG")), nullptr);
    CloseClipboard();
    ASSERT_NO_FATAL_FAILURE(Close(false));
}

}  // namespace
}  // namespace kfx::test
