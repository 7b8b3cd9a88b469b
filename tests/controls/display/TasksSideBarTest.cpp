// Tasks and TasksSideBar: the collection's events and errors; one redraw for a burst of
// changes; line positions for indents, gaps and hidden tasks; the look of each state and the
// bullets on rendered pixels; TaskClick only for menu items; lines unloaded as the list
// shrinks; the font in the saved form.
#include "DisplayTestSupport.h"

#include "korvex/controls/display/Tasks.h"
#include "korvex/controls/display/TasksSideBar.h"
#include "korvex/controls/display/ZqLabel.h"
#include "korvex/platform/host/PropertyBag.h"
#include "korvex/runtime/Error.h"
#include "tests/support/ErrorOf.h"
#include "tests/support/PinnedSettings.h"

#include <QApplication>
#include <QMouseEvent>
#include <QTest>

#include <gtest/gtest.h>

namespace korvex {
namespace {

struct Change {
    int reason;
    Task* task;
};

TEST(TasksTest, AddChangeClearAndTheirEvents)
{
    Tasks tasks;
    QList<Change> changes;
    QObject::connect(&tasks, &Tasks::TasksChange, [&](int reason, Task* task) { changes.append({reason, task}); });

    tasks.Add(QStringLiteral("open"), QStringLiteral("Open a customer"));
    ASSERT_EQ(changes.size(), 1) << "setting the new task's properties raises nothing of its own";
    Task* open = tasks.Item(QStringLiteral("OPEN"));
    EXPECT_EQ(changes[0].reason, tcrTaskAdded);
    EXPECT_EQ(changes[0].task, open);
    EXPECT_EQ(open->Index(), 1);
    EXPECT_EQ(open->Key(), "open");
    EXPECT_EQ(open->IndentLevel(), 0) << "a clickable menu item at the top level with a right arrow";
    EXPECT_EQ(open->BulletType(), tbtRight);
    EXPECT_EQ(open->State(), tsMenuItem);
    EXPECT_TRUE(open->Changed());

    tasks.Add(QStringLiteral("save"), QStringLiteral("Save"), 1, tbtDown, tsInactive);
    EXPECT_EQ(tasks.Item(2)->Index(), 2);
    EXPECT_EQ(tasks.Item(2)->State(), tsInactive);
    EXPECT_EQ(test::ErrorOf([&] { tasks.Add(QStringLiteral("Save"), QStringLiteral("again")); }), vbErrDuplicateKey);
    EXPECT_EQ(tasks.Count(), 2);
    EXPECT_EQ(changes.size(), 2) << "a refused task raises nothing";
    EXPECT_EQ(test::ErrorOf([&] { tasks.Item(QStringLiteral("print")); }), vbErrInvalidProcedureCall);
    EXPECT_EQ(test::ErrorOf([&] { tasks.Item(3); }), vbErrSubscriptOutOfRange);

    open->SetChanged(false);
    open->SetState(tsActiveItem);
    ASSERT_EQ(changes.size(), 3);
    EXPECT_EQ(changes[2].reason, tcrTaskChanged);
    EXPECT_EQ(changes[2].task, open);
    EXPECT_TRUE(open->Changed());
    EXPECT_EQ(tasks.NewEnum(), (QList<Task*>{open, tasks.Item(2)}));

    tasks.Clear();
    EXPECT_EQ(tasks.Count(), 0);
    ASSERT_EQ(changes.size(), 4);
    EXPECT_EQ(changes[3].reason, tcrTaskRemoved);
    EXPECT_EQ(changes[3].task, nullptr);
}

struct SideBarTest : ::testing::Test {
    void SetUp() override
    {
        form.resize(400, 500);
        bar = static_cast<TasksSideBar*>(FormFile::AddNewControl(form, QStringLiteral("TasksSideBar"), QStringLiteral("tsb")));
        bar->resize(200, bar->height());
        form.show();
        EXPECT_TRUE(QTest::qWaitForWindowExposed(&form));
    }
    bool Settled(int redraws) { return QTest::qWaitFor([&] { return bar->Redraws() >= redraws; }, 2000); }
    Tasks& tasks() { return *bar->Tasks(); }
    int TopPx(int k) { return bar->Info(k)->y(); }
    void ClickInfo(int k)
    {
        ZqLabel* info = bar->Info(k);
        QMouseEvent move(QEvent::MouseMove, QPointF(3, 3), info->mapToGlobal(QPointF(3, 3)), Qt::NoButton, Qt::NoButton, {});
        QApplication::sendEvent(info, &move);
        QTest::mouseClick(info, Qt::LeftButton, {}, QPoint(3, 3));
    }
    test::PinnedSettings pin;
    Form form;
    TasksSideBar* bar = nullptr;
};

TEST_F(SideBarTest, ABurstOfChangesIsDrawnOnce)
{
    EXPECT_EQ(bar->x(), 0) << "docked along the left edge";
    EXPECT_EQ(bar->height(), form.Client()->height());
    for (int i = 1; i <= 5; ++i)
        tasks().Add(QStringLiteral("t%1").arg(i), QStringLiteral("Task %1").arg(i));
    EXPECT_EQ(bar->Redraws(), 0) << "nothing yet: the timer gathers the changes";
    ASSERT_TRUE(Settled(1));
    QTest::qWait(50);
    EXPECT_EQ(bar->Redraws(), 1) << "five additions, one redraw";
    EXPECT_EQ(bar->LoadedLines(), 5);
    EXPECT_EQ(bar->Info(4)->Caption(), "Task 5");

    for (int round = 0; round < 3; ++round)
        for (Task* t : tasks().NewEnum())
            t->SetCaption(t->Caption() + QLatin1Char('.'));
    ASSERT_TRUE(Settled(2));
    QTest::qWait(50);
    EXPECT_EQ(bar->Redraws(), 2);
    EXPECT_EQ(bar->Info(0)->Caption(), "Task 1...");

}

TEST_F(SideBarTest, IndentsGapsAndHiddenTasksPlaceTheLines)
{
    const QList<int> indents = {0, 1, 1, 0, 0};
    for (int i = 0; i < indents.size(); ++i)
        tasks().Add(QStringLiteral("t%1").arg(i), QStringLiteral("Line"), static_cast<short>(indents[i]));
    bar->Redraw();
    const int line = bar->Info(0)->height() + 12;
    EXPECT_EQ(TopPx(0), 12);
    EXPECT_EQ(TopPx(1), 12 + line) << "no gap going in";
    EXPECT_EQ(TopPx(2), 12 + 2 * line);
    EXPECT_EQ(TopPx(3), 12 + 3 * line + 12) << "a gap before a new top-level group";
    EXPECT_EQ(TopPx(4), 12 + 4 * line + 12) << "none between two top-level lines";
    const int step = bar->Bullet(0)->width() + 4;
    EXPECT_EQ(bar->Bullet(0)->x(), 4);
    EXPECT_EQ(bar->Bullet(1)->x(), 4 + step) << "one step in per indent level";
    EXPECT_EQ(bar->Info(1)->x(), 4 + step + bar->Bullet(1)->width() + 4);
    EXPECT_EQ(bar->Info(1)->x() + bar->Info(1)->width(), 200 - 8) << "lines end 8 pixels short of the edge";

    tasks().Item(2)->SetState(tsNotVisible);
    bar->Redraw();
    EXPECT_FALSE(bar->Info(1)->isVisible());
    EXPECT_FALSE(bar->Bullet(1)->isVisible());
    EXPECT_EQ(TopPx(2), 12 + line) << "a hidden task takes no room";
}

TEST_F(SideBarTest, StatesLookAndClickAsTheySay)
{
    tasks().Add(QStringLiteral("a"), QStringLiteral("Customers"));
    tasks().Add(QStringLiteral("b"), QStringLiteral("Orders"), 0, tbtDown, tsActiveItem);
    tasks().Add(QStringLiteral("c"), QStringLiteral("Reports"), 0, tbtRight, tsInactive);
    bar->Redraw();
    ZqLabel* menu = bar->Info(0);
    EXPECT_EQ(menu->Style(), lsHyperlink);
    EXPECT_EQ(menu->ForeColor(), 0xF0FFF0u);
    EXPECT_EQ(menu->LinkHoverForeColor(), 0xF5FFF5u);
    EXPECT_FALSE(menu->Font()->Bold());
    EXPECT_EQ(bar->Info(1)->ForeColor(), 0xFFFFFFu);
    EXPECT_TRUE(bar->Info(1)->Font()->Bold()) << "the current step is bold";
    EXPECT_FALSE(menu->Font()->Bold()) << "and only that one";
    EXPECT_EQ(bar->Info(2)->ForeColor(), 0xA0C0A0u);
    EXPECT_EQ(bar->Bullet(2)->ForeColor(), 0xA0C0A0u) << "the bullet takes the line's colour";

    QList<Task*> clicked;
    QObject::connect(bar, &TasksSideBar::TaskClick, [&](Task* t) { clicked.append(t); });
    ClickInfo(0);
    ClickInfo(1);
    ClickInfo(2);
    ASSERT_EQ(clicked.size(), 1) << "only menu items are clickable";
    EXPECT_EQ(clicked[0], tasks().Item(1));

    tasks().Item(1)->SetState(tsActiveItem);
    bar->Redraw();
    EXPECT_EQ(menu->ForeColor(), 0xFFFFFFu);
    EXPECT_TRUE(menu->Font()->Bold());
    EXPECT_EQ(menu->Style(), lsNormal);
    ClickInfo(0);
    EXPECT_EQ(clicked.size(), 1) << "no longer clickable";
}

TEST_F(SideBarTest, BulletsPointRightOrDown)
{
    tasks().Add(QStringLiteral("r"), QStringLiteral("Right"));
    tasks().Add(QStringLiteral("d"), QStringLiteral("Down"), 0, tbtDown);
    bar->Redraw();
    const QImage image = bar->grab().toImage();
    // The light ink of a bullet on the green background: a right-pointing triangle is tallest
    // at its left, a down-pointing one widest at its top.
    const auto shape = [&](ZqLabel* bullet) {
        const QRect area = bullet->geometry();
        QList<int> columns(area.width()), rows(area.height());
        for (int y = 0; y < area.height(); ++y)
            for (int x = 0; x < area.width(); ++x)
                if (qGray(image.pixel(area.left() + x, area.top() + y)) > 200) {
                    ++columns[x];
                    ++rows[y];
                }
        const auto first = [](const QList<int>& v) { return std::find_if(v.begin(), v.end(), [](int n) { return n > 0; }); };
        const auto last = [](const QList<int>& v) { return std::find_if(v.rbegin(), v.rend(), [](int n) { return n > 0; }); };
        return std::array<int, 4>{*first(columns), *last(columns), *first(rows), *last(rows)};
    };
    const auto right = shape(bar->Bullet(0));
    EXPECT_GT(right[0], right[1] + 3) << "tall at the left, a point at the right";
    const auto down = shape(bar->Bullet(1));
    EXPECT_GT(down[2], down[3] + 3) << "wide at the top, a point at the bottom";
}

TEST_F(SideBarTest, LinesGoWhenTheListShrinks)
{
    for (int i = 0; i < 4; ++i)
        tasks().Add(QStringLiteral("t%1").arg(i), QStringLiteral("Line %1").arg(i));
    bar->Redraw();
    EXPECT_EQ(bar->LoadedLines(), 4);
    tasks().Clear();
    tasks().Add(QStringLiteral("x"), QStringLiteral("Only"));
    bar->Redraw();
    EXPECT_EQ(bar->LoadedLines(), 2) << "elements from index 2 up are unloaded; element 1 stays as it was";
    EXPECT_EQ(bar->Info(1)->Caption(), "Line 1");
    EXPECT_EQ(bar->Info(0)->Caption(), "Only");
    bar->Clear();
    EXPECT_EQ(bar->LoadedLines(), 1);
    EXPECT_FALSE(bar->Info(0)->isVisible());
    EXPECT_EQ(tasks().Count(), 1) << "the list itself is not touched";
}

TEST_F(SideBarTest, FontIsAlwaysSavedAndReadBack)
{
    PropertyBag bag;
    bar->WriteProperties(bag);
    EXPECT_TRUE(bag.Values().contains(QStringLiteral("Font"))) << "written without a default";
    StdFont font(QStringLiteral("DejaVu Serif"), 11);
    bar->SetFont(&font);
    EXPECT_EQ(bar->Info(0)->Font()->Name(), "DejaVu Serif");
    EXPECT_NE(bar->Info(0)->Font(), &font) << "each line has its own copy";
    auto loaded = test::SavedAndLoaded(form);
    auto* back = qobject_cast<TasksSideBar*>(loaded->ControlByName(QStringLiteral("tsb")));
    ASSERT_NE(back, nullptr);
    EXPECT_EQ(back->Font()->Name(), "DejaVu Serif");
    EXPECT_EQ(back->Info(0)->Font()->Name(), "DejaVu Serif");
    ASSERT_NE(back->Tasks(), nullptr) << "a loaded side bar has its list";
}

}  // namespace
}  // namespace korvex
