// LoadPicture: one place that turns a picture property's file name into a pixmap.
#include "korvex/platform/host/LoadPicture.h"

#include "korvex/runtime/Error.h"

namespace korvex {

QPixmap LoadPicture(const QString& fileName, const QString& source)
{
    QPixmap pixmap;
    if (!fileName.isEmpty() && !pixmap.load(fileName))
        Raise(481, source);
    return pixmap;
}

}  // namespace korvex
