#include <QApplication>
#include <QCommandLineParser>
#include <QDir>
#include <QFileInfo>
#include <QIcon>
#include <QMessageBox>
#include <QStyle>
#include <QStyleFactory>
#include <QTemporaryDir>
#include <QTimer>
#include <cstdio>
#include <string_view>

#include <unistd.h>

#include "QzAnno/platform/foundation/Files.h"
#include "QzAnno/platform/foundation/NSLog.h"
#include "QzAnno/platform/graphics/PNG.h"
#include "QzAnno/platform/ui/NSApplication.h"
#include "QzAnno/platform/ui/NSUserDefaults.h"
#include "QzAnno/ui/QzAnnotationManager.h"
#include "apps/qzanno-composer/ComposerWindow.h"
#include "apps/qzanno-composer/Screenshot.h"
#include "captions/Format.h"

namespace qz::composer {
namespace {

constexpr int kFailed = 1;
constexpr int kWrongUsage = 2;

struct Options {
    QString titles;
    QString palette;
    QString frame;
    NSSize screen = {1920, 1080};
    int title = 1;
    QString edit;
    QString page;
    QString appearance;
    QString screenshot;
    bool hasSafeAreas = false;
    bool isVerbose = false;
};

std::string pagesOf(const QzAnnoEditor& editor) {
    std::string pages;
    for (const Ref<NSString>& label : editor.pageLabels()) pages += (pages.empty() ? "" : ", ") + label->utf8();
    return pages;
}

int fail(int code, const std::string& message) {
    std::fprintf(stderr, "qzanno-composer: %s\n", message.c_str());
    return code;
}

/// Reports a failure, in a window too if the desktop has started the program and nobody reads standard error.
int failInSight(const Options& options, const std::string& message) {
    const int code = fail(kFailed, message);
    const bool isRead = isatty(STDERR_FILENO) || !options.screenshot.isEmpty();
    if (!isRead && QGuiApplication::platformName() != "offscreen")
        QMessageBox::critical(nullptr, "QzAnno Composer", QString::fromStdString(message));
    return code;
}

QPalette darkPalette() {
    QPalette dark;
    dark.setColor(QPalette::Window, QColor(0x35, 0x38, 0x3c));
    dark.setColor(QPalette::Base, QColor(0x1e, 0x1f, 0x22));
    dark.setColor(QPalette::AlternateBase, QColor(0x26, 0x28, 0x2b));
    dark.setColor(QPalette::Button, QColor(0x45, 0x49, 0x4e));
    dark.setColor(QPalette::Mid, QColor(0x5a, 0x5d, 0x61));
    dark.setColor(QPalette::Highlight, QColor(0x3d, 0x7b, 0xd9));
    dark.setColor(QPalette::ToolTipBase, QColor(0x3a, 0x3d, 0x41));
    for (const QPalette::ColorRole role : {QPalette::WindowText, QPalette::Text, QPalette::ButtonText,
                                           QPalette::ToolTipText, QPalette::HighlightedText, QPalette::BrightText}) {
        dark.setColor(role, QColor(0xe6, 0xe6, 0xe6));
        dark.setColor(QPalette::Disabled, role, QColor(0x80, 0x83, 0x87));
    }
    dark.setColor(QPalette::PlaceholderText, QColor(0x9a, 0x9d, 0xa1));
    return dark;
}

/// Returns false, with one line in `error`, for invalid arguments.
bool parse(const QStringList& arguments, Options& options, std::string& error, QString& help) {
    QCommandLineParser parser;
    parser.setApplicationDescription("Composes titles: type over a frame, style with annotations.");
    parser.addPositionalArgument(
        "TITLES",
        QString::fromStdString("Captions (" + listOf(endingsOf(Format::captions), ", ") + "), one title as text (" +
                               listOf(endingsOf(Format::text)) + "), or archived titles (" +
                               listOf(endingsOf(Format::archive)) + ")"),
        "[TITLES]");
    parser.addOptions(
        {{{"p", "palette"}, "The palette (.plist, .annopalette); empty by default.", "PALETTE"},
         {{"f", "frame"}, "A .png picture to show beneath the text; a checkerboard by default.", "FRAME"},
         {{"s", "screen"}, "The screen in points; 1920x1080 by default.", "WxH"},
         {{"t", "title"}, "The number of the title to show first, from 1.", "NUMBER"},
         {"edit", "Opens the annotation of that name in the editor.", "NAME"},
         {"page", "Shows that page of the editor, such as \"Place and box\".", "PAGE"},
         {"safe-areas", "Shows the safe areas over the title."},
         {"appearance", "The colours of the windows; desktop uses the desktop's.", "light|dark|desktop", "desktop"},
         {"screenshot", "Writes a .png picture of the windows and exits.", "FILE"},
         {{"v", "verbose"}, "Shows the library's log."},
         {{"h", "help"}, "Shows this text."},
         {"version", "Shows the version."}});
    if (!parser.parse(arguments)) {
        error = parser.errorText().toStdString();
        return false;
    }
    if (parser.isSet("help")) help = parser.helpText();
    if (parser.isSet("version")) help = "qzanno-composer " QZANNO_VERSION "\n";
    if (parser.positionalArguments().size() > 1) {
        error = "give one file of titles; run the composer once for each";
        return false;
    }
    options.titles = parser.positionalArguments().value(0);
    options.palette = parser.value("palette");
    options.frame = parser.value("frame");
    options.edit = parser.value("edit");
    options.page = parser.value("page");
    options.appearance = parser.value("appearance");
    options.screenshot = parser.value("screenshot");
    options.hasSafeAreas = parser.isSet("safe-areas");
    options.isVerbose = parser.isSet("verbose");
    if (parser.isSet("screen")) {
        const QStringList sides = parser.value("screen").split('x');
        options.screen = {sides.value(0).toFloat(), sides.value(1).toFloat()};
        const auto isSide = [](float side) { return side >= 1 && side <= 16384; };
        if (sides.size() != 2 || !isSide(options.screen.width) || !isSide(options.screen.height)) {
            error = "--screen takes WIDTHxHEIGHT, each from 1 to 16384, as in 1920x1080";
            return false;
        }
    }
    if (!options.page.isEmpty() && options.edit.isEmpty()) error = "--page needs the editor; give --edit NAME too";
    if (parser.isSet("title")) options.title = parser.value("title").toInt();
    if (options.title < 1) error = "--title takes a number from 1";
    if (!QStringList{"light", "dark", "desktop"}.contains(options.appearance)) {
        error = "--appearance is light, dark or desktop";
    }
    return error.empty();
}

int run(const Options& options) {
    std::string error;
    Ref<QzAnnoPalette> palette = QzAnnoPalette::init();
    if (!options.palette.isEmpty()) palette = readPaletteFile(options.palette.toStdString(), error);
    if (!palette) return failInSight(options, error);
    const Ref<TitleDocument> document = TitleDocument::documentWithPalette(palette, options.screen);
    if (!options.titles.isEmpty()) {
        auto file = readTitleFile(options.titles.toStdString(), palette, error);
        if (!file) return failInSight(options, error);
        for (const std::string& warning : file->warnings) fail(0, warning);
        document->setTitles(std::move(*file));
    }
    if (static_cast<size_t>(options.title) > document->titles().size()) {
        return failInSight(options, "there is no title " + std::to_string(options.title) + "; there are " +
                                        std::to_string(document->titles().size()));
    }
    document->show(static_cast<size_t>(options.title) - 1);
    Ref<NSBitmapImageRep> frame;
    if (!options.frame.isEmpty()) {
        const std::string path = options.frame.toStdString();
        const Ref<NSData> data = readFile(path, &error);
        if (data) frame = bitmapFromPNG(*data, &error);
        if (!frame) return failInSight(options, path + ": " + error);
    }

    // A screenshot must neither depend on the user's settings nor change them.
    const QTemporaryDir settings;
    const bool isForPicture = !options.screenshot.isEmpty();
    auto& defaults = NSUserDefaults::standardUserDefaults();
    if (isForPicture) defaults.useFile(settings.filePath("defaults.ini").toStdString());
    NSApplication::sharedApplication().setDelegate(document);
    ComposerWindow window(document);
    window.setFiles(options.titles.toStdString(), options.palette.toStdString());
    window.setFrame(frame);
    if (options.hasSafeAreas) window.showSafeAreas();
    if (!isForPicture) window.takePlace();
    window.show();
    const Ref<QzAnnotationManager> manager = QzAnnotationManager::sharedAnnotationManager();
    manager->setAnnotationPalette(palette);
    // A user who has closed the panel reopens it from the menu.
    if (!defaults.hasValueForKey("AnnoationPaletteVisible")) manager->showWindow({});
    if (!options.edit.isEmpty()) {
        const Ref<QzAnnoKey> key = palette->findAnnoKey(NSString::stringWithUTF8String(options.edit.toStdString()));
        if (!key) return failInSight(options, "the palette has no annotation \"" + options.edit.toStdString() + "\"");
        manager->editor()->setAnno(palette->lookupAnno(key));
        const std::string page = options.page.toStdString();
        if (!page.empty() && !manager->editor()->showPage(NSString::stringWithUTF8String(page)))
            return failInSight(options,
                               "the editor has no page \"" + page + "\"; there are: " + pagesOf(*manager->editor()));
    }
    window.activateWindow();
    window.textWidget()->setFocus();
    if (!isForPicture) {
        const QFileInfo settingsFile(QString::fromStdString(defaults.file()));
        QTimer::singleShot(0, &window, [&] { window.keepRecovery(settingsFile.dir().filePath("composer-recovery")); });
        return QApplication::exec();
    }

    std::vector<QWidget*> windows = {&window, manager->window()->widget()};
    if (manager->editor()->isEditing()) windows.push_back(manager->editor()->window()->widget());
    const std::string path = options.screenshot.toStdString();
    const bool isWritten = writeScreenshot(windows, path, error);
    defaults.useFile({});
    return isWritten ? 0 : fail(kFailed, path + ": " + error);
}

}  // namespace
}  // namespace qz::composer

int main(int argc, char** argv) {
    using namespace qz::composer;
    QCoreApplication::setApplicationName("qzanno-composer");
    // A screenshot needs no screen; without one, the toolkit would end the process with a message of its own.
    const bool hasScreen = qEnvironmentVariableIsSet("DISPLAY") || qEnvironmentVariableIsSet("WAYLAND_DISPLAY") ||
                           qEnvironmentVariableIsSet("QT_QPA_PLATFORM");
    if (!hasScreen) qputenv("QT_QPA_PLATFORM", "offscreen");
    QApplication application(argc, argv);
    // The installed .desktop file gives the icon and name on the desktop.
    QGuiApplication::setDesktopFileName("qzanno-composer");
    QApplication::setWindowIcon(QIcon::fromTheme("qzanno-composer"));
    Options options;
    std::string error;
    QString help;
    if (!parse(QCoreApplication::arguments(), options, error, help)) {
        return fail(kWrongUsage, error + "; see --help");
    }
    if (!help.isEmpty()) {
        std::fputs(help.toUtf8().constData(), stdout);
        return 0;
    }
    if (!hasScreen && options.screenshot.isEmpty()) {
        return fail(kFailed, "there is no screen to open a window on; run it on a desktop, or with --screenshot FILE");
    }
    if (options.isVerbose)
        qz::setLogHook(qz::writeToStandardError);
    else
        qz::setStandardErrorHook([](std::string_view) {});
    if (options.appearance != "desktop") {
        QApplication::setStyle(QStyleFactory::create("Fusion"));
        QApplication::setPalette(options.appearance == "dark" ? darkPalette()
                                                              : QApplication::style()->standardPalette());
    }
    return run(options);
}
