#include "apps/qzanno/FilmTime.h"

#include <array>
#include <cerrno>
#include <cstring>

#include <fcntl.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include "captions/ClockTime.h"
#include "platform/foundation/DiagnosticText.h"

namespace qz::tool {
namespace {

/// The program's output, including errors, and its exit code: 127 if there is no such program.
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

std::optional<double> lengthOfFilm(const std::string& path, std::string& reason) {
    // A file's name may begin with "-" or contain ":".
    const std::string file = "file:" + path;
    int exitCode = 0;
    const std::string output = outputOf({"ffprobe", "-v", "error", "-select_streams", "v:0", "-show_entries",
                                         "stream=codec_type,duration:format=duration", "-of",
                                         "default=noprint_wrappers=1", "-i", file.c_str(), nullptr},
                                        exitCode);
    if (exitCode == 127) {
        reason = "needs ffprobe, which comes with ffmpeg, to find its length; install it, or give a time";
        return {};
    }
    if (exitCode == 0 && output.find("codec_type=video") == std::string::npos) {
        reason = "has no pictures; give a film or a time";
        return {};
    }
    // The video stream's own length comes first; some containers have only the total.
    constexpr std::string_view kDuration = "duration=";
    for (size_t at = output.find(kDuration); at != std::string::npos; at = output.find(kDuration, at)) {
        at += kDuration.size();
        const auto seconds = secondsOfClock(std::string_view(output).substr(at, output.find('\n', at) - at));
        if (seconds) return seconds;
    }
    reason = exitCode != 0 ? "cannot be read as a film: " + oneLine(output.substr(0, output.find('\n')))
                           : "does not record its length; give a time";
    return {};
}

}  // namespace qz::tool
