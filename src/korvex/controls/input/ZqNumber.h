// ZqNumber: the library's numeric entry field. It wraps one numeric edit box (c1Number) and
// derives its edit and display formats from a few simple settings and the permitted range,
// takes the separators from the user's regional settings, refuses a minus sign when the range
// has no negative values, turns a deletion of the whole text into Null, zero or the minimum,
// and keeps the focus while the value lies outside the range.
#pragma once

#include "korvex/platform/host/UserControl.h"
#include "korvex/runtime/Variant.h"

namespace korvex {

class NumberBox;

enum ZqNumberNegativeStyles : std::int32_t { zqnnsLeadingMinus = 0, zqnnsBrackets = 1 };

// Events, in the order of their identifiers 1 to 11: Change, SpinDown, SpinUp, Click, DblClick,
// KeyDown, KeyPress, KeyUp, MouseDown, MouseMove, MouseUp (the last six pass their arguments by
// reference, so a handler's change goes back to the inner box). The focus events and Validate
// are the extender's; the range check runs before the host's Validate handlers.
class ZqNumber : public UserControl {
    Q_OBJECT
    Q_CLASSINFO("DefaultProperty", "Value")
    Q_PROPERTY(bool ReadOnly READ ReadOnly WRITE SetReadOnly)
    Q_PROPERTY(korvex::Variant Value READ Value WRITE SetValue)
    Q_PROPERTY(bool ValueIsNull READ ValueIsNull)
    Q_PROPERTY(uchar DecimalPlaces READ DecimalPlaces WRITE SetDecimalPlaces)
    Q_PROPERTY(QObject* Font READ FontObject WRITE SetFontObject)
    Q_PROPERTY(korvex::Variant MaxValue READ MaxValue WRITE SetMaxValue)
    Q_PROPERTY(korvex::Variant MinValue READ MinValue WRITE SetMinValue)
    Q_PROPERTY(bool AllowNullSelection READ AllowNullSelection WRITE SetAllowNullSelection)
    Q_PROPERTY(QString DataField READ DataField WRITE SetDataField)
    Q_PROPERTY(short BorderStyle READ BorderStyle WRITE SetBorderStyle)
    Q_PROPERTY(QString DisplayText READ DisplayText)
    Q_PROPERTY(bool SuppressLeadingZeroes READ SuppressLeadingZeroes WRITE SetSuppressLeadingZeroes)
    Q_PROPERTY(bool BlankWhenZero READ BlankWhenZero WRITE SetBlankWhenZero)
    Q_PROPERTY(bool ThousandsSeparators READ ThousandsSeparators WRITE SetThousandsSeparators)
    Q_PROPERTY(int NegativeStyle READ NegativeStyle WRITE SetNegativeStyle)
    Q_PROPERTY(bool SpinButtonVisible READ SpinButtonVisible WRITE SetSpinButtonVisible)
    Q_PROPERTY(bool SpinEnabled READ SpinEnabled WRITE SetSpinEnabled)
    Q_PROPERTY(short AlignHorizontal READ AlignHorizontal WRITE SetAlignHorizontal)
    Q_PROPERTY(uint BackColor READ BackColor WRITE SetBackColor)
    Q_PROPERTY(uint ForeColor READ ForeColor WRITE SetForeColor)
    Q_PROPERTY(QString SelText READ SelText WRITE SetSelText)
    Q_PROPERTY(int SelStart READ SelStart WRITE SetSelStart)
    Q_PROPERTY(int SelLength READ SelLength WRITE SetSelLength)

public:
    explicit ZqNumber(QWidget* parent = nullptr);
    ~ZqNumber() override;

    bool ReadOnly() const;
    void SetReadOnly(bool readOnly);
    Variant Value() const;
    // Not checked against the range: that happens when the focus leaves.
    void SetValue(const Variant& value);
    bool ValueIsNull() const;
    std::uint8_t DecimalPlaces() const noexcept { return mDecimalPlaces; }
    void SetDecimalPlaces(std::uint8_t places);
    StdFont* Font() const;
    QObject* FontObject() const;
    // Copies the font's attributes into the inner box's font.
    void SetFontObject(QObject* font);
    // The bounds are kept as Currency. Writing one reformats with the other; a minimum above
    // the maximum raises 380 and changes nothing.
    Variant MaxValue() const;
    void SetMaxValue(const Variant& value);
    Variant MinValue() const;
    void SetMinValue(const Variant& value);
    bool AllowNullSelection() const noexcept { return mAllowNullSelection; }
    void SetAllowNullSelection(bool allow);
    const QString& DataField() const noexcept { return mDataField; }
    void SetDataField(const QString& field) { mDataField = field; }
    // Disables the field and its inner box.
    void SetEnabled(bool enabled) override;
    // The extender's tab stop, passed on to the inner box.
    void SetTabStop(bool tabStop) override;
    short BorderStyle() const;
    void SetBorderStyle(short style);
    QString DisplayText() const;
    bool SuppressLeadingZeroes() const noexcept { return mSuppressLeadingZeroes; }
    void SetSuppressLeadingZeroes(bool suppress);
    bool BlankWhenZero() const noexcept { return mBlankWhenZero; }
    void SetBlankWhenZero(bool blank);
    bool ThousandsSeparators() const noexcept { return mThousandsSeparators; }
    void SetThousandsSeparators(bool separators);
    // Values other than the two styles are kept and add no negative section.
    int NegativeStyle() const noexcept { return mNegativeStyle; }
    void SetNegativeStyle(int style);
    bool SpinButtonVisible() const;
    void SetSpinButtonVisible(bool visible);
    bool SpinEnabled() const;
    void SetSpinEnabled(bool enabled);
    short AlignHorizontal() const;
    void SetAlignHorizontal(short alignment);
    OleColor BackColor() const;
    void SetBackColor(OleColor color);
    OleColor ForeColor() const;
    void SetForeColor(OleColor color);
    QString SelText() const;
    void SetSelText(const QString& text);
    int SelStart() const;
    void SetSelStart(int start);
    int SelLength() const;
    void SetSelLength(int length);

    Q_INVOKABLE void Refresh() override;

    NumberBox* c1Number() const noexcept { return mNumber; }

    void Terminate() override;

signals:
    void Change();
    void SpinDown();
    void SpinUp();

protected:
    const PropertyList& PersistedProperties() const override;
    void Resize() override;

private:
    // Builds the edit and display formats from the settings and the range and pushes them, the
    // range and the regional separators into the inner box, keeping its value.
    void ApplyNumberFormat(const Variant& minValue, const Variant& maxValue);
    // Stores a setting the formats depend on and reformats; a refused format puts it back.
    template <class T>
    void Reformat(T& setting, T value, const char* propertyName);
    void LoadMaxValue(const Variant& maxValue);
    void ApplyReadOnly(bool readOnly);
    void ApplyEnabled(bool enabled);
    void ConnectInnerEvents();
    void c1Number_KeyDown(short& KeyCode, short& Shift);
    bool DeletesWholeText(short keyCode) const;
    void c1Number_KeyPress(short& KeyAscii);
    void CheckRange(bool& Cancel);
    // Disables the inner box and stops listening to it, so that nothing it does while going
    // away reaches a control that is being destroyed.
    void ReleaseInner();

    NumberBox* mNumber;
    // The persisted settings take their defaults from the declaration when the control is built.
    bool mSuppressLeadingZeroes{};
    bool mBlankWhenZero{};
    bool mThousandsSeparators{};
    int mNegativeStyle{};
    bool mAllowNullSelection{};
    QString mDataField;
    std::uint8_t mDecimalPlaces{};
    // The minimum read from a form file, applied with the maximum read after it.
    Variant mLoadedMinValue;
    // Set while this control writes the inner box itself: its Change and Click are not ours.
    bool mWritingInner = false;
    bool mReleased = false;
};

}  // namespace korvex
