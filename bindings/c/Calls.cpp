#include "bindings/c/Calls.h"

#include <algorithm>
#include <cstring>
#include <mutex>

#include "QzAnno/platform/foundation/NSLog.h"

namespace qz::c {
namespace {

// Fixed size, so that running out of memory can be reported.
constexpr size_t kMessageBytesMax = 2048;
thread_local char lastError[kMessageBytesMax] = "";

std::once_flag logIsSet;

void sendLogTo(const DiagnosticHook& hook) {
    setLogHook(hook);
    setStandardErrorHook(hook);
}

}  // namespace

qzanno_result fail(qzanno_result code, std::string_view message) noexcept {
    size_t length = std::min(message.size(), kMessageBytesMax - 1);
    const auto isContinuation = [&](size_t at) { return (static_cast<unsigned char>(message[at]) & 0xC0) == 0x80; };
    while (length > 0 && length < message.size() && isContinuation(length)) --length;
    std::memcpy(lastError, message.data(), length);
    lastError[length] = '\0';
    return code;
}

std::string quoted(std::string_view text) {
    return "\"" + std::string(text) + "\"";
}

qzanno_result failNull(std::string_view parameter) noexcept {
    return guarded([&] { return fail(QZANNO_ERROR_ARGUMENT, quoted(parameter) + " must not be NULL"); });
}

qzanno_result failIndex(size_t index, size_t count) {
    return fail(QZANNO_ERROR_ARGUMENT, "no item has the index " + std::to_string(index) +
                                           ", counted from 0; there are " + std::to_string(count));
}

void silenceLogByDefault() {
    std::call_once(logIsSet, [] { sendLogTo([](std::string_view) {}); });
}

}  // namespace qz::c

using namespace qz::c;

const char* qzanno_version() {
    return QZANNO_VERSION;
}

const char* qzanno_last_error() {
    return lastError;
}

qzanno_result qzanno_set_log(qzanno_log_function function, void* context) {
    return guarded([=] {
        std::call_once(logIsSet, [] {});
        if (!function) {
            sendLogTo([](std::string_view) {});
            return QZANNO_OK;
        }
        sendLogTo([=](std::string_view line) {
            if (line.ends_with('\n')) line.remove_suffix(1);
            function(std::string(line).c_str(), context);
        });
        return QZANNO_OK;
    });
}
