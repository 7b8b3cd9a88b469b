// Shared by the list tests: a form at run time holding one pick list named lstPick, and the
// application title the error sources begin with.
#pragma once

#include "tests/platform/grid/GridTestKit.h"

#include "korvex/controls/lists/ZqDropdownList.h"
#include "korvex/platform/grid/Grid.h"
#include "korvex/platform/host/App.h"
#include "korvex/platform/host/Form.h"
#include "korvex/runtime/Conversions.h"

#include <gtest/gtest.h>

#include <memory>

namespace korvex::test {

class ListFixture : public ::testing::Test {
protected:
    void SetUp() override
    {
        App::Instance()->SetTitle(QStringLiteral("Korvex Tests"));
        form = std::make_unique<Form>();
        form->resize(600, 400);
        list = new ZqDropdownList(form->Client());
        list->SetName(QStringLiteral("lstPick"));
        list->InitProperties();
        list->setGeometry(40, 30, 300, 200);
    }

    std::unique_ptr<Form> form;
    ZqDropdownList* list = nullptr;
};

}  // namespace korvex::test
