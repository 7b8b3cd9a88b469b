// The error every library routine throws to its caller: a number, the routine that raised it
// and a description, as the host's error handling expects them. The platform's standard error
// numbers live here too, so that every layer raises them with the same words.
#pragma once

#include <QString>

#include <exception>
#include <string>

namespace korvex {

// Base of object-defined error numbers (the interface facility of COM error codes).
inline constexpr int ObjectErrorBase = -2147221504;

// The platform's standard run-time errors that the library raises or expects to see.
enum StandardError : int {
    vbErrInvalidProcedureCall = 5,
    vbErrOverflow = 6,
    vbErrOutOfMemory = 7,
    vbErrSubscriptOutOfRange = 9,
    vbErrDivisionByZero = 11,
    vbErrTypeMismatch = 13,
    vbErrBadFileNameOrNumber = 52,
    vbErrFileNotFound = 53,
    vbErrFileAlreadyOpen = 55,
    vbErrDeviceIO = 57,
    vbErrDiskFull = 61,
    vbErrInputPastEnd = 62,
    vbErrPermissionDenied = 70,
    vbErrPathFileAccess = 75,
    vbErrPathNotFound = 76,
    vbErrObjectNotSet = 91,
    vbErrInvalidUseOfNull = 94,
    vbErrObjectNotAnArray = 343,
    vbErrObjectAlreadyLoaded = 360,
    vbErrCantUnloadDesignControl = 362,
    vbErrInvalidPropertyValue = 380,
    vbErrInvalidPropertyArrayIndex = 381,
    vbErrPropertyReadOnly = 383,
    vbErrPropertyWriteOnly = 394,
    vbErrObjectRequired = 424,
    vbErrCantCreateObject = 429,
    vbErrObjectDoesntSupport = 438,
    vbErrArgumentNotOptional = 449,
    vbErrWrongNumberOfArguments = 450,
    vbErrDuplicateKey = 457,
};

// The platform's own wording for a standard error number; an empty text for numbers it does
// not know.
QString StandardErrorDescription(int number);

class Error : public std::exception {
public:
    Error(int number, QString source, QString description);
    // A standard error with the platform's description.
    Error(int number, QString source = {});

    int Number() const noexcept { return mNumber; }
    const QString& Source() const noexcept { return mSource; }
    const QString& Description() const noexcept { return mDescription; }

    const char* what() const noexcept override { return mWhat.c_str(); }

private:
    int mNumber = 0;
    QString mSource;
    QString mDescription;
    std::string mWhat;
};

// Raises a standard error; a one-liner for the many places that refuse a value.
[[noreturn]] void Raise(int number, const QString& source = {});
[[noreturn]] void Raise(int number, const QString& source, const QString& description);

}  // namespace korvex
