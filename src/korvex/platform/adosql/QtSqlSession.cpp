// Statements over QSqlQuery.
#include "korvex/platform/adosql/QtSqlSession.h"

#include "korvex/runtime/DateTime.h"

#include <QSqlField>
#include <QSqlQuery>
#include <QSqlRecord>

namespace korvex::ado {

class QtSqlStatement : public SqlStatement {
public:
    QtSqlStatement(const QtSqlSession& session, QSqlQuery query, QString sql)
        : mSession(session), mQuery(std::move(query)), mSql(std::move(sql))
    {
    }

    void Execute(std::span<const QVariant> parameters) override
    {
        mQuery.finish();
        // Statements without parameters run as they are: PostgreSQL prepares only queries and
        // data changes, not the statements that define tables or set savepoints.
        bool ok = false;
        if (parameters.empty()) {
            ok = mQuery.exec(mSql);
            mPrepared = false;
        } else {
            if (!mPrepared && !mQuery.prepare(mSql))
                mSession.Raise(mQuery.lastError());
            mPrepared = true;
            for (std::size_t i = 0; i < parameters.size(); ++i)
                mQuery.bindValue(static_cast<int>(i), parameters[i]);
            ok = mQuery.exec();
        }
        if (!ok)
            mSession.Raise(mQuery.lastError());
        mRecord = mQuery.isSelect() ? mQuery.record() : QSqlRecord();
    }

    int RowsAffected() const override { return mQuery.numRowsAffected(); }
    int ColumnCount() const override { return mRecord.count(); }

    ResultColumn Column(int index) const override
    {
        const QSqlField field = mRecord.field(index);
        ResultColumn column;
        column.name = field.name();
        column.baseTable = mSession.CleanTableName(field.tableName());
        column.type = ColumnTypeOfQt(field.metaType(), field.length(), field.precision());
        column.nullable = field.requiredStatus() == QSqlField::Required   ? 0
                          : field.requiredStatus() == QSqlField::Optional ? 1
                                                                          : -1;
        return column;
    }

    bool Next() override
    {
        if (mQuery.next())
            return true;
        if (mQuery.lastError().isValid())
            mSession.Raise(mQuery.lastError());
        return false;
    }

    Variant Value(int index) const override { return QtSqlSession::FromQVariant(mQuery.value(index)); }
    void Finish() override { mQuery.finish(); }

private:
    const QtSqlSession& mSession;
    QSqlQuery mQuery;
    QString mSql;
    bool mPrepared = false;
    QSqlRecord mRecord;
};

Variant QtSqlSession::FromQVariant(const QVariant& value)
{
    if (!value.isValid() || value.isNull())
        return Null;
    switch (value.metaType().id()) {
    case QMetaType::QDate: return Variant(DateFromQDateTime(QDateTime(value.toDate(), QTime(0, 0))));
    case QMetaType::QTime: return Variant(DateFromQDateTime(QDateTime(QDate(1899, 12, 30), value.toTime())));
    case QMetaType::QDateTime: return Variant(DateFromQDateTime(value.toDateTime().toLocalTime()));
    case QMetaType::QByteArray: return Variant(QStringLiteral("0x") + QString::fromLatin1(value.toByteArray().toHex()));
    default: return Variant::FromQVariant(value);
    }
}

std::unique_ptr<SqlStatement> QtSqlSession::PrepareStatement(const QString& sql)
{
    QSqlQuery query(Database());
    // QPSQL reads forward-only results a row at a time and loses them when another statement
    // runs meanwhile (the loader describes tables while it reads): PostgreSQL results come whole.
    query.setForwardOnly(Kind() != Dialect::PostgreSQL);
    return std::make_unique<QtSqlStatement>(*this, std::move(query), sql);
}

}  // namespace korvex::ado
