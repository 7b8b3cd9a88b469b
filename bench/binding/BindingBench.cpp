// What showing a record costs: moving through 10,000 records of a form with 50 bound controls
// (text boxes, numeric fields and check boxes, every record displayed), beside the same moves
// with the same 50 values written straight into 50 plain widgets of the same kinds (QLineEdit,
// the numeric box, QCheckBox), and beside the moves alone.
#include "bench/support/BenchReport.h"
#include "korvex/controls/input/ZqCheckBox.h"
#include "korvex/controls/input/ZqNumber.h"
#include "korvex/data/DataBindingSource.h"
#include "korvex/platform/ado/Fields.h"
#include "korvex/platform/host/Form.h"
#include "korvex/platform/host/FormFile.h"
#include "korvex/platform/host/TextBox.h"
#include "korvex/platform/numberbox/NumberBox.h"
#include "korvex/runtime/Conversions.h"
#include "korvex/runtime/LateBinding.h"

#include <QApplication>
#include <QCheckBox>
#include <QLineEdit>

#include <memory>

namespace korvex {
namespace {

using namespace ado;

constexpr int RecordCount = 10000;
constexpr int TextFields = 20;
constexpr int NumberFields = 15;
constexpr int CheckFields = 15;

QString FieldName(const char* kind, int i)
{
    return QStringLiteral("%1%2").arg(QLatin1String(kind)).arg(i);
}

std::shared_ptr<Recordset> MakeRecords()
{
    auto rs = std::make_shared<Recordset>();
    for (int i = 0; i < TextFields; ++i)
        rs->Fields()->Append(FieldName("Text", i), adVarWChar, 40, adFldIsNullable);
    for (int i = 0; i < NumberFields; ++i)
        rs->Fields()->Append(FieldName("Number", i), adDouble, 0, adFldIsNullable);
    for (int i = 0; i < CheckFields; ++i)
        rs->Fields()->Append(FieldName("Flag", i), adBoolean, 0, adFldIsNullable);
    rs->Open();
    QList<Variant> names, values;
    for (int f = 0; f < rs->Fields()->Count(); ++f)
        names << Variant(rs->Fields()->Item(f)->Name());
    const Variant fieldNames = Variant::Array(names);
    for (int r = 0; r < RecordCount; ++r) {
        values.clear();
        for (int i = 0; i < TextFields; ++i)
            values << Variant(QStringLiteral("Customer %1 line %2").arg(r).arg(i));
        for (int i = 0; i < NumberFields; ++i)
            values << Variant(r * 1.25 + i);
        for (int i = 0; i < CheckFields; ++i)
            values << Variant((r + i) % 2 == 0);
        rs->AddNew(fieldNames, Variant::Array(values));
    }
    rs->UpdateBatch();
    rs->MoveFirst();
    return rs;
}

// The records are made once; each benchmark walks a clone of its own, with its own cursor.
std::shared_ptr<Recordset> Records()
{
    static const std::shared_ptr<Recordset> records = MakeRecords();
    auto clone = records->Clone();
    clone->MoveFirst();
    return clone;
}

template <class T>
void AddBound(Form& form, const QString& field)
{
    auto* c = new T(form.Client());
    c->SetName(QStringLiteral("ctl") + field);
    SetProperty(c, QStringLiteral("DataField"), field);
}

// One iteration is one move to the next record; the walk starts again at the end, so a run
// goes through all 10,000 records as often as it needs.
void MoveOn(Recordset& rs)
{
    rs.MoveNext();
    if (rs.IsEOF())
        rs.MoveFirst();
}

void BM_RecordsetMovesAlone(benchmark::State& state)
{
    auto rs = Records();
    for (auto _ : state)
        MoveOn(*rs);
}
BENCHMARK(BM_RecordsetMovesAlone)->Unit(benchmark::kMicrosecond);

// The reference: each move, every field's value read and set by hand into a plain widget of
// the kind a bound control holds.
void BM_MovesWritingFiftyPlainWidgets(benchmark::State& state)
{
    QWidget form;
    std::vector<QLineEdit*> texts;
    std::vector<NumberBox*> numbers;
    std::vector<QCheckBox*> checks;
    for (int i = 0; i < TextFields; ++i)
        texts.push_back(new QLineEdit(&form));
    for (int i = 0; i < NumberFields; ++i)
        numbers.push_back(new NumberBox(&form));
    for (int i = 0; i < CheckFields; ++i)
        checks.push_back(new QCheckBox(&form));
    auto rs = Records();
    Fields& fields = *rs->Fields();
    for (auto _ : state) {
        MoveOn(*rs);
        int f = 0;
        for (QLineEdit* text : texts)
            text->setText(CStr(fields.Item(f++)->Value()));
        for (NumberBox* number : numbers)
            number->SetValue(fields.Item(f++)->Value());
        for (QCheckBox* check : checks)
            check->setCheckState(CBool(fields.Item(f++)->Value()) ? Qt::Checked : Qt::Unchecked);
    }
}
BENCHMARK(BM_MovesWritingFiftyPlainWidgets)->Unit(benchmark::kMicrosecond);

void BM_MovesShowingFiftyBoundControls(benchmark::State& state)
{
    Form form;
    for (int i = 0; i < TextFields; ++i)
        AddBound<TextBox>(form, FieldName("Text", i));
    for (int i = 0; i < NumberFields; ++i)
        AddBound<ZqNumber>(form, FieldName("Number", i));
    for (int i = 0; i < CheckFields; ++i)
        AddBound<ZqCheckBox>(form, FieldName("Flag", i));
    auto* source = static_cast<DataBindingSource*>(
        FormFile::AddNewControl(form, QStringLiteral("DataBindingSource"), QStringLiteral("dbsBench")));
    auto rs = Records();
    source->SetRecordset(rs);
    if (source->BoundControls().size() != TextFields + NumberFields + CheckFields) {
        state.SkipWithError("the controls were not bound");
        return;
    }
    for (auto _ : state)
        MoveOn(*rs);
}
BENCHMARK(BM_MovesShowingFiftyBoundControls)->Unit(benchmark::kMicrosecond);

}  // namespace
}  // namespace korvex

int main(int argc, char** argv)
{
    QApplication app(argc, argv);
    using namespace korvex::bench;
    // Showing a record through the binding may cost at most twice the same values set by hand,
    // and under a millisecond.
    CompareTime("binding_display_vs_plain_widgets", "BM_MovesShowingFiftyBoundControls",
                "BM_MovesWritingFiftyPlainWidgets", 2.0);
    CompareTimeAbsolute("binding_display_per_record", "BM_MovesShowingFiftyBoundControls", "BM_RecordsetMovesAlone",
                        1000.0, "us");
    return Main(argc, argv);
}
