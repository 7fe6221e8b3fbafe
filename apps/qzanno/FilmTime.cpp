#include "apps/qzanno/FilmTime.h"

#include <array>
#include <cctype>
#include <cerrno>
#include <charconv>
#include <cstring>

#include <fcntl.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include "platform/foundation/DiagnosticText.h"

namespace qz::tool {
namespace {

constexpr double kSecondsMax = 1e9;

/// A number without a sign that is the whole of the text.
std::optional<double> parsedNumber(std::string_view text) {
    double number = 0;
    if (text.empty() || !(std::isdigit(static_cast<unsigned char>(text.front())) || text.front() == '.')) return {};
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number, std::chars_format::fixed);
    return error == std::errc() && end == text.data() + text.size() ? std::optional(number) : std::nullopt;
}

/// What the program writes, errors included, and its exit code: 127 if there is no such program.
std::string outputOf(std::array<const char*, 12> arguments, int& exitCode) {
    exitCode = 127;
    int ends[2];
    if (::pipe2(ends, O_CLOEXEC) != 0) return std::strerror(errno);
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_adddup2(&actions, ends[1], STDOUT_FILENO);
    posix_spawn_file_actions_adddup2(&actions, ends[1], STDERR_FILENO);
    posix_spawn_file_actions_addopen(&actions, STDIN_FILENO, "/dev/null", O_RDONLY, 0);
    pid_t process = 0;
    const int error =
        ::posix_spawnp(&process, arguments[0], &actions, nullptr, const_cast<char* const*>(arguments.data()), environ);
    posix_spawn_file_actions_destroy(&actions);
    ::close(ends[1]);
    std::string output;
    char buffer[4096];
    for (ssize_t count = 0; error == 0 && (count = ::read(ends[0], buffer, sizeof buffer)) > 0;)
        output.append(buffer, static_cast<size_t>(count));
    ::close(ends[0]);
    int status = 0;
    if (error == 0 && ::waitpid(process, &status, 0) == process) exitCode = WIFEXITED(status) ? WEXITSTATUS(status) : 1;
    return output;
}

}  // namespace

std::optional<double> parsedTime(std::string_view text) {
    double seconds = 0;
    for (int parts = 1;; ++parts) {
        const size_t colon = text.find(':');
        const std::optional<double> part = parsedNumber(text.substr(0, colon));
        const bool isLast = colon == std::string_view::npos;
        // Only the seconds have a fraction.
        if (!part || parts > 3 || (!isLast && text.substr(0, colon).find('.') != std::string_view::npos)) return {};
        seconds = seconds * 60 + *part;
        if (isLast) return seconds <= kSecondsMax ? std::optional(seconds) : std::nullopt;
        text.remove_prefix(colon + 1);
    }
}

std::optional<double> lengthOfFilm(const std::string& path, std::string& reason) {
    // A name that begins with "-" or holds ":" is still a file's.
    const std::string file = "file:" + path;
    int exitCode = 0;
    const std::string output = outputOf({"ffprobe", "-v", "error", "-select_streams", "v:0", "-show_entries",
                                         "stream=codec_type,duration:format=duration", "-of",
                                         "default=noprint_wrappers=1", "-i", file.c_str(), nullptr},
                                        exitCode);
    if (exitCode == 127) {
        reason = "needs ffprobe to tell how long it is, which comes with ffmpeg; install it, or give a time";
        return {};
    }
    if (exitCode == 0 && output.find("codec_type=video") == std::string::npos) {
        reason = "has no pictures; give a film or a time";
        return {};
    }
    // The pictures' own length comes first; some containers tell only that of the whole.
    constexpr std::string_view kDuration = "duration=";
    for (size_t at = output.find(kDuration); at != std::string::npos; at = output.find(kDuration, at)) {
        at += kDuration.size();
        const auto seconds = parsedNumber(std::string_view(output).substr(at, output.find('\n', at) - at));
        if (seconds && *seconds <= kSecondsMax) return seconds;
    }
    reason = exitCode != 0 ? "cannot be read as a film: " + oneLine(output.substr(0, output.find('\n')))
                           : "does not tell how long it is; give a time";
    return {};
}

}  // namespace qz::tool
