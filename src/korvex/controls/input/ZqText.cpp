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
}

ZqText::~ZqText()
{
    // The inner box outlives this object's own part while Qt deletes the children; what it
    // says then (a lost focus) must not reach a half-destroyed control.
    disconnect(txt, nullptr, this, nullptr);
}

void ZqText::BuildInnerBox(bool multiLine)
{
    delete txt;
    txt = new TextBox(this, multiLine);
    txt->SetName(QStringLiteral("txt"));
    txt->SetTabStop(TabStop());
    setFocusProxy(txt);

    connect(txt, &TextBox::Change, this, &ZqText::InnerBoxChanged);
    connect(txt, &Control::Click, this, &Control::Click);
    connect(txt, &Control::DblClick, this, &Control::DblClick);
    connect(txt, &Control::KeyDown, this, &Control::KeyDown);
    connect(txt, &Control::KeyPress, this, &Control::KeyPress);
    connect(txt, &Control::KeyUp, this, &Control::KeyUp);
    connect(txt, &Control::MouseDown, this, &Control::MouseDown);
    connect(txt, &Control::MouseMove, this, &Control::MouseMove);
    connect(txt, &Control::MouseUp, this, &Control::MouseUp);
    connect(txt, &Control::Validate, this, &Control::Validate);
    connect(txt, &Control::GotFocus, this, [this] {
        mHasFocus = true;
        RefreshDisplay();
        emit GotFocus();
    });
    connect(txt, &Control::LostFocus, this, [this] {
        mHasFocus = false;
        RefreshDisplay();
        emit LostFocus();
    });
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
    PropertyChanged(QStringLiteral("Text"));
}

void ZqText::SetDefaultText(const QString& text)
{
    mDefaultText = text;
    RefreshDisplay();
    PropertyChanged(QStringLiteral("DefaultText"));
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
    PropertyChanged(QStringLiteral("SelStart"));
}

void ZqText::SetSelLength(int length)
{
    txt->SetSelLength(length);
    PropertyChanged(QStringLiteral("SelLength"));
}

void ZqText::SetSelText(const QString& text)
{
    txt->SetSelText(text);
    PropertyChanged(QStringLiteral("SelText"));
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
    WriteInner(QStringLiteral("BackColor"), txt, color, &TextBox::BackColor, &TextBox::SetBackColor);
}

void ZqText::SetForeColor(OleColor color)
{
    WriteInner(QStringLiteral("ForeColor"), txt, color, &TextBox::ForeColor, &TextBox::SetForeColor);
}

void ZqText::SetEnabled(bool enabled)
{
    if (enabled == txt->Enabled() && enabled == UserControl::Enabled())
        return;
    txt->SetEnabled(enabled);
    UserControl::SetEnabled(enabled);
    PropertyChanged(QStringLiteral("Enabled"));
}

void ZqText::SetFontObject(QObject* font)
{
    auto* stdFont = qobject_cast<StdFont*>(font);
    if (!stdFont)
        Raise(vbErrInvalidPropertyValue, QStringLiteral("ZqText.Font"));
    if (stdFont->SameAs(*txt->Font()))
        return;
    txt->SetFontObject(font);
    PropertyChanged(QStringLiteral("Font"));
}

void ZqText::SetBorderStyle(short style)
{
    WriteInner(QStringLiteral("BorderStyle"), txt, style, &TextBox::BorderStyle, &TextBox::SetBorderStyle);
}

void ZqText::SetAlignment(short alignment)
{
    WriteInner(QStringLiteral("Alignment"), txt, alignment, &TextBox::Alignment, &TextBox::SetAlignment);
}

void ZqText::SetAppearance(short appearance)
{
    WriteInner(QStringLiteral("Appearance"), txt, appearance, &TextBox::Appearance, &TextBox::SetAppearance);
}

void ZqText::SetLocked(bool locked)
{
    WriteInner(QStringLiteral("Locked"), txt, locked, &TextBox::Locked, &TextBox::SetLocked);
}

void ZqText::SetMaxLength(int length)
{
    WriteInner(QStringLiteral("MaxLength"), txt, length, &TextBox::MaxLength, &TextBox::SetMaxLength);
}

void ZqText::SetPasswordChar(const QString& passwordChar)
{
    WriteInner(QStringLiteral("PasswordChar"), txt, passwordChar, &TextBox::PasswordChar, &TextBox::SetPasswordChar);
}

void ZqText::SetRightToLeft(bool rightToLeft)
{
    WriteInner(QStringLiteral("RightToLeft"), txt, rightToLeft, &TextBox::RightToLeft, &TextBox::SetRightToLeft);
}

void ZqText::SetMousePointer(int pointer)
{
    WriteInner(QStringLiteral("MousePointer"), txt, pointer, &TextBox::MousePointer, &TextBox::SetMousePointer);
}

void ZqText::SetMouseIcon(const QString& fileName)
{
    WriteInner(QStringLiteral("MouseIcon"), txt, fileName, &TextBox::MouseIcon, &TextBox::SetMouseIcon);
}

void ZqText::InitProperties()
{
    SetText(Ambient()->DisplayName());
}

void ZqText::ReadProperties(PropertyBag& bag)
{
    // The kind of inner box comes first: everything after is applied to the box that stays.
    const bool multiLine = CBool(bag.ReadProperty(QStringLiteral("MultiLine"), false));
    if (multiLine != MultiLine()) {
        BuildInnerBox(multiLine);
        Resize();
    }
    SetBackColor(static_cast<OleColor>(CLng(bag.ReadProperty(QStringLiteral("BackColor"), static_cast<std::int32_t>(vbWindowBackground)))));
    SetForeColor(static_cast<OleColor>(CLng(bag.ReadProperty(QStringLiteral("ForeColor"), static_cast<std::int32_t>(vbWindowText)))));
    SetEnabled(CBool(bag.ReadProperty(QStringLiteral("Enabled"), true)));
    SetFontObject(bag.ReadProperty(QStringLiteral("Font"), Variant(Ambient()->FontObject())).Object());
    SetBorderStyle(CInt(bag.ReadProperty(QStringLiteral("BorderStyle"), 1)));
    SetAlignment(CInt(bag.ReadProperty(QStringLiteral("Alignment"), 0)));
    SetAppearance(CInt(bag.ReadProperty(QStringLiteral("Appearance"), 1)));
    SetLocked(CBool(bag.ReadProperty(QStringLiteral("Locked"), false)));
    SetMaxLength(CLng(bag.ReadProperty(QStringLiteral("MaxLength"), 0)));
    SetPasswordChar(CStr(bag.ReadProperty(QStringLiteral("PasswordChar"), QString())));
    SetText(CStr(bag.ReadProperty(QStringLiteral("Text"), QString())));
    SetRightToLeft(CBool(bag.ReadProperty(QStringLiteral("RightToLeft"), false)));
    SetMousePointer(CLng(bag.ReadProperty(QStringLiteral("MousePointer"), 0)));
    SetMouseIcon(CStr(bag.ReadProperty(QStringLiteral("MouseIcon"), QString())));
    SetDefaultText(CStr(bag.ReadProperty(QStringLiteral("DefaultText"), QString())));
}

void ZqText::WriteProperties(PropertyBag& bag)
{
    bag.WriteProperty(QStringLiteral("MultiLine"), MultiLine(), false);
    bag.WriteProperty(QStringLiteral("BackColor"), static_cast<std::int32_t>(BackColor()), static_cast<std::int32_t>(vbWindowBackground));
    // While the placeholder shows, the box's colour is the placeholder's, not the text's.
    const OleColor foreColor = ShowsPlaceholder() ? vbWindowText : ForeColor();
    bag.WriteProperty(QStringLiteral("ForeColor"), static_cast<std::int32_t>(foreColor), static_cast<std::int32_t>(vbWindowText));
    bag.WriteProperty(QStringLiteral("Enabled"), txt->Enabled(), true);
    bag.WriteProperty(QStringLiteral("Font"), Variant(FontObject()), Variant(Ambient()->FontObject()));
    bag.WriteProperty(QStringLiteral("BorderStyle"), BorderStyle(), std::int16_t{1});
    bag.WriteProperty(QStringLiteral("Alignment"), Alignment(), std::int16_t{0});
    bag.WriteProperty(QStringLiteral("Appearance"), Appearance(), std::int16_t{1});
    bag.WriteProperty(QStringLiteral("Locked"), Locked(), false);
    bag.WriteProperty(QStringLiteral("MaxLength"), MaxLength(), 0);
    bag.WriteProperty(QStringLiteral("PasswordChar"), PasswordChar(), QString());
    bag.WriteProperty(QStringLiteral("Text"), mText, QString());
    bag.WriteProperty(QStringLiteral("RightToLeft"), RightToLeft(), false);
    bag.WriteProperty(QStringLiteral("MousePointer"), MousePointer(), 0);
    bag.WriteProperty(QStringLiteral("MouseIcon"), MouseIcon(), QString());
    bag.WriteProperty(QStringLiteral("DefaultText"), mDefaultText, QString());
}

}  // namespace korvex
