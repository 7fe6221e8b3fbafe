#include "apps/qzanno/RenderCommand.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <filesystem>
#include <map>
#include <set>

#include "apps/qzanno/DoneTitles.h"
#include "apps/qzanno/InputList.h"
#include "apps/qzanno/Manifest.h"
#include "apps/qzanno/ManifestFile.h"
#include "apps/qzanno/OrderedJobs.h"
#include "apps/qzanno/OutputPlan.h"
#include "apps/qzanno/Progress.h"
#include "apps/qzanno/RunFiles.h"
#include "apps/qzanno/TitleJob.h"
#include "apps/qzanno/TitleLines.h"

namespace qz::tool {
namespace {

/// The number of titles that a thread may be ahead of the slowest one.
constexpr size_t kWindowPerThread = 8;

std::string folderOf(const std::string& file) {
    const std::string folder = std::filesystem::path(file).parent_path().string();
    return folder.empty() ? "." : folder;
}

/// Renders the titles of files in two passes: the first counts them, finds those that look the same, and reports
/// problems with the files; the second passes them to the threads one by one.
class RenderRun {
public:
    RenderRun(const RenderOptions& options, Diagnostics& diagnostics)
        : options_(options), diagnostics_(diagnostics), lines_(diagnostics, options.drawing) {}

    bool prepare();
    bool renderAll();

private:
    using Key = std::array<uint8_t, 16>;
    /// The first title of a picture.
    struct FirstUse {
        uint32_t input;
        uint32_t index;
        uint32_t uses;
    };
    struct Input {
        TitleInput file;
        uint32_t titles = 0;
        uint32_t lastIndex = 0;
        std::vector<uint32_t> leftOut;
        OutputPlan plan;
    };

    bool listFiles();
    bool walkFirst();
    bool planOutputs();
    bool makeFolders();
    bool openManifest();
    bool readInput(const Input& input, Diagnostics& diagnostics, const TitleSink& sink, bool& hasLosses);
    Key keyOf(const TitleContent& content) const;
    bool addJobs(uint32_t input, OrderedJobs& jobs);
    void addJob(uint32_t input, const Title& title, OrderedJobs& jobs);
    void deliver(TitleJob& job);
    std::string lineOf(TitleJob& job);
    std::string lineOfTwin(const TitleJob& job);

    const RenderOptions& options_;
    Diagnostics& diagnostics_;
    TitleLines lines_;
    std::optional<RenderSetup> setup_;
    // The looks of the files read; each thread has its own.
    std::optional<CaptionLooks> looks_;
    Sha256 setupHash_;
    std::vector<Input> inputs_;
    size_t titlesOfShare_ = 0;
    std::map<Key, FirstUse> firstUses_;
    // Shared pictures that a job of this run draws.
    std::set<Key> drawn_;
    std::string manifestPath_;
    std::unique_ptr<ManifestFile> manifest_;
    bool isMarked_ = false;
    DoneTitles done_;

    // Used on the threads while delivering jobs.
    bool allDone_ = true;
    std::optional<Progress> progress_;
    std::map<std::string, std::string> linesByKey_;
};

bool RenderRun::prepare() {
    setup_ = prepareSetup(options_.drawing, diagnostics_);
    if (!setup_) return false;
    looks_.emplace(newLooks(*setup_));
    addSetup(setupHash_, *setup_);
    lines_.setFonts(setup_->fonts);
    // The manifest may be in a folder of pictures.
    return listFiles() && walkFirst() && planOutputs() && makeFolders() && openManifest();
}

bool RenderRun::listFiles() {
    if (options_.text) {
        inputs_.emplace_back();
        return true;
    }
    const auto files = listInputs(options_.inputs, diagnostics_);
    if (!files) return false;
    for (const TitleInput& file : *files) inputs_.emplace_back().file = file;
    lines_.setSeveralFiles(files->size() > 1);
    return true;
}

bool RenderRun::readInput(const Input& input, Diagnostics& diagnostics, const TitleSink& sink, bool& hasLosses) {
    if (!options_.text) return readTitles(input.file.path, *looks_, diagnostics, sink, hasLosses);
    sink(titleOfText(*options_.text));
    return true;
}

RenderRun::Key RenderRun::keyOf(const TitleContent& content) const {
    Sha256 hash = setupHash_;
    addContent(hash, content);
    const Sha256::Digest digest = hash.digest();
    Key key;
    std::copy_n(digest.begin(), key.size(), key.begin());
    return key;
}

bool RenderRun::walkFirst() {
    bool mayRender = true;
    std::vector<Input> readable;
    for (Input& input : inputs_) {
        bool hasLosses = false;
        const auto number = static_cast<uint32_t>(readable.size());
        const bool isRead = readInput(
            input, diagnostics_,
            [&](Title&& title) {
                ++input.titles;
                while (++input.lastIndex < title.index) input.leftOut.push_back(input.lastIndex);
                titlesOfShare_ += options_.shard.holds(input.file.identity(), title.index);
                const Key key = keyOf(contentOf(title, *looks_));
                ++firstUses_.try_emplace(key, FirstUse{number, title.index, 0}).first->second.uses;
            },
            hasLosses);
        if (isRead && input.titles == 0)
            diagnostics_.warning(input.file.path, "holds no captions; nothing is rendered");
        if (hasLosses && options_.drawing.strict) {
            diagnostics_.error(input.file.path, "uses unsupported features; nothing is rendered, because of --strict");
            mayRender = false;
        }
        allDone_ &= isRead;
        if (isRead) readable.push_back(std::move(input));
    }
    inputs_ = std::move(readable);
    return mayRender && !inputs_.empty();
}

bool RenderRun::planOutputs() {
    for (Input& input : inputs_) {
        const std::string& folder = input.file.folder;
        const auto plan = folder.empty() ? planOutput(options_.output, input.file.path, input.titles, diagnostics_)
                                         : planOutputOfFolder(options_.output, folder, diagnostics_);
        if (!plan) return false;
        input.plan = *plan;
    }
    return true;
}

bool RenderRun::makeFolders() {
    return std::ranges::all_of(inputs_, [this](const Input& input) {
        return input.titles == 0 || input.plan.directory.empty() || makeDirectory(input.plan.directory, diagnostics_);
    });
}

bool RenderRun::openManifest() {
    if (options_.manifest.empty()) return true;
    std::string reason;
    manifestPath_ = ManifestFile::targetOf(manifestPath(options_.manifest, options_.shard));
    if (options_.resume) {
        std::set<std::string> folders = {folderOf(manifestPath_)};
        for (const Input& input : inputs_) folders.insert(folderOf(input.plan.fileFor(1)));
        removeLeftOvers(manifestPath_, folders);
        auto done = DoneTitles::load(manifestPath_, &reason);
        if (done) done_ = std::move(*done);
    }
    if (reason.empty()) manifest_ = ManifestFile::create(manifestPath_, &reason);
    isMarked_ = manifest_ && manifest_->replacesFile() && placeRunMark(manifestPath_, &reason);
    if (manifest_ && !options_.shard.isWhole()) {
        std::vector<SourceEntry> sources;
        for (const Input& input : inputs_) sources.push_back({input.file.path, input.lastIndex, input.leftOut});
        manifest_->append(manifestHeading(options_.shard, sources), &reason);
    }
    if (reason.empty()) return true;
    diagnostics_.error(manifestPath_, reason);
    return false;
}

bool RenderRun::renderAll() {
    progress_.emplace(titlesOfShare_, diagnostics_.verbosity());
    bool allAdded = true;
    {
        const size_t threads = std::clamp<size_t>(titlesOfShare_, 1, options_.jobs);
        OrderedJobs jobs(
            threads, threads * kWindowPerThread, [this] { return titleWork(*setup_); },
            [this](Job& job) { deliver(static_cast<TitleJob&>(job)); });
        for (uint32_t i = 0; i < inputs_.size(); ++i) allAdded &= addJobs(i, jobs);
    }
    progress_.reset();
    std::string reason;
    if (manifest_ && !manifest_->commit(&reason)) {
        diagnostics_.error(manifestPath_, reason);
        return false;
    }
    if (manifest_ && isMarked_) {
        DoneTitles::clear(manifestPath_);
        removeRunMark(manifestPath_);
    }
    return allDone_ && allAdded;
}

bool RenderRun::addJobs(uint32_t number, OrderedJobs& jobs) {
    const Input& input = inputs_[number];
    // Problems with the file have been reported.
    Diagnostics again(Diagnostics::Verbosity::quiet);
    bool hasLosses = false;
    uint32_t count = 0;
    bool isSame = true;
    const bool isRead = readInput(
        input, again,
        [&](Title&& title) {
            ++count;
            if (options_.shard.holds(input.file.identity(), title.index)) {
                isSame &= firstUses_.contains(keyOf(contentOf(title, *looks_)));
                if (isSame) addJob(number, title, jobs);
            }
        },
        hasLosses);
    if (isRead && isSame && count == input.titles) return true;
    // Threads may print at the same time; each line is written at once.
    Diagnostics(diagnostics_.verbosity())
        .error(input.file.path, "changed while it was being rendered; render it again");
    return false;
}

void RenderRun::addJob(uint32_t number, const Title& title, OrderedJobs& jobs) {
    const Input& input = inputs_[number];
    auto job = std::make_unique<TitleJob>();
    job->content = contentOf(title, *looks_);
    const Key key = keyOf(job->content);
    const FirstUse& first = firstUses_.at(key);
    job->title = {input.file.path,
                  title.index,
                  title.start,
                  title.end,
                  title.text->string()->utf8(),
                  input.plan.fileFor(title.index),
                  {},
                  hexadecimal(key)};
    job->isRaw = input.plan.isRaw;
    job->toStandardOutput = input.plan.toStandardOutput;
    if (first.uses > 1 && !job->toStandardOutput) {
        job->isShared = true;
        if (first.input != number || first.index != title.index)
            job->title.sameAs = inputs_[first.input].plan.fileFor(first.index);
        job->isTwin = !drawn_.insert(key).second;
    }
    job->formerLine = done_.lineOf(job->title, options_.drawing.strict);
    jobs.add(std::move(job));
}

void RenderRun::deliver(TitleJob& job) {
    progress_->advance();
    const std::string line = job.isKept ? job.formerLine : job.isTwin ? lineOfTwin(job) : lineOf(job);
    allDone_ &= !line.empty();
    if (line.empty()) return;
    if (job.isShared && !job.isTwin) linesByKey_[job.title.key] = line;
    std::string reason;
    if (manifest_ && !manifest_->append(line, &reason)) {
        diagnostics_.error(manifestPath_, reason);
        allDone_ = false;
        manifest_.reset();
    }
}

std::string RenderRun::lineOf(TitleJob& job) {
    if (!lines_.tell(job)) return {};
    if (job.toStandardOutput &&
        (std::fwrite(job.bytes.data(), 1, job.bytes.size(), stdout) != job.bytes.size() || std::fflush(stdout) != 0)) {
        diagnostics_.error("standard output", std::strerror(errno));
        return {};
    }
    if (!job.toStandardOutput) diagnostics_.note(job.title.file, "written");
    return manifestLine(job.title, job.picture);
}

std::string RenderRun::lineOfTwin(const TitleJob& job) {
    const auto other = linesByKey_.find(job.title.key);
    std::string reason = "has the same picture as one that was not rendered";
    if (other != linesByKey_.end()) {
        std::string line = manifestLineLike(other->second, job.title);
        if (placeSameFile(fileOfLine(other->second), job.title.file, &reason)) {
            diagnostics_.note(job.title.file, "has the same picture as another title");
            return line;
        }
    }
    diagnostics_.error(job.title.file, reason);
    return {};
}

}  // namespace

int render(const RenderOptions& options, Diagnostics& diagnostics) {
    RenderRun run(options, diagnostics);
    return run.prepare() && run.renderAll() ? 0 : 1;
}

}  // namespace qz::tool
