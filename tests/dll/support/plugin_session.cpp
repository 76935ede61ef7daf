// SPDX-License-Identifier: MIT
#include "tests/dll/support/plugin_session.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>

#include "media/utf8_path.h"
#include "tests/dll/support/session_state.h"
#include "tests/dll/support/window_reading.h"
#include "tests/support/animation_blocks.h"
#include "tests/support/page_words.h"
#include "tests/support/pictures.h"
#include "tests/support/wait_for.h"

namespace kfx::test {
namespace {

std::string FolderOfProgram() {
    char path[MAX_PATH] = "";
    GetModuleFileNameA(nullptr, path, sizeof path);
    return std::filesystem::path(path).parent_path().string();
}

// A new folder, in characters of the code page. Process numbers alone do not tell two Wine prefixes apart.
std::string MakeSessionFolder() {
    static int number = 0;
    const std::string sessions = FolderOfProgram() + "\\..\\sessions\\";
    std::filesystem::create_directories(sessions);
    std::string folder;
    do {
        folder = sessions + std::to_string(GetCurrentProcessId()) + "." + std::to_string(++number) + " " +
                 WordsOfPage().inside;
    } while (!std::filesystem::create_directory(PathOf(folder)));
    std::filesystem::create_directory(PathOf(folder + "\\AppData"));
    std::filesystem::create_directory(PathOf(folder + "\\Documents"));
    return ToPage(folder);
}

}  // namespace

PluginSession::State::State(FakeHost& fakeHost, const SessionOptions& sessionOptions)
    : host(fakeHost),
      options(sessionOptions),
      folder(MakeSessionFolder()),
      library(LoadLibraryA(PluginPath().c_str())) {
    if (!library) {
        std::fprintf(stderr, "%s cannot be loaded\n", PluginPath().c_str());
        std::exit(2);
    }
    ledger = std::make_unique<MemoryLedger>(library);
    standIns = std::make_unique<SystemStandIns>(library, folder, options);
    if (options.prepareLibrary) options.prepareLibrary(library);
    host.onHandOver = HandOver;
    host.onRequest = [this] {
        const FloatingPointControls controls = ReadControls();
        const std::lock_guard<std::mutex> lock(mutex);
        controlsSeen.push_back(controls);
    };
}

PluginSession::State::~State() {
    host.onRequest = nullptr;
    host.onHandOver = nullptr;
    standIns.reset();
    ledger.reset();
    FreeLibrary(library);
    std::error_code ignored;
    std::filesystem::remove_all(PathOf(FromPage(folder)), ignored);
}

SessionOptions WithConfiguration(const std::string& text) {
    SessionOptions options;
    options.configuration = text;
    return options;
}

PluginSession::PluginSession(FakeHost& host, const SessionOptions& options)
    : state_(std::make_unique<State>(host, options)) {
    if (options.configurationFolder)
        CreateDirectoryA((state_->folder + "\\AppData\\Quorvane Labs").c_str(), nullptr);
    if (!options.configuration.empty()) WriteTextFile(ConfigurationPath(), options.configuration);
    if (options.prepare) options.prepare(ConfigurationPath());
    state_->watcher = std::thread(Watch, state_.get());
    state_->runner = std::thread(RunWindow, state_.get());
    {
        std::unique_lock<std::mutex> lock(state_->mutex);
        state_->changed.wait(lock, [this] { return state_->window || state_->closed; });
    }
    Settle();
}

PluginSession::~PluginSession() {
    Close();
    state_->ending = true;
    state_->watcher.join();
}

HWND PluginSession::Window() const {
    const std::lock_guard<std::mutex> lock(state_->mutex);
    return state_->window;
}

bool PluginSession::Settle() {
    {
        const std::lock_guard<std::mutex> lock(state_->mutex);
        state_->idle = false;
    }
    const HWND window = Window();
    if (!window) return false;
    PostMessageA(window, kMarker, 0, 0);
    std::unique_lock<std::mutex> lock(state_->mutex);
    state_->changed.wait(lock, [this] { return state_->idle || state_->closed; });
    return !state_->closed;
}

void PluginSession::Click(int id) {
    const HWND control = Control(id);
    ASSERT_TRUE(control) << id;
    if (IsWindowEnabled(control)) SendMessageA(control, BM_CLICK, 0, 0);
    Settle();
}

void PluginSession::Choose(int list, int index) {
    SendMessageA(Control(list), CB_SETCURSEL, static_cast<WPARAM>(index), 0);
    Command(list, CBN_CLOSEUP);
}

void PluginSession::Scroll(int slider, int code, int position) {
    SendMessageA(Window(), WM_HSCROLL, MAKEWPARAM(code, position), reinterpret_cast<LPARAM>(Control(slider)));
    Settle();
}

void PluginSession::Command(int id, int notification) {
    SendMessageA(Window(), WM_COMMAND, MAKEWPARAM(id, notification), reinterpret_cast<LPARAM>(Control(id)));
    Settle();
}

std::string PluginSession::TextOf(int id) const {
    char text[2048] = "";
    GetDlgItemTextA(Window(), id, text, sizeof text);
    return text;
}

bool PluginSession::IsChecked(int id) const {
    return SendMessageA(Control(id), BM_GETCHECK, 0, 0) == BST_CHECKED;
}

bool PluginSession::IsEnabled(int id) const { return IsWindowEnabled(Control(id)); }

bool PluginSession::IsShown(int id) const { return IsWindowVisible(Control(id)); }

int PluginSession::SelectionOf(int list) const {
    return static_cast<int>(SendMessageA(Control(list), CB_GETCURSEL, 0, 0));
}

std::vector<std::string> PluginSession::ItemsOf(int list) const {
    std::vector<std::string> items;
    const LRESULT count = SendMessageA(Control(list), CB_GETCOUNT, 0, 0);
    for (LRESULT i = 0; i < count; ++i) {
        char text[300] = "";
        SendMessageA(Control(list), CB_GETLBTEXT, static_cast<WPARAM>(i), reinterpret_cast<LPARAM>(text));
        items.push_back(text);
    }
    return items;
}

int PluginSession::PositionOf(int slider) const { return GetScrollPos(Control(slider), SB_CTL); }

bool PluginSession::ApplyLine(int id, const std::string& line) {
    return SendMessageA(Control(id), 1335, 0, reinterpret_cast<LPARAM>(line.c_str())) == 1;
}

uint64_t PluginSession::Close() {
    if (const HWND window = Window()) SendMessageA(window, WM_COMMAND, IDCANCEL, 0);
    return WaitUntilClosed();
}

uint64_t PluginSession::WaitUntilClosed() {
    if (state_->runner.joinable()) state_->runner.join();
    return state_->result;
}

std::vector<FloatingPointControls> PluginSession::ControlsSeen() const {
    const std::lock_guard<std::mutex> lock(state_->mutex);
    return state_->controlsSeen;
}

FloatingPointControls PluginSession::ControlsAfter() const { return state_->controlsAfter; }

std::vector<std::string> PluginSession::Messages() const {
    const std::lock_guard<std::mutex> lock(state_->mutex);
    return state_->messages;
}

void PluginSession::HoldMessages(bool held) { state_->messagesHeld = held; }

void PluginSession::Press(int id) { PostMessageA(Control(id), BM_CLICK, 0, 0); }

HWND PluginSession::WaitForBox(const char* caption) {
    HWND box = nullptr;
    WaitFor([&] { return (box = FindBox(state_->windowThread, caption)) != nullptr; });
    return box;
}

HWND PluginSession::PressForBox(int id, const char* caption) {
    const HWND window = Window();
    if (!window) return nullptr;
    {
        const std::lock_guard<std::mutex> lock(state_->mutex);
        state_->idle = false;
    }
    Press(id);
    PostMessageA(window, kMarker, 0, 0);  // the window is not idle before its box has gone
    HWND box = nullptr;
    WaitFor([&] {
        box = FindBox(state_->windowThread, caption);
        const std::lock_guard<std::mutex> lock(state_->mutex);
        return box || state_->idle || state_->closed;
    });
    return box;
}

bool PluginSession::WaitUntilGone(HWND box) {
    return WaitFor([box] { return !IsWindow(box); });
}

void PluginSession::AnswerMenu(UINT command) {
    const std::lock_guard<std::mutex> lock(state_->standIns->mutex);
    state_->standIns->menuAnswer = command;
}

void PluginSession::AnswerFileDialog(const std::string& path) {
    const std::lock_guard<std::mutex> lock(state_->standIns->mutex);
    state_->standIns->fileDialogAnswer = path;
}

void PluginSession::AnswerBrowser(INT_PTR result) {
    const std::lock_guard<std::mutex> lock(state_->standIns->mutex);
    state_->standIns->browserAnswer = result;
}

std::vector<OpenedMenu> PluginSession::Menus() const {
    const std::lock_guard<std::mutex> lock(state_->standIns->mutex);
    return state_->standIns->menus;
}

std::vector<AskedPath> PluginSession::AskedPaths() const {
    const std::lock_guard<std::mutex> lock(state_->standIns->mutex);
    return state_->standIns->askedPaths;
}

std::vector<std::string> PluginSession::OpenedPages() const {
    const std::lock_guard<std::mutex> lock(state_->standIns->mutex);
    return state_->standIns->openedPages;
}

std::vector<std::string> PluginSession::Events() const {
    const std::lock_guard<std::mutex> lock(state_->standIns->mutex);
    return state_->standIns->events;
}

std::set<UINT_PTR> PluginSession::RunningTimers() const {
    const std::lock_guard<std::mutex> lock(state_->standIns->mutex);
    return state_->standIns->runningTimers;
}

void PluginSession::ClearEvents() {
    const std::lock_guard<std::mutex> lock(state_->standIns->mutex);
    state_->standIns->events.clear();
}

std::map<int, RECT> PluginSession::CreatedControls() const {
    const std::lock_guard<std::mutex> lock(state_->standIns->mutex);
    return state_->standIns->created;
}

std::vector<COLORREF> PluginSession::DrawControl(int id, int width, int height, UINT state) {
    return Draw(width, height, [&](HDC dc) {
        DRAWITEMSTRUCT item = {};
        item.CtlType = ODT_BUTTON;
        item.CtlID = static_cast<UINT>(id);
        item.itemAction = ODA_DRAWENTIRE;
        item.itemState = state;
        item.hwndItem = Control(id);
        item.hDC = dc;
        item.rcItem = {0, 0, width, height};
        SendMessageA(Window(), WM_DRAWITEM, item.CtlID, reinterpret_cast<LPARAM>(&item));
    });
}

std::vector<COLORREF> PluginSession::DrawPreview(int width, int height) {
    return DrawControl(25, width, height);
}

std::string PluginSession::ConfigurationPath() const {
    return state_->folder + "\\AppData\\Quorvane Labs\\kfxplug1.ini";
}

std::string PluginSession::ConfigurationText() const { return ReadTextFile(ConfigurationPath()); }

std::string PluginSession::DocumentsFolder() const { return state_->folder + "\\Documents\\"; }

std::vector<uint8_t> OneFrame() { return MakeAnimationBlock({{BytesOf(RandomPicture(5, 3, 1).handle), {}}}); }

std::vector<uint8_t> ShadedFrames(uint32_t count) {
    std::vector<BlockFrame> frames;
    for (uint32_t i = 0; i < count; ++i)
        frames.push_back({BytesOf(ShadedPicture(24, 20, i).handle), {0, 0, 100 + i, 0}});
    return MakeAnimationBlock(frames);
}

std::string PluginPath() { return FolderOfProgram() + "\\kfxplug1.dll"; }

DoBuild EntryOf(HMODULE library) {
    return reinterpret_cast<DoBuild>(reinterpret_cast<void*>(GetProcAddress(library, "PLUGIN16DoBuild")));
}

std::string ReadTextFile(const std::string& path) {
    std::ifstream file(path, std::ios::binary);
    return std::string(std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>());
}

void WriteTextFile(const std::string& path, const std::string& text) {
    std::ofstream file(path, std::ios::binary);
    file << text;
}

}  // namespace kfx::test
