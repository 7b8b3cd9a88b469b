// The one guard where Qt calls into the library or into a host's event handlers (event filters,
// event handlers, timer callbacks, slots that raise host events). An error raised there is
// reported and stops; unwinding through Qt's event loop would end the program.
#pragma once

#include "korvex/runtime/Error.h"

#include <QObject>

#include <exception>
#include <functional>
#include <type_traits>
#include <utility>

namespace korvex {

// Shows or records an error that reached a Qt entry point. `where` is the object Qt called
// (may be null).
using UncaughtErrorReporter = std::function<void(const QObject* where, const Error& error)>;

// The host's own reporter, replacing the library's; an empty one restores the library's.
// Returns the previous one.
UncaughtErrorReporter SetUncaughtErrorReporter(UncaughtErrorReporter reporter);
// The library's reporter, used while the host has set none: it writes to the "korvex.events"
// logging category until the GUI layer installs one that also shows the error.
void SetLibraryErrorReporter(UncaughtErrorReporter reporter);
void ReportUncaught(const QObject* where, const Error& error) noexcept;
void ReportUncaught(const QObject* where, const std::exception& error) noexcept;

// Runs `f` under the guard; on an error, reports it and returns `fallback`.
template <class F, class R = std::invoke_result_t<F>>
    requires(!std::is_void_v<R>)
R Guarded(const QObject* where, F&& f, R fallback) noexcept
{
    try {
        return std::forward<F>(f)();
    } catch (const Error& e) {
        ReportUncaught(where, e);
    } catch (const std::exception& e) {
        ReportUncaught(where, e);
    }
    return fallback;
}

template <class F>
    requires std::is_void_v<std::invoke_result_t<F>>
void Guarded(const QObject* where, F&& f) noexcept
{
    try {
        std::forward<F>(f)();
    } catch (const Error& e) {
        ReportUncaught(where, e);
    } catch (const std::exception& e) {
        ReportUncaught(where, e);
    }
}

// A slot for QObject::connect that runs `f` under the guard.
template <class F>
auto GuardedSlot(const QObject* where, F f)
{
    // Qt offers every argument of the signal; a slot that wants none gets none.
    return [where, f = std::move(f)](auto&&... args) {
        if constexpr (std::is_invocable_v<const F&>)
            Guarded(where, [&] { f(); });
        else
            Guarded(where, [&] { f(std::forward<decltype(args)>(args)...); });
    };
}

}  // namespace korvex
