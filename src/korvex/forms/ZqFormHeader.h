// A title band docked to the top of a form: a caption at the left and one at the right, an
// optional help icon and close button at the right edge, a separator line along its bottom and
// optionally a spacer below that. Clicks on the icon and the button go to the form as events.
#pragma once

#include "korvex/controls/display/SurfaceFont.h"
#include "korvex/platform/host/UserControl.h"

namespace korvex {

class Image;
class Label;
class ZqLine;
class ZqSimpleButton;

class ZqFormHeader : public UserControl {
    Q_OBJECT
    Q_PROPERTY(QString CaptionLeft READ CaptionLeft WRITE SetCaptionLeft)
    Q_PROPERTY(QString CaptionRight READ CaptionRight WRITE SetCaptionRight)
    Q_PROPERTY(uint CaptionColor READ CaptionColor WRITE SetCaptionColor)
    Q_PROPERTY(QObject* Font READ FontObject WRITE SetFont)
    Q_PROPERTY(bool IncludesSpacer READ IncludesSpacer WRITE SetIncludesSpacer)
    Q_PROPERTY(bool HelpButton READ HelpButton WRITE SetHelpButton)
    Q_PROPERTY(bool CloseButton READ CloseButton WRITE SetCloseButton)

public:
    explicit ZqFormHeader(QWidget* parent = nullptr);

    // The texts as given; the labels show them with "&" doubled and outer spaces removed.
    const QString& CaptionLeft() const noexcept { return mCaptionLeft; }
    void SetCaptionLeft(const QString& caption);
    const QString& CaptionRight() const noexcept { return mCaptionRight; }
    void SetCaptionRight(const QString& caption);
    OleColor CaptionColor() const noexcept { return mCaptionColor; }
    void SetCaptionColor(OleColor color);
    StdFont* Font() const { return mFont.Get(); }
    QObject* FontObject() const { return mFont.Get(); }
    Variant FontValue() const { return Variant(FontObject()); }
    // The surface's font, and the font of both captions.
    void SetFont(QObject* font);
    bool IncludesSpacer() const noexcept { return mIncludesSpacer; }
    // Switching the spacer on makes the header taller by the spacer's height, and off shorter,
    // so the band above it keeps its size.
    void SetIncludesSpacer(bool includes);
    bool HelpButton() const;
    void SetHelpButton(bool shown);
    bool CloseButton() const;
    void SetCloseButton(bool shown);

    bool Alignable() const override { return true; }
    void InitProperties() override;

    // The parts, for those who look at the layout.
    Label* CaptionLabel(int index) const { return lblHeader[index]; }
    ZqLine* Separator(int index) const { return zqlnSep[index]; }
    ZqLine* Spacer() const { return zqlnSpacer; }
    Image* HelpIcon() const { return imgHelp; }
    ZqSimpleButton* CloseBox() const { return zqsbClose; }

signals:
    void HelpClicked();
    void CloseClicked();

protected:
    const PropertyList& PersistedProperties() const override;
    void Resize() override;

private:
    void LoadFont(const Variant& font);
    void ApplyFontToCaptions();

    QString mCaptionLeft;
    QString mCaptionRight;
    OleColor mCaptionColor{};
    bool mIncludesSpacer{};
    SurfaceFont mFont;
    Label* lblHeader[2];
    ZqLine* zqlnSep[2];
    ZqLine* zqlnSpacer;
    Image* imgHelp;
    ZqSimpleButton* zqsbClose;
};

}  // namespace korvex
