// The standard check box: Value 0 (unchecked), 1 (checked) or 2 (grayed); every change of the
// value, by the user or by code, raises Click, as the host's check box does.
#pragma once

#include "korvex/platform/host/StandardControl.h"

class QCheckBox;

namespace korvex {

class CheckBox : public StandardControl {
    Q_OBJECT
    Q_CLASSINFO("DefaultProperty", "Value")
    Q_PROPERTY(QString Caption READ Caption WRITE SetCaption)
    Q_PROPERTY(short Value READ Value WRITE SetValue)
    Q_PROPERTY(short Alignment READ Alignment WRITE SetAlignment)
    Q_PROPERTY(short Appearance READ Appearance WRITE SetAppearance)

public:
    explicit CheckBox(QWidget* parent = nullptr);

    QString Caption() const;
    void SetCaption(const QString& caption);
    short Value() const;
    // Raises 380 for values other than 0, 1 and 2.
    void SetValue(short value);
    short Alignment() const noexcept { return mAlignment; }
    void SetAlignment(short alignment);
    short Appearance() const noexcept { return mAppearance; }
    void SetAppearance(short appearance) { mAppearance = appearance; }
    QCheckBox* Box() const { return mBox; }

    void InitProperties() override { SetCaption(Name()); }
    void ReadProperties(PropertyBag& bag) override;
    void WriteProperties(PropertyBag& bag) override;

protected:
    bool ClickOnMouseUp() const override { return false; }
    void resizeEvent(QResizeEvent* event) override;

private:
    QCheckBox* mBox;
    short mAlignment = 0;
    short mAppearance = 1;
};

}  // namespace korvex
