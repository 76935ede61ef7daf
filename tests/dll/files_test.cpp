// SPDX-License-Identifier: MIT
// Configuration files and settings documents as they come from a damaged disk, another program or somebody
// who means harm: of any length, with any bytes and numbers, locked, in a folder's place, at the end of the
// longest path, on a full disk.
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <windows.h>

#include <algorithm>
#include <fstream>
#include <functional>

#include "resources/resource_ids.h"
#include "tests/dll/support/window_test.h"
#include "tests/support/full_disk_windows.h"
#include "tests/support/import_patch.h"

namespace kfx::test {
namespace {

using testing::AnyOf;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::SizeIs;

constexpr char kHeader[] =
    ";This is a document created by Kestrel FX #1 Plugin by Quorvane Labs - do not edit.\n";
constexpr char kNotCreated[] = "There has been an error creating the requested file.";
constexpr char kNotOpened[] = "There has been an error opening the requested file.";
constexpr char kDamaged[] = "This file has been damaged.";

// Writes the piece over and over between two texts.
void WriteLongFile(const std::string& path, const std::string& first, const std::string& piece, size_t pieces,
                   const std::string& last) {
    std::ofstream file(path, std::ios::binary);
    file << first;
    for (size_t i = 0; i < pieces; ++i) file << piece;
    file << last;
}

// The effect that a window with this configuration file opens with.
int EffectWith(const std::function<void(const std::string&)>& write) {
    FakeHost host;
    SessionOptions options;
    options.prepare = write;
    PluginSession session(host, options);
    EXPECT_THAT(session.Messages(), IsEmpty());
    const int effect = session.SelectionOf(IDC_EFFECT);
    EXPECT_EQ(session.Close(), 1u);
    EXPECT_LT(session.ConfigurationText().size(), 10000u) << "written anew, with its own keys only";
    return effect;
}

TEST(ConfigurationFiles, Of_a_hundred_megabytes_are_read_to_the_end) {
    EXPECT_EQ(EffectWith([](const std::string& path) {
                  const std::string line = ";" + std::string(1000, 'x') + "\nUnknownKey = 5\n";
                  WriteLongFile(path, "MainEffect = 2\n", line, (size_t{100} << 20) / line.size(),
                                "MainEffect = 3\n");
              }),
              3);
}

TEST(ConfigurationFiles, Of_one_endless_line_are_read_in_pieces) {
    EXPECT_EQ(EffectWith([](const std::string& path) {
                  WriteLongFile(path, "MainEffect = 2\n", std::string(1 << 20, '?'), 50,
                                "\nMainEffect = 4\n");
              }),
              4);
}

TEST(ConfigurationFiles, End_a_line_at_a_NUL_byte) {
    EXPECT_EQ(EffectWith([](const std::string& path) {
                  const char text[] = "MainEffect = 6\0 7\nImageFile = a\0b\n\0MainEffect = 9\n";
                  WriteTextFile(path, std::string(text, sizeof text - 1));
              }),
              6);
}

TEST(ConfigurationFiles, Keep_numbers_outside_every_range_and_the_window_works) {
    FakeHost host;
    host.Serve(ShadedFrames(2));
    std::string numbers =
        "MainEffect = 4294967295\nMainPalette = 2147483648\nUpdateDelay = 0\nDitherContrast = 128\n"
        "DitherBrightness = 4294967168\nLocalBackgroundColor = 4294967295\nSampleWindowKeyLine = 7\n"
        "ReloadPreviousSession = 7\nLocalBackgroundUse = 7\nFastRemap = 7\nTruecolour = 0\nMainDither = 7\n";
    for (const char* key :
         {"Style000Depth",  "Style000Radius",         "Style001CenterX",    "Style002Size",
          "Style003Angle",  "Style004Radius",         "Style005Level",      "Style006Radius",
          "Style007Cycles", "Style008Aperture",       "Style009Wavelength", "Style009Amplitude",
          "Style010Hue",    "Style010ChannelsOption", "Style011Size",       "Style012Threshold",
          "Style014Radius", "Style015Angle",          "Style017Radius",     "Style018CenterX"})
        numbers += std::string(key) + " = 2147483648\n";
    PluginSession session(host, WithConfiguration(numbers));
    ASSERT_TRUE(session.IsOpen());
    session.Click(IDC_SELECT);
    for (int effect = 0; effect < 20; ++effect) {
        session.Choose(IDC_EFFECT, effect);
        host.ClearTranscript();
        session.Click(IDC_TEST);
        EXPECT_THAT(host.Frames(), SizeIs(2)) << effect;
    }
    EXPECT_THAT(session.Messages(), IsEmpty());
    session.Close();
    const std::string text = session.ConfigurationText();
    for (const char* line :
         {"MainPalette = 2147483648\r\n", "UpdateDelay = 0\r\n", "DitherContrast = 128\r\n",
          "DitherBrightness = 4294967168\r\n", "LocalBackgroundColor = 4294967295\r\n",
          "SampleWindowKeyLine = 7\r\n", "FastRemap = 7\r\n", "MainDither = 7\r\n",
          "Style000Depth = 2147483648\r\n", "Style015Angle = 2147483648\r\n"})
        EXPECT_THAT(text, HasSubstr(line));
}

// Characters above 127, spaces, signs that formats and short names have.
TEST(ConfigurationFiles, Keep_every_character_of_a_text) {
    const std::string odd = "C:\\100% %s%n%d\\PROGRA~1\\a b\\\x95\x5C\xE4\xFF\x80.gif  ";
    for (const bool japanese : {false, true}) {
        FakeHost host;
        host.Serve(ShadedFrames(1), odd);
        std::string text;
        for (const char* key : {"CurrentFileName", "FileNamePath", "ImageFile", "OpenPath"})
            text += std::string(key) + " = " + odd + "\n";
        SessionOptions options = WithConfiguration(text);
        options.japanese = japanese;
        PluginSession session(host, options);
        session.Click(IDC_SELECT);
        session.Command(IDM_DOCUMENT_OPEN);
        ASSERT_FALSE(session.AskedPaths().empty());
        EXPECT_THAT(session.AskedPaths().back().file, AnyOf(odd, std::string()))
            << "or none, if it is no name";
        session.Command(IDM_DOCUMENT_SAVE);
        EXPECT_THAT(session.Messages(), ElementsAre(kNotCreated)) << "there is no such folder";
        session.Close();
        for (const char* key : {"CurrentFileName", "FileNamePath", "ImageFile", "OpenPath"})
            EXPECT_THAT(session.ConfigurationText(), HasSubstr(std::string(key) + " = " + odd + "\r\n"));
    }
}

// As Windows answers for every user. Wine's own functions let root write all files.
template <typename Text, typename Attributes, typename Create>
HANDLE CreateUnlessReadOnly(Text path, DWORD access, DWORD share, LPSECURITY_ATTRIBUTES security, DWORD how,
                            DWORD flags, HANDLE model, Attributes attributesOf, Create create) {
    const DWORD attributes = attributesOf(path);
    const bool isReadOnly = attributes != INVALID_FILE_ATTRIBUTES && (attributes & FILE_ATTRIBUTE_READONLY);
    if (!isReadOnly || !(access & (GENERIC_WRITE | GENERIC_ALL | FILE_WRITE_DATA)))
        return create(path, access, share, security, how, flags, model);
    SetLastError(ERROR_ACCESS_DENIED);
    return INVALID_HANDLE_VALUE;
}

HANDLE WINAPI CreateWide(LPCWSTR path, DWORD access, DWORD share, LPSECURITY_ATTRIBUTES security, DWORD how,
                         DWORD flags, HANDLE model) {
    return CreateUnlessReadOnly(path, access, share, security, how, flags, model, GetFileAttributesW,
                                CreateFileW);
}

HANDLE WINAPI CreateNarrow(LPCSTR path, DWORD access, DWORD share, LPSECURITY_ATTRIBUTES security, DWORD how,
                           DWORD flags, HANDLE model) {
    return CreateUnlessReadOnly(path, access, share, security, how, flags, model, GetFileAttributesA,
                                CreateFileA);
}

// A file with the attribute, in a system that heeds it, for its scope.
struct ReadOnlyFile {
    explicit ReadOnlyFile(const std::string& name) : path(name) {
        EXPECT_TRUE(SetFileAttributesA(path.c_str(), FILE_ATTRIBUTE_READONLY));
        EXPECT_TRUE(wide.original || narrow.original);
    }
    ~ReadOnlyFile() { SetFileAttributesA(path.c_str(), FILE_ATTRIBUTE_NORMAL); }
    ReadOnlyFile(const ReadOnlyFile&) = delete;
    ReadOnlyFile& operator=(const ReadOnlyFile&) = delete;

    const std::string path;
    const ImportPatch wide{GetModuleHandleA("msvcrt.dll"), "CreateFileW", AddressOfFunction(CreateWide)};
    const ImportPatch narrow{GetModuleHandleA("msvcrt.dll"), "CreateFileA", AddressOfFunction(CreateNarrow)};
};

TEST(ConfigurationFiles, That_are_read_only_are_read_and_stay) {
    FakeHost host;
    const std::string kept = "MainEffect = 3\n";
    PluginSession session(host, WithConfiguration(kept));
    const ReadOnlyFile guarded(session.ConfigurationPath());
    EXPECT_EQ(session.SelectionOf(IDC_EFFECT), 3);
    session.Choose(IDC_EFFECT, 5);
    session.Close();
    EXPECT_EQ(session.ConfigurationText(), kept);
    EXPECT_THAT(session.Messages(), IsEmpty());
}

class DocumentFiles : public WindowTest {
protected:
    // Opens a document of that name in the documents folder.
    void OpenNamed(const std::string& name) {
        session.AnswerFileDialog(name);
        session.Command(IDM_DOCUMENT_OPEN);
    }
    void OpenText(const std::string& text) {
        WriteTextFile(path, text);
        OpenNamed(path);
    }

    const std::string path = session.DocumentsFolder() + "odd.kx1";
};

TEST_F(DocumentFiles, Of_a_million_lines_are_read_to_the_end) {
    std::string lines;
    for (int i = 0; i < 50; ++i)
        lines += i == 7 ? "SCROLL127=9\n" : i % 2 ? ";comment\n" : "a line without an identifier\n";
    WriteLongFile(path, kHeader, lines, 20000, "SCROLL193=1500\n");
    OpenNamed(path);
    EXPECT_EQ(session.PositionOf(IDC_SWIRL_ANGLE), 1500);
    EXPECT_EQ(session.PositionOf(IDC_OBSCURE_LEVEL), 9);
    EXPECT_THAT(session.Messages(), IsEmpty());
}

TEST_F(DocumentFiles, Of_one_endless_line_are_read_in_pieces) {
    WriteLongFile(path, kHeader, std::string(1 << 20, 'y'), 64, "\nSCROLL193=1501\n");
    OpenNamed(path);
    EXPECT_EQ(session.PositionOf(IDC_SWIRL_ANGLE), 1501);
    WriteLongFile(path, "", std::string(1 << 20, 'y'), 64, kHeader);
    OpenNamed(path);
    EXPECT_THAT(session.Messages(), ElementsAre(kDamaged));
}

TEST_F(DocumentFiles, With_identifiers_that_no_control_has_change_nothing) {
    std::string text = kHeader;
    for (const char* id : {"0", "-193", "65729", "4295098145", "2147483648", "2147483841", "4294967295",
                           "99999999999999999999", "", " 193x", "+", "0x193"})
        text += std::string("SCROLL") + id + "=7\n";
    for (const char* index : {"-5", "20", "2147483648", "4294967295", "99999999999"})
        for (const char* list : {"50", "13", "172"})
            text += std::string("CMBBOX") + list + "=" + index + "\n";
    OpenText(text);
    ASSERT_TRUE(session.IsOpen());
    session.Choose(IDC_EFFECT, 3);
    EXPECT_EQ(session.SelectionOf(IDC_EFFECT), 3);
    EXPECT_THAT(session.Messages(), IsEmpty());
}

TEST_F(DocumentFiles, End_a_line_at_a_NUL_byte) {
    const char text[] =
        "SCROLL193=15\0"
        "02\n\0SCROLL193=7\nSCROLL127=4\0"
        "1\n";
    OpenText(kHeader + std::string(text, sizeof text - 1));
    EXPECT_EQ(session.PositionOf(IDC_SWIRL_ANGLE), 15);
    EXPECT_EQ(session.PositionOf(IDC_OBSCURE_LEVEL), 4);
}

TEST_F(DocumentFiles, Held_by_another_program_or_with_a_folder_of_that_name_are_told_and_stay) {
    const std::string kept = std::string(kHeader) + "SCROLL193=7\n";
    WriteTextFile(path, kept);
    const HANDLE held = CreateFileA(path.c_str(), GENERIC_READ, 0, nullptr, OPEN_EXISTING, 0, nullptr);
    ASSERT_NE(held, INVALID_HANDLE_VALUE);
    OpenNamed(path);
    session.Command(IDM_DOCUMENT_SAVE_AS);
    CloseHandle(held);
    EXPECT_EQ(ReadTextFile(path), kept);
    CreateDirectoryA((path + ".folder").c_str(), nullptr);
    OpenNamed(path + ".folder");
    session.Command(IDM_DOCUMENT_SAVE_AS);
    EXPECT_THAT(session.Messages(), ElementsAre(kNotOpened, kNotCreated, kNotOpened, kNotCreated));
    EXPECT_EQ(session.PositionOf(IDC_SWIRL_ANGLE), 1485);
    session.Close();
    EXPECT_THAT(session.ConfigurationText(), HasSubstr("CurrentFileName = untitled.kx1\r\n"));
}

TEST_F(DocumentFiles, That_are_read_only_are_opened_and_saved_under_another_name) {
    const std::string kept = std::string(kHeader) + "SCROLL193=7\n";
    WriteTextFile(path, kept);
    {
        const ReadOnlyFile guarded(path);
        OpenNamed(path);
        EXPECT_EQ(session.PositionOf(IDC_SWIRL_ANGLE), 7);
        EXPECT_THAT(session.Messages(), IsEmpty());
        session.Command(IDM_DOCUMENT_SAVE);
        session.Command(IDM_DOCUMENT_SAVE_AS);
        EXPECT_THAT(session.Messages(), ElementsAre(kNotCreated, kNotCreated));
        EXPECT_EQ(ReadTextFile(path), kept);
        session.AnswerFileDialog(path + ".other.kx1");
        session.Command(IDM_DOCUMENT_SAVE_AS);
        EXPECT_THAT(session.Messages(), SizeIs(2));
        EXPECT_THAT(ReadTextFile(path + ".other.kx1"), HasSubstr("SCROLL193=7\r\n"));
    }
    session.Close();
    EXPECT_THAT(session.ConfigurationText(), HasSubstr("CurrentFileName = " + path + ".other.kx1\r\n"));
}

// A path may have 259 characters; the dialog gives no longer ones.
TEST_F(DocumentFiles, At_the_end_of_the_longest_path_are_written_and_read) {
    std::string folder = session.DocumentsFolder();
    while (folder.size() < 230) {
        folder += std::string(std::min<size_t>(40, 240 - folder.size()), 'f') + "\\";
        ASSERT_TRUE(CreateDirectoryA(folder.c_str(), nullptr)) << folder;
    }
    const std::string longest = folder + std::string(259 - folder.size() - 4, 'n') + ".kx1";
    ASSERT_EQ(longest.size(), 259u);
    session.AnswerFileDialog(longest);
    session.Command(IDM_DOCUMENT_SAVE_AS);
    EXPECT_THAT(ReadTextFile(longest), HasSubstr("SCROLL193=1485"));
    session.Scroll(IDC_SWIRL_ANGLE, SB_LINERIGHT);
    OpenNamed(longest);
    EXPECT_EQ(session.PositionOf(IDC_SWIRL_ANGLE), 1485);
    EXPECT_THAT(session.Messages(), IsEmpty());
    session.Close();
    EXPECT_THAT(session.ConfigurationText(), HasSubstr("CurrentFileName = " + longest + "\r\n"));
}

TEST_F(DocumentFiles, That_do_not_fit_on_the_disk_are_told_and_the_name_stays) {
    session.AnswerFileDialog(path);
    size_t failures = 0;
    for (const DWORD fits : {0, 1, 100, 300}) {
        freeBytes = fits;
        const ImportPatch disk(GetModuleHandleA("msvcrt.dll"), "WriteFile",
                               AddressOfFunction(WriteToFullDisk));
        ASSERT_NE(disk.original, nullptr);
        session.Command(IDM_DOCUMENT_SAVE_AS);
        EXPECT_THAT(session.Messages(), SizeIs(++failures)) << fits;
    }
    EXPECT_THAT(session.Messages(), testing::Each(std::string(kNotCreated)));
    session.Command(IDM_DOCUMENT_SAVE_AS);
    EXPECT_THAT(session.Messages(), SizeIs(failures)) << "there is room again";
    EXPECT_THAT(ReadTextFile(path), HasSubstr(";End of document"));
}

}  // namespace
}  // namespace kfx::test
