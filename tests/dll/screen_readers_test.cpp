// SPDX-License-Identifier: MIT
// Names and values for screen readers, kept by a stand-in for the system's keeper.
#include <windows.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <oleacc.h>

#include <map>
#include <mutex>
#include <optional>

#include "resources/resource_ids.h"
#include "tests/dll/support/plugin_session.h"
#include "tests/dll/support/window_reading.h"
#include "tests/support/import_patch.h"

namespace kfx::test {
namespace {

using testing::IsEmpty;
using testing::UnorderedElementsAre;

struct Kept {
    std::string name, value;
};

// Keeps what it is given, or answers as a system does that keeps nothing.
struct Keeper final : IAccPropServices {
    explicit Keeper(HRESULT givenAnswer) : answer(givenAnswer) {}
    Keeper(const Keeper&) = delete;
    Keeper& operator=(const Keeper&) = delete;
    virtual ~Keeper() = default;

    HRESULT WINAPI QueryInterface(REFIID, void**) override { return E_NOINTERFACE; }
    ULONG WINAPI AddRef() override { return static_cast<ULONG>(++references); }
    ULONG WINAPI Release() override { return static_cast<ULONG>(--references); }
    HRESULT WINAPI SetPropValue(const BYTE*, DWORD, MSAAPROPID, VARIANT) override { return E_NOTIMPL; }
    HRESULT WINAPI SetPropServer(const BYTE*, DWORD, const MSAAPROPID*, int, IAccPropServer*,
                                 AnnoScope) override {
        return E_NOTIMPL;
    }
    HRESULT WINAPI ClearProps(const BYTE*, DWORD, const MSAAPROPID*, int) override { return E_NOTIMPL; }
    HRESULT WINAPI SetHwndProp(HWND, DWORD, DWORD, MSAAPROPID, VARIANT) override { return E_NOTIMPL; }
    HRESULT WINAPI SetHwndPropStr(HWND window, DWORD object, DWORD child, MSAAPROPID property,
                                  LPCWSTR text) override {
        const std::lock_guard<std::mutex> lock(mutex);
        ++calls;
        EXPECT_EQ(object, static_cast<DWORD>(OBJID_CLIENT));
        EXPECT_EQ(child, static_cast<DWORD>(CHILDID_SELF));
        if (FAILED(answer)) return answer;
        Kept& control = kept[GetDlgCtrlID(window)];
        std::string& place = property == PROPID_ACC_NAME ? control.name : control.value;
        place.clear();
        for (; *text; ++text) place += static_cast<char>(*text);
        return S_OK;
    }
    HRESULT WINAPI SetHwndPropServer(HWND, DWORD, DWORD, const MSAAPROPID*, int, IAccPropServer*,
                                     AnnoScope) override {
        return E_NOTIMPL;
    }
    HRESULT WINAPI ClearHwndProps(HWND window, DWORD, DWORD, const MSAAPROPID* properties,
                                  int count) override {
        const std::lock_guard<std::mutex> lock(mutex);
        Kept& control = kept[GetDlgCtrlID(window)];
        for (int i = 0; i < count; ++i)
            (properties[i] == PROPID_ACC_NAME ? control.name : control.value) = "";
        if (control.name.empty() && control.value.empty()) kept.erase(GetDlgCtrlID(window));
        return S_OK;
    }
    HRESULT WINAPI ComposeHwndIdentityString(HWND, DWORD, DWORD, BYTE**, DWORD*) override {
        return E_NOTIMPL;
    }
    HRESULT WINAPI DecomposeHwndIdentityString(const BYTE*, DWORD, HWND*, DWORD*, DWORD*) override {
        return E_NOTIMPL;
    }
    HRESULT WINAPI SetHmenuProp(HMENU, DWORD, MSAAPROPID, VARIANT) override { return E_NOTIMPL; }
    HRESULT WINAPI SetHmenuPropStr(HMENU, DWORD, MSAAPROPID, LPCWSTR) override { return E_NOTIMPL; }
    HRESULT WINAPI SetHmenuPropServer(HMENU, DWORD, const MSAAPROPID*, int, IAccPropServer*,
                                      AnnoScope) override {
        return E_NOTIMPL;
    }
    HRESULT WINAPI ClearHmenuProps(HMENU, DWORD, const MSAAPROPID*, int) override { return E_NOTIMPL; }
    HRESULT WINAPI ComposeHmenuIdentityString(HMENU, DWORD, BYTE**, DWORD*) override { return E_NOTIMPL; }
    HRESULT WINAPI DecomposeHmenuIdentityString(const BYTE*, DWORD, HMENU*, DWORD*) override {
        return E_NOTIMPL;
    }

    const HRESULT answer;
    std::mutex mutex;  // guards what follows
    std::map<int, Kept> kept;
    size_t calls = 0;
    int references = 0;
};

Keeper* given = nullptr;  // to the plug-in; the system's functions have no argument for it
std::vector<int> told;  // the controls whose new values were told of; written by the window's thread at rest
size_t asked = 0;       // how often the plug-in has asked for a keeper

HRESULT WINAPI GiveKeeper(REFCLSID kind, LPUNKNOWN outer, DWORD, REFIID wanted, LPVOID* found) {
    EXPECT_EQ(kind, CLSID_AccPropServices);
    EXPECT_EQ(wanted, IID_IAccPropServices);
    EXPECT_EQ(outer, nullptr);
    ++asked;
    *found = given;
    if (!given) return REGDB_E_CLASSNOTREG;
    given->AddRef();
    return S_OK;
}

void WINAPI NoteEvent(DWORD event, HWND window, LONG object, LONG child) {
    EXPECT_EQ(event, static_cast<DWORD>(EVENT_OBJECT_VALUECHANGE));
    EXPECT_EQ(object, OBJID_CLIENT);
    EXPECT_EQ(child, CHILDID_SELF);
    told.push_back(GetDlgCtrlID(window));
}

// A session whose plug-in gets a keeper with this answer, or none.
struct ReaderSession {
    explicit ReaderSession(std::optional<HRESULT> answer, const std::string& configuration = "") {
        if (answer) keeper.emplace(*answer);
        given = keeper ? &*keeper : nullptr;
        told.clear();
        asked = 0;
        SessionOptions options = WithConfiguration(configuration);
        options.prepareLibrary = [this](HMODULE library) {
            patches.emplace_back(
                std::make_unique<ImportPatch>(library, "CoCreateInstance", AddressOfFunction(GiveKeeper)));
            patches.emplace_back(
                std::make_unique<ImportPatch>(library, "NotifyWinEvent", AddressOfFunction(NoteEvent)));
            for (const auto& patch : patches) EXPECT_FALSE(patch->slots.empty());
        };
        host.Serve(OneFrame());
        session = std::make_unique<PluginSession>(host, options);
    }
    ~ReaderSession() {
        session->Close();
        patches.clear();
        session.reset();
        given = nullptr;
    }
    ReaderSession(const ReaderSession&) = delete;
    ReaderSession& operator=(const ReaderSession&) = delete;

    // "Angle, 45 degrees", as a screen reader would say it.
    std::string Said(int id) {
        const std::lock_guard<std::mutex> lock(keeper->mutex);
        const auto found = keeper->kept.find(id);
        if (found == keeper->kept.end()) return "";
        const Kept& control = found->second;
        return control.value.empty() ? control.name : control.name + ", " + control.value;
    }

    std::optional<Keeper> keeper;
    FakeHost host;
    std::vector<std::unique_ptr<ImportPatch>> patches;
    std::unique_ptr<PluginSession> session;
};

TEST(ScreenReaders, Are_given_names_and_values_with_units) {
    ReaderSession reader(S_OK, "LocalBackgroundColor = 3368601\nLocalBackgroundUse = 1\n");
    const std::pair<int, const char*> controls[] = {
        {IDC_EMBOSS_DEPTH, "Depth, 15 pixels"},
        {IDC_EMBOSS_RADIUS, "Radius, 5 tenths of a pixel"},
        {IDC_SWIRL_ANGLE, "Angle, 45 degrees"},
        {IDC_RASTER_SIZE, "Size, 1 pixel"},
        {IDC_RASTER_DENSITY, "Density, 160"},
        {IDC_HSB_CHANNELS, "Channels"},
        {IDC_EFFECT, "Effect"},
        {IDC_PALETTE, "Palette"},
        {IDC_PREVIEW, "Preview"},
        {IDC_LOGO, "Logo"},
        {IDC_BACKGROUND_COLOR, "Background color, red 153, green 102, blue 51"},
        {IDC_SOURCE_PATH, "Current animation"},
        {IDC_DITHER, ""},  // its own text is its name
    };
    for (const auto& [id, said] : controls) EXPECT_EQ(reader.Said(id), said) << id;
    EXPECT_THAT(told, IsEmpty());
    EXPECT_EQ(asked, 1u);
}

TEST(ScreenReaders, Learn_of_each_new_value) {
    ReaderSession reader(S_OK, "MainEffect = 1\nLocalBackgroundUse = 1\n");
    PluginSession& session = *reader.session;
    session.Scroll(IDC_EMBOSS_RADIUS, SB_LINERIGHT);
    EXPECT_EQ(reader.Said(IDC_EMBOSS_RADIUS), "Radius, 6 tenths of a pixel");
    reader.host.chosenColor = 0x010203;
    session.Command(IDC_BACKGROUND_COLOR);
    EXPECT_EQ(reader.Said(IDC_BACKGROUND_COLOR), "Background color, red 3, green 2, blue 1");
    session.Click(IDC_SELECT);
    EXPECT_EQ(reader.Said(IDC_SOURCE_PATH), "Current animation, C:\\source.gif");
    EXPECT_EQ(reader.Said(IDC_SOURCE_SIZE), "Size of the animation, 5 x 3");
    EXPECT_THAT(told, UnorderedElementsAre(IDC_EMBOSS_RADIUS, IDC_BACKGROUND_COLOR, IDC_SOURCE_PATH,
                                           IDC_SOURCE_SIZE));
}

TEST(ScreenReaders, Learn_what_a_document_has_set) {
    ReaderSession reader(S_OK);
    PluginSession& session = *reader.session;
    session.AnswerFileDialog(session.DocumentsFolder() + "swirl.kx1");
    session.Command(IDM_DOCUMENT_SAVE_AS);
    session.Scroll(IDC_SWIRL_ANGLE, SB_PAGERIGHT);
    EXPECT_EQ(reader.Said(IDC_SWIRL_ANGLE), "Angle, 405 degrees");
    session.Command(IDM_DOCUMENT_OPEN);
    EXPECT_EQ(reader.Said(IDC_SWIRL_ANGLE), "Angle, 45 degrees");
}

TEST(ScreenReaders, Keep_nothing_of_a_window_that_has_closed) {
    ReaderSession reader(S_OK);
    EXPECT_GT(reader.keeper->kept.size(), 30u);
    reader.session->Close();
    EXPECT_THAT(reader.keeper->kept, IsEmpty());
    EXPECT_EQ(reader.keeper->references, 0);
}

TEST(ScreenReaders, A_system_that_keeps_nothing_is_asked_once) {
    ReaderSession reader(E_NOTIMPL, "MainEffect = 1\n");
    reader.session->Scroll(IDC_EMBOSS_RADIUS, SB_LINERIGHT);
    reader.session->Click(IDC_SELECT);
    EXPECT_EQ(reader.keeper->calls, 1u);
    EXPECT_EQ(reader.keeper->references, 0);
    EXPECT_EQ(asked, 1u);
    EXPECT_THAT(told, IsEmpty());
    EXPECT_EQ(reader.session->TextOf(IDC_EMBOSS_RADIUS + 1), "6");
}

TEST(ScreenReaders, A_system_without_a_keeper_changes_nothing) {
    ReaderSession reader(std::nullopt, "MainEffect = 1\n");
    reader.session->Scroll(IDC_EMBOSS_RADIUS, SB_LINERIGHT);
    EXPECT_EQ(asked, 1u);
    EXPECT_THAT(told, IsEmpty());
    EXPECT_EQ(reader.session->TextOf(IDC_EMBOSS_RADIUS + 1), "6");
}

}  // namespace
}  // namespace kfx::test
