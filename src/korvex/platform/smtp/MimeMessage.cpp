// Everything is base64 in the body parts: it keeps lines short and 7-bit whatever the text
// holds, which plain 8-bit text would not guarantee for long lines.
#include "korvex/platform/smtp/MimeMessage.h"

#include "korvex/runtime/Error.h"

#include <QFile>
#include <QFileInfo>
#include <QLocale>
#include <QMimeDatabase>
#include <QUuid>

namespace korvex {
namespace {

[[noreturn]] void Refuse(const QString& description)
{
    Raise(ObjectErrorBase, QStringLiteral("BuildMime"), description);
}

bool IsPlainAscii(const QString& text)
{
    for (QChar c : text)
        if (c.unicode() < 0x20 || c.unicode() > 0x7e)
            return false;
    return true;
}

QByteArray Base64Lines(const QByteArray& data)
{
    const QByteArray encoded = data.toBase64();
    QByteArray lines;
    lines.reserve(encoded.size() + encoded.size() / 76 * 2 + 2);
    for (qsizetype at = 0; at < encoded.size(); at += 76) {
        lines += encoded.mid(at, 76);
        lines += "\r\n";
    }
    return lines;
}

// A header text: as it stands when it is short plain ASCII, otherwise as encoded words of at
// most 45 bytes of UTF-8 each (whole characters), folded onto continuation lines.
QByteArray HeaderText(const QString& text)
{
    if (IsPlainAscii(text) && text.size() < 900)
        return text.toLatin1();
    QByteArray out;
    QByteArray chunk;
    auto flush = [&] {
        if (chunk.isEmpty())
            return;
        if (!out.isEmpty())
            out += "\r\n ";
        out += "=?UTF-8?B?" + chunk.toBase64() + "?=";
        chunk.clear();
    };
    for (qsizetype i = 0; i < text.size(); ++i) {
        const qsizetype width = text.at(i).isHighSurrogate() && i + 1 < text.size() ? 2 : 1;
        const QByteArray bytes = text.mid(i, width).toUtf8();
        if (chunk.size() + bytes.size() > 45)
            flush();
        chunk += bytes;
        i += width - 1;
    }
    flush();
    return out;
}

QByteArray Mailbox(const QString& name, const QString& address)
{
    if (name.isEmpty())
        return address.toLatin1();
    QByteArray shown;
    if (IsPlainAscii(name)) {
        QString quoted = name;
        quoted.replace(QLatin1Char('\\'), QLatin1String("\\\\")).replace(QLatin1Char('"'), QLatin1String("\\\""));
        shown = '"' + quoted.toLatin1() + '"';
    } else {
        shown = HeaderText(name);
    }
    return shown + " <" + address.toLatin1() + '>';
}

void CheckHeaderField(const QString& text, const char* what)
{
    if (HasLineBreak(text))
        Refuse(QStringLiteral("The %1 holds a line break.").arg(QLatin1String(what)));
}

void CheckAddress(const QString& address)
{
    CheckHeaderField(address, "address");
    // Addresses go into the envelope and the headers as they stand: only plain ASCII without
    // the characters that delimit them.
    if (!IsPlainAscii(address) || address.contains(QLatin1Char('<')) || address.contains(QLatin1Char('>'))
        || address.contains(QLatin1Char(',')) || address.contains(QLatin1Char(' ')))
        Refuse(QStringLiteral("The address '%1' is not valid.").arg(address));
}

QByteArray FileNameParameter(const QString& name)
{
    if (IsPlainAscii(name) && !name.contains(QLatin1Char('"')) && !name.contains(QLatin1Char('\\')))
        return "filename=\"" + name.toLatin1() + '"';
    return "filename*=UTF-8''" + name.toUtf8().toPercentEncoding();
}

QByteArray AttachmentPart(const MailAttachment& attachment)
{
    QFile file(attachment.path);
    if (!QFileInfo(attachment.path).isFile() || !file.open(QIODevice::ReadOnly))
        Refuse(QStringLiteral("The attachment '%1' cannot be read.").arg(attachment.path));
    const QByteArray data = file.readAll();
    const QString type = QMimeDatabase().mimeTypeForFile(attachment.name, QMimeDatabase::MatchExtension).name();
    return "Content-Type: " + type.toLatin1() + "\r\n"
           "Content-Transfer-Encoding: base64\r\n"
           "Content-Disposition: attachment; " + FileNameParameter(attachment.name) + "\r\n\r\n"
           + Base64Lines(data);
}

}  // namespace

bool HasLineBreak(const QString& text)
{
    return text.contains(QLatin1Char('\r')) || text.contains(QLatin1Char('\n'));
}

QStringList SplitAddresses(const QString& list, const QString& delimiters)
{
    QStringList addresses;
    QString current;
    auto take = [&] {
        const QString address = current.trimmed();
        if (!address.isEmpty())
            addresses << address;
        current.clear();
    };
    for (QChar c : list) {
        if (delimiters.contains(c))
            take();
        else
            current += c;
    }
    take();
    return addresses;
}

QByteArray MailDate(const QDateTime& date)
{
    const int offset = date.offsetFromUtc() / 60;
    const QString zone = QStringLiteral("%1%2%3")
                             .arg(offset < 0 ? QLatin1Char('-') : QLatin1Char('+'))
                             .arg(std::abs(offset) / 60, 2, 10, QLatin1Char('0'))
                             .arg(std::abs(offset) % 60, 2, 10, QLatin1Char('0'));
    return (QLocale::c().toString(date, QStringLiteral("ddd, dd MMM yyyy hh:mm:ss ")) + zone).toLatin1();
}

QString NewMessageId(const QString& fromAddress)
{
    QString domain = fromAddress.section(QLatin1Char('@'), -1);
    if (!fromAddress.contains(QLatin1Char('@')) || domain.isEmpty() || !IsPlainAscii(domain)
        || domain.contains(QLatin1Char('>')))
        domain = QStringLiteral("korvex.invalid");
    return QLatin1Char('<') + QUuid::createUuid().toString(QUuid::WithoutBraces) + QLatin1Char('@') + domain
           + QLatin1Char('>');
}

QByteArray BuildMime(const MailMessage& message, const QDateTime& date, const QString& messageId)
{
    CheckAddress(message.from);
    CheckHeaderField(message.fromName, "sender's name");
    CheckHeaderField(message.toName, "recipient's name");
    CheckHeaderField(message.subject, "subject");
    CheckHeaderField(messageId, "message identifier");
    if (message.to.isEmpty() && message.cc.isEmpty() && message.bcc.isEmpty())
        Refuse(QStringLiteral("The message has no recipient."));
    for (const QStringList* list : {&message.to, &message.cc, &message.bcc})
        for (const QString& address : *list)
            CheckAddress(address);

    QByteArray text = "Date: " + MailDate(date) + "\r\n";
    text += "From: " + Mailbox(message.fromName, message.from) + "\r\n";
    if (!message.to.isEmpty()) {
        QByteArrayList to;
        for (const QString& address : message.to)
            to << Mailbox(message.to.size() == 1 ? message.toName : QString(), address);
        text += "To: " + to.join(",\r\n ") + "\r\n";
    }
    if (!message.cc.isEmpty())
        text += "Cc: " + message.cc.join(QStringLiteral(",\r\n ")).toLatin1() + "\r\n";
    text += "Subject: " + HeaderText(message.subject) + "\r\n";
    text += "Message-ID: " + messageId.toLatin1() + "\r\n";
    text += "MIME-Version: 1.0\r\n";

    QString body = message.body;
    body.replace(QLatin1String("\r\n"), QLatin1String("\n")).replace(QLatin1Char('\r'), QLatin1Char('\n'));
    body.replace(QLatin1Char('\n'), QLatin1String("\r\n"));
    const QByteArray bodyPart = QByteArray("Content-Type: ") + (message.html ? "text/html" : "text/plain")
                                + "; charset=utf-8\r\nContent-Transfer-Encoding: base64\r\n\r\n"
                                + Base64Lines(body.toUtf8());
    if (message.attachments.isEmpty())
        return text + bodyPart;

    const QByteArray boundary = "=_korvex_" + QUuid::createUuid().toRfc4122().toHex();
    text += "Content-Type: multipart/mixed; boundary=\"" + boundary + "\"\r\n\r\n";
    text += "This is a multi-part message in MIME format.\r\n";
    text += "--" + boundary + "\r\n" + bodyPart;
    for (const MailAttachment& attachment : message.attachments)
        text += "--" + boundary + "\r\n" + AttachmentPart(attachment);
    text += "--" + boundary + "--\r\n";
    return text;
}

}  // namespace korvex
