// Task and Tasks: tasks are owned by the collection's entries (a task taken out of the list by
// Clear lives on while the host holds it, and still tells its old list of changes).
#include "korvex/controls/display/Tasks.h"

#include "korvex/runtime/Error.h"

#include <memory>

namespace korvex {

void Task::Touched()
{
    mChanged = true;
    if (mParent)
        emit mParent->TasksChange(tcrTaskChanged, this);
}

void Task::SetCaption(const QString& caption)
{
    mCaption = caption;
    Touched();
}

void Task::SetIndentLevel(short level)
{
    mIndentLevel = level;
    Touched();
}

void Task::SetBulletType(int type)
{
    mBulletType = type;
    Touched();
}

void Task::SetState(int state)
{
    mState = state;
    Touched();
}

Tasks::Tasks(QObject* parent) : QObject(parent) {}

void Tasks::Clear()
{
    mItems.Clear();
    emit TasksChange(tcrTaskRemoved, nullptr);
}

void Tasks::Add(const QString& Key, const QString& Caption, short IndentLevel, int BulletType, int State)
{
    std::shared_ptr<Task> task(new Task);
    task->mKey = Key;
    task->mIndex = static_cast<short>(Count() + 1);
    task->SetCaption(Caption);
    task->SetIndentLevel(IndentLevel);
    task->SetBulletType(BulletType);
    task->SetState(State);
    task->mParent = this;
    mItems.Add(Variant(std::shared_ptr<QObject>(task)), Variant(Key));
    emit TasksChange(tcrTaskAdded, task.get());
}

Task* Tasks::Item(const Variant& index) const
{
    return qobject_cast<Task*>(mItems.Item(index).Object());
}

QList<Task*> Tasks::NewEnum() const
{
    QList<Task*> tasks;
    for (const Variant& v : mItems.Items())
        tasks.append(qobject_cast<Task*>(v.Object()));
    return tasks;
}

}  // namespace korvex
