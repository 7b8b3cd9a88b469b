// Both directions of the description file, so the writer and the reader cannot drift apart.
#include "korvex/email/MapiDescription.h"

#include "korvex/runtime/Windows1252.h"

namespace korvex {
namespace {

const QString kAddrTo = QStringLiteral("<AddrTo>");
const QString kSubject = QStringLiteral("<Subject>");
const QString kMessage = QStringLiteral("<Message>");
const QString kAttachment = QStringLiteral("<Attachment>");
const QString kName = QStringLiteral("<Name>");
const QString kAutoSend = QStringLiteral("<AutoSend>True");

}  // namespace

QStringList MapiDescriptionLines(const QString& toAddr, const QString& subject, const QString& msgText,
                                 const QString& attachmentPath, const QString& attachName, bool autoSend)
{
    QStringList lines;
    if (!toAddr.isEmpty())
        for (const QString& address : toAddr.split(QLatin1Char(';')))
            lines << kAddrTo + address;
    if (!subject.isEmpty())
        lines << kSubject + subject;
    if (!msgText.isEmpty())
        for (const QString& line : msgText.split(QStringLiteral("\r\n")))
            lines << kMessage + line;
    if (!attachmentPath.isEmpty())
        lines << kAttachment + attachmentPath + kName + attachName;
    if (autoSend)
        lines << kAutoSend;
    return lines;
}

QByteArray EncodeMapiDescription(const QStringList& lines)
{
    QByteArray bytes;
    for (const QString& line : lines)
        bytes += ToWindows1252(line) + "\r\n";
    return bytes;
}

MapiDescription ParseMapiDescription(QByteArrayView contents)
{
    MapiDescription description;
    const QString text = FromWindows1252(contents);
    QStringList lines = text.split(QStringLiteral("\r\n"));
    // The last line ends in CR LF, which leaves one empty piece behind it.
    if (!lines.isEmpty() && lines.constLast().isEmpty())
        lines.removeLast();
    for (const QString& line : lines) {
        if (line.startsWith(kAddrTo)) {
            description.to << line.mid(kAddrTo.size());
        } else if (line.startsWith(kSubject)) {
            description.subject = line.mid(kSubject.size());
        } else if (line.startsWith(kMessage)) {
            description.messageLines << line.mid(kMessage.size());
        } else if (line.startsWith(kAttachment)) {
            // The name is a bare file name, so the last "<Name>" is the one that separates.
            const QString rest = line.mid(kAttachment.size());
            const qsizetype at = rest.lastIndexOf(kName);
            description.attachmentPath = at < 0 ? rest : rest.left(at);
            description.attachmentName = at < 0 ? QString() : rest.mid(at + kName.size());
        } else if (line == kAutoSend) {
            description.autoSend = true;
        } else {
            description.unknownLines << line;
        }
    }
    return description;
}

}  // namespace korvex
