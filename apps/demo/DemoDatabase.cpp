// DemoDatabase: the demo's SQLite file, its first filling from scripts and the generated items.
#include "DemoDatabase.h"

#include "ItemGenerator.h"

#include "korvex/data/clsDatabase.h"
#include "korvex/platform/adosql/Connection.h"
#include "korvex/platform/adosql/SqlSession.h"
#include "korvex/platform/ado/Recordset.h"
#include "korvex/runtime/Conversions.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QStandardPaths>

#include <array>

namespace demo {
namespace {

bool TableExists(korvex::ado::Connection& connection, const QString& table)
{
    auto rs = connection.Execute(QStringLiteral("SELECT COUNT(*) FROM sqlite_master WHERE type = 'table' AND name = ?"),
                                 korvex::Variant(table));
    return korvex::CLng(rs->Fields()->Item(korvex::Variant(std::int32_t{0}))->Value()) > 0;
}

// Runs the statements of a script built into the program in one transaction; the statements
// end with a semicolon at the end of a line.
void RunScript(korvex::ado::Connection& connection, const QString& resource)
{
    QFile script(resource);
    script.open(QIODevice::ReadOnly);
    const QStringList statements = QString::fromUtf8(script.readAll()).split(QStringLiteral(";\n"), Qt::SkipEmptyParts);
    connection.BeginTrans();
    for (const QString& statement : statements) {
        if (!statement.trimmed().isEmpty())
            connection.Execute(statement);
    }
    connection.CommitTrans();
}

}  // namespace

QString DefaultDatabasePath()
{
    const QString folder = QStandardPaths::writableLocation(QStandardPaths::AppLocalDataLocation);
    QDir().mkpath(folder);
    QFile::setPermissions(folder, QFileDevice::ReadOwner | QFileDevice::WriteOwner | QFileDevice::ExeOwner);
    return QDir(folder).filePath(QStringLiteral("customers.db"));
}

std::shared_ptr<korvex::ado::Connection> OpenDemoDatabase(const QString& path)
{
    const bool isNew = !QFileInfo::exists(path);
    auto connection = std::make_shared<korvex::ado::Connection>();
    connection->Open(QStringLiteral("Provider=SQLite;Data Source=") + path);
    if (isNew)
        RunScript(*connection, QStringLiteral(":/data/customers.sql"));
    // Databases of earlier demos have customers without a country: the script adds the column.
    if (!TableExists(*connection, QStringLiteral("countries")))
        RunScript(*connection, QStringLiteral(":/data/countries.sql"));
    korvex::clsDatabase::Global().SetGcn(connection);
    return connection;
}

bool EnsureItems(korvex::ado::Connection& connection)
{
    if (TableExists(connection, QStringLiteral("items")))
        return false;
    korvex::ado::SqlSession& session = connection.Session();
    // A million single statements through one prepared insert: SQLite's own speed, as long as
    // nothing is written to disk before the commit.
    session.Begin(true);
    try {
        session.Run(QStringLiteral("CREATE TABLE items (\"ItemId\" INTEGER PRIMARY KEY, \"Code\" VARCHAR(10) NOT NULL, "
                                   "\"Name\" VARCHAR(40) NOT NULL, \"Town\" VARCHAR(30) NOT NULL)"));
        auto insert = session.Prepare(
            QStringLiteral("INSERT INTO items (\"ItemId\", \"Code\", \"Name\", \"Town\") VALUES (?, ?, ?, ?)"));
        std::array<QVariant, 4> values;
        for (int i = 0; i < ItemCount; ++i) {
            Item item = MakeItem(i);
            values = {QVariant(i + 1), QVariant(std::move(item.code)), QVariant(std::move(item.name)),
                      QVariant(std::move(item.town))};
            insert->Execute(values);
        }
        insert.reset();
        session.Commit();
    } catch (...) {
        session.Rollback();
        throw;
    }
    return true;
}

}  // namespace demo
