// One SharedContext per thread: nothing is shared between threads, so nothing is locked.
#include "korvex/core/SharedContext.h"

namespace korvex {

SharedContext& SharedContext::ForThisThread()
{
    thread_local SharedContext context;
    return context;
}

}  // namespace korvex
