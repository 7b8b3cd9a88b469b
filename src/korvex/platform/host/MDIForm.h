// The application's MDI main form: a form whose client area holds child forms (forms with
// MDIChild set show inside it). One MDI form serves the application.
#pragma once

#include "korvex/platform/host/Form.h"

#include <QMdiArea>

namespace korvex {

class MDIForm : public Form {
    Q_OBJECT
    Q_PROPERTY(QObject* ActiveForm READ ActiveFormObject)

public:
    explicit MDIForm(QWidget* parent = nullptr);
    ~MDIForm() override;

    // The MDI form of the application, nullptr when there is none.
    static MDIForm* Instance();

    // Shows a child form inside the MDI area.
    void AddChild(Form* child);
    QList<Form*> Children() const;
    // The active child form.
    Form* ActiveForm() const;
    QObject* ActiveFormObject() const { return ActiveForm(); }
    QMdiArea* Area() const { return mArea; }

private:
    QMdiArea* mArea;
};

}  // namespace korvex
