// Text a user types into a combo's filter box: whatever it is, the filter made from it must be
// taken by the recordset (typing may never raise), and must select the same rows whether the
// field indexes or a scan answer.
#include "fuzz/FuzzInput.h"
#include "korvex/controls/lists/ZqDropdown.h"
#include "korvex/platform/ado/Recordset.h"

#include <cstdlib>
#include <memory>

namespace {

using namespace korvex;
using namespace korvex::ado;

std::shared_ptr<Recordset> MakeItems(bool optimize)
{
    auto rs = std::make_shared<Recordset>();
    rs->Fields()->Append("Code", adVarChar, 10, adFldIsNullable);
    rs->Fields()->Append("Name", adVarWChar, 30, adFldIsNullable);
    rs->Fields()->Append("Qty", adInteger, 0, adFldIsNullable);
    rs->Open();
    const char* names[] = {"Müller", "mueller", "O'Brien", nullptr, "100% cotton", "", "a*b", "Zoë", "[x]"};
    for (int i = 0; i < 36; ++i) {
        const char* name = names[i % 9];
        rs->AddNew();
        rs->Fields()->Item(0)->SetValue(Variant(QStringLiteral("K%1").arg(i)));
        rs->Fields()->Item(1)->SetValue(name ? Variant(QString::fromUtf8(name)) : Null);
        rs->Fields()->Item(2)->SetValue(i % 4 ? Variant(i) : Null);
        rs->Update();
    }
    rs->UpdateBatch();
    for (const char* field : {"Code", "Name"})
        rs->Fields()->Item(field)->Properties()->Item("Optimize")->SetValue(optimize);
    return rs;
}

void Require(bool condition)
{
    if (!condition)
        std::abort();
}

// Stands in for a character translation: folds the umlauts the way a database code page would.
QString Translate(const QString& text)
{
    QString out = text;
    out.replace(QStringLiteral("ü"), QStringLiteral("ue")).replace(QStringLiteral("ë"), QStringLiteral("e"));
    return out;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    static const std::shared_ptr<Recordset> indexed = MakeItems(true);
    static const std::shared_ptr<Recordset> scanned = MakeItems(false);
    const auto input = fuzz::SplitInput(data, size);
    if (input.first.isEmpty())
        return 0;
    const int mode = size > 0 && (data[0] & 2) ? ddfmEndsWith : ddfmStartsWith;
    // The list's own filter is the programmer's, so a fixed one; the typed text is the user's.
    const QString base = size > 0 && (data[0] & 4) ? QStringLiteral("Qty > 3") : QString();
    const auto made = ZqDropdown::TypedFilter(input.first, mode, {QStringLiteral("Code"), QStringLiteral("Name")}, base, Translate);
    if (!made)
        return 0;
    int counts[2] = {};
    int i = 0;
    for (Recordset* rs : {indexed.get(), scanned.get()}) {
        try {
            rs->SetFilter(Variant(*made));
        } catch (...) {
            std::abort();  // typing must never make the filter raise
        }
        counts[i++] = rs->RecordCount();
    }
    Require(counts[0] == counts[1]);
    if (counts[0] > 0) {
        indexed->MoveFirst();
        scanned->MoveFirst();
        for (; !indexed->IsEOF(); indexed->MoveNext(), scanned->MoveNext())
            Require(indexed->Fields()->Item(0)->Value() == scanned->Fields()->Item(0)->Value());
    }
    return 0;
}
