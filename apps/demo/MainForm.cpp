// MainForm: child forms from form files, trace lines to the status bar and stderr.
#include "MainForm.h"

#include "korvex/core/Trace.h"
#include "korvex/platform/host/FormFile.h"
#include "korvex/runtime/Conversions.h"

#include <QCoreApplication>
#include <QMenuBar>
#include <QStatusBar>

#include <cstdio>

namespace demo {

QString LanguageFile()
{
    return QCoreApplication::applicationDirPath() + QStringLiteral("/Korvex.lng");
}

MainForm::MainForm()
{
    SetName(QStringLiteral("frmMDI"));
    SetCaption(QStringLiteral("Korvex Demo"));
    resize(1000, 700);
    QMenu* window = menuBar()->addMenu(QStringLiteral("&Window"));
    window->addAction(QStringLiteral("&Tile"), Area(), &QMdiArea::tileSubWindows);
    window->addAction(QStringLiteral("&Cascade"), Area(), &QMdiArea::cascadeSubWindows);
    statusBar()->showMessage(QStringLiteral("Ready"));
}

korvex::Form* MainForm::OpenForm(const QString& name)
{
    auto form = korvex::FormFile::Load(QStringLiteral(":/forms/%1.json").arg(name));
    form->SetMDIChild(true);
    korvex::Form* shown = form.get();
    mChildren.push_back(std::move(form));
    shown->Show();
    korvex::Trace(shown->Name() + QStringLiteral("\tForm_Load"), 0);
    return shown;
}

void MainForm::TraceFromKorvex(korvex::Variant& Message, korvex::Variant& Value)
{
    const QString line = korvex::CStr(Message) + QStringLiteral(" (") + korvex::CStr(Value) + QLatin1Char(')');
    mTraceLines.append(line);
    statusBar()->showMessage(line);
    std::fprintf(stderr, "trace: %s\n", qPrintable(line));
}

}  // namespace demo
