// How database column types become ADO field types: from a declared type name as SQL writes it
// ("VARCHAR(40)", "numeric(10,2)", "timestamp without time zone"), or from the Qt type a driver
// reports for a result column when no declaration is known.
#pragma once

#include "korvex/platform/ado/AdoEnums.h"

#include <QMetaType>
#include <QStringView>

namespace korvex::ado {

struct ColumnType {
    DataTypeEnum type = adLongVarWChar;
    int size = 0;  // characters for texts, 0 for the fixed-size types
    int precision = 0;
    int scale = 0;
    // Bytes the recordset cannot hold as such: shown as hexadecimal text, never written back.
    bool binary = false;
    // Nothing was declared: the values decide (SQLite expressions).
    bool unknown = false;
};

// Texts without a declared length: ADO's size for long texts.
inline constexpr int LongTextSize = 1073741823;

ColumnType ColumnTypeOfDeclared(QStringView declared);
// `length` and `precision` as QSqlField reports them (-1 or 0 when unknown).
ColumnType ColumnTypeOfQt(QMetaType type, int length, int precision);

}  // namespace korvex::ado
