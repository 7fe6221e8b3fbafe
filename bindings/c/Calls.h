#pragma once

#include <exception>
#include <new>
#include <string>
#include <string_view>

#include "bindings/c/qzanno.h"

namespace qz::c {

/// Stores the message for this thread's `qzanno_last_error`, cutting a very long one between characters; returns the
/// code.
qzanno_result fail(qzanno_result code, std::string_view message) noexcept;

/// The text in quotes, for messages.
std::string quoted(std::string_view text);

/// Runs a call of the interface and turns exceptions into codes.
template <class Call>
qzanno_result guarded(Call&& call) noexcept {
    try {
        return call();
    } catch (const std::bad_alloc&) {
        return fail(QZANNO_ERROR_MEMORY, "memory has run out; free some and try again");
    } catch (const std::exception& exception) {
        return fail(QZANNO_ERROR_INTERNAL, exception.what());
    } catch (...) {
        return fail(QZANNO_ERROR_INTERNAL, "an exception of unknown kind");
    }
}

/// Fails for a NULL pointer, named as in the header.
qzanno_result failNull(std::string_view parameter) noexcept;

/// Fails for an index that is not below `count`.
qzanno_result failIndex(size_t index, size_t count);

/// Drops the log unless the host has set a function for it, since a loaded library must not write to standard error.
/// Call before making any object.
void silenceLogByDefault();

}  // namespace qz::c
