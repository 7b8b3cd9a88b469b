// The standard frame: a captioned border that holds other controls.
#pragma once

#include "korvex/platform/host/StandardControl.h"

class QGroupBox;

namespace korvex {

class Frame : public StandardControl {
    Q_OBJECT
    Q_PROPERTY(QString Caption READ Caption WRITE SetCaption)
    Q_PROPERTY(short BorderStyle READ BorderStyle WRITE SetBorderStyle)

public:
    explicit Frame(QWidget* parent = nullptr);

    QString Caption() const;
    void SetCaption(const QString& caption);
    short BorderStyle() const noexcept { return mBorderStyle; }
    void SetBorderStyle(short style);

    QWidget* ContainerWidget() override;
    bool IsContainer() const override { return true; }

    void InitProperties() override { SetCaption(Name()); }
    void ReadProperties(PropertyBag& bag) override;
    void WriteProperties(PropertyBag& bag) override;

protected:
    void resizeEvent(QResizeEvent* event) override;

private:
    QGroupBox* mBox;
    short mBorderStyle = 1;
};

}  // namespace korvex
