// Memory that runs out at any moment of a piece of work: `std::bad_alloc` leaves the call and nothing else happens. The
// same work done afterwards gives what it always gives, and holds no block more. Inside the libraries beneath too: in
// FreeType, HarfBuzz, Cairo, Fontconfig, ICU and libpng. A picture with a letter less is a fault, unless the library
// said nothing. A save leaves the old file or the new one, whole.
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

#include "QzAnno/archive/QzTokeningArchiver.h"
#include "QzAnno/model/QzMutableAnnoString.h"
#include "QzAnno/platform/foundation/NSLog.h"
#include "QzAnno/platform/graphics/PNG.h"
#include "QzAnno/platform/text/NSAttributedString.h"
#include "QzAnno/render/QzAnnoStringToScreen.h"
#include "platform/graphics/NSGraphicsContext.h"
#include "platform/text/GlyphCache.h"
#include "tests/faults/FailingMemory.h"
#include "tests/support/FontFiles.h"
#include "tests/support/Palettes.h"
#include "tests/support/TemporaryFolder.h"

namespace qz {
namespace {

using test::Failing;

/// Work that gives bytes to compare, between what prepares it and a look at what lies outside the process.
struct Work {
    std::function<std::string()> run;
    std::function<void()> prepare;
    std::function<bool()> isWhole;

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
    const int64_t held = test::blocksHeld();
    for (uint64_t number = first; number <= allocations; number += stride) {
        report.number = number;
        report.isRepeating = false;
        ++report.failed;
        try {
            std::string made;
            work.prepare();
            {
                const test::FailingMemory failure(number, failing);
                made = work.run();
            }
            const std::string_view module = test::moduleOfFailure();
            if (made == expected) {
                ++report.absorbed;
            } else if (failing != Failing::theNew && tellsNothing(module)) {
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
        if (NSGraphicsContext::currentContext()) return fault("a graphics context is left current");
        if (work.prepareAndRun() != expected) return fault("the same work afterwards gives something else");
        if (failing == Failing::theNew && test::blocksHeld() != held) return fault("blocks are held for good");
    }
    report.number = 0;
}

struct Totals {
    uint64_t allocations = 0, failed = 0, refused = 0, absorbed = 0, otherwise = 0, lost = 0;
    std::map<std::string, int> ended;
};

/// Walks the work's allocations, `tries` of them.
Totals failEach(const Work& work, Failing failing, uint64_t tries) {
    setLogHook([](std::string_view) {});
    setStandardErrorHook([](std::string_view) {});
    std::string expected;
    for (int round = 0; round < 3; ++round) expected = work.prepareAndRun();
    Totals totals;
    work.prepare();
    {
        const test::FailingMemory none(0, failing);
        work.run();
        totals.allocations = none.count();
    }
    const uint64_t stride = totals.allocations / tries + 1;
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
                                  (failing == Failing::theMallocAndAllBehind ? " and all that follow" : "") +
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
    setLogHook({});
    setStandardErrorHook({});
    return totals;
}

/// A render with fonts opened anew, which is where the libraries take most, by the host's pipeline, which outlives the
/// failure; and a save of it. The fonts are listed before: Fontconfig, which lists them, ends the process at many of
/// its allocations when they fail.
void failEachOfARenderAndASave(Failing failing, uint64_t tries) {
    const TemporaryFolder fonts, folder;
    ASSERT_TRUE(writeText(fonts.file("quokka.ttf"), test::quokka(test::fontFile("DejaVuSans"))));
    const std::string archive = folder.file("titles.annostring"), picture = folder.file("title.png");
    const auto screen = QzAnnoStringToScreen::init();
    std::shared_ptr<FontLibrary> library;
    const auto run = [&] {
        const Ref<QzAnnoPalette> styles = test::strokedPalette(40, 8);
        test::giveAttributes(*styles, styles->lookupAnno({}), {{QzFontAttribute, "Quokka Sans"_ns}});
        const Ref<QzMutableAnnoString> title = test::mixedTitle(*styles);
        screen->layoutManager()->glyphCache()->removeAll();
        styles->setFontLibrary(library);
        screen->setPalette(styles);
        screen->setScreenSize({640, 360}, {640, 360});
        screen->setAnnoString(title);
        const Ref<NSBitmapImageRep> drawn = screen->bitmapInFullScreen(true);
        if (!drawn) throw std::bad_alloc();
        const Ref<NSData> data = QzTokeningArchiver::archivedDataWithRootObject(title, {styles});
        const Ref<NSData> png = pngFromBitmap(*drawn);
        if (!writeFileAtomically(archive, data->bytes(), nullptr) ||
            !writeFileAtomically(picture, png->bytes(), nullptr))
            throw std::bad_alloc();
        return std::string(data->view()) + std::string(png->view());
    };
    const auto prepare = [&] {
        // What is remembered of fonts opened anew would count as blocks held.
        if (!library || failing != Failing::theNew) library = FontLibrary::withDirectories({fonts.path().string()});
        writeText(archive, "old");
        writeText(picture, "old");
    };
    prepare();
    run();
    const std::string newArchive = readText(archive), newPicture = readText(picture);
    const auto isWhole = [&] {
        const auto files = std::distance(std::filesystem::directory_iterator(folder.path()), {});
        const std::string found[] = {readText(archive), readText(picture)};
        return files == 2 && (found[0] == "old" || found[0] == newArchive) &&
               (found[1] == "old" || found[1] == newPicture);
    };
    const Totals totals = failEach({run, prepare, isWhole}, failing, tries);
    std::printf("%llu of %llu allocations failed: %llu times std::bad_alloc, %llu absorbed, %llu otherwise",
                static_cast<unsigned long long>(totals.failed), static_cast<unsigned long long>(totals.allocations),
                static_cast<unsigned long long>(totals.refused), static_cast<unsigned long long>(totals.absorbed),
                static_cast<unsigned long long>(totals.otherwise));
    for (const auto& [module, count] : totals.ended) std::printf(", %d ended in %s", count, module.c_str());
    std::printf("\n");
    EXPECT_EQ(totals.lost, 0u) << "files neither old nor new, or half a file left beside them";
    EXPECT_LE(totals.otherwise, totals.failed / 30) << "failures of which the libraries tell are passed on";
    EXPECT_GT(totals.refused, 50u);
}

TEST(MemoryFault, EndsARenderAndASaveOrChangesNothing) {
    failEachOfARenderAndASave(Failing::theNew, 300);
#ifdef QZANNO_MALLOC_FAILS
    failEachOfARenderAndASave(Failing::theMalloc, 150);
    failEachOfARenderAndASave(Failing::theMallocAndAllBehind, 150);
#endif
}

/// Makes the edit of a string of its own, failing allocation after allocation: a string is what it was, or what the
/// edit makes of it, and never between.
template <class String>
uint64_t failEachAllocationOfEdit(const std::function<Ref<String>()>& make, const std::function<void(String&)>& edit,
                                  const char* name) {
    const Ref<String> before = make(), after = make();
    edit(*after);
    uint64_t failed = 0;
    for (uint64_t number = 1;; ++number) {
        const Ref<String> edited = make();
        try {
            const test::FailingMemory failing(number);
            edit(*edited);
            if (failing.count() >= number)
                ADD_FAILURE() << name << ": the failure of allocation " << number << " is lost";
            EXPECT_TRUE(edited->isEqual(*after)) << name;
            return failed;
        } catch (const std::bad_alloc&) {
            ++failed;
        }
        EXPECT_TRUE(edited->isEqual(*before)) << name << " is half done after the failure of allocation " << number;
        edit(*edited);
        EXPECT_TRUE(edited->isEqual(*after)) << name << ", tried again after the failure of allocation " << number;
    }
}

template <class String>
using Edits = std::vector<std::pair<const char*, std::function<void(String&)>>>;

template <class String>
void failEachAllocationOfEdits(const std::function<Ref<String>()>& make, const Edits<String>& edits) {
    uint64_t failed = 0;
    for (const auto& [name, edit] : edits) failed += failEachAllocationOfEdit(make, edit, name);
    EXPECT_GT(failed, 50u);
}

TEST(MemoryFault, LeavesAnAnnotatedStringAsItWas) {
    const Ref<QzAnnoPalette> styles = test::strokedPalette(20, 3);
    const Ref<QzAnnoKey> red = styles->annoKeyAtPriority(1), other = QzAnnoKey::keyWithName("other"_ns);
    // Longer than a row is at first, and with a key that the title lacks.
    const auto added = QzMutableAnnoString::initWithString(NSString::stringWithCharacters(std::u16string(3000, u'x')));
    added->addAnno(other, {1, 2998});
    const Ref<NSSet> both = NSSet::setWithObjects(std::vector<Ref<QzAnnoKey>>{red, other});
    const Range range{1, 4};
    failEachAllocationOfEdits<QzMutableAnnoString>(
        [&] { return test::mixedTitle(*styles); },
        {{"a plain replacement", [&](auto& text) { text.replaceCharactersInRange(range, added->string()); }},
         {"an annotated replacement", [&](auto& text) { text.replaceCharactersInRange(range, *added); }},
         {"an insertion", [&](auto& text) { text.insertAnnoString(*added, 3); }},
         {"an insertion of itself", [&](auto& text) { text.insertAnnoString(text, 3); }},
         {"an appended string", [&](auto& text) { text.appendAnnoString(*added); }},
         {"a deletion", [&](auto& text) { text.deleteCharactersInRange(range); }},
         {"a new string", [&](auto& text) { text.setAnnoString(*added); }},
         {"a set key", [&](auto& text) { text.addAnno(other, range); }},
         {"two set keys", [&](auto& text) { text.setAnnos(both, range); }},
         {"a toggled frame", [&](auto& text) { text.toggleFrameAnno(red); }}});
}

TEST(MemoryFault, LeavesAnAttributedStringAsItWas) {
    const Ref<NSDictionary> red = test::dictionaryOf({{"colour"_ns, "red"_ns}});
    const Ref<NSDictionary> large = test::dictionaryOf({{"size"_ns, test::number(90)}});
    // Its lists of characters and of runs are full, so that whatever is added takes memory.
    const auto make = [&] {
        const auto text = NSMutableAttributedString::init();
        for (int run = 0; run < 8; ++run) text->appendString(u"four", run % 2 ? red : large);
        return text;
    };
    const std::u16string added(100, u'x');
    const Ref<NSAttributedString> runs = make()->copy();
    const Range across{5, 9}, within{1, 2};
    failEachAllocationOfEdits<NSMutableAttributedString>(
        make, {{"appended characters", [&](auto& text) { text.appendString(added, large); }},
               {"characters appended to the last run", [&](auto& text) { text.appendString(added, red); }},
               {"an appended string", [&](auto& text) { text.appendAttributedString(*runs); }},
               {"a replacement", [&](auto& text) { text.replaceCharactersInRange(across, *runs); }},
               {"a replacement by itself", [&](auto& text) { text.replaceCharactersInRange(across, text); }},
               {"a plain replacement", [&](auto& text) { text.replaceCharactersInRange(within, "some more"_ns); }},
               {"a deletion", [&](auto& text) { text.deleteCharactersInRange(across); }},
               {"new attributes", [&](auto& text) { text.setAttributes(red, within); }},
               {"one attribute", [&](auto& text) { text.addAttribute("font"_ns, "f"_ns, across); }},
               {"one attribute less", [&](auto& text) { text.removeAttribute(*"size"_ns, across); }}});
}

/// The names in their order, each with its number of attributes, and what could be undone.
std::string stackOf(const QzAnnoPalette& palette) {
    std::string text;
    for (int32_t priority = 0; priority <= palette.maxPriority(); ++priority) {
        const Ref<QzAnnoKey> key = palette.annoKeyAtPriority(priority);
        text += key->name()->utf8() + std::to_string(palette.lookupAnno(key)->allAttributes()->count());
        if (palette.lookupPrio(key) != priority || !key->valid()) text += " astray";
        text += ",";
    }
    return text;
}

/// Edits a palette without memory, and undoes all of it: the stack is whole at any moment, and edits and undoing go on.
TEST(MemoryFault, LeavesAPaletteAndItsUndoManagerWhole) {
    const std::function<void(QzAnnoPalette&)> edits[] = {
        [](auto& palette) { palette.createAnno("d"_ns); },
        [](auto& palette) { palette.removeAnno(palette.annoKeyAtPriority(2)); },
        [](auto& palette) { palette.setAnnoKey(palette.annoKeyAtPriority(1), 3); },
        [](auto& palette) { palette.increasePriorityOfAnnoKey(palette.annoKeyAtPriority(1)); },
        [](auto& palette) {
            const Ref<QzMutableAnno> changed = palette.lookupAnno(palette.annoKeyAtPriority(1))->mutableCopy();
            changed->setAttribute("size"_ns, "large"_ns);
            palette.replaceAnno(changed);
        },
        [](auto& palette) { palette.undoManager()->undo(); },
    };
    setStandardErrorHook([](std::string_view) {});
    uint64_t failed = 0;
    for (const auto& edit : edits) {
        const auto make = [&] {
            const Ref<QzAnnoPalette> palette = test::paletteWithGlobals({});
            // Twenty, so that the table has an index.
            for (int i = 0; i < 20; ++i)
                palette->createAnno(NSString::stringWithUTF8String(std::string(1, char('a' + i))));
            palette->undoManager()->endEvent();
            palette->removeAnno(palette->annoKeyAtPriority(7));
            palette->undoManager()->endEvent();
            return palette;
        };
        const Ref<QzAnnoPalette> before = make(), after = make();
        edit(*after);
        for (uint64_t number = 1; number < 1000; ++number) {
            const Ref<QzAnnoPalette> palette = make();
            try {
                const test::FailingMemory failing(number);
                edit(*palette);
                if (failing.count() < number) break;
            } catch (const std::bad_alloc&) {
                ++failed;
            }
            const std::string stack = stackOf(*palette);
            EXPECT_TRUE(stack == stackOf(*before) || stack == stackOf(*after))
                << stack << " after allocation " << number;
            palette->undoManager()->endEvent();
            for (int undone = 0; undone < 5 && palette->undoManager()->undo(); ++undone) continue;
            EXPECT_EQ(stackOf(*palette), "GLOBALS0,") << "undone after the failure of allocation " << number;
        }
    }
    setStandardErrorHook({});
    EXPECT_GT(failed, 20u);
}

}  // namespace
}  // namespace qz
