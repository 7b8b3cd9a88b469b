// MainForm: child forms from form files, trace lines to the status bar and stderr, and the
// side bar that navigates between the forms.
#include "MainForm.h"

#include "korvex/core/Trace.h"
#include "korvex/platform/host/FormFile.h"
#include "korvex/runtime/Conversions.h"

#include <QCoreApplication>
#include <QDockWidget>
#include <QMdiSubWindow>
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

    // The side bar lists the forms; a click brings a form forward, opening it when needed.
    auto* dock = new QDockWidget(this);
    dock->setFeatures(QDockWidget::NoDockWidgetFeatures);
    dock->setTitleBarWidget(new QWidget(dock));
    mNavigation = new korvex::TasksSideBar(dock);
    mNavigation->SetName(QStringLiteral("tsbNavigation"));
    mNavigation->InitProperties();
    mNavigation->setMinimumWidth(190);
    dock->setWidget(mNavigation);
    addDockWidget(Qt::LeftDockWidgetArea, dock);
    korvex::Tasks& tasks = *mNavigation->Tasks();
    tasks.Add(QStringLiteral("Forms"), QStringLiteral("Forms"), 0, korvex::tbtDown, korvex::tsInactive);
    const std::pair<const char*, const char*> forms[] = {
        {"frmWelcome", "Welcome"},   {"frmLabels", "Labels"},       {"frmInputs", "Inputs"},
        {"frmNumbers", "Numbers"},   {"frmCustomers", "Customers"}, {"frmDisplay", "Display controls"},
        {"frmGrid", "Grid"},
    };
    for (const auto& [name, caption] : forms)
        tasks.Add(QLatin1String(name), QLatin1String(caption), 1);
    tasks.Add(QStringLiteral("Window"), QStringLiteral("Window"), 0, korvex::tbtDown, korvex::tsInactive);
    tasks.Add(QStringLiteral("Tile"), QStringLiteral("Tile the forms"), 1);
    tasks.Add(QStringLiteral("Cascade"), QStringLiteral("Cascade the forms"), 1);
    connect(mNavigation, &korvex::TasksSideBar::TaskClick, this, [this](korvex::Task* task) { Navigate(task); });
    connect(Area(), &QMdiArea::subWindowActivated, this, [this](QMdiSubWindow* active) {
        if (auto* form = active ? qobject_cast<korvex::Form*>(active->widget()) : nullptr)
            MarkActive(form->Name());
    });
}

void MainForm::Navigate(korvex::Task* task)
{
    if (task->Key() == QLatin1String("Tile")) {
        Area()->tileSubWindows();
        return;
    }
    if (task->Key() == QLatin1String("Cascade")) {
        Area()->cascadeSubWindows();
        return;
    }
    for (korvex::Form* child : Children()) {
        if (child->Name() == task->Key()) {
            if (auto* window = qobject_cast<QMdiSubWindow*>(child->parentWidget()))
                Area()->setActiveSubWindow(window);
            return;
        }
    }
    OpenForm(task->Key());
}

void MainForm::MarkActive(const QString& formName)
{
    // The form in front is the current step; the others stay menu entries.
    for (korvex::Task* task : mNavigation->Tasks()->NewEnum()) {
        if (task->IndentLevel() == 0 || task->Key() == QLatin1String("Tile") || task->Key() == QLatin1String("Cascade"))
            continue;
        const int state = task->Key() == formName ? korvex::tsActiveItem : korvex::tsMenuItem;
        if (task->State() != state)
            task->SetState(state);
    }
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
