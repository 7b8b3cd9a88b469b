// The standard picture box: a plain surface with a back colour and border that holds other
// controls and may show a picture.
#pragma once

#include "korvex/platform/host/StandardControl.h"

#include <QPixmap>

namespace korvex {

class PictureBox : public StandardControl {
    Q_OBJECT
    Q_PROPERTY(short BorderStyle READ BorderStyle WRITE SetBorderStyle)
    Q_PROPERTY(QString Picture READ Picture WRITE SetPicture)
    Q_PROPERTY(int ScaleWidth READ ScaleWidth)
    Q_PROPERTY(int ScaleHeight READ ScaleHeight)

public:
    explicit PictureBox(QWidget* parent = nullptr);

    short BorderStyle() const noexcept { return mBorderStyle; }
    void SetBorderStyle(short style);
    // The picture's file name; "" for none.
    const QString& Picture() const noexcept { return mPicture; }
    void SetPicture(const QString& fileName);
    int ScaleWidth() const;
    int ScaleHeight() const;

    bool IsContainer() const override { return true; }
    void ReadProperties(PropertyBag& bag) override;
    void WriteProperties(PropertyBag& bag) override;

signals:
    void Paint();

protected:
    QWidget* StyledWidget() override { return this; }
    void paintEvent(QPaintEvent* event) override;

private:
    short mBorderStyle = 1;
    QString mPicture;
    QPixmap mPixmap;
};

}  // namespace korvex
