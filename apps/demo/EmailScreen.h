// The code behind the demo's e-mail form: sends the form's message with a small attachment
// through clsEmail over SMTP and shows the e-mail log.
#pragma once

#include "korvex/email/clsEmail.h"

#include <QObject>
#include <QTemporaryDir>

namespace korvex {
class Form;
}

namespace demo {

class EmailScreen : public QObject {
    Q_OBJECT

public:
    explicit EmailScreen(korvex::Form& form);

    // Sends the message the form shows; true when the server took it.
    bool Send();

private:
    QString Text(const char* control) const;

    korvex::Form& mForm;
    korvex::clsEmail mEmail;
    QTemporaryDir mFiles;  // private to the user, removed with the screen
};

}  // namespace demo
