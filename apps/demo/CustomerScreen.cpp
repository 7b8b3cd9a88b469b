// CustomerScreen: the customer form's buttons, the country combo over the lookup table, the
// Ctrl+S shortcut that saves without taking the focus from the box being typed in, and the edit
// mode shown as it changes.
#include "CustomerScreen.h"

#include "MainForm.h"

#include "korvex/controls/lists/ZqDropdown.h"
#include "korvex/data/DataBindingSource.h"
#include "korvex/data/clsDatabase.h"
#include "korvex/platform/adosql/Connection.h"
#include "korvex/platform/ado/Recordset.h"
#include "korvex/platform/host/Form.h"
#include "korvex/platform/host/Label.h"
#include "korvex/forms/ZqForm.h"
#include "korvex/platform/desktop/MessageBoxService.h"
#include "korvex/runtime/Conversions.h"

#include <QShortcut>

namespace demo {

using namespace korvex;

namespace {

QString ModeName(int mode)
{
    switch (mode) {
    case ZqDataEditing: return QStringLiteral("Editing");
    case ZqDataAdding: return QStringLiteral("Adding");
    default: return QStringLiteral("Viewing");
    }
}

}  // namespace

CustomerScreen::CustomerScreen(Form& form) : QObject(&form), mForm(form)
{
    mSource = qobject_cast<DataBindingSource*>(form.FindControl(QStringLiteral("dbsCustomer")));
    connect(mSource, &DataBindingSource::RecordMove, this, [this](bool) { ShowState(); });
    // The event comes before the source takes the new mode, so the label takes it from the event.
    connect(mSource, &DataBindingSource::RecordEditStart, this, [this](int mode) { ShowMode(mode); });

    OnButton("cmdFirst", [this] { mRS->MoveFirst(); });
    OnButton("cmdPrevious", [this] {
        mRS->MovePrevious();
        if (mRS->IsBOF())
            mRS->MoveFirst();
    });
    OnButton("cmdNext", [this] {
        mRS->MoveNext();
        if (mRS->IsEOF())
            mRS->MoveLast();
    });
    OnButton("cmdLast", [this] { mRS->MoveLast(); });
    OnButton("cmdAdd", [this] { mSource->Add(); });
    OnButton("cmdEdit", [this] { mSource->Edit(); });
    OnButton("cmdSave", [this] { mSource->Save(); }, ZqMsg_Fail_Update);
    OnButton("cmdCancel", [this] {
        if (FormService(mForm).MsgBoxZqStd(ZqMsg_CancelConfirm) == vbYes)
            mSource->Cancel();
    });
    OnButton("cmdDelete", [this] {
        if (FormService(mForm).MsgBoxZqStd(ZqMsg_DeleteConfirm) == vbYes)
            mSource->Delete();
    }, ZqMsg_Fail_Delete);
    auto* save = new QShortcut(QKeySequence::Save, &form);
    connect(save, &QShortcut::activated, this, [this] { Run([this] { mSource->Save(); }, ZqMsg_Fail_Update); });

    QObject* connection = clsDatabase::Global().gcn().get();
    // The combo offers the countries of the lookup table; it needs them before the binding shows
    // a customer's country in it.
    mCountries = std::make_shared<ado::Recordset>();
    mCountries->Open(Variant(QStringLiteral("SELECT \"Code\", \"Name\" FROM countries ORDER BY \"Name\"")),
                     Variant(connection), ado::adOpenStatic, ado::adLockReadOnly);
    qobject_cast<ZqDropdown*>(form.FindControl(QStringLiteral("zqddCountry")))->SetRowSource(mCountries);

    mRS = std::make_shared<ado::Recordset>();
    mRS->Open(Variant(QStringLiteral("SELECT * FROM customers ORDER BY \"CustomerId\"")), Variant(connection),
              ado::adOpenStatic, ado::adLockBatchOptimistic);
    mSource->SetRecordset(mRS);
    ShowState();
}

void CustomerScreen::Run(const std::function<void()>& action, int failure)
{
    try {
        action();
    } catch (const Error& error) {
        ZqForm& service = FormService(mForm);
        // The binding's errors carry negative object error numbers, which would hide the
        // description altogether: the user is told the description alone.
        const int number = error.Number() > 0 ? error.Number() : 0;
        if (failure >= 0)
            service.MsgBoxZqStd(failure, QStringLiteral("the customer"), QString(), number, error.Description());
        else
            service.MsgBoxZq(error.Description(), vbExclamation, QString(), number);
    }
    ShowState();
}

void CustomerScreen::OnButton(const char* name, std::function<void()> action, int failure)
{
    Control* button = mForm.FindControl(QString::fromLatin1(name));
    connect(button, &Control::Click, this, [this, action = std::move(action), failure] { Run(action, failure); });
}

void CustomerScreen::ShowMode(int mode)
{
    const bool viewing = mode == ZqDataViewOnly;
    // Moving away would leave the edit behind, so the buttons that move wait; say why.
    const QString why = QStringLiteral("Save or Cancel before moving to another record");
    static_cast<Label*>(mForm.FindControl(QStringLiteral("lblMode")))
        ->SetCaption(viewing ? ModeName(mode) : ModeName(mode) + QStringLiteral(" (") + why + QLatin1Char(')'));
    for (const char* name : {"cmdFirst", "cmdPrevious", "cmdNext", "cmdLast", "cmdAdd", "cmdEdit", "cmdDelete"}) {
        Control* button = mForm.FindControl(QString::fromLatin1(name));
        button->SetEnabled(viewing);
        button->SetToolTipText(viewing ? QString() : why);
    }
    for (const char* name : {"cmdSave", "cmdCancel"})
        mForm.FindControl(QString::fromLatin1(name))->SetEnabled(!viewing);
}

void CustomerScreen::ShowState()
{
    ShowMode(mSource->EditMode());

    const bool onRecord = mRS && mRS->State() == ado::adStateOpen && !mRS->IsBOF() && !mRS->IsEOF();
    auto field = [this](const char* name) { return mRS->Fields()->Item(Variant(name))->Value(); };
    auto* number = static_cast<Label*>(mForm.FindControl(QStringLiteral("lblCustomerNo")));
    auto* stamp = static_cast<Label*>(mForm.FindControl(QStringLiteral("lblStamp")));
    number->SetCaption(onRecord ? NullToString(field("CustomerId")) : QString());
    const Variant by = onRecord ? field("UpdatedBy") : Variant::Null();
    stamp->SetCaption(by.IsNull() ? QStringLiteral("never")
                                  : NullToString(field("UpdatedAt")) + QStringLiteral(" by ") + CStr(by));
}

}  // namespace demo
