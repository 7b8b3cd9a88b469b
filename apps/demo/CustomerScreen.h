// The code behind the demo's customer form: navigation and editing buttons over a
// DataBindingSource bound to the customer table, with the edit mode and the stamps on show.
#pragma once

#include <QObject>

#include <functional>
#include <memory>

namespace korvex {
class DataBindingSource;
class Form;
class Label;
namespace ado {
class Recordset;
}
}  // namespace korvex

namespace demo {

class CustomerScreen : public QObject {
    Q_OBJECT

public:
    // Binds the form's controls to the customers of the application's shared connection.
    explicit CustomerScreen(korvex::Form& form);

    korvex::DataBindingSource& Source() const { return *mSource; }

    // Runs an action as the buttons do: an error the library raises is shown to the user (as
    // the standard failure message `failure`, or as it stands when there is none), and the edit
    // mode and buttons follow.
    void Run(const std::function<void()>& action, int failure = -1);

private:
    void OnButton(const char* name, std::function<void()> action, int failure = -1);
    void ShowState();
    void ShowMode(int mode);

    korvex::Form& mForm;
    korvex::DataBindingSource* mSource = nullptr;
    std::shared_ptr<korvex::ado::Recordset> mRS;
    std::shared_ptr<korvex::ado::Recordset> mCountries;
};

}  // namespace demo
