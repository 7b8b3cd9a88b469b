// The standard command button: Click when pressed by mouse, space or its access key.
#pragma once

#include "korvex/platform/host/StandardControl.h"

class QPushButton;

namespace korvex {

class CommandButton : public StandardControl {
    Q_OBJECT
    Q_PROPERTY(QString Caption READ Caption WRITE SetCaption)
    Q_PROPERTY(bool Default READ Default WRITE SetDefault)
    Q_PROPERTY(bool Cancel READ Cancel WRITE SetCancel)

public:
    explicit CommandButton(QWidget* parent = nullptr);

    QString Caption() const;
    void SetCaption(const QString& caption);
    bool Default() const;
    void SetDefault(bool isDefault);
    bool Cancel() const noexcept { return mCancel; }
    void SetCancel(bool cancel) { mCancel = cancel; }
    QPushButton* Button() const { return mButton; }

    void InitProperties() override { SetCaption(Name()); }
    void ReadProperties(PropertyBag& bag) override;
    void WriteProperties(PropertyBag& bag) override;

protected:
    bool ClickOnMouseUp() const override { return false; }
    void resizeEvent(QResizeEvent* event) override;

private:
    QPushButton* mButton;
    bool mCancel = false;
};

}  // namespace korvex
