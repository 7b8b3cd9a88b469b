// Error numbers for the kinds of database failure.
#include "korvex/platform/adosql/DriverError.h"

namespace korvex::ado {

QString RowConflictDescription()
{
    return QStringLiteral("Row cannot be located for updating. Some values may have been changed since it was last read.");
}

DriverError::DriverError(Kind kind, QString source, QString description)
    : Error(NumberOf(kind), std::move(source), std::move(description)), mKind(kind)
{
}

int DriverError::NumberOf(Kind kind)
{
    switch (kind) {
    case Kind::Statement: return adErrCommandErrors;
    case Kind::Integrity:
    case Kind::Schema: return adErrIntegrity;
    case Kind::Busy: return adErrTimeout;
    case Kind::Connection:
    case Kind::Resource: return adErrUnspecified;
    }
    return adErrUnspecified;
}

}  // namespace korvex::ado
