// A menu item: top-level items go into the form's menu bar, items placed in another menu item
// into its drop-down. A caption of "-" is a separator. Click when chosen.
#pragma once

#include "korvex/platform/host/Control.h"

#include <QAction>
#include <QPointer>

class QMenu;

namespace korvex {

class Menu : public Control {
    Q_OBJECT
    Q_PROPERTY(QString Caption READ Caption WRITE SetCaption)
    Q_PROPERTY(bool Checked READ Checked WRITE SetChecked)

public:
    explicit Menu(QWidget* parent = nullptr);
    ~Menu() override;

    QString Caption() const { return mAction->text(); }
    void SetCaption(const QString& caption);
    bool Checked() const { return mAction->isChecked(); }
    void SetChecked(bool checked);
    void SetEnabled(bool enabled) override;
    bool Visible() const override { return mAction->isVisible(); }
    void SetVisible(bool visible) override { mAction->setVisible(visible); }
    QAction* Action() const { return mAction; }

    bool IsContainer() const override { return true; }
    bool HasExtenderGeometry() const override { return false; }
    void ReadProperties(PropertyBag& bag) override;
    void WriteProperties(PropertyBag& bag) override;

private:
    QMenu* SubMenu();

    QAction* mAction;
    QMenu* mSubMenu = nullptr;
};

}  // namespace korvex
