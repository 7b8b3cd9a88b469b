// The numeric edit box (type name "TDBNumber"): a value that is Null or an exact number, shown
// with a display format while the box has no focus and edited with an edit format while it
// has, typing only what the edit format allows, with a permitted range, spin buttons and the
// arrow keys stepping by one within it. ZqNumber wraps one; a form may also hold one directly.
#pragma once

#include "korvex/platform/host/StandardControl.h"
#include "korvex/platform/numberbox/NumberFormat.h"
#include "korvex/runtime/Variant.h"

class QLineEdit;
class QToolButton;

namespace korvex {

class NumberEditValidator;
class NumberLineEdit;

class NumberBox : public StandardControl {
    Q_OBJECT
    Q_CLASSINFO("TypeName", "TDBNumber")
    Q_CLASSINFO("DefaultProperty", "Value")
    Q_PROPERTY(korvex::Variant Value READ Value WRITE SetValue)
    Q_PROPERTY(bool ValueIsNull READ ValueIsNull)
    Q_PROPERTY(korvex::Variant MinValue READ MinValue WRITE SetMinValue)
    Q_PROPERTY(korvex::Variant MaxValue READ MaxValue WRITE SetMaxValue)
    Q_PROPERTY(bool ReadOnly READ ReadOnly WRITE SetReadOnly)
    Q_PROPERTY(QString Format READ Format WRITE SetFormat)
    Q_PROPERTY(QString DisplayFormat READ DisplayFormat WRITE SetDisplayFormat)
    Q_PROPERTY(QString DisplayText READ DisplayText)
    Q_PROPERTY(QString SelText READ SelText WRITE SetSelText)
    Q_PROPERTY(int SelStart READ SelStart WRITE SetSelStart)
    Q_PROPERTY(int SelLength READ SelLength WRITE SetSelLength)
    Q_PROPERTY(QString DecimalSeparator READ DecimalSeparator WRITE SetDecimalSeparator)
    Q_PROPERTY(QString ThousandSeparator READ ThousandSeparator WRITE SetThousandSeparator)
    Q_PROPERTY(uint NegativeColor READ NegativeColor WRITE SetNegativeColor)
    Q_PROPERTY(short BorderStyle READ BorderStyle WRITE SetBorderStyle)
    Q_PROPERTY(short AlignHorizontal READ AlignHorizontal WRITE SetAlignHorizontal)
    Q_PROPERTY(int SpinVisible READ SpinVisible WRITE SetSpinVisible)
    Q_PROPERTY(bool SpinEnabled READ SpinEnabled WRITE SetSpinEnabled)

public:
    // Border styles and horizontal alignments of the box.
    enum : short { BorderNone = 0, BorderFixedSingle = 1 };
    enum : short { AlignLeft = 0, AlignRight = 1, AlignCenter = 2 };
    // Spin button visibility.
    enum : int { SpinHidden = 0, SpinShown = 1 };

    explicit NumberBox(QWidget* parent = nullptr);
    ~NumberBox() override;

    // Null or a number: Integer, Long, Byte, Currency, Single and Double are kept as they are,
    // Boolean becomes Integer, Empty becomes Null, a numeric text becomes Double. Other values
    // raise 13, NaN and infinities 380; the value is not checked against the range.
    Variant Value() const { return mValue; }
    void SetValue(const Variant& value);
    bool ValueIsNull() const noexcept { return mValue.IsNull(); }
    // The permitted range, numbers as for Value (Null refused with 380). A bound that would
    // pass the other one raises 380: set them in an order that keeps the minimum below.
    Variant MinValue() const { return mMinValue; }
    void SetMinValue(const Variant& value);
    Variant MaxValue() const { return mMaxValue; }
    void SetMaxValue(const Variant& value);
    bool ReadOnly() const noexcept { return mReadOnly; }
    void SetReadOnly(bool readOnly);
    // The edit format (used while the box has the focus) and the display format (while not).
    const QString& Format() const noexcept { return mFormat; }
    void SetFormat(const QString& format);
    const QString& DisplayFormat() const noexcept { return mDisplayFormat; }
    void SetDisplayFormat(const QString& format);
    QString DisplayText() const;
    QString SelText() const;
    // Replaces the selection as typing would; a result that is not a number that fits is
    // ignored.
    void SetSelText(const QString& text);
    int SelStart() const;
    void SetSelStart(int start);
    int SelLength() const;
    void SetSelLength(int length);
    // The characters "." and "," of the formats show as, and the decimal symbol typed. One
    // character each; an empty text raises 380.
    QString DecimalSeparator() const { return mSeparators.Decimal; }
    void SetDecimalSeparator(const QString& separator);
    QString ThousandSeparator() const { return mSeparators.Thousands; }
    void SetThousandSeparator(const QString& separator);
    // The text colour of a negative value.
    OleColor NegativeColor() const noexcept { return mNegativeColor; }
    void SetNegativeColor(OleColor color);
    short BorderStyle() const noexcept { return mBorderStyle; }
    void SetBorderStyle(short style);
    short AlignHorizontal() const noexcept { return mAlignHorizontal; }
    void SetAlignHorizontal(short alignment);
    int SpinVisible() const noexcept { return mSpinVisible; }
    void SetSpinVisible(int visible);
    bool SpinEnabled() const noexcept { return mSpinEnabled; }
    void SetSpinEnabled(bool enabled);

    // Steps the value by `delta` within the range, as the arrow keys and spin buttons do:
    // raises SpinUp or SpinDown, then Change when the value moved. Null steps to 0. Nothing
    // happens while the box is read-only, disabled or its spin is disabled.
    void Step(int delta);

    QLineEdit* LineEdit() const;
    QToolButton* SpinUpButton() const { return mSpinUp; }
    QToolButton* SpinDownButton() const { return mSpinDown; }
    // True while the box shows its edit text (it has the focus).
    bool Editing() const noexcept { return mEditing; }

    void ReadProperties(PropertyBag& bag) override;
    void WriteProperties(PropertyBag& bag) override;

signals:
    // The value or text changed, by the user or by code.
    void Change();
    void SpinUp();
    void SpinDown();

protected:
    void ApplyStyle() override;
    void resizeEvent(QResizeEvent* event) override;
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    friend class NumberLineEdit;

    void BeginEdit();
    void EndEdit();
    void OnTextEdited(const QString& text);
    // Shows the value with the format of the current mode; in edit mode `selectAll` selects it,
    // so that what the user types next replaces a value set by code.
    void ShowValue(bool selectAll = false);
    void SetRange(const Variant& minValue, const Variant& maxValue);
    Variant Clamped(const Variant& value) const;
    void LayOut();

    NumberLineEdit* mLine = nullptr;
    NumberEditValidator* mValidator = nullptr;
    QToolButton* mSpinUp = nullptr;
    QToolButton* mSpinDown = nullptr;
    Variant mValue = Variant::Null();
    Variant mMinValue;
    Variant mMaxValue;
    QString mFormat;
    QString mDisplayFormat;
    NumberSeparators mSeparators;
    OleColor mNegativeColor = vbWindowText;
    short mBorderStyle = BorderFixedSingle;
    short mAlignHorizontal = AlignRight;
    int mSpinVisible = SpinHidden;
    bool mSpinEnabled = true;
    bool mReadOnly = false;
    bool mEditing = false;
    // Counts writes of Value by code, so that a key whose handler rewrote the value is not
    // then applied to the text that replaced the one the user saw.
    quint64 mValueWrites = 0;
};

}  // namespace korvex
