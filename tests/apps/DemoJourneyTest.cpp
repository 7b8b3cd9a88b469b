// The customer form of the demo as a user works it, in a real window when run under Xvfb: the
// country combo is opened with the keyboard, filtered by typing, a row picked with the arrow
// keys and Enter, the record saved with Ctrl+S and read back through a second connection; and a
// click outside the open drop-down closes it without reaching the button beneath.
#include "CustomerScreen.h"
#include "DemoDatabase.h"
#include "MainForm.h"

#include "korvex/controls/display/ZqFrame.h"
#include "korvex/controls/input/ZqText.h"
#include "korvex/controls/lists/ZqDropdown.h"
#include "korvex/core/clsPublic.h"
#include "korvex/core/clsZqUser.h"
#include "korvex/data/DataBindingSource.h"
#include "korvex/data/clsDatabase.h"
#include "korvex/platform/ado/Recordset.h"
#include "korvex/platform/adosql/Connection.h"
#include "korvex/platform/desktop/MessageBoxService.h"
#include "korvex/platform/desktop/SystemInfo.h"
#include "korvex/platform/host/CommandButton.h"
#include "korvex/platform/host/Form.h"
#include "korvex/platform/host/Label.h"
#include "korvex/platform/host/Screen.h"
#include "korvex/runtime/Conversions.h"
#include "tests/support/Printers.h"
#include "tests/support/TestFiles.h"

#include <QApplication>
#include <QPushButton>
#include <QSignalSpy>
#include <QTest>

#include <gtest/gtest.h>

namespace demo {
namespace {

using namespace korvex;

class Clerk : public clsZqUser {
public:
    using clsZqUser::clsZqUser;
    Variant UserId() const override { return Variant("clerk"); }
};

QString CountryOf(const QString& path, int customer)
{
    ado::Connection second;
    second.Open(QStringLiteral("Provider=SQLite;Data Source=") + path);
    auto rs = second.Execute(QStringLiteral("SELECT \"Country\" FROM customers WHERE \"CustomerId\" = ?"),
                             Variant(std::int32_t{customer}));
    return NullToString(rs->Fields()->Item(Variant("Country"))->Value());
}

// Keys go where the user's keys go: to the widget that has the focus.
void Press(Qt::Key key, Qt::KeyboardModifiers modifiers = Qt::NoModifier)
{
    QWidget* focus = QApplication::focusWidget();
    ASSERT_NE(focus, nullptr) << "no widget has the focus";
    QTest::keyClick(focus, key, modifiers);
}

TEST(DemoJourney, ACountryIsPickedWithTheKeyboardSavedAndAClickOutsideOnlyCloses)
{
    SystemInfo::Start();
    korvex::test::TestFolder folder;
    const QString path = folder.Path(QStringLiteral("customers.db"));
    OpenDemoDatabase(path);
    ScopedMessageBoxRecorder boxes;
    MainForm main;
    Clerk clerk;
    clsPublic::Global().InitZqControls(&clerk, Screen::Instance(), &main);
    CustomerScreen* customers = nullptr;
    main.SetScreen(QStringLiteral("frmCustomers"), [&](Form& form) { customers = new CustomerScreen(form); });
    main.Show();
    Form& form = *main.ShowForm(QStringLiteral("frmCustomers"));
    ASSERT_TRUE(QTest::qWaitForWindowExposed(&main));
    QApplication::setActiveWindow(&main);
    ASSERT_NE(customers, nullptr);

    auto* country = qobject_cast<ZqDropdown*>(form.FindControl(QStringLiteral("zqddCountry")));
    ASSERT_NE(country, nullptr);
    const auto button = [&](const char* name) {
        return static_cast<CommandButton*>(form.FindControl(QString::fromLatin1(name)))->Button();
    };
    const auto customerNo = [&] {
        return static_cast<Label*>(form.FindControl(QStringLiteral("lblCustomerNo")))->Caption();
    };
    EXPECT_EQ(customerNo(), "1");
    EXPECT_EQ(country->BoundValue(), Variant("GB")) << "the binding shows the customer's country";
    EXPECT_EQ(country->Text(), "United Kingdom");

    QTest::mouseClick(button("cmdEdit"), Qt::LeftButton);
    ASSERT_EQ(customers->Source().EditMode(), ZqDataEditing);
    country->setFocus();
    ASSERT_TRUE(QTest::qWaitFor([&] { return country->hasFocus(); }, 2000));

    // Down opens; typed letters filter the list by the start of a name or code; the first row
    // left is highlighted, Down moves to the next, Enter takes it.
    Press(Qt::Key_Down);
    ASSERT_TRUE(country->IsDropdownOpen());
    const auto focusInDropDown = [&] { return country->zqfraDropdown()->isAncestorOf(QApplication::focusWidget()); };
    ASSERT_TRUE(QTest::qWaitFor(focusInDropDown, 2000)) << "the list takes the focus";
    for (Qt::Key key : {Qt::Key_S, Qt::Key_W})
        Press(key);
    EXPECT_EQ(country->ListCount(), 2) << "Sweden and Switzerland";
    Press(Qt::Key_Down);
    Press(Qt::Key_Return);
    EXPECT_FALSE(country->IsDropdownOpen());
    ASSERT_TRUE(QTest::qWaitFor([&] { return country->hasFocus(); }, 2000)) << "the combo takes the focus back";
    EXPECT_EQ(country->BoundValue(), Variant("CH"));
    EXPECT_EQ(CountryOf(path, 1), "GB") << "nothing is written before the save";

    Press(Qt::Key_S, Qt::ControlModifier);
    EXPECT_EQ(customers->Source().EditMode(), ZqDataViewOnly);
    EXPECT_TRUE(boxes.shown().empty()) << (boxes.shown().empty() ? QString() : boxes.shown()[0].prompt).toStdString();
    EXPECT_EQ(CountryOf(path, 1), "CH") << "saved through the binding and read by another connection";

    // Open again, then click the Next button beneath the form: the drop-down closes, the
    // button never hears of the click, and the record stays.
    Press(Qt::Key_Down);
    ASSERT_TRUE(country->IsDropdownOpen());
    ASSERT_TRUE(QTest::qWaitFor(focusInDropDown, 2000));
    QSignalSpy clicked(button("cmdNext"), &QPushButton::clicked);
    QTest::mouseClick(button("cmdNext"), Qt::LeftButton);
    EXPECT_FALSE(country->IsDropdownOpen());
    EXPECT_EQ(clicked.count(), 0);
    EXPECT_EQ(customerNo(), "1");
    QTest::mouseClick(button("cmdNext"), Qt::LeftButton);
    EXPECT_EQ(clicked.count(), 1) << "with the drop-down closed the click arrives";
    EXPECT_EQ(customerNo(), "2");
    EXPECT_EQ(country->BoundValue(), Variant("GB"));
    clsPublic::Global().UninitVyrInvControls();
}

}  // namespace
}  // namespace demo
