// What the display controls' tests share: rendering at a chosen device pixel ratio, and a form
// saved to its file text and loaded again.
#pragma once

#include "korvex/platform/host/Form.h"
#include "korvex/platform/host/FormFile.h"

#include <QColor>
#include <QImage>
#include <QWidget>

#include <memory>

namespace korvex::test {

// The widget painted onto white (without the window background Qt would put under it), at
// `ratio` device pixels to the pixel.
inline QImage RenderAt(QWidget* widget, qreal ratio = 1)
{
    QImage image(widget->size() * ratio, QImage::Format_ARGB32);
    image.setDevicePixelRatio(ratio);
    image.fill(Qt::white);
    widget->render(&image, QPoint(), QRegion(), QWidget::DrawChildren);
    return image;
}

inline QRgb Rgb(const QImage& image, int x, int y)
{
    return image.pixel(x, y) & 0xFFFFFFu;
}

inline QRgb Rgb(const QColor& colour)
{
    return colour.rgb() & 0xFFFFFFu;
}

// The form written to its file text and read back, as the designer and a program load it.
inline std::unique_ptr<Form> SavedAndLoaded(Form& form, QByteArray* text = nullptr)
{
    const QByteArray saved = FormFile::ToJson(form);
    if (text)
        *text = saved;
    return FormFile::FromJson(saved, QStringLiteral("display"));
}

}  // namespace korvex::test
