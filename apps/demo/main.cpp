// The Korvex demo: an MDI main form with the library initialised and the demo's forms inside.
// With --screenshot DIR it renders every open form to DIR/<form name>.png and exits, for
// machines without a display.
#include "CustomerScreen.h"
#include "DemoDatabase.h"
#include "EmailScreen.h"
#include "GridScreen.h"
#include "MainForm.h"

#include "korvex/core/clsPublic.h"
#include "korvex/core/clsZqUser.h"
#include "korvex/data/DataBindingSource.h"
#include "korvex/platform/host/TextBox.h"
#include "korvex/platform/desktop/MessageBoxService.h"
#include "korvex/localisation/clsLanguage.h"
#include "korvex/platform/host/Screen.h"
#include "korvex/platform/desktop/SystemInfo.h"

#include <QApplication>
#include <QCommandLineParser>
#include <QDir>
#include <QEventLoop>
#include <QLineEdit>
#include <QMdiSubWindow>
#include <QTemporaryDir>
#include <QTimer>

namespace {

class DemoUser : public korvex::clsZqUser {
public:
    using clsZqUser::clsZqUser;
    QString UserName() const override { return QStringLiteral("Demo User"); }
    korvex::Variant UserId() const override { return korvex::Variant(QStringLiteral("demo")); }
};

bool SaveFormShot(korvex::Form& form, const QString& dir, const QString& suffix = {})
{
    QApplication::processEvents();
    return form.grab().save(QDir(dir).filePath(form.Name() + suffix + QStringLiteral(".png")));
}

bool SaveScreenshots(demo::MainForm& main, const QString& dir)
{
    QDir().mkpath(dir);
    bool ok = main.grab().save(QDir(dir).filePath(main.Name() + QStringLiteral(".png")));
    for (korvex::Form* child : main.Children())
        ok = SaveFormShot(*child, dir) && ok;
    return ok;
}

// The customer form in each edit mode: viewing, editing with a changed name, saved, adding.
bool ShootCustomerModes(korvex::Form& form, demo::CustomerScreen& screen, const QString& dir)
{
    korvex::DataBindingSource& source = screen.Source();
    if (auto* frame = qobject_cast<QMdiSubWindow*>(form.parentWidget()))
        frame->showMaximized();
    bool ok = SaveFormShot(form, dir, QStringLiteral("_Viewing"));
    auto* name = static_cast<korvex::TextBox*>(form.FindControl(QStringLiteral("txtName")));
    screen.Run([&] { source.Edit(); });
    name->LineEdit()->setFocus();
    name->LineEdit()->setText(name->Text() + QStringLiteral(" (edited)"));
    ok = SaveFormShot(form, dir, QStringLiteral("_Editing")) && ok;
    screen.Run([&] { source.Save(); });
    ok = SaveFormShot(form, dir, QStringLiteral("_Saved")) && ok;
    screen.Run([&] { source.Add(); });
    ok = SaveFormShot(form, dir, QStringLiteral("_Adding")) && ok;
    screen.Run([&] { source.Cancel(); });
    return ok;
}

}  // namespace

int main(int argc, char** argv)
{
    QApplication app(argc, argv);
    QApplication::setApplicationName(QStringLiteral("Korvex Demo"));
    QCommandLineParser parser;
    parser.setApplicationDescription(QStringLiteral("The Korvex demo application."));
    parser.addHelpOption();
    const QCommandLineOption screenshot(QStringLiteral("screenshot"),
                                        QStringLiteral("Render every open form to DIR and exit."), QStringLiteral("DIR"));
    const QCommandLineOption language(QStringLiteral("language"),
                                      QStringLiteral("The language: 0 English, 1 German, 2 French, 3 American, 4 Dutch."),
                                      QStringLiteral("N"), QStringLiteral("0"));
    parser.addOption(screenshot);
    parser.addOption(language);
    parser.process(app);

    korvex::SystemInfo::Start();
    korvex::clsLanguage::Global().LanguageInitialise(parser.value(language).toInt(), demo::LanguageFile());
    demo::MainForm main;
    DemoUser user;
    korvex::clsPublic::Global().InitZqControls(&user, korvex::Screen::Instance(), &main);
    main.Show();
    main.OpenForm(QStringLiteral("frmWelcome"));
    main.OpenForm(QStringLiteral("frmLabels"));
    main.OpenForm(QStringLiteral("frmInputs"));
    main.OpenForm(QStringLiteral("frmNumbers"));
    main.OpenForm(QStringLiteral("frmDisplay"));
    new demo::EmailScreen(*main.OpenForm(QStringLiteral("frmEmail")));
    // Screenshots work on a fresh database of their own; the demo keeps its data between runs.
    QTemporaryDir scratch;
    korvex::Form* customers = nullptr;
    demo::CustomerScreen* customerScreen = nullptr;
    try {
        demo::OpenDemoDatabase(parser.isSet(screenshot) ? scratch.filePath(QStringLiteral("customers.db"))
                                                        : demo::DefaultDatabasePath());
        customers = main.OpenForm(QStringLiteral("frmCustomers"));
        customerScreen = new demo::CustomerScreen(*customers);
        new demo::GridScreen(*main.OpenForm(QStringLiteral("frmGrid")));
    } catch (const korvex::Error& error) {
        korvex::MsgBox(QStringLiteral("The customer database cannot be opened:\r\n") + error.Description(),
                       korvex::vbExclamation, QStringLiteral("Korvex Demo"));
    }
    // Screenshots get a main window large enough that each tiled form shows at its designed size.
    if (parser.isSet(screenshot))
        main.resize(1280, 960);
    main.Area()->tileSubWindows();

    if (parser.isSet(screenshot)) {
        // Long enough for the timers that draw late (the side bar gathers its changes first).
        QEventLoop settle;
        QTimer::singleShot(100, &settle, &QEventLoop::quit);
        settle.exec();
        bool ok = SaveScreenshots(main, parser.value(screenshot));
        ok = customerScreen && ShootCustomerModes(*customers, *customerScreen, parser.value(screenshot)) && ok;
        // The labels once more in German, to show the captions come from the language file.
        korvex::clsLanguage::Global().LanguageInitialise(1, demo::LanguageFile());
        korvex::Form* german = main.OpenForm(QStringLiteral("frmLabels"));
        ok = SaveFormShot(*german, parser.value(screenshot), QStringLiteral("_German")) && ok;
        korvex::clsPublic::Global().UninitVyrInvControls();
        return ok ? 0 : 1;
    }
    const int result = QApplication::exec();
    korvex::clsPublic::Global().UninitVyrInvControls();
    return result;
}
