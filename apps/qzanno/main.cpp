#include <algorithm>
#include <functional>
#include <iostream>

#include <CLI/CLI.hpp>

#include "QzAnno/platform/foundation/NSLog.h"
#include "apps/qzanno/ArchiveCommands.h"
#include "apps/qzanno/AttributeList.h"
#include "apps/qzanno/FileEndings.h"
#include "apps/qzanno/FontFolders.h"
#include "apps/qzanno/ManifestMerge.h"
#include "apps/qzanno/PaletteCommands.h"
#include "apps/qzanno/RenderArguments.h"
#include "apps/qzanno/StarterPalettes.h"
#include "captions/Format.h"

namespace qz::tool {
namespace {

constexpr int kFailed = 1;
constexpr int kWrongUsage = 2;

constexpr const char* kPalette = "Property list (.plist) or archive (.annopalette) with the palette";

constexpr const char* kPaletteExamples =
    "Examples:\n"
    "  qzanno palette new\n"
    "  qzanno palette new news-lower-third -o news.plist\n"
    "  qzanno palette show broadcast.plist\n"
    "  qzanno palette check broadcast.plist\n"
    "  qzanno palette attributes\n"
    "  qzanno palette convert broadcast.plist broadcast.annopalette\n"
    "  qzanno palette convert subtitles.ass styles.plist";

constexpr const char* kArchiveExamples =
    "Examples:\n"
    "  qzanno archive pack captions.srt -p broadcast.plist -o titles.annostring\n"
    "  qzanno archive show titles.annostring -p broadcast.plist\n"
    "  qzanno archive dump titles.annostring\n"
    "  qzanno render titles.annostring -p broadcast.plist -o titles";

constexpr const char* kManifestExamples =
    "Examples:\n"
    "  qzanno manifest merge titles.*-of-8.jsonl -o titles.jsonl";

/// The library's own log is for developers: shown on request.
void routeLibraryLog(Diagnostics::Verbosity verbosity) {
    if (verbosity == Diagnostics::Verbosity::verbose)
        setLogHook(writeToStandardError);
    else
        setStandardErrorHook([](std::string_view) {});
}

/// Performs a command and returns the exit code.
using Action = std::function<int(Diagnostics&)>;
using ActionWithFonts = std::function<int(const std::shared_ptr<FontLibrary>&, Diagnostics&)>;

/// The tool's commands and their actions, which use the arguments stored here.
class CommandLine {
public:
    CommandLine(int argc, char** argv);

    /// Returns the exit code.
    int run();

private:
    /// A command with an action, as opposed to a group of commands.
    struct Command {
        CLI::App* app;
        Action action;
    };

    CLI::App& addGroup(const char* name, const char* description, const char* examples);
    CLI::App& add(CLI::App& group, const char* name, const char* description, Action action);
    /// Adds a command that needs fonts but does not draw.
    CLI::App& addWithFonts(CLI::App& group, const char* name, const char* description, ActionWithFonts action);
    void addPaletteCommands();
    void addArchiveCommands();
    void addManifestCommands();
    void addVerbosity();
    int renderOrList(Diagnostics& diagnostics);
    int fail(const CLI::ParseError& error);

    const int argc_;
    char** const argv_;
    CLI::App app_;
    std::vector<Command> commands_;
    bool verbose_ = false;
    bool quiet_ = false;
    RenderArguments rendering_;
    StreamOptions streaming_;
    ExportOptions exported_;
    NewPaletteOptions starter_;
    PaletteCheckOptions check_;
    bool asJson_ = false;
    // Arguments of the other commands.
    std::string input_;
    std::vector<std::string> inputs_;
    std::string palette_;
    std::string output_;
    std::vector<std::string> fontFolders_;
};

/// A positional argument, shown in the help by name, without a type.
template <class Value>
CLI::Option* addOperand(CLI::App& command, const char* name, Value& value, const std::string& description) {
    return command.add_option(name, value, description)->type_name("");
}

CLI::Option* addOutput(CLI::App& command, std::string& output, const std::string& description) {
    return command.add_option("-o,--output", output, description)->type_name("FILE");
}

CommandLine::CommandLine(int argc, char** argv)
    : argc_(argc), argv_(argv), app_("Annotated titles and captions, from palette and text to pixels.", "qzanno") {
    app_.require_subcommand(1);
    app_.set_version_flag("--version", QZANNO_VERSION);
    app_.footer("'qzanno COMMAND --help' shows the options of a command, with examples.");
    describeRender(add(app_, "render", "Render titles to pictures",
                       [this](Diagnostics& diagnostics) { return renderOrList(diagnostics); }),
                   rendering_);
    describeStream(add(app_, "stream", "Write captions as frames, for a program that edits films",
                       [this](Diagnostics& diagnostics) { return stream(streaming_, diagnostics); }),
                   streaming_);
    describeExport(
        addWithFonts(app_, "export", "Write captions with the looks of a palette as a file for other programs",
                     [this](const auto& fonts, Diagnostics& diagnostics) {
                         return exportCaptions(exported_, fonts, diagnostics);
                     }),
        exported_);
    addPaletteCommands();
    addArchiveCommands();
    addManifestCommands();
    addVerbosity();
}

CLI::App& CommandLine::addGroup(const char* name, const char* description, const char* examples) {
    CLI::App& group = *app_.add_subcommand(name, description);
    group.require_subcommand(1);
    // Commands inherit the footer when added.
    group.footer(examples);
    return group;
}

CLI::App& CommandLine::add(CLI::App& group, const char* name, const char* description, Action action) {
    CLI::App* const command = group.add_subcommand(name, description);
    commands_.push_back({command, std::move(action)});
    return *command;
}

CLI::App& CommandLine::addWithFonts(CLI::App& group, const char* name, const char* description,
                                    ActionWithFonts action) {
    const auto withFonts = [this, action = std::move(action)](Diagnostics& diagnostics) {
        const auto fonts = fontsWithFolders(fontFolders_, false, diagnostics);
        return fonts ? action(fonts, diagnostics) : kFailed;
    };
    CLI::App& command = add(group, name, description, withFonts);
    addFontFolders(command, fontFolders_);
    return command;
}

void CommandLine::addPaletteCommands() {
    CLI::App& group = addGroup("palette", "Create, check and convert palettes", kPaletteExamples);
    CLI::App& create = add(group, "new", "Write a starter palette; without a name, list the starter palettes",
                           [this](Diagnostics& diagnostics) { return newStarterPalette(starter_, diagnostics); });
    addOperand(create, "NAME", starter_.name, "Which one");
    CLI::Option* const created =
        addOutput(create, starter_.output, "The palette to write (.plist), - for standard output [NAME.plist]");
    allowEndings(*created, {".plist"}, WithoutEnding::allowed);
    create.add_flag("--overwrite", starter_.overwrite, "Replace an existing file");

    CLI::App& show = addWithFonts(
        group, "show", "Print a palette as a table, in descending priority",
        [this](const auto& fonts, Diagnostics& diagnostics) { return showPalette(input_, fonts, diagnostics); });
    addOperand(show, "PALETTE", input_, kPalette)->required();

    CLI::App& check = addWithFonts(
        group, "check", "Report faults in a palette and text that is hard to read; exit with 1 if there are faults",
        [this](const auto& fonts, Diagnostics& diagnostics) { return checkPalette(check_, fonts, diagnostics); });
    addOperand(check, "PALETTE", check_.path, kPalette)->required();
    addScreenOption(check, "The screen that the palette is meant for, in points [1920x1080]", check_.screen);
    check.add_flag("--strict", check_.strict, "Treat text that is hard to read as a fault");

    CLI::App& attributes = add(group, "attributes", "List the attributes that annotations may hold",
                               [this](Diagnostics&) { return listAttributes(asJson_); });
    attributes.add_flag("--json", asJson_, "As a JSON array");

    CLI::App& convert = addWithFonts(
        group, "convert", "Write a palette, or the styles of an .ass script, as a property list or an archive",
        [this](const auto& fonts, Diagnostics& diagnostics) {
            return convertPalette(input_, output_, fonts, diagnostics);
        });
    addOperand(
        convert, "PALETTE", input_,
        "Property list (.plist) or archive (.annopalette) with the palette, or a script with styles (.ass, .ssa)")
        ->required();
    CLI::Option* const converted =
        addOperand(convert, "OUTPUT", output_, "A .plist file for a property list, an .annopalette file for an archive")
            ->required();
    allowEndings(*converted, {".plist", ".annopalette"}, WithoutEnding::refused);
}

void CommandLine::addArchiveCommands() {
    const std::vector<std::string> archives = endingsOf(Format::archive);
    CLI::App& group = addGroup("archive", "Store titles in archives, and inspect archives", kArchiveExamples);
    CLI::App& pack =
        add(group, "pack",
            "Write titles with their annotations as an archive; times and placement of captions are not stored",
            [this](Diagnostics& diagnostics) { return packArchive(input_, palette_, output_, diagnostics); });
    addOperand(pack, "INPUT", input_,
               captionsText() + ", or a " + listOf(endingsOf(Format::text)) + " file that is one title")
        ->required();
    addPaletteOption(pack, palette_);
    CLI::Option* const packed = addOutput(pack, output_, "The archive to write (" + listOf(archives) + ")")->required();
    allowEndings(*packed, archives, WithoutEnding::allowed);

    CLI::App& show = addWithFonts(group, "show", "Print the titles of an archive: text, annotations and runs",
                                  [this](const auto& fonts, Diagnostics& diagnostics) {
                                      return showArchive(input_, palette_, fonts, diagnostics);
                                  });
    addOperand(show, "ARCHIVE", input_, "Archive of titles (" + listOf(archives) + ")")->required();
    show.add_option("-p,--palette", palette_, "Palette for showing what each run looks like (.plist, .annopalette)")
        ->type_name("PALETTE");

    CLI::App& dump =
        add(group, "dump", "List any typed-stream archive, including other programs': classes, versions, references",
            [this](Diagnostics& diagnostics) { return dumpArchive(input_, diagnostics); });
    addOperand(dump, "FILE", input_, "Archive")->required();
}

void CommandLine::addManifestCommands() {
    CLI::App& group = addGroup("manifest", "Merge the manifests of a run's shares", kManifestExamples);
    CLI::App& merge = add(group, "merge", "Merge manifests and list missing titles; exit with 1 if any are missing",
                          [this](Diagnostics& diagnostics) { return mergeManifests(inputs_, output_, diagnostics); });
    addOperand(merge, "MANIFEST", inputs_, "Manifests of the shares (.jsonl)")->required();
    CLI::Option* const joined = addOutput(merge, output_, "The manifest to write (.jsonl)")->required();
    allowEndings(*joined, {".jsonl"}, WithoutEnding::allowed);
}

void CommandLine::addVerbosity() {
    for (const Command& command : commands_) {
        auto* const flag = command.app->add_flag("-v,--verbose", verbose_, "Print more, including the library's log");
        command.app->add_flag("-q,--quiet", quiet_, "Print only failures")->excludes(flag);
    }
}

int CommandLine::renderOrList(Diagnostics& diagnostics) {
    if (rendering_.listedShares > 0) {
        for (const std::string& command : commandsOfShards({argv_, argv_ + argc_}, rendering_.listedShares))
            std::cout << command << "\n";
        return std::cout.flush() ? 0 : kFailed;
    }
    if (rendering_.isShardOfEnvironment) {
        const Shard& shard = rendering_.options.shard;
        diagnostics.warning("", "renders share " + std::to_string(shard.number) + " of " + std::to_string(shard.count) +
                                    ", as the task of a Slurm array; --shard 1/1 renders all");
    }
    return render(rendering_.options, diagnostics);
}

int CommandLine::run() {
    try {
        app_.parse(argc_, argv_);
    } catch (const CLI::Success& done) {
        return app_.exit(done);
    } catch (const CLI::ParseError& error) {
        return fail(error);
    }
    using Verbosity = Diagnostics::Verbosity;
    const Verbosity verbosity = verbose_ ? Verbosity::verbose : quiet_ ? Verbosity::quiet : Verbosity::normal;
    Diagnostics diagnostics(verbosity);
    routeLibraryLog(verbosity);
    const auto command = std::ranges::find_if(commands_, [](const Command& each) { return each.app->parsed(); });
    return command->action(diagnostics);
}

int CommandLine::fail(const CLI::ParseError& error) {
    const std::vector<std::string> unknown = app_.remaining();
    std::cerr << "qzanno: ";
    if (app_.get_subcommands().empty() && !unknown.empty())
        std::cerr << "there is no command " << unknown.front() << "; see 'qzanno --help'";
    else
        std::cerr << error.what();
    std::cerr << std::endl;
    return kWrongUsage;
}

}  // namespace
}  // namespace qz::tool

int main(int argc, char** argv) {
    try {
        return qz::tool::CommandLine(argc, argv).run();
    } catch (const std::bad_alloc&) {
        std::cerr << "qzanno: not enough memory; render smaller pictures or fewer at a time" << std::endl;
        return 1;
    }
}
