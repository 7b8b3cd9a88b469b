// The reporter behind the entry guard.
#include "korvex/runtime/EntryGuard.h"

#include <QLoggingCategory>

#include <utility>

namespace korvex {
namespace {

Q_LOGGING_CATEGORY(lcEvents, "korvex.events")

void LogError(const QObject* where, const Error& error)
{
    qCCritical(lcEvents).noquote() << "Error" << error.Number() << "in" << error.Source() << ":" << error.Description()
                                   << "(stopped where Qt called" << (where ? where->objectName() : QString()) << ")";
}

UncaughtErrorReporter& HostReporter()
{
    thread_local UncaughtErrorReporter reporter;
    return reporter;
}

UncaughtErrorReporter& LibraryReporter()
{
    thread_local UncaughtErrorReporter reporter = LogError;
    return reporter;
}

const UncaughtErrorReporter& Reporter()
{
    return HostReporter() ? HostReporter() : LibraryReporter();
}

}  // namespace

UncaughtErrorReporter SetUncaughtErrorReporter(UncaughtErrorReporter reporter)
{
    return std::exchange(HostReporter(), std::move(reporter));
}

void SetLibraryErrorReporter(UncaughtErrorReporter reporter)
{
    LibraryReporter() = reporter ? std::move(reporter) : UncaughtErrorReporter(LogError);
}

void ReportUncaught(const QObject* where, const Error& error) noexcept
{
    try {
        Reporter()(where, error);
    } catch (...) {
        // A reporter that fails has nowhere left to report to.
        LogError(where, error);
    }
}

void ReportUncaught(const QObject* where, const std::exception& error) noexcept
{
    ReportUncaught(where, Error(vbErrInvalidProcedureCall, QString(), QString::fromLocal8Bit(error.what())));
}

}  // namespace korvex
