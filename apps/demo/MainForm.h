// The demo application's MDI main form: it receives the library's trace lines in its status
// bar, opens the demo's child forms from the form files built into the program, and offers
// them in a task side bar along its left edge, one form in front at a time.
#pragma once

#include "korvex/controls/display/TasksSideBar.h"
#include "korvex/forms/ZqForm.h"
#include "korvex/platform/host/MDIForm.h"
#include "korvex/runtime/Variant.h"

#include <QHash>
#include <QStringList>

#include <functional>

namespace demo {

// The demo's language file, which the build puts beside the program.
QString LanguageFile();

// The form service every demo form holds ("zqfForm"): the demo's messages go through it.
korvex::ZqForm& FormService(korvex::Form& form);

class MainForm : public korvex::MDIForm {
    Q_OBJECT

public:
    MainForm();

    // Opens a child form from a form file (":/forms/<name>.json"), with its screen attached.
    korvex::Form* OpenForm(const QString& name);
    // Brings the form to the front, filling the window, opening it when it is not open yet.
    korvex::Form* ShowForm(const QString& name);
    // The code behind a form: called on every form of that name right after it is loaded.
    void SetScreen(const QString& formName, std::function<void(korvex::Form&)> attach);
    // The forms the side bar offers, in its order.
    QStringList FormNames() const;

    // The library's trace hook, called by name.
    Q_INVOKABLE void TraceFromKorvex(korvex::Variant& Message, korvex::Variant& Value);

    const QStringList& TraceLines() const { return mTraceLines; }
    // The navigation along the left edge: one line for each of the demo's forms.
    korvex::TasksSideBar* Navigation() const { return mNavigation; }

private:
    void Navigate(korvex::Task* task);
    void MarkActive(const QString& formName);

    korvex::TasksSideBar* mNavigation = nullptr;
    QHash<QString, std::function<void(korvex::Form&)>> mScreens;
    QStringList mTraceLines;
    std::vector<std::unique_ptr<korvex::Form>> mChildren;
};

}  // namespace demo
