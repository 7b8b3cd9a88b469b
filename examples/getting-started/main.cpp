// Getting started with Korvex: a form whose controls show, edit and save a row of an SQLite
// table through DataBindingSource, with who/when stamps. Run it with --self-test to have it type
// an edit and save it by itself (that is how the build tests it).
#include <korvex/controls/input/ZqCheckBox.h>
#include <korvex/controls/input/ZqNumber.h>
#include <korvex/core/clsPublic.h>
#include <korvex/core/clsZqUser.h>
#include <korvex/data/DataBindingSource.h>
#include <korvex/data/clsDatabase.h>
#include <korvex/platform/ado/Recordset.h>
#include <korvex/platform/adosql/Connection.h>
#include <korvex/platform/desktop/SystemInfo.h>
#include <korvex/platform/host/CommandButton.h>
#include <korvex/platform/host/Form.h>
#include <korvex/platform/host/Screen.h>
#include <korvex/platform/host/TextBox.h>

#include <QApplication>
#include <QDir>
#include <QStandardPaths>
#include <QTemporaryDir>

#include <cstdio>

using namespace korvex;

// The signed-on user: its UserId goes into the UpdatedBy stamp.
class User : public clsZqUser {
    Variant UserId() const override { return QStringLiteral("anna"); }
};

int main(int argc, char** argv)
{
    QApplication app(argc, argv);
    const bool selfTest = app.arguments().contains(QStringLiteral("--self-test"));
    SystemInfo::Start();  // system colours, metrics and regional settings for the controls
    QTemporaryDir scratch;
    const QString folder = selfTest ? scratch.path() : QStandardPaths::writableLocation(QStandardPaths::AppLocalDataLocation);
    QDir().mkpath(folder);
    auto db = std::make_shared<ado::Connection>();
    db->Open(QStringLiteral("Provider=SQLite;Data Source=") + QDir(folder).filePath(QStringLiteral("products.db")));
    db->Execute(QStringLiteral("CREATE TABLE IF NOT EXISTS products (ProductId INTEGER PRIMARY KEY, Name TEXT NOT NULL,"
                               " Price NUMERIC, Active INTEGER, UpdatedAt TEXT, UpdatedBy TEXT)"));
    db->Execute(QStringLiteral("INSERT OR IGNORE INTO products (ProductId, Name, Price, Active) VALUES (1, 'Mug', 3.5, 1)"));
    clsDatabase::Global().SetGcn(db);  // the connection whose server time stamps UpdatedAt
    User user;
    clsPublic::Global().InitZqControls(&user, Screen::Instance());  // the user and the screen

    Form form;  // controls bind through their DataField; positions are in twips
    form.SetCaption(QStringLiteral("Products"));
    auto* name = new TextBox(form.Client());
    name->SetDataField(QStringLiteral("Name"));
    name->Move(120, 120, 3000, 315);
    auto* price = new ZqNumber(form.Client());
    price->SetDataField(QStringLiteral("Price"));
    price->Move(120, 540, 1500, 315);
    auto* active = new ZqCheckBox(form.Client());
    active->SetCaption(QStringLiteral("Active"));
    active->SetDataField(QStringLiteral("Active"));
    active->Move(120, 960, 1500, 315);
    auto* save = new CommandButton(form.Client());
    save->SetCaption(QStringLiteral("Save"));
    save->Move(120, 1380, 1200, 375);
    auto* binding = new DataBindingSource(form.Client());

    // A client-side recordset with batch optimistic locking is editable; Save writes it back.
    auto products = std::make_shared<ado::Recordset>();
    products->Open(QStringLiteral("SELECT * FROM products"), static_cast<QObject*>(db.get()), ado::adOpenStatic,
                   ado::adLockBatchOptimistic);
    binding->SetRecordset(products);
    QObject::connect(save, &Control::Click, [&] { binding->Save(); });
    form.Show();

    if (selfTest) {
        binding->Edit();
        name->SetText(QStringLiteral("Blue mug"));
        price->SetValue(4.25);
        binding->Save();
        const auto row = db->Execute(QStringLiteral("SELECT Name, Price, UpdatedBy FROM products WHERE ProductId = 1"));
        std::printf("%s %s %s\n", qPrintable(CStr(row->Fields()->Item(0)->Value())),
                    qPrintable(CStr(row->Fields()->Item(1)->Value())), qPrintable(CStr(row->Fields()->Item(2)->Value())));
        clsPublic::Global().UninitVyrInvControls();
        return 0;
    }
    const int result = QApplication::exec();
    clsPublic::Global().UninitVyrInvControls();  // the end of the library's shared context
    return result;
}
