// The host's App object: the application's title, folder, executable name and module file name.
#pragma once

#include <QObject>
#include <QString>

namespace korvex {

class App : public QObject {
    Q_OBJECT
    Q_PROPERTY(QString Title READ Title WRITE SetTitle)
    Q_PROPERTY(QString Path READ Path)
    Q_PROPERTY(QString EXEName READ EXEName)

public:
    static App* Instance();

    // The application's title: the Qt application name unless set.
    QString Title() const;
    void SetTitle(const QString& title);
    // The folder of the executable, without a trailing separator.
    QString Path() const;
    // The executable's name without folder and extension.
    QString EXEName() const;
    // The full file name of the running module.
    QString ModuleFileName() const;

private:
    using QObject::QObject;
};

}  // namespace korvex
