// The standard combo box: style 0 (editable) or 2 (list only), items by position, Change
// while the text is edited and Click when an item is chosen.
#pragma once

#include "korvex/platform/host/StandardControl.h"

#include <QPointer>

class QComboBox;

namespace korvex {

class ComboBox : public StandardControl {
    Q_OBJECT
    Q_CLASSINFO("DefaultProperty", "Text")
    Q_PROPERTY(QString Text READ Text WRITE SetText)
    Q_PROPERTY(int ListIndex READ ListIndex WRITE SetListIndex)
    Q_PROPERTY(int ListCount READ ListCount)
    Q_PROPERTY(bool Locked READ Locked WRITE SetLocked)
    Q_PROPERTY(short Style READ Style)

public:
    explicit ComboBox(QWidget* parent = nullptr);

    QString Text() const;
    void SetText(const QString& text);
    int ListIndex() const;
    void SetListIndex(int index);
    int ListCount() const;
    bool Locked() const noexcept { return mLocked; }
    void SetLocked(bool locked);
    short Style() const noexcept { return mStyle; }
    Q_INVOKABLE QString List(int index) const;
    Q_INVOKABLE void AddItem(const QString& item, int index = -1);
    Q_INVOKABLE void RemoveItem(int index);
    Q_INVOKABLE void Clear();

    void ReadProperties(PropertyBag& bag) override;
    void WriteProperties(PropertyBag& bag) override;

signals:
    void Change();

protected:
    bool ClickOnMouseUp() const override { return false; }
    void resizeEvent(QResizeEvent* event) override;

private:
    void SetStyle(short style);

    QComboBox* mCombo;
    QPointer<QObject> mConnectedEdit;  // the editable combo's line edit, once its edits are followed
    bool mLocked = false;
    short mStyle = 0;
};

}  // namespace korvex
