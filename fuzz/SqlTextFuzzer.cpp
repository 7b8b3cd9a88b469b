// Connection strings and the SELECT statements recordsets are opened from, as users write them.
// A connection string is refused only with the invalid-argument error (3001); one accepted reads
// the same when written out again, and any value set into it reads back unchanged. The SELECT
// reader must never fail and must say only what the text holds.
#include "fuzz/FuzzInput.h"
#include "korvex/platform/ado/AdoError.h"
#include "korvex/platform/adosql/ConnectionString.h"
#include "korvex/platform/adosql/SelectParser.h"
#include "korvex/runtime/Error.h"

#include <cstdlib>

namespace {

using namespace korvex;
using namespace korvex::ado;

void Require(bool condition)
{
    if (!condition)
        std::abort();
}

bool SamePairs(const ConnectionString& a, const ConnectionString& b)
{
    if (a.Pairs().size() != b.Pairs().size())
        return false;
    for (std::size_t i = 0; i < a.Pairs().size(); ++i) {
        if (a.Pairs()[i].key != b.Pairs()[i].key || a.Pairs()[i].value != b.Pairs()[i].value)
            return false;
    }
    return true;
}

void CheckConnectionString(const QString& text, const QString& value)
{
    ConnectionString parsed;
    try {
        parsed = ConnectionString::Parse(text);
    } catch (const Error& e) {
        Require(e.Number() == adErrInvalidArgument);
        return;
    }
    Require(SamePairs(parsed, ConnectionString::Parse(parsed.TextWithout({}))));
    parsed.Set(QStringLiteral("Password"), value);
    const ConnectionString again = ConnectionString::Parse(parsed.TextWithout({}));
    Require(again.Value({QStringLiteral("Password")}) == value);
}

void CheckSelect(const QString& sql)
{
    const SelectStatement select = ParseSelect(sql);
    if (select.singleTable) {
        Require(select.isSelect);
        Require(!select.table.isEmpty());
    }
    if (select.isSelect) {
        Require(select.listStart >= 0 && select.listStart <= sql.size());
        Require(!select.items.empty());
    }
    if (select.rowPerTableRow)
        Require(select.singleTable);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    const auto input = fuzz::SplitInput(data, size);
    CheckConnectionString(input.first, input.second);
    CheckSelect(input.first);
    CheckSelect(input.second);
    return 0;
}
