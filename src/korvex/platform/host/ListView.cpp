// ListView over a flat QTreeWidget.
#include "korvex/platform/host/ListView.h"

#include "korvex/platform/host/ControlRegistry.h"
#include "korvex/runtime/EntryGuard.h"
#include "korvex/runtime/Twips.h"

#include <QHeaderView>
#include <QTreeWidget>

namespace korvex {

KORVEX_REGISTER_CONTROL(ListView);

ListView::ListView(QWidget* parent) : StandardControl(parent, vbWindowBackground, vbWindowText), mTree(new QTreeWidget(this))
{
    mTree->setRootIsDecorated(false);
    mTree->setColumnCount(0);
    connect(mTree, &QTreeWidget::itemClicked, this, GuardedSlot(this, [this] { emit Click(); }));
    SetInputWidget(mTree);
    resize(200, 120);
    ApplyStyle();
}

void ListView::resizeEvent(QResizeEvent* event)
{
    StandardControl::resizeEvent(event);
    mTree->setGeometry(rect());
}

void ListView::AddColumnHeader(const QString& caption, int widthTwips)
{
    const int column = mTree->columnCount();
    mTree->setColumnCount(column + 1);
    mTree->headerItem()->setText(column, caption);
    mTree->setColumnWidth(column, TwipsToPixelsX(widthTwips));
}

void ListView::AddListItem(const QStringList& texts)
{
    new QTreeWidgetItem(mTree, texts);
}

void ListView::ClearListItems()
{
    mTree->clear();
}

int ListView::ListItemCount() const
{
    return mTree->topLevelItemCount();
}

}  // namespace korvex
