// The demo application's MDI main form: it receives the library's trace lines in its status
// bar and opens the demo's child forms from the form files built into the program.
#pragma once

#include "korvex/platform/host/MDIForm.h"
#include "korvex/runtime/Variant.h"

#include <QStringList>

namespace demo {

// The demo's language file, which the build puts beside the program.
QString LanguageFile();

class MainForm : public korvex::MDIForm {
    Q_OBJECT

public:
    MainForm();

    // Opens a child form from a form file (":/forms/<name>.json").
    korvex::Form* OpenForm(const QString& name);

    // The library's trace hook, called by name.
    Q_INVOKABLE void TraceFromKorvex(korvex::Variant& Message, korvex::Variant& Value);

    const QStringList& TraceLines() const { return mTraceLines; }

private:
    QStringList mTraceLines;
    std::vector<std::unique_ptr<korvex::Form>> mChildren;
};

}  // namespace demo
