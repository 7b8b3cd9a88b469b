// ComboScreen: the items are read into one recordset, which the combo copies (the copies share
// its rows); the line under the combo shows the chosen item as the Changed event reports it.
#include "ComboScreen.h"

#include "DemoDatabase.h"
#include "ItemGenerator.h"

#include "korvex/controls/input/ZqText.h"
#include "korvex/controls/lists/ZqDropdown.h"
#include "korvex/data/clsDatabase.h"
#include "korvex/platform/ado/Fields.h"
#include "korvex/platform/ado/Field.h"
#include "korvex/platform/ado/Properties.h"
#include "korvex/platform/ado/Property.h"
#include "korvex/platform/ado/Recordset.h"
#include "korvex/platform/adosql/Connection.h"
#include "korvex/platform/host/Form.h"
#include "korvex/platform/host/Label.h"
#include "korvex/runtime/Conversions.h"
#include "korvex/runtime/EntryGuard.h"

#include <QApplication>
#include <QElapsedTimer>
#include <QLocale>

namespace demo {

using namespace korvex;

ComboScreen::ComboScreen(Form& form) : QObject(&form), mForm(form)
{
    mItems = qobject_cast<ZqDropdown*>(form.FindControl(QStringLiteral("zqddItems")));
    mChosen = qobject_cast<Label*>(form.FindControl(QStringLiteral("lblChosen")));
    mLoad = qobject_cast<Label*>(form.FindControl(QStringLiteral("lblLoad")));
    connect(mItems, &ZqDropdown::Changed, this, [this](ZqDropdownClickReasons, const Variant&, const Variant&) {
        ShowChosen();
    });
    Load();
    ShowChosen();
}

void ComboScreen::Load()
{
    QApplication::setOverrideCursor(Qt::WaitCursor);
    QElapsedTimer clock;
    clock.start();
    const std::shared_ptr<ado::Connection> db = clsDatabase::Global().gcn();
    const bool generated = EnsureItems(*db);
    const qint64 generating = clock.restart();
    mRS = std::make_shared<ado::Recordset>();
    mRS->Open(Variant(QStringLiteral("SELECT \"Code\", \"Name\", \"Town\" FROM items ORDER BY \"ItemId\"")),
              Variant(static_cast<QObject*>(db.get())), ado::adOpenStatic, ado::adLockReadOnly);
    const qint64 reading = clock.restart();
    // The filter box indexes the columns it filters at the first key; done here instead, under
    // the hourglass, the first key is as quick as the others. The index lives with the rows, so
    // the combo's copies find it.
    for (const char* field : {"Code", "Name", "Town"})
        mRS->Fields()->Item(Variant(field))->Properties()->Item(QStringLiteral("Optimize"))->SetValue(Variant(true));
    const qint64 indexing = clock.restart();
    mItems->SetRowSource(mRS);
    const qint64 binding = clock.elapsed();
    QApplication::restoreOverrideCursor();

    const QLocale locale(QLocale::English);
    const auto seconds = [&](qint64 ms) { return locale.toString(static_cast<double>(ms) / 1000.0, 'f', 2) + " s"; };
    QString line = locale.toString(mRS->RecordCount()) + QStringLiteral(" items");
    if (generated)
        line += QStringLiteral(", generated into the database in ") + seconds(generating) + QStringLiteral(" (once)");
    line += QStringLiteral(", read in ") + seconds(reading) + QStringLiteral(", indexed for filtering in ") +
            seconds(indexing) + QStringLiteral(", bound to the combo in ") + locale.toString(binding) + QStringLiteral(" ms.");
    mLoad->SetCaption(line);
}

void ComboScreen::ShowChosen()
{
    const Variant code = mItems->BoundValue();
    mChosen->SetCaption(code.IsNull() ? QStringLiteral("Chosen: nothing yet")
                                      : QStringLiteral("Chosen: %1 (BoundValue %2)").arg(mItems->Text(), CStr(code)));
}

void ComboScreen::OpenFiltered(const QString& typed)
{
    Guarded(&mForm, [&] {
        mItems->setFocus();
        mItems->DropdownShow();
        mItems->zqtxtFilter()->SetText(typed);
    });
}

}  // namespace demo
