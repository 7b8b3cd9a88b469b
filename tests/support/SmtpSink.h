// A local SMTP sink for tests: the Python script beside this header (aiosmtpd) started on a
// free port of 127.0.0.1, in plain, STARTTLS or implicit TLS mode (with a throwaway certificate) or as a
// server that stalls, and the messages it saved read back. Tests skip when /usr/bin/python3
// has no aiosmtpd.
#pragma once

#include <QByteArray>
#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QProcess>
#include <QTemporaryDir>
#include <QTest>

#include <gtest/gtest.h>

namespace korvex::test {

class SmtpSink {
public:
    enum Mode { Plain, StartTls, ImplicitTls, StallAfterGreeting, StallAfterStartTls };

    static bool Available()
    {
        return QProcess::execute(QStringLiteral("/usr/bin/python3"), {QStringLiteral("-c"), QStringLiteral("import aiosmtpd")}) == 0;
    }

    explicit SmtpSink(Mode mode, const QString& login = {}, const QString& password = {},
                      const QString& host = QStringLiteral("127.0.0.1"))
        : mHost(host)
    {
        static const char* const modes[] = {"plain", "starttls", "tls", "stall-greeting", "stall-starttls"};
        QStringList args{QStringLiteral(KORVEX_SMTP_SINK_SCRIPT), QStringLiteral("--mode"),
                         QString::fromLatin1(modes[mode]), QStringLiteral("--dir"), mDir.path()};
        if (mode == StartTls || mode == ImplicitTls) {
            MakeCertificate();
            args << QStringLiteral("--cert") << CertFile() << QStringLiteral("--key") << mDir.filePath(QStringLiteral("key.pem"));
        }
        if (!login.isEmpty())
            args << QStringLiteral("--auth") << login + QLatin1Char(':') + password;
        args << QStringLiteral("--host") << host;
        mProcess.setProcessChannelMode(QProcess::ForwardedErrorChannel);
        mProcess.start(QStringLiteral("/usr/bin/python3"), args);
        EXPECT_TRUE(QTest::qWaitFor([&] { return mProcess.canReadLine() || mProcess.state() == QProcess::NotRunning; }, 15000));
        const QByteArray line = mProcess.readLine().trimmed();
        EXPECT_TRUE(line.startsWith("READY ")) << line.constData();
        mPort = line.mid(6).toInt();
    }
    ~SmtpSink()
    {
        mProcess.terminate();
        if (!mProcess.waitForFinished(5000))
            mProcess.kill();
        mProcess.waitForFinished(2000);
    }
    SmtpSink(const SmtpSink&) = delete;
    SmtpSink& operator=(const SmtpSink&) = delete;

    int Port() const { return mPort; }
    QString Server() const { return QStringLiteral("%1:%2").arg(mHost).arg(mPort); }
    QString CertFile() const { return mDir.filePath(QStringLiteral("cert.pem")); }

    // The summary of the n-th message received (1-based), waiting for it to arrive; an empty
    // object when it does not.
    QJsonObject Message(int n, int waitMs = 10000) const
    {
        const QString path = mDir.filePath(QStringLiteral("msg%1.json").arg(n));
        if (!QTest::qWaitFor([&] { return QFile::exists(path); }, waitMs))
            return {};
        QFile file(path);
        if (!file.open(QIODevice::ReadOnly))
            return {};
        return QJsonDocument::fromJson(file.readAll()).object();
    }
    // The raw text of the n-th message.
    QByteArray Raw(int n) const { return Read(mDir.filePath(QStringLiteral("msg%1.eml").arg(n))); }
    // The decoded bytes of a part of a message summary.
    static QByteArray PartBytes(const QJsonObject& message, int index)
    {
        return Read(message[QStringLiteral("parts")].toArray().at(index).toObject()[QStringLiteral("file")].toString());
    }
    int MessageCount() const
    {
        return static_cast<int>(QDir(mDir.path()).entryList({QStringLiteral("msg*.json")}, QDir::Files).size());
    }

private:
    static QByteArray Read(const QString& path)
    {
        QFile file(path);
        return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
    }
    void MakeCertificate()
    {
        const int rc = QProcess::execute(
            QStringLiteral("openssl"),
            {QStringLiteral("req"), QStringLiteral("-x509"), QStringLiteral("-newkey"), QStringLiteral("rsa:2048"),
             QStringLiteral("-nodes"), QStringLiteral("-keyout"), mDir.filePath(QStringLiteral("key.pem")),
             QStringLiteral("-out"), CertFile(), QStringLiteral("-days"), QStringLiteral("2"), QStringLiteral("-subj"),
             QStringLiteral("/CN=localhost"), QStringLiteral("-addext"),
             QStringLiteral("subjectAltName=IP:%1,DNS:localhost").arg(mHost)});
        EXPECT_EQ(rc, 0) << "openssl could not make a certificate";
    }

    QString mHost;
    QTemporaryDir mDir;
    QProcess mProcess;
    int mPort = 0;
};

}  // namespace korvex::test
