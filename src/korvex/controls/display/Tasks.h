// The task list a side bar shows: Task is one line (caption, indent, bullet, state), Tasks the
// ordered keyed collection of them. Every change to the collection or to a task in it raises
// TasksChange, which a side bar answers by redrawing shortly afterwards.
#pragma once

#include "korvex/runtime/Collection.h"
#include "korvex/runtime/Variant.h"

#include <QList>
#include <QObject>
#include <QPointer>
#include <QString>

namespace korvex {

class Tasks;

enum TaskBulletTypes : int { tbtRight = 0, tbtDown = 1 };
enum TaskStates : int { tsNotVisible = 0, tsMenuItem = 1, tsActiveItem = 2, tsInactive = 3 };
enum TaskChangeReasons : int { tcrTaskAdded = 0, tcrTaskChanged = 1, tcrTaskRemoved = 2 };

class Task : public QObject {
    Q_OBJECT
    Q_PROPERTY(short Index READ Index)
    Q_PROPERTY(QString Key READ Key)
    Q_PROPERTY(QString Caption READ Caption WRITE SetCaption)
    Q_PROPERTY(short IndentLevel READ IndentLevel WRITE SetIndentLevel)
    Q_PROPERTY(int BulletType READ BulletType WRITE SetBulletType)
    Q_PROPERTY(int State READ State WRITE SetState)

public:
    short Index() const noexcept { return mIndex; }
    const QString& Key() const noexcept { return mKey; }
    const QString& Caption() const noexcept { return mCaption; }
    void SetCaption(const QString& caption);
    short IndentLevel() const noexcept { return mIndentLevel; }
    void SetIndentLevel(short level);
    int BulletType() const noexcept { return mBulletType; }
    void SetBulletType(int type);
    int State() const noexcept { return mState; }
    void SetState(int state);

    // The line must be refreshed from the task at the next redraw.
    bool Changed() const noexcept { return mChanged; }
    void SetChanged(bool changed) noexcept { mChanged = changed; }

private:
    friend class Tasks;
    Task() = default;
    void Touched();

    short mIndex = 0;
    QString mKey;
    QString mCaption;
    short mIndentLevel = 0;
    int mBulletType = tbtRight;
    int mState = tsMenuItem;
    QPointer<Tasks> mParent;
    bool mChanged = false;
};

class Tasks : public QObject {
    Q_OBJECT
    Q_PROPERTY(short Count READ Count)

public:
    explicit Tasks(QObject* parent = nullptr);

    // Starts an empty list; raises TasksChange (removed, no task).
    Q_INVOKABLE void Clear();
    short Count() const noexcept { return static_cast<short>(mItems.Count()); }
    // A new task at the end under a new key (457 for a key already there: nothing is added
    // and nothing raised).
    Q_INVOKABLE void Add(const QString& Key, const QString& Caption, short IndentLevel = 0, int BulletType = tbtRight,
                         int State = tsMenuItem);
    // By position from 1 or by key (9 for a bad position, 5 for an unknown key).
    Task* Item(const Variant& index) const;
    // The tasks in order, for iteration.
    QList<Task*> NewEnum() const;

signals:
    void TasksChange(int Reason, korvex::Task* Task);

private:
    friend class Task;
    Collection mItems;
};

}  // namespace korvex
