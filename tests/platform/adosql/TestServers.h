// Real databases for the provider tests: SQLite files in a private folder, and a throwaway
// PostgreSQL cluster started once per test program (initdb and pg_ctl in a private folder,
// listening on a unix socket only) and removed when the program ends.
#pragma once

#include <QString>
#include <QTemporaryDir>

#include <memory>

namespace korvex::test {

// A folder only this user can read, removed with the object.
class PrivateFolder {
public:
    PrivateFolder();
    QString File(const QString& name) const;
    QString Path() const { return mDir.path(); }

private:
    QTemporaryDir mDir;
};

class PostgresServer {
public:
    // The program's server, started on first use; null when it cannot run, with the reason.
    static PostgresServer* Instance(QString* whyNot);
    ~PostgresServer();

    // A connection string for the superuser, over the unix socket.
    QString ConnectionString() const;

private:
    PostgresServer() = default;
    bool Start(QString* whyNot);
    void Stop();

    std::unique_ptr<QTemporaryDir> mDir;
    QString mBin;
    QString mData;
    QString mSocket;
    int mPort = 0;
    bool mRunning = false;
};

}  // namespace korvex::test

// Skips the test with the reason when the program has no PostgreSQL server.
#define KORVEX_REQUIRE_POSTGRES(server)                                         \
    QString korvexWhyNot_;                                                      \
    ::korvex::test::PostgresServer* server =                                    \
        ::korvex::test::PostgresServer::Instance(&korvexWhyNot_);               \
    if (!server)                                                                \
        GTEST_SKIP() << korvexWhyNot_.toStdString()
