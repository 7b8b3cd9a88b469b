// DataBindingSource against real databases (an SQLite file, and a throwaway PostgreSQL server):
// one edit typed into the bound controls and saved with its stamps, two users on one record with
// "Last one wins" on and off, Cancel after Add, required fields, Null against "" and a database
// that refuses the row.
#include "korvex/controls/input/ZqCheckBox.h"
#include "korvex/controls/input/ZqNumber.h"
#include "korvex/core/SharedContext.h"
#include "korvex/core/clsZqUser.h"
#include "korvex/data/DataBindingSource.h"
#include "korvex/data/clsDatabase.h"
#include "korvex/platform/host/App.h"
#include "korvex/platform/host/Form.h"
#include "korvex/platform/host/FormFile.h"
#include "korvex/platform/host/TextBox.h"
#include "korvex/platform/numberbox/NumberBox.h"
#include "korvex/platform/desktop/MessageBoxService.h"
#include "korvex/runtime/Conversions.h"
#include "korvex/runtime/LateBinding.h"
#include "tests/support/RaisedError.h"
#include "tests/support/PinnedSettings.h"
#include "tests/support/Printers.h"
#include "tests/platform/adosql/SqlTestKit.h"

#include <QApplication>
#include <QCheckBox>
#include <QLineEdit>
#include <QSignalSpy>
#include <QTest>

#include <cmath>

#include <gtest/gtest.h>

namespace korvex {
namespace {

using namespace ado;
using ado::test::Backend;

class Clerk : public clsZqUser {
public:
    using clsZqUser::clsZqUser;
    Variant UserId() const override { return Variant("clerk7"); }
};

const QString Removed = QStringLiteral(
    "Another user has removed this record whilst you were editing it!\r\n\r\nYour changes have been discarded.");

// One user's customer form: bound text boxes for the name and city, a numeric field for the
// balance and a check box for the active flag, over its own connection and recordset.
struct CustomerForm {
    explicit CustomerForm(const QString& connectionString)
        : connection(ado::test::Connect(connectionString))
    {
        form.SetName(QStringLiteral("frmCustomer"));
        name = Bound<TextBox>("txtName", "Name");
        city = Bound<TextBox>("txtCity", "City");
        balance = Bound<ZqNumber>("zqnBalance", "Balance");
        balance->SetDecimalPlaces(2);
        balance->SetAllowNullSelection(true);
        active = Bound<ZqCheckBox>("zqchkActive", "Active");
        source = static_cast<DataBindingSource*>(
            FormFile::AddNewControl(form, QStringLiteral("DataBindingSource"), QStringLiteral("dbsCustomer")));
        rs = ado::test::OpenBatch(connection, QStringLiteral("SELECT * FROM customers ORDER BY \"CustomerId\""));
        source->SetRecordset(rs);
    }

    template <class T>
    T* Bound(const char* controlName, const char* field)
    {
        auto* c = static_cast<T*>(FormFile::AddNewControl(form, TypeNameOfClass(&T::staticMetaObject), QString::fromLatin1(controlName)));
        c->move(0, 30 * form.Client()->children().size());
        SetProperty(c, QStringLiteral("DataField"), QString::fromLatin1(field));
        return c;
    }

    void Show()
    {
        form.show();
        QApplication::setActiveWindow(&form);
        ASSERT_TRUE(QTest::qWaitForWindowActive(&form, 1000));
    }

    // Types into a box as the user does: focus, select what is there, type.
    static void TypeInto(QLineEdit* line, const QString& text)
    {
        line->setFocus();
        ASSERT_TRUE(QTest::qWaitFor([line] { return line->hasFocus(); }, 1000));
        line->selectAll();
        if (text.isEmpty())
            QTest::keyClick(line, Qt::Key_Delete);
        else
            QTest::keyClicks(line, text);
    }
    QLineEdit* BalanceLine() const { return balance->c1Number()->LineEdit(); }

    bool Seek(int customerId) { return ado::test::Seek(rs, "CustomerId", QString::number(customerId)); }

    std::shared_ptr<Connection> connection;
    Form form;
    TextBox* name = nullptr;
    TextBox* city = nullptr;
    ZqNumber* balance = nullptr;
    ZqCheckBox* active = nullptr;
    DataBindingSource* source = nullptr;
    std::shared_ptr<Recordset> rs;
};

class BindingOnDatabase : public ado::test::BackendTest {
protected:
    void SetUp() override
    {
        BackendTest::SetUp();
        if (IsSkipped())
            return;
        App::Instance()->SetTitle(QStringLiteral("Korvex Tests"));
        mConnection->Execute(QStringLiteral("DROP TABLE IF EXISTS customers"));
        mConnection->Execute(QStringLiteral(
            "CREATE TABLE customers (\"CustomerId\" INTEGER PRIMARY KEY, \"Name\" VARCHAR(30) NOT NULL, "
            "\"City\" VARCHAR(20), \"Balance\" NUMERIC(12,2) NOT NULL, \"Active\" BOOLEAN, "
            "\"UpdatedBy\" VARCHAR(20), \"UpdatedAt\" TIMESTAMP)"));
        mConnection->Execute(QStringLiteral("CREATE UNIQUE INDEX customers_name ON customers (\"Name\")"));
        const char* rows[] = {"(1, 'Ada', 'London', 10.50, TRUE, NULL, NULL)",
                              "(2, 'Brian', NULL, 0, FALSE, NULL, NULL)",
                              "(3, 'Chloe', 'Paris', 99.99, TRUE, NULL, NULL)"};
        for (const char* row : rows)
            mConnection->Execute(QStringLiteral("INSERT INTO customers VALUES ") + QString::fromLatin1(row));
        mDatabase = clsDatabase::Create();
        mDatabase->SetGcn(mConnection);
        SharedContext::ForThisThread().User = &mClerk;
    }
    void TearDown() override { SharedContext::ForThisThread().User = nullptr; }

    // One column of one customer, read afresh through the test's own connection.
    QString Stored(const char* column, int customerId)
    {
        const QStringList values = ado::test::ReadColumn(
            mConnection, QStringLiteral("SELECT \"%1\" FROM customers WHERE \"CustomerId\" = %2")
                             .arg(QString::fromLatin1(column))
                             .arg(customerId));
        return values.value(0, QStringLiteral("<no row>"));
    }

    korvex::test::PinnedSettings mPin;
    ScopedMessageBoxRecorder mBoxes;
    Clerk mClerk;
    std::shared_ptr<clsDatabase> mDatabase;
};

TEST_P(BindingOnDatabase, OneEditTypedIntoTheControlsIsSavedWithItsStamps)
{
    CustomerForm user(mText);
    user.Show();
    EXPECT_EQ(user.name->Text(), "Ada");
    EXPECT_EQ(CStr(user.balance->Value()), "10.5");
    EXPECT_EQ(user.active->Value(), 1);

    user.source->Edit();
    EXPECT_EQ(user.source->EditMode(), ZqDataEditing);
    CustomerForm::TypeInto(user.name->LineEdit(), QStringLiteral("Adaline"));
    CustomerForm::TypeInto(user.city->LineEdit(), QString());
    CustomerForm::TypeInto(user.BalanceLine(), QStringLiteral("1234.5"));
    user.active->InnerBox()->Box()->setFocus();
    QTest::keyClick(user.active->InnerBox()->Box(), Qt::Key_Space);
    CustomerForm::TypeInto(user.name->LineEdit(), QStringLiteral("Adaline Byron"));
    // Saved from a toolbar button that takes no focus: the keystrokes still in the focused box
    // are saved with the rest.
    ASSERT_TRUE(user.name->LineEdit()->hasFocus());
    EXPECT_TRUE(user.source->Save());
    EXPECT_TRUE(mBoxes.shown().isEmpty());
    EXPECT_EQ(user.source->EditMode(), ZqDataViewOnly);

    EXPECT_EQ(Stored("Name", 1), "Adaline Byron");
    EXPECT_EQ(Stored("City", 1), "<Null>") << "an emptied box of a field that takes Null stores Null";
    EXPECT_EQ(CDbl(Variant(Stored("Balance", 1))), 1234.5);
    EXPECT_FALSE(CBool(Variant(Stored("Active", 1))));
    EXPECT_EQ(Stored("UpdatedBy", 1), "clerk7");
    const Variant stamp = ado::test::ValueOf(user.rs, "UpdatedAt");
    ASSERT_FALSE(stamp.IsNull());
    const double age = CDbl(Variant(mDatabase->ServerDateTime())) - CDbl(stamp);
    EXPECT_LT(std::abs(age), 10.0 / 86400) << "stamped with the server's time";
    EXPECT_EQ(Stored("Name", 2), "Brian") << "nothing else written";
    EXPECT_EQ(Stored("UpdatedBy", 2), "<Null>");

    // Emptying the name of a NOT NULL text field stores "", never Null.
    user.source->Edit();
    CustomerForm::TypeInto(user.name->LineEdit(), QString());
    EXPECT_TRUE(user.source->Save());
    EXPECT_EQ(Stored("Name", 1), "");
}

TEST_P(BindingOnDatabase, TwoUsersOnOneRecordWithLastOneWinsOnAndOff)
{
    enum class Other { Changes, Deletes };
    struct Case {
        Other other;
        bool lastOneWins;
        bool saved;
        QString name;  // stored afterwards
        QStringList messages;
    };
    const Case cases[] = {
        {Other::Changes, true, true, "Mine", {}},
        {Other::Changes, false, false, "Theirs", {}},
        {Other::Deletes, true, true, "<no row>", {Removed}},
        {Other::Deletes, false, false, "<no row>", {}},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(QStringLiteral("other user %1, last one wins %2")
                         .arg(c.other == Other::Changes ? "changes" : "deletes")
                         .arg(c.lastOneWins)
                         .toStdString());
        mConnection->Execute(QStringLiteral("DELETE FROM customers WHERE \"CustomerId\" = 9"));
        mConnection->Execute(QStringLiteral("INSERT INTO customers VALUES (9, 'Start', 'Rome', 1, TRUE, NULL, NULL)"));
        mBoxes.recorder().shown.clear();

        CustomerForm me(mText);
        me.source->SetAutoOverwriteChanges(c.lastOneWins);
        ASSERT_TRUE(me.Seek(9));
        me.Show();
        me.source->Edit();
        CustomerForm::TypeInto(me.name->LineEdit(), QStringLiteral("Mine"));

        CustomerForm them(mText);
        ASSERT_TRUE(them.Seek(9));
        if (c.other == Other::Changes) {
            them.source->Edit();
            them.name->SetText(QStringLiteral("Theirs"));
            ASSERT_TRUE(them.source->Save());
        } else {
            them.source->Delete();
        }

        EXPECT_EQ(me.source->Save(), c.saved);
        QStringList prompts;
        for (const auto& box : mBoxes.shown())
            prompts << box.prompt;
        EXPECT_EQ(prompts, c.messages);
        EXPECT_EQ(Stored("Name", 9), c.name);
        if (!c.saved) {
            EXPECT_EQ(CStr(ado::test::ValueOf(me.rs, "Name")), "Mine") << "the refused edit stays pending";
        }
        if (!c.saved && c.other == Other::Changes) {
            EXPECT_EQ(me.name->Text(), "Mine") << "and still shows in the box";
        }
        if (c.other == Other::Changes) {
            EXPECT_EQ(Stored("City", 9), "Rome") << "what neither user changed stays";
        }
    }
}

TEST_P(BindingOnDatabase, CancelAfterAddShowsTheNeighbourAndWritesNothing)
{
    CustomerForm user(mText);
    user.Show();
    ASSERT_TRUE(user.Seek(3));
    user.source->Add();
    EXPECT_EQ(user.source->EditMode(), ZqDataAdding);
    EXPECT_EQ(user.name->Text(), "") << "the new record is shown empty";
    CustomerForm::TypeInto(user.name->LineEdit(), QStringLiteral("Never saved"));
    user.source->Cancel();
    EXPECT_EQ(user.source->EditMode(), ZqDataViewOnly);
    EXPECT_EQ(user.rs->RecordCount(), 3);
    EXPECT_EQ(user.name->Text(), "Chloe") << "the neighbour of the dropped record";
    EXPECT_EQ(ado::test::ReadColumn(mConnection, QStringLiteral("SELECT COUNT(*) FROM customers")), QStringList{"3"});
    EXPECT_TRUE(mBoxes.shown().isEmpty());
}

TEST_P(BindingOnDatabase, RequiredFieldsAndARefusedRowKeepTheEdit)
{
    CustomerForm user(mText);
    user.Show();
    user.source->Edit();
    CustomerForm::TypeInto(user.name->LineEdit(), QStringLiteral("Brian"));
    CustomerForm::TypeInto(user.BalanceLine(), QString());
    ASSERT_TRUE(user.balance->Value().IsNull());

    // The library stops the empty required number before it reaches the record.
    auto refused = korvex::test::RaisedError([&] { user.source->Save(); });
    ASSERT_TRUE(refused.has_value());
    EXPECT_EQ(refused->Description(), "Database field \"Balance\" is required.");
    EXPECT_EQ(refused->Source(), "Korvex Tests.dbsCustomer.PopulateRSFromControls");
    // Without that check the record itself refuses Null in the field, and says which field.
    user.source->SetAutoSetUpdated(false);
    refused = korvex::test::RaisedError([&] { user.source->Save(); });
    ASSERT_TRUE(refused.has_value());
    EXPECT_TRUE(refused->Description().startsWith(QStringLiteral("Unable to set database field \"Balance\" to a new value: ")))
        << refused->Description().toStdString();
    EXPECT_EQ(user.source->EditMode(), ZqDataEditing);
    EXPECT_EQ(user.name->Text(), "Brian");
    EXPECT_TRUE(user.balance->Value().IsNull());
    EXPECT_EQ(Stored("Name", 1), "Ada");

    // The database refuses the row (the name belongs to another customer): the critical
    // message with the database's reason, the edit still pending and on show.
    CustomerForm::TypeInto(user.BalanceLine(), QStringLiteral("5"));
    EXPECT_FALSE(user.source->Save());
    ASSERT_EQ(mBoxes.shown().size(), 1);
    EXPECT_EQ(mBoxes.shown()[0].buttons & 0xF0, vbCritical);
    EXPECT_TRUE(mBoxes.shown()[0].prompt.startsWith(QStringLiteral("Unable to save the record.\r\n\r\n")))
        << mBoxes.shown()[0].prompt.toStdString();
    EXPECT_GT(mBoxes.shown()[0].prompt.size(), 35) << "the database's reason follows";
    EXPECT_EQ(user.source->EditMode(), ZqDataEditing);
    EXPECT_EQ(user.name->Text(), "Brian");
    EXPECT_EQ(CStr(user.balance->Value()), "5");
    EXPECT_EQ(Stored("Name", 1), "Ada");

    // Put right, the same edit saves.
    CustomerForm::TypeInto(user.name->LineEdit(), QStringLiteral("Ada King"));
    EXPECT_TRUE(user.source->Save());
    EXPECT_EQ(Stored("Name", 1), "Ada King");
    EXPECT_EQ(CDbl(Variant(Stored("Balance", 1))), 5.0);
}

TEST_P(BindingOnDatabase, ResyncShowsWhatAnotherUserSaved)
{
    CustomerForm user(mText);
    ASSERT_TRUE(user.Seek(3));
    EXPECT_EQ(user.city->Text(), "Paris");
    mConnection->Execute(QStringLiteral("UPDATE customers SET \"City\" = 'Lyon' WHERE \"CustomerId\" = 3"));
    QSignalSpy moves(user.source, &DataBindingSource::RecordMove);
    EXPECT_TRUE(user.source->Resync().IsEmpty());
    EXPECT_EQ(user.city->Text(), "Lyon") << "the record is shown again with the fresh values";
    EXPECT_EQ(CLng(ado::test::ValueOf(user.rs, "CustomerId")), 3) << "on the same record";
    EXPECT_GE(moves.count(), 1);
}

TEST_P(BindingOnDatabase, ANumberBeyondItsRangeIsSavedAsTheUserWasTold)
{
    mConnection->Execute(QStringLiteral("UPDATE customers SET \"Balance\" = 5000 WHERE \"CustomerId\" = 1"));
    CustomerForm user(mText);
    user.Show();
    user.balance->SetMaxValue(Variant(100));
    user.BalanceLine()->setFocus();
    ASSERT_TRUE(QTest::qWaitFor([&] { return user.BalanceLine()->hasFocus(); }, 1000));
    user.rs->MoveFirst();
    ASSERT_EQ(mBoxes.shown().size(), 1);
    EXPECT_TRUE(mBoxes.shown()[0].prompt.endsWith(QStringLiteral("It has been changed to \"100.00\".")))
        << mBoxes.shown()[0].prompt.toStdString();
    EXPECT_EQ(CDbl(user.balance->Value()), 100.0);
    user.source->Edit();
    EXPECT_TRUE(user.source->Save());
    EXPECT_EQ(CDbl(Variant(Stored("Balance", 1))), 100.0) << "the value announced is the value saved";
    EXPECT_EQ(mBoxes.shown().size(), 1) << "and the user is told once";
}

INSTANTIATE_TEST_SUITE_P(Backends, BindingOnDatabase,
                         ::testing::Values(Backend::SQLite, Backend::PostgreSQL), ado::test::BackendName);

}  // namespace
}  // namespace korvex
