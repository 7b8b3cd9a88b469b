// A side bar docked along the left edge of a form that shows a task list as indented lines
// with a bullet in front of each: menu entries to click, the step now in progress, steps not
// available. Changes to the list are gathered for 15 ms and then drawn in one go; the lines
// are labels loaded as the list grows, on a green gradient.
#pragma once

#include "korvex/controls/display/SurfaceFont.h"
#include "korvex/controls/display/Tasks.h"
#include "korvex/platform/host/UserControl.h"

#include <QList>
#include <QPointer>

namespace korvex {

class TimerControl;
class ZqFrameEx;
class ZqLabel;

class TasksSideBar : public UserControl {
    Q_OBJECT
    Q_PROPERTY(QObject* Font READ FontObject WRITE SetFont)
    Q_PROPERTY(QObject* Tasks READ TasksObject)

public:
    explicit TasksSideBar(QWidget* parent = nullptr);

    StdFont* Font() const { return mFont.Get(); }
    QObject* FontObject() const { return mFont.Get(); }
    Variant FontValue() const { return Variant(FontObject()); }
    // The surface's font, and a copy of it for every line's text.
    void SetFont(QObject* font);
    korvex::Tasks* Tasks() const { return mTasks; }
    QObject* TasksObject() const { return mTasks; }
    // Takes the lines away; the task list stays as it is.
    Q_INVOKABLE void Clear();

    // The labels of line k (from 0): its bullet and its text. Null past the loaded ones.
    ZqLabel* Bullet(int k) const;
    ZqLabel* Info(int k) const;
    int LoadedLines() const { return static_cast<int>(mInfos.size()); }
    ZqFrameEx* Background() const { return zqfrax; }
    // How many redraws have run: a burst of changes makes one.
    int Redraws() const noexcept { return mRedraws; }
    qint64 LastRedrawNanoseconds() const noexcept { return mLastRedrawNs; }
    // The redraw the timer runs, for callers that cannot wait for it.
    void Redraw();

    void InitProperties() override;
    void ReadProperties(PropertyBag& bag) override;

signals:
    void TaskClick(korvex::Task* Task);

protected:
    const PropertyList& PersistedProperties() const override;
    void Resize() override;
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    void CreateTasks();
    void LoadFont(const Variant& font);
    void ApplyFontToLines();
    void LoadLine(int k);
    void UnloadFrom(int k);
    void Refresh(int k, const Task& task);
    void InfoClicked(ZqLabel* info);
    void DockLeft();

    SurfaceFont mFont;
    QPointer<korvex::Tasks> mTasks;
    ZqFrameEx* zqfrax;
    QList<QPointer<ZqLabel>> mBullets;
    QList<QPointer<ZqLabel>> mInfos;
    TimerControl* tmrDisplayTasks;
    int mRedraws = 0;
    qint64 mLastRedrawNs = 0;
};

}  // namespace korvex
