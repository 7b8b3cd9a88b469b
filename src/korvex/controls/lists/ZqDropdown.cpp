// The multi-column combo: the closed part, the floating drop-down and its size and place on the
// screen, the hooks that close it, the keyboard and mouse rules, filtering while typing and
// sorting by the header.
#include "korvex/controls/lists/ZqDropdown.h"

#include "korvex/controls/display/ZqFrame.h"
#include "korvex/controls/display/ZqSimpleButton.h"
#include "korvex/controls/display/drawing/DrawingHelpers.h"
#include "korvex/controls/input/ZqText.h"
#include "korvex/controls/lists/ZqDropdown_Header.h"
#include "korvex/core/LibMsgBox.h"
#include "korvex/data/clsDatabase.h"
#include "korvex/localisation/LGS.h"
#include "korvex/localisation/clsCharTranslation.h"
#include "korvex/platform/ado/RecordsetStore.h"
#include "korvex/platform/desktop/ColorConversion.h"
#include "korvex/platform/desktop/SystemInfo.h"
#include "korvex/platform/desktop/ThreadHooks.h"
#include "korvex/platform/desktop/WindowStyles.h"
#include "korvex/platform/grid/Grid.h"
#include "korvex/platform/host/ControlRegistry.h"
#include "korvex/runtime/Conversions.h"
#include "korvex/runtime/EntryGuard.h"
#include "korvex/runtime/Error.h"
#include "korvex/runtime/Format.h"
#include "korvex/runtime/Twips.h"
#include "korvex/runtime/Windows1252.h"

#include <QAbstractItemView>
#include <QAbstractScrollArea>
#include <QApplication>
#include <QFrame>
#include <QPointer>
#include <QStyle>
#include <QStyleOptionFrame>

#include <algorithm>
#include <utility>

namespace korvex {

KORVEX_REGISTER_CONTROL(ZqDropdown);

namespace {

// Pixels a measured cell text gets around it: the view's text margins and grid line, and room
// for the fraction of a pixel by which laid-out text may exceed its whole-pixel advance.
constexpr int CellPadding = 10;
// Pixels between the closed part's edge and its text.
constexpr int TextIndent = 2;
// Rows read to size each column: about this many, spread evenly, however long the list.
constexpr int MeasuredRows = 20;

// A field name as filter and sort texts take it: in brackets unless it is a plain name.
QString FieldTerm(const QString& key)
{
    const bool plain = !key.isEmpty() && !key.front().isDigit() &&
                       std::all_of(key.begin(), key.end(), [](QChar c) { return c.isLetterOrNumber() || c == u'_'; });
    return plain ? key : QLatin1Char('[') + key + QLatin1Char(']');
}

bool HasWideCharacters(const QString& text)
{
    return std::any_of(text.begin(), text.end(), [](QChar c) { return c.unicode() > 127; });
}

}  // namespace

ZqDropdown::ZqDropdown(QWidget* parent)
    : ListControl(parent), mFrame(new ZqFrame(this)), mHeader(new ZqDropdown_Header(mFrame->ContainerWidget())),
      mFilterBox(new ZqText(mFrame->ContainerWidget())), mGrid(new Grid(mFrame->ContainerWidget())),
      mButton(new ZqSimpleButton(this))
{
    mFrame->SetName(QStringLiteral("zqfraDropdown"));
    mHeader->SetName(QStringLiteral("ZqDDHeader"));
    mFilterBox->SetName(QStringLiteral("zqtxtFilter"));
    mGrid->SetName(QStringLiteral("fgDropdown"));
    mButton->SetName(QStringLiteral("zqsbDrop"));

    // The drop-down is a window of its own, owned by the combo: above the form, free to reach
    // past its edges, gone with the combo.
    mFrame->SetBorderStyle(bsFlat);
    mFrame->setWindowFlags(Qt::Tool | Qt::FramelessWindowHint);
    mFrame->hide();
    mHeader->hide();
    mFilterBox->hide();
    // Grid row r is record r + 1 of the display copy: no header row, no frame of its own.
    mGrid->SetFixedRows(0);
    mGrid->SetFixedCols(0);
    if (auto* view = qobject_cast<QFrame*>(mGrid->View()))
        view->setFrameShape(QFrame::NoFrame);
    mGrid->View()->installEventFilter(this);
    UseGrid(*mGrid);
    Model().OnSelectedByValue([this](int reason, const Variant& oldValue, const Variant& newValue) {
        SelectedByValue(reason, oldValue, newValue);
    });
    Model().OnSelectedFromDisplay([this](int reason, const Variant& oldValue) { SelectedFromDisplay(reason, oldValue); });
    // A new display copy has the store's order, not the one the header chose.
    // An open drop-down keeps offering what the filter box asks for, sized for the new rows.
    Model().OnBound([this] {
        mHeader->SetSortedColIndex(-1);
        mCursorColumn = -1;
        if (mOpen) {
            ApplyTypedFilter();
            SizeAndPlace();
        }
    });
    connect(mGrid, qOverload<>(&Control::Click), this, GuardedSlot(this, [this] { ListClicked(); }));
    connect(mFilterBox, &ZqText::Change, this, GuardedSlot(this, [this] { ApplyTypedFilter(); }));
    connect(mHeader, &ZqDropdown_Header::ColumnChosen, this, GuardedSlot(this, [this](short index) { HeaderChosen(index); }));

    mButton->SetButtonStyle(sbsComboBoxButton);
    mButton->setFocusPolicy(Qt::NoFocus);
    connect(mButton, &Control::MouseDown, this, [this](short& button, short&, float&, float&) {
        Guarded(this, [&] {
            mPressOnButton = button == vbLeftButton;
            if (mPressOnButton)
                DropdownShow();
        });
    });
    // Released over the list after a press on the button: the button lets go of the mouse.
    connect(mButton, &Control::MouseUp, this, [this](short& button, short&, float& x, float& y) {
        Guarded(this, [&] {
            const QPoint at = mButton->mapToGlobal(QPoint(TwipsToPixelsX(x), TwipsToPixelsY(y)));
            if (std::exchange(mPressOnButton, false) && button == vbLeftButton && mOpen && mFrame->geometry().contains(at))
                mButton->ReleaseMouseCapture();
        });
    });
    setFocusPolicy(Qt::StrongFocus);
    LoadDeclaredDefaults();
}

ZqDropdown::~ZqDropdown()
{
    RemoveHooks();
    mFrame->hide();
}

const PropertyList& ZqDropdown::PersistedProperties() const
{
    using C = ZqDropdown;
    static const PropertyList list =
        Declare<C>()
            .Property("AllowFilter", &C::AllowFilter, &C::SetAllowFilter, false)
            .Property("AllowNullSelection", &C::AllowNullSelection, &C::SetAllowNullSelection, false)
            .Property("AllowSorting", &C::AllowSorting, &C::SetAllowSorting, false)
            .Stored("BoundColumn", &C::BoundColumn, [](C& c, const QString& v) { c.Model().SetBoundColumn(v); }, QString())
            .Property("ButtonStyle", &C::ButtonStyle, &C::SetButtonStyle, int{ddbsButtonRightAligned})
            .Stored("DataField", &C::DataField, [](C& c, const QString& v) { c.mDataField = v; }, QString())
            .Property("Enabled", &C::Enabled, &C::SetEnabled, true)
            .Property("ListSeparator", &C::ListSeparator, &C::SetListSeparator, QStringLiteral(";"))
            .Property("ReadOnly", &C::ReadOnly, &C::SetReadOnly, false)
            .Property("Columns", &C::Columns, &C::SetColumns, 1)
            .Property("MaxItemsToDisplay", &C::MaxItemsToDisplay, &C::SetMaxItemsToDisplay, 25)
            .Property("RowSource", &C::PersistedRowSource, [](C& c, const QString& v) { c.SetRowSource(Variant(v)); },
                      QString())
            .Property("ColumnCaptions", &C::ColumnCaptions, &C::SetColumnCaptions, QString())
            .Property("ColumnCaptionsLGS", &C::ColumnCaptionsLGS, &C::SetColumnCaptionsLGS, QString())
            .Property("ColumnList", &C::ColumnList, &C::SetColumnList, QString())
            .Property("FilterMode", &C::FilterMode, &C::SetFilterMode, int{ddfmStartsWith})
            .Property("Font", &C::FontValue, [](C& c, const Variant& f) { c.LoadFont(f); }, AmbientFont);
    return list;
}

// --- Properties ------------------------------------------------------------------------------

void ZqDropdown::SetAllowFilter(bool allow)
{
    mAllowFilter = allow;
    ShowFilterBox();
    if (mAllowFilter)
        mFilterBox->SetDefaultText(LGS(QStringLiteral("zqdd0002"), QStringLiteral("Type to filter results")));
    PropertyChanged("AllowFilter");
}

void ZqDropdown::SetAllowSorting(bool allow)
{
    Assign("AllowSorting", mAllowSorting, allow, [this] {
        mHeader->setVisible(mAllowSorting);
        if (mOpen)
            SizeAndPlace();
    });
}

void ZqDropdown::SetButtonStyle(int style)
{
    RequireValid(style >= ddbsButtonNotVisible && style <= ddbsButtonLeftAligned, "ButtonStyle");
    Assign("ButtonStyle", mButtonStyle, style, [this] {
        mButton->setVisible(mButtonStyle != ddbsButtonNotVisible);
        Resize();
        update();
    });
}

void ZqDropdown::SetFilterMode(int mode)
{
    RequireValid(mode == ddfmStartsWith || mode == ddfmEndsWith, "FilterMode");
    Assign("FilterMode", mFilterMode, mode);
}

void ZqDropdown::SetEnabled(bool enabled)
{
    ListControl::SetEnabled(enabled);
    mButton->SetEnabled(enabled);
}

void ZqDropdown::EnabledChanged()
{
    if (!Enabled() && mOpen)
        DropdownHide();
    update();
}

void ZqDropdown::ReadOnlyChanged()
{
    ShowFilterBox();
    Resize();
    update();
}

void ZqDropdown::ApplyFont()
{
    const QFont font = SurfaceQFont();
    setFont(font);
    if (StdFont* f = Font()) {
        mHeader->SetFont(f);
        mFrame->SetFont(f);
    }
    mGrid->setFont(font);
    update();
}

Variant ZqDropdown::SelectableItemsFilter() const
{
    return Model().SelectableItemsFilter();
}

void ZqDropdown::SetSelectableItemsFilter(const Variant& filter)
{
    Model().SetSelectableItemsFilter(filter);
}

void ZqDropdown::SetColumnCaptions(const QString& captions)
{
    ListControl::SetColumnCaptions(captions);
    if (!captions.isEmpty())
        mHeader->SetColumns(captions.split(ListSeparator()));
}

void ZqDropdown::SetColumnCaptionsLGS(const QString& ids)
{
    ListControl::SetColumnCaptionsLGS(ids);
    // Read from a form file after ColumnCaptions: an empty list of identifiers leaves those.
    if (ids.isEmpty())
        return;
    QStringList captions;
    for (const QString& id : ids.split(ListSeparator()))
        captions << LGS(id.trimmed());
    mHeader->SetColumns(captions);
}

void ZqDropdown::SetSort(const QString& sort)
{
    if (mAllowSorting)
        throw Error(ObjectErrorBase, Model().ErrorSource(".Sort [PropertyLet]"),
                    QStringLiteral("Sort may not be specified if AllowSorting is True."));
    ListControl::SetSort(sort);
    mHeader->SetSortedColIndex(-1);
    mCursorColumn = -1;
}

int ZqDropdown::CursorColumn() const
{
    if (mCursorColumn >= 0 && mCursorColumn < mGrid->Cols() && !mGrid->ColHidden(mCursorColumn))
        return mCursorColumn;
    return FirstVisibleColumn();
}

QStringList ZqDropdown::ShownKeys(QList<int>* cols) const
{
    QStringList keys;
    const int first = FirstVisibleColumn();
    for (int col = std::max(first, 0); first >= 0 && col < mGrid->Cols(); ++col) {
        if (mGrid->ColHidden(col))
            continue;
        keys << mGrid->ColKey(col);
        if (cols)
            cols->push_back(col);
    }
    return keys;
}

// --- The closed part -------------------------------------------------------------------------

// The closed part wears the frame of the form's text boxes, so that it reads as an input field.
int ZqDropdown::FrameWidth() const
{
    return style()->pixelMetric(QStyle::PM_DefaultFrameWidth, nullptr, this);
}

QRect ZqDropdown::TextArea() const
{
    const int frame = FrameWidth();
    QRect area = rect().adjusted(frame, frame, -frame, -frame);
    if (mButtonStyle == ddbsButtonRightAligned)
        area.setRight(mButton->x() - 1);
    else if (mButtonStyle == ddbsButtonLeftAligned)
        area.setLeft(mButton->x() + mButton->width());
    return area;
}

void ZqDropdown::Resize()
{
    const int frame = FrameWidth();
    const QRect inner = rect().adjusted(frame, frame, -frame, -frame);
    const int buttonWidth = std::max(0, std::min(inner.width(), SystemInfo::SystemMetric(SM_CXVSCROLL) + 2));
    if (mButtonStyle == ddbsButtonLeftAligned)
        mButton->setGeometry(inner.left(), inner.top(), buttonWidth, inner.height());
    else
        mButton->setGeometry(inner.right() + 1 - buttonWidth, inner.top(), buttonWidth, inner.height());
}

QString ZqDropdown::SegmentText(int col) const
{
    const Variant value = ColValue(QString::number(col));
    const QString format = Model().FormatOfColumn(col);
    return format.isEmpty() || value.IsNull() ? NullToString(value) : Format(value, format);
}

void ZqDropdown::Paint(QPainter& painter)
{
    const QRect area = TextArea();
    const bool highlighted = hasFocus() && !mOpen;
    QStyleOptionFrame frame;
    frame.initFrom(this);
    frame.rect = rect();
    frame.lineWidth = FrameWidth();
    frame.midLineWidth = 0;
    frame.state |= QStyle::State_Sunken;
    frame.palette.setColor(QPalette::Base, ToQColor(vbWindowBackground));
    style()->drawPrimitive(QStyle::PE_PanelLineEdit, &frame, &painter, this);
    painter.fillRect(area, ToQColor(highlighted ? vbHighlight : vbWindowBackground));
    painter.setPen(ToQColor(highlighted ? vbHighlightText : Enabled() ? vbWindowText : vbGrayText));
    const int first = FirstVisibleColumn();
    if (!BoundValue().IsNull() && first >= 0) {
        const int firstWidth = TwipsToPixelsX(mGrid->ColWidth(first));
        const QRect firstRect(area.left() + TextIndent, area.top(), firstWidth - TextIndent, area.height());
        painter.drawText(firstRect, Qt::AlignLeft | Qt::AlignVCenter | Qt::TextSingleLine, SegmentText(first));
        // The bound column when it is shown and is not the first; else the next shown column.
        int second = Model().BoundColumnPosition();
        if (second < 0 || second >= mGrid->Cols() || second == first || mGrid->ColHidden(second)) {
            second = -1;
            for (int col = first + 1; col < mGrid->Cols() && second < 0; ++col)
                second = mGrid->ColHidden(col) ? -1 : col;
        }
        const int start = area.left() + firstWidth;
        const bool room = mButtonStyle != ddbsButtonRightAligned || start <= area.right();
        if (second >= 0 && room)
            painter.drawText(QRect(start + TextIndent, area.top(), area.right() + 1 - start - TextIndent, area.height()),
                             Qt::AlignLeft | Qt::AlignVCenter | Qt::TextSingleLine, SegmentText(second));
    }
    if (highlighted)
        DrawFocusRect(painter, area.left(), area.top(), area.right() + 1, area.bottom() + 1);
}

QSize ZqDropdown::sizeHint() const
{
    return {140, fontMetrics().height() + 2 * FrameWidth() + 6};
}

QSize ZqDropdown::minimumSizeHint() const
{
    return {SystemInfo::SystemMetric(SM_CXVSCROLL) + 2 * FrameWidth() + 16, fontMetrics().height() + 2 * FrameWidth() + 2};
}

void ZqDropdown::focusInEvent(QFocusEvent* event)
{
    ListControl::focusInEvent(event);
    update();
}

void ZqDropdown::focusOutEvent(QFocusEvent* event)
{
    ListControl::focusOutEvent(event);
    update();
}

void ZqDropdown::hideEvent(QHideEvent* event)
{
    ListControl::hideEvent(event);
    if (mOpen)
        Guarded(this, [this] { DropdownHide(); });
}

void ZqDropdown::mousePressEvent(QMouseEvent* event)
{
    Guarded(this, [&] {
        if (event->button() != Qt::LeftButton)
            return;
        if (QWidget::mouseGrabber() == this)
            releaseMouse();
        DropdownShow();
    });
}

void ZqDropdown::keyPressEvent(QKeyEvent* event)
{
    Guarded(this, [&] {
        const int key = event->key();
        if (key == Qt::Key_Escape) {
            if (mOpen)
                DropdownHide();
            else
                event->ignore();
            return;
        }
        if (mOpen || !UserMayChange()) {
            event->ignore();
            return;
        }
        switch (key) {
        case Qt::Key_Up:
        case Qt::Key_Down:
        case Qt::Key_PageUp:
        case Qt::Key_PageDown: DropdownShow(); return;
        case Qt::Key_Home: SelectRowByStep(-mGrid->Rows()); return;
        case Qt::Key_End: SelectRowByStep(mGrid->Rows()); return;
        case Qt::Key_Backspace:
        case Qt::Key_Delete:
            if (AllowNullSelection())
                Model().SetGridFromValue(Null, ddcrChangedByUser);
            return;
        default: break;
        }
        // A printable character opens the drop-down and goes on to the filter box or the list.
        const QString text = event->text();
        if (text.isEmpty() || text[0].unicode() < 32 || text[0].unicode() == 127) {
            event->ignore();
            return;
        }
        DropdownShow();
        if (!mOpen)
            return;
        if (mAllowFilter) {
            TypeIntoFilter(text);
        } else {
            QKeyEvent again(QEvent::KeyPress, key, event->modifiers(), text);
            QCoreApplication::sendEvent(mGrid->View(), &again);
        }
    });
}

void ZqDropdown::SelectRowByStep(int step)
{
    Model().BringDisplayInStep();
    const int first = mGrid->FixedRows();
    const int last = mGrid->Rows() - 1;
    if (last < first)
        return;
    mGrid->SetRow(std::clamp(mGrid->Row() + step, first, last));
    Model().SelectFromDisplay(ddcrChangedByUser);
}

// --- Opening and closing ---------------------------------------------------------------------

void ZqDropdown::DropdownShow()
{
    if (!Enabled() || mButtonStyle == ddbsButtonNotVisible)
        return;
    if (!mOpen) {
        mOpen = true;
        try {
            SizeAndPlace();
            SetWindowLong(mFrame, GWL_EXSTYLE, GetWindowLong(mFrame, GWL_EXSTYLE) | WS_EX_TOOLWINDOW);
            mFrame->show();
            mFrame->raise();
            // In step once the list has its size, so that the selected row scrolls into its view.
            Model().BringDisplayInStep();
        } catch (...) {
            mOpen = false;  // not half open: no window, no hooks
            mFrame->hide();
            throw;
        }
        mFrame->activateWindow();
        mGrid->View()->setFocus(Qt::OtherFocusReason);
        InstallHooks();
    }
    update();
}

void ZqDropdown::DropdownHide()
{
    const bool hadFocus = FocusIsOurs();
    if (mOpen) {
        RemoveHooks();
        mHeader->SetMenuVisible(false);
        mFrame->hide();
        SetWindowLong(mFrame, GWL_EXSTYLE, GetWindowLong(mFrame, GWL_EXSTYLE) & ~WS_EX_TOOLWINDOW);
        mFilterBox->SetText(QString());
        mOpen = false;
    }
    if (hadFocus && isVisible()) {
        window()->activateWindow();
        setFocus(Qt::OtherFocusReason);
    }
    update();
}

bool ZqDropdown::FocusIsOurs() const
{
    QWidget* focus = QApplication::focusWidget();
    return focus && (focus == this || isAncestorOf(focus) || focus == mFrame || mFrame->isAncestorOf(focus));
}

int ZqDropdown::MsgBoxFromDropDown(const QString& Prompt, int Buttons, const QString& Title)
{
    // When another combo's drop-down owns the hooks, they go back to it afterwards: taking them
    // would leave that drop-down open with nothing to close it.
    const QPointer<ZqDropdown> owner = qobject_cast<ZqDropdown*>(ThreadHooks::Owner());
    ThreadHooks::Remove();
    const QPointer<ZqDropdown> alive(this);
    const auto reinstall = [&] {
        if (owner && owner != this && owner->mOpen)
            owner->InstallHooks();
        else if (alive)  // the box's own event loop may have closed the form
            InstallHooks();
    };
    QString prompt = Prompt;
    int result = 0;
    try {
        result = LibMsgBox(prompt, Buttons, Title);
    } catch (...) {
        reinstall();
        throw;
    }
    reinstall();
    return result;
}

// --- Size and place --------------------------------------------------------------------------

// Every shown column gets the width of its widest text among about twenty rows spread over the
// list, never all of them: a million rows cost what twenty do.
void ZqDropdown::MeasureColumns(int& firstVisible, int& lastVisible, int& total)
{
    firstVisible = -1;
    lastVisible = -1;
    total = 0;
    const int rows = mGrid->Rows();
    const int step = (rows - 1) / MeasuredRows + 1;
    const QFontMetrics metrics(mGrid->View()->font());
    for (int col = 0; col < mGrid->Cols(); ++col) {
        if (mGrid->ColHidden(col))
            continue;
        if (firstVisible < 0)
            firstVisible = col;
        lastVisible = col;
        int widest = 0;
        for (int row = mGrid->FixedRows(); row < rows; row += step)
            widest = std::max(widest, metrics.horizontalAdvance(NullToString(mGrid->Cell(gcsTextDisplay, row, col))));
        mGrid->SetColWidth(col, PixelsToTwipsX(widest + CellPadding));
        total += TwipsToPixelsX(mGrid->ColWidth(col));  // what the view gave it: it has a least width
    }
}

void ZqDropdown::SizeAndPlace()
{
    const QRect r(mapToGlobal(QPoint(0, 0)), size());
    const QRect w = SystemInfo::WorkArea();
    const int rBottom = r.y() + r.height();
    const int rRight = r.x() + r.width();
    const int roomBelow = w.y() + w.height() - rBottom;
    const int roomAbove = r.y() - w.y();
    const int roomRight = w.x() + w.width() - r.x();
    const int roomLeft = rRight - w.x();
    const int borderY = SystemInfo::SystemMetric(SM_CYBORDER);
    const int borderX = SystemInfo::SystemMetric(SM_CXBORDER);

    const int rows = ListCount();
    const int maxItems = std::max(1, MaxItemsToDisplay());
    int rowHeight = 0;
    int height = 0;
    if (rows > 0) {
        rowHeight = std::max(1, TwipsToPixelsY(mGrid->RowHeight(mGrid->FixedRows())));
    } else {
        const int least = TwipsToPixelsY(mGrid->RowHeightMin());
        rowHeight = least > 0 ? least : QFontMetrics(mGrid->View()->font()).height() + 3;
    }
    if (rows == 0) {
        height = rowHeight;  // one empty row, not a drop-down of nothing
        mVisibleRows = 1;
    } else if (rows < maxItems) {
        height = rows * rowHeight;
        mVisibleRows = rows;
    } else {
        height = maxItems * rowHeight + 1;
        mVisibleRows = maxItems;
    }
    const int extras = (mAllowSorting ? mHeader->sizeHint().height() : 0) + (FilterBoxShown() ? mFilterBox->sizeHint().height() : 0);
    height += 2 * borderY + extras;
    const int limit = std::max(roomBelow, roomAbove);
    if (height > limit) {
        height = limit;
        mVisibleRows = std::max(0, limit - 2 * borderY - extras) / rowHeight;
    }

    int firstVisible = -1;
    int lastVisible = -1;
    int total = 0;
    MeasureColumns(firstVisible, lastVisible, total);
    const int scrollBar = rows > mVisibleRows ? SystemInfo::SystemMetric(SM_CXVSCROLL) : 0;
    int width = total + 2 * borderX + scrollBar;
    // Never narrower than the columns: a last column cut by a few pixels would elide its texts.
    if (width < r.width() + 6)
        width = std::max(width, r.width());

    int top = 0;
    if (height <= roomBelow) {
        top = rBottom;
    } else if (height <= roomAbove) {
        top = r.y() - height;
    } else if (roomBelow > roomAbove) {
        top = rBottom;
        height = roomBelow;
    } else {
        height = roomAbove;
        top = r.y() - height;
    }
    int left = 0;
    bool cutByScreen = false;
    if (width <= roomRight) {
        left = r.x();
    } else if (width <= roomLeft) {
        left = rRight - width;
    } else if (roomRight > roomLeft) {
        left = r.x();
        width = roomRight;
        cutByScreen = true;
    } else {
        width = roomLeft;
        left = rRight - width;
        cutByScreen = true;
    }
    // The last column takes up the difference to the drop-down's width (the control's width
    // when that was used), unless the screen cut the list short: that list scrolls sideways.
    // One that fits never shows the sideways bar, which would cover its last row.
    const int spare = width - 2 * borderX - scrollBar - total;
    if (!cutByScreen && spare != 0 && lastVisible >= 0)
        mGrid->SetColWidth(lastVisible, std::max(0, mGrid->ColWidth(lastVisible) + PixelsToTwipsX(spare)));
    if (auto* view = qobject_cast<QAbstractScrollArea*>(mGrid->View()))
        view->setHorizontalScrollBarPolicy(cutByScreen ? Qt::ScrollBarAsNeeded : Qt::ScrollBarAlwaysOff);
    mFrame->setGeometry(left, top, width, height);
    LayOutDropDown(width - 2 * borderX, height - 2 * borderY);
}

// From the top: the header, the filter box, and the list in what is left.
void ZqDropdown::LayOutDropDown(int width, int height)
{
    int y = 0;
    if (mAllowSorting) {
        const int h = mHeader->sizeHint().height();
        mHeader->setGeometry(0, y, width, h);
        y += h;
    }
    if (FilterBoxShown()) {
        const int h = mFilterBox->sizeHint().height();
        mFilterBox->setGeometry(0, y, width, h);
        y += h;
    }
    mGrid->setGeometry(0, y, width, std::max(0, height - y));
}

void ZqDropdown::ShowFilterBox()
{
    mFilterBox->setVisible(FilterBoxShown());
    if (mOpen)
        SizeAndPlace();
}

// --- Hooks -----------------------------------------------------------------------------------

void ZqDropdown::InstallHooks()
{
    ThreadHooks::Install(
        this, [this](QWidget* target, QMouseEvent* event) { return MouseHook(target, event); },
        [this](QWidget* target, QKeyEvent* event) { return KeyboardHook(target, event); },
        // A window's shortcut for these keys must not take them from the drop-down.
        [this](QKeyEvent* event) {
            const int key = event->key();
            return mOpen && FocusTop() == mFrame &&
                   (key == Qt::Key_Escape || key == Qt::Key_Return || key == Qt::Key_Enter || key == Qt::Key_Tab ||
                    key == Qt::Key_Backtab);
        });
}

void ZqDropdown::RemoveHooks()
{
    if (ThreadHooks::Owner() == this)
        ThreadHooks::Remove();
}

QWidget* ZqDropdown::TopOf(QWidget* widget) const
{
    if (!widget)
        return nullptr;
    return mHeader->Owns(widget) ? mFrame : widget->window();
}

// Activating the drop-down's window takes a moment: until the focus arrives in the list it is
// still on the combo, and counts as inside. No focus at all counts as inside too.
QWidget* ZqDropdown::FocusTop() const
{
    QWidget* focus = QApplication::focusWidget();
    return !focus || (mOpen && focus == this) ? mFrame : TopOf(focus);
}

// With the focus in the drop-down, a press in it goes on and any other press closes it and is
// used up; with the focus in another window, a press there closes it and goes on.
bool ZqDropdown::MouseHook(QWidget* target, QMouseEvent* event)
{
    // The first press of a double click decided already; the second is no new press.
    if (!mOpen || event->type() == QEvent::MouseButtonDblClick)
        return false;
    QWidget* focusTop = FocusTop();
    if (focusTop != mFrame) {
        DropdownHide();
        return false;
    }
    if (target == mFrame || mFrame->isAncestorOf(target) || TopOf(target) == focusTop) {
        if (mHeader->MenuVisible() && (event->type() == QEvent::NonClientAreaMouseButtonPress || !mHeader->Owns(target)))
            mHeader->SetMenuVisible(false);
        return false;
    }
    DropdownHide();
    return true;
}

bool ZqDropdown::KeyboardHook(QWidget* target, QKeyEvent* event)
{
    if (!mOpen)
        return false;
    QWidget* focus = QApplication::focusWidget();
    if (FocusTop() != mFrame) {
        DropdownHide();
        return false;
    }
    // Only a fresh key-down closes: a held key repeats as it would unhooked.
    switch (event->isAutoRepeat() ? 0 : event->key()) {
    case Qt::Key_Escape:
    case Qt::Key_Return:
    case Qt::Key_Enter:
        if (mHeader->MenuVisible()) {
            mHeader->SetMenuVisible(false);
        } else if (!mClosing) {
            const QPointer<ZqDropdown> alive(this);
            mClosing = true;
            try {
                if (event->key() != Qt::Key_Escape && UserMayChange())
                    Model().SelectFromDisplay(ddcrChangedByUser);
                if (alive)  // a handler of the events may have closed the form
                    DropdownHide();
            } catch (...) {
                if (alive)
                    mClosing = false;
                throw;
            }
            if (alive)
                mClosing = false;
        }
        return true;
    case Qt::Key_Tab:
    case Qt::Key_Backtab: {
        const bool ours = FocusIsOurs();
        const QPointer<ZqDropdown> alive(this);
        if (UserMayChange())
            Model().SelectFromDisplay(ddcrChangedByUser);
        if (!alive)
            return true;
        DropdownHide();
        // The key would reach the list it was meant for, hidden now: the focus moves on from
        // the combo instead.
        if (ours)
            focusNextPrevChild(event->key() == Qt::Key_Tab && !(event->modifiers() & Qt::ShiftModifier));
        return true;
    }
    default:
        break;
    }
    // A key that came before the focus: the list gets it, as it would a moment later.
    if (target == this && focus == this) {
        QKeyEvent forwarded(event->type(), event->key(), event->modifiers(), event->text(), event->isAutoRepeat(),
                            static_cast<ushort>(event->count()));
        QCoreApplication::sendEvent(mGrid->View(), &forwarded);
        return true;
    }
    return false;
}

// --- The list --------------------------------------------------------------------------------

bool ZqDropdown::eventFilter(QObject* watched, QEvent* event)
{
    if (watched == mGrid->View() && event->type() == QEvent::KeyPress)
        return Guarded(this, [&] { return ListKey(static_cast<QKeyEvent*>(event)); }, false);
    // The view makes its first row current when it takes the focus without a current row; with
    // nothing selected nothing is highlighted, so that Enter or Tab picks nothing.
    if (watched == mGrid->View() && event->type() == QEvent::FocusIn && mGrid->Row() < 0) {
        if (auto* view = qobject_cast<QAbstractItemView*>(mGrid->View()))
            view->setCurrentIndex(QModelIndex());
    }
    return ListControl::eventFilter(watched, event);
}

bool ZqDropdown::ListKey(QKeyEvent* event)
{
    const int key = event->key();
    const auto modifiers = event->modifiers() & (Qt::ShiftModifier | Qt::ControlModifier | Qt::AltModifier);
    if (modifiers == Qt::AltModifier && (key == Qt::Key_Up || key == Qt::Key_Down)) {
        const QPointer<ZqDropdown> alive(this);
        if (UserMayChange())
            Model().SelectFromDisplay(ddcrChangedByUser);
        if (alive)
            DropdownHide();
        return true;
    }
    if ((key == Qt::Key_Backspace || key == Qt::Key_Delete) && AllowNullSelection() && mFilterBox->Text().isEmpty()) {
        if (UserMayChange()) {
            mGrid->SetRow(-1);
            Model().SelectFromDisplay(ddcrChangedByUser);
        }
        return true;
    }
    if (!UserMayChange())
        return true;
    const QString text = event->text();
    if (mAllowFilter && !text.isEmpty() && (text[0].unicode() >= 32 || text[0].unicode() == 8) && text[0].unicode() != 127) {
        TypeIntoFilter(text);
        return true;
    }
    return false;
}

void ZqDropdown::ListClicked()
{
    if (!UserMayChange())
        return;
    const QPointer<ZqDropdown> alive(this);
    Model().SelectFromDisplay(ddcrChangedByUser);
    if (alive)
        DropdownHide();
}

// Characters of the Windows code page go through the box's own typing; others are appended.
void ZqDropdown::TypeIntoFilter(const QString& text)
{
    for (const QChar ch : text) {
        if (ch.unicode() == 8) {
            mFilterBox->KeyPress(8);
            continue;
        }
        if (ch.unicode() < 32)
            continue;
        const QByteArray bytes = ToWindows1252(QString(ch));
        if (bytes.size() == 1 && (bytes[0] != '?' || ch == QLatin1Char('?')))
            mFilterBox->KeyPress(static_cast<short>(static_cast<unsigned char>(bytes[0])));
        else
            mFilterBox->SetText(mFilterBox->Text() + ch);
    }
}

std::optional<QString> ZqDropdown::TypedFilter(const QString& typed, int mode, const QStringList& keys, const QString& filter,
                                               const std::function<QString(const QString&)>& translate)
{
    QString text = typed;
    text.replace(QLatin1Char('\''), QLatin1String("''"));
    QString second;
    if (HasWideCharacters(text) && translate) {
        second = translate(text);
        if (second.compare(text, Qt::CaseInsensitive) == 0)
            second.clear();
    }
    if (keys.isEmpty())
        return QString();
    QString bare = text;
    bare.remove(QLatin1Char('%'));
    bare.remove(QLatin1Char('*'));
    if (bare.isEmpty())
        return std::nullopt;
    const auto term = [&](const QString& key, const QString& t) {
        QString made = FieldTerm(key) + QLatin1String(" Like ") +
                       (mode == ddfmEndsWith ? QLatin1String("'%") + t + QLatin1Char('\'') : QLatin1Char('\'') + t + QLatin1String("%'"));
        if (!filter.isEmpty())
            made = QLatin1Char('(') + filter + QLatin1String(" AND ") + made + QLatin1Char(')');
        return made;
    };
    QStringList terms;
    for (const QString& key : keys) {
        terms << term(key, text);
        if (!second.isEmpty())
            terms << term(key, second);
    }
    return terms.join(QLatin1String(" OR "));
}

void ZqDropdown::ApplyTypedFilter()
{
    const auto& display = Model().DisplayCopy();
    if (!Model().ItemStore() || !display)
        return;
    const QString typed = mFilterBox->Text();
    // Without typed text the list offers what it offered before: the store's filter and the
    // selectable items.
    QString filter = Model().DisplayBaseFilter();
    if (!typed.isEmpty()) {
        const QStringList keys = ShownKeys();
        // An index on each searched field answers the Like terms without a scan.
        for (const QString& key : keys) {
            const int field = display->Store()->FieldIndexOf(key);
            if (field >= 0 && !display->FieldOptimized(field))
                display->SetFieldOptimized(field, true);
        }
        const auto& translation = clsCharTranslation::Current();
        const auto made = TypedFilter(typed, mFilterMode, keys, Model().DisplayBaseFilter(), [&](const QString& text) {
            return translation ? translation->CharTranslateStr(text, true) : text;
        });
        if (!made)
            return;
        filter = *made;
    }
    Model().ReplaceDisplayFilter(filter);
}

QString ZqDropdown::HeaderSort(const QStringList& keys, int index)
{
    if (index < 0 || index >= keys.size())
        return {};
    QString sort = FieldTerm(keys[index]);
    int more = 0;
    for (int i = 0; i < keys.size() && more < 2; ++i) {
        if (i == index)
            continue;
        sort += QLatin1String(", ") + FieldTerm(keys[i]);
        ++more;
    }
    return sort;
}

void ZqDropdown::HeaderChosen(short index)
{
    if (!Model().ItemStore()) {
        mHeader->SetSortedColIndex(index);
        return;
    }
    QList<int> cols;
    const QStringList keys = ShownKeys(&cols);
    if (index < 0 || index >= keys.size())
        return;
    if (!Model().ReplaceDisplaySort(HeaderSort(keys, index)))
        return;
    mHeader->SetSortedColIndex(index);
    mCursorColumn = cols[index];
    if (mGrid->Row() >= mGrid->FixedRows())
        mGrid->SetCol(mCursorColumn);
}

// --- Selection events ------------------------------------------------------------------------

void ZqDropdown::SelectedByValue(int reason, const Variant& oldValue, const Variant& newValue)
{
    update();
    RaiseSelectionEvents(reason, oldValue, newValue);
}

void ZqDropdown::SelectedFromDisplay(int reason, const Variant& oldValue)
{
    const QPointer<ZqDropdown> alive(this);
    RaiseSelectionEvents(reason, oldValue, BoundValue());
    if (alive)
        update();
}

void ZqDropdown::RaiseSelectionEvents(int reason, const Variant& oldValue, const Variant& newValue)
{
    // A Click handler may close the form and with it this control.
    const QPointer<ZqDropdown> alive(this);
    emit Click(static_cast<ZqDropdownClickReasons>(reason));
    if (alive)
        emit Changed(static_cast<ZqDropdownClickReasons>(reason), oldValue, newValue);
}

}  // namespace korvex
