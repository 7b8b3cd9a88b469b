// DataBindingSource: the invisible control that binds the controls of a form to the current
// record of a recordset. It finds the controls whose DataField names a field, shows every record
// the recordset moves to, and writes the controls back on Save with who/when stamps, resolving
// the conflict when another user changed or deleted the same record ("Last one wins").
#pragma once

#include "korvex/platform/ado/Recordset.h"
#include "korvex/platform/host/UserControl.h"
#include "korvex/runtime/Variant.h"

#include <QPointer>

#include <memory>
#include <vector>

namespace korvex {

class Form;

enum ZqDataEditModes : int { ZqDataViewOnly = 0, ZqDataEditing = 1, ZqDataAdding = 2 };
enum EnumRetrieveDataReasons : int { RDR_DisplayData = 0, RDR_AddNewData = 1 };
enum RecordEditStopReasons : int { resrSaved = 1, resrCancelled = 2 };

class DataBindingSource : public UserControl {
    Q_OBJECT
    Q_PROPERTY(bool AutoSaveBatch READ AutoSaveBatch WRITE SetAutoSaveBatch)
    Q_PROPERTY(bool AutoSetUpdated READ AutoSetUpdated WRITE SetAutoSetUpdated)
    Q_PROPERTY(bool AutoOverwriteChanges READ AutoOverwriteChanges WRITE SetAutoOverwriteChanges)
    Q_PROPERTY(korvex::Variant Recordset READ RecordsetVariant WRITE SetRecordsetVariant)
    Q_PROPERTY(int EditMode READ EditMode)

public:
    explicit DataBindingSource(QWidget* parent = nullptr);
    ~DataBindingSource() override;

    bool AutoSaveBatch() const noexcept { return mAutoSaveBatch; }
    void SetAutoSaveBatch(bool value);
    bool AutoSetUpdated() const noexcept { return mAutoSetUpdated; }
    void SetAutoSetUpdated(bool value);
    // Whether the "Last one wins" rule will automatically overwrite other changes made to this
    // record.
    bool AutoOverwriteChanges() const noexcept { return mAutoOverwriteChanges; }
    void SetAutoOverwriteChanges(bool value);

    // Binds the recordset: the bound controls are found again and the current record shown.
    void SetRecordset(std::shared_ptr<ado::Recordset> recordset);
    const std::shared_ptr<ado::Recordset>& Recordset() const noexcept { return mRS; }
    QObject* RecordsetObject() const { return mRS.get(); }
    // The recordset as late binding hands it over: shared, so that the source keeps it alive.
    Variant RecordsetVariant() const;
    void SetRecordsetVariant(const Variant& recordset);
    int EditMode() const noexcept { return mEditMode; }

    Q_INVOKABLE void Cancel();
    Q_INVOKABLE void CancelBatch();
    Q_INVOKABLE bool DataChanged();
    Q_INVOKABLE bool DataFieldChanged(const QString& DataField, korvex::Variant& FieldValueCur,
                                      korvex::Variant& FieldValueOrig);
    bool DataFieldChanged(const QString& DataField);
    Q_INVOKABLE void Delete();
    Q_INVOKABLE void Edit();
    Q_INVOKABLE bool BoundControlEditable(short RsFieldIndex = 0, short CtlIndex = 0);
    Q_INVOKABLE void Add();
    Q_INVOKABLE korvex::Variant Resync(int AffectRecords = 3, int ResyncValues = 2);
    Q_INVOKABLE void RSCurrentStateStore() {}
    Q_INVOKABLE void RSCurrentStateRestore() {}
    Q_INVOKABLE bool Save();
    Q_INVOKABLE bool SaveBatch();

    // The bound controls in discovery order (numbered from 1 in the rules; index 0 here).
    QList<QObject*> BoundControls() const;
    // Shows the current record in the bound controls; false when there is no valid record.
    bool DisplayRecord();

    // Invisible at run time, a small labelled box while the form is designed.


signals:
    void DataReadFromSource(const QString& DataField, korvex::Variant& Value, int RetrieveDataReason);
    void DataSaveToSource(const QString& DataField, korvex::Variant& Value, bool& Cancel);
    void RecordEditStart(int EditMode);
    // Part of the interface; no operation raises it.
    void RecordEditStop(int EditMode, int Reason);
    void RecordMove(bool RecordIsValid);

protected:
    const PropertyList& PersistedProperties() const override;
    void Paint(QPainter& painter) override;

private:
    // The kinds of control the binding contract knows, by type name (standard text and check
    // boxes also by kind).
    enum class Kind { TextBox, ProdCode, Number, TDBNumber, Date, CheckBox, Combo, Dropdown, Unknown };
    struct Bound {
        QPointer<QObject> control;
        Kind kind = Kind::Unknown;
        QString dataField;  // as written on the control
        QString fieldName;  // normalised
    };

    void EnumerateBoundControls();
    bool IsRecordValid() const;
    void DisplayField(int field, bool oracle);
    void ClearBoundControls();
    void WriteToControl(const Bound& bound, ado::Field& field, Variant value);
    void ClearControl(const Bound& bound);
    Variant ReadFromControl(const Bound& bound, ado::Field& field);
    // The value of field i as the controls give it; `cancel` is set by a DataSaveToSource handler.
    Variant GetControlValue(int field, bool& cancel);
    bool PopulateRSFromControls();
    void OnWillMove(ado::EventStatusEnum& status);
    void OnMoveComplete(const Error* error);
    // The bound recordset for an operation of the source; error 91 while none is set.
    ado::Recordset& RS(const char* member) const;
    const Bound* BoundOfField(int field) const;
    int FieldIndexNamed(const QString& name) const;
    bool ServerIsOracle() const;
    Variant TranslateForOracle(const Variant& value, bool savingToDB) const;
    QString ErrorSource(const char* member) const;
    void ShowUnknownKind() const;
    void AdjustToRange(const Bound& bound, const QString& fieldName, Variant& value, const char* minName,
                       const char* maxName, bool dates) const;
    static Kind KindOf(QObject* control);

    std::shared_ptr<ado::Recordset> mRS;
    QMetaObject::Connection mMoveConnection;
    QMetaObject::Connection mWillMoveConnection;
    // Moves the source makes itself (Add, Delete, the batch operations) are never refused.
    int mOwnMoves = 0;
    int mEditMode = ZqDataViewOnly;
    std::vector<Bound> mBound;
    std::vector<short> mFieldMap;
    int mSourceCount = 0;
    QString mOwnPrefix;
    bool mBindingTested = false;
    bool mToldNoForm = false;
    QPointer<Form> mParentForm;
    // From the declaration when the control is built.
    bool mAutoSaveBatch{};
    bool mAutoSetUpdated{};
    bool mAutoOverwriteChanges{};
};

}  // namespace korvex
