#include <charconv>
#include <iostream>

#include <CLI/CLI.hpp>

#include "apps/qzanno/ArchiveCommands.h"
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
    "  qzanno palette check broadcast.plist\n"
    "  qzanno palette convert broadcast.plist broadcast.annopalette";

constexpr const char* kArchiveExamples =
    "Examples:\n"
    "  qzanno archive pack captions.vtt -p broadcast.plist -o titles.annostring\n"
    "  qzanno archive show titles.annostring -p broadcast.plist\n"
    "  qzanno archive dump titles.annostring\n"
    "  qzanno render titles.annostring -p broadcast.plist -o titles";

const std::vector<std::pair<std::string, NSWritingDirection>> kDirections = {
    {"auto", NSWritingDirection::natural},
    {"ltr", NSWritingDirection::leftToRight},
    {"rtl", NSWritingDirection::rightToLeft},
};

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
    auto* input = command.add_option(
        "INPUT", options.input,
        "A .vtt file of captions, a .txt file that is one title, or an archive of titles (.annostring)");
    command.add_option("--text", options.text, "Render this text instead of a file")->excludes(input);
    command.add_option("-p,--palette", options.palette,
                       "Property list or archive with the styles; without it a built-in palette serves");
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
    command
        .add_option("--direction", options.direction,
                    "Direction of every paragraph: ltr, rtl, or auto by its first letter [auto]")
        ->transform(CLI::CheckedTransformer(kDirections).description(""))
        ->type_name("auto|ltr|rtl");
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
    command.add_flag("--merge-layers", options.mergeLayers,
                     "Lay each outline and shadow down as one, even where its letters overlap");
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

/// What `qzanno archive` and `qzanno palette` were asked for.
struct FileOptions {
    std::string input;
    std::string palette;
    std::string output;
};

struct Commands {
    CLI::App* render;
    CLI::App* showPalette;
    CLI::App* checkPalette;
    CLI::App* convertPalette;
    CLI::App* packArchive;
    CLI::App* showArchive;
    CLI::App* dumpArchive;
};

void describePaletteCommands(CLI::App& app, FileOptions& files, Commands& commands) {
    CLI::App& palette = *app.add_subcommand("palette", "Look at palettes");
    palette.require_subcommand(1);
    commands.showPalette = palette.add_subcommand("show", "Print a palette as a table, the highest priority first");
    commands.checkPalette =
        palette.add_subcommand("check", "Report each fault of a palette; exit with 1 when there is one");
    commands.convertPalette =
        palette.add_subcommand("convert", "Write a palette as a property list or an archive, by the output's name");
    for (CLI::App* command : {commands.showPalette, commands.checkPalette, commands.convertPalette}) {
        command->add_option("FILE", files.input, "Property list or archive with the palette")->required();
    }
    commands.convertPalette
        ->add_option("OUTPUT", files.output, "A .plist file for a property list, an .annopalette file for an archive")
        ->required();
    for (CLI::App* command : {&palette, commands.showPalette, commands.checkPalette, commands.convertPalette}) {
        command->footer(kPaletteExamples);
    }
}

void describeArchiveCommands(CLI::App& app, FileOptions& files, Commands& commands) {
    CLI::App& archive = *app.add_subcommand("archive", "Keep titles in archives, and look into archives");
    archive.require_subcommand(1);
    commands.packArchive = archive.add_subcommand(
        "pack", "Write titles with their annotations as an archive; the times of captions are not kept");
    commands.packArchive->add_option("INPUT", files.input, "A .vtt file of captions, or a .txt file that is one title")
        ->required();
    commands.packArchive->add_option("-p,--palette", files.palette,
                                     "Palette with the annotations; without it the built-in one serves");
    commands.packArchive->add_option("-o,--output", files.output, "The archive to write")
        ->type_name("FILE.annostring")
        ->required();
    commands.showArchive = archive.add_subcommand("show", "Print the titles of an archive: text, annotations and runs");
    commands.showArchive->add_option("FILE", files.input, "Archive of titles")->required();
    commands.showArchive->add_option("-p,--palette", files.palette, "Palette to say what each run looks like");
    commands.dumpArchive = archive.add_subcommand(
        "dump", "List any typed-stream archive, of other programs too: classes, versions, references");
    commands.dumpArchive->add_option("FILE", files.input, "Archive")->required();
    for (CLI::App* command : {&archive, commands.packArchive, commands.showArchive, commands.dumpArchive}) {
        command->footer(kArchiveExamples);
    }
}

int perform(const Commands& commands, const FileOptions& files, Diagnostics& diagnostics) {
    if (commands.showPalette->parsed()) return showPalette(files.input, diagnostics);
    if (commands.checkPalette->parsed()) return checkPalette(files.input, diagnostics);
    if (commands.convertPalette->parsed()) return convertPalette(files.input, files.output, diagnostics);
    if (commands.packArchive->parsed()) return packArchive(files.input, files.palette, files.output, diagnostics);
    if (commands.showArchive->parsed()) return showArchive(files.input, files.palette, diagnostics);
    return dumpArchive(files.input, diagnostics);
}

int run(int argc, char** argv) {
    CLI::App app("Annotated titles and captions, from palette and text to pixels.", "qzanno");
    app.require_subcommand(1);
    app.set_version_flag("--version", QZANNO_VERSION);
    app.footer("'qzanno COMMAND --help' shows the options of a command, with examples.");

    bool verbose = false;
    bool quiet = false;
    RenderOptions options;
    FileOptions files;
    Commands commands;
    commands.render = app.add_subcommand("render", "Render titles to pictures");
    describeRender(*commands.render, options);
    describePaletteCommands(app, files, commands);
    describeArchiveCommands(app, files, commands);
    for (CLI::App* command : {commands.render, commands.showPalette, commands.checkPalette, commands.convertPalette,
                              commands.packArchive, commands.showArchive, commands.dumpArchive}) {
        addVerbosity(*command, verbose, quiet);
    }
    for (CLI::App* command : {commands.showPalette, commands.checkPalette, commands.showArchive}) {
        addFontFolders(*command, options.fontDirectories);
    }

    try {
        app.parse(argc, argv);
        if (commands.render->parsed() && options.input.empty() && !options.text) {
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
    if (commands.render->parsed()) return render(options, diagnostics);
    const auto fonts = fontsWithFolders(options.fontDirectories, false, diagnostics);
    if (!fonts) return kFailed;
    const FontLibrary::Use use(*fonts);
    return perform(commands, files, diagnostics);
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
