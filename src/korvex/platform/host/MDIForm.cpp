// MDIForm: child forms as sub-windows of a QMdiArea.
#include "korvex/platform/host/MDIForm.h"

#include <QMdiSubWindow>
#include <QVBoxLayout>

namespace korvex {
namespace {

QPointer<MDIForm>& TheInstance()
{
    static QPointer<MDIForm> instance;
    return instance;
}

}  // namespace

MDIForm::MDIForm(QWidget* parent) : Form(parent), mArea(new QMdiArea(Client()))
{
    // The MDI area fills the client; child forms are the only controls an MDI form has.
    auto* layout = new QVBoxLayout(Client());
    layout->setContentsMargins(0, 0, 0, 0);
    layout->addWidget(mArea);
    TheInstance() = this;
}

MDIForm::~MDIForm()
{
    if (TheInstance() == this)
        TheInstance() = nullptr;
}

MDIForm* MDIForm::Instance()
{
    return TheInstance();
}

void MDIForm::AddChild(Form* child)
{
    for (QMdiSubWindow* sub : mArea->subWindowList()) {
        if (sub->widget() == child) {
            sub->show();
            child->show();
            mArea->setActiveSubWindow(sub);
            return;
        }
    }
    QMdiSubWindow* sub = mArea->addSubWindow(child);
    sub->setAttribute(Qt::WA_DeleteOnClose, false);
    sub->resize(child->size());
    child->show();
    sub->show();
    mArea->setActiveSubWindow(sub);
}

QList<Form*> MDIForm::Children() const
{
    QList<Form*> children;
    for (QMdiSubWindow* sub : mArea->subWindowList()) {
        if (auto* f = qobject_cast<Form*>(sub->widget()))
            children.append(f);
    }
    return children;
}

Form* MDIForm::ActiveForm() const
{
    QMdiSubWindow* sub = mArea->activeSubWindow();
    if (!sub && !mArea->subWindowList().isEmpty())
        sub = mArea->subWindowList().last();
    return sub ? qobject_cast<Form*>(sub->widget()) : nullptr;
}

}  // namespace korvex
