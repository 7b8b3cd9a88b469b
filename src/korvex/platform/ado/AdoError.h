// The errors the recordset engine raises, with ADO's numbers and wording, so that callers that
// test Err.Number or show Err.Description see what they would see over the classic data layer.
#pragma once

#include "korvex/platform/ado/AdoEnums.h"

#include <QString>

namespace korvex::ado {

// The error the data layer reports when a field refuses a value (too long, out of range, not
// convertible, Null where none is allowed); Field.Status then tells which.
inline constexpr int adErrMultipleStep = -2147217887;  // 0x80040E21

// Sources as the host language shows them.
inline const QString RecordsetSource = QStringLiteral("ADODB.Recordset");
inline const QString FieldSource = QStringLiteral("ADODB.Field");
inline const QString FieldsSource = QStringLiteral("ADODB.Fields");
inline const QString PropertiesSource = QStringLiteral("ADODB.Properties");
inline const QString PropertySource = QStringLiteral("ADODB.Property");

// ADO's description of one of its error numbers; "" for numbers it does not know.
QString AdoErrorDescription(int number);

[[noreturn]] void RaiseAdo(int number, const QString& source = RecordsetSource);

}  // namespace korvex::ado
