// ZqText, the library's text box: one inner host text box (`txt`) with a grey placeholder shown
// while the box is empty, enabled and without the focus, a KeyPress method that types into it
// without the focus, and every property and event of the inner box passed straight through.
#pragma once

#include "korvex/platform/host/TextBox.h"
#include "korvex/platform/host/UserControl.h"

namespace korvex {

class ZqText : public UserControl {
    Q_OBJECT
    Q_CLASSINFO("DefaultProperty", "Text")
    Q_PROPERTY(uint BackColor READ BackColor WRITE SetBackColor)
    Q_PROPERTY(uint ForeColor READ ForeColor WRITE SetForeColor)
    Q_PROPERTY(QObject* Font READ FontObject WRITE SetFontObject)
    Q_PROPERTY(short BorderStyle READ BorderStyle WRITE SetBorderStyle)
    Q_PROPERTY(short Alignment READ Alignment WRITE SetAlignment)
    Q_PROPERTY(short Appearance READ Appearance WRITE SetAppearance)
    Q_PROPERTY(bool Locked READ Locked WRITE SetLocked)
    Q_PROPERTY(int MaxLength READ MaxLength WRITE SetMaxLength)
    Q_PROPERTY(QString PasswordChar READ PasswordChar WRITE SetPasswordChar)
    Q_PROPERTY(QString Text READ Text WRITE SetText)
    Q_PROPERTY(bool RightToLeft READ RightToLeft WRITE SetRightToLeft)
    Q_PROPERTY(int MousePointer READ MousePointer WRITE SetMousePointer)
    Q_PROPERTY(QString MouseIcon READ MouseIcon WRITE SetMouseIcon)
    Q_PROPERTY(QString DefaultText READ DefaultText WRITE SetDefaultText)
    Q_PROPERTY(bool MultiLine READ MultiLine)
    Q_PROPERTY(short ScrollBars READ ScrollBars)
    Q_PROPERTY(int SelStart READ SelStart WRITE SetSelStart)
    Q_PROPERTY(int SelLength READ SelLength WRITE SetSelLength)
    Q_PROPERTY(QString SelText READ SelText WRITE SetSelText)
    Q_PROPERTY(qlonglong hWndTextBox READ hWndTextBox)
    Q_PROPERTY(qlonglong hwnd READ hwnd)

public:
    // The inner box is single-line or multi-line for its whole life; a form file may ask for a
    // multi-line one with "MultiLine" (read before anything else).
    explicit ZqText(QWidget* parent = nullptr, bool multiLine = false);

    OleColor BackColor() const { return txt->BackColor(); }
    void SetBackColor(OleColor color);
    // What the inner box shows in now: a colour set here lasts until the next refresh of the
    // display (focus, a write of Text or DefaultText).
    OleColor ForeColor() const { return txt->ForeColor(); }
    void SetForeColor(OleColor color);
    // The inner box's own setting; writing it does not refresh the display.
    void SetEnabled(bool enabled) override;
    StdFont* Font() const { return txt->Font(); }
    QObject* FontObject() const { return txt->FontObject(); }
    void SetFontObject(QObject* font);
    short BorderStyle() const { return txt->BorderStyle(); }
    void SetBorderStyle(short style);
    short Alignment() const { return txt->Alignment(); }
    void SetAlignment(short alignment);
    short Appearance() const { return txt->Appearance(); }
    void SetAppearance(short appearance);
    bool Locked() const { return txt->Locked(); }
    void SetLocked(bool locked);
    int MaxLength() const { return txt->MaxLength(); }
    void SetMaxLength(int length);
    QString PasswordChar() const { return txt->PasswordChar(); }
    void SetPasswordChar(const QString& passwordChar);
    // The stored text: what the user or the program entered, never the placeholder.
    const QString& Text() const noexcept { return mText; }
    void SetText(const QString& text);
    bool RightToLeft() const { return txt->RightToLeft(); }
    void SetRightToLeft(bool rightToLeft);
    int MousePointer() const { return txt->MousePointer(); }
    void SetMousePointer(int pointer);
    QString MouseIcon() const { return txt->MouseIcon(); }
    void SetMouseIcon(const QString& fileName);
    // The placeholder; "" for none.
    const QString& DefaultText() const noexcept { return mDefaultText; }
    void SetDefaultText(const QString& text);
    bool MultiLine() const { return txt->MultiLine(); }
    short ScrollBars() const { return txt->ScrollBars(); }
    // The selection of what the inner box shows at the moment.
    int SelStart() const { return txt->SelStart(); }
    void SetSelStart(int start);
    int SelLength() const { return txt->SelLength(); }
    void SetSelLength(int length);
    QString SelText() const { return txt->SelText(); }
    void SetSelText(const QString& text);
    qlonglong hWndTextBox() const { return txt->hWnd(); }
    qlonglong hwnd() const { return hWnd(); }

    // Types one character (a Windows code-page code, 0 to 255) at the end of the stored text,
    // whatever the focus, lock, length limit or selection: 8 removes the last character, 10
    // and 13 add a line break in a multi-line box and nothing otherwise. Raises Change once
    // when the text changed; raises 5 for codes outside 0 to 255. The KeyPress event of the
    // same name stays Control::KeyPress: this method hides it, so that a caller passing its
    // own KeyAscii variable types the character rather than raising the event.
    Q_INVOKABLE void KeyPress(short AsciiChar);
    Q_INVOKABLE void Refresh() override;
    void SetTabStop(bool tabStop) override;

    TextBox* InnerBox() const { return txt; }

    void ReadProperties(PropertyBag& bag) override;
    void WriteProperties(PropertyBag& bag) override;

signals:
    void Change();

protected:
    const PropertyList& PersistedProperties() const override;
    void InnerFocusChanged(bool hasFocus) override;
    void Resize() override;

private:
    void BuildInnerBox(bool multiLine);
    void InnerBoxChanged();
    void RefreshDisplay();
    bool ShowsPlaceholder() const;

    TextBox* txt = nullptr;
    QString mText;
    QString mDefaultText;
    bool mHasFocus = false;
    bool mRefreshing = false;
};

}  // namespace korvex
