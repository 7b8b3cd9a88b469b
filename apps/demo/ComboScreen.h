// The code behind the demo's combo form: one ZqDropdown over the million generated items of the
// demo database, with the filter box and the header sort on. The items are generated the first
// time the form opens (not when the demo starts, which stays quick) and kept in the database.
#pragma once

#include <QObject>

#include <memory>

namespace korvex {
class Form;
class Label;
class ZqDropdown;
namespace ado {
class Recordset;
}
}  // namespace korvex

namespace demo {

class ComboScreen : public QObject {
    Q_OBJECT

public:
    explicit ComboScreen(korvex::Form& form);

    korvex::ZqDropdown& Items() const { return *mItems; }
    // Opens the drop-down with a name typed into its filter box, for the screenshot.
    void OpenFiltered(const QString& typed);

private:
    void Load();
    void ShowChosen();

    korvex::Form& mForm;
    korvex::ZqDropdown* mItems = nullptr;
    korvex::Label* mChosen = nullptr;
    korvex::Label* mLoad = nullptr;
    std::shared_ptr<korvex::ado::Recordset> mRS;
};

}  // namespace demo
