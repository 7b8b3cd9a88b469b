// The code behind the demo's grid form: the customer table in a grid, its columns chosen and
// captioned with clsFlexGridUtil, and whole cell texts as tool tips where a column cuts them off.
#pragma once

#include "korvex/controls/lists/clsFlexGridUtil.h"

#include <QObject>

#include <memory>

namespace korvex {
class Form;
class Grid;
namespace ado {
class Recordset;
}
}  // namespace korvex

namespace demo {

class GridScreen : public QObject {
    Q_OBJECT

public:
    // Binds the form's grid to the customers of the application's shared connection.
    explicit GridScreen(korvex::Form& form);

private:
    korvex::Form& mForm;
    korvex::Grid* mGrid = nullptr;
    korvex::clsFlexGridUtil mUtil;
    std::shared_ptr<korvex::ado::Recordset> mRS;
};

}  // namespace demo
