// ZqCheckBox, the library's check box: one inner host check box (`chkBox`) whose clicks follow
// the control's own cycle (with the mixed state when ThreeState is set), one Click event for
// every change of value that says whether the user or the program made it, and, without a
// caption, a square around the box with a focus rectangle of its own.
#pragma once

#include "korvex/platform/host/CheckBox.h"
#include "korvex/platform/host/UserControl.h"

namespace korvex {

enum ZqCheckBoxClickReasons : int { zqchkChangedByCode = 1, zqchkChangedByUser = 2 };

class ZqCheckBox : public UserControl {
    Q_OBJECT
    Q_CLASSINFO("DefaultProperty", "Value")
    Q_PROPERTY(uint BackColor READ BackColor WRITE SetBackColor)
    Q_PROPERTY(uint ForeColor READ ForeColor WRITE SetForeColor)
    Q_PROPERTY(QObject* Font READ FontObject WRITE SetFontObject)
    Q_PROPERTY(short Alignment READ Alignment WRITE SetAlignment)
    Q_PROPERTY(short Appearance READ Appearance WRITE SetAppearance)
    Q_PROPERTY(QString Caption READ Caption WRITE SetCaption)
    Q_PROPERTY(bool CausesValidation READ CausesValidation WRITE SetCausesValidation)
    Q_PROPERTY(QString DataField READ DataField WRITE SetDataField)
    Q_PROPERTY(QString DisabledPicture READ DisabledPicture WRITE SetDisabledPicture)
    Q_PROPERTY(QString DownPicture READ DownPicture WRITE SetDownPicture)
    Q_PROPERTY(uint MaskColor READ MaskColor WRITE SetMaskColor)
    Q_PROPERTY(QString MouseIcon READ MouseIcon WRITE SetMouseIcon)
    Q_PROPERTY(int MousePointer READ MousePointer WRITE SetMousePointer)
    Q_PROPERTY(short OLEDropMode READ OLEDropMode WRITE SetOLEDropMode)
    Q_PROPERTY(QString Picture READ Picture WRITE SetPicture)
    Q_PROPERTY(QString ToolTipText READ ToolTipText WRITE SetToolTipText)
    Q_PROPERTY(bool UseMaskColor READ UseMaskColor WRITE SetUseMaskColor)
    Q_PROPERTY(short Value READ Value WRITE SetValue)
    Q_PROPERTY(int WhatsThisHelpID READ WhatsThisHelpID WRITE SetWhatsThisHelpID)
    Q_PROPERTY(bool ThreeState READ ThreeState WRITE SetThreeState)
    Q_PROPERTY(qlonglong hwnd READ hwnd)

public:
    explicit ZqCheckBox(QWidget* parent = nullptr);

    // The inner box's colours; the back colour is also the control's own surface.
    OleColor BackColor() const { return chkBox->BackColor(); }
    void SetBackColor(OleColor color);
    OleColor ForeColor() const { return chkBox->ForeColor(); }
    void SetForeColor(OleColor color);
    void SetEnabled(bool enabled) override;
    StdFont* Font() const { return chkBox->Font(); }
    QObject* FontObject() const { return chkBox->FontObject(); }
    void SetFontObject(QObject* font);
    short Alignment() const { return chkBox->Alignment(); }
    void SetAlignment(short alignment);
    short Appearance() const { return chkBox->Appearance(); }
    void SetAppearance(short appearance);
    QString Caption() const { return chkBox->Caption(); }
    void SetCaption(const QString& caption);
    // The inner box's setting, which decides validation when the focus moves into this control.
    bool CausesValidation() const { return chkBox->CausesValidation(); }
    void SetCausesValidation(bool causes);
    const QString& DataField() const noexcept { return mDataField; }
    void SetDataField(const QString& field);
    QString DisabledPicture() const { return chkBox->DisabledPicture(); }
    void SetDisabledPicture(const QString& fileName);
    QString DownPicture() const { return chkBox->DownPicture(); }
    void SetDownPicture(const QString& fileName);
    OleColor MaskColor() const { return chkBox->MaskColor(); }
    void SetMaskColor(OleColor color);
    QString MouseIcon() const { return chkBox->MouseIcon(); }
    void SetMouseIcon(const QString& fileName);
    int MousePointer() const { return chkBox->MousePointer(); }
    void SetMousePointer(int pointer);
    short OLEDropMode() const { return chkBox->OLEDropMode(); }
    void SetOLEDropMode(short mode);
    QString Picture() const { return chkBox->Picture(); }
    void SetPicture(const QString& fileName);
    QString ToolTipText() const { return chkBox->ToolTipText(); }
    void SetToolTipText(const QString& text);
    bool UseMaskColor() const { return chkBox->UseMaskColor(); }
    void SetUseMaskColor(bool use);
    int WhatsThisHelpID() const { return chkBox->WhatsThisHelpID(); }
    void SetWhatsThisHelpID(int id);
    short Value() const { return chkBox->Value(); }
    // Writes the value (0, 1 or 2; 380 otherwise) and raises Click by code, even when the value
    // was already set.
    void SetValue(short value);
    // Whether user clicks pass through the mixed state; takes effect once the value next changes.
    bool ThreeState() const noexcept { return mThreeState; }
    void SetThreeState(bool threeState);
    qlonglong hwnd() const { return hWnd(); }

    Q_INVOKABLE void Refresh() override;
    void SetTabStop(bool tabStop) override;

    CheckBox* InnerBox() const { return chkBox; }
    // The value the next user click sets.
    short NextValue() const noexcept { return mNextValue; }

signals:
    void Click(ZqCheckBoxClickReasons Reason);

protected:
    const PropertyList& PersistedProperties() const override;
    void InnerFocusChanged(bool hasFocus) override;
    void Resize() override;
    void Paint(QPainter& painter) override;
    QSize sizeHint() const override;
    QSize minimumSizeHint() const override;

private:
    void InnerBoxClicked();
    void LoadValue(short value);
    void ComputeNextValue();
    bool HasCaption() const;
    void ApplyOwnColors();

    CheckBox* chkBox;
    bool mThreeState{};  // from the declaration, like every persisted setting
    short mNextValue = vbGrayed;
    bool mClickGuard = false;
    bool mHasFocus = false;
    QString mDataField;
    // Three screen pixels in twips, fixed when the control is made.
    const short mMarginX;
    const short mMarginY;
};

}  // namespace korvex
