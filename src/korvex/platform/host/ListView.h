// The standard list view in report mode: column headers and rows of text.
#pragma once

#include "korvex/platform/host/StandardControl.h"

class QTreeWidget;

namespace korvex {

class ListView : public StandardControl {
    Q_OBJECT
    Q_PROPERTY(int ListItemCount READ ListItemCount)

public:
    explicit ListView(QWidget* parent = nullptr);

    Q_INVOKABLE void AddColumnHeader(const QString& caption, int widthTwips = 1440);
    // Adds a row: the first text, then the sub-item texts.
    Q_INVOKABLE void AddListItem(const QStringList& texts);
    Q_INVOKABLE void ClearListItems();
    int ListItemCount() const;
    QTreeWidget* Tree() const { return mTree; }

protected:
    void resizeEvent(QResizeEvent* event) override;

private:
    QTreeWidget* mTree;
};

}  // namespace korvex
