// Whether the library runs inside the development environment: here, the form preview tool
// (apps/preview), recognised by the running module's file name as the original recognised its
// IDE. Controls show design-time help messages only there.
#pragma once

#include <QString>

namespace korvex {

// The executable name of the form preview tool.
inline constexpr const char* DevelopmentEnvironmentExecutable = "korvex-preview";

// 2 inside the development environment, 1 outside. Worked out once per thread from the module
// file name (`moduleFileName`, or the running program's when empty) and remembered; later
// arguments are ignored.
short InDevelopmentEnvironment(const QString& moduleFileName = {});

}  // namespace korvex
