#include <map>
#include <set>
#include <sstream>

#include <gmock/gmock.h>
#include <nlohmann/json.hpp>

#include "tests/qzanno/Tool.h"

namespace qz {
namespace {

using namespace test;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
namespace fs = std::filesystem;

/// Many titles, files and machines. Pictures are small, since they are not under test.
class BatchTest : public ToolTest {
protected:
    // A SubRip file of cues with these texts, two seconds each.
    static std::string subRip(const std::vector<std::string>& texts) {
        std::ostringstream file;
        int minute = 0;
        for (const std::string& text : texts) {
            file << "00:" << (minute < 10 ? "0" : "") << minute << ":01,000 --> 00:" << (minute < 10 ? "0" : "")
                 << minute << ":03,000\n"
                 << text << "\n\n";
            ++minute;
        }
        return file.str();
    }

    // Every third one looks like the one before it.
    static std::string manyCues(int count) {
        std::vector<std::string> texts;
        for (int i = 0; i < count; ++i) texts.push_back("Title " + std::to_string(i % 3 == 2 ? i - 1 : i));
        return subRip(texts);
    }

    // Every file in a folder and its subfolders: path and content.
    std::map<std::string, std::string> filesOf(const std::string& name) const {
        std::map<std::string, std::string> files;
        for (const auto& entry : fs::recursive_directory_iterator(path(name))) {
            const std::string relative = fs::relative(entry.path(), path(name)).string();
            if (entry.is_regular_file()) files[relative] = contentOf(name + "/" + relative);
        }
        return files;
    }

    static std::vector<std::string> linesOf(const std::string& text) {
        std::vector<std::string> lines;
        std::istringstream stream(text);
        for (std::string line; std::getline(stream, line);) lines.push_back(line);
        return lines;
    }

    uint64_t inode(const std::string& name) const {
        struct stat status {};
        ::stat(path(name).c_str(), &status);
        return status.st_ino;
    }

    std::string size = " -s 1920x1080 -d 192x108 ";
};

TEST_F(BatchTest, EveryFileGetsAFolderThatNoOtherHas) {
    for (const char* name : {"in/season/0001.png", "other"}) fs::create_directories(path(name));
    for (const char* file : {"in/a.srt", "in/season/a.srt", "in/season/0001.png/b.srt", "other/a.srt"}) {
        write(file, subRip({file, "Two"}));
    }
    write("in/a.vtt", "WEBVTT\n\n00:01.000 --> 00:02.000\nin/a.vtt\n");
    write("in/notes.doc", "not a title");
    const ToolResult result = run("render other/a.srt in -o out --manifest m.jsonl" + size);
    EXPECT_EQ(result.exitCode, 0);
    EXPECT_THAT(result.err, IsEmpty());
    std::set<std::string> files;
    std::vector<std::string> folders;
    for (const std::string& line : linesOf(contentOf("m.jsonl"))) {
        const auto entry = nlohmann::json::parse(line);
        EXPECT_TRUE(exists(entry["file"])) << line;
        EXPECT_TRUE(files.insert(entry["file"]).second) << "two titles in one file: " << line;
        if (entry["index"] == 1) {
            folders.push_back(fs::path(entry["file"].get<std::string>()).parent_path().string());
            EXPECT_EQ(entry["text"], entry["source"]);
        }
    }
    EXPECT_THAT(folders, ElementsAre("out/a", "out/a.srt", "out/a.vtt", "out/season/0001.png_/b", "out/season/a"));
    EXPECT_EQ(files.size(), 9u);

    const struct {
        const char *arguments, *line;
    } refused[] = {
        {"render in other -o one.png", "one.png: one file cannot hold the titles of several"},
        {"render nowhere.srt in -o out2", "nowhere.srt: cannot be opened"},
        {"render empty -o out3", "empty: holds no .srt, .vtt, .ass, .ssa, .txt or .annostring file"},
    };
    fs::create_directory(path("empty"));
    for (const auto& c : refused) {
        const ToolResult failed = run(c.arguments + size);
        EXPECT_EQ(failed.exitCode, 1);
        EXPECT_THAT(failed.err, HasSubstr(c.line));
    }
    EXPECT_TRUE(exists("out2/season/a/0002.png")) << "one file that cannot be read does not stop the others";
}

TEST_F(BatchTest, ThreadsChangeNothingAndTitlesThatLookTheSameAreDrawnOnce) {
    write("c.srt", manyCues(30));
    write("p.plist", paletteFile(kWhiteText + "<key>Full FontName as NSString</key><string>No Such Font</string>"));
    std::vector<std::string> manifests;
    std::vector<std::string> errors;
    for (const char* jobs : {"1", "2", "7"}) {
        fs::remove_all(path("out"));
        const ToolResult result =
            run("render c.srt -p p.plist -o out --manifest m.jsonl -v --jobs " + std::string(jobs) + size);
        EXPECT_EQ(result.exitCode, 0);
        manifests.push_back(contentOf("m.jsonl"));
        const ToolResult piped = run("render c.srt -p p.plist -o - --jobs " + std::string(jobs) + size);
        manifests.back() += piped.out;
        errors.push_back(piped.err);
    }
    EXPECT_EQ(manifests[0], manifests[1]);
    EXPECT_EQ(manifests[0], manifests[2]);
    EXPECT_EQ(errors[0], errors[2]);
    EXPECT_EQ(filesOf("out").size(), 30u);
    EXPECT_EQ(contentOf("out/0002.png"), contentOf("out/0003.png"));
    EXPECT_NE(contentOf("out/0001.png"), contentOf("out/0002.png"));
    EXPECT_EQ(inode("out/0002.png"), inode("out/0003.png"));
    const auto entry = nlohmann::json::parse(linesOf(contentOf("m.jsonl")).at(2));
    EXPECT_EQ(entry["sameAs"], "out/0002.png");
    EXPECT_EQ(entry["start"], 121);
    // An independent program computes the same checksum.
    const std::string sum = shell("sha256sum out/0003.png").out;
    EXPECT_EQ(entry["sha256"], sum.substr(0, sum.find(' ')));
    EXPECT_EQ(entry["bytes"], contentOf("out/0003.png").size());

    // The same words elsewhere on the screen are another picture.
    const ToolResult example =
        run("render " QZANNO_EXAMPLES "/captions.srt -p " QZANNO_EXAMPLES "/broadcast.plist -o ex" + size);
    EXPECT_THAT(example.err, IsEmpty());
    write("twins.srt", subRip({"Same", "Same", "{\\an8}Same"}));
    EXPECT_EQ(run("render twins.srt -o twins" + size).exitCode, 0);
    EXPECT_EQ(inode("twins/0001.png"), inode("twins/0002.png"));
    EXPECT_NE(contentOf("twins/0001.png"), contentOf("twins/0003.png"));
}

TEST_F(BatchTest, AKilledRunGoesOnWhereItWas) {
    write("c.srt", manyCues(40));
    const std::string render = "render c.srt -o out --manifest m.jsonl --jobs 2 -s 1280x720";
    ASSERT_EQ(run(render).exitCode, 0);
    const auto whole = filesOf("out");
    const std::string manifest = contentOf("m.jsonl");
    // On a loaded machine the run may end before the kill arrives.
    for (int attempt = 0; attempt < 5 && !exists("m.jsonl.part"); ++attempt) {
        fs::remove_all(path("out"));
        fs::remove(path("m.jsonl"));
        shell("\"$QZANNO\" " + render +
              " & pid=$!; while kill -0 $pid && [ $(cat m.jsonl.part | wc -l) -lt 8 ]; do sleep 0.01; done; kill -9 "
              "$pid");
    }
    ASSERT_TRUE(exists("m.jsonl.part")) << "the run was not killed in the middle";
    EXPECT_FALSE(exists("m.jsonl"));
    const size_t done = linesOf(contentOf("m.jsonl.part")).size();
    EXPECT_GE(done, 8u);
    EXPECT_LT(done, 40u);

    // The end of a line that was being written, a picture that is cut short, one with a byte changed, one that is gone.
    write("m.jsonl.part", contentOf("m.jsonl.part") + linesOf(manifest).at(done).substr(0, 50));
    const uint64_t kept = inode("out/0004.png");
    // Half a file of the killed run, and one that another run is writing.
    const std::string pid = contentOf("m.jsonl.run");
    write("out/.qz-" + pid + "-77", "half");
    write("out/.qz-" + pid + "7-1", "of another run");
    write("out/0001.png", whole.at("0001.png").substr(0, 100));
    std::string changed = whole.at("0005.png");
    changed[changed.size() / 2] ^= 1;
    write("out/0005.png", changed);
    fs::remove(path("out/0007.png"));
    EXPECT_EQ(run(render + " --resume").exitCode, 0);
    EXPECT_TRUE(fs::remove(path("out/.qz-" + pid + "7-1")));
    EXPECT_TRUE(filesOf("out") == whole);
    EXPECT_EQ(contentOf("m.jsonl"), manifest);
    EXPECT_EQ(inode("out/0004.png"), kept) << "it was whole";
    for (const char* ending : {".part", ".resumed", ".run"}) EXPECT_FALSE(exists("m.jsonl" + std::string(ending)));

    // Another text is another title, wherever its number was.
    std::string edited = contentOf("c.srt");
    edited.replace(edited.find("Title 3"), 7, "Other 3");
    write("c.srt", edited);
    EXPECT_EQ(run(render + " --resume").exitCode, 0);
    EXPECT_NE(contentOf("out/0004.png"), whole.at("0004.png"));
    EXPECT_EQ(contentOf("out/0007.png"), whole.at("0007.png"));
    EXPECT_EQ(run("render c.srt -o out --resume").exitCode, 2) << "without a manifest nobody knows";
}

TEST_F(BatchTest, SharesTogetherAreTheRun) {
    write("c.srt", manyCues(20));
    fs::create_directory(path("in"));
    write("in/d.srt", manyCues(9));
    const std::string render = "render c.srt in -o out --manifest m.jsonl" + size;
    ASSERT_EQ(run(render).exitCode, 0);
    const auto whole = filesOf("out");
    const std::string manifest = contentOf("m.jsonl");
    fs::remove_all(path("out"));

    EXPECT_EQ(run(render + "--shard 1/3").exitCode, 0);
    const size_t first = filesOf("out").size();
    EXPECT_GT(first, 2u);
    EXPECT_LT(first, 18u);
    EXPECT_EQ(run(render + "--shard 3/3").exitCode, 0);
    const ToolResult incomplete = run("manifest merge m.1-of-3.jsonl m.3-of-3.jsonl -o joined.jsonl");
    EXPECT_EQ(incomplete.exitCode, 1);
    EXPECT_THAT(incomplete.err, HasSubstr("the manifest of share 2 of 3 is missing"));
    EXPECT_THAT(incomplete.err, HasSubstr("in/d.srt: titles are missing: "));
    // As the second task of a Slurm array that begins at 10.
    const ToolResult task =
        shell("SLURM_ARRAY_TASK_ID=11 SLURM_ARRAY_TASK_COUNT=3 SLURM_ARRAY_TASK_MIN=10 \"$QZANNO\" " + render);
    EXPECT_EQ(task.exitCode, 0);
    EXPECT_THAT(task.err, HasSubstr("renders share 2 of 3, as the task of a Slurm array"));
    EXPECT_TRUE(filesOf("out") == whole);
    const ToolResult joined = run("manifest merge m.3-of-3.jsonl m.1-of-3.jsonl m.2-of-3.jsonl -o joined.jsonl");
    EXPECT_EQ(joined.exitCode, 0);
    EXPECT_THAT(joined.err, IsEmpty());
    EXPECT_EQ(contentOf("joined.jsonl"), manifest);

    const struct {
        std::string line;
        int exitCode;
        const char* message;
    } refused[] = {
        {"\"$QZANNO\" " + render + "--shard 4/3", 2, "4/3 is not a share"},
        {"SLURM_ARRAY_TASK_ID=5 SLURM_ARRAY_TASK_COUNT=3 \"$QZANNO\" " + render, 2, "SLURM_ARRAY_TASK"},
        {"\"$QZANNO\" " + render + "--shard 1/2; \"$QZANNO\" manifest merge m.1-of-2.jsonl m.1-of-3.jsonl -o x.jsonl",
         1, "m.1-of-3.jsonl: belongs to another run"},
        {"\"$QZANNO\" manifest merge c.srt -o x.jsonl", 1, "c.srt:1: is not a line of a manifest"},
    };
    for (const auto& c : refused) {
        const ToolResult result = shell(c.line);
        EXPECT_EQ(result.exitCode, c.exitCode) << c.line;
        EXPECT_THAT(result.err, HasSubstr(c.message));
    }
}

TEST_F(BatchTest, ListedCommandsRunInParallel) {
    write("it's.srt", manyCues(12));
    const std::string render = "render \"it's.srt\" -o out --manifest m.jsonl -j 1" + size;
    ASSERT_EQ(run(render).exitCode, 0);
    const auto whole = filesOf("out");
    const std::string manifest = contentOf("m.jsonl");
    fs::remove_all(path("out"));
    const ToolResult listed = run(render + "--list-commands 3");
    EXPECT_EQ(linesOf(listed.out).size(), 3u);
    EXPECT_FALSE(exists("out"));
    const ToolResult result = shell("\"$QZANNO\" " + render + "--list-commands 3 | parallel --will-cite -j 2");
    EXPECT_EQ(result.exitCode, 0) << result.err;
    EXPECT_TRUE(filesOf("out") == whole);
    EXPECT_EQ(run("manifest merge m.*-of-3.jsonl -o joined.jsonl").exitCode, 0);
    EXPECT_EQ(contentOf("joined.jsonl"), manifest);
}

}  // namespace
}  // namespace qz
