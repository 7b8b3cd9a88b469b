// The number of the library error a call raises, 0 when it raises none: tests compare error
// numbers in one line.
#pragma once

#include "korvex/runtime/Error.h"

#include <functional>

namespace korvex::test {

inline int ErrorOf(const std::function<void()>& call)
{
    try {
        call();
    } catch (const Error& e) {
        return e.Number();
    }
    return 0;
}

}  // namespace korvex::test
