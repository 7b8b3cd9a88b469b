// Shared by the grid tests: a customer recordset, a grid on a shown form, and a watch on
// QAbstractItemModelTester's complaints (it reports through Qt logging, which GoogleTest does
// not see).
#pragma once

#include "korvex/platform/grid/Grid.h"
#include "korvex/platform/host/Form.h"
#include "tests/platform/ado/RecordsetBuilder.h"

#include <QApplication>
#include <QLoggingCategory>
#include <QStringList>
#include <QTableView>

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

// A grid filling most of a shown form, the size the tests lay their cells out for.
struct ShownGrid {
    ShownGrid()
    {
        form.resize(500, 300);
        grid = new Grid(form.Client());
        grid->setGeometry(0, 0, 480, 260);
        form.show();
        QApplication::processEvents();
    }
    QTableView* View() const { return static_cast<QTableView*>(grid->View()); }
    // The centre of a cell in the view's viewport.
    QPoint CellCentre(int modelRow, int logical) const
    {
        return View()->visualRect(grid->Model()->index(modelRow, logical)).center();
    }
    Form form;
    Grid* grid;
};

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
