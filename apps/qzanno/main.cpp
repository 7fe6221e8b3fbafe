#include <iostream>

#include <CLI/CLI.hpp>

#include "apps/qzanno/ArchiveCommands.h"
#include "apps/qzanno/FontFolders.h"
#include "apps/qzanno/ManifestMerge.h"
#include "apps/qzanno/PaletteCommands.h"
#include "apps/qzanno/RenderArguments.h"
#include "apps/qzanno/StarterPalettes.h"
#include "platform/foundation/NSLog.h"

namespace qz::tool {
namespace {

constexpr int kFailed = 1;
constexpr int kWrongUsage = 2;

constexpr const char* kPaletteExamples =
    "Examples:\n"
    "  qzanno palette new\n"
    "  qzanno palette new news-lower-third -o news.plist\n"
    "  qzanno palette show broadcast.plist\n"
    "  qzanno palette check broadcast.plist\n"
    "  qzanno palette convert broadcast.plist broadcast.annopalette\n"
    "  qzanno palette convert subtitles.ass styles.plist";

constexpr const char* kArchiveExamples =
    "Examples:\n"
    "  qzanno archive pack captions.vtt -p broadcast.plist -o titles.annostring\n"
    "  qzanno archive show titles.annostring -p broadcast.plist\n"
    "  qzanno archive dump titles.annostring\n"
    "  qzanno render titles.annostring -p broadcast.plist -o titles";

constexpr const char* kManifestExamples =
    "Examples:\n"
    "  qzanno manifest merge titles.*-of-8.jsonl -o titles.jsonl";

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

/// What the commands were asked for that neither render nor stream.
struct FileOptions {
    std::string input;
    std::vector<std::string> inputs;
    std::vector<std::string> fontDirectories;
    std::string palette;
    std::string output;
    PaletteCheckOptions check;
    NewPaletteOptions starter;
    ExportOptions exported;
};

struct Commands {
    CLI::App* render;
    CLI::App* stream;
    CLI::App* exportCaptions;
    CLI::App* newPalette;
    CLI::App* showPalette;
    CLI::App* checkPalette;
    CLI::App* convertPalette;
    CLI::App* packArchive;
    CLI::App* showArchive;
    CLI::App* dumpArchive;
    CLI::App* mergeManifests;
};

void describePaletteCommands(CLI::App& app, FileOptions& files, Commands& commands) {
    CLI::App& palette = *app.add_subcommand("palette", "Begin, check and convert palettes");
    palette.require_subcommand(1);
    commands.newPalette =
        palette.add_subcommand("new", "Write a palette to begin with; without a name, list those that there are");
    commands.newPalette->add_option("NAME", files.starter.name, "Which one");
    commands.newPalette
        ->add_option("-o,--output", files.starter.output, "The file to write, - for standard output [NAME.plist]")
        ->type_name("FILE");
    commands.newPalette->add_flag("--overwrite", files.starter.overwrite, "Write over a file that is there");
    commands.showPalette = palette.add_subcommand("show", "Print a palette as a table, the highest priority first");
    commands.checkPalette = palette.add_subcommand(
        "check", "Report each fault of a palette and what is hard to read; exit with 1 for faults");
    commands.convertPalette = palette.add_subcommand(
        "convert", "Write a palette, or the styles of an .ass script, as a property list or an archive");
    for (CLI::App* command : {commands.showPalette, commands.checkPalette, commands.convertPalette}) {
        std::string& path = command == commands.checkPalette ? files.check.path : files.input;
        command
            ->add_option("FILE", path,
                         command == commands.convertPalette
                             ? "Property list or archive with the palette, or an .ass script with styles"
                             : "Property list or archive with the palette")
            ->required();
    }
    addScreenOption(*commands.checkPalette, "The screen that the palette is meant for, in points [1920x1080]",
                    files.check.screen);
    commands.checkPalette->add_flag("--strict", files.check.strict, "What is hard to read is a fault");
    commands.convertPalette
        ->add_option("OUTPUT", files.output, "A .plist file for a property list, an .annopalette file for an archive")
        ->required();
    for (CLI::App* command :
         {&palette, commands.newPalette, commands.showPalette, commands.checkPalette, commands.convertPalette}) {
        command->footer(kPaletteExamples);
    }
}

void describeArchiveCommands(CLI::App& app, FileOptions& files, Commands& commands) {
    CLI::App& archive = *app.add_subcommand("archive", "Keep titles in archives, and look into archives");
    archive.require_subcommand(1);
    commands.packArchive = archive.add_subcommand(
        "pack", "Write titles with their annotations as an archive; times and places of captions are not kept");
    commands.packArchive
        ->add_option("INPUT", files.input, "Captions (.srt, .vtt, .ass), or a .txt file that is one title")
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

void describeManifestCommands(CLI::App& app, FileOptions& files, Commands& commands) {
    CLI::App& manifest = *app.add_subcommand("manifest", "Join the manifests of a run's shares");
    manifest.require_subcommand(1);
    commands.mergeManifests = manifest.add_subcommand(
        "merge", "Join manifests and name the titles that are missing; exit with 1 when any is");
    commands.mergeManifests->add_option("FILE", files.inputs, "Manifests of the shares")->required();
    commands.mergeManifests->add_option("-o,--output", files.output, "The manifest to write")
        ->type_name("FILE")
        ->required();
    for (CLI::App* command : {&manifest, commands.mergeManifests}) command->footer(kManifestExamples);
}

int listCommands(int argc, char** argv, uint32_t count) {
    for (const std::string& command : commandsOfShards({argv, argv + argc}, count)) std::cout << command << "\n";
    return std::cout.flush() ? 0 : kFailed;
}

int perform(const Commands& commands, const FileOptions& files, Diagnostics& diagnostics) {
    if (commands.exportCaptions->parsed()) return exportCaptions(files.exported, diagnostics);
    if (commands.showPalette->parsed()) return showPalette(files.input, diagnostics);
    if (commands.checkPalette->parsed()) return checkPalette(files.check, diagnostics);
    if (commands.newPalette->parsed()) return newStarterPalette(files.starter, diagnostics);
    if (commands.convertPalette->parsed()) return convertPalette(files.input, files.output, diagnostics);
    if (commands.packArchive->parsed()) return packArchive(files.input, files.palette, files.output, diagnostics);
    if (commands.showArchive->parsed()) return showArchive(files.input, files.palette, diagnostics);
    if (commands.mergeManifests->parsed()) return mergeManifests(files.inputs, files.output, diagnostics);
    return dumpArchive(files.input, diagnostics);
}

int run(int argc, char** argv) {
    CLI::App app("Annotated titles and captions, from palette and text to pixels.", "qzanno");
    app.require_subcommand(1);
    app.set_version_flag("--version", QZANNO_VERSION);
    app.footer("'qzanno COMMAND --help' shows the options of a command, with examples.");

    bool verbose = false;
    bool quiet = false;
    RenderArguments rendering;
    StreamOptions streaming;
    FileOptions files;
    Commands commands;
    commands.render = app.add_subcommand("render", "Render titles to pictures");
    describeRender(*commands.render, rendering);
    commands.stream = app.add_subcommand("stream", "Write captions as frames, for a program that edits films");
    describeStream(*commands.stream, streaming);
    commands.exportCaptions =
        app.add_subcommand("export", "Write captions with the looks of a palette as a script for other programs");
    describeExport(*commands.exportCaptions, files.exported);
    describePaletteCommands(app, files, commands);
    describeArchiveCommands(app, files, commands);
    describeManifestCommands(app, files, commands);
    for (CLI::App* command :
         {commands.render, commands.stream, commands.exportCaptions, commands.newPalette, commands.showPalette,
          commands.checkPalette, commands.convertPalette, commands.packArchive, commands.showArchive,
          commands.dumpArchive, commands.mergeManifests}) {
        addVerbosity(*command, verbose, quiet);
    }
    for (CLI::App* command : {commands.exportCaptions, commands.showPalette, commands.checkPalette,
                              commands.convertPalette, commands.showArchive}) {
        addFontFolders(*command, files.fontDirectories);
    }

    try {
        app.parse(argc, argv);
        const std::string fault = commands.render->parsed() ? completeRender(rendering) : "";
        if (!fault.empty()) throw CLI::ValidationError("render", fault);
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
    if (rendering.listedShares > 0) return listCommands(argc, argv, rendering.listedShares);
    if (rendering.isShardOfEnvironment) {
        const Shard& shard = rendering.options.shard;
        diagnostics.warning("", "renders share " + std::to_string(shard.number) + " of " + std::to_string(shard.count) +
                                    ", as the task of a Slurm array; --shard 1/1 renders all");
    }
    if (commands.render->parsed()) return render(rendering.options, diagnostics);
    if (commands.stream->parsed()) return stream(streaming, diagnostics);
    const auto fonts = fontsWithFolders(files.fontDirectories, false, diagnostics);
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
