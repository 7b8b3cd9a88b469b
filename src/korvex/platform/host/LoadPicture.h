// Pictures named by file, the way this host keeps every Picture property (Picture, MouseIcon,
// DownPicture...): the property holds the file name and the control keeps the loaded pixmap.
#pragma once

#include <QPixmap>
#include <QString>

namespace korvex {

// The picture in the file; a null pixmap for "" (no picture). Raises 481 (invalid picture),
// naming `source`, for a file that cannot be read as a picture.
QPixmap LoadPicture(const QString& fileName, const QString& source);

}  // namespace korvex
