// ListsScreen: a text box with a drop-down. Down or F4 opens the list; while it is open, the
// box's keys go to the list, which moves its selection with them and swallows the keys it uses;
// Enter takes the row, Escape and F4 close the list, typing finds the first row that begins
// with the text. The list closes when the box loses the focus to anything but the list, and
// when another form comes to the front (an open list floats above its form).
#include "ListsScreen.h"

#include "korvex/controls/input/ZqText.h"
#include "korvex/controls/lists/ZqDropdownList.h"
#include "korvex/data/clsDatabase.h"
#include "korvex/platform/ado/Recordset.h"
#include "korvex/platform/adosql/Connection.h"
#include "korvex/platform/grid/Grid.h"
#include "korvex/platform/host/Form.h"
#include "korvex/platform/host/Label.h"
#include "korvex/runtime/Conversions.h"
#include "korvex/runtime/EntryGuard.h"

#include <QApplication>
#include <QMdiArea>
#include <QMdiSubWindow>
#include <QScopedValueRollback>
#include <QTimer>

namespace demo {

using namespace korvex;

namespace {

// Key codes as the boxes report them.
constexpr short KeyEnter = 13, KeyEscape = 27, KeyDown = 40, KeyF4 = 115;

}  // namespace

ListsScreen::ListsScreen(Form& form, bool openForPicture) : QObject(&form), mForm(form)
{
    mCustomer = qobject_cast<ZqText*>(form.FindControl(QStringLiteral("zqtxtCustomer")));
    mCustomers = qobject_cast<ZqDropdownList*>(form.FindControl(QStringLiteral("lstCustomers")));
    mTerms = qobject_cast<ZqText*>(form.FindControl(QStringLiteral("zqtxtTerms")));
    mTermsList = qobject_cast<ZqDropdownList*>(form.FindControl(QStringLiteral("lstTerms")));
    mChosen = qobject_cast<Label*>(form.FindControl(QStringLiteral("lblChosen")));

    mRS = std::make_shared<ado::Recordset>();
    mRS->Open(Variant(QStringLiteral("SELECT \"CustomerId\", \"Name\", \"City\" FROM customers ORDER BY \"Name\"")),
              Variant(static_cast<QObject*>(clsDatabase::Global().gcn().get())), ado::adOpenStatic, ado::adLockReadOnly);
    mCustomers->SetRowSource(mRS);
    // The bound customer id stays hidden; the name takes what the city leaves.
    mCustomers->fgList()->SetColWidth(1, 1300);
    AttachDropDown(mCustomer, mCustomers);
    AttachDropDown(mTerms, mTermsList);
    ShowChosen();

    if (auto* window = qobject_cast<QMdiSubWindow*>(form.parentWidget()); window && window->mdiArea()) {
        connect(window->mdiArea(), &QMdiArea::subWindowActivated, this, [this, window](QMdiSubWindow* active) {
            if (active != window)
                CloseAll();
        });
    }
    if (openForPicture) {
        // After the form has taken its final place, so that the list floats where it belongs.
        QTimer::singleShot(0, this, [this] {
            Guarded(&mForm, [this] {
                mCustomers->SetBoundValue(Variant(std::int32_t{3}));
                Take(mCustomer, mCustomers);
                mCustomer->setFocus();
                Open(mCustomers);
            });
        });
    }
}

void ListsScreen::AttachDropDown(ZqText* box, ZqDropdownList* list)
{
    connect(box, &Control::KeyDown, this, [this, box, list](short& key, short& shift) {
        Guarded(box, [&] {
            if (!list->isVisible()) {
                if (key == KeyF4 || (key == KeyDown && shift == 0)) {
                    Open(list);
                    key = 0;
                }
                return;
            }
            if (key == KeyEnter) {
                Take(box, list);
                list->SetVisible(false);
                key = 0;
            } else if (key == KeyEscape || key == KeyF4) {
                list->SetVisible(false);
                key = 0;
            } else {
                list->KeyDown(key, shift);
            }
        });
    });
    connect(box, &Control::KeyUp, this, [list](short& key, short& shift) {
        if (list->isVisible())
            Guarded(list, [&] { list->KeyUp(key, shift); });
    });
    connect(box, &ZqText::Change, this, [this, box, list] {
        if (mWriting)
            return;
        Guarded(box, [&] {
            Open(list);
            if (!box->Text().isEmpty())
                list->Find(box->Text());
        });
    });
    // Keys move the selection and the box follows; a click takes the row and closes the list.
    connect(list, static_cast<void (ZqDropdownList::*)(ZqDDListClickReasons)>(&ZqDropdownList::Click), this,
            [this, box, list](ZqDDListClickReasons reason) {
                Guarded(list, [&] {
                    Take(box, list);
                    if (reason == ddlcrChangedByUser_Mouse) {
                        list->SetVisible(false);
                        box->setFocus();
                    }
                });
            });
    connect(box, &Control::LostFocus, this, [box, list] {
        // The focus may be on its way into the list itself (a click on it): look once it arrived.
        QTimer::singleShot(0, list, [box, list] {
            const QWidget* focus = QApplication::focusWidget();
            const bool stays = focus && (focus == list || list->isAncestorOf(focus) || box->isAncestorOf(focus));
            if (!stays)
                Guarded(list, [list] { list->SetVisible(false); });
        });
    });
}

void ListsScreen::Open(ZqDropdownList* list)
{
    if (!list->isVisible())
        list->SetVisible(true);
}

// The box shows the selected row by its first visible column.
void ListsScreen::Take(ZqText* box, ZqDropdownList* list)
{
    const QString text = list->Text();
    if (text != box->Text()) {
        const QScopedValueRollback writing(mWriting, true);
        box->SetText(text);
    }
    ShowChosen();
}

void ListsScreen::ShowChosen()
{
    const Variant id = mCustomers->BoundValue();
    const Variant terms = mTermsList->BoundValue();
    mChosen->SetCaption(QStringLiteral("Customer id (BoundValue): %1    Terms: %2")
                            .arg(id.IsNull() ? QStringLiteral("none") : CStr(id),
                                 terms.IsNull() ? QStringLiteral("none") : CStr(terms)));
}

void ListsScreen::CloseAll()
{
    Guarded(&mForm, [this] {
        mCustomers->SetVisible(false);
        mTermsList->SetVisible(false);
    });
}

}  // namespace demo
