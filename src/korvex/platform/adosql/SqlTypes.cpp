// The type tables: SQL names and Qt types to ADO types.
#include "korvex/platform/adosql/SqlTypes.h"

#include <QString>
#include <QStringList>

namespace korvex::ado {
namespace {

ColumnType Make(DataTypeEnum type, int size = 0, int precision = 0, int scale = 0)
{
    ColumnType t;
    t.type = type;
    t.size = size;
    t.precision = precision;
    t.scale = scale;
    return t;
}

ColumnType Text(int size)
{
    return size > 0 ? Make(adVarWChar, size) : Make(adLongVarWChar, LongTextSize);
}

ColumnType Binary()
{
    ColumnType t = Make(adLongVarWChar, LongTextSize);
    t.binary = true;
    return t;
}

}  // namespace

ColumnType ColumnTypeOfDeclared(QStringView declared)
{
    // "NAME(a, b) rest": the name in upper case with single blanks, and the numbers in brackets.
    QString name = declared.toString().toUpper().simplified();
    QList<int> args;
    if (const qsizetype open = name.indexOf(u'('); open >= 0) {
        const qsizetype close = name.indexOf(u')', open);
        const QStringList parts = name.mid(open + 1, (close < 0 ? name.size() : close) - open - 1).split(u',');
        for (const QString& part : parts)
            args << part.trimmed().toInt();
        name = (name.left(open) + (close < 0 ? QString() : name.mid(close + 1))).simplified();
    }
    const int first = args.value(0);
    const int second = args.value(1);
    if (name.isEmpty()) {
        ColumnType t = Make(adLongVarWChar, LongTextSize);
        t.unknown = true;
        return t;
    }
    static const QStringList longIntegers{"BIGINT", "INT8", "BIGSERIAL", "UNSIGNED BIG INT", "SERIAL8"};
    static const QStringList smallIntegers{"SMALLINT", "INT2", "SMALLSERIAL", "SERIAL2"};
    static const QStringList integers{"INTEGER", "INT", "INT4", "MEDIUMINT", "SERIAL", "SERIAL4"};
    static const QStringList booleans{"BOOLEAN", "BOOL", "BIT"};
    static const QStringList doubles{"DOUBLE", "DOUBLE PRECISION", "FLOAT", "FLOAT8", "REAL"};
    static const QStringList decimals{"NUMERIC", "DECIMAL", "NUMBER", "DEC"};
    static const QStringList money{"MONEY", "SMALLMONEY", "CURRENCY"};
    static const QStringList dates{"DATE"};
    static const QStringList times{"TIME", "TIME WITHOUT TIME ZONE", "TIME WITH TIME ZONE", "TIMETZ"};
    static const QStringList stamps{"DATETIME", "TIMESTAMP", "TIMESTAMP WITHOUT TIME ZONE", "TIMESTAMP WITH TIME ZONE",
                                    "TIMESTAMPTZ", "DATETIME2", "SMALLDATETIME"};
    static const QStringList fixedTexts{"CHAR", "CHARACTER", "NCHAR", "NATIONAL CHAR", "NATIONAL CHARACTER", "BPCHAR"};
    static const QStringList varTexts{"VARCHAR", "NVARCHAR", "CHARACTER VARYING", "VARYING CHARACTER", "VARCHAR2",
                                      "NVARCHAR2", "NATIONAL VARCHAR", "NATIVE CHARACTER"};
    static const QStringList longTexts{"TEXT", "CLOB", "NTEXT", "LONGTEXT", "MEDIUMTEXT", "TINYTEXT", "CITEXT"};
    static const QStringList binaries{"BLOB", "BYTEA", "BINARY", "VARBINARY", "IMAGE", "LONGBLOB", "RAW"};
    if (longIntegers.contains(name))
        return Make(adBigInt);
    if (smallIntegers.contains(name))
        return Make(adSmallInt);
    if (name == u"TINYINT")
        return Make(adUnsignedTinyInt);
    if (integers.contains(name))
        return Make(adInteger);
    if (booleans.contains(name))
        return Make(adBoolean);
    if (name == u"FLOAT4")
        return Make(adSingle);
    if (doubles.contains(name))
        return Make(adDouble);
    if (decimals.contains(name))
        return Make(adNumeric, 0, first > 0 ? first : 18, second);
    if (money.contains(name))
        return Make(adCurrency);
    if (dates.contains(name))
        return Make(adDBDate);
    if (times.contains(name))
        return Make(adDBTime);
    if (stamps.contains(name))
        return Make(adDBTimeStamp);
    if (fixedTexts.contains(name))
        return Make(adWChar, first > 0 ? first : 1);
    if (varTexts.contains(name))
        return Text(first);
    if (longTexts.contains(name))
        return Text(0);
    if (binaries.contains(name))
        return Binary();
    // Names of no list, by the rules SQLite uses to give a declared type its affinity.
    if (name.contains(u"INT"))
        return Make(adBigInt);
    if (name.contains(u"CHAR") || name.contains(u"CLOB") || name.contains(u"TEXT"))
        return Text(first);
    if (name.contains(u"BLOB"))
        return Binary();
    if (name.contains(u"REAL") || name.contains(u"FLOA") || name.contains(u"DOUB"))
        return Make(adDouble);
    // Anything else (uuid, json, interval, xml ...) reads as text.
    return Text(0);
}

ColumnType ColumnTypeOfQt(QMetaType type, int length, int precision)
{
    switch (type.id()) {
    case QMetaType::Bool: return Make(adBoolean);
    case QMetaType::Char:
    case QMetaType::SChar: return Make(adTinyInt);
    case QMetaType::UChar: return Make(adUnsignedTinyInt);
    case QMetaType::Short: return Make(adSmallInt);
    case QMetaType::UShort: return Make(adUnsignedSmallInt);
    case QMetaType::Int: return Make(adInteger);
    case QMetaType::UInt:
    case QMetaType::Long:
    case QMetaType::LongLong:
    case QMetaType::ULong:
    case QMetaType::ULongLong: return Make(adBigInt);
    case QMetaType::Float: return Make(adSingle);
    case QMetaType::Double:
        // Drivers report exact numerics as doubles with a scale.
        return precision > 0 && length > 0 ? Make(adNumeric, 0, length, precision) : Make(adDouble);
    case QMetaType::QDate: return Make(adDBDate);
    case QMetaType::QTime: return Make(adDBTime);
    case QMetaType::QDateTime: return Make(adDBTimeStamp);
    case QMetaType::QByteArray: return Binary();
    default: return Text(length > 0 && length < LongTextSize ? length : 0);
    }
}

}  // namespace korvex::ado
