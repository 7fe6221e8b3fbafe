// Memory that runs out inside the libraries beneath: in FreeType, HarfBuzz, Cairo, Fontconfig, ICU and libpng. A render
// then gives what it always gives or ends with `std::bad_alloc`; a picture with a letter less is a fault, unless the
// library said nothing. A save leaves the old file or the new one, whole.
//
// Each walk runs in a process of its own, since a library that does not look at what malloc gave may end it. Where it
// ended decides: in this project's code it is a failure, in a library's the walk goes on behind it, and the libraries
// are named.
#include <csignal>
#include <cstdio>
#include <functional>
#include <map>
#include <new>

#include <gtest/gtest.h>
#include <sys/mman.h>
#include <sys/wait.h>
#include <unistd.h>

#include "QzAnno_AnnotatedTextFramework/archive/QzTokeningArchiver.h"
#include "QzAnno_AnnotatedTextFramework/model/QzMutableAnnoString.h"
#include "QzAnno_AnnotatedTextFramework/palette/QzBBoxInfo.h"
#include "QzAnno_AnnotatedTextFramework/render/QzAnnoStringToScreen.h"
#include "platform/foundation/NSLog.h"
#include "platform/graphics/PNG.h"
#include "tests/faults/FailingMalloc.h"
#include "tests/support/FontFiles.h"
#include "tests/support/Palettes.h"
#include "tests/support/TemporaryFolder.h"

namespace qz {
namespace {

using test::Failing;
/// Work that gives bytes to compare, between what prepares it and a look at what lies outside the process.
struct Work {
    std::function<std::string()> run;
    std::function<void()> prepare = [] {};
    std::function<bool()> isWhole = [] { return true; };

    std::string prepareAndRun() const {
        prepare();
        return run();
    }
};
/// What the process of a walk tells, and leaves behind when it ends before its time.
struct Report {
    uint64_t number = 0;  // of the allocation that fails now; 0 when the walk is through
    bool isRepeating = false;
    uint64_t failed = 0, refused = 0, absorbed = 0, otherwise = 0, lost = 0;
    char endedIn[64] = "";
    char fault[256] = "";
};

Report* sharedReport() {
    static Report* const report =
        new (::mmap(nullptr, sizeof(Report), PROT_READ | PROT_WRITE, MAP_SHARED | MAP_ANONYMOUS, -1, 0)) Report;
    return report;
}

void reportWhereItEnded(int signal) {
    const std::string_view module = test::innermostModule(nullptr);
    std::snprintf(sharedReport()->endedIn, sizeof Report::endedIn, "%.*s", static_cast<int>(module.size()),
                  module.data());
    ::signal(signal, SIG_DFL);
    ::raise(signal);
}

/// Libraries that take what they cannot load as absent, and sometimes do not say so: HarfBuzz a table, FreeType a
/// driver or a glyph, Fontconfig a font.
bool tellsNothing(std::string_view module) {
    return module.starts_with("libharfbuzz") || module.starts_with("libfreetype") ||
           module.starts_with("libfontconfig");
}

/// In the child: fails one allocation after the other from `first` on, and ends with the first fault.
void walk(const Work& work, const std::string& expected, uint64_t first, uint64_t stride, uint64_t allocations,
          Failing failing) {
    Report& report = *sharedReport();
    for (const int signal : {SIGSEGV, SIGBUS, SIGABRT, SIGFPE, SIGILL}) ::signal(signal, reportWhereItEnded);
    const auto fault = [&report](const char* what) { std::snprintf(report.fault, sizeof report.fault, "%s", what); };
    for (uint64_t number = first; number <= allocations; number += stride) {
        report.number = number;
        report.isRepeating = false;
        ++report.failed;
        try {
            std::string made;
            work.prepare();
            {
                const test::FailingMalloc failure(number, failing);
                made = work.run();
            }
            const std::string_view module = test::moduleOfFailure();
            if (made == expected) {
                ++report.absorbed;
            } else if (tellsNothing(module)) {
                // It may remember what it made of it, so the process is of no further use.
                ++report.otherwise;
                return;
            } else {
                return fault(("something else came out, without a refusal, by " + std::string(module)).c_str());
            }
        } catch (const std::bad_alloc&) {
            ++report.refused;
        } catch (const std::exception& exception) {
            return fault(exception.what());
        }
        if (!work.isWhole()) ++report.lost;
        report.isRepeating = true;
        if (work.prepareAndRun() != expected) return fault("the same work afterwards gives something else");
    }
    report.number = 0;
}

struct Totals {
    uint64_t allocations = 0, failed = 0, refused = 0, absorbed = 0, otherwise = 0, lost = 0;
    std::map<std::string, int> ended;
};

/// Walks the work's allocations, `tries` of them, each failing alone and then with all that follow.
Totals failEachMalloc(const Work& work, uint64_t tries) {
    setLogHook([](std::string_view) {});
    setStandardErrorHook([](std::string_view) {});
    std::string expected;
    for (int round = 0; round < 3; ++round) expected = work.prepareAndRun();
    Totals totals;
    work.prepare();
    {
        const test::FailingMalloc none(0, Failing::theOne);
        work.run();
        totals.allocations = none.count();
    }
    const uint64_t stride = totals.allocations / tries + 1;
    for (const Failing failing : {Failing::theOne, Failing::theOneAndAllThatFollow}) {
        for (uint64_t first = 1; first != 0;) {
            Report& report = *sharedReport();
            report = {};
            report.number = first;
            const pid_t child = ::fork();
            if (child == 0) {
                walk(work, expected, first, stride, totals.allocations, failing);
                ::_exit(0);
            }
            int status = 0;
            EXPECT_EQ(::waitpid(child, &status, 0), child);
            totals.failed += report.failed;
            totals.refused += report.refused;
            totals.absorbed += report.absorbed;
            totals.otherwise += report.otherwise;
            totals.lost += report.lost;
            const std::string where = "allocation " + std::to_string(report.number) + " of " +
                                      std::to_string(totals.allocations) +
                                      (failing == Failing::theOne ? "" : " and all that follow") +
                                      (report.isRepeating ? ", in the work after it" : "");
            if (*report.fault) ADD_FAILURE() << where << ": " << report.fault;
            if (WIFSIGNALED(status)) {
                ++totals.ended[report.endedIn];
                const std::string_view module = report.endedIn;
                // Fontconfig is the one that does.
                if (!module.starts_with("libfontconfig"))
                    ADD_FAILURE() << where << ": ended by signal " << WTERMSIG(status) << " in " << module;
            }
            first = report.number == 0 ? 0 : report.number + stride;
            if (first > totals.allocations) first = 0;
        }
    }
    setLogHook({});
    setStandardErrorHook({});
    return totals;
}

void print(const char* what, const Totals& totals) {
    std::printf(
        "%s: %llu allocations, %llu failed, %llu refusals, %llu without consequence, %llu without a font or glyph",
        what, static_cast<unsigned long long>(totals.allocations), static_cast<unsigned long long>(totals.failed),
        static_cast<unsigned long long>(totals.refused), static_cast<unsigned long long>(totals.absorbed),
        static_cast<unsigned long long>(totals.otherwise));
    std::printf(", %llu times files lost", static_cast<unsigned long long>(totals.lost));
    for (const auto& [module, count] : totals.ended) std::printf(", %d ended in %s", count, module.c_str());
    std::printf("\n");
}

Ref<QzAnnoPalette> palette() {
    const Ref<QzAnnoPalette> palette = test::paletteWithGlobals(
        {{QzFontSizeAttribute, test::number(120)},
         {QzBackgroundColorAttribute, test::rgba(0, 0, 0)},
         {QzBackgroundWidthAttribute, test::number(8)},
         {QzTextBoundingBoxAppearanceAttribute, QzBBoxInfo::initWithColor(test::rgba(0, 0, 1), 1)}});
    test::addAnnotation(*palette, "Red", {{QzTextColorAttribute, test::rgba(1, 0, 0, 0.5f)}});
    return palette;
}

Ref<QzMutableAnnoString> title(const QzAnnoPalette& palette) {
    const auto title = QzMutableAnnoString::initWithString("Large \xD7\xA9\xD7\x9C ffi\n\xE4\xB8\xAD title"_ns);
    title->addAnno(palette.annoKeyAtPriority(1), {2, 5});
    return title;
}

std::string drawn(const std::shared_ptr<FontLibrary>& library, const Ref<QzAnnoPalette>& styles) {
    const auto screen = QzAnnoStringToScreen::init();
    screen->setFontLibrary(library);
    screen->setPalette(styles);
    screen->setScreenSize({1920, 1080}, {1920, 1080});
    screen->setAnnoString(title(*styles));
    const Ref<NSBitmapImageRep> drawn = screen->bitmapInFullScreen(true);
    if (!drawn) throw std::bad_alloc();
    return std::string(reinterpret_cast<const char*>(drawn->row(0)), size_t{1920} * 1080 * 4);
}

TEST(MallocFault, EndsALargeRenderOrChangesNothing) {
    const Totals totals = failEachMalloc({[] { return drawn(FontLibrary::shared(), palette()); }}, 200);
    print("large render", totals);
    EXPECT_GT(totals.refused, 100u);
}

/// With fonts opened anew, which is where the libraries take most. They are listed before: Fontconfig, which lists
/// them, ends the process at many of its allocations when they fail.
TEST(MallocFault, EndsARenderThatOpensFontsOrChangesNothing) {
    const TemporaryFolder folder;
    ASSERT_TRUE(writeText(folder.file("quokka.ttf"), test::quokka(test::fontFile("DejaVuSans"))));
    const Ref<QzAnnoPalette> styles = palette();
    test::giveAttributes(*styles, styles->lookupAnno({}), {{QzFontAttribute, "Quokka Sans"_ns}});
    std::shared_ptr<FontLibrary> library;
    const auto list = [&] { library = FontLibrary::withDirectories({folder.path().string()}); };
    const Totals totals = failEachMalloc({[&] { return drawn(library, styles); }, list}, 200);
    print("large render that opens fonts", totals);
    EXPECT_LE(totals.otherwise, totals.failed / 50) << "failures of which the libraries tell are not passed on";
    EXPECT_LE(totals.otherwise, totals.failed / 50) << "failures of memory of which the libraries tell are passed on";
    EXPECT_GT(totals.refused, 100u);
}

TEST(MallocFault, LeavesTheOldFileOrTheNew) {
    const TemporaryFolder folder;
    const std::string archive = folder.file("titles.annostring"), picture = folder.file("title.png");
    const Ref<QzAnnoPalette> styles = palette();
    const auto bitmap = NSBitmapImageRep::initWithBitmapDataPlanes(nullptr, {.pixelsWide = 64, .pixelsHigh = 64});
    const auto save = [&] {
        const Ref<NSData> data = QzTokeningArchiver::archivedDataWithRootObject(title(*styles), {styles});
        const Ref<NSData> png = pngFromBitmap(*bitmap);
        std::string error;
        if (!writeFileAtomically(archive, data->bytes(), &error) || !writeFileAtomically(picture, png->bytes(), &error))
            throw std::bad_alloc();
        return std::string(data->view());
    };
    const std::string newArchive = save(), newPicture = readText(picture);
    const auto isWhole = [&] {
        const auto files = std::distance(std::filesystem::directory_iterator(folder.path()), {});
        const std::string found[] = {readText(archive), readText(picture)};
        return files == 2 && (found[0] == "old" || found[0] == newArchive) &&
               (found[1] == "old" || found[1] == newPicture) && writeText(archive, "old") && writeText(picture, "old");
    };
    const Totals totals = failEachMalloc({save, [] {}, isWhole}, 100);
    print("save of an archive and a picture", totals);
    EXPECT_EQ(totals.lost, 0u) << "files neither old nor new, or half a file left beside them";
    EXPECT_GT(totals.refused, 50u);
}

}  // namespace
}  // namespace qz
