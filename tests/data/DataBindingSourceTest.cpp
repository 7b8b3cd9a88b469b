// DataBindingSource over an in-memory recordset: which controls it binds, what each kind shows
// and gives back, the edit states, required fields, stamps, Cancel after Add, and the change
// tests. The database side (conflicts between users) is tested in DataBindingDatabaseTest.
#include "korvex/core/SharedContext.h"
#include "korvex/core/clsZqUser.h"
#include "korvex/data/DataBindingSource.h"
#include "korvex/platform/host/PropertyBag.h"
#include "korvex/platform/host/App.h"
#include "korvex/controls/input/ZqNumber.h"
#include "korvex/controls/lists/ZqDropdown.h"
#include "korvex/platform/adosql/Connection.h"
#include "korvex/localisation/clsCharTranslation.h"
#include "korvex/data/clsDatabase.h"
#include "korvex/platform/host/CheckBox.h"
#include "korvex/platform/host/Form.h"
#include "korvex/platform/host/FormFile.h"
#include "korvex/platform/host/Label.h"
#include "korvex/platform/host/TextBox.h"
#include "korvex/platform/desktop/MessageBoxService.h"
#include "korvex/runtime/Conversions.h"
#include "korvex/runtime/LateBinding.h"
#include "tests/support/BindableFakes.h"
#include "tests/support/ErrorOf.h"
#include "tests/support/RaisedError.h"
#include "tests/support/PinnedSettings.h"
#include "tests/support/Printers.h"
#include "tests/platform/adosql/TestServers.h"

#include <QApplication>
#include <QLineEdit>

#include <algorithm>
#include <cmath>
#include <functional>
#include <QSignalSpy>
#include <QTest>

#include <gtest/gtest.h>

namespace korvex {
namespace {

using namespace ado;

// A text box of the host's own, derived from the standard one: bound by kind, unknown by name.
class UpperTextBox : public TextBox {
    Q_OBJECT
public:
    using TextBox::TextBox;
};

class ActiveCheckBox : public CheckBox {
    Q_OBJECT
public:
    using CheckBox::CheckBox;
};

class Clerk : public clsZqUser {
public:
    using clsZqUser::clsZqUser;
    Variant UserId() const override { return Variant("clerk7"); }
};

std::shared_ptr<Recordset> Customers()
{
    auto rs = std::make_shared<Recordset>();
    Fields* f = rs->Fields();
    f->Append(QStringLiteral("CustomerId"), adInteger, 0, 0);
    f->Append(QStringLiteral("Name"), adVarWChar, 30, 0);  // NOT NULL
    f->Append(QStringLiteral("City"), adVarWChar, 20, adFldIsNullable);
    f->Append(QStringLiteral("Active"), adBoolean, 0, adFldIsNullable);
    f->Append(QStringLiteral("Visits"), adInteger, 0, adFldIsNullable);
    f->Append(QStringLiteral("Joined"), adDate, 0, 0);  // NOT NULL
    f->Append(QStringLiteral("UpdatedBy"), adVarWChar, 20, adFldIsNullable);
    f->Append(QStringLiteral("UpdatedAt"), adDate, 0, adFldIsNullable);
    f->Append(QStringLiteral("Region"), adVarWChar, 20, adFldIsNullable);
    f->Append(QStringLiteral("Contact"), adVarWChar, 20, adFldIsNullable);
    rs->Open();
    rs->Properties()->Item(QStringLiteral("Unique Table"))->SetValue(QStringLiteral("customers"));
    const Variant names = Variant::Array({"CustomerId", "Name", "City", "Active", "Visits", "Joined", "Region", "Contact"});
    rs->AddNew(names, Variant::Array({1, "Ada   ", "London", true, 1, Date{40000}, "South", "Ada   "}));
    rs->AddNew(names, Variant::Array({2, "Brian", Null, Null, Null, Date{40100}, Null, Null}));
    rs->AddNew(names, Variant::Array({3, "Chloe", "Paris", false, 0, Date{40200}, "North", "Chloe"}));
    rs->UpdateBatch();
    rs->MoveFirst();
    return rs;
}

struct BindingTest : ::testing::Test {
    template <class T>
    T* Add(const char* name, const char* dataField)
    {
        auto* c = new T(form.Client());
        c->SetName(QString::fromLatin1(name));
        SetProperty(c, QStringLiteral("DataField"), QString::fromLatin1(dataField));
        return c;
    }
    DataBindingSource* Source(const char* name = "dbsCustomer")
    {
        auto* s = static_cast<DataBindingSource*>(FormFile::AddNewControl(form, QStringLiteral("DataBindingSource"), QString::fromLatin1(name)));
        return s;
    }
    QString TextOf(QObject* c) { return CStr(GetProperty(c, QStringLiteral("Text"))); }

    test::PinnedSettings pin;
    ScopedMessageBoxRecorder boxes;
    Form form;
};

TEST_F(BindingTest, DiscoveryNormalisesDataFieldsAndTheFirstControlOfAFieldWins)
{
    auto* name = Add<TextBox>("txtName", "customers.Name");
    auto* again = Add<TextBox>("txtNameAgain", "Name");
    auto* city = Add<TextBox>("txtCity", "Upper(City) as City");
    auto* active = Add<CheckBox>("chkActive", "ACTIVE");
    auto* unbound = Add<TextBox>("txtNote", "");
    DataBindingSource* source = Source();
    source->SetRecordset(Customers());
    EXPECT_EQ(source->BoundControls(), (QList<QObject*>{name, again, city, active}));
    EXPECT_EQ(name->Text(), "Ada") << "the table prefix goes; trailing blanks too";
    EXPECT_EQ(again->Text(), "") << "a second control of the same field is never written";
    EXPECT_EQ(city->Text(), "London") << "only the name after \" as \" counts";
    EXPECT_EQ(active->Value(), 1);
    EXPECT_EQ(unbound->Text(), "");
    EXPECT_FALSE(source->isVisible()) << "invisible at run time";
}

TEST_F(BindingTest, SeveralSourcesNeedTheirPrefix)
{
    auto* a = Add<TextBox>("txtA", "dbsCustomer.Name");
    auto* b = Add<TextBox>("txtB", "dbsOther.Name");
    DataBindingSource* customer = Source("dbsCustomer");
    Source("dbsOther");
    customer->SetRecordset(Customers());
    EXPECT_EQ(a->Text(), "Ada");
    EXPECT_EQ(b->Text(), "") << "bound to the other source";

    Add<TextBox>("txtLoose", "Name");
    DataBindingSource* third = Source("dbsThird");
    try {
        third->SetRecordset(Customers());
        ADD_FAILURE() << "an ambiguous DataField was accepted";
    } catch (const Error& e) {
        EXPECT_EQ(e.Number(), ObjectErrorBase);
        EXPECT_TRUE(e.Source().endsWith(QStringLiteral(".dbsThird.EnumerateBoundControls"))) << e.what();
        EXPECT_EQ(e.Description(), "Control \"txtLoose\" has a DataField specified but does not specify which "
                                   "DataBindingSource to use.");
    }
}

TEST_F(BindingTest, EachKindShowsTheRecordAndMovingOffClearsIt)
{
    auto* name = Add<TextBox>("txtName", "Name");
    auto* city = Add<TextBox>("txtCity", "City");
    city->SetMaxLength(10);
    auto* active = Add<CheckBox>("chkActive", "Active");
    auto* visits = Add<CheckBox>("chkVisits", "Visits");
    auto* joined = Add<test::FakeDate>("dtpJoined", "Joined");
    joined->maxDate = Date{39990};
    auto* code = Add<test::FakeProdCode>("txtCode", "CustomerId");
    auto* combo = Add<test::FakeCombo>("cboRegion", "Region");
    auto* dropdown = Add<ZqDropdown>("ddContact", "Contact");
    dropdown->SetRowSource(Variant(QStringLiteral("Ada   ;Chloe")));
    DataBindingSource* source = Source();
    QSignalSpy moves(source, &DataBindingSource::RecordMove);
    QObject::connect(source, &DataBindingSource::DataReadFromSource, [](const QString& field, Variant& value, int) {
        if (field == QLatin1String("Visits") && !value.IsNull())
            value = CLng(value) + 1;  // the handler's value is the one shown
    });
    auto rs = Customers();
    source->SetRecordset(rs);
    EXPECT_EQ(name->MaxLength(), 30) << "a text box without a limit takes the field's size";
    EXPECT_EQ(city->MaxLength(), 10) << "one with a limit keeps it";
    EXPECT_EQ(visits->Value(), 2) << "a number field shows its value in a check box";
    EXPECT_EQ(code->text, "1");
    EXPECT_EQ(combo->boundText, Variant("South"));
    EXPECT_EQ(dropdown->BoundValue(), Variant("Ada   ")) << "the row of the field's value as it is, blanks and all";
    EXPECT_EQ(dropdown->ListIndex(), 0);
    ASSERT_EQ(boxes.shown().size(), 1) << "a date beyond the control's maximum is adjusted and the user told";
    EXPECT_EQ(boxes.shown()[0].prompt, "The field \"Joined\" contained an invalid value of \"7/6/2009\".\r\n\r\nIt has "
                                       "been changed to \"6/26/2009\".");
    EXPECT_EQ(boxes.shown()[0].buttons, vbInformation);
    EXPECT_EQ(joined->value, Variant(Date{39990}));

    rs->MoveNext();
    EXPECT_EQ(city->Text(), "") << "Null shows as an empty text";
    EXPECT_EQ(active->Value(), 0) << "a Null Boolean shows unchecked";
    EXPECT_EQ(visits->Value(), 0);
    EXPECT_EQ(boxes.shown().size(), 2) << "once per display";
    rs->MoveLast();
    rs->MoveNext();
    EXPECT_TRUE(rs->IsEOF());
    EXPECT_EQ(name->Text(), "");
    EXPECT_TRUE(joined->value.IsNull());
    EXPECT_TRUE(dropdown->BoundValue().IsNull());
    EXPECT_EQ(dropdown->ListIndex(), -1) << "cleared: nothing selected";
    EXPECT_EQ(combo->boundText, Variant(""));
    ASSERT_GE(moves.count(), 3);
    EXPECT_FALSE(moves.last()[0].toBool()) << "RecordMove says the record is not valid";
    EXPECT_TRUE(moves[moves.count() - 2][0].toBool());
}

TEST_F(BindingTest, DerivedStandardBoxesAreTheirKindAndInvalidFieldsAreReported)
{
    auto* upper = Add<UpperTextBox>("txtUpper", "Name");
    auto* active = Add<ActiveCheckBox>("chkActive", "Active");
    Add<TextBox>("txtNope", "Nope");
    DataBindingSource* source = Source();
    auto rs = Customers();
    source->SetRecordset(rs);
    QStringList prompts;
    for (const auto& shown : boxes.shown())
        prompts << shown.prompt;
    EXPECT_EQ(prompts, (QStringList{"Control 'txtNope' is bound to invalid field 'Nope'!"}));
    EXPECT_EQ(upper->Text(), "Ada") << "a derived text box shows its field like the standard one";
    EXPECT_EQ(upper->MaxLength(), 30);
    EXPECT_EQ(active->Value(), 1);
    rs->MoveNext();
    EXPECT_EQ(boxes.shown().size(), 1) << "the invalid field is told once";
    EXPECT_EQ(upper->Text(), "Brian");

    source->Edit();
    upper->SetText(QStringLiteral("Bryony"));
    active->SetValue(1);
    ASSERT_TRUE(source->Save());
    EXPECT_EQ(rs->Fields()->Item(QStringLiteral("Name"))->Value(), Variant("Bryony")) << "read back as a text box";
    EXPECT_EQ(rs->Fields()->Item(QStringLiteral("Active"))->Value(), Variant(true));
    EXPECT_TRUE(source->BoundControlEditable(0, 1));
    upper->SetLocked(true);
    EXPECT_FALSE(source->BoundControlEditable(0, 1)) << "judged editable as a text box: Locked counts";
    EXPECT_TRUE(source->BoundControlEditable(0, 2));
}

TEST_F(BindingTest, ClosedEmptyAndRefusedValuesChangeNothing)
{
    auto* name = Add<TextBox>("txtName", "Name");
    auto* visits = Add<CheckBox>("chkVisits", "Visits");
    DataBindingSource* source = Source();

    // Closed when assigned: nothing found, nothing shown; the first valid display finds them.
    auto closed = std::make_shared<Recordset>();
    closed->Fields()->Append(QStringLiteral("Name"), adVarWChar, 30, adFldIsNullable);
    closed->Fields()->Append(QStringLiteral("Visits"), adInteger, 0, adFldIsNullable);
    source->SetRecordset(closed);
    EXPECT_TRUE(source->BoundControls().isEmpty());
    closed->Open();
    closed->AddNew(Variant::Array({"Name", "Visits"}), Variant::Array({"Dora", 1}));
    closed->MoveFirst();
    EXPECT_EQ(source->BoundControls().size(), 2);
    EXPECT_EQ(name->Text(), "Dora");

    // Empty: nothing to show and nothing to save.
    closed->Delete(adAffectCurrent);
    closed->UpdateBatch();
    closed->MoveFirst();
    EXPECT_TRUE(closed->IsEOF());
    EXPECT_EQ(name->Text(), "");
    const auto notValid = test::RaisedError([&] { source->Save(); });
    ASSERT_TRUE(notValid.has_value());
    EXPECT_EQ(notValid->Description(), "The data cannot be saved because the current record is not valid.");
    EXPECT_EQ(notValid->Number(), ObjectErrorBase);

    // A value the check box refuses: the control's error reaches the caller, and neither the
    // record nor the box changes.
    auto rs = Customers();
    source->SetRecordset(rs);
    ASSERT_EQ(visits->Value(), 1);
    rs->Fields()->Item(Variant("Visits"))->SetValue(Variant(7));
    EXPECT_EQ(test::ErrorOf([&] { source->DisplayRecord(); }), vbErrInvalidPropertyValue);
    EXPECT_EQ(visits->Value(), 1);
    EXPECT_EQ(CLng(rs->Fields()->Item(Variant("Visits"))->Value()), 7);
}

TEST_F(BindingTest, OracleTextsAreTranslatedBothWaysAndNumbersNever)
{
    auto* city = Add<TextBox>("txtCity", "City");
    auto* visits = Add<CheckBox>("chkVisits", "Visits");
    DataBindingSource* source = Source();
    auto oracle = std::make_shared<Connection>();
    oracle->SetProvider(QStringLiteral("MSDAORA.1"));  // the server kind is read from the provider
    auto database = clsDatabase::Create();
    database->SetGcn(oracle);
    auto translation = clsCharTranslation::Create();
    const QString stored = QStringLiteral("Z\u00FCrich \u00E9t\u00E9");
    const QString shown = CStr(translation->CharTranslateVar(Variant(stored), false));
    ASSERT_NE(shown, stored) << "the reading table must change these letters for the test to mean anything";

    auto rs = Customers();
    rs->Fields()->Item(Variant("City"))->SetValue(Variant(stored));
    rs->UpdateBatch();
    source->SetRecordset(rs);
    EXPECT_EQ(city->Text(), shown);
    EXPECT_EQ(visits->Value(), 1) << "numbers are not translated";

    source->Edit();
    city->SetText(QStringLiteral("K\u00F6ln"));
    ASSERT_TRUE(source->Save());
    EXPECT_EQ(CStr(rs->Fields()->Item(Variant("City"))->Value()),
              CStr(translation->CharTranslateVar(Variant(QStringLiteral("K\u00F6ln")), true)));
    database->SetGcn(nullptr);
}

TEST_F(BindingTest, TheThreeSwitchesPersistOnlyWhenOff)
{
    DataBindingSource* source = Source();
    EXPECT_TRUE(source->AutoSaveBatch() && source->AutoSetUpdated() && source->AutoOverwriteChanges());
    source->SetAutoOverwriteChanges(false);
    PropertyBag bag;
    source->WriteProperties(bag);
    EXPECT_EQ(bag.ReadProperty(QStringLiteral("AutoOverwriteChanges"), true), Variant(false));
    EXPECT_FALSE(bag.Contains(QStringLiteral("AutoSaveBatch"))) << "a value at its default is not stored";
    DataBindingSource* again = Source("dbsAgain");
    again->ReadProperties(bag);
    EXPECT_FALSE(again->AutoOverwriteChanges());
    EXPECT_TRUE(again->AutoSaveBatch());
}

TEST_F(BindingTest, NumbersBelowTheMinimumAreRaisedToItAndTheUserTold)
{
    auto* visits = Add<ZqNumber>("zqnVisits", "Visits");
    visits->SetMinValue(Variant(Currency::FromDouble(1500.5)));
    visits->SetMaxValue(Variant(Currency::FromDouble(100000)));
    DataBindingSource* source = Source();
    QSignalSpy moves(source, &DataBindingSource::RecordMove);
    source->SetRecordset(Customers());
    ASSERT_EQ(boxes.shown().size(), 1);
    EXPECT_EQ(boxes.shown()[0].prompt, "The field \"Visits\" contained an invalid value of \"1.00\".\r\n\r\nIt has been "
                                       "changed to \"1,500.50\".");
    EXPECT_EQ(CDbl(visits->Value()), 1500.5);
    source->Recordset()->MoveNext();
    EXPECT_EQ(moves.count(), 1) << "every move is reported";
}

TEST_F(BindingTest, EditStatesAndSaveWithStamps)
{
    auto* name = Add<TextBox>("txtName", "Name");
    auto* city = Add<TextBox>("txtCity", "City");
    auto* stampedBy = Add<TextBox>("txtBy", "UpdatedBy");
    DataBindingSource* source = Source();
    auto rs = Customers();
    source->SetRecordset(rs);
    Clerk clerk;
    SharedContext::ForThisThread().User = &clerk;
    QSignalSpy starts(source, &DataBindingSource::RecordEditStart);

    source->Edit();
    EXPECT_EQ(source->EditMode(), ZqDataEditing);
    for (const auto& refused : {test::RaisedError([&] { source->Add(); }), test::RaisedError([&] { source->Edit(); })}) {
        ASSERT_TRUE(refused.has_value());
        EXPECT_EQ(refused->Number(), ObjectErrorBase);
        EXPECT_EQ(refused->Source(), QStringLiteral("%1.dbsCustomer.Add").arg(App::Instance()->Title()));
        EXPECT_EQ(refused->Description(), "Save or Cancel the current changes first.");
    }
    EXPECT_EQ(source->EditMode(), ZqDataEditing) << "a refused Add leaves the edit as it was";
    ASSERT_EQ(starts.count(), 1);

    form.show();
    name->SetFocus();
    name->LineEdit()->selectAll();
    QTest::keyClicks(name->LineEdit(), QStringLiteral("Adele"));  // still focused when Save runs
    city->SetText(QString());
    EXPECT_TRUE(source->Save());
    EXPECT_EQ(source->EditMode(), ZqDataViewOnly);
    EXPECT_EQ(rs->Fields()->Item(QStringLiteral("Name"))->Value(), Variant("Adele")) << "the last keystrokes are saved";
    EXPECT_TRUE(rs->Fields()->Item(QStringLiteral("City"))->Value().IsNull()) << "an emptied nullable text is Null";
    EXPECT_EQ(rs->Fields()->Item(QStringLiteral("UpdatedBy"))->Value(), Variant("clerk7")) << "the user's UserId";
    EXPECT_EQ(stampedBy->Text(), "clerk7") << "the record is shown again after the batch";
    SharedContext::ForThisThread().User = nullptr;
}

// What the binding cannot do because of how the program set it up is said once per case on
// korvex.binding, not left to be guessed from a form that stays empty.
TEST_F(BindingTest, ProgrammersMistakesAreTold)
{
    static QStringList told;
    told.clear();
    const QtMessageHandler previous = qInstallMessageHandler([](QtMsgType type, const QMessageLogContext& context, const QString& text) {
        if (type == QtWarningMsg && QLatin1String(context.category) == QLatin1String("korvex.binding"))
            told << text;
    });
    Add<Label>("lblName", "Name");
    auto* city = Add<TextBox>("txtCity", "City");
    DataBindingSource* source = Source();
    source->SetRecordset(Customers());
    DataBindingSource loose;
    loose.SetName(QStringLiteral("dbsLoose"));
    loose.SetRecordset(Customers());
    SharedContext::ForThisThread().User = nullptr;
    source->Edit();
    city->SetText(QStringLiteral("Leeds"));
    EXPECT_TRUE(source->Save());
    qInstallMessageHandler(previous);

    const auto toldOf = [&](const char* what) {
        return std::count_if(told.cbegin(), told.cend(), [&](const QString& t) { return t.contains(QLatin1String(what)); });
    };
    EXPECT_EQ(toldOf("lblName of type Label has a DataField"), 1) << told.join('\n').toStdString();
    EXPECT_EQ(toldOf("dbsLoose : binds nothing, for it is not on a form"), 1);
    EXPECT_EQ(toldOf("stamp field UpdatedBy is not set: no user"), 1);
    EXPECT_EQ(toldOf("stamp field UpdatedAt is not set: no connection"), 1);
}

TEST_F(BindingTest, RequiredFieldsCancelledSavesAndFailedWritesKeepTheEdit)
{
    auto* joined = Add<test::FakeDate>("dtpJoined", "Joined");
    auto* name = Add<TextBox>("txtName", "Name");
    DataBindingSource* source = Source();
    auto rs = Customers();
    source->SetRecordset(rs);

    source->Edit();
    joined->value = Null;
    name->SetText(QStringLiteral("Changed"));
    try {
        source->Save();
        ADD_FAILURE() << "an empty required field was saved";
    } catch (const Error& e) {
        EXPECT_EQ(e.Description(), "Database field \"Joined\" is required.");
        EXPECT_TRUE(e.Source().endsWith(QStringLiteral(".PopulateRSFromControls")));
    }
    EXPECT_EQ(rs->Fields()->Item(QStringLiteral("Name"))->Value(), Variant("Ada   ")) << "nothing written";
    EXPECT_EQ(name->Text(), "Changed") << "the typed value stays in its control";
    EXPECT_EQ(source->EditMode(), ZqDataEditing);

    source->SetAutoSetUpdated(false);
    try {
        source->Save();
        ADD_FAILURE() << "the recordset took Null into a NOT NULL field";
    } catch (const Error& e) {
        EXPECT_TRUE(e.Description().startsWith(QStringLiteral("Unable to set database field \"Joined\" to a new value: ")))
            << "without the check, the data layer decides";
    }
    EXPECT_EQ(rs->EditMode(), adEditNone) << "the edit this save opened is dropped";

    joined->value = Date{40000};
    bool veto = true;
    QObject::connect(source, &DataBindingSource::DataSaveToSource, [&](const QString& field, Variant&, bool& cancel) {
        cancel = veto && field == QLatin1String("Name");
    });
    EXPECT_FALSE(source->Save());
    EXPECT_EQ(rs->Fields()->Item(QStringLiteral("Name"))->Value(), Variant("Ada   "));
    veto = false;
    EXPECT_TRUE(source->Save());
    EXPECT_EQ(rs->Fields()->Item(QStringLiteral("Name"))->Value(), Variant("Changed"));
}

TEST_F(BindingTest, CancelWithoutAutoSaveBatchShowsTheRecordAgainAndSavesNothing)
{
    auto* name = Add<TextBox>("txtName", "Name");
    DataBindingSource* source = Source();
    source->SetAutoSaveBatch(false);
    auto rs = Customers();
    source->SetRecordset(rs);

    source->Edit();
    name->SetText(QStringLiteral("Typed"));
    source->Cancel();
    EXPECT_EQ(source->EditMode(), ZqDataViewOnly);
    EXPECT_EQ(name->Text(), "Ada") << "the record's values are shown again";

    source->Add();
    name->SetText(QStringLiteral("Dora"));
    source->Cancel();
    EXPECT_EQ(source->EditMode(), ZqDataViewOnly);
    EXPECT_EQ(rs->RecordCount(), 3) << "the new record is deleted";
    rs->SetFilter(Variant(adFilterPendingRecords));
    EXPECT_EQ(rs->RecordCount(), 0) << "without the batch there is nothing left to write";
}

TEST_F(BindingTest, CancelAfterAddShowsTheNeighbourAndChangeTestsCompareControlsWithFields)
{
    auto* name = Add<TextBox>("txtName", "Name");
    Add<test::FakeDate>("dtpJoined", "Joined");
    DataBindingSource* source = Source();
    auto rs = Customers();
    source->SetRecordset(rs);
    rs->MoveLast();
    EXPECT_EQ(name->Text(), "Chloe");

    QList<int> reasons;
    QObject::connect(source, &DataBindingSource::DataReadFromSource,
                     [&](const QString&, Variant&, int reason) { reasons << reason; });
    source->Add();
    EXPECT_EQ(source->EditMode(), ZqDataAdding);
    EXPECT_TRUE(reasons.contains(RDR_AddNewData)) << "the new record is shown as new data";
    EXPECT_EQ(name->Text(), "");
    name->SetText(QStringLiteral("Dora"));
    EXPECT_TRUE(source->DataChanged());
    source->Cancel();
    EXPECT_EQ(source->EditMode(), ZqDataViewOnly);
    EXPECT_EQ(rs->RecordCount(), 3) << "the new record is gone";
    EXPECT_EQ(name->Text(), "Chloe") << "its neighbour is shown";

    EXPECT_FALSE(source->DataChanged());
    name->SetText(QStringLiteral("Chloé"));
    EXPECT_TRUE(source->DataChanged());
    Variant current, original;
    EXPECT_TRUE(source->DataFieldChanged(QStringLiteral("name"), current, original));
    EXPECT_EQ(current, Variant("Chloé"));
    EXPECT_EQ(original, Variant("Chloe"));

    // A NOT NULL text field holding "" and an empty box: no change.
    source->Edit();
    name->SetText(QString());
    EXPECT_TRUE(source->Save());
    EXPECT_EQ(rs->Fields()->Item(QStringLiteral("Name"))->Value(), Variant(""));
    EXPECT_FALSE(source->DataFieldChanged(QStringLiteral("Name")));
    EXPECT_FALSE(source->BoundControlEditable(0, 0)) << "field 0 has no control";
    EXPECT_TRUE(source->BoundControlEditable(1, 0));
    name->SetLocked(true);
    EXPECT_FALSE(source->BoundControlEditable(0, 1));
    EXPECT_EQ(test::ErrorOf([&] { source->BoundControlEditable(1, 1); }), ObjectErrorBase);
}

TEST_F(BindingTest, EveryOperationWithoutARecordsetRaisesObjectNotSet)
{
    DataBindingSource* source = Source();
    const std::pair<const char*, std::function<void()>> operations[] = {
        {".Cancel", [&] { source->Cancel(); }},           {".Add", [&] { source->Add(); }},
        {".Delete", [&] { source->Delete(); }},           {".CancelBatch", [&] { source->CancelBatch(); }},
        {".SaveBatch", [&] { source->SaveBatch(); }},     {".Resync", [&] { source->Resync(); }},
    };
    for (const auto& [member, call] : operations) {
        SCOPED_TRACE(member);
        const auto raised = test::RaisedError(call);
        ASSERT_TRUE(raised.has_value());
        EXPECT_EQ(raised->Number(), vbErrObjectNotSet);
        EXPECT_EQ(raised->Source(), QStringLiteral("%1.dbsCustomer%2").arg(App::Instance()->Title(), QLatin1String(member)));
    }
    EXPECT_EQ(source->EditMode(), ZqDataViewOnly);
    EXPECT_FALSE(source->DataChanged());
}

TEST_F(BindingTest, NumbersBeyondTheRangeAreSavedAsAnnouncedAndHugeOnesClamped)
{
    auto* visits = Add<ZqNumber>("zqnVisits", "Visits");
    visits->SetMinValue(Variant(0));
    visits->SetMaxValue(Variant(100));
    DataBindingSource* source = Source();
    auto rs = Customers();
    rs->Fields()->Item(QStringLiteral("Visits"))->SetValue(Variant(5000));
    rs->UpdateBatch();
    source->SetRecordset(rs);
    ASSERT_EQ(boxes.shown().size(), 1) << "told once";
    EXPECT_EQ(boxes.shown()[0].prompt, "The field \"Visits\" contained an invalid value of \"5,000.00\".\r\n\r\nIt has been "
                                       "changed to \"100.00\".");
    EXPECT_EQ(CLng(visits->Value()), 100);
    source->Edit();
    ASSERT_TRUE(source->Save());
    EXPECT_EQ(CLng(rs->Fields()->Item(QStringLiteral("Visits"))->Value()), 100) << "the announced value is the one saved";
    EXPECT_EQ(boxes.shown().size(), 1);

    // Beyond what a currency holds: clamped like any other value, no Overflow.
    auto amounts = std::make_shared<Recordset>();
    amounts->Fields()->Append(QStringLiteral("Visits"), adDouble, 0, adFldIsNullable);
    amounts->Open();
    amounts->AddNew(Variant::Array({"Visits"}), Variant::Array({1e300}));
    amounts->AddNew(Variant::Array({"Visits"}), Variant::Array({-1e300}));
    amounts->UpdateBatch();
    amounts->MoveFirst();
    source->SetRecordset(amounts);
    EXPECT_EQ(CLng(visits->Value()), 100);
    amounts->MoveNext();
    EXPECT_EQ(CLng(visits->Value()), 0);
    EXPECT_EQ(boxes.shown().size(), 3);
}

TEST_F(BindingTest, AMoveDuringAnEditIsRefusedAndTheTypedValuesStay)
{
    auto* name = Add<TextBox>("txtName", "Name");
    DataBindingSource* source = Source();
    auto rs = Customers();
    source->SetRecordset(rs);
    QSignalSpy moves(source, &DataBindingSource::RecordMove);

    source->Edit();
    name->SetText(QStringLiteral("Typed"));
    EXPECT_EQ(test::ErrorOf([&] { rs->MoveNext(); }), adErrOperationCancelled);
    EXPECT_EQ(name->Text(), "Typed") << "the typed value is still there";
    EXPECT_EQ(CLng(rs->Fields()->Item(QStringLiteral("CustomerId"))->Value()), 1) << "the record did not change";
    EXPECT_EQ(source->EditMode(), ZqDataEditing);
    EXPECT_EQ(moves.count(), 0);
    ASSERT_TRUE(source->Save());
    EXPECT_EQ(rs->Fields()->Item(QStringLiteral("Name"))->Value(), Variant("Typed"));
    rs->MoveNext();
    EXPECT_EQ(name->Text(), "Brian") << "once saved, moves are free again";

    // Adding: the new record keeps what was typed until Save or Cancel.
    source->Add();
    name->SetText(QStringLiteral("Dora"));
    EXPECT_EQ(test::ErrorOf([&] { rs->MoveFirst(); }), adErrOperationCancelled);
    EXPECT_EQ(name->Text(), "Dora");
    EXPECT_EQ(source->EditMode(), ZqDataAdding);
    source->Cancel();
    EXPECT_EQ(source->EditMode(), ZqDataViewOnly);
    EXPECT_EQ(rs->RecordCount(), 3);
    rs->MoveFirst();
    EXPECT_EQ(name->Text(), "Typed");
}

TEST_F(BindingTest, TheRecordsetCanBeSetByName)
{
    auto* name = Add<TextBox>("txtName", "Name");
    DataBindingSource* source = Source();
    auto rs = Customers();
    SetProperty(source, QStringLiteral("Recordset"), Variant(std::static_pointer_cast<QObject>(rs)));
    EXPECT_EQ(source->Recordset(), rs);
    EXPECT_EQ(name->Text(), "Ada");
    EXPECT_EQ(GetProperty(source, QStringLiteral("Recordset")).Object(), rs.get());
    EXPECT_EQ(test::ErrorOf([&] { SetProperty(source, QStringLiteral("Recordset"), Variant(5)); }), vbErrTypeMismatch);
    EXPECT_EQ(test::ErrorOf([&] { SetProperty(source, QStringLiteral("Recordset"), Variant(static_cast<QObject*>(&form))); }),
              vbErrTypeMismatch);
    SetProperty(source, QStringLiteral("Recordset"), Variant::Nothing());
    EXPECT_EQ(source->Recordset(), nullptr);
}

TEST_F(BindingTest, CancelBatchReturnsToARecordFromBofEofAndADeletedOne)
{
    auto* name = Add<TextBox>("txtName", "Name");
    DataBindingSource* source = Source();
    source->SetAutoSaveBatch(false);
    auto rs = Customers();
    source->SetRecordset(rs);

    rs->MoveLast();
    rs->MoveNext();
    ASSERT_TRUE(rs->IsEOF());
    source->CancelBatch();
    EXPECT_FALSE(rs->IsEOF()) << "from EOF back onto a record: the re-sort starts at the first";
    EXPECT_EQ(name->Text(), "Ada");

    rs->MoveFirst();
    rs->MovePrevious();
    ASSERT_TRUE(rs->IsBOF());
    source->CancelBatch();
    EXPECT_FALSE(rs->IsBOF()) << "from BOF to the first record";
    EXPECT_EQ(name->Text(), "Ada");

    // A deleted record that the cancel brings back is shown again where it was.
    source->Delete();
    EXPECT_EQ(name->Text(), "Brian") << "the neighbour after a delete";
    rs->SetFilter(Variant(adFilterPendingRecords));
    EXPECT_EQ(rs->RecordCount(), 1) << "without AutoSaveBatch the delete is only pending";
    rs->SetFilter(Variant(0));
    source->CancelBatch();
    EXPECT_EQ(rs->RecordCount(), 3);
    EXPECT_EQ(source->EditMode(), ZqDataViewOnly);
    EXPECT_FALSE(rs->IsBOF() || rs->IsEOF());

    // Delete, then SaveBatch by hand: now it is written and cannot be cancelled.
    rs->MoveFirst();
    source->Delete();
    EXPECT_TRUE(source->SaveBatch());
    source->CancelBatch();
    EXPECT_EQ(rs->RecordCount(), 2);
    EXPECT_EQ(name->Text(), "Brian");

    // On a record deleted while the batch is cancelled: the next one is shown.
    auto clone = rs->Clone();
    rs->MoveFirst();
    clone->MoveFirst();
    clone->Delete(adAffectCurrent);
    clone->UpdateBatch();
    source->CancelBatch();
    EXPECT_EQ(name->Text(), "Chloe");
    EXPECT_FALSE(rs->IsEOF());
}

TEST_F(BindingTest, EditableFollowsEnabledLockedAndReadOnlyPerKind)
{
    auto* name = Add<TextBox>("txtName", "Name");
    auto* active = Add<CheckBox>("chkActive", "Active");
    auto* visits = Add<ZqNumber>("zqnVisits", "Visits");
    auto* joined = Add<test::FakeDate>("dtpJoined", "Joined");
    auto* region = Add<test::FakeCombo>("cboRegion", "Region");
    auto* contact = Add<ZqDropdown>("ddContact", "Contact");
    contact->SetRowSource(Variant(QStringLiteral("Ada   ;Chloe")));
    auto* code = Add<test::FakeProdCode>("txtCode", "CustomerId");
    DataBindingSource* source = Source();
    source->SetRecordset(Customers());
    const auto editable = [&](short ctl) { return source->BoundControlEditable(0, ctl); };
    for (short i = 1; i <= 7; ++i)
        EXPECT_TRUE(editable(i)) << i;
    visits->SetReadOnly(true);
    joined->readOnly = true;
    contact->SetReadOnly(true);
    region->locked = true;
    code->locked = true;
    EXPECT_FALSE(editable(3)) << "ZqNumber read-only";
    EXPECT_FALSE(editable(4)) << "a date read-only";
    EXPECT_FALSE(editable(5)) << "a combo locked";
    EXPECT_FALSE(editable(6)) << "a dropdown read-only";
    EXPECT_FALSE(editable(7)) << "a product code locked";
    EXPECT_TRUE(source->BoundControlEditable(3, 0)) << "the check box of field 3 has neither";
    name->SetEnabled(false);
    active->SetEnabled(false);
    EXPECT_FALSE(editable(1));
    EXPECT_FALSE(editable(2)) << "a disabled control is never editable";
    EXPECT_FALSE(editable(8)) << "no such control";
}

TEST_F(BindingTest, UnloadErasesTheBoundListAndTheNextDisplayFindsThemAgain)
{
    auto* name = Add<TextBox>("txtName", "Name");
    DataBindingSource* source = Source();
    auto rs = Customers();
    source->SetRecordset(rs);
    ASSERT_EQ(source->BoundControls().size(), 1);
    ASSERT_TRUE(form.UnloadForm());
    EXPECT_TRUE(source->BoundControls().isEmpty());
    rs->MoveNext();
    EXPECT_EQ(source->BoundControls(), QList<QObject*>{name});
    EXPECT_EQ(name->Text(), "Brian");
}

TEST_F(BindingTest, UpperCaseStampFieldsAreStamped)
{
    auto rs = std::make_shared<Recordset>();
    rs->Fields()->Append(QStringLiteral("Name"), adVarWChar, 30, adFldIsNullable);
    rs->Fields()->Append(QStringLiteral("UPDATED_BY"), adVarWChar, 20, adFldIsNullable);
    rs->Fields()->Append(QStringLiteral("updated_at"), adDate, 0, adFldIsNullable);
    rs->Open();
    rs->AddNew(Variant::Array({"Name", "UPDATED_BY"}), Variant::Array({"Ada", "nobody"}));
    rs->UpdateBatch();
    rs->MoveFirst();
    auto* name = Add<TextBox>("txtName", "Name");
    DataBindingSource* source = Source();
    source->SetRecordset(rs);
    test::PrivateFolder folder;
    auto connection = std::make_shared<Connection>();
    connection->Open(QStringLiteral("Provider=SQLite;Data Source=") + folder.File(QStringLiteral("clock.db")));
    auto database = clsDatabase::Create();
    database->SetGcn(connection);
    Clerk clerk;
    SharedContext::ForThisThread().User = &clerk;
    source->Edit();
    name->SetText(QStringLiteral("Adele"));
    EXPECT_TRUE(source->Save());
    EXPECT_EQ(rs->Fields()->Item(QStringLiteral("UPDATED_BY"))->Value(), Variant("clerk7"));
    const Variant at = rs->Fields()->Item(QStringLiteral("updated_at"))->Value();
    ASSERT_FALSE(at.IsNull()) << "stamped with the server's time";
    EXPECT_LT(std::abs(CDbl(at) - CDbl(Variant(database->ServerDateTime()))), 10.0 / 86400);
    SharedContext::ForThisThread().User = nullptr;
    database->SetGcn(nullptr);
    QTest::qWait(1100);  // the clock's refresh timer ends before the test does
}

TEST_F(BindingTest, SaveIsRefusedByValidationAndOnlyTheFirstControlOfAFieldIsSaved)
{
    auto* name = Add<TextBox>("txtName", "Name");
    auto* again = Add<TextBox>("txtNameAgain", "Name");
    auto* city = Add<TextBox>("txtCity", "City");
    DataBindingSource* source = Source();
    auto rs = Customers();
    source->SetRecordset(rs);
    form.show();
    QApplication::setActiveWindow(&form);
    city->SetFocus();
    ASSERT_TRUE(QTest::qWaitFor([&] { return city->LineEdit()->hasFocus(); }, 1000));
    bool refuse = true;
    QObject::connect(city, &Control::Validate, [&](bool& cancel) { cancel = refuse; });

    source->Edit();
    name->SetText(QStringLiteral("First"));
    again->SetText(QStringLiteral("Second"));
    city->SetText(QStringLiteral("Nowhere"));
    EXPECT_FALSE(source->Save()) << "the focused control would not let go";
    EXPECT_EQ(source->EditMode(), ZqDataEditing);
    EXPECT_EQ(rs->Fields()->Item(QStringLiteral("City"))->Value(), Variant("London")) << "nothing written";
    refuse = false;
    EXPECT_TRUE(source->Save());
    EXPECT_EQ(rs->Fields()->Item(QStringLiteral("Name"))->Value(), Variant("First")) << "the first control of the field";
    EXPECT_EQ(rs->Fields()->Item(QStringLiteral("City"))->Value(), Variant("Nowhere"));
}

TEST_F(BindingTest, ADropdownShowsTheFieldAsItsSelectionAndSavesWhatTheUserPicks)
{
    auto* region = Add<ZqDropdown>("zqddRegion", "Region");
    region->SetColumns(2);
    region->SetRowSource(Variant(QStringLiteral("North;Northern hills;South;Southern coast;West;Western plain")));
    DataBindingSource* source = Source();
    auto rs = Customers();
    source->SetRecordset(rs);
    EXPECT_EQ(region->BoundValue(), Variant("South"));
    EXPECT_EQ(region->ListIndex(), 1) << "the field's value selects its row";
    EXPECT_EQ(region->Text(), "South");
    EXPECT_FALSE(source->DataChanged()) << "the shown value reads back as the field's";

    // The user picks the third row: Click and Changed say so, and the save writes its bound value.
    source->Edit();
    QSignalSpy changed(region, &ZqDropdown::Changed);
    region->SetListIndex(2);
    ASSERT_EQ(changed.count(), 1);
    EXPECT_EQ(changed[0][1].value<Variant>(), Variant("South"));
    EXPECT_EQ(changed[0][2].value<Variant>(), Variant("West"));
    EXPECT_TRUE(source->DataChanged());
    Variant now, before;
    EXPECT_TRUE(source->DataFieldChanged(QStringLiteral("Region"), now, before));
    EXPECT_EQ(now, Variant("West"));
    EXPECT_EQ(before, Variant("South"));
    ASSERT_TRUE(source->Save());
    EXPECT_EQ(rs->Fields()->Item(QStringLiteral("Region"))->Value(), Variant("West"));
    EXPECT_EQ(source->EditMode(), ZqDataViewOnly);

    // A Null field selects nothing, and nothing saves as Null; the next record selects again.
    rs->MoveNext();
    EXPECT_TRUE(region->BoundValue().IsNull());
    EXPECT_EQ(region->ListIndex(), -1);
    source->Edit();
    ASSERT_TRUE(source->Save());
    EXPECT_TRUE(rs->Fields()->Item(QStringLiteral("Region"))->Value().IsNull());
    rs->MoveNext();
    EXPECT_EQ(region->BoundValue(), Variant("North"));
    EXPECT_EQ(region->Text(), "North");

    // A value the list does not hold is refused by the combo, which keeps its row.
    rs->Fields()->Item(QStringLiteral("Region"))->SetValue(Variant("East"));
    const auto missing = test::RaisedError([&] { source->DisplayRecord(); });
    ASSERT_TRUE(missing.has_value());
    EXPECT_EQ(missing->Description(), "Item not found.");
    EXPECT_EQ(region->BoundValue(), Variant("North"));
    rs->CancelBatch();
}

}  // namespace
}  // namespace korvex

#include "DataBindingSourceTest.moc"
