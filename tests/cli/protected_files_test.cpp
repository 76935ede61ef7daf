// SPDX-License-Identifier: MIT
// Files and folders that the user may not read or write. For root nothing is protected: started by root, the
// test is an ordinary user while it runs kestrel.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cerrno>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <map>

#include <grp.h>
#include <sys/prctl.h>
#include <unistd.h>

#include "tests/cli/program.h"
#include "tests/cli/test_animations.h"
#include "tests/cli/test_files.h"
#include "tests/support/plain_message.h"
#include "tests/support/tried.h"

namespace kfx::test {
namespace {

using Words = std::vector<std::string>;
namespace fs = std::filesystem;

// For its scope, when root: a user and a group that own nothing. What is started has no way back.
struct OrdinaryUser {
    OrdinaryUser() {
        if (!wasRoot) return;
        done = setgroups(0, nullptr) == 0 && setresgid(kNobody, kNobody, 0) == 0 &&
               setresuid(kNobody, kNobody, 0) == 0;
        failure = done ? 0 : errno;
        // The leak checker looks at this process, which a change of the user forbids.
        prctl(PR_SET_DUMPABLE, 1);
    }
    ~OrdinaryUser() {
        if (!wasRoot) return;
        EXPECT_EQ(setresuid(0, 0, 0), 0);
        EXPECT_EQ(setresgid(0, 0, 0), 0);
        prctl(PR_SET_DUMPABLE, 1);
    }
    OrdinaryUser(const OrdinaryUser&) = delete;
    OrdinaryUser& operator=(const OrdinaryUser&) = delete;

    static constexpr unsigned kNobody = 65534;
    const bool wasRoot = geteuid() == 0;
    bool done = true;
    int failure = 0;
};

// What stands at a path.
struct Found {
    fs::perms rights;
    std::string bytes;  // of a file, as far as it can be read

    bool operator==(const Found&) const = default;
};

std::map<std::string, Found> Contents(const std::string& folder) {
    std::map<std::string, Found> contents;
    for (const auto& entry :
         fs::recursive_directory_iterator(folder, fs::directory_options::skip_permission_denied)) {
        std::error_code unknown;
        Found found = {.rights = entry.symlink_status(unknown).permissions(), .bytes = ""};
        std::ifstream file;
        if (entry.is_regular_file(unknown)) file.open(entry.path(), std::ios::binary);
        if (file.is_open()) found.bytes.assign(std::istreambuf_iterator<char>(file), {});
        contents[entry.path()] = found;
    }
    return contents;
}

struct ProtectedFiles : ::testing::Test {
    const OrdinaryUser user;
    const TemporaryFolder folder;
    const std::string input = folder.path + "in.gif";
    const std::string guarded = folder.path + "guarded/";

    void SetUp() override {
        ASSERT_TRUE(user.done) << "root cannot become an ordinary user here: " << std::strerror(user.failure);
        if (access(FileBesideTest("kestrel").c_str(), X_OK) != 0)
            GTEST_SKIP() << "This test is run by root, and an ordinary user may not run "
                         << FileBesideTest("kestrel") << ": " << std::strerror(errno);
        WriteTestGif(input, 2);
        fs::create_directory(guarded);
    }
    // What was protected could not be removed.
    void TearDown() override {
        for (const auto& entry : fs::directory_iterator(folder.path))
            fs::permissions(entry.path(), fs::perms::owner_all);
    }

    std::string Path(const std::string& name) const { return folder.path + name; }

    static void Protect(const std::string& path, int rights) {
        fs::permissions(path, static_cast<fs::perms>(rights));
    }

    // Expects this exit code and this one sentence, and that nothing has changed.
    void ExpectRefused(const Words& words, int exitCode, const std::string& sentence) const {
        const auto before = Contents(folder.path);
        const ProgramResult result = RunKestrel(words);
        EXPECT_EQ(result.exitCode, exitCode) << sentence;
        EXPECT_EQ(result.err, "kestrel: " + sentence + "\n");
        EXPECT_EQ(result.out, "") << sentence;
        EXPECT_EQ(LibraryWordIn(result.err), "");
        EXPECT_TRUE(Contents(folder.path) == before) << sentence;
        AddTried("commands refused for what is protected");
    }

    Words Apply(const std::string& from, const std::string& to, const Words& more = {}) const {
        Words words = {"apply", from, "-o", to, "--effect", "Bump"};
        words.insert(words.end(), more.begin(), more.end());
        return words;
    }
};

constexpr char kNotOpened[] = ": the file cannot be opened (it is protected, or another program uses it).";

TEST_F(ProtectedFiles, A_write_protected_result_is_replaced_by_no_command) {
    for (const char* name : {"old.gif", "old.png", "old.survey", "old-000.png"}) {
        WriteText(Path(name), "earlier");
        Protect(Path(name), 0444);
    }
    const auto refused = [&](const std::string& name, Words words) {
        ExpectRefused(words, 4, Path(name) + ": is write-protected.");
        words.emplace_back("--force");
        ExpectRefused(words, 4, Path(name) + ": is write-protected.");
    };
    refused("old.gif", Apply(input, Path("old.gif")));
    refused("old-000.png", Apply(input, Path("old.png"), {"--format", "png"}));
    refused("old.survey", {"survey", input, "-o", Path("old.survey"), "--format", "gif", "--effect", "Bump"});
    refused("old.gif", {"sample", Path("old.gif")});
    for (const char* command : {"gallery", "palettes"})
        ExpectRefused({command, input, "-o", Path("old.png")}, 4, Path("old.png") + ": is write-protected.");
}

TEST_F(ProtectedFiles, A_folder_that_may_not_be_written_to_is_named) {
    WriteText(guarded + "old.gif", "earlier");
    // One that can be listed, one that can be entered, one of which nothing is known.
    for (const int rights : {0555, 0111, 0444, 0}) {
        Protect(guarded, rights);
        const std::string sentence = ": cannot be written: you may not write to the folder " + guarded + ".";
        for (const Words& more : {Words{}, Words{"--force"}}) {
            ExpectRefused(Apply(input, guarded + "new.gif", more), 4, guarded + "new.gif" + sentence);
            ExpectRefused(Apply(input, guarded, more), 4, guarded + "in.gif" + sentence);
        }
        ExpectRefused(Apply(input, guarded + "old.gif", {"--force"}), 4, guarded + "old.gif" + sentence);
        ExpectRefused(Apply(input, guarded + "more/", {}), 4, guarded + "more/in.gif" + sentence);
        ExpectRefused({"survey", input, "-o", guarded + "a.survey", "--format", "gif", "--effect", "Bump"}, 4,
                      guarded + "a.survey" + sentence);
        ExpectRefused({"help-book", "-o", guarded + "a.html"}, 4, guarded + "a.html" + sentence);
    }
    Protect(guarded, 0755);
    EXPECT_EQ(FilesIn(guarded), Words{"old.gif"});
    EXPECT_EQ(ReadText(guarded + "old.gif"), "earlier");
}

TEST_F(ProtectedFiles, A_file_that_may_not_be_read_is_named_by_every_command_that_reads_it) {
    const std::string secret = Path("secret.gif");
    WriteTestGif(secret, 2);
    Protect(secret, 0);
    const std::string sentence = secret + kNotOpened;
    ExpectRefused(Apply(secret, Path("out.gif")), 3, sentence);
    ExpectRefused(Apply(secret, Path("out/")), 3, sentence);
    for (const char* option : {"--settings", "--recipe"})
        ExpectRefused({"apply", input, "-o", Path("out.gif"), option, secret}, 3, sentence);
    ExpectRefused({"apply", input, "-o", Path("out.kpart"), "--survey", secret, "--frames", "0-1"}, 3,
                  sentence);
    ExpectRefused({"recipe", secret}, 3, sentence);
    ExpectRefused({"verify", secret, "--source", input}, 3, sentence);
    ExpectRefused({"join", secret, "-o", Path("out.gif")}, 3, sentence);
    ExpectRefused({"info", secret}, 3, sentence);
    ExpectRefused({"compare", input, secret}, 3, sentence);
    ExpectRefused({"sheet", input, secret, "-o", Path("out.png")}, 3, sentence);
}

TEST_F(ProtectedFiles, A_folder_that_may_not_be_listed_is_not_taken_for_an_empty_one) {
    WriteTestGif(guarded + "a.gif", 1);
    Protect(guarded, 0300);
    const std::string sentence =
        "guarded: the folder cannot be read (it is protected, or another program uses it).";
    for (const Words& more : {Words{}, Words{"--recursive"}})
        ExpectRefused(Apply(Path("guarded"), Path("out/"), more), 3, folder.path + sentence);
    // Among others it fails alone.
    const ProgramResult result = RunKestrel(Apply(folder.path, Path("out/"), {"--recursive", "--quiet"}));
    EXPECT_EQ(result.exitCode, 3);
    EXPECT_EQ(result.err, "kestrel: " + folder.path + sentence + "\nkestrel: 1 done, 1 failed.\n");
    EXPECT_EQ(FilesIn(Path("out/")), Words{"in.gif"});
}

struct ProtectedBatch : ProtectedFiles {
    const std::string from = folder.path + "from/", to = folder.path + "to/";

    void SetUp() override {
        ProtectedFiles::SetUp();
        if (IsSkipped()) return;
        for (const std::string& made : {from, to}) fs::create_directory(made);
        for (const char* name : {"a.gif", "b.gif", "c.gif"}) WriteTestGif(from + name, 1);
    }
};

TEST_F(ProtectedBatch, A_write_protected_result_is_refused_before_any_work_and_no_other_is_blamed) {
    WriteText(to + "a.gif", "earlier");
    Protect(to + "a.gif", 0444);
    ExpectRefused(Apply(from, to), 4, to + "a.gif: is write-protected.");
    ExpectRefused(Apply(from, to, {"--force"}), 4, to + "a.gif: is write-protected.");
    const ProgramResult plan = RunKestrel(Apply(from, to, {"--force", "--dry-run"}));
    EXPECT_EQ(plan.exitCode, 4);
    EXPECT_EQ(plan.err, "kestrel: " + to + "a.gif: is write-protected.\nkestrel: 2 to do, 1 refused.\n");
}

TEST_F(ProtectedBatch, A_source_that_may_not_be_read_fails_alone) {
    Protect(from + "b.gif", 0);
    const ProgramResult result = RunKestrel(Apply(from, to, {"--quiet"}));
    EXPECT_EQ(result.exitCode, 3);
    EXPECT_EQ(result.err, "kestrel: " + from + "b.gif" + kNotOpened + "\nkestrel: 2 done, 1 failed.\n");
    EXPECT_EQ(FilesIn(to), (Words{"a.gif", "c.gif"}));
    // Nothing is made for what fails so.
    for (const char* name : {"a.gif", "c.gif"}) Protect(from + name, 0);
    EXPECT_EQ(RunKestrel(Apply(from, Path("more/"))).exitCode, 3);
    EXPECT_FALSE(FileExists(Path("more")));
}

// As on a disk of photographs: the folder of the results stands beside them.
TEST_F(ProtectedBatch, Write_protected_sources_are_no_obstacle) {
    for (const char* name : {"a.gif", "b.gif", "c.gif"}) Protect(from + name, 0444);
    const ProgramResult result = RunKestrel(Apply(from, from + "done/", {"--quiet"}));
    EXPECT_EQ(result.exitCode, 0) << result.err;
    EXPECT_EQ(FilesIn(from + "done/"), (Words{"a.gif", "b.gif", "c.gif"}));
}

TEST_F(ProtectedBatch, What_is_done_is_passed_over_write_protected_or_not) {
    ASSERT_EQ(RunKestrel(Apply(from, to)).exitCode, 0);
    const auto before = Contents(folder.path);
    for (const char* name : {"a.gif", "c.gif"}) Protect(to + name, 0444);
    const auto expectDone = [&] {
        const ProgramResult result = RunKestrel(Apply(from, to, {"--skip-done"}));
        EXPECT_EQ(result.exitCode, 0);
        EXPECT_EQ(result.err, "kestrel: 0 done, 3 there before.\n");
    };
    expectDone();
    Protect(to, 0555);
    expectDone();
    Protect(to, 0755);
    // One that is not done is refused in its turn, by its own name.
    DeleteFileAt(to + "a.gif");
    WriteText(to + "a.gif", "earlier");
    Protect(to + "a.gif", 0444);
    const ProgramResult result = RunKestrel(Apply(from, to, {"--skip-done", "--force"}));
    EXPECT_EQ(result.exitCode, 4);
    EXPECT_THAT(result.err, testing::HasSubstr(to + "a.gif: is write-protected.\n"));
    EXPECT_EQ(ReadText(to + "a.gif"), "earlier");
    for (const char* name : {"b.gif", "c.gif"})
        EXPECT_TRUE(ReadText(to + name) == before.at(to + name).bytes) << name;
}

}  // namespace
}  // namespace kfx::test
