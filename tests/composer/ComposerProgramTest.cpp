#include <QImage>
#include <QProcess>

#include <gmock/gmock.h>

#include "tests/support/TemporaryFolder.h"

namespace qz {
namespace {

using testing::HasSubstr;
using testing::StartsWith;

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
}  // namespace qz
