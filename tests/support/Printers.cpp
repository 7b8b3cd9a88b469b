// Printers for GoogleTest failure messages.
#include "tests/support/Printers.h"

#include "korvex/runtime/Conversions.h"

QT_BEGIN_NAMESPACE
void PrintTo(const QString& text, std::ostream* out)
{
    *out << '"' << text.toStdString() << '"';
}
QT_END_NAMESPACE

namespace korvex {

void PrintTo(const Variant& value, std::ostream* out)
{
    *out << TypeName(value).toStdString();
    if (value.IsNull() || value.IsEmpty())
        return;
    if (value.IsObject() || value.IsArray()) {
        *out << "(...)";
        return;
    }
    *out << '(' << CStr(value).toStdString() << ')';
}

void PrintTo(const Currency& value, std::ostream* out)
{
    *out << value.ToInvariantString().toStdString() << '@';
}

void PrintTo(const Date& value, std::ostream* out)
{
    const DateParts p = SplitDate(value);
    *out << "Date(" << value.serial << " = " << p.Year << '-' << p.Month << '-' << p.Day << ' ' << p.Hour << ':'
         << p.Minute << ':' << p.Second << ')';
}

}  // namespace korvex
