// ComboBox over QComboBox.
#include "korvex/platform/host/ComboBox.h"

#include "korvex/platform/host/ControlRegistry.h"
#include "korvex/platform/host/PropertyBag.h"
#include "korvex/runtime/Conversions.h"
#include "korvex/runtime/EntryGuard.h"
#include "korvex/runtime/Error.h"

#include <QComboBox>
#include <QLineEdit>

namespace korvex {

KORVEX_REGISTER_CONTROL(ComboBox);

ComboBox::ComboBox(QWidget* parent) : StandardControl(parent, vbWindowBackground, vbWindowText), mCombo(new QComboBox(this))
{
    SetStyle(0);
    connect(mCombo, &QComboBox::activated, this, GuardedSlot(this, [this] { emit Click(); }));
    SetInputWidget(mCombo);
    resize(120, 21);
    ApplyStyle();
}

void ComboBox::resizeEvent(QResizeEvent* event)
{
    StandardControl::resizeEvent(event);
    mCombo->setGeometry(rect());
}

void ComboBox::SetStyle(short style)
{
    if (style != 0 && style != 2)
        Raise(vbErrInvalidPropertyValue, QStringLiteral("ComboBox.Style"));
    mStyle = style;
    mCombo->setEditable(style == 0);
    QLineEdit* edit = mCombo->lineEdit();
    if (edit && edit != mConnectedEdit) {
        connect(edit, &QLineEdit::textEdited, this, GuardedSlot(this, [this] { emit Change(); }));
        mConnectedEdit = edit;
    }
    if (edit)
        edit->setReadOnly(mLocked);
}

QString ComboBox::Text() const { return mCombo->currentText(); }

void ComboBox::SetText(const QString& text)
{
    if (mCombo->isEditable()) {
        mCombo->setEditText(text);
        emit Change();
        return;
    }
    const int index = mCombo->findText(text, Qt::MatchFixedString);
    if (index < 0 && !text.isEmpty())
        Raise(vbErrPropertyReadOnly, QStringLiteral("ComboBox.Text"));  // a list-only combo takes only its own items
    mCombo->setCurrentIndex(index);
}

int ComboBox::ListIndex() const { return mCombo->currentIndex(); }

void ComboBox::SetListIndex(int index)
{
    if (index < -1 || index >= mCombo->count())
        Raise(vbErrInvalidPropertyValue, QStringLiteral("ComboBox.ListIndex"));
    mCombo->setCurrentIndex(index);
    emit Click();
}

int ComboBox::ListCount() const { return mCombo->count(); }

void ComboBox::SetLocked(bool locked)
{
    mLocked = locked;
    if (QLineEdit* edit = mCombo->lineEdit())
        edit->setReadOnly(locked);
}

QString ComboBox::List(int index) const
{
    if (index < 0 || index >= mCombo->count())
        return {};
    return mCombo->itemText(index);
}

void ComboBox::AddItem(const QString& item, int index)
{
    if (index < -1 || index > mCombo->count())
        Raise(vbErrInvalidProcedureCall, QStringLiteral("ComboBox.AddItem"));
    const QSignalBlocker quiet(mCombo);
    mCombo->insertItem(index < 0 ? mCombo->count() : index, item);
    if (mCombo->count() == 1)
        mCombo->setCurrentIndex(-1);
}

void ComboBox::RemoveItem(int index)
{
    if (index < 0 || index >= mCombo->count())
        Raise(vbErrInvalidProcedureCall, QStringLiteral("ComboBox.RemoveItem"));
    mCombo->removeItem(index);
}

void ComboBox::Clear()
{
    mCombo->clear();
}

void ComboBox::ReadProperties(PropertyBag& bag)
{
    StandardControl::ReadProperties(bag);
    SetLocked(CBool(bag.ReadProperty(QStringLiteral("Locked"), false)));
    SetStyle(CInt(bag.ReadProperty(QStringLiteral("Style"), 0)));
    if (mStyle == 0)
        mCombo->setEditText(CStr(bag.ReadProperty(QStringLiteral("Text"), QString())));
}

void ComboBox::WriteProperties(PropertyBag& bag)
{
    StandardControl::WriteProperties(bag);
    bag.WriteProperty(QStringLiteral("Locked"), mLocked, false);
    bag.WriteProperty(QStringLiteral("Style"), mStyle, std::int16_t{0});
    if (mStyle == 0)
        bag.WriteProperty(QStringLiteral("Text"), Text(), QString());
}

}  // namespace korvex
