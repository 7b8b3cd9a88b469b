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

private:
    // Runs a button's action; an error the library raises is shown to the user.
    void Run(const std::function<void()>& action);
    void OnButton(const char* name, std::function<void()> action);
    void ShowState();

    korvex::Form& mForm;
    korvex::DataBindingSource* mSource = nullptr;
    std::shared_ptr<korvex::ado::Recordset> mRS;
};

}  // namespace demo
