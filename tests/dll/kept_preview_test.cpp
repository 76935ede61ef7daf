// SPDX-License-Identifier: MIT
// When the preview is rendered and when the last picture is shown again, and that preview and logo take
// neither the focus nor an erased background.
#include <gtest/gtest.h>

#include "resources/resource_ids.h"
#include "tests/dll/support/memory_ledger.h"
#include "tests/dll/support/refused_imports.h"
#include "tests/dll/support/window_reading.h"
#include "tests/dll/support/window_test.h"
#include "tests/support/animation_blocks.h"
#include "tests/support/pictures.h"

namespace kfx::test {
namespace {

constexpr int kEmboss = 1;
constexpr int kWaterDrops = 18;

std::vector<uint8_t> SomePicture(uint32_t seed) {
    return MakeAnimationBlock({{BytesOf(RandomPicture(150, 90, seed).handle), {}}});
}

class KeptPreview : public SourceWindowTest {
protected:
    KeptPreview() : SourceWindowTest(SomePicture(1), WithConfiguration("MainEffect = 1\n")) {}

    // Whether an action renders: that takes movable memory.
    template <typename Action>
    bool RendersBy(const Action& action) {
        session.Settle();
        RefuseGlobalAllocations(0, 0);
        action();
        session.Settle();
        return CountLedger().allocations > 0;
    }

    // Whether a drawing renders that is larger than the preview's own by so many pixels: with the same size
    // it does not matter that the window may draw it, too. The pixels are then in `drawn`.
    bool Renders(int wider = 0, int higher = 0) {
        RECT area = {};
        GetClientRect(session.Control(IDC_PREVIEW), &area);
        return RendersBy([&] { drawn = session.DrawPreview(area.right + wider, area.bottom + higher); });
    }

    std::vector<COLORREF> drawn;
};

TEST_F(KeptPreview, A_preview_that_was_only_covered_is_shown_again_as_it_was) {
    ASSERT_TRUE(Renders(1)) << "another size";
    ASSERT_TRUE(Renders());
    const std::vector<COLORREF> before = drawn;
    EXPECT_FALSE(Renders());
    EXPECT_EQ(drawn, before);
}

TEST_F(KeptPreview, Every_repaint_that_the_window_asks_for_renders) {
    Renders();
    ASSERT_FALSE(Renders());
    EXPECT_TRUE(RendersBy([&] { session.Scroll(IDC_EMBOSS_RADIUS, SB_LINERIGHT); })) << "a slider";
    EXPECT_TRUE(RendersBy([&] { session.Command(IDC_EMBOSS_RADIUS); }))
        << "a command of a slider that has not moved";
    EXPECT_TRUE(RendersBy([&] { SendMessageA(session.Window(), WM_TIMER, 15, 0); })) << "the update timer";
    EXPECT_FALSE(Renders());
}

TEST_F(KeptPreview, Another_size_effect_value_or_source_is_another_picture) {
    Renders();
    EXPECT_TRUE(Renders(1));
    EXPECT_TRUE(Renders(1, 1));
    EXPECT_TRUE(Renders());
    SetScrollPos(session.Control(IDC_EMBOSS_RADIUS), SB_CTL, 9, FALSE);
    EXPECT_TRUE(Renders()) << "a position";
    SendDlgItemMessageA(session.Window(), IDC_EFFECT, CB_SETCURSEL, kEmboss + 1, 0);
    EXPECT_TRUE(Renders()) << "an effect";
    EXPECT_FALSE(Renders());
    const std::vector<COLORREF> before = drawn;
    host.Serve(SomePicture(2));
    session.Click(IDC_SELECT);
    Renders();
    EXPECT_NE(drawn, before) << "a source";
    EXPECT_FALSE(Renders());
}

TEST_F(KeptPreview, A_picture_that_depends_on_the_moment_is_always_rendered) {
    session.Choose(IDC_EFFECT, kWaterDrops);
    EXPECT_TRUE(Renders());
    EXPECT_TRUE(Renders());
}

TEST_F(KeptPreview, A_source_without_a_picture_is_followed_by_the_prompt) {
    Renders();
    const std::vector<COLORREF> picture = drawn;
    host.Serve(MakeAnimationBlock({}));
    session.Click(IDC_SELECT);
    Renders();
    EXPECT_NE(drawn, picture);
    host.Serve(SomePicture(1));
    session.Click(IDC_SELECT);
    Renders();
    EXPECT_EQ(drawn, picture);
}

TEST(KeptPreviewInOwnWindow, The_last_picture_is_drawn_before_the_next_is_rendered) {
    std::unique_ptr<RefusedImports> imports;
    FakeHost host;
    host.Serve(SomePicture(1));
    SessionOptions options = WithConfiguration("MainEffect = 1\n");
    options.prepareLibrary = [&](HMODULE library) {
        imports = std::make_unique<RefusedImports>(library,
                                                   std::vector<Refusal>{{.function = "SetDIBitsToDevice"}});
    };
    {
        PluginSession session(host, options);
        session.Click(IDC_SELECT);
        const auto drawings = [&] {
            const uint32_t before = imports->CallsTo("SetDIBitsToDevice");
            session.DrawPreview(128, 88);
            return imports->CallsTo("SetDIBitsToDevice") - before;
        };
        EXPECT_EQ(drawings(), 1u) << "the window's own preview has another size";
        EXPECT_EQ(drawings(), 1u) << "shown again";
        SetScrollPos(session.Control(IDC_EMBOSS_RADIUS), SB_CTL, 9, FALSE);
        EXPECT_EQ(drawings(), 2u) << "the last, then the new one";
    }
}

int FocusedControl(const PluginSession& session) {
    GUITHREADINFO info = {};
    info.cbSize = sizeof info;
    GetGUIThreadInfo(GetWindowThreadProcessId(session.Window(), nullptr), &info);
    return GetDlgCtrlID(info.hwndFocus);
}

TEST_F(KeptPreview, A_click_on_preview_or_logo_leaves_the_focus_where_it_is) {
    SendMessageA(session.Window(), WM_NEXTDLGCTL,
                 reinterpret_cast<WPARAM>(session.Control(IDC_EMBOSS_RADIUS)), TRUE);
    session.Settle();
    ASSERT_EQ(FocusedControl(session), IDC_EMBOSS_RADIUS);
    for (const int picture : {IDC_PREVIEW, IDC_LOGO}) {
        for (const UINT down : {WM_LBUTTONDOWN, WM_LBUTTONDBLCLK}) {
            SendMessageA(session.Control(picture), down, MK_LBUTTON, MAKELPARAM(20, 20));
            SendMessageA(session.Control(picture), WM_LBUTTONUP, 0, MAKELPARAM(20, 20));
            session.Settle();
            EXPECT_EQ(FocusedControl(session), IDC_EMBOSS_RADIUS) << picture;
        }
    }
}

TEST_F(KeptPreview, Preview_and_logo_are_not_erased_before_they_are_drawn) {
    for (const int picture : {IDC_PREVIEW, IDC_LOGO}) {
        const std::vector<COLORREF> pixels = Draw(20, 20, [&](HDC dc) {
            const RECT all = {0, 0, 20, 20};
            FillRect(dc, &all, static_cast<HBRUSH>(GetStockObject(BLACK_BRUSH)));
            SendMessageA(session.Control(picture), WM_ERASEBKGND, reinterpret_cast<WPARAM>(dc), 0);
        });
        for (const COLORREF pixel : pixels) ASSERT_EQ(pixel, 0u) << picture;
    }
}

}  // namespace
}  // namespace kfx::test
