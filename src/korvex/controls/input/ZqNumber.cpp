// ZqNumber: the formats built from the settings, the key and validate rules on top of the inner
// box's notifications, and persistence in the order the form files expect.
#include "korvex/controls/input/ZqNumber.h"

#include "korvex/core/ControlRoutines.h"
#include "korvex/core/Environment.h"
#include "korvex/core/LibMsgBox.h"
#include "korvex/platform/host/ControlRegistry.h"
#include "korvex/platform/numberbox/NumberBox.h"
#include "korvex/platform/desktop/MessageBoxService.h"
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
    LoadDeclaredDefaults();
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
    connect(mNumber, &Control::KeyDown, this, &ZqNumber::c1Number_KeyDown);
    connect(mNumber, &Control::KeyPress, this, &ZqNumber::c1Number_KeyPress);
    WrapInner(mNumber, InnerEvent::DblClick | InnerEvent::Mouse | InnerEvent::Validate | InnerEvent::Focus);
    connect(mNumber, &Control::KeyUp, this, &Control::KeyUp);
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
    PropertyChanged("ReadOnly");
}

Variant ZqNumber::Value() const
{
    return mNumber->Value();
}

void ZqNumber::SetValue(const Variant& value)
{
    mNumber->SetValue(value);
    PropertyChanged("Value");
}

bool ZqNumber::ValueIsNull() const
{
    return mNumber->ValueIsNull();
}

void ZqNumber::SetDecimalPlaces(std::uint8_t places)
{
    Reformat(mDecimalPlaces, places, "DecimalPlaces");
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
    RequireValid(qobject_cast<StdFont*>(font) != nullptr, "Font");
    mNumber->SetFontObject(font);
    PropertyChanged("Font");
}

Variant ZqNumber::MaxValue() const
{
    return mNumber->MaxValue();
}

void ZqNumber::SetMaxValue(const Variant& value)
{
    ApplyNumberFormat(MinValue(), value);
    PropertyChanged("MaxValue");
}

Variant ZqNumber::MinValue() const
{
    return mNumber->MinValue();
}

void ZqNumber::SetMinValue(const Variant& value)
{
    ApplyNumberFormat(value, MaxValue());
    PropertyChanged("MinValue");
}

void ZqNumber::SetAllowNullSelection(bool allow)
{
    mAllowNullSelection = allow;
    PropertyChanged("AllowNullSelection");
}

void ZqNumber::ApplyEnabled(bool enabled)
{
    UserControl::SetEnabled(enabled);
    mNumber->SetEnabled(enabled);
}

void ZqNumber::SetEnabled(bool enabled)
{
    ApplyEnabled(enabled);
    PropertyChanged("Enabled");
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
    PropertyChanged("BorderStyle");
}

QString ZqNumber::DisplayText() const
{
    return mNumber->DisplayText();
}

template <class T>
void ZqNumber::Reformat(T& setting, T value, const char* propertyName)
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
    Reformat(mSuppressLeadingZeroes, suppress, "SuppressLeadingZeroes");
}

void ZqNumber::SetBlankWhenZero(bool blank)
{
    Reformat(mBlankWhenZero, blank, "BlankWhenZero");
}

void ZqNumber::SetThousandsSeparators(bool separators)
{
    Reformat(mThousandsSeparators, separators, "ThousandsSeparators");
}

void ZqNumber::SetNegativeStyle(int style)
{
    Reformat(mNegativeStyle, style, "NegativeStyle");
}

bool ZqNumber::SpinButtonVisible() const
{
    return mNumber->SpinVisible() == NumberBox::SpinShown;
}

void ZqNumber::SetSpinButtonVisible(bool visible)
{
    mNumber->SetSpinVisible(visible ? NumberBox::SpinShown : NumberBox::SpinHidden);
    PropertyChanged("SpinButtonVisible");
}

bool ZqNumber::SpinEnabled() const
{
    return mNumber->SpinEnabled();
}

void ZqNumber::SetSpinEnabled(bool enabled)
{
    mNumber->SetSpinEnabled(enabled);
    PropertyChanged("SpinEnabled");
}

short ZqNumber::AlignHorizontal() const
{
    return mNumber->AlignHorizontal();
}

void ZqNumber::SetAlignHorizontal(short alignment)
{
    mNumber->SetAlignHorizontal(alignment);
    PropertyChanged("AlignHorizontal");
}

OleColor ZqNumber::BackColor() const
{
    return mNumber->BackColor();
}

void ZqNumber::SetBackColor(OleColor color)
{
    mNumber->SetBackColor(color);
    PropertyChanged("BackColor");
}

OleColor ZqNumber::ForeColor() const
{
    return mNumber->ForeColor();
}

void ZqNumber::SetForeColor(OleColor color)
{
    mNumber->SetForeColor(color);
    PropertyChanged("ForeColor");
}

QString ZqNumber::SelText() const
{
    return mNumber->SelText();
}

void ZqNumber::SetSelText(const QString& text)
{
    mNumber->SetSelText(text);
    PropertyChanged("SelText");
}

int ZqNumber::SelStart() const
{
    return mNumber->SelStart();
}

void ZqNumber::SetSelStart(int start)
{
    mNumber->SetSelStart(start);
    PropertyChanged("SelStart");
}

int ZqNumber::SelLength() const
{
    return mNumber->SelLength();
}

void ZqNumber::SetSelLength(int length)
{
    mNumber->SetSelLength(length);
    PropertyChanged("SelLength");
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
    // Deleting the whole text, at once or down to its last character, empties the field the
    // way the field allows.
    if ((KeyCode == 8 || KeyCode == 46) && !mNumber->ReadOnly() && DeletesWholeText(KeyCode)) {
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

bool ZqNumber::DeletesWholeText(short keyCode) const
{
    const QString text = mNumber->DisplayText();
    if (!mNumber->SelText().isEmpty() || text.isEmpty())
        return mNumber->SelText() == text;
    // No selection: the key takes the one character before (Backspace) or after (Delete) the
    // caret.
    return text.size() == 1 && mNumber->SelStart() == (keyCode == 8 ? 1 : 0);
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

void ZqNumber::LoadMaxValue(const Variant& maxValue)
{
    // Both bounds are in: the formats follow from them and the other settings just loaded.
    ApplyNumberFormat(mLoadedMinValue, maxValue);
}

const PropertyList& ZqNumber::PersistedProperties() const
{
    static const auto stored = [](auto member) {
        return [member](ZqNumber& c, const auto& value) { c.*member = value; };
    };
    static const PropertyList list =
        Declare<ZqNumber>()
            .Property("ReadOnly", &ZqNumber::ReadOnly, &ZqNumber::ApplyReadOnly, false)
            .Stored("AllowNullSelection", &ZqNumber::AllowNullSelection, stored(&ZqNumber::mAllowNullSelection), false)
            .Stored("DataField", &ZqNumber::DataField, stored(&ZqNumber::mDataField), QString())
            .Property("Enabled", &ZqNumber::Enabled, &ZqNumber::ApplyEnabled, true)
            .Stored("BorderStyle", &ZqNumber::BorderStyle, [](ZqNumber& c, std::int16_t v) { c.mNumber->SetBorderStyle(v); },
                      std::int16_t{1})
            .Stored("Font", &ZqNumber::FontObject, [](ZqNumber& c, QObject* f) { c.mNumber->SetFontObject(f); }, AmbientFont)
            .Stored("SuppressLeadingZeroes", &ZqNumber::SuppressLeadingZeroes, stored(&ZqNumber::mSuppressLeadingZeroes), true)
            .Stored("BlankWhenZero", &ZqNumber::BlankWhenZero, stored(&ZqNumber::mBlankWhenZero), false)
            .Stored("ThousandsSeparators", &ZqNumber::ThousandsSeparators, stored(&ZqNumber::mThousandsSeparators), true)
            .Stored("NegativeStyle", &ZqNumber::NegativeStyle, stored(&ZqNumber::mNegativeStyle), std::int32_t{zqnnsBrackets})
            // A Boolean kept as the inner box's 32-bit visibility; any non-zero value shows it.
            .Stored("SpinButtonVisible", [](const ZqNumber& c) { return std::int32_t{c.mNumber->SpinVisible()}; },
                      [](ZqNumber& c, std::int32_t v) { c.mNumber->SetSpinVisible(v != 0 ? NumberBox::SpinShown : NumberBox::SpinHidden); },
                      std::int32_t{NumberBox::SpinHidden})
            .Stored("SpinEnabled", &ZqNumber::SpinEnabled, [](ZqNumber& c, bool v) { c.mNumber->SetSpinEnabled(v); }, true)
            .Stored("AlignHorizontal", &ZqNumber::AlignHorizontal,
                      [](ZqNumber& c, std::int16_t v) { c.mNumber->SetAlignHorizontal(v); }, std::int16_t{1})
            .Stored("DecimalPlaces", &ZqNumber::DecimalPlaces, stored(&ZqNumber::mDecimalPlaces), std::uint8_t{2})
            // The colours' defaults follow the ReadOnly just loaded.
            .Stored("BackColor", &ZqNumber::BackColor, [](ZqNumber& c, OleColor v) { c.mNumber->SetBackColor(v); },
                      [](const ZqNumber& c) { return c.ReadOnly() ? vbButtonFace : vbWindowBackground; })
            .Stored("ForeColor", &ZqNumber::ForeColor, [](ZqNumber& c, OleColor v) { c.mNumber->SetForeColor(v); },
                      [](const ZqNumber& c) { return c.ReadOnly() ? vbButtonText : vbWindowText; })
            .Stored("MinValue", &ZqNumber::MinValue, stored(&ZqNumber::mLoadedMinValue), DefaultMinValue)
            .Stored("MaxValue", &ZqNumber::MaxValue, &ZqNumber::LoadMaxValue, DefaultMaxValue)
            .Stored("Value", &ZqNumber::Value, [](ZqNumber& c, const Variant& v) { c.mNumber->SetValue(v); }, Variant::Null());
    return list;
}

}  // namespace korvex
