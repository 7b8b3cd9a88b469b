// NumberBox: a QLineEdit that swaps between display text and edit text on focus, a validator
// for typing and pasting, and two spin buttons beside it.
#include "korvex/platform/numberbox/NumberBox.h"

#include "korvex/platform/host/ControlRegistry.h"
#include "korvex/platform/host/PropertyBag.h"
#include "korvex/platform/numberbox/NumberEditValidator.h"
#include "korvex/platform/desktop/ColorConversion.h"
#include "korvex/runtime/Conversions.h"
#include "korvex/runtime/EntryGuard.h"
#include "korvex/runtime/Error.h"
#include "korvex/runtime/RegionalSettings.h"

#include <QFocusEvent>
#include <QKeyEvent>
#include <QLineEdit>
#include <QToolButton>

#include <cmath>
#include <limits>

namespace korvex {

KORVEX_REGISTER_CONTROL(NumberBox);

namespace {

const QString DefaultFormat = QStringLiteral("#,###,##0.00;-#,###,##0.00");
const Variant DefaultMinValue = Currency::FromScaled(-99999999900);
const Variant DefaultMaxValue = Currency::FromScaled(99999999900);
constexpr int SpinWidth = 16;

// A value the box can hold: Null or a finite number.
Variant NumberOrNull(const Variant& value, const QString& source)
{
    switch (value.VarType()) {
    case vbEmpty:
    case vbNull: return Variant::Null();
    case vbInteger:
    case vbLong:
    case vbByte:
    case vbCurrency: return value;
    case vbBoolean: return static_cast<std::int16_t>(*value.As<bool>() ? -1 : 0);
    case vbSingle:
    case vbDouble:
        if (!std::isfinite(CDbl(value)))
            Raise(vbErrInvalidPropertyValue, source);
        return value;
    case vbString: {
        if (!IsNumeric(value))
            Raise(vbErrTypeMismatch, source);
        const double d = CDbl(value);
        if (!std::isfinite(d))
            Raise(vbErrInvalidPropertyValue, source);
        return d;
    }
    default: Raise(vbErrTypeMismatch, source);
    }
}

Variant BoundOf(const Variant& value, const QString& source)
{
    const Variant bound = NumberOrNull(value, source);
    if (bound.IsNull())
        Raise(vbErrInvalidPropertyValue, source);
    return bound;
}

// value + delta in a type that holds the result exactly where it can.
Variant Plus(const Variant& value, int delta)
{
    switch (value.VarType()) {
    case vbCurrency: {
        const std::int64_t scaled = value.As<Currency>()->Scaled();
        const std::int64_t step = std::int64_t{delta} * Currency::Scale;
        constexpr auto top = std::numeric_limits<std::int64_t>::max();
        constexpr auto bottom = std::numeric_limits<std::int64_t>::min();
        if ((step > 0 && scaled > top - step) || (step < 0 && scaled < bottom - step))
            return value.As<Currency>()->ToDouble() + delta;
        return Currency::FromScaled(scaled + step);
    }
    case vbSingle:
    case vbDouble: return CDbl(value) + delta;
    default: {
        const std::int64_t sum = std::int64_t{CLng(value)} + delta;
        if (sum >= std::numeric_limits<std::int32_t>::min() && sum <= std::numeric_limits<std::int32_t>::max())
            return static_cast<std::int32_t>(sum);
        return Currency::FromInt(sum);
    }
    }
}

bool IsKeypadDecimal(const QKeyEvent* event)
{
    return (event->modifiers() & Qt::KeypadModifier) && (event->key() == Qt::Key_Period || event->key() == Qt::Key_Comma);
}

}  // namespace

// The line edit inside the box: mode switches on focus, the sign key, the keypad's decimal key
// and the arrow keys.
class NumberLineEdit : public QLineEdit {
public:
    explicit NumberLineEdit(NumberBox* box) : QLineEdit(box), mBox(box) {}

protected:
    void focusInEvent(QFocusEvent* event) override
    {
        Guarded(mBox, [this] { mBox->BeginEdit(); });
        QLineEdit::focusInEvent(event);
    }

    void focusOutEvent(QFocusEvent* event) override
    {
        QLineEdit::focusOutEvent(event);
        // Another window taking over leaves the edit under way as it is.
        if (event->reason() != Qt::ActiveWindowFocusReason && event->reason() != Qt::PopupFocusReason)
            Guarded(mBox, [this] { mBox->EndEdit(); });
    }

    // The arrow keys step the value and raise the host's SpinUp, SpinDown and Change.
    void keyPressEvent(QKeyEvent* event) override
    {
        Guarded(mBox, [&] { PressKey(event); });
    }

private:
    void PressKey(QKeyEvent* event)
    {
        const Qt::KeyboardModifiers plain = event->modifiers() & ~Qt::KeypadModifier;
        if ((event->key() == Qt::Key_Up || event->key() == Qt::Key_Down) && plain == Qt::NoModifier) {
            mBox->Step(event->key() == Qt::Key_Up ? 1 : -1);
            return;
        }
        if (isReadOnly()) {
            QLineEdit::keyPressEvent(event);
            return;
        }
        if (IsKeypadDecimal(event)) {
            insert(mBox->DecimalSeparator());
            return;
        }
        if (event->text() == QLatin1String("-") && !hasSelectedText()) {
            ToggleSign();
            return;
        }
        QLineEdit::keyPressEvent(event);
    }

    // "-" anywhere in the number turns its sign; the validator refuses a sign the format does
    // not allow.
    void ToggleSign()
    {
        const int caret = cursorPosition();
        if (text().startsWith(QLatin1Char('-'))) {
            setSelection(0, 1);
            del();
            setCursorPosition(std::max(0, caret - 1));
        } else {
            setCursorPosition(0);
            insert(QStringLiteral("-"));
            if (text().startsWith(QLatin1Char('-')))
                setCursorPosition(caret + 1);
            else
                setCursorPosition(caret);
        }
    }

    NumberBox* mBox;
};

NumberBox::NumberBox(QWidget* parent)
    : StandardControl(parent, vbWindowBackground, vbWindowText), mMinValue(DefaultMinValue), mMaxValue(DefaultMaxValue),
      mFormat(DefaultFormat), mDisplayFormat(DefaultFormat)
{
    const RegionalSettings& regional = RegionalSettings::Current();
    mSeparators.Decimal = regional.DecimalSymbol.left(1);
    mSeparators.Thousands = regional.ThousandSymbol.left(1);

    mLine = new NumberLineEdit(this);
    mValidator = new NumberEditValidator(mLine);
    mValidator->SetRules(EditRulesOf(mFormat));
    mValidator->SetSeparators(mSeparators);
    mLine->setValidator(mValidator);
    mLine->setAlignment(Qt::AlignRight | Qt::AlignVCenter);
    connect(mLine, &QLineEdit::textChanged, this, [this](const QString& text) { mValidator->SetPrevious(text); });
    connect(mLine, &QLineEdit::textEdited, this, GuardedSlot(this, [this](const QString& text) { OnTextEdited(text); }));

    mSpinUp = new QToolButton(this);
    mSpinDown = new QToolButton(this);
    for (QToolButton* button : {mSpinUp, mSpinDown}) {
        button->setArrowType(button == mSpinUp ? Qt::UpArrow : Qt::DownArrow);
        button->setFocusPolicy(Qt::NoFocus);
        button->setAutoRepeat(true);
        button->hide();
    }
    connect(mSpinUp, &QToolButton::clicked, this, GuardedSlot(this, [this] { Step(1); }));
    connect(mSpinDown, &QToolButton::clicked, this, GuardedSlot(this, [this] { Step(-1); }));

    SetInputWidget(mLine);
    resize(100, 21);
    LayOut();
    ApplyStyle();
    ShowValue();
}

NumberBox::~NumberBox() = default;

QLineEdit* NumberBox::LineEdit() const
{
    return mLine;
}

void NumberBox::SetValue(const Variant& value)
{
    const Variant number = NumberOrNull(value, QStringLiteral("TDBNumber.Value"));
    ++mValueWrites;
    if (number == mValue)
        return;
    mValue = number;
    ShowValue(true);
    emit Change();
}

void NumberBox::SetMinValue(const Variant& value)
{
    const Variant bound = BoundOf(value, QStringLiteral("TDBNumber.MinValue"));
    if (Compare(bound, mMaxValue) == Comparison::Greater)
        Raise(vbErrInvalidPropertyValue, QStringLiteral("TDBNumber.MinValue"));
    mMinValue = bound;
}

void NumberBox::SetMaxValue(const Variant& value)
{
    const Variant bound = BoundOf(value, QStringLiteral("TDBNumber.MaxValue"));
    if (Compare(bound, mMinValue) == Comparison::Less)
        Raise(vbErrInvalidPropertyValue, QStringLiteral("TDBNumber.MaxValue"));
    mMaxValue = bound;
}

void NumberBox::SetRange(const Variant& minValue, const Variant& maxValue)
{
    const Variant lower = BoundOf(minValue, QStringLiteral("TDBNumber.MinValue"));
    const Variant upper = BoundOf(maxValue, QStringLiteral("TDBNumber.MaxValue"));
    if (Compare(lower, upper) == Comparison::Greater)
        Raise(vbErrInvalidPropertyValue, QStringLiteral("TDBNumber.MinValue"));
    mMinValue = lower;
    mMaxValue = upper;
}

void NumberBox::SetReadOnly(bool readOnly)
{
    mReadOnly = readOnly;
    mLine->setReadOnly(readOnly);
    for (QToolButton* button : {mSpinUp, mSpinDown})
        button->setEnabled(mSpinEnabled && !readOnly);
}

void NumberBox::SetFormat(const QString& format)
{
    mFormat = format;
    mValidator->SetRules(EditRulesOf(format));
    if (mEditing)
        ShowValue();
}

void NumberBox::SetDisplayFormat(const QString& format)
{
    mDisplayFormat = format;
    if (!mEditing)
        ShowValue();
}

QString NumberBox::DisplayText() const
{
    return mLine->text();
}

QString NumberBox::SelText() const
{
    return mLine->selectedText();
}

void NumberBox::SetSelText(const QString& text)
{
    if (mEditing) {
        mLine->insert(text);
        return;
    }
    QString candidate = mLine->text();
    const int start = SelStart();
    candidate.replace(start, SelLength(), text);
    int pos = start + static_cast<int>(text.size());
    mValidator->SetPrevious(RenderEditText(mFormat, mValue, mSeparators));
    const bool accepted = mValidator->validate(candidate, pos) != QValidator::Invalid;
    mValidator->SetPrevious(mLine->text());
    if (!accepted)
        return;
    if (const auto value = NumberEditValidator::ValueOf(candidate, mSeparators.Decimal))
        SetValue(*value);
}

int NumberBox::SelStart() const
{
    return mLine->hasSelectedText() ? mLine->selectionStart() : mLine->cursorPosition();
}

void NumberBox::SetSelStart(int start)
{
    if (start < 0)
        Raise(vbErrInvalidPropertyValue, QStringLiteral("TDBNumber.SelStart"));
    mLine->deselect();
    mLine->setCursorPosition(std::min<int>(start, static_cast<int>(mLine->text().size())));
}

int NumberBox::SelLength() const
{
    return static_cast<int>(mLine->selectedText().size());
}

void NumberBox::SetSelLength(int length)
{
    if (length < 0)
        Raise(vbErrInvalidPropertyValue, QStringLiteral("TDBNumber.SelLength"));
    const int start = SelStart();
    mLine->setSelection(start, std::min<int>(length, static_cast<int>(mLine->text().size()) - start));
}

void NumberBox::SetDecimalSeparator(const QString& separator)
{
    if (separator.isEmpty())
        Raise(vbErrInvalidPropertyValue, QStringLiteral("TDBNumber.DecimalSeparator"));
    mSeparators.Decimal = separator.left(1);
    mValidator->SetSeparators(mSeparators);
    ShowValue();
}

void NumberBox::SetThousandSeparator(const QString& separator)
{
    if (separator.isEmpty())
        Raise(vbErrInvalidPropertyValue, QStringLiteral("TDBNumber.ThousandSeparator"));
    mSeparators.Thousands = separator.left(1);
    mValidator->SetSeparators(mSeparators);
    ShowValue();
}

void NumberBox::SetNegativeColor(OleColor color)
{
    mNegativeColor = color;
    ApplyStyle();
}

void NumberBox::SetBorderStyle(short style)
{
    if (style != BorderNone && style != BorderFixedSingle)
        Raise(vbErrInvalidPropertyValue, QStringLiteral("TDBNumber.BorderStyle"));
    mBorderStyle = style;
    mLine->setFrame(style == BorderFixedSingle);
}

void NumberBox::SetAlignHorizontal(short alignment)
{
    if (alignment < AlignLeft || alignment > AlignCenter)
        Raise(vbErrInvalidPropertyValue, QStringLiteral("TDBNumber.AlignHorizontal"));
    mAlignHorizontal = alignment;
    const Qt::Alignment a = alignment == AlignRight ? Qt::AlignRight : alignment == AlignCenter ? Qt::AlignHCenter : Qt::AlignLeft;
    mLine->setAlignment(a | Qt::AlignVCenter);
}

void NumberBox::SetSpinVisible(int visible)
{
    if (visible != SpinHidden && visible != SpinShown)
        Raise(vbErrInvalidPropertyValue, QStringLiteral("TDBNumber.SpinVisible"));
    mSpinVisible = visible;
    LayOut();
}

void NumberBox::SetSpinEnabled(bool enabled)
{
    mSpinEnabled = enabled;
    for (QToolButton* button : {mSpinUp, mSpinDown})
        button->setEnabled(enabled && !mReadOnly);
}

void NumberBox::Step(int delta)
{
    if (mReadOnly || !mSpinEnabled || !isEnabled())
        return;
    if (delta > 0)
        emit SpinUp();
    else
        emit SpinDown();
    const Variant next = Clamped(mValue.IsNull() ? Variant(Currency()) : Plus(mValue, delta));
    if (next == mValue)
        return;
    mValue = next;
    ShowValue(true);
    emit Change();
}

Variant NumberBox::Clamped(const Variant& value) const
{
    if (Compare(value, mMaxValue) == Comparison::Greater)
        return mMaxValue;
    if (Compare(value, mMinValue) == Comparison::Less)
        return mMinValue;
    return value;
}

void NumberBox::BeginEdit()
{
    if (mEditing)
        return;
    mEditing = true;
    ShowValue();
}

void NumberBox::EndEdit()
{
    if (!mEditing)
        return;
    mEditing = false;
    ShowValue();
}

void NumberBox::OnTextEdited(const QString& text)
{
    // The validator let the text through, so it reads as a number (or as Null when empty).
    if (const auto value = NumberEditValidator::ValueOf(text, mSeparators.Decimal))
        mValue = *value;
    ApplyStyle();
    emit Change();
}

void NumberBox::ShowValue(bool selectAll)
{
    const QString text = mEditing ? RenderEditText(mFormat, mValue, mSeparators)
                                  : RenderNumberFormat(mDisplayFormat, mValue, mSeparators);
    // The validator judges what the user types; it would rewrite a display text ("1,234.50")
    // into edit form, so it is away while the box writes its own text.
    mLine->setValidator(nullptr);
    mLine->setText(text);
    mLine->setValidator(mValidator);
    if (mEditing && selectAll)
        mLine->selectAll();
    ApplyStyle();
}

void NumberBox::ApplyStyle()
{
    StandardControl::ApplyStyle();
    const std::optional<DecimalDigits> digits = mLine ? DigitsOfNumber(mValue) : std::nullopt;
    if (!digits || !digits->Negative)
        return;
    QPalette p = mLine->palette();
    for (QPalette::ColorGroup group : {QPalette::Active, QPalette::Inactive})
        p.setColor(group, QPalette::Text, ToQColor(mNegativeColor));
    mLine->setPalette(p);
}

void NumberBox::resizeEvent(QResizeEvent* event)
{
    StandardControl::resizeEvent(event);
    LayOut();
}

void NumberBox::LayOut()
{
    const bool spin = mSpinVisible == SpinShown;
    const int spinWidth = spin ? std::min(SpinWidth, width() / 2) : 0;
    mLine->setGeometry(0, 0, width() - spinWidth, height());
    mSpinUp->setVisible(spin);
    mSpinDown->setVisible(spin);
    if (spin) {
        mSpinUp->setGeometry(width() - spinWidth, 0, spinWidth, height() / 2);
        mSpinDown->setGeometry(width() - spinWidth, height() / 2, spinWidth, height() - height() / 2);
    }
}

bool NumberBox::eventFilter(QObject* watched, QEvent* event)
{
    if (watched != mLine || event->type() != QEvent::KeyPress)
        return StandardControl::eventFilter(watched, event);
    // A key whose KeyDown or KeyPress handler rewrote the value has done its work: typing it
    // into the text that replaced the one the user saw would undo that.
    const quint64 writesBefore = mValueWrites;
    const bool swallowed = StandardControl::eventFilter(watched, event);  // guarded there
    return swallowed || mValueWrites != writesBefore;
}

void NumberBox::ReadProperties(PropertyBag& bag)
{
    StandardControl::ReadProperties(bag);
    SetFormat(CStr(bag.ReadProperty(QStringLiteral("Format"), DefaultFormat)));
    SetDisplayFormat(CStr(bag.ReadProperty(QStringLiteral("DisplayFormat"), DefaultFormat)));
    SetRange(bag.ReadProperty(QStringLiteral("MinValue"), DefaultMinValue),
             bag.ReadProperty(QStringLiteral("MaxValue"), DefaultMaxValue));
    SetReadOnly(CBool(bag.ReadProperty(QStringLiteral("ReadOnly"), false)));
    SetAlignHorizontal(CInt(bag.ReadProperty(QStringLiteral("AlignHorizontal"), std::int16_t{AlignRight})));
    SetBorderStyle(CInt(bag.ReadProperty(QStringLiteral("BorderStyle"), std::int16_t{BorderFixedSingle})));
    SetSpinVisible(CLng(bag.ReadProperty(QStringLiteral("SpinVisible"), SpinHidden)));
    SetSpinEnabled(CBool(bag.ReadProperty(QStringLiteral("SpinEnabled"), true)));
    SetNegativeColor(static_cast<OleColor>(CLng(bag.ReadProperty(QStringLiteral("NegativeColor"), static_cast<std::int32_t>(vbWindowText)))));
    SetValue(bag.ReadProperty(QStringLiteral("Value"), Variant::Null()));
}

void NumberBox::WriteProperties(PropertyBag& bag)
{
    StandardControl::WriteProperties(bag);
    bag.WriteProperty(QStringLiteral("Format"), mFormat, DefaultFormat);
    bag.WriteProperty(QStringLiteral("DisplayFormat"), mDisplayFormat, DefaultFormat);
    bag.WriteProperty(QStringLiteral("MinValue"), mMinValue, DefaultMinValue);
    bag.WriteProperty(QStringLiteral("MaxValue"), mMaxValue, DefaultMaxValue);
    bag.WriteProperty(QStringLiteral("ReadOnly"), mReadOnly, false);
    bag.WriteProperty(QStringLiteral("AlignHorizontal"), mAlignHorizontal, std::int16_t{AlignRight});
    bag.WriteProperty(QStringLiteral("BorderStyle"), mBorderStyle, std::int16_t{BorderFixedSingle});
    bag.WriteProperty(QStringLiteral("SpinVisible"), mSpinVisible, SpinHidden);
    bag.WriteProperty(QStringLiteral("SpinEnabled"), mSpinEnabled, true);
    bag.WriteProperty(QStringLiteral("NegativeColor"), static_cast<std::int32_t>(mNegativeColor), static_cast<std::int32_t>(vbWindowText));
    bag.WriteProperty(QStringLiteral("Value"), mValue, Variant::Null());
}

}  // namespace korvex
