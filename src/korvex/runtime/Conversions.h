// The language's conversion and test functions over Variant: CStr, CInt, CLng, CSng, CDbl,
// CCur, CBool, CDate, CByte, Val, IsNumeric, IsDate, VarType and TypeName, and comparison as
// the "=" and "<" operators do it. Text is read and written with the current regional settings;
// a value that cannot convert raises Type mismatch (13), one out of range Overflow (6), Null
// where a value is required Invalid use of Null (94).
#pragma once

#include "korvex/runtime/RegionalSettings.h"
#include "korvex/runtime/Variant.h"

#include <QString>
#include <QStringView>

#include <cstdint>
#include <optional>

namespace korvex {

QString CStr(const Variant& value);
std::int16_t CInt(const Variant& value);
std::int32_t CLng(const Variant& value);
float CSng(const Variant& value);
double CDbl(const Variant& value);
Currency CCur(const Variant& value);
bool CBool(const Variant& value);
Date CDate(const Variant& value);
std::uint8_t CByte(const Variant& value);
// Converts to the given type (vbEmpty, vbNull and vbVariant return the value unchanged).
Variant CVType(const Variant& value, VbVarType type);

// The leading number of a text, read with "." as decimal point whatever the locale; blanks,
// tabs and line feeds are skipped anywhere; "&H" and "&O" prefixes read hexadecimal and octal.
double Val(QStringView text);

// The text without its leading and trailing spaces; tabs, line breaks and other blanks stay.
QString Trim(const QString& text);

bool IsNumeric(const Variant& value);
bool IsDate(const Variant& value);
VbVarType VarType(const Variant& value);
QString TypeName(const Variant& value);

// A date as the general date format shows it: the short date, the long time, or both.
QString FormatGeneralDate(Date date, const RegionalSettings& settings);
// A double as text with at most the given number of significant digits (15 for Double,
// 7 for Single), in exponent notation below 1E-4 and from 1E+digits up.
QString NumberToText(double value, int significantDigits, const QString& decimalSymbol);

std::optional<Date> ParseDate(QStringView text, const RegionalSettings& settings);

enum CompareMethod : int { vbBinaryCompare = 0, vbTextCompare = 1 };

enum class Comparison { Less = -1, Equal = 0, Greater = 1, Null = 2 };

// The comparison operators' rules: Null against anything gives Null; numbers compare as
// numbers, texts as texts, a number is less than a text; Empty is 0 beside a number and ""
// beside a text.
Comparison Compare(const Variant& a, const Variant& b, CompareMethod method = vbBinaryCompare);
// StrComp: -1, 0 or 1.
int StrComp(QStringView a, QStringView b, CompareMethod method = vbBinaryCompare);

}  // namespace korvex
