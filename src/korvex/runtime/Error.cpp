// Standard error descriptions and the thrown error type.
#include "korvex/runtime/Error.h"

namespace korvex {

QString StandardErrorDescription(int number)
{
    switch (number) {
    case 3: return QStringLiteral("Return without GoSub");
    case 5: return QStringLiteral("Invalid procedure call or argument");
    case 6: return QStringLiteral("Overflow");
    case 7: return QStringLiteral("Out of memory");
    case 9: return QStringLiteral("Subscript out of range");
    case 10: return QStringLiteral("This array is fixed or temporarily locked");
    case 11: return QStringLiteral("Division by zero");
    case 13: return QStringLiteral("Type mismatch");
    case 14: return QStringLiteral("Out of string space");
    case 28: return QStringLiteral("Out of stack space");
    case 35: return QStringLiteral("Sub or Function not defined");
    case 48: return QStringLiteral("Error in loading DLL");
    case 51: return QStringLiteral("Internal error");
    case 52: return QStringLiteral("Bad file name or number");
    case 53: return QStringLiteral("File not found");
    case 54: return QStringLiteral("Bad file mode");
    case 55: return QStringLiteral("File already open");
    case 57: return QStringLiteral("Device I/O error");
    case 58: return QStringLiteral("File already exists");
    case 61: return QStringLiteral("Disk full");
    case 62: return QStringLiteral("Input past end of file");
    case 67: return QStringLiteral("Too many files");
    case 68: return QStringLiteral("Device unavailable");
    case 70: return QStringLiteral("Permission denied");
    case 71: return QStringLiteral("Disk not ready");
    case 74: return QStringLiteral("Can't rename with different drive");
    case 75: return QStringLiteral("Path/File access error");
    case 76: return QStringLiteral("Path not found");
    case 91: return QStringLiteral("Object variable or With block variable not set");
    case 92: return QStringLiteral("For loop not initialized");
    case 93: return QStringLiteral("Invalid pattern string");
    case 94: return QStringLiteral("Invalid use of Null");
    case 340: return QStringLiteral("Control array element does not exist");
    case 343: return QStringLiteral("Object not an array");
    case 360: return QStringLiteral("Object already loaded");
    case 362: return QStringLiteral("Can't unload controls created at design time");
    case 380: return QStringLiteral("Invalid property value");
    case 381: return QStringLiteral("Invalid property array index");
    case 382: return QStringLiteral("Set not supported at runtime");
    case 383: return QStringLiteral("Set not supported (read-only property)");
    case 385: return QStringLiteral("Need property array index");
    case 387: return QStringLiteral("Set not permitted");
    case 393: return QStringLiteral("Get not supported at runtime");
    case 394: return QStringLiteral("Get not supported (write-only property)");
    case 422: return QStringLiteral("Property not found");
    case 423: return QStringLiteral("Property or method not found");
    case 424: return QStringLiteral("Object required");
    case 429: return QStringLiteral("ActiveX component can't create object");
    case 430: return QStringLiteral("Class does not support Automation or does not support expected interface");
    case 438: return QStringLiteral("Object doesn't support this property or method");
    case 440: return QStringLiteral("Automation error");
    case 445: return QStringLiteral("Object doesn't support this action");
    case 446: return QStringLiteral("Object doesn't support named arguments");
    case 448: return QStringLiteral("Named argument not found");
    case 449: return QStringLiteral("Argument not optional");
    case 450: return QStringLiteral("Wrong number of arguments or invalid property assignment");
    case 451: return QStringLiteral("Property let procedure not defined and property get procedure did not return an object");
    case 457: return QStringLiteral("This key is already associated with an element of this collection");
    case 458: return QStringLiteral("Variable uses an Automation type not supported in Visual Basic");
    case 461: return QStringLiteral("Method or data member not found");
    case 462: return QStringLiteral("The remote server machine does not exist or is unavailable");
    case 463: return QStringLiteral("Class not registered on local machine");
    case 481: return QStringLiteral("Invalid picture");
    default: return {};
    }
}

Error::Error(int number, QString source, QString description)
    : mNumber(number), mSource(std::move(source)), mDescription(std::move(description))
{
    mWhat = QStringLiteral("Error %1 (%2): %3").arg(mNumber).arg(mSource, mDescription).toStdString();
}

Error::Error(int number, QString source)
    : Error(number, std::move(source), StandardErrorDescription(number))
{
    if (mDescription.isEmpty())
        *this = Error(number, mSource, QStringLiteral("Application-defined or object-defined error"));
}

void Raise(int number, const QString& source)
{
    throw Error(number, source);
}

void Raise(int number, const QString& source, const QString& description)
{
    throw Error(number, source, description);
}

}  // namespace korvex
