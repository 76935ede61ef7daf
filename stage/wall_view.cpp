// SPDX-License-Identifier: MIT
#include "stage/wall_view.h"

#include <algorithm>
#include <cstdlib>
#include <memory>
#include <thread>
#include <utility>

#include <windows.h>
#include <commctrl.h>

#include "stage/release_later.h"
#include "stage/wall_window.h"

namespace kfx::stage {
namespace {

constexpr wchar_t kClassName[] = L"KestrelWall";
constexpr int kGap = 12;          // device-independent pixels
constexpr int kWheelPixels = 96;  // of one notch, device-independent

WallWindow* WallOf(HWND window) {
    return reinterpret_cast<WallWindow*>(GetWindowLongPtrW(window, GWLP_USERDATA));
}

SIZE ClientSize(const WallWindow& wall) {
    RECT client;
    GetClientRect(wall.window, &client);
    return {client.right, client.bottom};
}

TileRange SeenTiles(const WallWindow& wall) {
    return VisibleTiles(wall.layout, ClientSize(wall).cy, wall.scroll);
}

void ShowFrameOf(WallWindow* wall, uint64_t moment) {
    wall->moment = moment;
    if (!wall->thumbnails) return;
    const uint64_t end = std::max<uint64_t>(PlayingTime(*wall->thumbnails), 1);
    const size_t frame = FrameAtTime(*wall->thumbnails, std::min(moment, end - 1));
    if (std::exchange(wall->frame, frame) == frame) return;
    const TileRange seen = SeenTiles(*wall);
    for (size_t i = seen.first; i <= seen.last; ++i) RedrawTile(*wall, i);
}

void UpdateScrollBar(const WallWindow& wall) {
    SCROLLINFO info = {};
    info.cbSize = sizeof info;
    info.fMask = SIF_RANGE | SIF_PAGE | SIF_POS | SIF_DISABLENOSCROLL;
    info.nMax = std::max(wall.layout.height - 1, 0);
    info.nPage = static_cast<UINT>(std::max<LONG>(ClientSize(wall).cy, 0));
    info.nPos = wall.scroll;
    SetScrollInfo(wall.window, SB_VERT, &info, TRUE);
}

void PlaceTiles(WallWindow* wall) {
    const SIZE client = ClientSize(*wall), tile = TileRoom(*wall);
    wall->layout = LayOutWall(client.cx, wall->tiles.size(), tile.cx, tile.cy, Scaled(*wall, kGap));
    wall->scroll = std::clamp(wall->scroll, 0, LargestScroll(wall->layout, client.cy));
    HDWP moves = BeginDeferWindowPos(static_cast<int>(wall->tiles.size()));
    for (size_t i = 0; i < wall->tiles.size() && moves; ++i)
        moves = DeferWindowPos(moves, wall->tiles[i].button, nullptr, TileLeft(wall->layout, i),
                               TileTop(wall->layout, i) - wall->scroll, tile.cx, tile.cy,
                               SWP_NOZORDER | SWP_NOACTIVATE);
    if (moves) EndDeferWindowPos(moves);
    UpdateScrollBar(*wall);
    RankWall(*wall);
}

void OnScroll(WallWindow* wall, int code) {
    const int page = ClientSize(*wall).cy, line = Scaled(*wall, kWheelPixels) / 2;
    SCROLLINFO info = {};
    info.cbSize = sizeof info;
    info.fMask = SIF_TRACKPOS;
    switch (code) {
        case SB_LINEUP:
            return ScrollWall(wall, wall->scroll - line);
        case SB_LINEDOWN:
            return ScrollWall(wall, wall->scroll + line);
        case SB_PAGEUP:
            return ScrollWall(wall, wall->scroll - page);
        case SB_PAGEDOWN:
            return ScrollWall(wall, wall->scroll + page);
        case SB_TOP:
            return ScrollWall(wall, 0);
        case SB_BOTTOM:
            return ScrollWall(wall, wall->layout.height);
        case SB_THUMBTRACK:
        case SB_THUMBPOSITION:
            // The message carries 16 bits only.
            if (GetScrollInfo(wall->window, SB_VERT, &info)) ScrollWall(wall, info.nTrackPos);
            return;
    }
}

void OnWheel(WallWindow* wall, int turned) {
    const int pixels = wall->wheelRest - turned * Scaled(*wall, kWheelPixels);
    wall->wheelRest = pixels % WHEEL_DELTA;
    ScrollWall(wall, wall->scroll + pixels / WHEEL_DELTA);
}

// Only the tile with the focus is a tab stop: the Tab key leaves the wall.
void OnTileFocus(WallWindow* wall, size_t tile) {
    const HWND before = wall->tiles[wall->focus].button, now = wall->tiles[tile].button;
    SetWindowLongPtrW(before, GWL_STYLE, GetWindowLongPtrW(before, GWL_STYLE) & ~LONG_PTR{WS_TABSTOP});
    SetWindowLongPtrW(now, GWL_STYLE, GetWindowLongPtrW(now, GWL_STYLE) | WS_TABSTOP);
    wall->focus = tile;
    ScrollWall(wall, ScrollToTile(wall->layout, ClientSize(*wall).cy, wall->scroll, tile));
    RankWall(*wall);
    RedrawTile(*wall, tile);
}

void OnTilePointer(WallWindow* wall, size_t tile, bool isThere) {
    const size_t hot = isThere ? tile : SIZE_MAX;
    const size_t before = std::exchange(wall->hot, hot);
    if (before == hot) return;
    if (before < wall->tiles.size()) RedrawTile(*wall, before);
    if (!isThere) return;
    RedrawTile(*wall, tile);
    TRACKMOUSEEVENT track = {sizeof track, TME_LEAVE, wall->tiles[tile].button, 0};
    TrackMouseEvent(&track);
}

LRESULT CALLBACK TileProcedure(HWND button, UINT message, WPARAM word, LPARAM pointer, UINT_PTR tile,
                               DWORD_PTR data) {
    auto* wall = reinterpret_cast<WallWindow*>(data);
    switch (message) {
        case WM_ERASEBKGND:
            return 1;  // the tile is drawn whole
        case WM_MOUSEMOVE:
            OnTilePointer(wall, tile, true);
            break;
        case WM_MOUSELEAVE:
            OnTilePointer(wall, tile, false);
            break;
        case WM_SETFOCUS:
            OnTileFocus(wall, tile);
            break;
        case WM_KILLFOCUS:
            RedrawTile(*wall, tile);
            break;
        case WM_MOUSEWHEEL:
            OnWheel(wall, GET_WHEEL_DELTA_WPARAM(word));
            return 0;
        case WM_GETDLGCODE:
            // The keys that TakeWallKey does not see, because another loop runs, do nothing.
            return DLGC_BUTTON | DLGC_WANTARROWS;
        case WM_NCDESTROY:
            RemoveWindowSubclass(button, TileProcedure, tile);
            break;
    }
    return DefSubclassProc(button, message, word, pointer);
}

// Called by the wall's threads.
void NoteChange(void* user, size_t tile) { PostMessageW(static_cast<HWND>(user), kWallTileChanged, tile, 0); }

// The window and what the user does in it come first.
void StandBack() { SetThreadPriority(GetCurrentThread(), THREAD_PRIORITY_BELOW_NORMAL); }

bool OnCreate(WallWindow* wall, HWND window) {
    wall->window = window;
    wall->effects = DescribeEffects();
    WallSetup setup;
    setup.effects = &wall->effects;
    setup.threads = std::max(static_cast<int>(std::thread::hardware_concurrency()) - 1, 1);
    setup.changed = NoteChange;
    setup.user = window;
    setup.threadBegins = StandBack;
    wall->render = OpenWallRender(setup);
    if (!wall->render) return false;
    wall->tiles.resize(wall->effects.size());
    for (size_t i = 0; i < wall->tiles.size(); ++i) {
        WallTile& tile = wall->tiles[i];
        tile.shown = tile.kept = DefaultSettings(wall->effects, i);
        tile.button = CreateWindowExW(
            0, L"BUTTON", L"", WS_CHILD | WS_VISIBLE | BS_OWNERDRAW | (i == 0 ? WS_TABSTOP | WS_GROUP : 0), 0,
            0, 0, 0, window,
            reinterpret_cast<HMENU>(static_cast<INT_PTR>(kFirstWallTile) + static_cast<INT_PTR>(i)),
            GetModuleHandleW(nullptr), nullptr);
        if (!tile.button ||
            !SetWindowSubclass(tile.button, TileProcedure, i, reinterpret_cast<DWORD_PTR>(wall)))
            return false;
        NameTile(wall, i);
    }
    return true;
}

void OnTileChanged(WallWindow* wall, size_t tile) {
    if (tile == kWallSource) {
        wall->thumbnails = ReadWallSource(wall->render);
        ShowFrameOf(wall, wall->moment);
    }
    // Others have begun meanwhile.
    for (size_t i = 0; i < wall->tiles.size(); ++i) {
        const TileState before = wall->tiles[i].view.state;
        wall->tiles[i].view = ReadTile(wall->render, i);
        if (i == tile || tile == kWallSource || wall->tiles[i].view.state != before) NameTile(wall, i);
    }
}

LRESULT CountReady(const WallWindow& wall) {
    LRESULT ready = 0;
    for (const WallTile& tile : wall.tiles)
        ready += tile.view.state == TileState::Done && tile.view.pictureSettings == tile.shown;
    return ready;
}

void OnSetFont(WallWindow* wall, HFONT font) {
    wall->font = font;
    LOGFONTW bold = {};
    GetObjectW(font, sizeof bold, &bold);
    bold.lfWeight = FW_SEMIBOLD;
    if (wall->boldFont) DeleteObject(wall->boldFont);
    wall->boldFont = CreateFontIndirectW(&bold);
    InvalidateRect(wall->window, nullptr, TRUE);
}

void Destroy(WallWindow* wall) {
    CloseWallRender(wall->render);
    if (wall->boldFont) DeleteObject(wall->boldFont);
    delete wall;
}

// Makes the pictures of the source, at the resolution of the screen.
void MakePictures(WallWindow* wall) {
    std::vector<std::shared_ptr<const Animation>> before = {std::exchange(wall->thumbnails, nullptr)};
    wall->frame = 0;
    std::vector<EffectSettings> settings;
    for (WallTile& tile : wall->tiles) {
        before.push_back(tile.view.picture);
        tile.view = {};
        settings.push_back(tile.shown);
    }
    const SIZE room = PictureRoom(*wall);
    const TileRange seen = SeenTiles(*wall);
    const auto source = wall->source ? wall->source : std::make_shared<const WallSource>();
    const bool shown = ShowInWall(wall->render, source, room.cx, room.cy, settings,
                                  TileRanks(settings.size(), seen.first, seen.last, SIZE_MAX));
    ReleaseLater(std::move(before));  // the threads' own shares have gone before
    for (size_t i = 0; i < wall->tiles.size(); ++i) {
        if (!shown) wall->tiles[i].view.state = TileState::Failed;
        if (!shown) wall->tiles[i].view.error = "There is not enough memory for the wall.";
        NameTile(wall, i);
    }
}

LRESULT CALLBACK WallProcedure(HWND window, UINT message, WPARAM word, LPARAM pointer) {
    if (message == WM_NCCREATE) {
        const auto* creation = reinterpret_cast<CREATESTRUCTW*>(pointer);
        SetWindowLongPtrW(window, GWLP_USERDATA, reinterpret_cast<LONG_PTR>(creation->lpCreateParams));
    }
    WallWindow* wall = WallOf(window);
    if (!wall) return DefWindowProcW(window, message, word, pointer);
    switch (message) {
        case WM_CREATE:
            return OnCreate(wall, window) ? 0 : -1;
        case WM_SIZE:
            PlaceTiles(wall);
            return 0;
        case WM_VSCROLL:
            OnScroll(wall, LOWORD(word));
            return 0;
        case WM_MOUSEWHEEL:
            OnWheel(wall, GET_WHEEL_DELTA_WPARAM(word));
            return 0;
        case WM_COMMAND:
            if (HIWORD(word) == BN_CLICKED)
                OpenTile(*wall, static_cast<size_t>(LOWORD(word) - kFirstWallTile));
            return 0;
        case WM_DRAWITEM:
            DrawTile(*wall, *reinterpret_cast<const DRAWITEMSTRUCT*>(pointer));
            return TRUE;
        case WM_SETFOCUS:
            SetFocus(wall->tiles[wall->focus].button);
            return 0;
        case WM_SETFONT:
            OnSetFont(wall, reinterpret_cast<HFONT>(word));
            return 0;
        case WM_SYSCOLORCHANGE:
        case WM_SETTINGCHANGE:
        case WM_THEMECHANGED:
            InvalidateRect(window, nullptr, TRUE);
            break;
        case kWallTileChanged:
            OnTileChanged(wall, static_cast<size_t>(word));
            return 0;
        case kWallCountReady:
            return CountReady(*wall);
        case WM_NCDESTROY:
            SetWindowLongPtrW(window, GWLP_USERDATA, 0);
            Destroy(wall);
            return 0;
    }
    return DefWindowProcW(window, message, word, pointer);
}

bool RegisterWallClass() {
    WNDCLASSEXW wallClass = {};
    wallClass.cbSize = sizeof wallClass;
    if (GetClassInfoExW(GetModuleHandleW(nullptr), kClassName, &wallClass)) return true;
    wallClass.lpfnWndProc = WallProcedure;
    wallClass.hInstance = GetModuleHandleW(nullptr);
    wallClass.hCursor = LoadCursorA(nullptr, IDC_ARROW);
    wallClass.hbrBackground = reinterpret_cast<HBRUSH>(static_cast<INT_PTR>(COLOR_BTNFACE + 1));
    wallClass.lpszClassName = kClassName;
    return RegisterClassExW(&wallClass) != 0;
}

}  // namespace

HWND CreateWall(HWND parent, int id, int dpi) {
    if (!RegisterWallClass()) return nullptr;
    auto* wall = new WallWindow;  // the window's from now on
    wall->dpi = dpi;
    const HWND window = CreateWindowExW(
        WS_EX_CONTROLPARENT, kClassName, L"Effects", WS_CHILD | WS_CLIPCHILDREN | WS_VSCROLL, 0, 0, 0, 0,
        parent, reinterpret_cast<HMENU>(static_cast<INT_PTR>(id)), GetModuleHandleW(nullptr), wall);
    return window;
}

void ShowOnWall(HWND window, std::shared_ptr<const WallSource> source) {
    WallWindow* wall = WallOf(window);
    ReleaseLater(std::exchange(wall->source, std::move(source)));
    for (WallTile& tile : wall->tiles) {
        tile.shown = tile.kept;
        tile.variation = tile.keptVariation;
    }
    MakePictures(wall);
}

void ShowWallAt(HWND window, uint64_t milliseconds) { ShowFrameOf(WallOf(window), milliseconds); }

void SetWallDpi(HWND window, int dpi) {
    WallWindow* wall = WallOf(window);
    if (std::exchange(wall->dpi, dpi) == dpi) return;
    PlaceTiles(wall);
    MakePictures(wall);
}

bool TakeWallKey(HWND window, const MSG& message) {
    if (message.message != WM_KEYDOWN || !IsWindowVisible(window) || !IsChild(window, message.hwnd))
        return false;
    if (GetKeyState(VK_CONTROL) < 0 || GetKeyState(VK_MENU) < 0 || GetKeyState(VK_SHIFT) < 0) return false;
    return OnWallKey(WallOf(window), message.wParam);
}

const std::vector<EffectDescription>& WallEffects(HWND window) { return WallOf(window)->effects; }

void RedrawTile(const WallWindow& wall, size_t tile) {
    InvalidateRect(wall.tiles[tile].button, nullptr, FALSE);
}

void RankWall(const WallWindow& wall) {
    const TileRange seen = SeenTiles(wall);
    RankTiles(wall.render, TileRanks(wall.tiles.size(), seen.first, seen.last, wall.focus));
}

void ScrollWall(WallWindow* wall, int scroll) {
    scroll = std::clamp(scroll, 0, LargestScroll(wall->layout, ClientSize(*wall).cy));
    const int before = std::exchange(wall->scroll, scroll);
    if (before == scroll) return;
    ScrollWindowEx(wall->window, 0, before - scroll, nullptr, nullptr, nullptr, nullptr,
                   SW_SCROLLCHILDREN | SW_INVALIDATE | SW_ERASE);
    UpdateScrollBar(*wall);
    RankWall(*wall);
}

}  // namespace kfx::stage
