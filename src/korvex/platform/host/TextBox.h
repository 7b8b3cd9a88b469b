// The standard text box: single-line on a QLineEdit, or multi-line on a QPlainTextEdit when the
// form file says so (MultiLine is fixed when the control is built, as the host's is).
#pragma once

#include "korvex/platform/host/StandardControl.h"

class QLineEdit;
class QPlainTextEdit;

namespace korvex {

class TextBox : public StandardControl {
    Q_OBJECT
    Q_CLASSINFO("DefaultProperty", "Text")
    Q_PROPERTY(QString Text READ Text WRITE SetText)
    Q_PROPERTY(bool Locked READ Locked WRITE SetLocked)
    Q_PROPERTY(int MaxLength READ MaxLength WRITE SetMaxLength)
    Q_PROPERTY(QString PasswordChar READ PasswordChar WRITE SetPasswordChar)
    Q_PROPERTY(short Alignment READ Alignment WRITE SetAlignment)
    Q_PROPERTY(short BorderStyle READ BorderStyle WRITE SetBorderStyle)
    Q_PROPERTY(short Appearance READ Appearance WRITE SetAppearance)
    Q_PROPERTY(bool MultiLine READ MultiLine)
    Q_PROPERTY(short ScrollBars READ ScrollBars)
    Q_PROPERTY(bool RightToLeft READ RightToLeft WRITE SetRightToLeft)
    Q_PROPERTY(int SelStart READ SelStart WRITE SetSelStart)
    Q_PROPERTY(int SelLength READ SelLength WRITE SetSelLength)
    Q_PROPERTY(QString SelText READ SelText WRITE SetSelText)

public:
    explicit TextBox(QWidget* parent = nullptr, bool multiLine = false);

    QString Text() const;
    void SetText(const QString& text);
    bool Locked() const noexcept { return mLocked; }
    void SetLocked(bool locked);
    int MaxLength() const noexcept { return mMaxLength; }
    void SetMaxLength(int length);
    const QString& PasswordChar() const noexcept { return mPasswordChar; }
    // One character or none; raises 380 for longer texts.
    void SetPasswordChar(const QString& passwordChar);
    short Alignment() const noexcept { return mAlignment; }
    void SetAlignment(short alignment);
    short BorderStyle() const noexcept { return mBorderStyle; }
    void SetBorderStyle(short style);
    short Appearance() const noexcept { return mAppearance; }
    void SetAppearance(short appearance);
    bool MultiLine() const noexcept { return mMultiLine; }
    short ScrollBars() const noexcept { return mMultiLine ? 2 : 0; }
    bool RightToLeft() const { return layoutDirection() == Qt::RightToLeft; }
    void SetRightToLeft(bool rightToLeft) { setLayoutDirection(rightToLeft ? Qt::RightToLeft : Qt::LeftToRight); }
    int SelStart() const;
    void SetSelStart(int start);
    int SelLength() const;
    void SetSelLength(int length);
    QString SelText() const;
    void SetSelText(const QString& text);

    QLineEdit* LineEdit() const { return mLine; }

    void InitProperties() override { SetText(Name()); }
    void ReadProperties(PropertyBag& bag) override;
    void WriteProperties(PropertyBag& bag) override;

signals:
    void Change();

protected:
    void resizeEvent(QResizeEvent* event) override;

private:
    void Build(bool multiLine);

    QLineEdit* mLine = nullptr;
    QPlainTextEdit* mMulti = nullptr;
    bool mMultiLine = false;
    bool mLocked = false;
    int mMaxLength = 0;
    QString mPasswordChar;
    short mAlignment = 0;
    short mBorderStyle = 1;
    short mAppearance = 1;
};

}  // namespace korvex
