// The Korvex demo: an MDI main form with the library initialised and the demo's forms inside.
// With --screenshot DIR it renders every open form to DIR/<form name>.png and exits, for
// machines without a display.
#include "MainForm.h"

#include "korvex/core/clsPublic.h"
#include "korvex/core/clsZqUser.h"
#include "korvex/localisation/clsLanguage.h"
#include "korvex/platform/host/Screen.h"
#include "korvex/platform/system/SystemInfo.h"

#include <QApplication>
#include <QCommandLineParser>
#include <QDir>
#include <QMdiSubWindow>
#include <QTimer>

namespace {

class DemoUser : public korvex::clsZqUser {
public:
    using clsZqUser::clsZqUser;
    QString UserName() const override { return QStringLiteral("Demo User"); }
    korvex::Variant UserId() const override { return korvex::Variant(QStringLiteral("demo")); }
};

bool SaveScreenshots(demo::MainForm& main, const QString& dir)
{
    QDir().mkpath(dir);
    bool ok = main.grab().save(QDir(dir).filePath(main.Name() + QStringLiteral(".png")));
    for (korvex::Form* child : main.Children())
        ok = child->grab().save(QDir(dir).filePath(child->Name() + QStringLiteral(".png"))) && ok;
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
    // Screenshots get a main window large enough that each tiled form shows at its designed size.
    if (parser.isSet(screenshot))
        main.resize(1280, 960);
    main.Area()->tileSubWindows();

    if (parser.isSet(screenshot)) {
        QApplication::processEvents();
        bool ok = SaveScreenshots(main, parser.value(screenshot));
        // The labels once more in German, to show the captions come from the language file.
        korvex::clsLanguage::Global().LanguageInitialise(1, demo::LanguageFile());
        korvex::Form* german = main.OpenForm(QStringLiteral("frmLabels"));
        QApplication::processEvents();
        ok = german->grab().save(QDir(parser.value(screenshot)).filePath(QStringLiteral("frmLabels_German.png"))) && ok;
        korvex::clsPublic::Global().UninitVyrInvControls();
        return ok ? 0 : 1;
    }
    const int result = QApplication::exec();
    korvex::clsPublic::Global().UninitVyrInvControls();
    return result;
}
