// ZqText: the stored text kept apart from what the inner box shows, the display refresh that
// swaps in the placeholder, and the inner box's events passed on with their by-reference
// arguments.
#include "korvex/controls/input/ZqText.h"

#include "korvex/platform/host/ControlRegistry.h"
#include "korvex/platform/host/PropertyBag.h"
#include "korvex/runtime/Conversions.h"
#include "korvex/runtime/Error.h"
#include "korvex/runtime/Windows1252.h"

#include <QScopedValueRollback>

namespace korvex {
namespace {

// The character a KeyAscii-style code stands for.
QString CharacterOf(short code)
{
    if (code < 0 || code > 255)
        Raise(vbErrInvalidProcedureCall, QStringLiteral("ZqText.KeyPress"));
    if (code < 32)
        return QString(QChar(code));
    return FromWindows1252(QByteArray(1, static_cast<char>(code)));
}

}  // namespace

KORVEX_REGISTER_CONTROL(ZqText);

ZqText::ZqText(QWidget* parent, bool multiLine) : UserControl(parent)
{
    BuildInnerBox(multiLine);
    resize(100, 21);
    Resize();
    LoadDeclaredDefaults();
}

void ZqText::InnerFocusChanged(bool hasFocus)
{
    mHasFocus = hasFocus;
    RefreshDisplay();
}

void ZqText::BuildInnerBox(bool multiLine)
{
    delete txt;
    txt = new TextBox(this, multiLine);
    txt->SetName(QStringLiteral("txt"));
    txt->SetTabStop(TabStop());
    setFocusProxy(txt);

    connect(txt, &TextBox::Change, this, &ZqText::InnerBoxChanged);
    WrapInner(txt, InnerEvent::Click | InnerEvent::DblClick | InnerEvent::Keys | InnerEvent::Mouse |
                       InnerEvent::Validate | InnerEvent::Focus);
    txt->show();
}

void ZqText::Resize()
{
    txt->Move(0, 0, ScaleWidth(), ScaleHeight());
    if (txt->Width() > Width())
        SetWidth(txt->Width());
    else if (txt->Height() > Height())
        SetHeight(txt->Height());
}

bool ZqText::ShowsPlaceholder() const
{
    return mText.isEmpty() && !mDefaultText.isEmpty() && txt->Enabled() && !mHasFocus;
}

void ZqText::RefreshDisplay()
{
    const QScopedValueRollback refreshing(mRefreshing, true);
    if (ShowsPlaceholder()) {
        txt->SetForeColor(vbGrayText);
        txt->SetText(mDefaultText);
    } else {
        txt->SetForeColor(vbWindowText);
        txt->SetText(mText);
    }
}

void ZqText::InnerBoxChanged()
{
    if (mRefreshing)
        return;
    mText = txt->Text();
    emit Change();
}

void ZqText::SetText(const QString& text)
{
    txt->SetText(text);
    // The inner box says nothing when it already showed this text (the placeholder can be the
    // same words); the stored text follows it all the same.
    if (mText != txt->Text()) {
        mText = txt->Text();
        emit Change();
    }
    RefreshDisplay();
    PropertyChanged("Text");
}

void ZqText::SetDefaultText(const QString& text)
{
    mDefaultText = text;
    RefreshDisplay();
    PropertyChanged("DefaultText");
}

void ZqText::KeyPress(short AsciiChar)
{
    QString text = mText;
    if (AsciiChar == 8) {
        text.chop(1);
    } else if (AsciiChar == 10 || AsciiChar == 13) {
        if (MultiLine())
            text += QStringLiteral("\r\n");
    } else {
        text += CharacterOf(AsciiChar);
    }
    if (text == mText)
        return;
    mText = text;
    RefreshDisplay();
    emit Change();
}

// The selection is not persisted, yet the container hears of every write, as for any property.
void ZqText::SetSelStart(int start)
{
    txt->SetSelStart(start);
    PropertyChanged("SelStart");
}

void ZqText::SetSelLength(int length)
{
    txt->SetSelLength(length);
    PropertyChanged("SelLength");
}

void ZqText::SetSelText(const QString& text)
{
    txt->SetSelText(text);
    PropertyChanged("SelText");
}

void ZqText::Refresh()
{
    txt->Refresh();
}

void ZqText::SetTabStop(bool tabStop)
{
    UserControl::SetTabStop(tabStop);
    txt->SetTabStop(tabStop);
}

void ZqText::SetBackColor(OleColor color)
{
    WriteInner("BackColor", txt, color, &TextBox::BackColor, &TextBox::SetBackColor);
}

void ZqText::SetForeColor(OleColor color)
{
    WriteInner("ForeColor", txt, color, &TextBox::ForeColor, &TextBox::SetForeColor);
}

void ZqText::SetEnabled(bool enabled)
{
    txt->SetEnabled(enabled);
    UserControl::SetEnabled(enabled);
    PropertyChanged("Enabled");
}

void ZqText::SetFontObject(QObject* font)
{
    RequireValid(qobject_cast<StdFont*>(font) != nullptr, "Font");
    txt->SetFontObject(font);
    PropertyChanged("Font");
}

void ZqText::SetBorderStyle(short style)
{
    WriteInner("BorderStyle", txt, style, &TextBox::BorderStyle, &TextBox::SetBorderStyle);
}

void ZqText::SetAlignment(short alignment)
{
    WriteInner("Alignment", txt, alignment, &TextBox::Alignment, &TextBox::SetAlignment);
}

void ZqText::SetAppearance(short appearance)
{
    WriteInner("Appearance", txt, appearance, &TextBox::Appearance, &TextBox::SetAppearance);
}

void ZqText::SetLocked(bool locked)
{
    WriteInner("Locked", txt, locked, &TextBox::Locked, &TextBox::SetLocked);
}

void ZqText::SetMaxLength(int length)
{
    WriteInner("MaxLength", txt, length, &TextBox::MaxLength, &TextBox::SetMaxLength);
}

void ZqText::SetPasswordChar(const QString& passwordChar)
{
    WriteInner("PasswordChar", txt, passwordChar, &TextBox::PasswordChar, &TextBox::SetPasswordChar);
}

void ZqText::SetRightToLeft(bool rightToLeft)
{
    WriteInner("RightToLeft", txt, rightToLeft, &TextBox::RightToLeft, &TextBox::SetRightToLeft);
}

void ZqText::SetMousePointer(int pointer)
{
    WriteInner("MousePointer", txt, pointer, &TextBox::MousePointer, &TextBox::SetMousePointer);
}

void ZqText::SetMouseIcon(const QString& fileName)
{
    WriteInner("MouseIcon", txt, fileName, &TextBox::MouseIcon, &TextBox::SetMouseIcon);
}

const PropertyList& ZqText::PersistedProperties() const
{
    static const PropertyList list =
        Declare<ZqText>()
            .Property("BackColor", &ZqText::BackColor, &ZqText::SetBackColor, vbWindowBackground)
            .Property("ForeColor", &ZqText::ForeColor, &ZqText::SetForeColor, vbWindowText)
            .Property("Enabled", [](const ZqText& c) { return c.txt->Enabled(); }, &ZqText::SetEnabled, true)
            .Property("Font", &ZqText::FontObject, &ZqText::SetFontObject, AmbientFont)
            .Property("BorderStyle", &ZqText::BorderStyle, &ZqText::SetBorderStyle, std::int16_t{1})
            .Property("Alignment", &ZqText::Alignment, &ZqText::SetAlignment, std::int16_t{0})
            .Property("Appearance", &ZqText::Appearance, &ZqText::SetAppearance, std::int16_t{1})
            .Property("Locked", &ZqText::Locked, &ZqText::SetLocked, false)
            .Property("MaxLength", &ZqText::MaxLength, &ZqText::SetMaxLength, 0)
            .Property("PasswordChar", &ZqText::PasswordChar, &ZqText::SetPasswordChar, QString())
            .Property("Text", &ZqText::Text, &ZqText::SetText, QString())
            .Initially([](const ZqText& c) { return c.Ambient()->DisplayName(); })
            .Property("RightToLeft", &ZqText::RightToLeft, &ZqText::SetRightToLeft, false)
            .Property("MousePointer", &ZqText::MousePointer, &ZqText::SetMousePointer, 0)
            .Property("MouseIcon", &ZqText::MouseIcon, &ZqText::SetMouseIcon, QString())
            .Property("DefaultText", &ZqText::DefaultText, &ZqText::SetDefaultText, QString());
    return list;
}

void ZqText::WriteProperties(PropertyBag& bag)
{
    // A multi-line box says so, or it would come back single-line; a single-line one saves
    // only its properties.
    if (MultiLine())
        bag.WriteProperty(QStringLiteral("MultiLine"), true, false);
    UserControl::WriteProperties(bag);
}

void ZqText::ReadProperties(PropertyBag& bag)
{
    // The kind of inner box is chosen when it is built, before anything is applied to it. It is
    // not a property of the control: only a multi-line box writes it back.
    if (bag.Contains(QStringLiteral("MultiLine"))) {
        const bool multiLine = CBool(bag.ReadProperty(QStringLiteral("MultiLine"), false));
        if (multiLine != MultiLine()) {
            BuildInnerBox(multiLine);
            Resize();
        }
    }
    UserControl::ReadProperties(bag);
}

}  // namespace korvex
