#include "apps/qzanno/RenderArguments.h"

#include <charconv>
#include <filesystem>
#include <thread>

#include "apps/qzanno/FileEndings.h"
#include "apps/qzanno/FilmTime.h"
#include "captions/ClockTime.h"
#include "captions/Format.h"

namespace qz::tool {
namespace {

constexpr const char* kRenderExamples =
    "Examples:\n"
    "  qzanno render captions.srt -p broadcast.plist -o titles --manifest titles.jsonl\n"
    "  qzanno render season-1/ extra.vtt -p broadcast.plist -o titles --manifest titles.jsonl --resume\n"
    "  qzanno render --text 'Good evening' -p broadcast.plist -a 'Lower Third' -o title.png\n"
    "  qzanno render --text 'Hello' --over frame.png -o composite.png\n"
    "  qzanno render season-1/ -o titles --manifest titles.jsonl --jobs 1 --list-commands 8 | parallel";

constexpr const char* kStreamExamples =
    "Examples:\n"
    "  qzanno stream captions.srt --fps 25 --end film.mp4 | ffmpeg -i film.mp4 -f rawvideo -pixel_format rgba \\\n"
    "      -video_size 1920x1080 -framerate 25 -i - -filter_complex \\\n"
    "      '[1]scale=out_color_matrix=bt709:out_range=tv[c];[0][c]overlay=eof_action=pass' -c:a copy burnt.mp4\n"
    "  qzanno stream title.txt --fps 25 --duration 5 -s 1280x720 | \\\n"
    "      ffplay -f rawvideo -pixel_format rgba -video_size 1280x720 -framerate 25 -\n"
    "  qzanno stream captions.srt --fps 25 --changes | your-program";

constexpr const char* kExportExamples =
    "Examples:\n"
    "  qzanno export captions.srt -p broadcast.plist -o captions.ass\n"
    "  qzanno palette convert captions.ass styles.plist";

const std::vector<std::pair<std::string, bool>> kAlphas = {{"straight", true}, {"premultiplied", false}};

const std::vector<std::pair<std::string, NSWritingDirection>> kDirections = {
    {"auto", NSWritingDirection::natural},
    {"ltr", NSWritingDirection::leftToRight},
    {"rtl", NSWritingDirection::rightToLeft},
};

const std::vector<std::pair<std::string, Looks>> kLooks = {
    {"house", Looks::house}, {"file", Looks::file}, {"both", Looks::both}};

constexpr uint32_t kJobsMax = 256;

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
                        name, text + " is not a size; write WIDTHxHEIGHT, such as 1920x1080, both above 0");
                set(*size);
            },
            description)
        ->type_name("WxH");
}

/// Adds an option whose value is a time.
template <class Set>
CLI::Option* addTimeOption(CLI::App& command, const std::string& name, const std::string& description, Set set) {
    const auto read = [name, set](const std::string& text) {
        const auto seconds = secondsOfClock(text);
        if (!seconds)
            throw CLI::ValidationError(name, text + " is not a time; write one such as 90, 90.5 or 0:01:30.5");
        set(*seconds);
    };
    return command.add_option_function<std::string>(name, read, description)->type_name("TIME");
}

uint32_t threadsOfMachine() {
    return std::clamp(std::thread::hardware_concurrency(), 1u, kJobsMax);
}

/// Completes the arguments from the environment, and returns what is wrong with their combination, or an empty string.
std::string completeRender(RenderArguments& arguments) {
    if (arguments.options.inputs.empty() && !arguments.options.text)
        return "give a file or --text; see 'qzanno render --help'";
    std::string reason;
    if (!arguments.shard && arguments.listedShares == 0 && !arguments.options.text) {
        arguments.shard = shardOfEnvironment(&reason);
        arguments.isShardOfEnvironment = arguments.shard && !arguments.shard->isWhole();
    }
    arguments.options.shard = arguments.shard.value_or(Shard());
    return reason;
}

}  // namespace

void addFontFolders(CLI::App& command, std::vector<std::string>& folders) {
    command.add_option("--font-dir", folders, "Use the fonts in this folder before the system's (repeatable)")
        ->type_name("DIR")
        ->expected(1)
        ->multi_option_policy(CLI::MultiOptionPolicy::TakeAll);
}

void addPaletteOption(CLI::App& command, std::string& path) {
    command
        .add_option("-p,--palette", path, "Palette with the styles (.plist, .annopalette); a built-in one by default")
        ->type_name("PALETTE");
}

void addScreenOption(CLI::App& command, const std::string& description, PixelSize& screen) {
    addSizeOption(command, "-s,--screen", description, [&screen](PixelSize size) { screen = size; });
}

void addDirectionOption(CLI::App& command, NSWritingDirection& direction) {
    command
        .add_option("--direction", direction,
                    "Direction of every paragraph: ltr, rtl, or auto for that of its first letter [auto]")
        ->transform(CLI::CheckedTransformer(kDirections).description(""))
        ->type_name("auto|ltr|rtl");
}

void addLooksOption(CLI::App& command, Looks& looks) {
    command
        .add_option("--looks", looks,
                    "Which styles, colours and italics to use: the palette's, the file's, or the file's where the "
                    "palette has none [both]")
        ->transform(CLI::CheckedTransformer(kLooks).description(""))
        ->type_name("house|file|both");
}

void addDrawingOptions(CLI::App& command, DrawingOptions& options) {
    addPaletteOption(command, options.palette);
    addLooksOption(command, options.looks);
    command
        .add_option("-a,--annotate", options.annotations,
                    "Apply this annotation to the whole of every title (repeatable)")
        ->type_name("NAME")
        ->expected(1)
        ->multi_option_policy(CLI::MultiOptionPolicy::TakeAll);
    addScreenOption(command, "The screen that the titles are laid out for, in points [1920x1080]", options.screen);
    addSizeOption(command, "-d,--data", "The frame that the screen is scaled to, in pixels [the screen's]",
                  [&options](PixelSize size) { options.data = size; });
    addDirectionOption(command, options.direction);
    addFontFolders(command, options.fontDirectories);
    command
        .add_option("--lang", options.language,
                    "The language of the titles, such as ja or zh-Hant; it determines the forms of shared letters")
        ->type_name("TAG");
    command.add_flag_callback(
        "--no-antialias", [&options] { options.antialias = false; }, "Draw hard edges");
    command.add_option("--quality", options.quality, "The quality of outlines, 0 to 1 [1]")
        ->check(CLI::Range(0.0, 1.0).description(""))
        ->type_name("Q");
    command.add_flag("--strict", options.strict,
                     "Fail on missing fonts, characters or faces, on cut text and on unsupported features of files");
    command.add_flag("--merge-layers", options.mergeLayers,
                     "Draw each outline and shadow as a single shape, even where letters overlap");
}

void describeRender(CLI::App& command, RenderArguments& arguments) {
    RenderOptions& options = arguments.options;
    command.footer(kRenderExamples);
    auto* input =
        command
            .add_option("INPUT", options.inputs,
                        captionsText() + ", a " + listOf(endingsOf(Format::text)) +
                            " file that is one title, an archive of titles (" + listOf(endingsOf(Format::archive)) +
                            "), or a folder of such files; several get a folder each")
            ->type_name("");
    command.add_option("--text", options.text, "Render this text instead of files")->excludes(input);
    addDrawingOptions(command, options.drawing);
    auto* box =
        command.add_flag("-b,--box", options.drawing.box, "Draw only the area around the text, not the whole screen");
    auto* output =
        command.add_option("-o,--output", options.output,
                           "A .png or .rgba file for one title, a folder for many, - for raw premultiplied RGBA on "
                           "standard output");
    output->type_name("PATH");
    allowPictures(*output);
    command.add_option("--over", options.drawing.over, "Composite over this frame, a .png picture")
        ->type_name("FRAME")
        ->excludes(box);
    auto* manifest =
        command.add_option("--manifest", options.manifest, "List what was rendered as JSON Lines (.jsonl)")
            ->type_name("FILE");
    allowEndings(*manifest, {".jsonl"}, WithoutEnding::allowed);
    options.jobs = threadsOfMachine();
    command.add_option("-j,--jobs", options.jobs, "The number of threads [one per processor]")
        ->check(CLI::Range(1u, kJobsMax).description(""))
        ->type_name("N");
    command.add_flag("--resume", options.resume, "Skip titles that the manifest lists and whose files are complete")
        ->needs(manifest);
    auto* shard = command.add_option_function<std::string>(
        "--shard",
        [&arguments](const std::string& text) {
            arguments.shard = parsedShard(text);
            if (!arguments.shard)
                throw CLI::ValidationError("--shard",
                                           text + " is not a share; write K/N, such as 2/8, with K from 1 to N");
        },
        "Render only one share of the titles, the same one every time; its manifest has K-of-N in its name [that of a "
        "Slurm array task]");
    shard->type_name("K/N");
    command
        .add_option("--list-commands", arguments.listedShares,
                    "Render nothing; print the commands that render the titles in N shares")
        ->check(CLI::Range(1u, 1000000u).description(""))
        ->type_name("N")
        ->excludes(shard);
    command.callback([&arguments] {
        const std::string fault = completeRender(arguments);
        if (!fault.empty()) throw CLI::ValidationError("render", fault);
    });
}

void describeExport(CLI::App& command, ExportOptions& options) {
    command.footer(kExportExamples);
    command.add_option("CAPTIONS", options.input, captionsText())->type_name("")->required();
    addPaletteOption(command, options.palette);
    const std::vector<std::string> written = writtenEndingsOf(Format::captions);
    auto* output =
        command.add_option("-o,--output", options.output, "The captions to write (" + listOf(written, ", ") + ")");
    output->type_name("FILE")->required();
    allowEndings(*output, written, WithoutEnding::refused);
    addScreenOption(command, "The screen that the palette is meant for, in points [1920x1080]", options.screen);
    addDirectionOption(command, options.direction);
    addLooksOption(command, options.looks);
    command.add_flag("--strict", options.strict, "Fail on what the format cannot hold");
}

void describeStream(CLI::App& command, StreamOptions& options) {
    command.footer(kStreamExamples);
    command
        .add_option("CAPTIONS", options.input,
                    captionsText() + ", or titles without times (" +
                        listOf(endingsOf(Format::text | Format::archive), ", ") + ") for a --duration")
        ->type_name("")
        ->required();
    command
        .add_option_function<std::string>(
            "--fps",
            [&options](const std::string& text) {
                const auto rate = parsedFrameRate(text);
                if (!rate)
                    throw CLI::ValidationError(
                        "--fps", text + " is not a frame rate; write one such as 25, 29.97 or 30000/1001");
                options.rate = *rate;
            },
            "Frames per second, such as 25 or 30000/1001")
        ->type_name("F")
        ->required();
    addDrawingOptions(command, options.drawing);
    command.add_option("--alpha", options.isStraight, "Whether colours are multiplied by alpha [straight]")
        ->transform(CLI::CheckedTransformer(kAlphas).description(""))
        ->type_name("straight|premultiplied");
    addTimeOption(command, "--start", "The film time of the first frame, such as 90.5 or 0:01:30.5 [0]",
                  [&options](double seconds) { options.start = seconds; });
    auto* duration =
        addTimeOption(command, "--duration", "The length of the output [up to the end of the last caption]",
                      [&options](double seconds) { options.duration = seconds; });
    command
        .add_option_function<std::string>(
            "--end",
            [&options](const std::string& text) {
                options.end = secondsOfClock(text);
                std::error_code ignored;
                if (options.end) return;
                if (!std::filesystem::exists(text, ignored))
                    throw CLI::ValidationError(
                        "--end", text + " is neither a time, such as 90.5 or 0:01:30.5, nor an existing film");
                options.film = text;
            },
            "The film time where the frames end: a time, or the film itself (.mp4, .mov, .mkv, .webm), whose length "
            "ffprobe tells")
        ->type_name("TIME")
        ->excludes(duration);
    command.add_option("--offset", options.offset, "Show captions this many seconds later, or earlier if negative")
        ->check(CLI::Range(-1e9, 1e9).description(""))
        ->type_name("S");
    command.add_flag(
        "--changes", options.onlyChanges,
        "Write only frames where a caption appears or disappears, each after a line with its number, its time in "
        "microseconds and its size in bytes");
}

}  // namespace qz::tool
