// SPDX-License-Identifier: MIT
// What the preview shows, drawn into a bitmap of a chosen size instead of the screen.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <memory>

#include "kernels/scaler.h"
#include "resources/resource_ids.h"
#include "tests/dll/support/memory_ledger.h"
#include "tests/dll/support/window_reading.h"
#include "tests/dll/support/window_test.h"
#include "tests/support/animation_blocks.h"
#include "tests/support/pictures.h"

namespace kfx::test {
namespace {

constexpr int kInset = 4;
constexpr char kPrompt[] =
    "No source animation has been selected.\n\n"
    "Click on the Select button near the right edge of the plugin window to begin.";

// HSB and Channels with everything off leaves the picture as it is.
const char kUnchanged[] = "MainEffect = 5\nStyle010HSBEnable = 0\n";

std::vector<uint8_t> SourceOf(const Picture& picture) {
    return MakeAnimationBlock({{BytesOf(picture.handle), {}}});
}

// The colours of a drawing that is `width` pixels wide.
struct Drawing {
    std::vector<COLORREF> pixels;
    int width;
    COLORREF At(int x, int y) const {
        return pixels[static_cast<size_t>(y) * static_cast<size_t>(width) + static_cast<size_t>(x)];
    }
};

Drawing DrawPreview(PluginSession& session, int width, int height) {
    return {session.DrawPreview(width, height), width};
}

// Expects the picture's pixels with its left upper corner at (left, top).
void ExpectPictureAt(const Drawing& drawing, ImageHandle picture, int left, int top) {
    const ImageLock lock(picture);
    ASSERT_TRUE(lock.image);
    for (int y = 0; y < lock.image->height; ++y)
        for (int x = 0; x < lock.image->width; ++x)
            ASSERT_EQ(drawing.At(left + x, top + y), GetDibPixel(lock.image, x, y)) << x << ", " << y;
}

// The prompt as the system draws it.
std::vector<COLORREF> DrawPrompt(int width, int height) {
    return Draw(width, height, [=](HDC dc) {
        RECT area = {0, 0, width, height};
        FillRect(dc, &area, GetSysColorBrush(COLOR_BTNFACE));
        FrameRect(dc, &area, GetSysColorBrush(COLOR_3DDKSHADOW));
        const HFONT font =
            CreateFontA(24, 0, 0, 0, 700, FALSE, FALSE, FALSE, DEFAULT_CHARSET, OUT_DEFAULT_PRECIS,
                        CLIP_DEFAULT_PRECIS, DEFAULT_QUALITY, DEFAULT_PITCH | FF_ROMAN, "Times New Roman");
        const HGDIOBJ before = SelectObject(dc, font);
        SetTextColor(dc, GetSysColor(COLOR_3DDKSHADOW));
        SetBkMode(dc, TRANSPARENT);
        InflateRect(&area, -8, -24);
        DrawTextA(dc, kPrompt, -1, &area, DT_CENTER | DT_WORDBREAK | DT_NOPREFIX);
        SelectObject(dc, before);
        DeleteObject(font);
    });
}

// All but the outermost pixels and their neighbours, where clipping may leave the area's frame.
void ExpectPrompt(PluginSession& session) {
    const Drawing drawing = DrawPreview(session, 300, 220);
    const Drawing expected = {DrawPrompt(300, 220), 300};
    int differing = 0;
    for (int y = kInset; y < 220 - kInset; ++y)
        for (int x = kInset; x < 300 - kInset; ++x) differing += drawing.At(x, y) != expected.At(x, y);
    EXPECT_EQ(differing, 0);
    // The text is really there.
    int dark = 0;
    for (const COLORREF pixel : expected.pixels) dark += pixel == GetSysColor(COLOR_3DDKSHADOW);
    EXPECT_GT(dark, 500);
}

TEST(Preview, Prompts_for_a_source_while_there_is_none) {
    FakeHost host;
    PluginSession session(host);
    ExpectPrompt(session);
}

TEST(Preview, Prompts_also_when_the_source_has_no_picture) {
    FakeHost host;
    host.Serve(MakeAnimationBlock({}));
    PluginSession session(host);
    session.Click(IDC_SELECT);
    ExpectPrompt(session);
}

// One window shows all pictures in turn: each takes the place of the one before.
class PreviewOfPicture : public testing::Test {
protected:
    static void SetUpTestSuite() {
        host = std::make_unique<FakeHost>();
        session = std::make_unique<PluginSession>(*host, WithConfiguration(kUnchanged));
    }
    static void TearDownTestSuite() {
        session.reset();
        host.reset();
    }

    // The preview area of 128 x 88 pixels, once the picture has been selected.
    static Drawing DrawWith(const Picture& picture) {
        host->Serve(SourceOf(picture));
        session->Click(IDC_SELECT);
        return DrawPreview(*session, 128, 88);
    }

    static inline std::unique_ptr<FakeHost> host;
    static inline std::unique_ptr<PluginSession> session;
};

TEST_F(PreviewOfPicture, A_picture_of_exactly_the_inner_size_is_drawn_as_it_is_at_the_inner_corner) {
    const Picture picture = RandomPicture(120, 80, 3);
    const Drawing drawing = DrawWith(picture);
    ExpectPictureAt(drawing, picture.handle, kInset, kInset);
    EXPECT_EQ(drawing.At(0, 0), GetSysColor(COLOR_BTNSHADOW));
    EXPECT_EQ(drawing.At(127, 87), GetSysColor(COLOR_BTNSHADOW));
}

TEST_F(PreviewOfPicture, A_smaller_picture_is_centred_and_never_enlarged) {
    const Picture picture = RandomPicture(21, 11, 3);
    const Drawing drawing = DrawWith(picture);
    const int left = kInset + (120 - 21) / 2, top = kInset + (80 - 11) / 2;
    ExpectPictureAt(drawing, picture.handle, left, top);
    for (const auto& [x, y] :
         {std::pair{left - 1, top}, {left + 21, top}, {left, top - 1}, {left, top + 11}, {5, 5}})
        EXPECT_EQ(drawing.At(x, y), GetSysColor(COLOR_BTNFACE)) << x << ", " << y;
}

TEST_F(PreviewOfPicture, A_picture_too_wide_is_scaled_by_the_percentage_that_fits) {
    const Picture picture = RandomPicture(300, 50, 3);
    const Drawing drawing = DrawWith(picture);
    const Picture scaled(ScaleByPercentage(picture.handle, 40, 40));  // 120 x 100 / 300
    ExpectPictureAt(drawing, scaled.handle, kInset, kInset + (80 - 20) / 2);
}

TEST_F(PreviewOfPicture, A_picture_too_large_both_ways_takes_the_smaller_percentage) {
    const Picture picture = RandomPicture(240, 400, 3);
    const Drawing drawing = DrawWith(picture);
    const Picture scaled(ScaleByPercentage(picture.handle, 20, 20));  // 50 across, 20 down
    ExpectPictureAt(drawing, scaled.handle, kInset + (120 - 48) / 2, kInset);
}

TEST(Preview, The_key_line_frames_the_picture_in_light_grey) {
    FakeHost host;
    const Picture picture = FlatPicture(20, 10, 0x0000FF);
    host.Serve(SourceOf(picture));
    PluginSession session(host, WithConfiguration(std::string(kUnchanged) + "SampleWindowKeyLine = 1\n"));
    session.Click(IDC_SELECT);
    const Drawing drawing = DrawPreview(session, 128, 88);
    const int left = kInset + 50, top = kInset + 35;
    constexpr COLORREF kLightGrey = RGB(192, 192, 192);
    for (int x = left - 1; x <= left + 20; ++x) {
        ASSERT_EQ(drawing.At(x, top - 1), kLightGrey) << x;
        ASSERT_EQ(drawing.At(x, top + 10), kLightGrey) << x;
    }
    EXPECT_EQ(drawing.At(left - 1, top + 5), kLightGrey);
    EXPECT_EQ(drawing.At(left + 20, top + 5), kLightGrey);
    EXPECT_EQ(drawing.At(left, top), 0x0000FFu);
}

TEST(Preview, Shows_the_current_effect_with_its_current_settings) {
    FakeHost host;
    const Picture picture = FlatPicture(120, 80, 0x102030);
    host.Serve(SourceOf(picture));
    PluginSession session(host, WithConfiguration(kUnchanged));
    session.Click(IDC_SELECT);
    session.Click(IDC_HSB_INVERT);
    ExpectPictureAt(DrawPreview(session, 128, 88), FlatPicture(120, 80, 0xEFDFCF).handle, kInset, kInset);
}

// A percentage of 0 leaves one pixel of a side.
TEST(PreviewOfHugePictures, Has_the_colour_of_a_small_one_with_more_than_a_hundred_times_the_area) {
    FakeHost host;
    PluginSession session(host, WithConfiguration("MainEffect = 16\n"));
    constexpr int kWidth = 91, kHeight = 71;
    const auto middle = [&](const Size& size) {
        host.Serve(MakeAnimationBlock({{BytesOf(FlatPicture(size.width, size.height, 0x4080C0).handle)}}));
        session.Click(IDC_SELECT);
        return session.DrawPreview(kWidth, kHeight)[kHeight / 2 * kWidth + kWidth / 2];
    };
    const COLORREF color = middle({21, 21});
    for (const Size& size : {Size{30000, 40}, {40, 30000}, {4000, 3000}, {32767, 1}, {1, 32767}}) {
        EXPECT_EQ(middle(size), color) << size.width << "x" << size.height;
        EXPECT_EQ(CountLedger().liveBlocks, 1u);
    }
    EXPECT_TRUE(session.Messages().empty());
}

// Rendering and scaling when memory is refused: something is drawn, nothing leaks.
TEST(Preview, Any_refused_allocation_leaves_no_leak) {
    FakeHost host;
    host.Serve(SourceOf(RandomPicture(200, 100, 3, 8)));
    PluginSession session(host, WithConfiguration("MainEffect = 1\n"));
    session.Click(IDC_SELECT);
    DrawPreview(session, 128, 88);
    for (size_t number = 1; number < 100; ++number) {
        session.Command(IDC_EMBOSS_RADIUS);  // as if the slider had moved: the picture is rendered anew
        RefuseGlobalAllocations(number, number);
        DrawPreview(session, 128, 88);
        const bool refused = CountLedger().allocations >= number;
        RefuseGlobalAllocations(0, 0);
        ASSERT_EQ(CountLedger().liveBlocks, 1u) << number;
        ASSERT_EQ(CountLedger().lockedBlocks, 0u) << number;
        if (!refused) return;
    }
    ADD_FAILURE() << "drawing never needs fewer allocations";
}

}  // namespace
}  // namespace kfx::test
