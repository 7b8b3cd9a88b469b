// Runs a call that should raise a korvex::Error and hands back the error, so that a test can
// check number, source and description together; std::nullopt when nothing was raised.
#pragma once

#include "korvex/runtime/Error.h"

#include <optional>
#include <utility>

namespace korvex::test {

template <class Call>
std::optional<Error> RaisedError(Call&& call)
{
    try {
        std::forward<Call>(call)();
    } catch (const Error& error) {
        return error;
    }
    return std::nullopt;
}

}  // namespace korvex::test
