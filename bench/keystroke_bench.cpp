// A keystroke in the composer, from the key to the drawn window, including formatting and layout of the title.

#include <QApplication>
#include <QKeyEvent>
#include <QTemporaryDir>
#include <QThread>
#include <algorithm>
#include <chrono>
#include <cstdio>

#include <benchmark/benchmark.h>

#include "QzAnno/palette/AttributeNames.h"
#include "QzAnno/platform/foundation/Files.h"
#include "QzAnno/platform/foundation/NSLog.h"
#include "QzAnno/platform/foundation/NSNumber.h"
#include "QzAnno/platform/graphics/NSColor.h"
#include "QzAnno/platform/ui/NSApplication.h"
#include "QzAnno/ui/QzAnnotationManager.h"
#include "apps/qzanno-composer/ComposerWindow.h"

namespace qz::composer {
namespace {

/// A title of that length: white with an outline and a shadow, every third word in another colour, every fifth larger.
Ref<TitleDocument> styledTitle(uint32_t length) {
    const auto palette = QzAnnoPalette::init();
    const auto document = TitleDocument::documentWithPalette(palette, {1920, 1080});
    const auto add = [&](const char* name, const std::vector<std::pair<Ref<NSString>, Ref<NSObject>>>& attributes) {
        const auto anno = palette->createAnno(NSString::stringWithUTF8String(name))->mutableCopy();
        for (const auto& [attribute, value] : attributes) anno->setAttribute(attribute, value);
        palette->replaceAnno(anno);
        return anno->annokey();
    };
    const auto color = [](float r, float g, float b) { return NSColor::colorWithCalibratedRed(r, g, b, 1); };
    const auto number = [](float value) { return NSNumber::numberWithFloat(value); };
    const auto whole = add("Whole", {{QzTextColorAttribute, color(1, 1, 1)},
                                     {QzFontSizeAttribute, number(48)},
                                     {QzBackgroundColorAttribute, color(0, 0, 0)},
                                     {QzBackgroundWidthAttribute, number(3)},
                                     {QzBackground2ColorAttribute, color(0, 0, 0.5f)},
                                     {QzBackground2OffsetAttribute, "{4, 4}"_ns}});
    const auto colored = add("Coloured", {{QzTextColorAttribute, color(1, 0.8f, 0)}});
    const auto large = add("Large", {{QzFontSizeAttribute, number(60)}});
    std::u16string text;
    while (text.size() < length) text += u"words ";
    text.resize(length);
    const auto title = QzMutableAnnoString::initWithString(NSString::stringWithCharacters(std::move(text)));
    title->addFrameAnno(whole);
    for (uint32_t word = 0; word * 6 + 6 <= length; ++word) {
        if (word % 3 == 0) title->addAnno(colored, {word * 6, 5});
        if (word % 5 == 0) title->addAnno(large, {word * 6, 5});
    }
    document->setTitles({{{title->copy(), {}, {}}}});
    return document;
}

void typeIntoTitle(benchmark::State& state) {
    const Ref<TitleDocument> document = styledTitle(static_cast<uint32_t>(state.range(0)));
    NSApplication::sharedApplication().setDelegate(document);
    QzAnnotationManager::sharedAnnotationManager()->setAnnotationPalette(document->palette());
    ComposerWindow window(document);
    window.show();
    window.activateWindow();
    window.textWidget()->setFocus();
    QApplication::processEvents();
    QImage shown(window.textWidget()->size(), QImage::Format_ARGB32_Premultiplied);
    const auto press = [&](int key, const char* text) {
        QKeyEvent event(QEvent::KeyPress, key, Qt::NoModifier, text);
        QApplication::sendEvent(window.textWidget(), &event);
        window.textWidget()->render(&shown);
    };
    // In the middle, with lines before and after.
    document->textView()->setSelectedRange({static_cast<uint32_t>(state.range(0)) / 2, 0});
    window.textWidget()->render(&shown);
    const QImage before = shown.copy();
    press(Qt::Key_X, "x");
    if (shown == before) state.SkipWithError("the typed text does not show");
    press(Qt::Key_Backspace, "");
    bool types = true;
    for (auto _ : state) {
        // Types and deletes in turn, so that the title keeps its length.
        types ? press(Qt::Key_X, "x") : press(Qt::Key_Backspace, "");
        types = !types;
    }
    QzAnnotationManager::sharedAnnotationManager()->setAnnotationPalette({});
}
BENCHMARK(typeIntoTitle)->Arg(50)->Arg(200)->Arg(800)->Unit(benchmark::kMillisecond);

/// A key, and everything else before the window accepts the next one, in a file of that many captions with recovery of
/// unsaved changes: the delay that a typist feels.
void typeIntoFile(benchmark::State& state) {
    const QTemporaryDir folder;
    const Ref<TitleDocument> document = styledTitle(50);
    std::string captions = "WEBVTT\n";
    for (int64_t i = 0; i < state.range(0); ++i) {
        char times[64];
        std::snprintf(times, sizeof times, "\n%02d:%02d:%02d.000 --> %02d:%02d:%02d.900\n", int(i / 3600),
                      int(i / 60 % 60), int(i % 60), int(i / 3600), int(i / 60 % 60), int(i % 60));
        captions +=
            times + ("<c.Whole>Caption " + std::to_string(i) + " says <c.Large>something</c>\nin two lines</c>\n");
    }
    const std::string path = folder.filePath("captions.vtt").toStdString();
    std::string reason;
    writeFileAtomically(path, {reinterpret_cast<const uint8_t*>(captions.data()), captions.size()}, &reason);
    NSApplication::sharedApplication().setDelegate(document);
    QzAnnotationManager::sharedAnnotationManager()->setAnnotationPalette(document->palette());
    ComposerWindow window(document);
    window.show();
    if (!window.openTitles(path)) return state.SkipWithError("the captions cannot be opened");
    window.keepRecovery(folder.filePath("recovery"));
    window.activateWindow();
    window.textWidget()->setFocus();
    document->show(document->titles().size() / 2);
    QApplication::processEvents();
    std::vector<double> waits;
    bool types = true;
    for (auto _ : state) {
        const auto begin = std::chrono::steady_clock::now();
        QKeyEvent event(QEvent::KeyPress, types ? Qt::Key_X : Qt::Key_Backspace, Qt::NoModifier, types ? "x" : "");
        QApplication::sendEvent(window.textWidget(), &event);
        QApplication::processEvents();
        waits.push_back(std::chrono::duration<double, std::milli>(std::chrono::steady_clock::now() - begin).count());
        state.SetIterationTime(waits.back() / 1000);
        types = !types;
        QThread::msleep(20);
    }
    std::ranges::sort(waits);
    state.counters["p50_ms"] = waits[waits.size() / 2];
    state.counters["p90_ms"] = waits[waits.size() * 9 / 10];
    state.counters["p99_ms"] = waits[waits.size() * 99 / 100];
    state.counters["max_ms"] = waits.back();
    document->markTitlesSaved();
    QzAnnotationManager::sharedAnnotationManager()->setAnnotationPalette({});
}
// Long enough for several copies of the unsaved changes.
BENCHMARK(typeIntoFile)->Arg(1)->Arg(20000)->Iterations(601)->UseManualTime()->Unit(benchmark::kMillisecond);

}  // namespace
}  // namespace qz::composer

int main(int argc, char** argv) {
    if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM")) qputenv("QT_QPA_PLATFORM", "offscreen");
    const QApplication application(argc, argv);
    qz::setStandardErrorHook([](std::string_view) {});
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    return 0;
}
