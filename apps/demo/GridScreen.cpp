// GridScreen: the customer grid shows name, e-mail, city and balance in that order, the other
// fields hidden; the e-mail column is kept narrow so that its tool tips have work to do.
#include "GridScreen.h"

#include "korvex/data/clsDatabase.h"
#include "korvex/platform/adosql/Connection.h"
#include "korvex/platform/ado/Recordset.h"
#include "korvex/platform/grid/Grid.h"
#include "korvex/platform/host/Form.h"

namespace demo {

using namespace korvex;

GridScreen::GridScreen(Form& form) : QObject(&form), mForm(form)
{
    mGrid = qobject_cast<Grid*>(form.FindControl(QStringLiteral("fgCustomers")));
    mRS = std::make_shared<ado::Recordset>();
    mRS->Open(Variant(QStringLiteral("SELECT * FROM customers ORDER BY \"Name\"")),
              Variant(static_cast<QObject*>(clsDatabase::Global().gcn().get())), ado::adOpenStatic, ado::adLockReadOnly);
    mGrid->SetDataSource(mRS);
    mUtil.SetFGColumns(mGrid, QStringLiteral("Name;Email;City;Balance"));
    mUtil.SetFGColumnCaptionsLGS(mGrid, QStringLiteral("colCustName;colCustEmail;colCustCity;colCustBalance"));
    mGrid->SetColWidth(0, 2400);
    mGrid->SetColWidth(1, 1500);
    mGrid->SetColWidth(2, 1500);
    connect(mGrid, &Control::MouseMove, this,
            [this](short&, short&, float&, float&) { mUtil.SetFGToolTip(&mForm, mGrid); });
}

}  // namespace demo
