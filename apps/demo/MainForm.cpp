// MainForm: child forms from form files, trace lines to the status bar and stderr, and the
// side bar that navigates between the forms.
#include "MainForm.h"

#include "korvex/forms/ZqFormHeader.h"
#include "korvex/platform/desktop/MessageBoxService.h"
#include "korvex/platform/host/FormFile.h"
#include "korvex/runtime/Conversions.h"

#include <QCoreApplication>
#include <QDockWidget>
#include <QMdiSubWindow>
#include <QMenuBar>
#include <QStatusBar>

#include <cstdio>

namespace demo {
namespace {

struct FormEntry {
    const char* name;
    const char* caption;
};

const std::vector<FormEntry>& DemoForms()
{
    static const std::vector<FormEntry> forms = {
        {"frmWelcome", "Welcome"},   {"frmLabels", "Labels"},       {"frmInputs", "Inputs"},
        {"frmNumbers", "Numbers"},   {"frmCustomers", "Customers"}, {"frmDisplay", "Display controls"},
        {"frmGrid", "Grid"},         {"frmLists", "Pick lists"},    {"frmCombo", "Combo"},
        {"frmEmail", "E-mail"},
    };
    return forms;
}

}  // namespace

QString LanguageFile()
{
    return QCoreApplication::applicationDirPath() + QStringLiteral("/Korvex.lng");
}

korvex::ZqForm& FormService(korvex::Form& form)
{
    return *static_cast<korvex::ZqForm*>(form.FindControl(QStringLiteral("zqfForm")));
}

MainForm::MainForm()
{
    SetName(QStringLiteral("frmMDI"));
    SetCaption(QStringLiteral("Korvex Demo"));
    resize(1280, 800);
    QMenu* window = menuBar()->addMenu(QStringLiteral("&Window"));
    window->addAction(QStringLiteral("&Tile"), Area(), &QMdiArea::tileSubWindows);
    window->addAction(QStringLiteral("&Cascade"), Area(), &QMdiArea::cascadeSubWindows);
    statusBar()->showMessage(QStringLiteral("Ready"));

    // The side bar lists the forms; a click brings a form forward, opening it when needed. Forms
    // left behind stay open, so an edit in one of them is never lost by looking at another.
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
    for (const auto& [name, caption] : DemoForms())
        tasks.Add(QLatin1String(name), QLatin1String(caption), 1);
    connect(mNavigation, &korvex::TasksSideBar::TaskClick, this, [this](korvex::Task* task) { Navigate(task); });
    connect(Area(), &QMdiArea::subWindowActivated, this, [this](QMdiSubWindow* active) {
        if (auto* form = active ? qobject_cast<korvex::Form*>(active->widget()) : nullptr)
            MarkActive(form->Name());
    });
}

void MainForm::Navigate(korvex::Task* task)
{
    if (task->IndentLevel() > 0)
        ShowForm(task->Key());
}

QStringList MainForm::FormNames() const
{
    QStringList names;
    for (const FormEntry& entry : DemoForms())
        names << QLatin1String(entry.name);
    return names;
}

void MainForm::SetScreen(const QString& formName, std::function<void(korvex::Form&)> attach)
{
    mScreens.insert(formName, std::move(attach));
}

korvex::Form* MainForm::ShowForm(const QString& name)
{
    korvex::Form* form = nullptr;
    for (korvex::Form* child : Children()) {
        if (child->Name() == name)
            form = child;
    }
    if (!form)
        form = OpenForm(name);
    if (auto* window = qobject_cast<QMdiSubWindow*>(form->parentWidget())) {
        window->showMaximized();
        Area()->setActiveSubWindow(window);
    }
    return form;
}

void MainForm::MarkActive(const QString& formName)
{
    // The form in front is the current step; the others stay menu entries.
    for (korvex::Task* task : mNavigation->Tasks()->NewEnum()) {
        if (task->IndentLevel() == 0)
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
    // The form's service writes its load line to the trace; its header's buttons act here.
    shown->Show();
    if (auto* header = qobject_cast<korvex::ZqFormHeader*>(shown->FindControl(QStringLiteral("zqhHeader")))) {
        connect(header, &korvex::ZqFormHeader::HelpClicked, shown, [shown] {
            FormService(*shown).MsgBoxZq(
                QStringLiteral("The help for \"%1\" is topic %2 of the Korvex help.").arg(shown->Caption()).arg(shown->HelpContextID()),
                korvex::vbInformation);
        });
        connect(header, &korvex::ZqFormHeader::CloseClicked, this, [this] { ShowForm(QStringLiteral("frmWelcome")); });
    }
    if (auto screen = mScreens.constFind(name); screen != mScreens.constEnd())
        (*screen)(*shown);
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
