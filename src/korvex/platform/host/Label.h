// The standard label: a caption with alignment, word wrap, auto-size and back style. With
// UseMnemonic (the default) an "&" marks the access key and is not shown; "&&" shows one "&".
#pragma once

#include "korvex/platform/host/StandardControl.h"

class QLabel;

namespace korvex {

class Label : public StandardControl {
    Q_OBJECT
    Q_CLASSINFO("DefaultProperty", "Caption")
    Q_PROPERTY(QString Caption READ Caption WRITE SetCaption)
    Q_PROPERTY(short Alignment READ Alignment WRITE SetAlignment)
    Q_PROPERTY(bool AutoSize READ AutoSize WRITE SetAutoSize)
    Q_PROPERTY(bool WordWrap READ WordWrap WRITE SetWordWrap)
    Q_PROPERTY(short BackStyle READ BackStyle WRITE SetBackStyle)
    Q_PROPERTY(short BorderStyle READ BorderStyle WRITE SetBorderStyle)
    Q_PROPERTY(bool UseMnemonic READ UseMnemonic WRITE SetUseMnemonic)

public:
    explicit Label(QWidget* parent = nullptr);

    const QString& Caption() const noexcept { return mCaption; }
    void SetCaption(const QString& caption);
    bool UseMnemonic() const noexcept { return mUseMnemonic; }
    void SetUseMnemonic(bool use);
    // The text as the label shows it, access-key markers taken out.
    QString ShownText() const;
    short Alignment() const noexcept { return mAlignment; }
    void SetAlignment(short alignment);
    bool AutoSize() const noexcept { return mAutoSize; }
    void SetAutoSize(bool autoSize);
    bool WordWrap() const;
    void SetWordWrap(bool wrap);
    short BackStyle() const noexcept { return mBackStyle; }
    void SetBackStyle(short style);
    short BorderStyle() const noexcept { return mBorderStyle; }
    void SetBorderStyle(short style);

    void InitProperties() override { SetCaption(Name()); }
    void ReadProperties(PropertyBag& bag) override;
    void WriteProperties(PropertyBag& bag) override;

protected:
    void resizeEvent(QResizeEvent* event) override;

private:
    void FitToCaption();

    QLabel* mLabel;
    QString mCaption;
    bool mUseMnemonic = true;
    short mAlignment = 0;
    bool mAutoSize = false;
    short mBackStyle = 1;
    short mBorderStyle = 0;
};

}  // namespace korvex
