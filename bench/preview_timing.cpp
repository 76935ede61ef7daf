// SPDX-License-Identifier: MIT
// How long the plug-in's window takes to show what a setting does: from the message that asks for the preview
// until it is drawn, with every effect at its built-in settings. The real DLL and its window, Windows only.
//
//     preview_timing WIDTH HEIGHT [MILLISECONDS]
//
// The animation is one picture of that size. For each effect a line: its name, a tab, and the least
// milliseconds of runs that took so long together (200) and were at least three.
#include <windows.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <limits>
#include <string>
#include <vector>

#include "bench/bench_picture.h"
#include "framework/memory_guards.h"
#include "resources/resource_ids.h"
#include "tests/dll/support/plugin_session.h"
#include "tests/support/animation_blocks.h"
#include "tests/support/pictures.h"

namespace kfx::bench {
namespace {

constexpr int kLeastRuns = 3;

// A bitmap to draw into, a little wider than the preview.
struct Canvas {
    Canvas(int width, int height) : dc(CreateCompatibleDC(nullptr)) {
        BITMAPINFO info = {};
        info.bmiHeader.biSize = sizeof info.bmiHeader;
        info.bmiHeader.biWidth = width;
        info.bmiHeader.biHeight = height;
        info.bmiHeader.biPlanes = 1;
        info.bmiHeader.biBitCount = 32;
        void* pixels;
        bitmap = CreateDIBSection(dc, &info, DIB_RGB_COLORS, &pixels, nullptr, 0);
        earlier = SelectObject(dc, bitmap);
    }
    ~Canvas() {
        SelectObject(dc, earlier);
        DeleteObject(bitmap);
        DeleteDC(dc);
    }
    Canvas(const Canvas&) = delete;
    Canvas& operator=(const Canvas&) = delete;

    const HDC dc;
    HBITMAP bitmap;
    HGDIOBJ earlier;
};

// Milliseconds that the window takes to draw its preview with this size.
double DrawOnce(const test::PluginSession& session, const Canvas& canvas, const RECT& area) {
    DRAWITEMSTRUCT item = {};
    item.CtlType = ODT_BUTTON;
    item.CtlID = IDC_PREVIEW;
    item.itemAction = ODA_DRAWENTIRE;
    item.hwndItem = session.Control(IDC_PREVIEW);
    item.hDC = canvas.dc;
    item.rcItem = area;
    const auto start = std::chrono::steady_clock::now();
    SendMessageA(session.Window(), WM_DRAWITEM, item.CtlID, reinterpret_cast<LPARAM>(&item));
    return std::chrono::duration<double, std::milli>(std::chrono::steady_clock::now() - start).count();
}

// The least of some times. What was drawn last is kept and shown again for the same size: with two sizes in
// turn, which are one and two columns wider than the window's own, every run renders.
double LeastTime(const test::PluginSession& session, double patience) {
    RECT area = {};
    GetClientRect(session.Control(IDC_PREVIEW), &area);
    const Canvas canvas(area.right + 2, area.bottom);
    double least = std::numeric_limits<double>::infinity(), all = 0;
    for (int run = 0; run < kLeastRuns || all < patience; ++run) {
        const RECT drawn = {0, 0, area.right + 1 + run % 2, area.bottom};
        const double taken = DrawOnce(session, canvas, drawn);
        least = std::min(least, taken);
        all += taken;
    }
    return least;
}

std::vector<uint8_t> BlockOf(int32_t width, int32_t height) {
    const MemoryOwner picture(MakeBenchPicture(width, height));
    return test::MakeAnimationBlock({{test::BytesOf(picture.memory), {}}});
}

}  // namespace
}  // namespace kfx::bench

int main(int argc, char** argv) {
    using namespace kfx;
    const int width = argc > 2 ? std::atoi(argv[1]) : 0, height = argc > 2 ? std::atoi(argv[2]) : 0;
    const double patience = argc > 3 ? std::atof(argv[3]) : 200;
    if (argc < 3 || argc > 4 || width < 1 || height < 1 || patience <= 0) {
        std::fputs("usage: preview_timing WIDTH HEIGHT [MILLISECONDS]\n", stderr);
        return 2;
    }
    test::FakeHost host;
    host.Serve(bench::BlockOf(width, height), "C:\\source.gif");
    test::PluginSession session(host);
    session.Click(IDC_SELECT);
    const std::vector<std::string> effects = session.ItemsOf(IDC_EFFECT);
    for (size_t row = 0; row < effects.size(); ++row) {
        session.Choose(IDC_EFFECT, static_cast<int>(row));
        if (!session.Settle()) {
            std::fputs("preview_timing: the plug-in's window has closed.\n", stderr);
            return 1;
        }
        std::printf("%s\t%.3f\n", effects[row].c_str(), bench::LeastTime(session, patience));
        std::fflush(stdout);
    }
    return 0;
}
