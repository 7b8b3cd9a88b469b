// Text to number and text to date, as CDbl, CCur, CInt, CLng, CDate, Val, IsNumeric and IsDate
// read it: any text may be refused with the library's errors, nothing else may happen.
#include "fuzz/FuzzInput.h"
#include "korvex/runtime/Conversions.h"
#include "korvex/runtime/Error.h"

#include <cmath>
#include <cstdlib>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    using namespace korvex;
    const auto input = fuzz::SplitInput(data, size);
    const Variant text(input.first);
    auto attempt = [](auto&& convert) {
        try {
            convert();
        } catch (const Error& e) {
            // Only the conversion errors a user can provoke may come out.
            if (e.Number() != vbErrTypeMismatch && e.Number() != vbErrOverflow)
                std::abort();
        }
    };
    attempt([&] { (void)CDbl(text); });
    attempt([&] { (void)CCur(text); });
    attempt([&] { (void)CInt(text); });
    attempt([&] { (void)CLng(text); });
    attempt([&] { (void)CBool(text); });
    attempt([&] { (void)Val(input.first); });
    attempt([&] {
        const Date d = CDate(text);
        // A date that was accepted must be inside the date range and print back.
        if (!IsValidDateSerial(d.serial))
            std::abort();
        (void)CStr(Variant(d));
    });
    const bool numeric = IsNumeric(text);
    attempt([&] {
        const double d = CDbl(text);
        if (!numeric && std::isfinite(d))
            std::abort();  // IsNumeric and CDbl must agree
    });
    (void)IsDate(text);
    return 0;
}
