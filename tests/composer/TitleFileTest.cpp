#include <QImage>
#include <QProcess>
#include <QString>

#include <gmock/gmock.h>

#include "QzAnno/archive/PaletteData.h"
#include "QzAnno/platform/foundation/Files.h"
#include "apps/qzanno-composer/TitleTimes.h"
#include "captions/ClockTime.h"
#include "tests/support/LogCapture.h"
#include "tests/support/Palettes.h"
#include "tests/support/TemporaryFolder.h"

namespace qz::composer {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::StartsWith;

constexpr NSSize kScreen = {1920, 1080};

class TitleFiles : public testing::Test {
protected:
    std::string errorOf(const std::string& name, const char* content) {
        if (content) writeText(folder.file(name), content);
        std::string error;
        EXPECT_FALSE(readTitleFile(folder.file(name), palette, error)) << name;
        EXPECT_EQ(error.find('\n'), std::string::npos);
        EXPECT_THAT(error, StartsWith(folder.file(name) + ":"));
        return error;
    }

    test::LogCapture log;
    TemporaryFolder folder;
    Ref<QzAnnoPalette> palette = test::paletteWithGlobals({});
    Ref<QzAnnoKey> key = test::addAnnotation(*palette, "Lower Third", {});
};

TEST_F(TitleFiles, comeBackInEitherFormWithTheKeysOfThePalette) {
    const auto first = QzMutableAnnoString::initWithString("one \U0001F600"_ns);
    first->addAnno(key, {0, 3});
    const auto second = QzMutableAnnoString::initWithString("two"_ns);
    second->addFrameAnno(key);
    for (const std::string name : {"t.annostring", "t.vtt"}) {
        for (const size_t count : {size_t{1}, size_t{2}}) {
            TitleFile titles{{{first->copy(), {}, {}}, {second->copy(), 5, 6.5}}};
            titles.titles.resize(count);
            std::string error;
            const auto written = titlesAsFile(folder.file(name), titles, palette, kScreen, error);
            ASSERT_TRUE(written) << error;
            const bool losesTimes = count == 2 && name == "t.annostring";
            EXPECT_EQ(written->losses.size(), losesTimes ? 1u : 0u);
            ASSERT_TRUE(writeFileAtomically(folder.file(name), written->file->bytes(), &error));
            const auto read = readTitleFile(folder.file(name), palette, error);
            ASSERT_TRUE(read) << error;
            ASSERT_EQ(read->titles.size(), count);
            for (size_t i = 0; i < count; ++i)
                EXPECT_TRUE(read->titles[i].text->isEqualToAnnoString(*titles.titles[i].text)) << i;
            EXPECT_EQ(read->titles[0].end.value_or(0), name == "t.vtt" ? 1.5 : 0)
                << "a title without times is given some";
        }
    }
}

TEST_F(TitleFiles, thatCannotBeReadOrWrittenSayWhatAndWhere) {
    EXPECT_THAT(errorOf("none.vtt", nullptr), HasSubstr("No such file"));
    EXPECT_THAT(errorOf("t.doc", "x"), HasSubstr(".srt, .vtt"));
    EXPECT_THAT(errorOf("empty.srt", "x"), HasSubstr("holds no captions"));
    EXPECT_THAT(errorOf("empty.vtt", "WEBVTT\n"), HasSubstr("holds no captions"));
    EXPECT_THAT(errorOf("not.vtt", "hello"), HasSubstr(":1:"));
    errorOf("latin.txt", "caf\xe9");
    errorOf("damaged.annostring", "\x04\x0bstreamtyped");
    std::string error;
    writeText(folder.file("kept.annostring"), "kept");
    EXPECT_FALSE(readPaletteFile(folder.file("kept.annostring"), error));
    EXPECT_THAT(error, StartsWith(folder.file("kept.annostring") + ": "));
    EXPECT_FALSE(titlesAsFile("t.srt", {{{QzAnnoString::init(), {}, {}}}}, palette, kScreen, error));
    EXPECT_THAT(error, testing::AllOf(StartsWith("t.srt: "), HasSubstr(".vtt, .ass or .annostring")));
    EXPECT_FALSE(titlesAsFile("t.vtt", {{{QzAnnoString::init(), 2, 1}}}, palette, kScreen, error));
    EXPECT_THAT(error, StartsWith("t.vtt: title 1: "));
}

TEST_F(TitleFiles, warnOfNamesThatThePaletteLacks) {
    std::string error;
    writeText(folder.file("c.vtt"), "WEBVTT\n\n00:01.000 --> 00:02.500\n<c.Lower_Third>a</c><c.Nobody>b</c>\n");
    const auto captions = readTitleFile(folder.file("c.vtt"), palette, error);
    ASSERT_TRUE(captions) << error;
    EXPECT_EQ(captions->titles[0].end, 2.5);
    EXPECT_TRUE(captions->titles[0].text->annotation(key, 0));
    EXPECT_THAT(captions->warnings, ElementsAre(HasSubstr("c.vtt:4: ")));
    const auto written = titlesAsFile(folder.file("t.annostring"), *captions, palette, kScreen, error);
    ASSERT_TRUE(written && writeFileAtomically(folder.file("t.annostring"), written->file->bytes(), &error));
    palette->removeAnno(key);
    const auto archive = readTitleFile(folder.file("t.annostring"), palette, error);
    ASSERT_TRUE(archive) << error;
    EXPECT_THAT(archive->warnings, ElementsAre(testing::AllOf(HasSubstr("t.annostring: "), HasSubstr("Lower Third")),
                                               HasSubstr("Nobody")));
}

TEST_F(TitleFiles, ofOneFormatBecomeAnotherWithTheirPlaces) {
    std::string error;
    writeText(folder.file("S.SRT"),
              "1\n00:00:01,000 --> 00:00:02,500\n{\\an8}up\n\n2\n00:00:03,000 --> 00:00:04,000\ndown\n");
    const auto titles = readTitleFile(folder.file("S.SRT"), palette, error);
    ASSERT_TRUE(titles) << error;
    const auto written = titlesAsFile("s.vtt", *titles, palette, kScreen, error);
    ASSERT_TRUE(written) << error;
    EXPECT_THAT(std::string(written->file->view()), HasSubstr("00:00:02.500 line:0 align:center\nup\n"));
    const auto script = titlesAsFile("S.ASS", *titles, palette, kScreen, error);
    ASSERT_TRUE(script) << error;
    EXPECT_THAT(std::string(script->file->view()), HasSubstr(",0:00:01.00,0:00:02.50,Default,,0,0,0,,{\\an8}up\n"));
    EXPECT_THAT(script->losses, ElementsAre(HasSubstr("cannot keep the identifiers")));
}

TEST(TitleTimes, areReadAsPeopleWriteThem) {
    const std::pair<const char*, std::optional<double>> cases[] = {
        {"00:01:02.500", 62.5}, {"1:02,5", 62.5}, {" 62.5 ", 62.5}, {"90", 90}, {"10:00:00", 36000}, {"0.0004", 0},
        {"1:60", {}},           {"", {}},         {"1:", {}},       {"-1", {}}, {"1e3", {}},         {"1:2:3:4", {}},
        {"1.5:00", {}},         {"nan", {}},
    };
    for (const auto& [text, seconds] : cases) EXPECT_EQ(secondsOfClock(text), seconds) << text;
    EXPECT_EQ(clockOf(3723.0625), "01:02:03.063");
}

TEST(TitleTimes, areGivenSoThatATitleCanBeRead) {
    const auto text = [](size_t length) {
        return QzAnnoString::initWithString(NSString::stringWithCharacters(std::u16string(length, u'x')));
    };
    const struct {
        size_t length;
        std::optional<double> formerEnd, nextStart;
        double start, end;
        const char* reason;
    } cases[] = {
        {45, 10, {}, 10, 13, "fifteen letters a second"},
        {1, {}, {}, 0, 1.5, "no flash"},
        {900, 10, {}, 10, 17, "no standstill"},
        {45, 10, 12, 10, 12, "until the next"},
        {45, 10, 10, 10, 13, "over the next when there is no room"},
    };
    for (const auto& c : cases) {
        std::vector<Title> titles = {{text(1), {}, c.formerEnd}, {text(c.length), {}, {}}, {text(1), c.nextStart, {}}};
        giveTimes(titles, 1);
        EXPECT_EQ(titles[1].start, c.start) << c.reason;
        EXPECT_EQ(titles[1].end, c.end) << c.reason;
    }
}

struct Outcome {
    int code;
    std::string error;
};

Outcome run(const QStringList& arguments) {
    QProcess process;
    auto environment = QProcessEnvironment::systemEnvironment();
    environment.remove("DISPLAY");
    environment.remove("WAYLAND_DISPLAY");
    environment.remove("QT_QPA_PLATFORM");
    environment.insert("XDG_RUNTIME_DIR", "/tmp");
    process.setProcessEnvironment(environment);
    process.start(QZANNO_COMPOSER, arguments);
    if (!process.waitForFinished(60000)) return {-1, "did not end"};
    return {process.exitCode(), process.readAllStandardError().toStdString()};
}

const QString kCaptions = QZANNO_EXAMPLES "/first-title.vtt";
const QString kPalette = QZANNO_EXAMPLES "/broadcast.plist";

TEST(ComposerProgram, writesAPictureOfItsWindows) {
    const TemporaryFolder folder;
    const std::string path = folder.file("shot.png");
    const Outcome outcome = run({kCaptions, "-p", kPalette, "--edit", "Lower Third", "--page", "Place and box",
                                 "--appearance", "light", "--screenshot", QString::fromStdString(path)});
    EXPECT_EQ(outcome.code, 0) << outcome.error;
    const QImage picture(QString::fromStdString(path));
    EXPECT_GT(picture.width(), 1500) << "three windows";
    EXPECT_GT(picture.height(), 600);
}

TEST(ComposerProgram, saysInOneLineWhatIsWrong) {
    struct Case {
        QStringList arguments;
        int code;
        const char* says;
    };
    const Case cases[] = {
        {{"--fly"}, 2, "fly"},
        {{"--screen", "0x9", "--screenshot", "x.png"}, 2, "--screen"},
        {{"--appearance", "pink", "--screenshot", "x.png"}, 2, "--appearance"},
        {{"none.vtt", "--screenshot", "x.png"}, 1, "none.vtt: "},
        {{"-p", "none.plist", "--screenshot", "x.png"}, 1, "none.plist: "},
        {{kCaptions, "-p", kPalette, "-f", "none.png", "--screenshot", "x.png"}, 1, "none.png: "},
        {{kCaptions, "-p", kPalette, "-t", "99", "--screenshot", "x.png"}, 1, "there is no title 99; there are 8"},
        {{kCaptions, "-p", kPalette, "--edit", "Nobody", "--screenshot", "x.png"}, 1, "Nobody"},
        {{"--page", "Letters", "--screenshot", "x.png"}, 2, "--edit"},
        {{kCaptions, "-p", kPalette, "--edit", "Role", "--page", "Last", "--screenshot", "x.png"},
         1,
         "no page \"Last\""},
        {{kCaptions, "-p", kPalette, "--screenshot", "/no folder/x.png"}, 1, "/no folder/x.png: "},
        {{kCaptions}, 1, "there is no screen"},
    };
    for (const Case& c : cases) {
        const Outcome outcome = run(c.arguments);
        SCOPED_TRACE(c.arguments.join(' ').toStdString());
        EXPECT_EQ(outcome.code, c.code);
        EXPECT_THAT(outcome.error, HasSubstr(c.says));
        EXPECT_THAT(outcome.error, HasSubstr("qzanno-composer: "));
    }
}

}  // namespace
}  // namespace qz::composer
