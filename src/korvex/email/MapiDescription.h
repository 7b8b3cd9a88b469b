// The small text file that describes one e-mail to the MAPI helper program: tagged lines
// ("<AddrTo>", "<Subject>", "<Message>", "<Attachment>...<Name>", "<AutoSend>True") in the
// ANSI code page, each ending in CR LF. The sender writes it, the helper reads it back.
#pragma once

#include <QByteArray>
#include <QByteArrayView>
#include <QString>
#include <QStringList>

namespace korvex {

struct MapiDescription {
    QStringList to;  // as written, an empty address included
    QString subject;
    QStringList messageLines;
    QString attachmentPath;
    QString attachmentName;
    bool autoSend = false;
    QStringList unknownLines;  // lines with no known tag, for the reader's log
};

// The file's lines for one e-mail, in the order the helper expects them.
QStringList MapiDescriptionLines(const QString& toAddr, const QString& subject, const QString& msgText,
                                 const QString& attachmentPath, const QString& attachName, bool autoSend);
// The lines as file contents: Windows-1252, every line followed by CR LF.
QByteArray EncodeMapiDescription(const QStringList& lines);
// Reads file contents back; never fails (what it cannot place goes to unknownLines).
MapiDescription ParseMapiDescription(QByteArrayView contents);

}  // namespace korvex
