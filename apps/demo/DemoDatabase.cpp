// DemoDatabase: the demo's SQLite file and its first filling.
#include "DemoDatabase.h"

#include "korvex/data/clsDatabase.h"
#include "korvex/platform/adosql/Connection.h"
#include "korvex/platform/ado/Recordset.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QStandardPaths>

namespace demo {

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
    if (isNew) {
        QFile script(QStringLiteral(":/data/customers.sql"));
        script.open(QIODevice::ReadOnly);
        // The script's statements end with a semicolon at the end of a line.
        const QStringList statements = QString::fromUtf8(script.readAll()).split(QStringLiteral(";\n"), Qt::SkipEmptyParts);
        connection->BeginTrans();
        for (const QString& statement : statements) {
            if (!statement.trimmed().isEmpty())
                connection->Execute(statement);
        }
        connection->CommitTrans();
    }
    korvex::clsDatabase::Global().SetGcn(connection);
    return connection;
}

}  // namespace demo
