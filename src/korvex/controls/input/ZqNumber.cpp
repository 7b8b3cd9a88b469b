// ZqNumber: the formats built from the settings, the key and validate rules on top of the inner
// box's notifications, and persistence in the order the form files expect.
#include "korvex/controls/input/ZqNumber.h"

#include "korvex/core/ControlRoutines.h"
#include "korvex/core/Environment.h"
#include "korvex/core/LibMsgBox.h"
#include "korvex/platform/host/ControlRegistry.h"
#include "korvex/platform/numberbox/NumberBox.h"
#include "korvex/platform/system/MessageBoxService.h"
#include "korvex/runtime/Conversions.h"
#include "korvex/runtime/Error.h"
#include "korvex/runtime/Format.h"

#include <QScopedValueRollback>
#include <QTimer>

namespace korvex {

KORVEX_REGISTER_CONTROL(ZqNumber);

namespace {

const Variant DefaultMinValue = Currency::FromScaled(-99999999900);
const Variant DefaultMaxValue = Currency::FromScaled(99999999900);

// The magnitude of a currency amount in ten-thousandths, without overflow at the minimum.
std::uint64_t MagnitudeOf(Currency value)
{
    const std::int64_t scaled = value.Scaled();
    return scaled < 0 ? 0 - static_cast<std::uint64_t>(scaled) : static_cast<std::uint64_t>(scaled);
}

// Digits of the integer part of the larger bound (the maximum when they are equal), 1 below 1.
int IntegerDigitsOfLargerBound(Currency minValue, Currency maxValue)
{
    const std::uint64_t larger = std::max(MagnitudeOf(minValue), MagnitudeOf(maxValue));
    std::uint64_t whole = larger / Currency::Scale;
    int digits = 1;
    while (whole >= 10) {
        whole /= 10;
        ++digits;
    }
    return digits;
}

// The integer part of the format: "9"s for optional positions and a final "0", grouped the way
// the user's locale groups, with "," as the group marker.
QString IntegerPattern(int digits, bool thousandsSeparators)
{
    QString pattern = QString(digits - 1, QLatin1Char('9')) + QLatin1Char('0');
    if (thousandsSeparators) {
        pattern = Format(Variant(pattern.toDouble()), QStringLiteral("#,0"));
        pattern.replace(GetLocaleString(LOCALE_STHOUSAND, QStringLiteral(",")), QStringLiteral(","));
    }
    return pattern;
}

}  // namespace

ZqNumber::ZqNumber(QWidget* parent) : UserControl(parent), mNumber(new NumberBox(this))
{
    mNumber->SetName(QStringLiteral("c1Number"));
    setFocusProxy(mNumber);
    // The range check comes first among Validate's handlers, whichever way the control is
    // validated: the focus leaving the inner box or the form validating its active control.
    connect(this, &Control::Validate, this, &ZqNumber::CheckRange);
    ConnectInnerEvents();
    resize(120, 21);
    ApplyNumberFormat(DefaultMinValue, DefaultMaxValue);
}

ZqNumber::~ZqNumber()
{
    ReleaseInner();
}

void ZqNumber::ConnectInnerEvents()
{
    connect(mNumber, &NumberBox::Change, this, [this] {
        if (!mWritingInner)
            emit Change();
    });
    connect(mNumber, &NumberBox::SpinDown, this, &ZqNumber::SpinDown);
    connect(mNumber, &NumberBox::SpinUp, this, &ZqNumber::SpinUp);
    connect(mNumber, &Control::Click, this, [this] {
        if (!mWritingInner)
            emit Click();
    });
    connect(mNumber, &Control::DblClick, this, &Control::DblClick);
    connect(mNumber, &Control::KeyDown, this, &ZqNumber::c1Number_KeyDown);
    connect(mNumber, &Control::KeyPress, this, &ZqNumber::c1Number_KeyPress);
    connect(mNumber, &Control::KeyUp, this, [this](short& KeyCode, short& Shift) { emit KeyUp(KeyCode, Shift); });
    connect(mNumber, &Control::MouseDown, this,
            [this](short& Button, short& Shift, float& X, float& Y) { emit MouseDown(Button, Shift, X, Y); });
    connect(mNumber, &Control::MouseMove, this,
            [this](short& Button, short& Shift, float& X, float& Y) { emit MouseMove(Button, Shift, X, Y); });
    connect(mNumber, &Control::MouseUp, this,
            [this](short& Button, short& Shift, float& X, float& Y) { emit MouseUp(Button, Shift, X, Y); });
    connect(mNumber, &Control::GotFocus, this, &Control::GotFocus);
    connect(mNumber, &Control::LostFocus, this, &Control::LostFocus);
    connect(mNumber, &Control::Validate, this, [this](bool& Cancel) { emit Validate(Cancel); });
}

void ZqNumber::ReleaseInner()
{
    if (mReleased)
        return;
    mReleased = true;
    disconnect(mNumber, nullptr, this, nullptr);
    mNumber->SetEnabled(false);
}

void ZqNumber::Terminate()
{
    ReleaseInner();
}

// Formats ------------------------------------------------------------------------------------

void ZqNumber::ApplyNumberFormat(const Variant& minValue, const Variant& maxValue)
{
    const Currency lower = CCur(minValue);
    const Currency upper = CCur(maxValue);
    if (lower > upper)
        Raise(vbErrInvalidPropertyValue, QStringLiteral("ZqNumber.MinValue"));

    QString format = IntegerPattern(IntegerDigitsOfLargerBound(lower, upper), mThousandsSeparators);
    format.replace(QLatin1Char('9'), mSuppressLeadingZeroes ? QLatin1Char('#') : QLatin1Char('0'));
    if (mDecimalPlaces > 0)
        format += QLatin1Char('.') + QString(mDecimalPlaces, QLatin1Char('0'));
    if (lower < Currency()) {
        if (mNegativeStyle == zqnnsLeadingMinus)
            format = format + QStringLiteral(";-") + format;
        else if (mNegativeStyle == zqnnsBrackets)
            format = format + QStringLiteral(";(") + format + QLatin1Char(')');
    }
    QString displayFormat = format;
    if (mBlankWhenZero)
        displayFormat += QString(3 - CountOccurrences(format, QStringLiteral(";")), QLatin1Char(';')) + QStringLiteral("{}");

    const QScopedValueRollback<bool> writing(mWritingInner, true);
    const Variant value = mNumber->Value();
    mNumber->SetFormat(format);
    mNumber->SetDisplayFormat(displayFormat);
    // Never let the inner minimum pass the inner maximum on the way.
    if (Compare(Variant(lower), mNumber->MaxValue()) == Comparison::Greater) {
        mNumber->SetMaxValue(upper);
        mNumber->SetMinValue(lower);
    } else {
        mNumber->SetMinValue(lower);
        mNumber->SetMaxValue(upper);
    }
    mNumber->SetValue(value);
    mNumber->SetDecimalSeparator(GetLocaleString(LOCALE_SDECIMAL, QStringLiteral(".")));
    mNumber->SetThousandSeparator(GetLocaleString(LOCALE_STHOUSAND, QStringLiteral(",")));
}

// Properties ---------------------------------------------------------------------------------

bool ZqNumber::ReadOnly() const
{
    return mNumber->ReadOnly();
}

void ZqNumber::ApplyReadOnly(bool readOnly)
{
    EnableControl(mNumber, !readOnly, false);
    SetTabStop(mNumber->TabStop());
    mNumber->SetNegativeColor(mNumber->ForeColor());
}

void ZqNumber::SetReadOnly(bool readOnly)
{
    ApplyReadOnly(readOnly);
    PropertyChanged(QStringLiteral("ReadOnly"));
}

Variant ZqNumber::Value() const
{
    return mNumber->Value();
}

void ZqNumber::SetValue(const Variant& value)
{
    mNumber->SetValue(value);
    PropertyChanged(QStringLiteral("Value"));
}

bool ZqNumber::ValueIsNull() const
{
    return mNumber->ValueIsNull();
}

void ZqNumber::SetDecimalPlaces(std::uint8_t places)
{
    Reformat(mDecimalPlaces, places, QStringLiteral("DecimalPlaces"));
}

StdFont* ZqNumber::Font() const
{
    return mNumber->Font();
}

QObject* ZqNumber::FontObject() const
{
    return mNumber->FontObject();
}

void ZqNumber::SetFontObject(QObject* font)
{
    mNumber->SetFontObject(font);
    PropertyChanged(QStringLiteral("Font"));
}

Variant ZqNumber::MaxValue() const
{
    return mNumber->MaxValue();
}

void ZqNumber::SetMaxValue(const Variant& value)
{
    ApplyNumberFormat(MinValue(), value);
    PropertyChanged(QStringLiteral("MaxValue"));
}

Variant ZqNumber::MinValue() const
{
    return mNumber->MinValue();
}

void ZqNumber::SetMinValue(const Variant& value)
{
    ApplyNumberFormat(value, MaxValue());
    PropertyChanged(QStringLiteral("MinValue"));
}

void ZqNumber::SetAllowNullSelection(bool allow)
{
    mAllowNullSelection = allow;
    PropertyChanged(QStringLiteral("AllowNullSelection"));
}

void ZqNumber::ApplyEnabled(bool enabled)
{
    UserControl::SetEnabled(enabled);
    mNumber->SetEnabled(enabled);
}

void ZqNumber::SetEnabled(bool enabled)
{
    ApplyEnabled(enabled);
    PropertyChanged(QStringLiteral("Enabled"));
}

void ZqNumber::SetTabStop(bool tabStop)
{
    UserControl::SetTabStop(tabStop);
    mNumber->SetTabStop(tabStop);
}

short ZqNumber::BorderStyle() const
{
    return mNumber->BorderStyle();
}

void ZqNumber::SetBorderStyle(short style)
{
    mNumber->SetBorderStyle(style);
    PropertyChanged(QStringLiteral("BorderStyle"));
}

QString ZqNumber::DisplayText() const
{
    return mNumber->DisplayText();
}

template <class T>
void ZqNumber::Reformat(T& setting, T value, const QString& propertyName)
{
    const T old = setting;
    setting = value;
    try {
        ApplyNumberFormat(MinValue(), MaxValue());
    } catch (...) {
        setting = old;
        throw;
    }
    PropertyChanged(propertyName);
}

void ZqNumber::SetSuppressLeadingZeroes(bool suppress)
{
    Reformat(mSuppressLeadingZeroes, suppress, QStringLiteral("SuppressLeadingZeroes"));
}

void ZqNumber::SetBlankWhenZero(bool blank)
{
    Reformat(mBlankWhenZero, blank, QStringLiteral("BlankWhenZero"));
}

void ZqNumber::SetThousandsSeparators(bool separators)
{
    Reformat(mThousandsSeparators, separators, QStringLiteral("ThousandsSeparators"));
}

void ZqNumber::SetNegativeStyle(int style)
{
    Reformat(mNegativeStyle, style, QStringLiteral("NegativeStyle"));
}

bool ZqNumber::SpinButtonVisible() const
{
    return mNumber->SpinVisible() == NumberBox::SpinShown;
}

void ZqNumber::SetSpinButtonVisible(bool visible)
{
    mNumber->SetSpinVisible(visible ? NumberBox::SpinShown : NumberBox::SpinHidden);
    PropertyChanged(QStringLiteral("SpinButtonVisible"));
}

bool ZqNumber::SpinEnabled() const
{
    return mNumber->SpinEnabled();
}

void ZqNumber::SetSpinEnabled(bool enabled)
{
    mNumber->SetSpinEnabled(enabled);
    PropertyChanged(QStringLiteral("SpinEnabled"));
}

short ZqNumber::AlignHorizontal() const
{
    return mNumber->AlignHorizontal();
}

void ZqNumber::SetAlignHorizontal(short alignment)
{
    mNumber->SetAlignHorizontal(alignment);
    PropertyChanged(QStringLiteral("AlignHorizontal"));
}

OleColor ZqNumber::BackColor() const
{
    return mNumber->BackColor();
}

void ZqNumber::SetBackColor(OleColor color)
{
    mNumber->SetBackColor(color);
    PropertyChanged(QStringLiteral("BackColor"));
}

OleColor ZqNumber::ForeColor() const
{
    return mNumber->ForeColor();
}

void ZqNumber::SetForeColor(OleColor color)
{
    mNumber->SetForeColor(color);
    PropertyChanged(QStringLiteral("ForeColor"));
}

QString ZqNumber::SelText() const
{
    return mNumber->SelText();
}

void ZqNumber::SetSelText(const QString& text)
{
    mNumber->SetSelText(text);
    PropertyChanged(QStringLiteral("SelText"));
}

int ZqNumber::SelStart() const
{
    return mNumber->SelStart();
}

void ZqNumber::SetSelStart(int start)
{
    mNumber->SetSelStart(start);
    PropertyChanged(QStringLiteral("SelStart"));
}

int ZqNumber::SelLength() const
{
    return mNumber->SelLength();
}

void ZqNumber::SetSelLength(int length)
{
    mNumber->SetSelLength(length);
    PropertyChanged(QStringLiteral("SelLength"));
}

void ZqNumber::Refresh()
{
    mNumber->Refresh();
}

void ZqNumber::Resize()
{
    mNumber->Move(0, 0, ScaleWidth(), ScaleHeight());
}

// Rules on the inner box's notifications --------------------------------------------------------

void ZqNumber::c1Number_KeyDown(short& KeyCode, short& Shift)
{
    // Deleting the whole text empties the field the way the field allows.
    if ((KeyCode == 8 || KeyCode == 46) && !mNumber->ReadOnly() && mNumber->SelText() == mNumber->DisplayText()) {
        if (mAllowNullSelection)
            mNumber->SetValue(Variant::Null());
        else if (Compare(MaxValue(), Variant(std::int16_t{0})) == Comparison::Less ||
                 Compare(MinValue(), Variant(std::int16_t{0})) == Comparison::Greater)
            mNumber->SetValue(MinValue());
        else
            mNumber->SetValue(std::int16_t{0});
    }
    emit KeyDown(KeyCode, Shift);
}

void ZqNumber::c1Number_KeyPress(short& KeyAscii)
{
    // No minus sign where the range has no negative values.
    if (KeyAscii == 45 && Compare(MinValue(), Variant(std::int16_t{0})) != Comparison::Less)
        KeyAscii = 0;
    if (KeyAscii != 0)
        emit KeyPress(KeyAscii);
}

void ZqNumber::CheckRange(bool& Cancel)
{
    const Variant value = mNumber->Value();
    if (value.IsNull() || mNumber->ReadOnly())
        return;
    if (Compare(value, MinValue()) != Comparison::Less && Compare(value, MaxValue()) != Comparison::Greater)
        return;
    QString prompt = QStringLiteral("Value beyond acceptable range.");
    LibMsgBox(prompt, vbExclamation, QString(), 0, QString());
    Cancel = true;
    // The focus may be on its way elsewhere: bring it back once it has arrived.
    QTimer::singleShot(0, mNumber, [number = mNumber] { number->SetFocus(); });
}

// Lifecycle ------------------------------------------------------------------------------------

void ZqNumber::InitProperties()
{
    ApplyEnabled(true);
    mNegativeStyle = zqnnsBrackets;
    mSuppressLeadingZeroes = true;
    mThousandsSeparators = true;
    mNumber->SetSpinVisible(NumberBox::SpinHidden);
    mNumber->SetSpinEnabled(true);
    mNumber->SetBackColor(vbWindowBackground);
    mDecimalPlaces = 2;
    mNumber->SetForeColor(vbWindowText);
    mNumber->Font()->CopyFrom(*Ambient()->Font());
    ApplyNumberFormat(DefaultMinValue, DefaultMaxValue);
}

void ZqNumber::ReadProperties(PropertyBag& bag)
{
    ApplyReadOnly(CBool(bag.ReadProperty(QStringLiteral("ReadOnly"), false)));
    mAllowNullSelection = CBool(bag.ReadProperty(QStringLiteral("AllowNullSelection"), false));
    mDataField = CStr(bag.ReadProperty(QStringLiteral("DataField"), QString()));
    ApplyEnabled(CBool(bag.ReadProperty(QStringLiteral("Enabled"), true)));
    mNumber->SetBorderStyle(CInt(bag.ReadProperty(QStringLiteral("BorderStyle"), std::int16_t{1})));
    mNumber->SetFontObject(bag.ReadProperty(QStringLiteral("Font"), Variant(static_cast<QObject*>(Ambient()->Font()))).Object());
    mSuppressLeadingZeroes = CBool(bag.ReadProperty(QStringLiteral("SuppressLeadingZeroes"), true));
    mBlankWhenZero = CBool(bag.ReadProperty(QStringLiteral("BlankWhenZero"), false));
    mThousandsSeparators = CBool(bag.ReadProperty(QStringLiteral("ThousandsSeparators"), true));
    mNegativeStyle = CLng(bag.ReadProperty(QStringLiteral("NegativeStyle"), std::int32_t{zqnnsBrackets}));
    mNumber->SetSpinVisible(CLng(bag.ReadProperty(QStringLiteral("SpinButtonVisible"), std::int32_t{NumberBox::SpinHidden})));
    mNumber->SetSpinEnabled(CBool(bag.ReadProperty(QStringLiteral("SpinEnabled"), true)));
    mNumber->SetAlignHorizontal(CInt(bag.ReadProperty(QStringLiteral("AlignHorizontal"), std::int16_t{1})));
    mDecimalPlaces = CByte(bag.ReadProperty(QStringLiteral("DecimalPlaces"), std::uint8_t{2}));
    const bool readOnly = mNumber->ReadOnly();
    mNumber->SetBackColor(static_cast<OleColor>(CLng(bag.ReadProperty(
        QStringLiteral("BackColor"), static_cast<std::int32_t>(readOnly ? vbButtonFace : vbWindowBackground)))));
    mNumber->SetForeColor(static_cast<OleColor>(CLng(bag.ReadProperty(
        QStringLiteral("ForeColor"), static_cast<std::int32_t>(readOnly ? vbButtonText : vbWindowText)))));
    const Variant minValue = bag.ReadProperty(QStringLiteral("MinValue"), DefaultMinValue);
    const Variant maxValue = bag.ReadProperty(QStringLiteral("MaxValue"), DefaultMaxValue);
    ApplyNumberFormat(minValue, maxValue);
    mNumber->SetValue(bag.ReadProperty(QStringLiteral("Value"), Variant::Null()));
}

void ZqNumber::WriteProperties(PropertyBag& bag)
{
    const bool readOnly = mNumber->ReadOnly();
    bag.WriteProperty(QStringLiteral("ReadOnly"), readOnly, false);
    bag.WriteProperty(QStringLiteral("Value"), Value(), Variant::Null());
    bag.WriteProperty(QStringLiteral("MaxValue"), MaxValue(), DefaultMaxValue);
    bag.WriteProperty(QStringLiteral("MinValue"), MinValue(), DefaultMinValue);
    bag.WriteProperty(QStringLiteral("AllowNullSelection"), mAllowNullSelection, false);
    bag.WriteProperty(QStringLiteral("DataField"), mDataField, QString());
    bag.WriteProperty(QStringLiteral("Enabled"), Enabled(), true);
    bag.WriteProperty(QStringLiteral("BorderStyle"), BorderStyle(), std::int16_t{1});
    bag.WriteProperty(QStringLiteral("Font"), Variant(FontObject()), Variant(static_cast<QObject*>(Ambient()->Font())));
    bag.WriteProperty(QStringLiteral("SuppressLeadingZeroes"), mSuppressLeadingZeroes, true);
    bag.WriteProperty(QStringLiteral("BlankWhenZero"), mBlankWhenZero, false);
    bag.WriteProperty(QStringLiteral("ThousandsSeparators"), mThousandsSeparators, true);
    bag.WriteProperty(QStringLiteral("NegativeStyle"), std::int32_t{mNegativeStyle}, std::int32_t{zqnnsBrackets});
    bag.WriteProperty(QStringLiteral("SpinButtonVisible"), std::int32_t{mNumber->SpinVisible()}, std::int32_t{NumberBox::SpinHidden});
    bag.WriteProperty(QStringLiteral("SpinEnabled"), SpinEnabled(), true);
    bag.WriteProperty(QStringLiteral("AlignHorizontal"), AlignHorizontal(), std::int16_t{1});
    bag.WriteProperty(QStringLiteral("DecimalPlaces"), mDecimalPlaces, std::uint8_t{2});
    bag.WriteProperty(QStringLiteral("BackColor"), static_cast<std::int32_t>(BackColor()),
                      static_cast<std::int32_t>(readOnly ? vbButtonFace : vbWindowBackground));
    bag.WriteProperty(QStringLiteral("ForeColor"), static_cast<std::int32_t>(ForeColor()),
                      static_cast<std::int32_t>(readOnly ? vbButtonText : vbWindowText));
}

}  // namespace korvex
