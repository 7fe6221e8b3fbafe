#include <charconv>
#include <iostream>

#include <CLI/CLI.hpp>

#include "apps/qzanno/FontFolders.h"
#include "apps/qzanno/PaletteCommands.h"
#include "apps/qzanno/RenderCommand.h"
#include "platform/foundation/NSLog.h"

namespace qz::tool {
namespace {

constexpr int kFailed = 1;
constexpr int kWrongUsage = 2;

constexpr const char* kRenderExamples =
    "Examples:\n"
    "  qzanno render captions.vtt -p broadcast.plist -o titles --manifest titles.jsonl\n"
    "  qzanno render --text 'Good evening' -p broadcast.plist -a 'Lower Third' -o title.png\n"
    "  qzanno render --text 'Hello' --over frame.png -o composite.png\n"
    "  qzanno render title.txt -s 1280x720 -o - | ffplay -f rawvideo -pixel_format rgba -video_size 1280x720 -";

constexpr const char* kPaletteExamples =
    "Examples:\n"
    "  qzanno palette show broadcast.plist\n"
    "  qzanno palette check broadcast.plist";

std::optional<PixelSize> parsedSize(const std::string& text) {
    PixelSize size;
    const char* const end = text.data() + text.size();
    const auto [afterWidth, widthError] = std::from_chars(text.data(), end, size.width);
    if (widthError != std::errc() || afterWidth == end || *afterWidth != 'x') return {};
    const auto [afterHeight, heightError] = std::from_chars(afterWidth + 1, end, size.height);
    if (heightError != std::errc() || afterHeight != end || size.width < 1 || size.height < 1) return {};
    return size;
}

/// Adds an option whose value is written WxH.
template <class Set>
void addSizeOption(CLI::App& command, const std::string& name, const std::string& description, Set set) {
    command
        .add_option_function<std::string>(
            name,
            [name, set](const std::string& text) {
                const auto size = parsedSize(text);
                if (!size)
                    throw CLI::ValidationError(
                        name, text + " is no size; write WIDTHxHEIGHT, such as 1920x1080, both above 0");
                set(*size);
            },
            description)
        ->type_name("WxH");
}

void addFontFolders(CLI::App& command, std::vector<std::string>& folders) {
    command.add_option("--font-dir", folders, "Use the fonts in this folder before those of the machine (repeatable)")
        ->type_name("DIR")
        ->expected(1)
        ->multi_option_policy(CLI::MultiOptionPolicy::TakeAll);
}

void describeRender(CLI::App& command, RenderOptions& options) {
    command.footer(kRenderExamples);
    auto* input =
        command.add_option("INPUT", options.input, "A .vtt file of captions, or a .txt file that is one title");
    command.add_option("--text", options.text, "Render this text instead of a file")->excludes(input);
    command.add_option("-p,--palette", options.palette,
                       "Property list with the styles; without it a built-in palette serves");
    command
        .add_option("-a,--annotate", options.annotations,
                    "Lay this annotation over the whole of every title (repeatable)")
        ->type_name("NAME")
        ->expected(1)
        ->multi_option_policy(CLI::MultiOptionPolicy::TakeAll);
    addSizeOption(command, "-s,--screen", "The screen that the titles are laid out for, in points [1920x1080]",
                  [&options](PixelSize size) { options.screen = size; });
    addSizeOption(command, "-d,--data", "The frame that the screen is scaled onto, in pixels [the screen's]",
                  [&options](PixelSize size) { options.data = size; });
    auto* box = command.add_flag("-b,--box", options.box, "Only the area round the text, not the whole screen");
    command.add_option(
        "-o,--output", options.output,
        "A .png or .rgba file for one title, a directory for many, - for raw premultiplied RGBA on standard output");
    command.add_option("--over", options.over, "Composite over this frame")->type_name("FRAME.png")->excludes(box);
    command.add_option("--manifest", options.manifest, "Write what was rendered as JSON Lines")->type_name("FILE");
    addFontFolders(command, options.fontDirectories);
    command
        .add_option("--lang", options.language,
                    "The language of the titles, such as ja or zh-Hant; it decides which forms shared letters take")
        ->type_name("TAG");
    command.add_flag("!--no-antialias", options.antialias, "Draw hard edges");
    command.add_option("--quality", options.quality, "How carefully outlines are drawn, 0 to 1 [1]")
        ->check(CLI::Range(0.0, 1.0));
    command.add_flag("--strict", options.strict,
                     "Fail on a font that is missing or lacks characters, on cut text and on unknown classes");
}

void addVerbosity(CLI::App& command, bool& verbose, bool& quiet) {
    auto* flag = command.add_flag("-v,--verbose", verbose, "Say more, the library's log included");
    command.add_flag("-q,--quiet", quiet, "Only say what failed")->excludes(flag);
}

/// The library's own lines are for developers: shown when asked for.
void routeLibraryLog(Diagnostics::Verbosity verbosity) {
    if (verbosity == Diagnostics::Verbosity::verbose) return;
    setLogHook([](std::string_view) {});
    setStandardErrorHook([](std::string_view) {});
}

int run(int argc, char** argv) {
    CLI::App app("Annotated titles and captions, from palette and text to pixels.", "qzanno");
    app.require_subcommand(1);
    app.set_version_flag("--version", QZANNO_VERSION);
    app.footer("'qzanno COMMAND --help' shows the options of a command, with examples.");

    bool verbose = false;
    bool quiet = false;
    RenderOptions options;
    CLI::App& renderCommand = *app.add_subcommand("render", "Render titles to pictures");
    describeRender(renderCommand, options);
    addVerbosity(renderCommand, verbose, quiet);

    CLI::App& paletteCommand = *app.add_subcommand("palette", "Look at palettes");
    paletteCommand.require_subcommand(1);
    paletteCommand.footer(kPaletteExamples);
    std::string paletteFile;
    CLI::App& show = *paletteCommand.add_subcommand("show", "Print a palette as a table, the highest priority first");
    CLI::App& check =
        *paletteCommand.add_subcommand("check", "Report each fault of a palette; exit with 1 when there is one");
    for (CLI::App* command : {&show, &check}) {
        command->add_option("FILE", paletteFile, "Property list with the palette")->required();
        addFontFolders(*command, options.fontDirectories);
        command->footer(kPaletteExamples);
        addVerbosity(*command, verbose, quiet);
    }

    try {
        app.parse(argc, argv);
        if (renderCommand.parsed() && options.input.empty() && !options.text) {
            throw CLI::ValidationError("render", "give a file or --text; see 'qzanno render --help'");
        }
    } catch (const CLI::Success& done) {
        return app.exit(done);
    } catch (const CLI::ParseError& error) {
        const std::vector<std::string> unknown = app.remaining();
        std::cerr << "qzanno: ";
        if (app.get_subcommands().empty() && !unknown.empty())
            std::cerr << "there is no command " << unknown.front() << "; see 'qzanno --help'";
        else
            std::cerr << error.what();
        std::cerr << std::endl;
        return kWrongUsage;
    }

    using Verbosity = Diagnostics::Verbosity;
    const Verbosity verbosity = verbose ? Verbosity::verbose : quiet ? Verbosity::quiet : Verbosity::normal;
    Diagnostics diagnostics(verbosity);
    routeLibraryLog(verbosity);
    if (renderCommand.parsed()) return render(options, diagnostics);
    const auto fonts = fontsWithFolders(options.fontDirectories, false, diagnostics);
    if (!fonts) return kFailed;
    const FontLibrary::Use use(*fonts);
    return show.parsed() ? showPalette(paletteFile, diagnostics) : checkPalette(paletteFile, diagnostics);
}

}  // namespace
}  // namespace qz::tool

int main(int argc, char** argv) {
    try {
        return qz::tool::run(argc, argv);
    } catch (const std::bad_alloc&) {
        std::cerr << "qzanno: not enough memory; render smaller pictures or fewer at a time" << std::endl;
        return 1;
    }
}
