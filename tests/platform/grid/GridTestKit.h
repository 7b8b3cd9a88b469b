// Shared by the grid tests: a customer recordset, a watch on QAbstractItemModelTester's
// complaints (it reports through Qt logging, which GoogleTest does not see), and reading the
// text of a column through the grid.
#pragma once

#include "tests/platform/ado/RecordsetBuilder.h"

#include <QLoggingCategory>
#include <QStringList>

#include <memory>

namespace korvex::test {

inline std::shared_ptr<ado::Recordset> Customers(int lockType = ado::adLockBatchOptimistic)
{
    using namespace ado;
    return ado::test::MakeRecordset({{"Code", adVarWChar, 10}, {"Name", adVarWChar, 40}, {"Town", adVarWChar, 30}},
                                    {{"C01", "Baker", "Bath"},
                                     {"C02", "Adams", "York"},
                                     {"C03", "Cole", "Leeds"},
                                     {"C04", "Brown", "Derby"},
                                     {"C05", "Evans", "Hull"}},
                                    lockType);
}

// Collects what the model tester says while it lives.
class ModelTesterComplaints {
public:
    ModelTesterComplaints()
    {
        Instance() = this;
        mPrevious = qInstallMessageHandler(&Handle);
    }
    ~ModelTesterComplaints()
    {
        qInstallMessageHandler(mPrevious);
        Instance() = nullptr;
    }
    const QStringList& Lines() const { return mLines; }

private:
    static ModelTesterComplaints*& Instance()
    {
        static ModelTesterComplaints* instance = nullptr;
        return instance;
    }
    static void Handle(QtMsgType type, const QMessageLogContext& context, const QString& message)
    {
        if (Instance() && context.category && QByteArray(context.category).startsWith("qt.modeltest"))
            Instance()->mLines << message;
        else if (Instance() && Instance()->mPrevious)
            Instance()->mPrevious(type, context, message);
    }
    QtMessageHandler mPrevious = nullptr;
    QStringList mLines;
};

}  // namespace korvex::test
