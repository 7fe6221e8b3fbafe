// Saving while the world goes wrong: at any moment the path holds the old content or a new one, whole.
#include <csignal>
#include <random>
#include <thread>

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include "tests/support/TemporaryFolder.h"

namespace qz {
namespace {

constexpr size_t kBytes = 3'000'000;

size_t countOfFiles(const TemporaryFolder& folder) {
    return static_cast<size_t>(std::distance(std::filesystem::directory_iterator(folder.path()), {}));
}

/// Runs the work in a process of its own, which ends with its answer.
pid_t inChild(const auto& work) {
    const pid_t child = ::fork();
    if (child == 0) ::_exit(work() ? 0 : 1);
    return child;
}

bool succeeded(pid_t child) {
    int status = 0;
    return ::waitpid(child, &status, 0) == child && WIFEXITED(status) && WEXITSTATUS(status) == 0;
}

TEST(FileFault, AFullDiskLeavesTheOldFile) {
    const TemporaryFolder folder;
    const std::string path = folder.file("palette.plist");
    ASSERT_TRUE(writeText(path, "old"));
    // A limit of the process stands for the disk's: the system refuses the bytes beyond it in the same way.
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

/// Two programs save to one path: whoever is last wins, and nobody sees a mixture.
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
