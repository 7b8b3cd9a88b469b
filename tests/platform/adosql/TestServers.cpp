// The test databases: private folders and the PostgreSQL cluster's life.
#include "tests/platform/adosql/TestServers.h"

#include <gtest/gtest.h>

#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QProcess>

#include <unistd.h>

namespace korvex::test {
namespace {

constexpr auto PostgresBin = "/usr/lib/postgresql/15/bin";

// Runs a program, as the postgres user when we are root (initdb refuses root).
bool RunAs(const QString& program, QStringList arguments, QString* output)
{
    QProcess process;
    process.setProcessChannelMode(QProcess::MergedChannels);
    if (::geteuid() == 0) {
        arguments.prepend(program);
        arguments.prepend(QStringLiteral("--"));
        arguments.prepend(QStringLiteral("postgres"));
        arguments.prepend(QStringLiteral("-u"));
        process.start(QStringLiteral("runuser"), arguments);
    } else {
        process.start(program, arguments);
    }
    const bool finished = process.waitForFinished(60000);
    if (output)
        *output = QString::fromLocal8Bit(process.readAll());
    return finished && process.exitStatus() == QProcess::NormalExit && process.exitCode() == 0;
}

std::unique_ptr<PostgresServer>& Slot()
{
    static std::unique_ptr<PostgresServer> server;
    return server;
}

// Stops the server once every test has run, while the application still exists.
class StopServer : public ::testing::Environment {
public:
    void TearDown() override { Slot().reset(); }
};
[[maybe_unused]] ::testing::Environment* const stopServer = ::testing::AddGlobalTestEnvironment(new StopServer);

}  // namespace

PrivateFolder::PrivateFolder()
{
    QFile::setPermissions(mDir.path(), QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);
}

QString PrivateFolder::File(const QString& name) const
{
    return mDir.filePath(name);
}

PostgresServer* PostgresServer::Instance(QString* whyNot)
{
    static bool tried = false;
    static QString reason;
    if (!tried) {
        tried = true;
        std::unique_ptr<PostgresServer> server(new PostgresServer);
        if (server->Start(&reason))
            Slot() = std::move(server);
    }
    if (whyNot)
        *whyNot = reason;
    return Slot().get();
}

bool PostgresServer::Start(QString* whyNot)
{
    mBin = QString::fromLatin1(PostgresBin);
    if (!QFileInfo::exists(mBin + QStringLiteral("/initdb")) || !QFileInfo::exists(mBin + QStringLiteral("/pg_ctl"))) {
        *whyNot = QStringLiteral("PostgreSQL server binaries (initdb, pg_ctl) not found in %1").arg(mBin);
        return false;
    }
    // A name of our own: the default one follows the application's name, which may hold a blank
    // that the server's option line would split.
    mDir = std::make_unique<QTemporaryDir>(QDir::tempPath() + QStringLiteral("/korvex-pg-XXXXXX"));
    if (!mDir->isValid()) {
        *whyNot = QStringLiteral("no temporary folder for the PostgreSQL cluster");
        return false;
    }
    // The folder belongs to the server's user alone (0700), whoever runs it.
    QFile::setPermissions(mDir->path(), QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);
    if (::geteuid() == 0 && QProcess::execute(QStringLiteral("chown"), {QStringLiteral("postgres:postgres"), mDir->path()}) != 0) {
        *whyNot = QStringLiteral("cannot give the cluster folder to the postgres user");
        return false;
    }
    mData = mDir->filePath(QStringLiteral("data"));
    mSocket = mDir->path();
    // Only a socket in our own folder; the port still keys the server's shared memory, so
    // test programs running side by side take different ones.
    mPort = 40000 + static_cast<int>(QCoreApplication::applicationPid() % 20000);
    QString output;
    if (!RunAs(mBin + QStringLiteral("/initdb"),
               {QStringLiteral("-D"), mData, QStringLiteral("-U"), QStringLiteral("postgres"), QStringLiteral("--auth=trust"),
                QStringLiteral("-E"), QStringLiteral("UTF8"), QStringLiteral("--locale=C.UTF-8"), QStringLiteral("--no-sync")},
               &output)) {
        *whyNot = QStringLiteral("initdb failed: ") + output;
        return false;
    }
    const QString options = QStringLiteral("-p %1 -k %2 -c listen_addresses='' -c fsync=off").arg(mPort).arg(mSocket);
    if (!RunAs(mBin + QStringLiteral("/pg_ctl"),
               {QStringLiteral("-D"), mData, QStringLiteral("-w"), QStringLiteral("-t"), QStringLiteral("30"), QStringLiteral("-o"),
                options, QStringLiteral("-l"), mDir->filePath(QStringLiteral("server.log")), QStringLiteral("start")},
               &output)) {
        QFile log(mDir->filePath(QStringLiteral("server.log")));
        log.open(QIODevice::ReadOnly);
        *whyNot = QStringLiteral("pg_ctl start failed: ") + output + QStringLiteral("\nserver log:\n") +
                  QString::fromLocal8Bit(log.readAll().right(2000));
        return false;
    }
    mRunning = true;
    return true;
}

PostgresServer::~PostgresServer()
{
    Stop();
}

void PostgresServer::Stop()
{
    if (!mRunning)
        return;
    RunAs(mBin + QStringLiteral("/pg_ctl"), {QStringLiteral("-D"), mData, QStringLiteral("-m"), QStringLiteral("fast"),
                                             QStringLiteral("-w"), QStringLiteral("stop")},
          nullptr);
    mRunning = false;
    mDir.reset();  // removes the cluster
}

QString PostgresServer::ConnectionString() const
{
    return QStringLiteral("Provider=PostgreSQL;Host=%1;Port=%2;Database=postgres;User ID=postgres").arg(mSocket).arg(mPort);
}

}  // namespace korvex::test
