// SPDX-License-Identifier: MIT
#include "stage/plugin_source.h"

#include <new>
#include <utility>

#include <commctrl.h>
#include <shellapi.h>

#include "commands/command_line.h"
#include "commands/recipe_file.h"
#include "commands/text_windows.h"
#include "driven/plugin_controls.h"
#include "stage/plugin_opening.h"
#include "stage/stage_messages.h"

namespace kfx::stage {

using namespace commands;
using namespace driven;

namespace {

constexpr wchar_t kTakerClass[] = L"KestrelSourceTaker";
constexpr UINT kTakeFile = WM_APP;          // LPARAM: a path, which is taken over
constexpr UINT kTakeFilm = WM_APP + 1;      // LPARAM: a pointer to a film, which is taken over
constexpr UINT kTakeSettings = WM_APP + 2;  // LPARAM: settings, which are taken over
constexpr UINT_PTR kDropSubclass = 1;
constexpr char kSettingsEnding[] = ".kx1";

// What the message carries is taken over by its window, or freed where it cannot be posted.
template <typename Carried>
void Post(HWND window, UINT message, std::unique_ptr<Carried> carried) {
    if (window && PostMessageW(window, message, 0, reinterpret_cast<LPARAM>(carried.get()))) {
        static_cast<void>(carried.release());
    }
}

void PressSelect(HWND plugin) {
    SendMessageA(plugin, WM_COMMAND, MAKEWPARAM(kSelectButton, BN_CLICKED),
                 reinterpret_cast<LPARAM>(GetDlgItem(plugin, kSelectButton)));
}

void Tell(const PluginOpening& opening, const std::string& message) {
    MessageBoxW(opening.window, Widen(message).c_str(), L"Kestrel Stage", MB_OK | MB_ICONWARNING);
}

void OnTakeFile(PluginOpening* opening, const std::string& path) {
    if (EndingOf(path) != kSettingsEnding) {
        opening->dropped = path;
        PressSelect(opening->window);
        opening->dropped.clear();
        return;
    }
    RecipeFile file;
    Failure failure;
    if (ReadRecipeFile(path, ReadLimits(), &file, &failure))
        ApplyPluginSettings(opening->window, file.recipe.document);
    else
        Tell(*opening, failure.error);
}

void OnTakeFilm(PluginOpening* opening, const std::shared_ptr<const Film>& film) {
    Animation source = AnimationOf(*film);
    source.comment = opening->originalComment;
    opening->source = std::move(source);
    opening->film = film;
    opening->sourceFingerprint.clear();
    opening->session.offerSource = true;
    PressSelect(opening->window);
    opening->session.offerSource = false;
}

void OnTake(PluginOpening* opening, UINT message, LPARAM pointer) {
    if (message == kTakeFile) {
        OnTakeFile(opening, *std::unique_ptr<std::string>(reinterpret_cast<std::string*>(pointer)));
    } else if (message == kTakeFilm) {
        using Carried = std::shared_ptr<const Film>;
        OnTakeFilm(opening, *std::unique_ptr<Carried>(reinterpret_cast<Carried*>(pointer)));
    } else {
        const std::unique_ptr<SettingsDocument> settings(reinterpret_cast<SettingsDocument*>(pointer));
        ApplyPluginSettings(opening->window, *settings);
    }
}

LRESULT CALLBACK TakerProcedure(HWND window, UINT message, WPARAM word, LPARAM pointer) {
    if (message < kTakeFile || message > kTakeSettings) return DefWindowProcW(window, message, word, pointer);
    auto* opening = reinterpret_cast<PluginOpening*>(GetWindowLongPtrW(window, GWLP_USERDATA));
    try {
        OnTake(opening, message, pointer);
    } catch (const std::bad_alloc&) {
        Tell(*opening, "There is not enough memory for the plug-in to open this.");
    }
    return 0;
}

LRESULT CALLBACK DropProcedure(HWND window, UINT message, WPARAM word, LPARAM pointer, UINT_PTR,
                               DWORD_PTR stageWindow) {
    if (message == WM_NCDESTROY) RemoveWindowSubclass(window, DropProcedure, kDropSubclass);
    if (message != WM_DROPFILES) return DefSubclassProc(window, message, word, pointer);
    Post(reinterpret_cast<HWND>(stageWindow), kFilesDropped,
         std::make_unique<std::vector<std::string>>(FilesOfDrop(reinterpret_cast<HDROP>(word))));
    return 0;
}

}  // namespace

void MakeSourceTaker(PluginOpening* opening) {
    WNDCLASSW takerClass = {};
    takerClass.lpfnWndProc = TakerProcedure;
    takerClass.hInstance = GetModuleHandleW(nullptr);
    takerClass.lpszClassName = kTakerClass;
    RegisterClassW(&takerClass);
    const HWND taker = CreateWindowExW(0, kTakerClass, L"", 0, 0, 0, 0, 0, HWND_MESSAGE, nullptr,
                                       takerClass.hInstance, nullptr);
    if (taker) SetWindowLongPtrW(taker, GWLP_USERDATA, reinterpret_cast<LONG_PTR>(opening));
    opening->taker = taker;
}

void AcceptDrops(HWND plugin, HWND stageWindow) {
    if (SetWindowSubclass(plugin, DropProcedure, kDropSubclass, reinterpret_cast<DWORD_PTR>(stageWindow)))
        DragAcceptFiles(plugin, TRUE);
}

std::vector<std::string> FilesOfDrop(HDROP drop) {
    std::vector<std::string> paths;
    const UINT count = DragQueryFileW(drop, 0xFFFFFFFF, nullptr, 0);
    for (UINT i = 0; i < count; ++i) {
        std::wstring path(DragQueryFileW(drop, i, nullptr, 0) + 1, L'\0');
        path.resize(DragQueryFileW(drop, i, path.data(), static_cast<UINT>(path.size())));
        paths.push_back(Narrow(path));
    }
    DragFinish(drop);
    return paths;
}

bool CanGiveSource(const PluginOpening& opening) {
    const HWND window = opening.window;
    return window && opening.taker && IsWindowEnabled(window) && opening.progress.total == 0;
}

void GiveFile(const PluginOpening& opening, const std::string& path) {
    Post(opening.taker, kTakeFile, std::make_unique<std::string>(path));
}

void GiveFilm(const PluginOpening& opening, std::shared_ptr<const Film> film) {
    Post(opening.taker, kTakeFilm, std::make_unique<std::shared_ptr<const Film>>(std::move(film)));
}

void ApplyLater(const PluginOpening& opening, const SettingsDocument& settings) {
    Post(opening.taker, kTakeSettings, std::make_unique<SettingsDocument>(settings));
}

}  // namespace kfx::stage
