// The library's trace output: lines go to the host's MDI main form, when the host registered
// one and it offers a public method "TraceFromKorvex(Message, Value)"; otherwise they go
// nowhere. Tracing never fails.
#pragma once

#include <QString>

namespace korvex {

void Trace(const QString& message, float value = 0);

}  // namespace korvex
