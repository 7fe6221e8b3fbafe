#include <csignal>
#include <random>
#include <thread>

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include "tests/support/TemporaryFolder.h"

namespace qz {
namespace {

namespace fs = std::filesystem;
using testing::HasSubstr;

mode_t modeOf(const std::string& path) {
    struct stat status {};
    return ::stat(path.c_str(), &status) == 0 ? status.st_mode & 07777 : 0;
}

size_t countOfFiles(const TemporaryFolder& folder) {
    return static_cast<size_t>(std::distance(fs::directory_iterator(folder.path()), fs::directory_iterator()));
}

TEST(Files, ReplacesContentAndKeepsTheMode) {
    const TemporaryFolder folder;
    const std::string path = folder.file("palette.plist");
    ASSERT_TRUE(writeText(path, "old content"));
    ASSERT_EQ(::chmod(path.c_str(), 0640), 0);
    // A reader of the old file keeps reading the old content.
    std::FILE* reader = std::fopen(path.c_str(), "r");
    ASSERT_TRUE(writeText(path, "new"));
    char old[16] = {};
    EXPECT_EQ(std::fread(old, 1, sizeof old, reader), 11u);
    std::fclose(reader);
    EXPECT_STREQ(old, "old content");
    EXPECT_EQ(readText(path), "new");
    EXPECT_EQ(modeOf(path), 0640u);
    EXPECT_EQ(countOfFiles(folder), 1u);
}

TEST(Files, NewFilesFollowTheMaskOfTheProcess) {
    const TemporaryFolder folder;
    const mode_t before = ::umask(027);
    ASSERT_TRUE(writeText(folder.file("new"), ""));
    ::umask(before);
    EXPECT_EQ(modeOf(folder.file("new")), 0640u);
}

TEST(Files, ReplacesWhatASymbolicLinkPointsTo) {
    const TemporaryFolder folder;
    fs::create_directory(folder.file("real"));
    ASSERT_TRUE(writeText(folder.file("real/target"), "old"));
    fs::create_symlink("real/target", folder.file("link"));
    fs::create_symlink("link", folder.file("chain"));
    ASSERT_TRUE(writeText(folder.file("chain"), "new"));
    EXPECT_TRUE(fs::is_symlink(folder.file("link")));
    EXPECT_TRUE(fs::is_symlink(folder.file("chain")));
    EXPECT_EQ(readText(folder.file("real/target")), "new");

    fs::create_symlink("real/later", folder.file("dangling"));
    ASSERT_TRUE(writeText(folder.file("dangling"), "born"));
    EXPECT_TRUE(fs::is_symlink(folder.file("dangling")));
    EXPECT_EQ(readText(folder.file("real/later")), "born");
}

TEST(Files, RefusalsSayWhyAndTouchNothing) {
    const TemporaryFolder folder;
    fs::create_directory(folder.file("folder"));
    fs::create_symlink("loop", folder.file("loop"));
    ASSERT_TRUE(writeText(folder.file("file"), "kept"));
    const size_t before = countOfFiles(folder);
    const struct {
        const char* name;
        const char* reason;
    } cases[] = {{"folder", "directory"},
                 {"missing/file", "No such file"},
                 {"loop", "symbolic links"},
                 {"file/inside", "Not a directory"}};
    for (const auto& [name, reason] : cases) {
        std::string error;
        EXPECT_FALSE(writeText(folder.file(name), "lost", &error)) << name;
        EXPECT_THAT(error, HasSubstr(reason));
    }
    EXPECT_EQ(readText(folder.file("file")), "kept");
    EXPECT_EQ(countOfFiles(folder), before);
}

TEST(Files, DevicesAreWrittenToAndNotReplaced) {
    ASSERT_TRUE(writeText("/dev/null", "gone"));
    EXPECT_TRUE(fs::is_character_file("/dev/null"));
    std::string error;
    EXPECT_FALSE(writeText("/dev/full", "text", &error));
    EXPECT_THAT(error, HasSubstr("No space left"));
}

TEST(Files, ReadingIsBounded) {
    const TemporaryFolder folder;
    const std::string path = folder.file("ten");
    ASSERT_TRUE(writeText(path, "0123456789"));
    std::string error;
    EXPECT_TRUE(readFile(path, &error, 10));
    EXPECT_EQ(error, "");
    EXPECT_FALSE(readFile(path, &error, 9));
    EXPECT_THAT(error, HasSubstr("limit of 9 bytes"));
    // Endless and of unknown size.
    EXPECT_FALSE(readFile("/dev/zero", &error, 3'000'000));
    EXPECT_THAT(error, HasSubstr("larger than"));
    EXPECT_GT(readText("/proc/self/maps").size(), 100u);
    EXPECT_FALSE(readFile(folder.path().string(), &error));
    EXPECT_THAT(error, HasSubstr("directory"));
    EXPECT_FALSE(readFile(folder.file("missing"), &error));
    EXPECT_THAT(error, HasSubstr("No such file"));
}

constexpr size_t kBytes = 3'000'000;

/// Runs the work in a child process, which exits with its result.
pid_t inChild(const auto& work) {
    const pid_t child = ::fork();
    if (child == 0) ::_exit(work() ? 0 : 1);
    return child;
}

bool succeeded(pid_t child) {
    int status = 0;
    return ::waitpid(child, &status, 0) == child && WIFEXITED(status) && WEXITSTATUS(status) == 0;
}

// Saving during failures: at any moment the path has either the whole old content or the whole new one.
TEST(FileFault, AFullDiskLeavesTheOldFile) {
    const TemporaryFolder folder;
    const std::string path = folder.file("palette.plist");
    ASSERT_TRUE(writeText(path, "old"));
    // A process limit simulates a full disk: the system refuses further bytes in the same way.
    EXPECT_TRUE(succeeded(inChild([&] {
        const rlimit limit = {kBytes / 2, kBytes / 2};
        std::string error;
        std::signal(SIGXFSZ, SIG_IGN);
        return ::setrlimit(RLIMIT_FSIZE, &limit) == 0 && !writeText(path, std::string(kBytes, 'n'), &error) &&
               error == "cannot be written: File too large";
    })));
    EXPECT_EQ(readText(path), "old");
    EXPECT_EQ(countOfFiles(folder), 1u) << "half a file is left beside it";
}

TEST(FileFault, AReadOnlyTargetIsKept) {
    if (::geteuid() != 0) GTEST_SKIP() << "needs to become another user";
    const TemporaryFolder folder;
    const std::string path = folder.file("palette.plist");
    ASSERT_TRUE(writeText(path, "old"));
    std::filesystem::permissions(folder.path(), std::filesystem::perms::all);
    EXPECT_TRUE(succeeded(inChild([&] {
        std::string error;
        return ::setuid(65534) == 0 && !writeText(path, "new", &error) &&
               error == "cannot be written: Permission denied";
    })));
    std::filesystem::permissions(folder.path(),
                                 std::filesystem::perms::owner_read | std::filesystem::perms::owner_exec);
    EXPECT_TRUE(succeeded(inChild([&] {
        std::string error;
        return ::setuid(65534) == 0 && !writeText(folder.file("other"), "new", &error) && !error.empty();
    })));
    EXPECT_EQ(readText(path), "old");
    EXPECT_EQ(countOfFiles(folder), 1u);
}

TEST(FileFault, AKilledSaveLeavesTheOldFileOrTheNew) {
    const TemporaryFolder folder;
    const std::string path = folder.file("titles.annostring");
    const std::string contents[] = {std::string(kBytes, 'a'), std::string(kBytes / 2, 'b')};
    ASSERT_TRUE(writeText(path, contents[0]));
    std::minstd_rand random(7);
    for (int kill = 0; kill < 30; ++kill) {
        const pid_t child = inChild([&] {
            for (size_t i = 0;; ++i) writeText(path, contents[i % 2]);
            return false;
        });
        std::this_thread::sleep_for(std::chrono::microseconds(1000 + random() % 20'000));
        ::kill(child, SIGKILL);
        ::waitpid(child, nullptr, 0);
        const std::string found = readText(path);
        ASSERT_TRUE(found == contents[0] || found == contents[1]) << found.size() << " bytes after kill " << kill;
    }
}

/// Two programs save to one path: the last one wins, and readers never see a mixture.
TEST(FileFault, ATargetThatIsReplacedMeanwhileIsNeverMixed) {
    const TemporaryFolder folder;
    const std::string path = folder.file("title.png");
    const std::string contents[] = {std::string(kBytes, 'a'), std::string(kBytes / 2, 'b')};
    ASSERT_TRUE(writeText(path, contents[0]));
    std::vector<pid_t> children;
    for (const std::string& content : contents) {
        children.push_back(inChild([&] {
            for (int i = 0; i < 20; ++i)
                if (!writeText(path, content)) return false;
            return true;
        }));
    }
    for (int look = 0; look < 60; ++look) {
        const std::string found = readText(path);
        ASSERT_TRUE(found == contents[0] || found == contents[1]) << found.size() << " bytes";
    }
    for (const pid_t child : children) EXPECT_TRUE(succeeded(child));
    EXPECT_EQ(countOfFiles(folder), 1u);
}

}  // namespace
}  // namespace qz
