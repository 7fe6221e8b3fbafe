#pragma once

#include <cstddef>
#include <memory>
#include <type_traits>
#include <utility>

namespace qz {

template <class Signature>
class Callback;

/// A function to call later: any callable that takes these arguments. Copies share its captures.
///
/// Stands in for `std::function`, whose header alone would bring each source of a host 11,000 lines.
template <class Result, class... Arguments>
class Callback<Result(Arguments...)> {
public:
    /// An empty callback, which must not be called.
    ///@{
    Callback() = default;
    Callback(std::nullptr_t) {}
    ///@}
    /// Implicit, so that a lambda can be passed as a callback. A null function pointer gives an empty callback.
    template <class Function>
    requires(!std::is_same_v<Function, Callback> && std::is_invocable_r_v<Result, Function&, Arguments...>)
        Callback(Function function) {
        if constexpr (std::is_pointer_v<Function>) {
            if (!function) return;
        }
        target_ = std::make_shared<Function>(std::move(function));
        call_ = [](void* target, Arguments... arguments) -> Result {
            return (*static_cast<Function*>(target))(std::forward<Arguments>(arguments)...);
        };
    }

    /// Whether there is a function to call.
    explicit operator bool() const { return call_ != nullptr; }
    /// Calls the function; exceptions pass through.
    Result operator()(Arguments... arguments) const {
        return call_(target_.get(), std::forward<Arguments>(arguments)...);
    }

private:
    std::shared_ptr<void> target_;
    Result (*call_)(void* target, Arguments...) = nullptr;
};

}  // namespace qz
