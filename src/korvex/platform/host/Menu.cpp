// Menu: an action placed in the parent item's drop-down or the form's menu bar.
#include "korvex/platform/host/Menu.h"

#include "korvex/platform/host/ControlRegistry.h"
#include "korvex/platform/host/Form.h"
#include "korvex/platform/host/PropertyBag.h"
#include "korvex/runtime/Conversions.h"
#include "korvex/runtime/EntryGuard.h"

#include <QMenu>
#include <QMenuBar>

namespace korvex {

KORVEX_REGISTER_CONTROL(Menu);

Menu::Menu(QWidget* parent) : Control(parent), mAction(new QAction(this))
{
    QWidget::setVisible(false);
    connect(mAction, &QAction::triggered, this, GuardedSlot(this, [this] { emit Click(); }));
    if (auto* parentMenu = qobject_cast<Menu*>(parent)) {
        parentMenu->SubMenu()->addAction(mAction);
    } else if (Form* form = ParentForm()) {
        form->menuBar()->addAction(mAction);
    }
}

Menu::~Menu() = default;

QMenu* Menu::SubMenu()
{
    if (!mSubMenu) {
        mSubMenu = new QMenu(this);
        mAction->setMenu(mSubMenu);
    }
    return mSubMenu;
}

void Menu::SetCaption(const QString& caption)
{
    mAction->setText(caption);
    mAction->setSeparator(caption == QLatin1String("-"));
}

void Menu::SetChecked(bool checked)
{
    mAction->setCheckable(checked || mAction->isCheckable());
    mAction->setChecked(checked);
}

void Menu::SetEnabled(bool enabled)
{
    Control::SetEnabled(enabled);
    mAction->setEnabled(enabled);
}

void Menu::ReadProperties(PropertyBag& bag)
{
    SetCaption(CStr(bag.ReadProperty(QStringLiteral("Caption"), QString())));
    SetChecked(CBool(bag.ReadProperty(QStringLiteral("Checked"), false)));
}

void Menu::WriteProperties(PropertyBag& bag)
{
    bag.WriteProperty(QStringLiteral("Caption"), Caption(), QString());
    bag.WriteProperty(QStringLiteral("Checked"), Checked(), false);
}

}  // namespace korvex
