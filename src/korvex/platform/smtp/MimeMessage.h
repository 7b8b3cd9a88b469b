// The text of one e-mail as it travels: headers (with the Date and Message-ID that senders are
// expected to add), a plain or HTML body and attachments, all in 7-bit MIME so that no
// transport has to re-encode it. Header fields holding a line break are refused, since a
// line break there would let a caller add headers of its own.
#pragma once

#include <QByteArray>
#include <QDateTime>
#include <QList>
#include <QString>
#include <QStringList>

namespace korvex {

struct MailAttachment {
    QString path;  // the file to read
    QString name;  // the name the recipient sees
};

struct MailMessage {
    QString from;
    QString fromName;
    QStringList to;
    QString toName;  // display name used when there is one recipient
    QStringList cc;
    QStringList bcc;  // envelope only, never in the headers
    QString subject;
    QString body;
    bool html = false;
    QList<MailAttachment> attachments;
};

// True when the text holds a carriage return or a line feed.
bool HasLineBreak(const QString& text);

// Splits a list of addresses at any of `delimiters`, trimming each and dropping empty ones.
QStringList SplitAddresses(const QString& list, const QString& delimiters);

// The message's MIME text with CR LF line ends. Raises ObjectErrorBase with a description when
// a header field holds a line break, there is no recipient, or an attachment cannot be read.
QByteArray BuildMime(const MailMessage& message, const QDateTime& date, const QString& messageId);

// "Mon, 23 Nov 2026 23:55:00 +0000".
QByteArray MailDate(const QDateTime& date);
// A fresh "<unique@domain>" with the domain of the sender's address.
QString NewMessageId(const QString& fromAddress);

}  // namespace korvex
