// The pick list: the shared model over a grid in a frame, keyboard selection the host forwards,
// mouse tracking, and floating above the form while shown.
#include "korvex/controls/lists/ZqDropdownList.h"

#include "korvex/controls/display/ZqFrame.h"
#include "korvex/data/clsDatabase.h"
#include "korvex/platform/desktop/SystemInfo.h"
#include "korvex/platform/desktop/WindowStyles.h"
#include "korvex/platform/grid/Grid.h"
#include "korvex/platform/host/ControlRegistry.h"
#include "korvex/runtime/EntryGuard.h"
#include "korvex/runtime/Twips.h"


#include <algorithm>
#include <limits>

namespace korvex {

KORVEX_REGISTER_CONTROL(ZqDropdownList);

namespace {

enum KeyCodes : short { vkPageUp = 33, vkPageDown = 34, vkEnd = 35, vkHome = 36, vkUp = 38, vkDown = 40 };

// The grid's alignment numbering: horizontal times 3 plus vertical, top of the cell here.
enum : int { AlignLeftTop = 0, AlignCentreTop = 3, AlignRightTop = 6 };

}  // namespace

ZqDropdownList::ZqDropdownList(QWidget* parent)
    : ListControl(parent), mFrame(new ZqFrame(this)), mGrid(new Grid(mFrame->ContainerWidget()))
{
    mFrame->SetName(QStringLiteral("zqfraList"));
    mGrid->SetName(QStringLiteral("fgList"));
    // Grid row r is record r + 1 of the display copy: no header row.
    mGrid->SetFixedRows(0);
    mGrid->SetFixedCols(0);
    UseGrid(*mGrid);
    Model().OnSelectedByValue([this](int reason, const Variant&, const Variant&) {
        emit Click(static_cast<ZqDDListClickReasons>(reason));
    });
    Model().OnSelectedFromDisplay([this](int reason, const Variant&) {
        if (reason != 0)
            emit Click(static_cast<ZqDDListClickReasons>(reason));
    });
    connect(mGrid, qOverload<>(&Control::Click), this, GuardedSlot(this, [this] { GridClick(); }));
    setFocusPolicy(Qt::StrongFocus);
    LoadDeclaredDefaults();
}

ZqDropdownList::~ZqDropdownList() = default;

const PropertyList& ZqDropdownList::PersistedProperties() const
{
    using C = ZqDropdownList;
    static const PropertyList list =
        Declare<C>()
            .Property("AllowDeepRows", &C::AllowDeepRows, &C::SetAllowDeepRows, false)
            .Property("AllowNullSelection", &C::AllowNullSelection, &C::SetAllowNullSelection, false)
            .Property("AutoExtendCol", &C::AutoExtendCol, &C::SetAutoExtendCol, QString())
            .Stored("BoundColumn", &C::BoundColumn, [](C& c, const QString& v) { c.Model().SetBoundColumn(v); }, QString())
            .Stored("DataField", &C::DataField, [](C& c, const QString& v) { c.mDataField = v; }, QString())
            .Property("Enabled", &C::Enabled, &C::SetEnabled, true)
            .Property("ListSeparator", &C::ListSeparator, &C::SetListSeparator, QStringLiteral(";"))
            .Property("ReadOnly", &C::ReadOnly, &C::SetReadOnly, false)
            .Property("Columns", &C::Columns, &C::SetColumns, 1)
            .Stored("MaxItemsToDisplay", &C::MaxItemsToDisplay, [](C& c, int v) { c.mMaxItemsToDisplay = v; }, 25)
            .Property("RowSource", &C::PersistedRowSource, [](C& c, const QString& v) { c.SetRowSource(Variant(v)); },
                      QString())
            .Property("ColumnCaptions", &C::ColumnCaptions, &C::SetColumnCaptions, QString())
            .Property("ColumnCaptionsLGS", &C::ColumnCaptionsLGS, &C::SetColumnCaptionsLGS, QString())
            .Property("ColumnList", &C::ColumnList, &C::SetColumnList, QString())
            .Property("Font", &C::FontValue, [](C& c, const Variant& f) { c.LoadFont(f); }, AmbientFont);
    return list;
}

// --- Properties ------------------------------------------------------------------------------

void ZqDropdownList::SetAllowDeepRows(bool allow)
{
    Assign("AllowDeepRows", mAllowDeepRows, allow, [this] {
        mGrid->SetWordWrap(mAllowDeepRows);
        mGrid->SetAutoSizeMode(mAllowDeepRows ? gasRowHeight : gasColWidth);
    });
}

void ZqDropdownList::SetAutoExtendCol(const QString& key)
{
    Assign("AutoExtendCol", mAutoExtendCol, key);
    mGrid->SetExtendLastCol(mAutoExtendCol.isEmpty());
}

void ZqDropdownList::ApplyFont()
{
    const QFont font = SurfaceQFont();
    setFont(font);
    if (StdFont* f = Font())
        mFrame->SetFont(f);
    mGrid->setFont(font);
}

// --- Layout ----------------------------------------------------------------------------------

void ZqDropdownList::Resize()
{
    mFrame->setGeometry(rect());
    // The frame's inner area by its own measure: its client is placed when the frame hears of its
    // new size, which may come later.
    mGrid->setGeometry(0, 0, TwipsToPixelsX(mFrame->ScaleWidth()), TwipsToPixelsY(mFrame->ScaleHeight()));
}

QSize ZqDropdownList::sizeHint() const
{
    return mGrid->sizeHint();
}

QSize ZqDropdownList::minimumSizeHint() const
{
    return mGrid->minimumSizeHint();
}

void ZqDropdownList::focusInEvent(QFocusEvent* event)
{
    mHasFocus = true;
    ListControl::focusInEvent(event);
}

void ZqDropdownList::focusOutEvent(QFocusEvent* event)
{
    mHasFocus = false;
    ListControl::focusOutEvent(event);
}

// --- Floating --------------------------------------------------------------------------------

void ZqDropdownList::setVisible(bool visible)
{
    // Floats only above a form the user sees: under a hidden form it waits on the form.
    if (visible && !mFloating && UserMode() && parentWidget() && parentWidget()->isVisible() && !isVisible()) {
        Guarded(this, [this] { Float(); });
        return;
    }
    if (!visible && mFloating) {
        ListControl::setVisible(false);
        ReturnToForm();
        return;
    }
    ListControl::setVisible(visible);
}

// A tool window owned by the form's window, at the screen place the list has on the form: it
// stays above the form and may reach past its edges, and goes when the form goes.
void ZqDropdownList::Float()
{
    Model().BringDisplayInStep();
    SetWindowLong(this, GWL_EXSTYLE, GetWindowLong(this, GWL_EXSTYLE) | WS_EX_TOOLWINDOW);
    const QPoint screen = parentWidget()->mapToGlobal(pos());
    mFormLeft = Left();
    mFormTop = Top();
    mFloating = true;
    // The host's text box keeps the focus and forwards its keys: the list never takes it.
    setAttribute(Qt::WA_ShowWithoutActivating);
    setWindowFlags(Qt::Tool | Qt::FramelessWindowHint | Qt::WindowDoesNotAcceptFocus);
    move(screen);
    ListControl::setVisible(true);
    ApplyGridSettings();
}

void ZqDropdownList::ReturnToForm()
{
    mFloating = false;
    setWindowFlags(Qt::Widget);
    SetWindowLong(this, GWL_EXSTYLE, GetWindowLong(this, GWL_EXSTYLE) & ~WS_EX_TOOLWINDOW);
    move(TwipsToPixelsX(mFormLeft), TwipsToPixelsY(mFormTop));
}

// --- Grid settings ---------------------------------------------------------------------------

void ZqDropdownList::ApplyGridSettings()
{
    if (!UserMode())
        return;
    const bool redraw = mGrid->Redraw();
    mGrid->SetRedraw(false);
    const auto& store = Model().ItemStore();
    const int border = PixelsToTwipsX(SystemInfo::SystemMetric(SM_CXBORDER));
    int total = 0;
    for (int col = 0; col < mGrid->Cols(); ++col) {
        if (mGrid->ColHidden(col))
            continue;
        const QString key = mGrid->ColKey(col);
        if (!key.isEmpty() && store) {
            const int field = store->Store()->FieldIndexOf(key);
            if (field >= 0) {
                const int type = store->Store()->Field(field).Type;
                mGrid->SetColAlignment(col, IsNumericFieldType(type)    ? AlignRightTop
                                            : IsTextFieldTypeLong(type) ? AlignLeftTop
                                                                        : AlignCentreTop);
            }
        }
        if (key.compare(mAutoExtendCol, Qt::CaseInsensitive) != 0)
            total += mGrid->ColWidth(col) + border;
    }
    if (!mAutoExtendCol.isEmpty()) {
        total += PixelsToTwipsX(SystemInfo::SystemMetric(SM_CXVSCROLL));
        const int col = mGrid->ColIndex(mAutoExtendCol);
        const int width = PixelsToTwipsX(mGrid->width()) - total;
        if (col >= 0 && width >= 0 && mGrid->ColWidth(col) != width)
            mGrid->SetColWidth(col, width);
    }
    if (mAllowDeepRows && mGrid->Cols() > 0) {
        const int mode = mGrid->AutoSizeMode();
        mGrid->SetAutoSizeMode(gasRowHeight);
        mGrid->AutoSize(0, mGrid->Cols() - 1);
        mGrid->SetAutoSizeMode(mode);
    }
    mGrid->SetRedraw(redraw);
}

// --- Mouse and grid notices ------------------------------------------------------------------

void ZqDropdownList::GridClick()
{
    if (UserMayChange())
        Model().SelectFromDisplay(ddlcrChangedByUser_Mouse);
}

// --- Keyboard --------------------------------------------------------------------------------

void ZqDropdownList::KeyDown(short& KeyCode, short Shift)
{
    // A list the user may only look at keeps its selection, whatever keys reach it.
    if (!UserMayChange())
        return;
    const auto& display = Model().DisplayCopy();
    int step = 0;
    bool moved = false;
    if (Shift == 0) {
        switch (KeyCode) {
        case vkUp: step = -1; break;
        case vkDown: step = 1; break;
        case vkPageUp: step = mGrid->TopRow() - mGrid->BottomRow() + 1; break;
        case vkPageDown: step = mGrid->BottomRow() - mGrid->TopRow() - 1; break;
        default: break;
        }
    } else if (Shift == vbCtrlMask && (KeyCode == vkEnd || KeyCode == vkHome) && display) {
        if (display->RecordCount() != 0) {
            KeyCode == vkEnd ? display->MoveLast() : display->MoveFirst();
            moved = true;
        }
    }
    if (step == 0 && !moved)
        return;
    const int first = mGrid->FixedRows();
    const int last = mGrid->Rows() - 1;
    if (display && last >= first) {
        int target = mGrid->Row();
        if (display->IsBOF() || display->IsEOF()) {
            target = step < 0 ? last : step > 0 ? first : target;
        } else if (target == first && step < 0) {
            target = KeyCode == mLastKeyDown ? target : last;  // a held key stops at the top
        } else if (target == last && step > 0) {
            target = KeyCode == mLastKeyDown ? target : first;
        } else {
            target = std::clamp(target + step, first, last);
        }
        if (target >= first) {
            mGrid->SetRow(target);
            if (display->AbsolutePosition() != target - first + 1)
                display->SetAbsolutePosition(target - first + 1);
            Model().SelectFromDisplay(ddlcrChangedByUser_Keybd);
            mGrid->ShowCell(target, mGrid->FixedCols());
        }
    }
    mLastKeyDown = KeyCode;
    KeyCode = 0;
}

void ZqDropdownList::KeyUp(short KeyCode, short /*Shift*/)
{
    if (KeyCode == mLastKeyDown)
        mLastKeyDown = 0;
}

// --- Find ------------------------------------------------------------------------------------

bool ZqDropdownList::Find(const QString& FindString)
{
    int bestRow = std::numeric_limits<int>::max();
    int bestCol = -1;
    for (int col = mGrid->FixedCols(); col < mGrid->Cols(); ++col) {
        if (mGrid->ColKey(col).isEmpty() || mGrid->ColHidden(col))
            continue;
        const int row = mGrid->FindRow(FindString, -1, col, false, false);
        if (row >= 0 && row < bestRow) {
            bestRow = row;
            bestCol = col;
        }
    }
    if (bestCol < 0) {
        mGrid->SetRow(-1);
        return false;
    }
    mGrid->SetRow(bestRow);
    mGrid->SetTopRow(bestRow);
    if (bestCol != mGrid->FixedCols()) {
        mGrid->SetColPosition(bestCol, mGrid->FixedCols());
        Model().MarkFirstVisibleStale();
    }
    Model().SelectFromDisplay(0);
    return true;
}

}  // namespace korvex
