// The drop-down's "Sorted By" line: the caption, the arrow placed by the measured text, and the
// column menu.
#include "korvex/controls/lists/ZqDropdown_Header.h"

#include "korvex/localisation/LGS.h"
#include "korvex/platform/host/Label.h"
#include "korvex/runtime/EntryGuard.h"
#include "korvex/runtime/Twips.h"

#include <QFontMetrics>
#include <QMenu>

namespace korvex {

namespace {

// Pixels between the end of the text and the arrow.
constexpr int ArrowGap = 4;

}  // namespace

ZqDropdown_Header::ZqDropdown_Header(QWidget* parent)
    : UserControl(parent), mLine(new Label(this)), mArrow(new Label(this)), mMenu(new QMenu(this)),
      mFont(this, [this] { ApplyFont(); }),
      mPrefix(QLatin1Char(' ') + LGS(QStringLiteral("zqdd0001"), QStringLiteral("Sorted By")) + QLatin1Char(' '))
{
    mLine->SetName(QStringLiteral("lbl"));
    mArrow->SetName(QStringLiteral("lblDropArrow"));
    mMenu->setObjectName(QStringLiteral("mnuCols"));
    for (Label* label : {mLine, mArrow}) {
        label->SetUseMnemonic(false);
        label->SetBackStyle(0);
    }
    mArrow->SetAutoSize(true);
    mArrow->SetCaption(QString(QChar(0x25BE)));  // a small down-pointing triangle
    mLine->SetCaption(mPrefix);
    // A double click on the line is a second click, so both pop the menu up.
    for (Label* label : {mLine, mArrow}) {
        connect(label, qOverload<>(&Control::Click), this, GuardedSlot(this, [this] { ShowMenu(); }));
        connect(label, &Control::DblClick, this, GuardedSlot(this, [this] { ShowMenu(); }));
    }
    connect(mMenu, &QMenu::aboutToHide, this, [this] { mMenuVisible = false; });
    connect(mMenu, &QMenu::triggered, this, GuardedSlot(this, [this](QAction* action) { Chosen(action->data().toInt()); }));
    LoadDeclaredDefaults();
}

ZqDropdown_Header::~ZqDropdown_Header() = default;

const PropertyList& ZqDropdown_Header::PersistedProperties() const
{
    using C = ZqDropdown_Header;
    static const PropertyList list = Declare<C>().Property(
        "Font", &C::FontValue, [](C& c, const Variant& f) { c.mFont.Load(f, QStringLiteral("ZqDropdown_Header.Font")); },
        AmbientFont);
    return list;
}

void ZqDropdown_Header::SetFont(QObject* font)
{
    mFont.Set(font, QStringLiteral("ZqDropdown_Header.Font"));
    PropertyChanged("Font");
}

void ZqDropdown_Header::ApplyFont()
{
    const QFont font = mFont.ToQFont();
    setFont(font);
    mLine->setFont(font);
    mArrow->setFont(font);
    mMenu->setFont(font);
    mArrow->SetCaption(mArrow->Caption());  // an auto-sized label fits the new font
    PlaceArrow();
}

// --- Columns and the sorted mark -----------------------------------------------------------

void ZqDropdown_Header::SetColumns(const QStringList& captions)
{
    mCaptions = captions;
    QList<QAction*> items = mMenu->actions();
    while (items.size() > mCaptions.size())
        delete items.takeLast();
    while (items.size() < mCaptions.size()) {
        auto* item = mMenu->addAction(QString());
        item->setCheckable(true);
        item->setData(static_cast<int>(items.size()));
        items.push_back(item);
    }
    for (qsizetype i = 0; i < items.size(); ++i) {
        items[i]->setText(mCaptions[i]);
        items[i]->setChecked(i == mSortedColIndex);
    }
}

void ZqDropdown_Header::SetSortedColIndex(short index)
{
    const QList<QAction*> items = mMenu->actions();
    if (mSortedColIndex >= 0 && mSortedColIndex < items.size())
        items[mSortedColIndex]->setChecked(false);
    mSortedColIndex = index;
    if (index >= 0 && index < mCaptions.size()) {
        if (index < items.size())
            items[index]->setChecked(true);
        mLine->SetCaption(mPrefix + mCaptions[index]);
    }
    PlaceArrow();
}

// --- The menu --------------------------------------------------------------------------------

void ZqDropdown_Header::SetMenuVisible(bool visible)
{
    mMenuVisible = visible;
    if (!visible && mMenu->isVisible())
        mMenu->hide();
}

void ZqDropdown_Header::ShowMenu()
{
    if (mMenuVisible)
        return;
    mMenuVisible = true;
    // Not modal: the menu answers while the event loop goes on, and closes by itself.
    mMenu->popup(mapToGlobal(QPoint(TextWidth(), height())));
    if (!mMenu->isVisible())
        mMenuVisible = false;
}

void ZqDropdown_Header::Chosen(int index)
{
    mMenuVisible = false;
    emit ColumnChosen(static_cast<short>(index));
}

bool ZqDropdown_Header::Owns(const QWidget* widget) const
{
    return widget && (widget == this || isAncestorOf(widget) || widget == mMenu || mMenu->isAncestorOf(widget));
}

// --- Layout ----------------------------------------------------------------------------------

int ZqDropdown_Header::TextWidth() const
{
    return QFontMetrics(mLine->font()).horizontalAdvance(mLine->ShownText());
}

void ZqDropdown_Header::PlaceArrow()
{
    mArrow->move(TextWidth() + ArrowGap, (height() - mArrow->height()) / 2);
}

void ZqDropdown_Header::Resize()
{
    mLine->setGeometry(rect());
    PlaceArrow();
}

QSize ZqDropdown_Header::sizeHint() const
{
    const QFontMetrics metrics(font());
    return {TextWidth() + ArrowGap + mArrow->width(), metrics.height() + 4};
}

}  // namespace korvex
