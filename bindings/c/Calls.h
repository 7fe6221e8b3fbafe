#pragma once

#include <exception>
#include <new>
#include <string>
#include <string_view>

#include "bindings/c/qzanno.h"

namespace qz::c {

/// Keeps the message for `qzanno_last_error` of this thread, cut at a character when it is very long; returns the code.
qzanno_result fail(qzanno_result code, std::string_view message) noexcept;

/// In quotes, for messages.
std::string quoted(std::string_view text);

/// Runs a call of the interface, and turns what it throws into a code.
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

/// For a pointer that must not be NULL, by its name in the header.
qzanno_result failNull(std::string_view parameter) noexcept;

/// For an index beyond the last of `count`.
qzanno_result failIndex(size_t index, size_t count);

/// A library that others load writes nothing to standard error: the log goes nowhere, unless the host has said where.
/// Called before an object is made.
void silenceLogByDefault();

}  // namespace qz::c
