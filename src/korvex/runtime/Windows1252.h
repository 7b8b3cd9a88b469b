// The Windows-1252 code page, for text exchanged as bytes (CSV and language files, character
// translation): Latin-1 plus the printable characters at 0x80 to 0x9F (euro sign, quotes,
// dashes). The five bytes that code page leaves undefined map to the control characters of the
// same number, as Windows itself maps them, so every byte survives a round trip.
#pragma once

#include <QByteArray>
#include <QByteArrayView>
#include <QString>
#include <QStringView>

namespace korvex {

QString FromWindows1252(QByteArrayView bytes);
// The same into `text`, whose storage is reused when it holds the only reference to it (for
// readers that decode field after field).
void FromWindows1252(QByteArrayView bytes, QString& text);
// The same into `out`, which has room for bytes.size() characters: for readers that decode
// into storage of their own.
void FromWindows1252(QByteArrayView bytes, char16_t* out);
// Characters the code page lacks become "?".
QByteArray ToWindows1252(QStringView text);

}  // namespace korvex
