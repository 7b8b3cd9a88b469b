// Format with arbitrary patterns over a spread of values: any pattern may give any text, but
// nothing may crash, hang or read out of bounds, and only the library's own errors may escape.
#include "fuzz/FuzzInput.h"
#include "korvex/runtime/Conversions.h"
#include "korvex/runtime/Error.h"
#include "korvex/runtime/Format.h"

#include <limits>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    using namespace korvex;
    const auto input = fuzz::SplitInput(data, size);
    const Variant values[] = {
        Variant(),
        Variant::Null(),
        Variant(0),
        Variant(-1234.5678),
        Variant(0.000125),
        Variant(1e300),
        Variant(-std::numeric_limits<double>::infinity()),
        Variant(std::numeric_limits<double>::quiet_NaN()),
        Variant(Currency::FromScaled(std::numeric_limits<std::int64_t>::min())),
        Variant(Date{-657434.75}),
        Variant(Date{2958465.999}),
        Variant(true),
        Variant(input.second),
    };
    for (const Variant& value : values) {
        try {
            (void)Format(value, input.first);
        } catch (const Error&) {
        }
    }
    try {
        (void)FormatNumber(Variant(input.second), static_cast<int>(size % 300) - 2);
    } catch (const Error&) {
    }
    return 0;
}
