// Label over QLabel.
#include "korvex/platform/host/Label.h"

#include "korvex/platform/host/ControlRegistry.h"
#include "korvex/platform/host/PropertyBag.h"
#include "korvex/runtime/Conversions.h"
#include "korvex/runtime/Error.h"

#include <QLabel>

namespace korvex {

KORVEX_REGISTER_CONTROL(Label);

Label::Label(QWidget* parent) : StandardControl(parent, vbButtonFace, vbButtonText), mLabel(new QLabel(this))
{
    mLabel->setAlignment(Qt::AlignLeft | Qt::AlignTop);
    mLabel->setTextFormat(Qt::PlainText);
    SetInputWidget(mLabel);
    mLabel->setFocusPolicy(Qt::NoFocus);
    SetBackStyle(1);
    resize(100, 17);
    ApplyStyle();
}

void Label::resizeEvent(QResizeEvent* event)
{
    StandardControl::resizeEvent(event);
    mLabel->setGeometry(rect());
}

void Label::SetCaption(const QString& caption)
{
    mCaption = caption;
    mLabel->setText(ShownText());
    FitToCaption();
}

void Label::SetUseMnemonic(bool use)
{
    mUseMnemonic = use;
    SetCaption(mCaption);
}

QString Label::ShownText() const
{
    if (!mUseMnemonic)
        return mCaption;
    QString shown;
    shown.reserve(mCaption.size());
    for (qsizetype i = 0; i < mCaption.size(); ++i) {
        // A marker before another character goes; "&&" leaves one "&"; a last "&" stays.
        if (mCaption[i] == u'&' && i + 1 < mCaption.size())
            ++i;
        shown += mCaption[i];
    }
    return shown;
}

void Label::SetAlignment(short alignment)
{
    if (alignment < 0 || alignment > 2)
        Raise(vbErrInvalidPropertyValue, QStringLiteral("Label.Alignment"));
    mAlignment = alignment;
    const Qt::Alignment h = alignment == 1 ? Qt::AlignRight : alignment == 2 ? Qt::AlignHCenter : Qt::AlignLeft;
    mLabel->setAlignment(h | Qt::AlignTop);
}

void Label::SetAutoSize(bool autoSize)
{
    mAutoSize = autoSize;
    FitToCaption();
}

bool Label::WordWrap() const
{
    return mLabel->wordWrap();
}

void Label::SetWordWrap(bool wrap)
{
    mLabel->setWordWrap(wrap);
    FitToCaption();
}

void Label::SetBackStyle(short style)
{
    if (style < 0 || style > 1)
        Raise(vbErrInvalidPropertyValue, QStringLiteral("Label.BackStyle"));
    mBackStyle = style;
    mLabel->setAutoFillBackground(style == 1);
}

void Label::SetBorderStyle(short style)
{
    if (style < 0 || style > 1)
        Raise(vbErrInvalidPropertyValue, QStringLiteral("Label.BorderStyle"));
    mBorderStyle = style;
    mLabel->setFrameShape(style == 1 ? QFrame::Box : QFrame::NoFrame);
}

void Label::FitToCaption()
{
    if (!mAutoSize)
        return;
    const QSize hint = mLabel->sizeHint();
    resize(mLabel->wordWrap() ? width() : hint.width(), mLabel->wordWrap() ? mLabel->heightForWidth(width()) : hint.height());
}

void Label::ReadProperties(PropertyBag& bag)
{
    StandardControl::ReadProperties(bag);
    SetAlignment(CInt(bag.ReadProperty(QStringLiteral("Alignment"), 0)));
    SetWordWrap(CBool(bag.ReadProperty(QStringLiteral("WordWrap"), false)));
    SetBackStyle(CInt(bag.ReadProperty(QStringLiteral("BackStyle"), 1)));
    SetBorderStyle(CInt(bag.ReadProperty(QStringLiteral("BorderStyle"), 0)));
    mUseMnemonic = CBool(bag.ReadProperty(QStringLiteral("UseMnemonic"), true));
    SetCaption(CStr(bag.ReadProperty(QStringLiteral("Caption"), QString())));
    SetAutoSize(CBool(bag.ReadProperty(QStringLiteral("AutoSize"), false)));
}

void Label::WriteProperties(PropertyBag& bag)
{
    StandardControl::WriteProperties(bag);
    bag.WriteProperty(QStringLiteral("Alignment"), mAlignment, std::int16_t{0});
    bag.WriteProperty(QStringLiteral("WordWrap"), WordWrap(), false);
    bag.WriteProperty(QStringLiteral("BackStyle"), mBackStyle, std::int16_t{1});
    bag.WriteProperty(QStringLiteral("BorderStyle"), mBorderStyle, std::int16_t{0});
    bag.WriteProperty(QStringLiteral("UseMnemonic"), mUseMnemonic, true);
    bag.WriteProperty(QStringLiteral("Caption"), Caption(), QString());
    bag.WriteProperty(QStringLiteral("AutoSize"), mAutoSize, false);
}

}  // namespace korvex
