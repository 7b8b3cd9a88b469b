// The SMTP sender against a real server on 127.0.0.1: messages and attachments arrive byte
// for byte over plain and STARTTLS sessions, with and without AUTH; servers that stall or
// refuse end in a failure instead of a hang; header injection never reaches the server.
#include "korvex/platform/smtp/MimeMessage.h"
#include "korvex/platform/smtp/SmtpMail.h"
#include "tests/support/SmtpSink.h"
#include "tests/support/TestFiles.h"

#include <QElapsedTimer>
#include <QTimeZone>
#include <QJsonArray>
#include <QSignalSpy>

#include <arpa/inet.h>
#include <ifaddrs.h>
#include <netinet/in.h>
#include <sys/socket.h>
#include <unistd.h>

#include <gtest/gtest.h>

namespace korvex {
namespace {

using test::SmtpSink;

#define SKIP_WITHOUT_SINK()                                                    \
    if (!SmtpSink::Available())                                                \
    GTEST_SKIP() << "skipped: /usr/bin/python3 has no aiosmtpd"

QByteArray AllBytes()
{
    QByteArray bytes;
    for (int round = 0; round < 40; ++round)
        for (int b = 0; b < 256; ++b)
            bytes += static_cast<char>(b);
    return bytes;
}

// A port of 127.0.0.1 that nothing listens on (bound for a moment and released).
int ClosedPort()
{
    const int fd = socket(AF_INET, SOCK_STREAM, 0);
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    socklen_t length = sizeof address;
    int port = -1;
    if (bind(fd, reinterpret_cast<sockaddr*>(&address), sizeof address) == 0
        && getsockname(fd, reinterpret_cast<sockaddr*>(&address), &length) == 0)
        port = ntohs(address.sin_port);
    close(fd);
    return port;
}

SmtpOptions QuickOptions(SmtpSecurity security = SmtpSecurity::None)
{
    SmtpOptions options;
    options.security = security;
    options.connectTimeoutMs = 2000;
    options.transferTimeoutMs = 4000;
    return options;
}

TEST(SmtpMail, BatchWithAttachmentsArrivesByteForByte)
{
    SKIP_WITHOUT_SINK();
    SmtpSink sink(SmtpSink::Plain);
    test::TestFolder folder;
    // Binary data, and text whose lines start with dots and hold bare line feeds: both must
    // survive the transport's dot stuffing and line-end handling.
    const QList<QByteArray> contents{AllBytes(), QByteArray(".\r\n..dot\n.\r\nend"), QByteArray()};
    const QStringList names{QStringLiteral("data.bin"), QStringLiteral("Prüfung.txt"), QStringLiteral("empty.csv")};

    const QStringList subjects{QStringLiteral("Report 0"), QStringLiteral("Grüße – 1 ") + QString(60, QChar(0x20AC)),
                               QStringLiteral("Report 2")};
    SmtpMail mail;
    mail.SetOptions(QuickOptions());
    mail.SetSMTPHost(sink.Server());
    ASSERT_TRUE(mail.Connect()) << qPrintable(mail.LastError());
    QSignalSpy succeeded(&mail, &SmtpMail::SendSuccesful);
    for (int i = 0; i < 3; ++i) {
        mail.SetFrom(QStringLiteral("sender@example.com"));
        mail.SetRecipient(QStringLiteral("one@example.com; two@example.com"));
        mail.SetSubject(subjects[i]);
        mail.SetMessage(QStringLiteral("Line one\r\n.\r\nLine three ü %1").arg(i));
        mail.SetAsHTML(i == 2);
        mail.SetAttachment(folder.Write(names[i], contents[i]));
        EXPECT_TRUE(mail.Send()) << qPrintable(mail.LastError());
    }
    EXPECT_EQ(succeeded.count(), 3);
    mail.Disconnect();

    QStringList messageIds;
    for (int i = 0; i < 3; ++i) {
        const QJsonObject message = sink.Message(i + 1);
        ASSERT_FALSE(message.isEmpty()) << "message " << i + 1 << " did not arrive";
        const QJsonObject headers = message[QStringLiteral("headers")].toObject();
        EXPECT_EQ(message[QStringLiteral("from")].toString(), "sender@example.com");
        EXPECT_EQ(message[QStringLiteral("to")].toArray().size(), 2);
        EXPECT_EQ(headers[QStringLiteral("Subject")].toString(), subjects[i]);
        EXPECT_FALSE(headers[QStringLiteral("Date")].toString().isEmpty()) << "curl adds no Date: we must";
        messageIds << headers[QStringLiteral("Message-ID")].toString();
        const QJsonArray parts = message[QStringLiteral("parts")].toArray();
        ASSERT_EQ(parts.size(), 2);
        EXPECT_EQ(parts[0].toObject()[QStringLiteral("type")].toString(), i == 2 ? "text/html" : "text/plain");
        EXPECT_EQ(QString::fromUtf8(SmtpSink::PartBytes(message, 0)),
                  QStringLiteral("Line one\r\n.\r\nLine three ü %1").arg(i));
        EXPECT_EQ(parts[1].toObject()[QStringLiteral("filename")].toString(), names[i]);
        EXPECT_EQ(SmtpSink::PartBytes(message, 1), contents[i]) << "attachment " << i;
    }
    EXPECT_EQ(messageIds.size(), 3);
    EXPECT_NE(messageIds[0], messageIds[1]);
    EXPECT_TRUE(messageIds[0].endsWith(QStringLiteral("@example.com>"))) << qPrintable(messageIds[0]);
}

TEST(SmtpMail, TlsSessionsWithAuth)
{
    SKIP_WITHOUT_SINK();
    for (auto mode : {SmtpSink::StartTls, SmtpSink::ImplicitTls}) {
        SCOPED_TRACE(mode == SmtpSink::StartTls ? "STARTTLS" : "implicit TLS");
        SmtpSink sink(mode, QStringLiteral("clerk"), QStringLiteral("s3cret"));
        SmtpOptions options = QuickOptions(mode == SmtpSink::StartTls ? SmtpSecurity::StartTls : SmtpSecurity::ImplicitTls);
        options.caFile = sink.CertFile();
        options.userName = QStringLiteral("clerk");
        options.password = QStringLiteral("wrong");

        SmtpMail mail;
        mail.SetSMTPHost(sink.Server());
        mail.SetOptions(options);
        EXPECT_FALSE(mail.Connect()) << "a wrong password ends the session before any mail";

        options.password = QStringLiteral("s3cret");
        mail.SetOptions(options);
        ASSERT_TRUE(mail.Connect()) << qPrintable(mail.LastError());
        mail.SetFrom(QStringLiteral("clerk@example.com"));
        mail.SetRecipient(QStringLiteral("boss@example.com"));
        mail.SetSubject(QStringLiteral("Over TLS"));
        mail.SetMessage(QStringLiteral("secret figures"));
        EXPECT_TRUE(mail.Send()) << qPrintable(mail.LastError());
        const QJsonObject message = sink.Message(1);
        EXPECT_TRUE(message[QStringLiteral("tls")].toBool());
        EXPECT_TRUE(message[QStringLiteral("authenticated")].toBool());
        EXPECT_EQ(SmtpSink::PartBytes(message, 0), "secret figures");

        // Without the certificate in the trusted set the server is not believed.
        options.caFile.clear();
        mail.SetOptions(options);
        EXPECT_FALSE(mail.Connect());
    }
}

// This machine's first IPv4 address besides loopback, or nothing.
QString OutsideAddress()
{
    ifaddrs* list = nullptr;
    if (getifaddrs(&list) != 0)
        return {};
    QString found;
    for (ifaddrs* a = list; a && found.isEmpty(); a = a->ifa_next) {
        if (!a->ifa_addr || a->ifa_addr->sa_family != AF_INET)
            continue;
        const in_addr address = reinterpret_cast<sockaddr_in*>(a->ifa_addr)->sin_addr;
        if ((ntohl(address.s_addr) >> 24) != 127) {
            char text[INET_ADDRSTRLEN] = {};
            found = QString::fromLatin1(inet_ntop(AF_INET, &address, text, sizeof text));
        }
    }
    freeifaddrs(list);
    return found;
}

// A plain session that logs in to another machine upgrades with STARTTLS first, and fails
// rather than send the password in clear to a server that cannot.
TEST(SmtpMail, PasswordsReachOtherMachinesOnlyEncrypted)
{
    SKIP_WITHOUT_SINK();
    const QString outside = OutsideAddress();
    if (outside.isEmpty())
        GTEST_SKIP() << "skipped: this machine has no address besides loopback";
    SmtpOptions options = QuickOptions();
    options.userName = QStringLiteral("clerk");
    options.password = QStringLiteral("s3cret");
    {
        SmtpSink sink(SmtpSink::Plain, QStringLiteral("clerk"), QStringLiteral("s3cret"), outside);
        SmtpMail mail;
        mail.SetSMTPHost(sink.Server());
        mail.SetOptions(options);
        EXPECT_FALSE(mail.Connect()) << "the server would have taken the password in clear";
        EXPECT_TRUE(mail.LastError().contains(QStringLiteral("STARTTLS"))) << qPrintable(mail.LastError());
    }
    SmtpSink sink(SmtpSink::StartTls, QStringLiteral("clerk"), QStringLiteral("s3cret"), outside);
    options.caFile = sink.CertFile();
    SmtpMail mail;
    mail.SetSMTPHost(sink.Server());
    mail.SetOptions(options);
    ASSERT_TRUE(mail.Connect()) << qPrintable(mail.LastError());
    mail.SetFrom(QStringLiteral("clerk@example.com"));
    mail.SetRecipient(QStringLiteral("boss@example.com"));
    mail.SetSubject(QStringLiteral("Upgraded"));
    mail.SetMessage(QStringLiteral("figures"));
    EXPECT_TRUE(mail.Send()) << qPrintable(mail.LastError());
    const QJsonObject message = sink.Message(1);
    EXPECT_TRUE(message[QStringLiteral("tls")].toBool());
    EXPECT_TRUE(message[QStringLiteral("authenticated")].toBool());
}

TEST(SmtpMail, StalledAndRefusedServersEndInFailure)
{
    SKIP_WITHOUT_SINK();
    for (auto mode : {SmtpSink::StallAfterGreeting, SmtpSink::StallAfterStartTls}) {
        SmtpSink sink(mode);
        SmtpMail mail;
        mail.SetSMTPHost(sink.Server());
        mail.SetOptions(QuickOptions(mode == SmtpSink::StallAfterStartTls ? SmtpSecurity::StartTls : SmtpSecurity::None));
        QElapsedTimer clock;
        clock.start();
        EXPECT_FALSE(mail.Connect()) << "mode " << mode;
        EXPECT_FALSE(mail.LastError().isEmpty());
        // A guard against hanging, far above the 2 s and 4 s limits.
        EXPECT_LT(clock.elapsed(), 30000) << "mode " << mode;
    }

    const int port = ClosedPort();
    ASSERT_GT(port, 0);
    SmtpMail mail;
    mail.SetSMTPHost(QStringLiteral("127.0.0.1:%1").arg(port));
    mail.SetOptions(QuickOptions());
    EXPECT_FALSE(mail.Connect());
    QSignalSpy failed(&mail, &SmtpMail::SendFailed);
    EXPECT_FALSE(mail.Send()) << "no session, no send";
    EXPECT_EQ(failed.count(), 1);
}

TEST(SmtpMail, LineBreaksInHeadersAndRejectedRecipientsFail)
{
    SKIP_WITHOUT_SINK();
    SmtpSink sink(SmtpSink::Plain);
    SmtpMail mail;
    mail.SetSMTPHost(sink.Server());
    mail.SetOptions(QuickOptions());
    ASSERT_TRUE(mail.Connect());
    QSignalSpy failed(&mail, &SmtpMail::SendFailed);
    mail.SetFrom(QStringLiteral("a@example.com"));
    const struct {
        QString recipient;
        QString subject;
        QString fromName;
        const char* why;
    } rows[] = {
        {QStringLiteral("b@example.com"), QStringLiteral("Hi\r\nBcc: victim@example.com"), {}, "CR LF in the subject"},
        {QStringLiteral("b@example.com"), QStringLiteral("Hi\nX: y"), {}, "a bare LF in the subject"},
        {QStringLiteral("b@example.com\r\nBcc: v@example.com"), QStringLiteral("Hi"), {}, "CR LF in the address"},
        {QStringLiteral("b@example.com"), QStringLiteral("Hi"), QStringLiteral("Name\rX"), "CR in a display name"},
        {QStringLiteral("B <b@example.com>"), QStringLiteral("Hi"), {}, "an address with its own brackets"},
        {QStringLiteral(""), QStringLiteral("Hi"), {}, "no recipient"},
    };
    for (const auto& row : rows) {
        mail.SetRecipient(row.recipient);
        mail.SetSubject(row.subject);
        mail.SetFromDisplayName(row.fromName);
        EXPECT_FALSE(mail.Send()) << row.why;
    }
    EXPECT_EQ(failed.count(), 6);
    mail.SetFromDisplayName({});
    mail.SetRecipient(QStringLiteral("reject-me@example.com"));
    mail.SetSubject(QStringLiteral("Hi"));
    EXPECT_FALSE(mail.Send()) << "the server refuses the recipient";
    mail.SetRecipient(QStringLiteral("fine@example.com"));
    EXPECT_TRUE(mail.Send()) << "the session survives a refused message: " << qPrintable(mail.LastError());
    EXPECT_FALSE(sink.Message(1).isEmpty());
    EXPECT_EQ(sink.MessageCount(), 1) << "nothing refused reached the server";
}

TEST(MimeMessage, HeadersAndAddressLists)
{
    MailMessage message;
    message.from = QStringLiteral("a@example.com");
    message.fromName = QStringLiteral("Ann \"The\" Clerk");
    message.to = SplitAddresses(QStringLiteral(" b@example.com |c@example.com;; "), QStringLiteral("|;"));
    message.subject = QStringLiteral("Plain");
    message.body = QStringLiteral("x");
    const QDateTime date(QDate(2026, 11, 23), QTime(23, 55, 1), QTimeZone(3600));
    const QByteArray text = BuildMime(message, date, QStringLiteral("<id@example.com>"));
    EXPECT_TRUE(text.startsWith("Date: Mon, 23 Nov 2026 23:55:01 +0100\r\n")) << text.constData();
    EXPECT_TRUE(text.contains("From: \"Ann \\\"The\\\" Clerk\" <a@example.com>\r\n")) << text.constData();
    EXPECT_TRUE(text.contains("To: b@example.com,\r\n c@example.com\r\n")) << text.constData();
    EXPECT_TRUE(text.contains("Message-ID: <id@example.com>\r\n"));
    EXPECT_FALSE(text.contains("Bcc"));
    EXPECT_EQ(NewMessageId(QStringLiteral("nobody")).section(QLatin1Char('@'), 1), "korvex.invalid>");
}

}  // namespace
}  // namespace korvex
