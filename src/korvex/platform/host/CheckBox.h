// The standard check box: Value 0 (unchecked), 1 (checked) or 2 (grayed); every change of the
// value, by the user or by code, raises Click, as the host's check box does. Its picture
// properties are kept as file names and persisted; a standard-style check box shows none.
#pragma once

#include "korvex/platform/host/StandardControl.h"

#include <QPixmap>

class QCheckBox;

namespace korvex {

// Values of a check box.
enum CheckBoxConstants : short { vbUnchecked = 0, vbChecked = 1, vbGrayed = 2 };
// OLEDropMode values a check box accepts.
enum OLEDropConstants : short { vbOLEDropNone = 0, vbOLEDropManual = 1 };

class CheckBox : public StandardControl {
    Q_OBJECT
    Q_CLASSINFO("DefaultProperty", "Value")
    Q_PROPERTY(QString Caption READ Caption WRITE SetCaption)
    Q_PROPERTY(short Value READ Value WRITE SetValue)
    Q_PROPERTY(short Alignment READ Alignment WRITE SetAlignment)
    Q_PROPERTY(short Appearance READ Appearance WRITE SetAppearance)
    Q_PROPERTY(QString Picture READ Picture WRITE SetPicture)
    Q_PROPERTY(QString DownPicture READ DownPicture WRITE SetDownPicture)
    Q_PROPERTY(QString DisabledPicture READ DisabledPicture WRITE SetDisabledPicture)
    Q_PROPERTY(uint MaskColor READ MaskColor WRITE SetMaskColor)
    Q_PROPERTY(bool UseMaskColor READ UseMaskColor WRITE SetUseMaskColor)
    Q_PROPERTY(short OLEDropMode READ OLEDropMode WRITE SetOLEDropMode)
    Q_PROPERTY(int WhatsThisHelpID READ WhatsThisHelpID WRITE SetWhatsThisHelpID)

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
    // 0 flat or 1 three-dimensional; raises 380 otherwise.
    void SetAppearance(short appearance);

    // Picture files; "" for none. Each raises 481 for a file that is not a picture.
    const QString& Picture() const noexcept { return mPicture.file; }
    void SetPicture(const QString& fileName);
    const QString& DownPicture() const noexcept { return mDownPicture.file; }
    void SetDownPicture(const QString& fileName);
    const QString& DisabledPicture() const noexcept { return mDisabledPicture.file; }
    void SetDisabledPicture(const QString& fileName);
    OleColor MaskColor() const noexcept { return mMaskColor; }
    void SetMaskColor(OleColor color) { mMaskColor = color; }
    bool UseMaskColor() const noexcept { return mUseMaskColor; }
    void SetUseMaskColor(bool use) { mUseMaskColor = use; }
    short OLEDropMode() const noexcept { return mOLEDropMode; }
    // vbOLEDropNone or vbOLEDropManual; raises 380 otherwise.
    void SetOLEDropMode(short mode);
    int WhatsThisHelpID() const noexcept { return mWhatsThisHelpID; }
    void SetWhatsThisHelpID(int id) { mWhatsThisHelpID = id; }

    QCheckBox* Box() const { return mBox; }

    void InitProperties() override { SetCaption(Name()); }
    void ReadProperties(PropertyBag& bag) override;
    void WriteProperties(PropertyBag& bag) override;

protected:
    bool ClickOnMouseUp() const override { return false; }
    void resizeEvent(QResizeEvent* event) override;

private:
    struct PictureFile {
        QString file;
        QPixmap pixmap;
    };
    void SetPictureFile(PictureFile& picture, const QString& fileName, const char* property);

    QCheckBox* mBox;
    short mAlignment = 0;
    short mAppearance = 1;
    PictureFile mPicture;
    PictureFile mDownPicture;
    PictureFile mDisabledPicture;
    OleColor mMaskColor = 0xC0C0C0;
    bool mUseMaskColor = false;
    short mOLEDropMode = vbOLEDropNone;
    int mWhatsThisHelpID = 0;
};

}  // namespace korvex
