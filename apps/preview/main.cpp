// korvex-preview: the form designer's preview tool. It opens a form file and shows the form at
// run time, or in design mode (--design), where the controls see UserMode False and File/Save
// writes the form back through the controls' WriteProperties. Inside this tool the library
// knows it runs in its development environment.
//
//   korvex-preview [--design] [--save FILE] [--screenshot FILE] form.json
//   korvex-preview --check form.json   (validates the file and lists properties no control has)
#include "korvex/platform/host/FormFile.h"
#include "korvex/platform/desktop/MessageBoxService.h"
#include "korvex/platform/desktop/SystemInfo.h"
#include "korvex/runtime/Error.h"

#include <QApplication>
#include <QCommandLineParser>
#include <QMenuBar>

#include <cstdio>

namespace {

QStringList& Problems()
{
    static QStringList problems;
    return problems;
}

// Loads the form as the program would; what the loader tells the programmer counts as a problem.
int CheckFormFile(const QString& path)
{
    const QtMessageHandler previous = qInstallMessageHandler([](QtMsgType type, const QMessageLogContext& context, const QString& text) {
        if (type >= QtWarningMsg && QLatin1String(context.category).startsWith(QLatin1String("korvex.")))
            Problems() << text;
    });
    try {
        korvex::FormFile::Load(path, true);
    } catch (const korvex::Error& e) {
        Problems() << e.Description();
    }
    qInstallMessageHandler(previous);
    for (const QString& problem : Problems())
        std::fprintf(stderr, "%s\n", qPrintable(problem));
    if (Problems().isEmpty())
        std::printf("%s: OK\n", qPrintable(path));
    return Problems().isEmpty() ? 0 : 1;
}

}  // namespace

int main(int argc, char** argv)
{
    QApplication app(argc, argv);
    QApplication::setApplicationName(QStringLiteral("Korvex Preview"));
    QCommandLineParser parser;
    parser.setApplicationDescription(QStringLiteral("Shows a Korvex form file at run time or in design mode."));
    parser.addHelpOption();
    const QCommandLineOption design(QStringLiteral("design"), QStringLiteral("Open the form in design mode."));
    const QCommandLineOption save(QStringLiteral("save"), QStringLiteral("Save the form to FILE and exit."), QStringLiteral("FILE"));
    const QCommandLineOption screenshot(QStringLiteral("screenshot"), QStringLiteral("Render the form to FILE and exit."),
                                        QStringLiteral("FILE"));
    const QCommandLineOption check(QStringLiteral("check"),
                                   QStringLiteral("Validate the form file, list what is wrong with it, and exit non-zero if anything is."));
    parser.addOptions({design, save, screenshot, check});
    parser.addPositionalArgument(QStringLiteral("form"), QStringLiteral("The form file."));
    parser.process(app);
    if (parser.positionalArguments().size() != 1)
        parser.showHelp(2);
    const QString path = parser.positionalArguments().first();

    korvex::SystemInfo::Start();
    if (parser.isSet(check))
        return CheckFormFile(path);
    std::unique_ptr<korvex::Form> form;
    try {
        form = korvex::FormFile::Load(path, parser.isSet(design));
        if (parser.isSet(save)) {
            korvex::FormFile::Save(*form, parser.value(save));
            return 0;
        }
    } catch (const korvex::Error& e) {
        std::fprintf(stderr, "%s\n", qPrintable(e.Description()));
        return 1;
    }
    if (parser.isSet(screenshot)) {
        form->Show();
        QApplication::processEvents();
        return form->grab().save(parser.value(screenshot)) ? 0 : 1;
    }
    if (parser.isSet(design)) {
        QMenu* file = form->menuBar()->addMenu(QStringLiteral("&File"));
        file->addAction(QStringLiteral("&Save"), form.get(), [&form, path] {
            try {
                korvex::FormFile::Save(*form, path);
            } catch (const korvex::Error& e) {
                korvex::MsgBox(e.Description(), korvex::vbCritical);
            }
        });
    }
    form->Show();
    return QApplication::exec();
}
