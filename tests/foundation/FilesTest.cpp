#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
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
    // Whoever reads the old file at this moment keeps reading the old content.
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
    // Endless, and without a size that is known beforehand.
    EXPECT_FALSE(readFile("/dev/zero", &error, 3'000'000));
    EXPECT_THAT(error, HasSubstr("larger than"));
    EXPECT_GT(readText("/proc/self/maps").size(), 100u);
    EXPECT_FALSE(readFile(folder.path().string(), &error));
    EXPECT_THAT(error, HasSubstr("directory"));
    EXPECT_FALSE(readFile(folder.file("missing"), &error));
    EXPECT_THAT(error, HasSubstr("No such file"));
}

}  // namespace
}  // namespace qz
