// Fabricated recordsets: defining fields, what each field type accepts and gives back, the
// lifecycle errors, dynamic properties and late binding.
#include "tests/platform/ado/RecordsetBuilder.h"
#include "tests/support/ErrorOf.h"
#include "tests/support/PinnedSettings.h"
#include "tests/support/Printers.h"

#include "korvex/platform/ado/AdoError.h"
#include "korvex/runtime/LateBinding.h"

#include <gtest/gtest.h>

#include <array>
#include <limits>
#include <map>
#include <random>
#include <set>

namespace korvex::ado {
namespace {

using korvex::test::ErrorOf;
using test::MakeRecordset;

TEST(FabricatedRecordset, FieldsConvertWhatTheyAcceptAndRefuseTheRest)
{
    korvex::test::PinnedSettings pinned;
    struct Row {
        int type;
        int size;
        Variant in;
        Variant out;          // what Value gives back when accepted
        int status;           // Field.Status; adFieldOK when accepted
        const char* reason;
    };
    const Row rows[] = {
        {adSmallInt, 0, Variant("12"), Variant(std::int16_t{12}), adFieldOK, "text that reads as a number"},
        {adSmallInt, 0, Variant(40000), {}, adFieldDataOverflow, "beyond 16 bits"},
        {adInteger, 0, Variant(2.5), Variant(2), adFieldOK, "halves round to even"},
        {adInteger, 0, Variant(3.5), Variant(4), adFieldOK, "halves round to even"},
        {adInteger, 0, Variant("abc"), {}, adFieldCantConvertValue, "not a number"},
        {adInteger, 0, Variant(), Variant(0), adFieldOK, "Empty is zero for numbers"},
        {adUnsignedTinyInt, 0, Variant(-1), {}, adFieldSignMismatch, "negative into unsigned"},
        {adTinyInt, 0, Variant(200), {}, adFieldDataOverflow, "signed byte range"},
        {adBigInt, 0, Variant(3e9), Variant(3e9), adFieldOK, "wider than Long comes back as Double"},
        {adDouble, 0, Variant("1.5"), Variant(1.5), adFieldOK, "regional decimal point"},
        {adCurrency, 0, Variant(1.23456), Variant(Currency::FromScaled(12346)), adFieldOK, "four decimals"},
        {adDate, 0, Variant("1/5/2009"), Variant(Date{39818}), adFieldOK, "regional short date"},
        {adDate, 0, Variant(), {}, adFieldCantConvertValue, "a date has no zero to take from Empty"},
        {adBoolean, 0, Variant("True"), Variant(true), adFieldOK, "text True"},
        {adBoolean, 0, Variant(0), Variant(false), adFieldOK, "zero is False"},
        {adVarChar, 5, Variant("abcde"), Variant("abcde"), adFieldOK, "exactly the defined size"},
        {adVarChar, 5, Variant("abcdef"), {}, adFieldCantConvertValue, "longer than the defined size"},
        {adVarWChar, 5, Variant(12345), Variant("12345"), adFieldOK, "numbers become text"},
        {adVarChar, 5, Variant(), Variant(""), adFieldOK, "Empty is the empty text"},
        {adChar, 5, Variant("ab"), Variant("ab   "), adFieldOK, "fixed length reads back padded"},
        {adLongVarWChar, 0, Variant(QString(5000, u'x')), Variant(QString(5000, u'x')), adFieldOK, "long text has no limit"},
    };
    for (const Row& r : rows) {
        SCOPED_TRACE(r.reason);
        auto rs = MakeRecordset({{"F", r.type, r.size}}, {{Variant(Null)}});
        Field* f = rs->Fields()->Item(0);
        const int number = ErrorOf([&] { f->SetValue(r.in); });
        EXPECT_EQ(f->Status(), r.status);
        if (r.status == adFieldOK) {
            EXPECT_EQ(number, 0);
            EXPECT_EQ(f->Value(), r.out);
        } else {
            EXPECT_EQ(number, adErrMultipleStep);
            EXPECT_EQ(f->Value(), Null) << "a refused value leaves the field as it was";
        }
    }
}

TEST(FabricatedRecordset, DefinitionsReportSizesAttributesAndNullRules)
{
    auto rs = MakeRecordset({{"Id", adInteger, 0, 0}, {"Name", adVarWChar, 30}, {"Note", adVarChar, 10, adFldUnspecified}},
                            {{1, "Ann", Null}});
    Fields& fields = *rs->Fields();
    EXPECT_EQ(fields.Count(), 3);
    EXPECT_EQ(fields.Item("id")->Name(), "Id") << "names match ignoring case";
    EXPECT_EQ(fields.Item("Id")->DefinedSize(), 4) << "fixed types report their byte size";
    EXPECT_EQ(fields.Item("Name")->DefinedSize(), 30);
    EXPECT_EQ(fields.Item("Name")->ActualSize(), 6) << "wide text counts two bytes a character";
    EXPECT_TRUE(fields.Item("Id")->Attributes() & adFldUpdatable) << "fabricated fields are updatable";
    EXPECT_FALSE(fields.Item("Id")->Attributes() & adFldIsNullable);
    EXPECT_TRUE(fields.Item("Note")->Attributes() & adFldIsNullable) << "unspecified attributes accept Null";
    EXPECT_EQ(fields.Item("Note")->Value(), Null);

    EXPECT_EQ(ErrorOf([&] { fields.Item("Id")->SetValue(Null); }), adErrMultipleStep);
    EXPECT_EQ(fields.Item("Id")->Status(), adFieldIntegrityViolation);
    EXPECT_EQ(fields.Item("Id")->Value(), Variant(1));
}

TEST(FabricatedRecordset, LifecycleErrorsCarryAdoNumbersAndTexts)
{
    auto rs = std::make_shared<Recordset>();
    EXPECT_EQ(rs->State(), adStateClosed);
    EXPECT_EQ(ErrorOf([&] { rs->Open(); }), adErrInvalidArgument) << "no fields";
    EXPECT_EQ(ErrorOf([&] { rs->Fields()->Append("X", adVarChar, 0); }), adErrInvalidArgument) << "text needs a size";
    EXPECT_EQ(ErrorOf([&] { rs->Fields()->Append("X", adVariant, 0); }), adErrInvalidArgument) << "type not stored";
    rs->Fields()->Append("Code", adVarChar, 10);
    EXPECT_EQ(ErrorOf([&] { rs->Fields()->Append("CODE", adInteger); }), adErrObjectInCollection);
    try {
        (void)rs->RecordCount();
        ADD_FAILURE() << "a closed recordset has no count";
    } catch (const Error& e) {
        EXPECT_EQ(e.Number(), adErrObjectClosed);
        EXPECT_EQ(e.Source(), "ADODB.Recordset");
        EXPECT_EQ(e.Description(), "Operation is not allowed when the object is closed.");
    }
    EXPECT_EQ(ErrorOf([&] { rs->Open(Variant("select * from t")); }), adErrInvalidConnection);

    rs->Open();
    EXPECT_EQ(rs->State(), adStateOpen);
    EXPECT_EQ(rs->LockType(), adLockBatchOptimistic) << "fabricated rows update in batches by default";
    EXPECT_EQ(rs->CursorType(), adOpenStatic);
    EXPECT_EQ(ErrorOf([&] { rs->Open(); }), adErrObjectOpen);
    EXPECT_EQ(ErrorOf([&] { rs->Fields()->Append("More", adInteger); }), adErrIllegalOperation);
    EXPECT_EQ(ErrorOf([&] { rs->SetLockType(adLockOptimistic); }), adErrObjectOpen);
    try {
        (void)rs->Fields()->Item("Nope");
        ADD_FAILURE();
    } catch (const Error& e) {
        EXPECT_EQ(e.Number(), adErrItemNotFound);
        EXPECT_EQ(e.Description(),
                  "Item cannot be found in the collection corresponding to the requested name or ordinal.");
    }
    try {
        (void)rs->Fields()->Item("Code")->Value();
        ADD_FAILURE();
    } catch (const Error& e) {
        EXPECT_EQ(e.Number(), adErrNoCurrentRecord);
        EXPECT_EQ(e.Description(), "Either BOF or EOF is True, or the current record has been deleted. Requested "
                                   "operation requires a current record.");
    }

    rs->AddNew();
    rs->Fields()->Item("Code")->SetValue("A");
    EXPECT_EQ(ErrorOf([&] { rs->Close(); }), adErrIllegalOperation) << "an edit is in progress";
    rs->Update();
    rs->Close();
    EXPECT_EQ(ErrorOf([&] { rs->Close(); }), adErrObjectClosed);
    rs->Open();
    EXPECT_EQ(rs->RecordCount(), 0) << "reopening a fabricated recordset starts empty";
    EXPECT_EQ(rs->Fields()->Item(0)->Name(), "Code") << "and keeps its fields";
}

TEST(FabricatedRecordset, ProvidersLoadRowsThroughTheSameChecks)
{
    RecordsetStore store({MakeFieldDef("Code", adVarChar, 3, 0), MakeFieldDef("Qty", adSmallInt, 0, 0)});
    const Variant good[] = {Variant("abc"), Variant("12")};
    const Variant tooLong[] = {Variant("abcd"), Variant(1)};
    const Variant tooBig[] = {Variant("x"), Variant(70000)};
    const Variant nulls[] = {Null, Null};
    store.AppendRow(good);
    EXPECT_EQ(ErrorOf([&] { store.AppendRow(tooLong); }), adErrMultipleStep);
    EXPECT_EQ(ErrorOf([&] { store.AppendRow(tooBig); }), adErrMultipleStep);
    store.AppendRow(nulls);  // what the data source holds stands, whatever the attributes say
    EXPECT_EQ(store.RowCount(), 2u) << "a refused row adds nothing";
    EXPECT_EQ(store.Value(0, 1), Variant(std::int16_t{12}));
    EXPECT_EQ(store.Value(1, 0), Null);
    EXPECT_EQ(store.Status(0), adRecUnmodified);
}

// Loading stores most values without converting them, and comparing with a stored value makes
// no copy of it: both must agree with the conversion and the copy they stand in for.
TEST(FabricatedRecordset, ValuesTakenAsTheyComeAndComparedInPlaceAgreeWithConversion)
{
    const FieldDef fields[] = {
        MakeFieldDef("Long", adInteger, 0, -1),      MakeFieldDef("Small", adSmallInt, 0, -1),
        MakeFieldDef("Byte", adUnsignedTinyInt, 0, -1), MakeFieldDef("Big", adBigInt, 0, -1),
        MakeFieldDef("Double", adDouble, 0, -1),     MakeFieldDef("Single", adSingle, 0, -1),
        MakeFieldDef("Text", adVarWChar, 5, -1),     MakeFieldDef("Fixed", adChar, 5, -1),
        MakeFieldDef("Memo", adLongVarWChar, 0, -1), MakeFieldDef("Flag", adBoolean, 0, -1),
        MakeFieldDef("Money", adCurrency, 0, -1),    MakeFieldDef("When", adDate, 0, -1),
    };
    const Variant values[] = {Variant(std::int32_t{7}),    Variant(std::int32_t{70000}), Variant(std::int32_t{-1}),
                              Variant(std::int32_t{255}),  Variant(std::int16_t{7}),     Variant(3.5),
                              Variant(7.0),                Variant(std::numeric_limits<double>::infinity()),
                              Variant("abc"),              Variant("abcdef"),            Variant("ab   "),
                              Variant(QString()),          Variant(""),                  Null,
                              Empty,                       Variant(true),                Variant(Date{39818}),
                              Variant(std::numeric_limits<double>::quiet_NaN()), Variant(-0.0), Variant(7.0f),
                              Variant(std::uint8_t{7}),    Variant(Currency::FromScaled(70000))};
    for (const FieldDef& field : fields) {
        for (const Variant& value : values) {
            SCOPED_TRACE(testing::Message() << field.Name.toStdString() << " <- type " << static_cast<int>(value.VarType()));
            const FieldInput converted = ConvertForField(value, field);
            if (StoresAsIs(value, field)) {
                ASSERT_EQ(converted.status, adFieldOK) << "taken as it comes, so it must be acceptable";
                Column asIs(field);
                Column viaConversion(field);
                asIs.Append(value);
                viaConversion.Append(converted.value);
                EXPECT_EQ(asIs.Get(0), viaConversion.Get(0));
            }
            if (converted.status != adFieldOK)
                continue;
            Column column(field);
            column.Append(converted.value);
            for (const Variant& probe : values)
                EXPECT_EQ(column.Holds(0, probe), column.Get(0) == probe);
            if (column.Get(0) == column.Get(0)) {  // NaN is unequal to itself, whatever holds it
                EXPECT_TRUE(column.Holds(0, column.Get(0)));
            }
        }
    }
}

// Rows marked pending, sent and cancelled in any order, again and again: the store lists them
// ascending and once each, as a plain set of them does.
TEST(FabricatedRecordset, PendingRowsStayInOrderWhateverOrderTheyChangeIn)
{
    RecordsetStore store({MakeFieldDef("Qty", adSmallInt, 0, -1)});
    for (int i = 0; i < 100; ++i)
        store.AppendRow(std::array{Variant(std::int16_t{0})});
    std::mt19937 random(26);
    std::set<RowId> model;
    for (int step = 0; step < 3000; ++step) {
        const RowId row = random() % 100;
        const RowId rows[] = {row};
        switch (random() % 4) {
        case 0:
        case 1:
            store.WriteValue(row, 0, Variant(static_cast<std::int16_t>(step % 1000)));
            model.insert(row);
            break;
        case 2:
            store.AcceptChanges(rows, nullptr);
            model.erase(row);
            break;
        default:
            store.CancelChanges(rows, nullptr);
            model.erase(row);
            break;
        }
        if (step % 37 == 0) {
            ASSERT_EQ(store.PendingRows(), std::vector<RowId>(model.begin(), model.end())) << "step " << step;
        }
    }
    EXPECT_EQ(store.PendingRows(), std::vector<RowId>(model.begin(), model.end()));
}

// Rows written, sent and cancelled in any order: each keeps the values it had as read, whatever
// slot they were kept in before, and knows which fields it wrote (those from 63 on share a bit).
TEST(FabricatedRecordset, ValuesAsReadAndWrittenFieldsFollowEveryRowThroughSlotsUsedAgain)
{
    constexpr int Fields = 66;
    std::vector<FieldDef> defs;
    for (int f = 0; f < Fields; ++f)
        defs.push_back(MakeFieldDef(QStringLiteral("F%1").arg(f), adInteger, 0, -1));
    RecordsetStore store(defs);
    std::vector<std::vector<Variant>> current;
    const auto append = [&] {
        std::vector<Variant> values;
        for (int f = 0; f < Fields; ++f)
            values.emplace_back(static_cast<std::int32_t>(current.size() * 100 + f));
        store.AppendRow(values);
        current.push_back(values);
    };
    for (int i = 0; i < 20; ++i)
        append();
    std::map<RowId, std::pair<std::vector<Variant>, std::uint64_t>> model;  // originals, written bits
    const int written[] = {0, 1, 5, 62, 63, 64, 65};
    std::mt19937 random(63);
    for (int step = 0; step < 4000; ++step) {
        if (step % 500 == 499)
            append();  // rows the slot table has not seen yet
        const auto row = static_cast<RowId>(random() % current.size());
        const RowId rows[] = {row};
        switch (random() % 5) {
        case 0:
        case 1:
        case 2: {
            const int field = written[random() % std::size(written)];
            const Variant value(static_cast<std::int32_t>(-step));
            if (!model.contains(row))
                model[row] = {current[row], 0};
            model[row].second |= std::uint64_t{1} << std::min(field, 63);
            store.WriteValue(row, field, value);
            current[row][static_cast<std::size_t>(field)] = value;
            break;
        }
        case 3:
            store.AcceptChanges(rows, nullptr);
            model.erase(row);
            break;
        default:
            store.CancelChanges(rows, nullptr);
            if (auto kept = model.find(row); kept != model.end()) {
                current[row] = kept->second.first;
                model.erase(kept);
            }
            break;
        }
        // The row touched every time; all of them now and then, for a slot shared by mistake.
        const RowId first = step % 97 == 0 ? 0 : row;
        const RowId last = step % 97 == 0 ? static_cast<RowId>(current.size()) : row + 1;
        for (RowId r = first; r < last; ++r) {
            const Variant* originals = store.OriginalValues(r);
            const auto kept = model.find(r);
            ASSERT_EQ(originals != nullptr, kept != model.end()) << "step " << step << " row " << r;
            ASSERT_EQ(store.WrittenFields(r), kept != model.end() ? kept->second.second : 0) << "step " << step;
            for (int f = 0; f < Fields; ++f) {
                ASSERT_EQ(store.Value(r, f), current[r][static_cast<std::size_t>(f)]) << "step " << step;
                if (originals) {
                    ASSERT_EQ(originals[f], kept->second.first[static_cast<std::size_t>(f)]) << "step " << step;
                }
            }
        }
    }

    // Once every row is sent, the values kept for a batch of all of them are given back, and
    // the next edit keeps its row's values afresh.
    std::vector<RowId> all;
    for (RowId r = 0; r < current.size(); ++r) {
        store.WriteValue(r, 0, Variant(std::int32_t{-1}));
        all.push_back(r);
    }
    const std::size_t withBatch = store.BytesAllocated();
    store.AcceptChanges(all, nullptr);
    EXPECT_LE(store.BytesAllocated() + all.size() * Fields * sizeof(Variant), withBatch);
    store.WriteValue(3, 1, Variant(std::int32_t{7}));
    ASSERT_NE(store.OriginalValues(3), nullptr);
    EXPECT_EQ(store.OriginalValues(3)[1], current[3][1]);
    EXPECT_EQ(store.WrittenFields(3), std::uint64_t{2});
}

TEST(FabricatedRecordset, ReadOnlyRecordsetsAndClonesRefuseEdits)
{
    auto rs = MakeRecordset({{"Code", adVarChar, 5}}, {{"a"}});
    auto readOnly = rs->Clone(adLockReadOnly);
    EXPECT_EQ(readOnly->LockType(), adLockReadOnly);
    EXPECT_EQ(ErrorOf([&] { readOnly->AddNew(); }), adErrFeatureNotAvailable);
    EXPECT_EQ(ErrorOf([&] { readOnly->Fields()->Item(0)->SetValue("b"); }), adErrFeatureNotAvailable);
    EXPECT_EQ(ErrorOf([&] { readOnly->Delete(); }), adErrFeatureNotAvailable);
    EXPECT_EQ(ErrorOf([&] { (void)rs->Clone(adLockOptimistic); }), adErrInvalidArgument);
    rs->Fields()->Item(0)->SetValue("b");
    rs->Update();
    EXPECT_EQ(test::Text(*readOnly, "Code"), "b") << "a read-only clone still sees the rows change";

    auto closed = std::make_shared<Recordset>();
    closed->Fields()->Append("X", adInteger);
    closed->Open(Variant(), Variant(), adOpenStatic, adLockReadOnly);
    EXPECT_EQ(ErrorOf([&] { closed->AddNew(); }), adErrFeatureNotAvailable);
}

TEST(FabricatedRecordset, DynamicPropertiesAreSharedWithClonesAndReachableByName)
{
    auto rs = MakeRecordset({{"Code", adVarChar, 5}, {"Name", adVarChar, 20}}, {{"a", "Ann"}});
    Property* unique = rs->Properties()->Item("Unique Table");
    EXPECT_EQ(unique->Value(), Variant("")) << "no base table for fabricated rows";
    unique->SetValue("Customers");
    auto clone = rs->Clone();
    EXPECT_EQ(clone->Properties()->Item("unique table")->Value(), Variant("Customers"));

    Property* optimize = rs->Fields()->Item("Name")->Properties()->Item("Optimize");
    EXPECT_EQ(optimize->Value(), Variant(false));
    optimize->SetValue(true);
    EXPECT_EQ(clone->Fields()->Item("Name")->Properties()->Item("Optimize")->Value(), Variant(true))
        << "the index belongs to the rows, not to one recordset";
    EXPECT_EQ(rs->Fields()->Item("Name")->Properties()->Item("BASETABLENAME")->Value(), Variant(""));
    EXPECT_EQ(ErrorOf([&] { rs->Fields()->Item(0)->Properties()->Item("KEYCOLUMN")->SetValue(true); }),
              adErrFeatureNotAvailable);
    EXPECT_EQ(ErrorOf([&] { (void)rs->Properties()->Item("Nope"); }), adErrItemNotFound);

    // Late binding reaches the same members under ADO's names.
    EXPECT_EQ(GetProperty(rs.get(), "RecordCount"), Variant(1));
    EXPECT_EQ(GetProperty(rs.get(), "EOF"), Variant(false));
    QObject* fields = GetProperty(rs.get(), "Fields").Object();
    QObject* name = CallByName(fields, "Item", VbMethod, Variant("Name")).Object();
    EXPECT_EQ(DefaultValue(name), Variant("Ann")) << "a field's default member is its value";
    CallByName(rs.get(), "MoveNext", VbMethod);
    EXPECT_EQ(GetProperty(rs.get(), "EOF"), Variant(true));
    SetProperty(rs.get(), "Filter", Variant("Code = 'a'"));
    EXPECT_EQ(GetProperty(rs.get(), "Filter"), Variant("Code = 'a'"));
}

}  // namespace
}  // namespace korvex::ado
