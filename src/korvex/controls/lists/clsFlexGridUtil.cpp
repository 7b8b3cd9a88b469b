// clsFlexGridUtil: every grid member called through CallByName.
#include "korvex/controls/lists/clsFlexGridUtil.h"

#include "korvex/localisation/LGS.h"
#include "korvex/runtime/Conversions.h"
#include "korvex/runtime/LateBinding.h"

#include <QStringList>

namespace korvex {
namespace {

// The items of a list, trimmed; an empty list has none.
QStringList Items(const QString& list, const QString& separator)
{
    QStringList items;
    if (list.isEmpty())
        return items;
    for (const QString& item : list.split(separator.isEmpty() ? QString::fromLatin1(clsFlexGridUtil::DefaultSeparator) : separator))
        items << item.trimmed();
    return items;
}

Variant Call(QObject* object, const char* member, QList<Variant> args)
{
    return CallByName(object, QString::fromLatin1(member), VbGet, args);
}

void Let(QObject* object, const char* member, QList<Variant> args)
{
    CallByName(object, QString::fromLatin1(member), VbLet, args);
}

int Number(QObject* object, const char* member)
{
    return CLng(GetProperty(object, QString::fromLatin1(member)));
}

template <class CaptionOf>
void SetCaptions(QObject* fg, const QStringList& items, CaptionOf captionOf)
{
    for (int i = 0; i < items.size(); ++i)
        Let(fg, "TextMatrix", {Variant(std::int32_t{0}), Variant(std::int32_t{i}), Variant(captionOf(items[i]))});
}

}  // namespace

void clsFlexGridUtil::SetFGColumns(QObject* fg, const QString& ColumnList, const QString& ListSeparator)
{
    const QStringList names = Items(ColumnList, ListSeparator);
    for (int i = 0; i < names.size(); ++i) {
        const Variant index = Call(fg, "ColIndex", {Variant(names[i])});
        Let(fg, "ColPosition", {index, Variant(std::int32_t{i})});
    }
    const int cols = Number(fg, "Cols");
    for (int c = static_cast<int>(names.size()); c < cols; ++c)
        Let(fg, "ColHidden", {Variant(std::int32_t{c}), Variant(true)});
}

void clsFlexGridUtil::SetFGColumnCaptions(QObject* fg, const QString& ColumnCaptionList, const QString& ListSeparator)
{
    SetCaptions(fg, Items(ColumnCaptionList, ListSeparator), [](const QString& caption) { return caption; });
}

void clsFlexGridUtil::SetFGColumnCaptionsLGS(QObject* fg, const QString& LGSKeyList, const QString& ListSeparator)
{
    SetCaptions(fg, Items(LGSKeyList, ListSeparator), [](const QString& key) { return LGS(key); });
}

void clsFlexGridUtil::SetFGToolTip(QObject* f, QObject* Grid)
{
    const int row = Number(Grid, "MouseRow");
    const int col = Number(Grid, "MouseCol");
    if (row < Number(Grid, "FixedRows") || col < Number(Grid, "FixedCols")) {
        SetProperty(Grid, QStringLiteral("ToolTipText"), Variant(QString()));
        return;
    }
    const QString text = CStr(Call(Grid, "Cell", {Variant(std::int32_t{19}), Variant(std::int32_t{row}), Variant(std::int32_t{col})}));
    if (CStr(GetProperty(Grid, QStringLiteral("ToolTipText"))) == text)
        return;
    QList<Variant> measure{Variant(text)};
    const double width = CDbl(CallByName(f, QStringLiteral("TextWidth"), VbMethod, measure));
    const double colWidth = CDbl(Call(Grid, "ColWidth", {Variant(std::int32_t{col})}));
    SetProperty(Grid, QStringLiteral("ToolTipText"), Variant(width > colWidth ? text : QString()));
}

}  // namespace korvex
