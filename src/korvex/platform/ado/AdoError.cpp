// ADO's error texts, word for word, for the numbers the engine raises.
#include "korvex/platform/ado/AdoError.h"

#include "korvex/runtime/Error.h"

namespace korvex::ado {

QString AdoErrorDescription(int number)
{
    switch (number) {
    case adErrProviderFailed: return QStringLiteral("Provider did not perform the requested operation.");
    case adErrInvalidArgument:
        return QStringLiteral(
            "Arguments are of the wrong type, are out of acceptable range, or are in conflict with one another.");
    case adErrNoCurrentRecord:
        return QStringLiteral("Either BOF or EOF is True, or the current record has been deleted. Requested "
                              "operation requires a current record.");
    case adErrIllegalOperation: return QStringLiteral("Operation is not allowed in this context.");
    case adErrFeatureNotAvailable: return QStringLiteral("Object or provider is not able to perform requested operation.");
    case adErrItemNotFound:
        return QStringLiteral("Item cannot be found in the collection corresponding to the requested name or ordinal.");
    case adErrObjectInCollection: return QStringLiteral("Object is already in collection. Cannot append.");
    case adErrDataConversion: return QStringLiteral("Application uses a value of the wrong type for the current operation.");
    case adErrObjectClosed: return QStringLiteral("Operation is not allowed when the object is closed.");
    case adErrObjectOpen: return QStringLiteral("Operation is not allowed when the object is open.");
    case adErrInvalidConnection:
        return QStringLiteral(
            "The connection cannot be used to perform this operation. It is either closed or invalid in this context.");
    case adErrNotReentrant: return QStringLiteral("Operation cannot be performed while processing event.");
    case adErrOperationCancelled: return QStringLiteral("Operation has been canceled by the user.");
    case adErrPermissionDenied: return QStringLiteral("Insufficient permission prevents writing to the field.");
    case adErrMultipleStep: return QStringLiteral("Multiple-step operation generated errors. Check each status value.");
    default: return {};
    }
}

void RaiseAdo(int number, const QString& source)
{
    throw Error(number, source, AdoErrorDescription(number));
}

}  // namespace korvex::ado
