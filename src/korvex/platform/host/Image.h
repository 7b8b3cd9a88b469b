// The standard image control: a picture from a file, drawn at its size or stretched.
#pragma once

#include "korvex/platform/host/Control.h"

#include <QPixmap>

namespace korvex {

class Image : public Control {
    Q_OBJECT
    Q_PROPERTY(QString Picture READ Picture WRITE SetPicture)
    Q_PROPERTY(bool Stretch READ Stretch WRITE SetStretch)

public:
    explicit Image(QWidget* parent = nullptr);

    const QString& Picture() const noexcept { return mPicture; }
    // Raises 481 (invalid picture) for a file that is not a picture.
    void SetPicture(const QString& fileName);
    // A picture kept with the design rather than named by a file (Picture then reads "").
    void SetPixmap(const QPixmap& pixmap);
    bool Stretch() const noexcept { return mStretch; }
    void SetStretch(bool stretch);
    const QPixmap& Pixmap() const noexcept { return mPixmap; }

    void ReadProperties(PropertyBag& bag) override;
    void WriteProperties(PropertyBag& bag) override;

protected:
    void paintEvent(QPaintEvent* event) override;

private:
    QString mPicture;
    QPixmap mPixmap;
    bool mStretch = false;
};

}  // namespace korvex
