// TasksSideBar: line k is the bullet label and the text label with index k; labels beyond the
// first pair are loaded when the list first needs them and unloaded when it shrinks. Every
// change to the list only starts the 15 ms timer, so a burst of changes is drawn once.
#include "korvex/controls/display/TasksSideBar.h"

#include "korvex/controls/display/ZqFrame.h"
#include "korvex/controls/display/ZqLabel.h"
#include "korvex/platform/host/ControlRegistry.h"
#include "korvex/platform/host/FormFile.h"
#include "korvex/platform/host/TimerControl.h"
#include "korvex/runtime/EntryGuard.h"
#include "korvex/runtime/Twips.h"

#include <QElapsedTimer>
#include <QFontDatabase>

namespace korvex {

KORVEX_REGISTER_CONTROL(TasksSideBar);

namespace {

constexpr OleColor kMenuItemColour = 0xF0FFF0;
constexpr OleColor kMenuHoverColour = 0xF5FFF5;
constexpr OleColor kMenuClickColour = 0xFAFFFA;
constexpr OleColor kActiveColour = 0xFFFFFF;
constexpr OleColor kInactiveColour = 0xA0C0A0;

// The bullets are "4" and "6" of the Marlett symbol face, right and down triangles; where that
// face is not installed the same triangles come from Unicode.
bool HaveMarlett()
{
    static const bool have = QFontDatabase::families().contains(QStringLiteral("Marlett"), Qt::CaseInsensitive);
    return have;
}

QString BulletText(int bulletType)
{
    if (HaveMarlett())
        return bulletType == tbtDown ? QStringLiteral("6") : QStringLiteral("4");
    return bulletType == tbtDown ? QStringLiteral("\u25BC") : QStringLiteral("\u25B6");
}

int PixelsX(double pixels)
{
    return RoundHalfEven(pixels * TwipsPerPixelX());
}

int PixelsY(double pixels)
{
    return RoundHalfEven(pixels * TwipsPerPixelY());
}

}  // namespace

TasksSideBar::TasksSideBar(QWidget* parent)
    : UserControl(parent), mFont(this), zqfrax(new ZqFrameEx(this)), tmrDisplayTasks(new TimerControl(this))
{
    setFocusPolicy(Qt::NoFocus);
    SetTabStop(false);
    zqfrax->SetBorderStyle(bsNone);
    zqfrax->SetBackColorTR(0x287828);
    zqfrax->SetBackColorBL(0x30B030);
    zqfrax->SetBackColorBR(0x28A028);
    zqfrax->SetBackColor(0x287828);

    auto* bullet = new ZqLabel(zqfrax->ContainerWidget());
    bullet->SetName(QStringLiteral("zqlblBullet"));
    bullet->SetIndex(0);
    bullet->InitProperties();
    bullet->SetFont(new StdFont(HaveMarlett() ? QStringLiteral("Marlett") : QStringLiteral("DejaVu Sans"), 12, bullet));
    bullet->SetCaption(BulletText(tbtRight));
    bullet->SetAlignmentH(2);
    bullet->SetForeColor(kMenuItemColour);
    bullet->resize(16, 20);
    mBullets.append(bullet);

    auto* info = new ZqLabel(zqfrax->ContainerWidget());
    info->SetName(QStringLiteral("zqlblInfo"));
    info->SetIndex(0);
    info->InitProperties();
    info->SetFont(new StdFont(QStringLiteral("Arial"), 9.75, info));
    info->SetCaption(QStringLiteral("Item"));
    info->SetAutoSize(true);
    info->SetWordWrap(true);
    info->SetForeColor(kMenuItemColour);
    info->SetLinkHoverForeColor(kMenuItemColour);
    info->SetLinkClickForeColor(kMenuClickColour);
    info->resize(120, 20);
    mInfos.append(info);
    connect(info, qOverload<short>(&ZqLabel::Click), this, GuardedSlot(this, [this, info] { InfoClicked(info); }));

    tmrDisplayTasks->SetInterval(15);
    tmrDisplayTasks->SetEnabled(false);
    connect(tmrDisplayTasks, &TimerControl::Timer, this, GuardedSlot(this, [this] {
                tmrDisplayTasks->SetEnabled(false);
                Redraw();
            }));
    resize(180, 300);
}

ZqLabel* TasksSideBar::Bullet(int k) const
{
    return k >= 0 && k < mBullets.size() ? mBullets[k].data() : nullptr;
}

ZqLabel* TasksSideBar::Info(int k) const
{
    return k >= 0 && k < mInfos.size() ? mInfos[k].data() : nullptr;
}

void TasksSideBar::CreateTasks()
{
    if (mTasks)
        mTasks->deleteLater();
    mTasks = new korvex::Tasks(this);
    connect(mTasks, &Tasks::TasksChange, this, [this] { tmrDisplayTasks->SetEnabled(true); });
}

// Fonts ----------------------------------------------------------------------------------------

void TasksSideBar::SetFont(QObject* font)
{
    mFont.Set(font, QStringLiteral("TasksSideBar.Font"));
    ApplyFontToLines();
    PropertyChanged("Font");
}

void TasksSideBar::LoadFont(const Variant& font)
{
    // Nothing stored: the font the side bar has stays (a copy of the container's on a new one).
    mFont.Load(font.IsObject() && font.Object() ? font : (mFont.Get() ? Variant(mFont.Object()) : AmbientFont(*this)),
               QStringLiteral("TasksSideBar.Font"));
    ApplyFontToLines();
}

void TasksSideBar::ApplyFontToLines()
{
    // Each line keeps its own copy: making the current task bold must not make every line bold.
    for (const QPointer<ZqLabel>& info : std::as_const(mInfos)) {
        if (!info)
            continue;
        auto* copy = new StdFont(info);
        copy->CopyFrom(*mFont.Get());
        info->SetFont(copy);
    }
}

// Lifecycle ------------------------------------------------------------------------------------

// The font has no default to compare with, so it is always stored; a new side bar starts with a
// copy of the container's.
const PropertyList& TasksSideBar::PersistedProperties() const
{
    static const PropertyList list =
        Declare<TasksSideBar>().Stored("Font", &TasksSideBar::FontValue, &TasksSideBar::LoadFont, Variant()).Initially(AmbientFont);
    return list;
}

void TasksSideBar::InitProperties()
{
    UserControl::InitProperties();
    CreateTasks();
    DockLeft();
}

void TasksSideBar::ReadProperties(PropertyBag& bag)
{
    UserControl::ReadProperties(bag);
    CreateTasks();
}

void TasksSideBar::DockLeft()
{
    QWidget* container = parentWidget();
    if (!container)
        return;
    container->installEventFilter(this);
    setGeometry(0, 0, width(), container->height());
}

bool TasksSideBar::eventFilter(QObject* watched, QEvent* event)
{
    if (watched == parentWidget() && event->type() == QEvent::Resize)
        setGeometry(0, 0, width(), parentWidget()->height());
    return UserControl::eventFilter(watched, event);
}

void TasksSideBar::Resize()
{
    zqfrax->Move(0, 0, ScaleWidth(), ScaleHeight());
}

// Lines ----------------------------------------------------------------------------------------

void TasksSideBar::LoadLine(int k)
{
    auto* bullet = static_cast<ZqLabel*>(LoadControlArrayElement(mBullets[0], static_cast<short>(k)));
    auto* info = static_cast<ZqLabel*>(LoadControlArrayElement(mInfos[0], static_cast<short>(k)));
    mBullets.append(bullet);
    mInfos.append(info);
    connect(info, qOverload<short>(&ZqLabel::Click), this, GuardedSlot(this, [this, info] { InfoClicked(info); }));
}

void TasksSideBar::UnloadFrom(int k)
{
    for (int i = static_cast<int>(mInfos.size()) - 1; i >= std::max(k, 1); --i) {
        UnloadControlArrayElement(mBullets[i]);
        UnloadControlArrayElement(mInfos[i]);
        mBullets.removeAt(i);
        mInfos.removeAt(i);
    }
}

void TasksSideBar::Clear()
{
    UnloadFrom(1);
    mBullets[0]->hide();
    mInfos[0]->hide();
}

void TasksSideBar::Refresh(int k, const Task& task)
{
    ZqLabel* info = mInfos[k];
    ZqLabel* bullet = mBullets[k];
    info->SetCaption(task.Caption());
    bullet->SetCaption(BulletText(task.BulletType()));
    switch (task.State()) {
    case tsMenuItem:
        info->SetForeColor(kMenuItemColour);
        info->SetLinkHoverForeColor(kMenuHoverColour);
        info->SetLinkClickForeColor(kMenuClickColour);
        info->Font()->SetBold(false);
        info->SetStyle(lsHyperlink);
        break;
    case tsActiveItem:
        info->SetForeColor(kActiveColour);
        info->Font()->SetBold(true);
        info->SetStyle(lsNormal);
        break;
    case tsInactive:
        info->SetForeColor(kInactiveColour);
        info->Font()->SetBold(false);
        info->SetStyle(lsNormal);
        break;
    default: break;  // a hidden line keeps its look
    }
    bullet->SetForeColor(info->ForeColor());
    info->AutoSizeControl();
}

void TasksSideBar::Redraw()
{
    QElapsedTimer clock;
    clock.start();
    ++mRedraws;
    const int marginX = PixelsX(4);
    const int step = mBullets[0]->Width() + marginX;
    const int right = ScaleWidth() - PixelsX(8);
    int y = PixelsY(12);
    int prevIndent = 0;
    const int count = mTasks ? mTasks->Count() : 0;
    for (int i = 1; i <= count; ++i) {
        const int k = i - 1;
        if (k == mInfos.size())
            LoadLine(k);
        Task* task = mTasks->Item(i);
        if (task->Changed()) {
            Refresh(k, *task);
            task->SetChanged(false);
        }
        ZqLabel* bullet = mBullets[k];
        ZqLabel* info = mInfos[k];
        const bool shown = task->State() != tsNotVisible;
        if (shown) {
            if (i > 1 && task->IndentLevel() == 0 && prevIndent > 0)
                y += PixelsY(12);  // a gap before each new top-level group
            const int x = task->IndentLevel() * step + marginX;
            bullet->Move(x, y);
            const int left = x + bullet->Width() + marginX;
            const int before = info->Width();
            info->Move(left, y, std::max(0, right - left));
            if (info->Width() != before)
                info->AutoSizeControl();  // wrapped to the new width before its height counts
            y += info->Height() + PixelsY(12);
            prevIndent = task->IndentLevel();
        }
        bullet->SetVisible(shown);
        info->SetVisible(shown);
    }
    UnloadFrom(count + 1);
    mLastRedrawNs = clock.nsecsElapsed();
}

void TasksSideBar::InfoClicked(ZqLabel* info)
{
    const int k = static_cast<int>(mInfos.indexOf(info));
    if (k < 0 || !mTasks)
        return;
    Task* task = mTasks->Item(k + 1);
    if (task->State() == tsMenuItem)
        emit TaskClick(task);
}

}  // namespace korvex
