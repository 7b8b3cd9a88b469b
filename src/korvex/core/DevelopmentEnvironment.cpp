// The development-environment test: the module's file name without folder, compared with the
// preview tool's name ignoring case.
#include "korvex/core/DevelopmentEnvironment.h"

#include "korvex/core/SharedContext.h"

#include <QCoreApplication>
#include <QDir>

namespace korvex {

short InDevelopmentEnvironment(const QString& moduleFileName)
{
    short& flag = SharedContext::ForThisThread().DevelopmentEnvironment;
    if (flag != 0)
        return flag;
    QString path = moduleFileName.isEmpty() ? QCoreApplication::applicationFilePath() : moduleFileName;
    path = QDir::fromNativeSeparators(path.left(255));
    const qsizetype slash = path.lastIndexOf(QLatin1Char('/'));
    const QString name = slash >= 0 ? path.mid(slash + 1) : QString();
    flag = name.compare(QLatin1String(DevelopmentEnvironmentExecutable), Qt::CaseInsensitive) == 0 ? 2 : 1;
    return flag;
}

}  // namespace korvex
