// App: thin answers from QCoreApplication.
#include "korvex/platform/host/App.h"

#include <QCoreApplication>
#include <QDir>
#include <QFileInfo>

namespace korvex {

App* App::Instance()
{
    static App* app = new App(QCoreApplication::instance());
    return app;
}

QString App::Title() const
{
    return QCoreApplication::applicationName();
}

void App::SetTitle(const QString& title)
{
    QCoreApplication::setApplicationName(title);
}

QString App::Path() const
{
    return QDir::toNativeSeparators(QCoreApplication::applicationDirPath());
}

QString App::EXEName() const
{
    return QFileInfo(QCoreApplication::applicationFilePath()).completeBaseName();
}

QString App::ModuleFileName() const
{
    return QDir::toNativeSeparators(QCoreApplication::applicationFilePath());
}

}  // namespace korvex
