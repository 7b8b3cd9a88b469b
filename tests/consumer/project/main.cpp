// A program outside the project that uses the installed library.
#include <korvex/runtime/Conversions.h>
#include <korvex/runtime/Format.h>

#include <cstdio>

int main()
{
    using namespace korvex;
    const QString text = Format(1234.5, QStringLiteral("#,##0.00"), RegionalSettings::EnglishUS());
    std::printf("%s %s\n", qPrintable(text), qPrintable(TypeName(CInt(Variant("12")))));
    return 0;
}
