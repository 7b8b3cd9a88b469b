// The demo application. For now a single window that says what is coming; with
// --screenshot DIR it renders its window to DIR/main.png and exits, for machines without a
// display.
#include "korvex/runtime/Format.h"

#include <QApplication>
#include <QCommandLineParser>
#include <QDir>
#include <QLabel>
#include <QVBoxLayout>
#include <QWidget>

int main(int argc, char** argv)
{
    QApplication app(argc, argv);
    QApplication::setApplicationName(QStringLiteral("Korvex Demo"));
    QCommandLineParser parser;
    parser.addHelpOption();
    QCommandLineOption screenshot(QStringLiteral("screenshot"), QStringLiteral("Render each window to DIR and exit."),
                                  QStringLiteral("DIR"));
    parser.addOption(screenshot);
    parser.process(app);

    QWidget window;
    window.setWindowTitle(QStringLiteral("Korvex Demo"));
    auto* layout = new QVBoxLayout(&window);
    auto* title = new QLabel(QStringLiteral("<h2>Korvex demo</h2>"));
    auto* body = new QLabel(QStringLiteral("The demo application is being built. The library's runtime is in place: "
                                           "today is %1.")
                                .arg(korvex::Format(korvex::Now(), QStringLiteral("dddd, d mmmm yyyy"))));
    body->setWordWrap(true);
    layout->addWidget(title);
    layout->addWidget(body);
    window.resize(480, 160);

    if (parser.isSet(screenshot)) {
        const QString dir = parser.value(screenshot);
        QDir().mkpath(dir);
        window.show();
        QApplication::processEvents();
        return window.grab().save(QDir(dir).filePath(QStringLiteral("main.png"))) ? 0 : 1;
    }
    window.show();
    return QApplication::exec();
}
