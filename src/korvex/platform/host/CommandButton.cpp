// CommandButton over QPushButton.
#include "korvex/platform/host/CommandButton.h"

#include "korvex/platform/host/ControlRegistry.h"
#include "korvex/platform/host/PropertyBag.h"
#include "korvex/runtime/Conversions.h"
#include "korvex/runtime/EntryGuard.h"

#include <QPushButton>

namespace korvex {

KORVEX_REGISTER_CONTROL(CommandButton);

CommandButton::CommandButton(QWidget* parent)
    : StandardControl(parent, vbButtonFace, vbButtonText), mButton(new QPushButton(this))
{
    connect(mButton, &QPushButton::clicked, this, GuardedSlot(this, [this] { emit Click(); }));
    SetInputWidget(mButton);
    resize(75, 23);
    ApplyStyle();
}

void CommandButton::resizeEvent(QResizeEvent* event)
{
    StandardControl::resizeEvent(event);
    mButton->setGeometry(rect());
}

QString CommandButton::Caption() const { return mButton->text(); }
void CommandButton::SetCaption(const QString& caption) { mButton->setText(caption); }
bool CommandButton::Default() const { return mButton->isDefault(); }
void CommandButton::SetDefault(bool isDefault) { mButton->setDefault(isDefault); }

void CommandButton::ReadProperties(PropertyBag& bag)
{
    StandardControl::ReadProperties(bag);
    SetCaption(CStr(bag.ReadProperty(QStringLiteral("Caption"), QString())));
    SetDefault(CBool(bag.ReadProperty(QStringLiteral("Default"), false)));
    SetCancel(CBool(bag.ReadProperty(QStringLiteral("Cancel"), false)));
}

void CommandButton::WriteProperties(PropertyBag& bag)
{
    StandardControl::WriteProperties(bag);
    bag.WriteProperty(QStringLiteral("Caption"), Caption(), QString());
    bag.WriteProperty(QStringLiteral("Default"), Default(), false);
    bag.WriteProperty(QStringLiteral("Cancel"), mCancel, false);
}

}  // namespace korvex
