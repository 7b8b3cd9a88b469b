// The Korvex demo: an MDI main form with the library initialised and the demo's forms inside.
// With --screenshot DIR it shows each form in turn, renders the window to DIR/<form name>.png
// and exits, for machines without a display.
#include "ComboScreen.h"
#include "CustomerScreen.h"
#include "DemoDatabase.h"
#include "EmailScreen.h"
#include "GridScreen.h"
#include "ListsScreen.h"
#include "MainForm.h"

#include "korvex/core/clsPublic.h"
#include "korvex/controls/lists/ZqDropdown.h"
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
#include <QPainter>
#include <QTemporaryDir>
#include <QTimer>

namespace {

class DemoUser : public korvex::clsZqUser {
public:
    using clsZqUser::clsZqUser;
    QString UserName() const override { return QStringLiteral("Demo User"); }
    korvex::Variant UserId() const override { return korvex::Variant(QStringLiteral("demo")); }
};

// What the user sees: the main window with the side bar and the form in front. The side bar
// draws a moment after a change, so the picture waits for it.
bool SaveShot(demo::MainForm& main, const QString& dir, const QString& name)
{
    QEventLoop settle;
    QTimer::singleShot(60, &settle, &QEventLoop::quit);
    settle.exec();
    QPixmap picture = main.grab();
    // An open pick list floats in a window of its own above its form: it belongs in the picture.
    QPainter painter(&picture);
    for (QWidget* window : QApplication::topLevelWidgets()) {
        if (window != &main && window->isVisible() && window->windowFlags().testFlag(Qt::Tool) &&
            window->parentWidget() && window->parentWidget()->window() == &main)
            painter.drawPixmap(main.mapFromGlobal(window->mapToGlobal(QPoint(0, 0))), window->grab());
    }
    painter.end();
    return picture.save(QDir(dir).filePath(name + QStringLiteral(".png")));
}

// Every form of the side bar in turn.
bool SaveScreenshots(demo::MainForm& main, const QString& dir)
{
    QDir().mkpath(dir);
    main.ShowForm(QStringLiteral("frmWelcome"));
    bool ok = SaveShot(main, dir, main.Name());
    for (const QString& name : main.FormNames()) {
        main.ShowForm(name);
        ok = SaveShot(main, dir, name) && ok;
    }
    return ok;
}

// The combo over the million items open, with a name typed into its filter box.
bool SaveComboScreenshot(demo::MainForm& main, demo::ComboScreen& combo, const QString& dir)
{
    main.ShowForm(QStringLiteral("frmCombo"));
    combo.OpenFiltered(QStringLiteral("Mü"));
    const bool ok = SaveShot(main, dir, QStringLiteral("frmCombo_Open"));
    combo.Items().DropdownHide();
    return ok;
}

// The customer form in each edit mode: viewing, editing with a changed name, saved, adding;
// then the labels once more in German, to show the captions come from the language file.
bool SaveMoreScreenshots(demo::MainForm& main, demo::CustomerScreen& customers, const QString& dir)
{
    korvex::Form& form = *main.ShowForm(QStringLiteral("frmCustomers"));
    korvex::DataBindingSource& source = customers.Source();
    bool ok = SaveShot(main, dir, QStringLiteral("frmCustomers_Viewing"));
    auto* name = static_cast<korvex::TextBox*>(form.FindControl(QStringLiteral("txtName")));
    customers.Run([&] { source.Edit(); });
    name->LineEdit()->setFocus();
    name->LineEdit()->setText(name->Text() + QStringLiteral(" (edited)"));
    ok = SaveShot(main, dir, QStringLiteral("frmCustomers_Editing")) && ok;
    customers.Run([&] { source.Save(); });
    ok = SaveShot(main, dir, QStringLiteral("frmCustomers_Saved")) && ok;
    customers.Run([&] { source.Add(); });
    ok = SaveShot(main, dir, QStringLiteral("frmCustomers_Adding")) && ok;
    customers.Run([&] { source.Cancel(); });
    korvex::clsLanguage::Global().LanguageInitialise(1, demo::LanguageFile());
    korvex::Form* german = main.OpenForm(QStringLiteral("frmLabels"));
    if (auto* frame = qobject_cast<QMdiSubWindow*>(german->parentWidget()))
        frame->showMaximized();
    return SaveShot(main, dir, QStringLiteral("frmLabels_German")) && ok;
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
                                        QStringLiteral("Render each form to DIR and exit."), QStringLiteral("DIR"));
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
    main.SetScreen(QStringLiteral("frmEmail"), [](korvex::Form& form) { new demo::EmailScreen(form); });
    korvex::Form* welcome = main.ShowForm(QStringLiteral("frmWelcome"));
    // Screenshots work on a fresh database of their own; the demo keeps its data between runs.
    QTemporaryDir scratch;
    demo::CustomerScreen* customers = nullptr;
    demo::ComboScreen* combo = nullptr;
    try {
        demo::OpenDemoDatabase(parser.isSet(screenshot) ? scratch.filePath(QStringLiteral("customers.db"))
                                                        : demo::DefaultDatabasePath());
        main.SetScreen(QStringLiteral("frmCustomers"),
                       [&customers](korvex::Form& form) { customers = new demo::CustomerScreen(form); });
        main.SetScreen(QStringLiteral("frmGrid"), [](korvex::Form& form) { new demo::GridScreen(form); });
        // The million items are made the first time this form opens, not at start-up.
        main.SetScreen(QStringLiteral("frmCombo"), [&combo](korvex::Form& form) { combo = new demo::ComboScreen(form); });
        main.SetScreen(QStringLiteral("frmLists"), [picture = parser.isSet(screenshot)](korvex::Form& form) {
            new demo::ListsScreen(form, picture);
        });
    } catch (const korvex::Error& error) {
        demo::FormService(*welcome).MsgBoxZq(QStringLiteral("The customer database cannot be opened."), korvex::vbExclamation,
                                             QString(), 0, error.Description());
    }

    if (parser.isSet(screenshot)) {
        bool ok = SaveScreenshots(main, parser.value(screenshot));
        ok = combo && SaveComboScreenshot(main, *combo, parser.value(screenshot)) && ok;
        ok = customers && SaveMoreScreenshots(main, *customers, parser.value(screenshot)) && ok;
        korvex::clsPublic::Global().UninitVyrInvControls();
        return ok ? 0 : 1;
    }
    const int result = QApplication::exec();
    korvex::clsPublic::Global().UninitVyrInvControls();
    return result;
}
