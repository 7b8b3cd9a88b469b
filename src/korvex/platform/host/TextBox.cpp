// TextBox over QLineEdit or QPlainTextEdit.
#include "korvex/platform/host/TextBox.h"

#include "korvex/platform/host/ControlRegistry.h"
#include "korvex/platform/host/PropertyBag.h"
#include "korvex/runtime/Conversions.h"
#include "korvex/runtime/EntryGuard.h"
#include "korvex/runtime/Error.h"

#include <QLineEdit>
#include <QPlainTextEdit>
#include <QSignalBlocker>
#include <QTextBlock>

namespace korvex {

KORVEX_REGISTER_CONTROL(TextBox);

TextBox::TextBox(QWidget* parent, bool multiLine) : StandardControl(parent, vbWindowBackground, vbWindowText)
{
    Build(multiLine);
    resize(100, 21);
}

void TextBox::Build(bool multiLine)
{
    const QString text = Text();
    delete mLine;
    delete mMulti;
    mLine = nullptr;
    mMulti = nullptr;
    mMultiLine = multiLine;
    if (multiLine) {
        mMulti = new QPlainTextEdit(this);
        mMulti->setPlainText(text);
        connect(mMulti, &QPlainTextEdit::textChanged, this, GuardedSlot(this, [this] { emit Change(); }));
        SetInputWidget(mMulti);
    } else {
        mLine = new QLineEdit(this);
        mLine->setText(text);
        connect(mLine, &QLineEdit::textChanged, this, GuardedSlot(this, [this] { emit Change(); }));
        SetInputWidget(mLine);
    }
    InputWidget()->setGeometry(rect());
    InputWidget()->show();
    SetLocked(mLocked);
    SetMaxLength(mMaxLength);
    SetAlignment(mAlignment);
    ApplyStyle();
}

void TextBox::resizeEvent(QResizeEvent* event)
{
    StandardControl::resizeEvent(event);
    InputWidget()->setGeometry(rect());
}

QString TextBox::Text() const
{
    if (mMulti)
        return mMulti->toPlainText().replace(QLatin1Char('\n'), QStringLiteral("\r\n"));
    return mLine ? mLine->text() : QString();
}

void TextBox::SetText(const QString& text)
{
    const QString before = Text();
    if (text == before)
        return;
    {
        // The host's own write raises Change itself, outside Qt's code, so that an error of its
        // Change handler reaches the host; Qt's notice is for what the user types.
        const QSignalBlocker quiet(mMulti ? static_cast<QObject*>(mMulti) : mLine);
        if (mMulti) {
            QString plain = text;
            mMulti->setPlainText(plain.replace(QStringLiteral("\r\n"), QStringLiteral("\n")));
        } else {
            mLine->setText(mMaxLength > 0 ? text.left(mMaxLength) : text);
        }
    }
    if (Text() != before)
        emit Change();
}

void TextBox::SetLocked(bool locked)
{
    mLocked = locked;
    if (mLine)
        mLine->setReadOnly(locked);
    if (mMulti)
        mMulti->setReadOnly(locked);
}

void TextBox::SetMaxLength(int length)
{
    if (length < 0)
        Raise(vbErrInvalidPropertyValue, QStringLiteral("TextBox.MaxLength"));
    mMaxLength = length;
    if (mLine)
        mLine->setMaxLength(length == 0 ? 32767 : length);
}

void TextBox::SetPasswordChar(const QString& passwordChar)
{
    if (passwordChar.size() > 1)
        Raise(vbErrInvalidPropertyValue, QStringLiteral("TextBox.PasswordChar"));
    mPasswordChar = passwordChar;
    if (mLine)
        mLine->setEchoMode(mPasswordChar.isEmpty() ? QLineEdit::Normal : QLineEdit::Password);
}

void TextBox::SetAlignment(short alignment)
{
    if (alignment < 0 || alignment > 2)
        Raise(vbErrInvalidPropertyValue, QStringLiteral("TextBox.Alignment"));
    mAlignment = alignment;
    const Qt::Alignment a = alignment == 1 ? Qt::AlignRight : alignment == 2 ? Qt::AlignHCenter : Qt::AlignLeft;
    if (mLine)
        mLine->setAlignment(a | Qt::AlignVCenter);
}

void TextBox::SetBorderStyle(short style)
{
    if (style < 0 || style > 1)
        Raise(vbErrInvalidPropertyValue, QStringLiteral("TextBox.BorderStyle"));
    mBorderStyle = style;
    if (mLine)
        mLine->setFrame(style == 1);
    if (mMulti)
        mMulti->setFrameShape(style == 1 ? QFrame::StyledPanel : QFrame::NoFrame);
}

void TextBox::SetAppearance(short appearance)
{
    if (appearance < 0 || appearance > 1)
        Raise(vbErrInvalidPropertyValue, QStringLiteral("TextBox.Appearance"));
    mAppearance = appearance;
}

int TextBox::SelStart() const
{
    if (mMulti)
        return mMulti->textCursor().selectionStart();
    return mLine->hasSelectedText() ? mLine->selectionStart() : mLine->cursorPosition();
}

void TextBox::SetSelStart(int start)
{
    if (start < 0)
        Raise(vbErrInvalidPropertyValue, QStringLiteral("TextBox.SelStart"));
    if (mMulti) {
        QTextCursor c = mMulti->textCursor();
        c.setPosition(std::min<int>(start, mMulti->toPlainText().size()));
        mMulti->setTextCursor(c);
    } else {
        mLine->deselect();
        mLine->setCursorPosition(std::min<int>(start, mLine->text().size()));
    }
}

int TextBox::SelLength() const
{
    if (mMulti)
        return mMulti->textCursor().selectionEnd() - mMulti->textCursor().selectionStart();
    return mLine->hasSelectedText() ? static_cast<int>(mLine->selectedText().size()) : 0;
}

void TextBox::SetSelLength(int length)
{
    if (length < 0)
        Raise(vbErrInvalidPropertyValue, QStringLiteral("TextBox.SelLength"));
    const int start = SelStart();
    if (mMulti) {
        QTextCursor c = mMulti->textCursor();
        c.setPosition(start);
        c.setPosition(std::min<int>(start + length, mMulti->toPlainText().size()), QTextCursor::KeepAnchor);
        mMulti->setTextCursor(c);
    } else {
        mLine->setSelection(start, std::min<int>(length, mLine->text().size() - start));
    }
}

QString TextBox::SelText() const
{
    if (mMulti)
        return mMulti->textCursor().selectedText();
    return mLine->selectedText();
}

void TextBox::SetSelText(const QString& text)
{
    if (mMulti)
        mMulti->textCursor().insertText(text);
    else
        mLine->insert(text);
}

void TextBox::ReadProperties(PropertyBag& bag)
{
    StandardControl::ReadProperties(bag);
    const bool multi = CBool(bag.ReadProperty(QStringLiteral("MultiLine"), false));
    if (multi != mMultiLine)
        Build(multi);
    SetLocked(CBool(bag.ReadProperty(QStringLiteral("Locked"), false)));
    SetMaxLength(CLng(bag.ReadProperty(QStringLiteral("MaxLength"), 0)));
    SetPasswordChar(CStr(bag.ReadProperty(QStringLiteral("PasswordChar"), QString())));
    SetAlignment(CInt(bag.ReadProperty(QStringLiteral("Alignment"), 0)));
    SetBorderStyle(CInt(bag.ReadProperty(QStringLiteral("BorderStyle"), 1)));
    SetAppearance(CInt(bag.ReadProperty(QStringLiteral("Appearance"), 1)));
    SetRightToLeft(CBool(bag.ReadProperty(QStringLiteral("RightToLeft"), false)));
    SetText(CStr(bag.ReadProperty(QStringLiteral("Text"), QString())));
}

void TextBox::WriteProperties(PropertyBag& bag)
{
    StandardControl::WriteProperties(bag);
    bag.WriteProperty(QStringLiteral("MultiLine"), mMultiLine, false);
    bag.WriteProperty(QStringLiteral("Locked"), mLocked, false);
    bag.WriteProperty(QStringLiteral("MaxLength"), mMaxLength, 0);
    bag.WriteProperty(QStringLiteral("PasswordChar"), mPasswordChar, QString());
    bag.WriteProperty(QStringLiteral("Alignment"), mAlignment, std::int16_t{0});
    bag.WriteProperty(QStringLiteral("BorderStyle"), mBorderStyle, std::int16_t{1});
    bag.WriteProperty(QStringLiteral("Appearance"), mAppearance, std::int16_t{1});
    bag.WriteProperty(QStringLiteral("RightToLeft"), RightToLeft(), false);
    bag.WriteProperty(QStringLiteral("Text"), Text(), QString());
}

}  // namespace korvex
