// DataBindingSource: discovery of the bound controls, the binding contract by type name, the
// display on every move, and the editing lifecycle with stamps and conflict handling.
#include "korvex/data/DataBindingSource.h"

#include "korvex/core/ControlRoutines.h"
#include "korvex/core/SharedContext.h"
#include "korvex/data/clsDatabase.h"
#include "korvex/localisation/clsCharTranslation.h"
#include "korvex/platform/ado/AdoError.h"
#include "korvex/platform/host/App.h"
#include "korvex/platform/host/CheckBox.h"
#include "korvex/platform/host/ControlRegistry.h"
#include "korvex/platform/host/Form.h"
#include "korvex/platform/host/TextBox.h"
#include "korvex/platform/desktop/ColorConversion.h"
#include "korvex/platform/desktop/MessageBoxService.h"
#include "korvex/runtime/Conversions.h"
#include "korvex/runtime/Format.h"
#include "korvex/runtime/LateBinding.h"

#include <QLoggingCategory>

#include <utility>

namespace korvex {

KORVEX_REGISTER_CONTROL(DataBindingSource);

using namespace ado;

namespace {

Q_LOGGING_CATEGORY(lcBinding, "korvex.binding")

// Counts a move of the source's own while it lasts.
class OwnMove {
public:
    explicit OwnMove(int& count) : mCount(count) { ++mCount; }
    ~OwnMove() { --mCount; }
    OwnMove(const OwnMove&) = delete;
    OwnMove& operator=(const OwnMove&) = delete;

private:
    int& mCount;
};

QString RightTrimmed(const QString& text)
{
    qsizetype end = text.size();
    while (end > 0 && text[end - 1] == QLatin1Char(' '))
        --end;
    return text.left(end);
}

bool IsStampField(const QString& name)
{
    return name.compare(QLatin1String("UpdatedAt"), Qt::CaseInsensitive) == 0 ||
           name.compare(QLatin1String("UPDATED_AT"), Qt::CaseInsensitive) == 0 ||
           name.compare(QLatin1String("UpdatedBy"), Qt::CaseInsensitive) == 0 ||
           name.compare(QLatin1String("UPDATED_BY"), Qt::CaseInsensitive) == 0;
}

bool IsUpdatedAt(const QString& name)
{
    return name.compare(QLatin1String("UpdatedAt"), Qt::CaseInsensitive) == 0 ||
           name.compare(QLatin1String("UPDATED_AT"), Qt::CaseInsensitive) == 0;
}

bool IsUpdatedBy(const QString& name)
{
    return name.compare(QLatin1String("UpdatedBy"), Qt::CaseInsensitive) == 0 ||
           name.compare(QLatin1String("UPDATED_BY"), Qt::CaseInsensitive) == 0;
}

// -1, 0 or 1 as the value lies below, at or above the bound; a value beyond what a currency holds
// lies beyond every bound on its side.
int CompareWithCurrency(const Variant& value, const Currency& bound)
{
    try {
        const Currency c = CCur(value);
        return c < bound ? -1 : (bound < c ? 1 : 0);
    } catch (const Error& e) {
        if (e.Number() != vbErrOverflow)
            throw;
        return CDbl(value) < 0 ? -1 : 1;
    }
}

Variant NullIfEmpty(const Variant& v)
{
    return v.IsEmpty() ? Variant::Null() : v;
}

// The recordset's "Unique Table", "" when it has none.
QString UniqueTableOf(ado::Recordset& rs)
{
    try {
        const Variant table = rs.Properties()->Item(QStringLiteral("Unique Table"))->Value();
        return table.IsNull() || table.IsEmpty() ? QString() : CStr(table);
    } catch (const Error&) {
        return {};
    }
}

}  // namespace

DataBindingSource::DataBindingSource(QWidget* parent) : UserControl(parent)
{
    setFocusPolicy(Qt::NoFocus);
    SetTabStop(false);
    resize(32, 32);
    SetInvisibleAtRunTime();
    LoadDeclaredDefaults();
}

DataBindingSource::~DataBindingSource()
{
    QObject::disconnect(mMoveConnection);
    QObject::disconnect(mWillMoveConnection);
}

// Properties --------------------------------------------------------------------------------

void DataBindingSource::SetAutoSaveBatch(bool value)
{
    Assign("AutoSaveBatch", mAutoSaveBatch, value);
}

void DataBindingSource::SetAutoSetUpdated(bool value)
{
    Assign("AutoSetUpdated", mAutoSetUpdated, value);
}

void DataBindingSource::SetAutoOverwriteChanges(bool value)
{
    Assign("AutoOverwriteChanges", mAutoOverwriteChanges, value);
}

const PropertyList& DataBindingSource::PersistedProperties() const
{
    const auto stored = [](bool DataBindingSource::*member) {
        return [member](DataBindingSource& c, bool value) { c.*member = value; };
    };
    static const PropertyList list =
        Declare<DataBindingSource>()
            .Stored("AutoSaveBatch", &DataBindingSource::AutoSaveBatch, stored(&DataBindingSource::mAutoSaveBatch), true)
            .Stored("AutoSetUpdated", &DataBindingSource::AutoSetUpdated, stored(&DataBindingSource::mAutoSetUpdated), true)
            .Stored("AutoOverwriteChanges", &DataBindingSource::AutoOverwriteChanges,
                    stored(&DataBindingSource::mAutoOverwriteChanges), true);
    return list;
}

void DataBindingSource::Paint(QPainter& painter)
{
    painter.fillRect(rect(), ToQColor(vbButtonFace));
    painter.setPen(ToQColor(vbButtonShadow));
    painter.drawRect(rect().adjusted(0, 0, -1, -1));
    painter.setPen(ToQColor(vbButtonText));
    painter.drawText(rect(), Qt::AlignCenter, QStringLiteral("DBS"));
}

QString DataBindingSource::ErrorSource(const char* member) const
{
    return App::Instance()->Title() + QLatin1Char('.') + Name() + QLatin1String(member);
}

// Recordset and discovery -------------------------------------------------------------------

ado::Recordset& DataBindingSource::RS(const char* member) const
{
    if (!mRS)
        Raise(vbErrObjectNotSet, ErrorSource(member));
    return *mRS;
}

Variant DataBindingSource::RecordsetVariant() const
{
    return mRS ? Variant(std::static_pointer_cast<QObject>(mRS)) : Variant::Nothing();
}

void DataBindingSource::SetRecordsetVariant(const Variant& recordset)
{
    if (!recordset.IsObject())
        Raise(vbErrTypeMismatch, ErrorSource(".Recordset"));
    if (!recordset.Object()) {
        SetRecordset(nullptr);
        return;
    }
    auto shared = std::dynamic_pointer_cast<ado::Recordset>(recordset.SharedObject());
    if (!shared) {
        // Only a recordset the caller shares can be kept alive here.
        qCWarning(lcBinding) << Name() << ": Recordset takes a recordset held by a shared owner, not"
                             << recordset.Object();
        Raise(vbErrTypeMismatch, ErrorSource(".Recordset"));
    }
    SetRecordset(std::move(shared));
}

void DataBindingSource::SetRecordset(std::shared_ptr<ado::Recordset> recordset)
{
    QObject::disconnect(mMoveConnection);
    QObject::disconnect(mWillMoveConnection);
    mRS = std::move(recordset);
    // A new recordset starts the bound-control list afresh rather than appending to it.
    mBound.clear();
    if (mRS) {
        mWillMoveConnection = connect(mRS.get(), &ado::Recordset::WillMove, this,
                                      [this](EventReasonEnum, EventStatusEnum& status, ado::Recordset*) { OnWillMove(status); });
        mMoveConnection = connect(mRS.get(), &ado::Recordset::MoveComplete, this,
                                  [this](EventReasonEnum, const Error* error, EventStatusEnum&, ado::Recordset*) {
                                      OnMoveComplete(error);
                                  });
    }
    EnumerateBoundControls();
    if (IsRecordValid())
        DisplayRecord();
}

DataBindingSource::Kind DataBindingSource::KindOf(QObject* control)
{
    const QString type = TypeNameOf(control);
    if (type == QLatin1String("TextBox"))
        return Kind::TextBox;
    if (type == QLatin1String("IOPProdCode") || type == QLatin1String("SOPProdCode"))
        return Kind::ProdCode;
    if (type == QLatin1String("ZqNumber"))
        return Kind::Number;
    if (type == QLatin1String("TDBNumber"))
        return Kind::TDBNumber;
    if (type == QLatin1String("TDBDate"))
        return Kind::Date;
    if (type == QLatin1String("ZqCheckBox") || type == QLatin1String("CheckBox"))
        return Kind::CheckBox;
    if (type == QLatin1String("TDBCombo"))
        return Kind::Combo;
    if (type == QLatin1String("ZqDropdown"))
        return Kind::Dropdown;
    // A host's own control derived from a standard text or check box is that box.
    if (qobject_cast<TextBox*>(control))
        return Kind::TextBox;
    if (qobject_cast<CheckBox*>(control))
        return Kind::CheckBox;
    return Kind::Unknown;
}

void DataBindingSource::EnumerateBoundControls()
{
    if (!mRS || mRS->State() != adStateOpen)
        return;
    Form* form = GetParentForm(this);
    if (form != mParentForm) {
        if (mParentForm)
            disconnect(mParentForm, &Form::Unload, this, nullptr);
        mParentForm = form;
        // The form's unload ends the binding to its controls.
        if (form)
            connect(form, &Form::Unload, this, [this](short&) { mBound.clear(); });
    }
    mFieldMap.assign(static_cast<std::size_t>(mRS->Fields()->Count()), 0);
    if (!form) {
        if (!std::exchange(mToldNoForm, true))
            qCWarning(lcBinding).noquote() << Name() << ": binds nothing, for it is not on a form";
        return;
    }
    const QList<Control*> controls = form->Controls();
    if (mSourceCount == 0) {
        for (Control* c : controls)
            mSourceCount += TypeNameOf(c) == QLatin1String("DataBindingSource") ? 1 : 0;
        if (mSourceCount > 1)
            mOwnPrefix = Name() + QLatin1Char('.');
    }
    const QString uniqueTable = UniqueTableOf(*mRS);
    for (Control* c : controls) {
        const Kind kind = KindOf(c);
        if (kind == Kind::Unknown) {
            if (HasMember(c, QStringLiteral("DataField")) && !CStr(GetProperty(c, QStringLiteral("DataField"))).isEmpty())
                qCWarning(lcBinding).noquote() << Name() << ": control" << c->Name() << "of type" << TypeNameOf(c)
                                               << "has a DataField, but controls of that type cannot be bound";
            continue;
        }
        const QString dataField = CStr(GetProperty(c, QStringLiteral("DataField")));
        if (dataField.isEmpty())
            continue;
        if (mSourceCount > 1) {
            if (!dataField.contains(QLatin1Char('.')))
                throw Error(ObjectErrorBase, ErrorSource(".EnumerateBoundControls"),
                            QStringLiteral("Control \"%1\" has a DataField specified but does not specify which "
                                           "DataBindingSource to use.")
                                .arg(c->Name()));
            if (!dataField.startsWith(mOwnPrefix, Qt::CaseInsensitive))
                continue;
        }
        QString name = mSourceCount > 1 ? dataField.mid(mOwnPrefix.size()) : dataField;
        const qsizetype as = name.indexOf(QLatin1String(" as "), 0, Qt::CaseInsensitive);
        if (as >= 0) {
            name = name.mid(as + 4);
            const qsizetype space = name.indexOf(QLatin1Char(' '));
            if (space >= 0)
                name.truncate(space);
        } else if (!uniqueTable.isEmpty() && name.startsWith(uniqueTable + QLatin1Char('.'), Qt::CaseInsensitive)) {
            name = name.mid(uniqueTable.size() + 1);
        }
        mBound.push_back(Bound{c, kind, dataField, name});
        const auto number = static_cast<short>(mBound.size());
        for (int i = 0; i < mRS->Fields()->Count(); ++i) {
            if (mRS->Fields()->Item(i)->Name().compare(name, Qt::CaseInsensitive) != 0)
                continue;
            short& entry = mFieldMap[static_cast<std::size_t>(i)];
            if (entry == 0)
                entry = number;
            else if (entry > 0)
                entry = static_cast<short>(-entry);
        }
    }
}

QList<QObject*> DataBindingSource::BoundControls() const
{
    QList<QObject*> controls;
    for (const Bound& b : mBound)
        controls.append(b.control);
    return controls;
}

const DataBindingSource::Bound* DataBindingSource::BoundOfField(int field) const
{
    if (field < 0 || field >= static_cast<int>(mFieldMap.size()))
        return nullptr;
    const int number = std::abs(mFieldMap[static_cast<std::size_t>(field)]);
    if (number == 0 || number > static_cast<int>(mBound.size()))
        return nullptr;
    const Bound& bound = mBound[static_cast<std::size_t>(number - 1)];
    return bound.control ? &bound : nullptr;
}

int DataBindingSource::FieldIndexNamed(const QString& name) const
{
    for (int i = 0; i < mRS->Fields()->Count(); ++i) {
        if (mRS->Fields()->Item(i)->Name().compare(name, Qt::CaseInsensitive) == 0)
            return i;
    }
    return -1;
}

bool DataBindingSource::IsRecordValid() const
{
    return mRS && mRS->State() == adStateOpen && !mRS->IsBOF() && !mRS->IsEOF() &&
           (mRS->Status() & adRecDBDeleted) == 0;
}

bool DataBindingSource::ServerIsOracle() const
{
    auto database = clsDatabase::Current();
    if (!database)
        return false;
    try {
        return database->ServerType() == ST_Oracle;
    } catch (const Error&) {
        return false;  // no usable connection: no server to translate for
    }
}

Variant DataBindingSource::TranslateForOracle(const Variant& value, bool savingToDB) const
{
    const auto& translation = clsCharTranslation::Current();
    return translation ? translation->CharTranslateVar(value, savingToDB) : value;
}

void DataBindingSource::ShowUnknownKind() const
{
    MsgBox(QStringLiteral("Unknown attached control type!"), vbExclamation);
}

// Display -----------------------------------------------------------------------------------

bool DataBindingSource::DisplayRecord()
{
    if (!IsRecordValid())
        return false;
    if (mBound.empty())
        EnumerateBoundControls();
    if (!mBindingTested) {
        mBindingTested = true;
        for (const Bound& b : mBound) {
            if (FieldIndexNamed(b.fieldName) < 0 && b.control)
                MsgBox(QStringLiteral("Control '%1' is bound to invalid field '%2'!")
                           .arg(CStr(GetProperty(b.control, QStringLiteral("Name"))), b.dataField),
                       vbExclamation);
        }
    }
    const bool oracle = ServerIsOracle();
    for (int i = 0; i < mRS->Fields()->Count(); ++i)
        DisplayField(i, oracle);
    return true;
}

void DataBindingSource::DisplayField(int i, bool oracle)
{
    Field* field = mRS->Fields()->Item(i);
    const QString name = field->Name();
    Variant value = field->Value();
    if (oracle && !IsNumericFieldType(field->Type()) && field->Type() != adChapter)
        value = TranslateForOracle(value, false);
    emit DataReadFromSource(name, value, mRS->EditMode() == adEditAdd ? RDR_AddNewData : RDR_DisplayData);
    if (const Bound* bound = BoundOfField(i))
        WriteToControl(*bound, *field, value);
}

void DataBindingSource::AdjustToRange(const Bound& bound, const QString& fieldName, Variant& value, const char* minName,
                                      const char* maxName, bool dates) const
{
    if (value.IsNull() || value.IsEmpty())
        return;
    const Variant minimum = GetProperty(bound.control, QString::fromLatin1(minName));
    const Variant maximum = GetProperty(bound.control, QString::fromLatin1(maxName));
    Variant adjusted = value;
    if (dates) {
        if (CDate(value) < CDate(minimum))
            adjusted = CDate(minimum);
        else if (CDate(value) > CDate(maximum))
            adjusted = CDate(maximum);
    } else {
        const Currency low = CCur(minimum);
        const Currency high = CCur(maximum);
        if (CompareWithCurrency(value, low) < 0)
            adjusted = low;
        else if (CompareWithCurrency(value, high) > 0)
            adjusted = high;
    }
    if (adjusted == value)
        return;
    auto shown = [dates](const Variant& v) { return dates ? FormatGeneralDate(CDate(v), RegionalSettings::Current()) : FormatNumber(v); };
    MsgBox(QStringLiteral("The field \"%1\" contained an invalid value of \"%2\".\r\n\r\nIt has been changed to \"%3\".")
               .arg(fieldName, shown(value), shown(adjusted)),
           vbInformation);
    value = adjusted;
}

void DataBindingSource::WriteToControl(const Bound& bound, Field& field, Variant value)
{
    QObject* c = bound.control;
    switch (bound.kind) {
    case Kind::TextBox:
        if (CLng(GetProperty(c, QStringLiteral("MaxLength"))) == 0 && IsTextFieldType(field.Type()))
            SetProperty(c, QStringLiteral("MaxLength"), field.DefinedSize());
        [[fallthrough]];
    case Kind::ProdCode:
        SetProperty(c, QStringLiteral("Text"), RightTrimmed(NullToString(value)));
        break;
    case Kind::Number:
    case Kind::TDBNumber:
        AdjustToRange(bound, field.Name(), value, "MinValue", "MaxValue", false);
        SetProperty(c, QStringLiteral("Value"), value);
        break;
    case Kind::Date:
        AdjustToRange(bound, field.Name(), value, "MinDate", "MaxDate", true);
        SetProperty(c, QStringLiteral("Value"), value);
        break;
    case Kind::CheckBox:
        if (field.Type() == adBoolean)
            SetProperty(c, QStringLiteral("Value"), NullToBoolean(value) ? 1 : 0);
        else
            SetProperty(c, QStringLiteral("Value"), NullToLong(value));
        break;
    case Kind::Combo: SetProperty(c, QStringLiteral("BoundText"), value); break;
    case Kind::Dropdown: SetProperty(c, QStringLiteral("BoundValue"), value); break;
    case Kind::Unknown: ShowUnknownKind(); break;
    }
}

void DataBindingSource::ClearControl(const Bound& bound)
{
    QObject* c = bound.control;
    switch (bound.kind) {
    case Kind::TextBox:
    case Kind::ProdCode: SetProperty(c, QStringLiteral("Text"), QString()); break;
    case Kind::Number:
    case Kind::TDBNumber:
    case Kind::Date: SetProperty(c, QStringLiteral("Value"), Variant::Null()); break;
    case Kind::CheckBox: SetProperty(c, QStringLiteral("Value"), 0); break;
    case Kind::Combo: SetProperty(c, QStringLiteral("BoundText"), QString()); break;
    case Kind::Dropdown: SetProperty(c, QStringLiteral("BoundValue"), Variant::Null()); break;
    case Kind::Unknown: ShowUnknownKind(); break;
    }
}

void DataBindingSource::ClearBoundControls()
{
    for (std::size_t i = 0; i < mFieldMap.size(); ++i) {
        if (const Bound* bound = BoundOfField(static_cast<int>(i)))
            ClearControl(*bound);
    }
}

// An edit belongs to its record: a move made by someone else while the controls may hold typed
// values would show the next record over them, so it is refused and the typed values stay until
// Save or Cancel. The source's own moves (Add, Delete, Cancel, the batch operations) pass.
void DataBindingSource::OnWillMove(EventStatusEnum& status)
{
    if (mEditMode == ZqDataViewOnly || mOwnMoves > 0 || status == adStatusCancel)
        return;
    qCWarning(lcBinding) << Name() << ": a move of the recordset during an edit was refused; call Save or Cancel first";
    status = adStatusCancel;
}

void DataBindingSource::OnMoveComplete(const Error* error)
{
    // A refused move left the record, and what the controls hold, where it was.
    if (error && error->Number() == adErrOperationCancelled)
        return;
    // A move is the host's call; the binding's own failures are told to the user rather than
    // thrown through the recordset's notification.
    bool shown = false;
    try {
        shown = DisplayRecord();
        if (!shown && !IsRecordValid())
            ClearBoundControls();
    } catch (const Error& e) {
        shown = false;
        MsgBox(e.Description(), vbCritical);
    }
    // The host hears of every move, also of one whose record could not be shown.
    emit RecordMove(shown);
}

bool DataBindingSource::BoundControlEditable(short RsFieldIndex, short CtlIndex)
{
    if (RsFieldIndex != 0 && CtlIndex != 0)
        throw Error(ObjectErrorBase, ErrorSource(".BoundControlEditable"),
                    QStringLiteral("BoundControlEditable may not be called with two non-Zero indexes."));
    const Bound* bound = nullptr;
    if (CtlIndex != 0) {
        if (CtlIndex > 0 && CtlIndex <= static_cast<short>(mBound.size()) && mBound[static_cast<std::size_t>(CtlIndex - 1)].control)
            bound = &mBound[static_cast<std::size_t>(CtlIndex - 1)];
    } else {
        bound = BoundOfField(RsFieldIndex);
    }
    if (!bound)
        return false;
    QObject* c = bound->control;
    if (!CBool(GetProperty(c, QStringLiteral("Enabled"))))
        return false;
    switch (bound->kind) {
    case Kind::TextBox:
    case Kind::ProdCode:
    case Kind::Combo: return !CBool(GetProperty(c, QStringLiteral("Locked")));
    case Kind::Dropdown:
    case Kind::Number:
    case Kind::TDBNumber:
    case Kind::Date: return !CBool(GetProperty(c, QStringLiteral("ReadOnly")));
    case Kind::CheckBox:
    case Kind::Unknown: break;
    }
    return true;
}

// Reading the controls ----------------------------------------------------------------------

Variant DataBindingSource::ReadFromControl(const Bound& bound, Field& field)
{
    QObject* c = bound.control;
    switch (bound.kind) {
    case Kind::TextBox:
    case Kind::ProdCode: {
        const QString text = RightTrimmed(CStr(GetProperty(c, QStringLiteral("Text"))));
        if (text.isEmpty())
            return (field.Attributes() & adFldIsNullable) ? Variant::Null() : Variant(QString());
        return text;
    }
    case Kind::Number:
        return IsTextFieldType(field.Type()) ? GetProperty(c, QStringLiteral("DisplayText")) : GetProperty(c, QStringLiteral("Value"));
    case Kind::TDBNumber:
    case Kind::Date:
    case Kind::CheckBox: return GetProperty(c, QStringLiteral("Value"));
    case Kind::Combo: return GetProperty(c, QStringLiteral("BoundText"));
    case Kind::Dropdown: return GetProperty(c, QStringLiteral("BoundValue"));
    case Kind::Unknown: ShowUnknownKind(); return {};
    }
    return {};
}

Variant DataBindingSource::GetControlValue(int i, bool& cancel)
{
    Field* field = mRS->Fields()->Item(i);
    const Bound* bound = BoundOfField(i);
    Variant value = bound ? ReadFromControl(*bound, *field) : field->Value();
    value = NullIfEmpty(value);
    if (IsNumericFieldType(field->Type()) && value.IsString())
        value = CCur(value);
    if (!IsNumericFieldType(field->Type()) && ServerIsOracle())
        value = TranslateForOracle(value, true);
    emit DataSaveToSource(field->Name(), value, cancel);
    return value;
}

bool DataBindingSource::PopulateRSFromControls()
{
    if (!IsRecordValid())
        throw Error(ObjectErrorBase, ErrorSource(".PopulateRSFromControls"),
                    QStringLiteral("The data cannot be saved because the current record is not valid."));
    const bool editWasPending = mRS->EditMode() != adEditNone;
    Fields* fields = mRS->Fields();
    std::vector<std::pair<int, Variant>> values;
    for (int i = 0; i < fields->Count(); ++i) {
        if ((fields->Item(i)->Attributes() & (adFldUpdatable | adFldUnknownUpdatable)) == 0)
            continue;
        bool cancel = false;
        Variant value = GetControlValue(i, cancel);
        if (cancel)
            return false;
        values.emplace_back(i, std::move(value));
    }
    std::vector<std::pair<int, Variant>> changed;
    for (auto& [i, value] : values) {
        Field* field = fields->Item(i);
        if (ValuesEqual(value, field->Value(), true))
            continue;
        if ((field->Attributes() & adFldIsNullable) == 0 && (value.IsNull() || value.IsEmpty()) && mAutoSetUpdated &&
            !IsStampField(field->Name()))
            throw Error(ObjectErrorBase, ErrorSource(".PopulateRSFromControls"),
                        QStringLiteral("Database field \"%1\" is required.").arg(field->Name()));
        changed.emplace_back(i, value);
    }
    std::vector<std::pair<int, Variant>> previous;
    for (auto& [i, value] : changed) {
        Field* field = fields->Item(i);
        const Variant before = field->Value();
        try {
            field->SetValue(value);
        } catch (const Error& e) {
            // Undo what this save wrote: put back the values of an edit that was already open,
            // or drop the edit this save opened.
            if (editWasPending) {
                for (auto& [j, old] : previous)
                    fields->Item(j)->SetValue(old);
            } else if (mRS->EditMode() != adEditNone) {
                mRS->CancelUpdate();
            }
            throw Error(ObjectErrorBase, ErrorSource(".PopulateRSFromControls"),
                        QStringLiteral("Unable to set database field \"%1\" to a new value: %2").arg(field->Name(), e.Description()));
        }
        previous.emplace_back(i, before);
    }
    return true;
}

// Editing -----------------------------------------------------------------------------------

void DataBindingSource::Edit()
{
    if (mEditMode != ZqDataViewOnly)
        throw Error(ObjectErrorBase, ErrorSource(".Add"), QStringLiteral("Save or Cancel the current changes first."));
    emit RecordEditStart(ZqDataEditing);
    mEditMode = ZqDataEditing;
}

void DataBindingSource::Add()
{
    if (mEditMode != ZqDataViewOnly)
        throw Error(ObjectErrorBase, ErrorSource(".Add"), QStringLiteral("Save or Cancel the current changes first."));
    ado::Recordset& rs = RS(".Add");
    emit RecordEditStart(ZqDataAdding);
    const OwnMove own(mOwnMoves);
    rs.AddNew();
    mEditMode = ZqDataAdding;
}

void DataBindingSource::Delete()
{
    RS(".Delete");
    const OwnMove own(mOwnMoves);
    mRS->Delete(adAffectCurrent);
    if (!mRS->IsEOF()) {
        mRS->MoveNext();
        if (mRS->IsEOF() && !mRS->IsBOF())
            mRS->MovePrevious();
    }
    if (mAutoSaveBatch)
        SaveBatch();
}

void DataBindingSource::Cancel()
{
    RS(".Cancel");
    const OwnMove own(mOwnMoves);
    if (mAutoSaveBatch) {
        if (mEditMode == ZqDataAdding)
            Delete();
        CancelBatch();
    } else {
        if (mEditMode == ZqDataAdding)
            Delete();
        if (mEditMode == ZqDataEditing)
            DisplayRecord();
    }
    mEditMode = ZqDataViewOnly;
}

void DataBindingSource::CancelBatch()
{
    RS(".CancelBatch");
    const OwnMove own(mOwnMoves);
    mRS->CancelBatch(adAffectAll);
    Variant bookmark;
    const bool onRecord = !mRS->IsBOF() && !mRS->IsEOF();
    if (onRecord && (mRS->Status() & adRecDeleted) == 0)
        bookmark = mRS->Bookmark();
    mRS->SetSort(mRS->Sort());  // sorts again after the cancel
    if (!(mRS->IsBOF() && mRS->IsEOF()) && !bookmark.IsEmpty())
        mRS->SetBookmark(bookmark);
    if (mRS->IsBOF() && !mRS->IsEOF()) {
        mRS->MoveFirst();
    } else if (mRS->IsEOF() && !mRS->IsBOF()) {
        mRS->MoveLast();
    } else if (!mRS->IsBOF() && !mRS->IsEOF()) {
        if (mRS->Status() & adRecDeleted) {
            mRS->MoveNext();
            if (mRS->IsEOF() && mRS->RecordCount() > 0)
                mRS->MoveLast();
        } else {
            DisplayRecord();
        }
    }
    mEditMode = ZqDataViewOnly;
}

bool DataBindingSource::Save()
{
    if (mParentForm || GetParentForm(this)) {
        Form* form = mParentForm ? mParentForm.data() : GetParentForm(this);
        try {
            form->ValidateControls();
        } catch (const Error&) {
            return false;  // a control would not give up the focus
        }
    }
    if (!PopulateRSFromControls())
        return false;
    const OwnMove own(mOwnMoves);
    if (mRS->EditMode() != adEditNone) {
        if (mAutoSetUpdated) {
            Fields* fields = mRS->Fields();
            for (int i = 0; i < fields->Count(); ++i) {
                Field* field = fields->Item(i);
                try {
                    if (IsUpdatedBy(field->Name())) {
                        if (QObject* user = SharedContext::ForThisThread().User)
                            field->SetValue(GetProperty(user, QStringLiteral("UserId")));
                        else
                            qCWarning(lcBinding).noquote() << Name() << ": the stamp field" << field->Name()
                                                           << "is not set: no user was given to InitZqControls";
                    } else if (IsUpdatedAt(field->Name())) {
                        auto database = clsDatabase::Current();
                        if (database && database->gcn())
                            field->SetValue(Variant(database->ServerDateTime()));
                        else
                            qCWarning(lcBinding).noquote() << Name() << ": the stamp field" << field->Name()
                                                           << "is not set: no connection was given to clsDatabase.gcn";
                    }
                } catch (const Error&) {
                    // A stamp that cannot be set does not stop the save.
                }
            }
        }
        try {
            mRS->Update();
        } catch (const Error& e) {
            MsgBox(QStringLiteral("Unable to save the record.\r\n\r\n") + e.Description(), vbCritical);
            return false;
        }
    }
    const bool saved = mAutoSaveBatch ? SaveBatch() : true;
    if (saved) {
        mEditMode = ZqDataViewOnly;
        if (mAutoSaveBatch)
            DisplayRecord();
    }
    return saved;
}

bool DataBindingSource::SaveBatch()
{
    RS(".SaveBatch");
    const OwnMove own(mOwnMoves);
    QString description;
    try {
        mRS->UpdateBatch(adAffectAllChapters);
        return true;
    } catch (const Error& e) {
        description = e.Description();
    }
    if (!mAutoOverwriteChanges)
        return false;
    // "Last one wins": fresh underlying values make the next update overwrite the other user's
    // change; a record the other user removed cannot be saved at all. A failed resync still
    // leaves the removed-record check and the second update to tell what happened.
    try {
        if (mRS->Status() & adRecConcurrencyViolation)
            mRS->Resync(adAffectCurrent, adResyncUnderlyingValues);
    } catch (const Error& e) {
        description = e.Description();
    }
    try {
        if (mRS->Status() & adRecDBDeleted) {
            MsgBox(QStringLiteral("Another user has removed this record whilst you were editing it!\r\n\r\nYour changes "
                                  "have been discarded."),
                   vbExclamation);
            CancelBatch();
            return true;
        }
        mRS->UpdateBatch(adAffectAll);
        return true;
    } catch (const Error& e) {
        description = e.Description();
    }
    MsgBox(QStringLiteral("Unable to save the record.\r\n\r\n") + description, vbCritical);
    return false;
}

Variant DataBindingSource::Resync(int AffectRecords, int ResyncValues)
{
    RS(".Resync");
    const OwnMove own(mOwnMoves);
    mRS->Resync(AffectRecords, ResyncValues);
    mRS->SetBookmark(mRS->Bookmark());  // shows the record again
    return {};
}

// Change tests ------------------------------------------------------------------------------

bool DataBindingSource::DataFieldChanged(const QString& DataField)
{
    Variant current, original;
    return DataFieldChanged(DataField, current, original);
}

bool DataBindingSource::DataFieldChanged(const QString& DataField, Variant& FieldValueCur, Variant& FieldValueOrig)
{
    if (!IsRecordValid())
        return false;
    const OwnMove own(mOwnMoves);
    // Only the recordset's pending edit goes, as in DataChanged; the control's edit mode stays.
    if (mRS->EditMode() == adEditInProgress)
        mRS->CancelBatch(adAffectAll);
    const int i = FieldIndexNamed(DataField);
    if (i < 0)
        RaiseAdo(ado::adErrItemNotFound, FieldsSource);
    Field* field = mRS->Fields()->Item(i);
    bool cancel = false;
    Variant current = GetControlValue(i, cancel);
    const Variant earlier = mRS->EditMode() == adEditAdd ? NullIfEmpty(field->OriginalValue()) : field->Value();
    const Bound* bound = BoundOfField(i);
    if (bound && bound->kind == Kind::TextBox && current.IsNull() && (field->Attributes() & adFldIsNullable) == 0)
        current = QString();
    const bool changed = !ValuesEqual(current, earlier, true);
    if (changed) {
        FieldValueCur = current;
        FieldValueOrig = earlier;
    }
    return changed;
}

bool DataBindingSource::DataChanged()
{
    if (!IsRecordValid())
        return false;
    const OwnMove own(mOwnMoves);
    Fields* fields = mRS->Fields();
    if (mRS->EditMode() == adEditAdd) {
        const bool oracle = ServerIsOracle();
        for (int i = 0; i < fields->Count(); ++i) {
            if (!BoundControlEditable(static_cast<short>(i), 0))
                continue;
            Field* field = fields->Item(i);
            bool cancel = false;
            Variant current = NullIfEmpty(GetControlValue(i, cancel));
            Variant earlier = NullIfEmpty(field->OriginalValue());
            const bool translate = oracle && !IsNumericFieldType(field->Type());
            if (translate)
                earlier = TranslateForOracle(earlier, false);
            emit DataReadFromSource(field->Name(), earlier, RDR_AddNewData);
            const Bound* bound = BoundOfField(i);
            if (bound && (bound->kind == Kind::TextBox || bound->kind == Kind::ProdCode) && current.IsNull() &&
                (field->Attributes() & adFldIsNullable) == 0)
                current = QString();
            emit DataSaveToSource(field->Name(), current, cancel);
            // Both sides compared as the database holds them.
            if (translate)
                earlier = TranslateForOracle(earlier, true);
            if (!ValuesEqual(earlier, current, true))
                return true;
        }
        return false;
    }
    if (mRS->EditMode() == adEditInProgress)
        mRS->CancelBatch(adAffectAll);
    for (int i = 0; i < fields->Count(); ++i) {
        if (!BoundControlEditable(static_cast<short>(i), 0))
            continue;
        bool cancel = false;
        if (!ValuesEqual(GetControlValue(i, cancel), fields->Item(i)->Value(), true))
            return true;
    }
    return false;
}

}  // namespace korvex
