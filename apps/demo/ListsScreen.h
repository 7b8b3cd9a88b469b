// The code behind the demo's pick-list form: two text boxes, each with a pick list as its
// drop-down. The customer list is a copy of the customer table (recordset mode), the terms list
// is built from a string (free mode). The screen shows and hides each list and passes the
// box's keys to it, as a host of the pick list does.
#pragma once

#include <QObject>

#include <memory>

namespace korvex {
class Form;
class Label;
class ZqDropdownList;
class ZqText;
namespace ado {
class Recordset;
}
}  // namespace korvex

namespace demo {

class ListsScreen : public QObject {
    Q_OBJECT

public:
    // With `openForPicture` the customer list is shown open, a customer selected, for the
    // screenshot.
    ListsScreen(korvex::Form& form, bool openForPicture);

private:
    void AttachDropDown(korvex::ZqText* box, korvex::ZqDropdownList* list);
    void Open(korvex::ZqDropdownList* list);
    void Take(korvex::ZqText* box, korvex::ZqDropdownList* list);
    void ShowChosen();
    void CloseAll();

    korvex::Form& mForm;
    korvex::ZqText* mCustomer = nullptr;
    korvex::ZqDropdownList* mCustomers = nullptr;
    korvex::ZqText* mTerms = nullptr;
    korvex::ZqDropdownList* mTermsList = nullptr;
    korvex::Label* mChosen = nullptr;
    std::shared_ptr<korvex::ado::Recordset> mRS;
    // Set while the screen writes a box's text itself, so that the write is not taken as typing.
    bool mWriting = false;
};

}  // namespace demo
