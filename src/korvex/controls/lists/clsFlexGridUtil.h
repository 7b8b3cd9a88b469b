// clsFlexGridUtil: helpers for hosts that use grids of their own: column order and visibility
// from a list of keys, header captions from text or language strings, and a cell's whole text as
// the tool tip when the cell is too narrow for it. The grid and the form are reached only by
// name (ColIndex, ColPosition, Cols, ColHidden, TextMatrix, MouseRow, MouseCol, FixedRows,
// FixedCols, Cell, ToolTipText, ColWidth; the form's TextWidth), so any object with those
// members serves. Errors the grid raises (a key no column has) reach the caller unchanged.
#pragma once

#include <QObject>
#include <QString>

namespace korvex {

class clsFlexGridUtil : public QObject {
    Q_OBJECT

public:
    // The separator when a call gives none, as the list controls use.
    static constexpr const char* DefaultSeparator = ";";

    explicit clsFlexGridUtil(QObject* parent = nullptr) : QObject(parent) {}

    // The listed keys become the first columns, in that order; every column after them is hidden.
    Q_INVOKABLE void SetFGColumns(QObject* fg, const QString& ColumnList, const QString& ListSeparator = DefaultSeparator);
    // The header row's captions, column by column.
    Q_INVOKABLE void SetFGColumnCaptions(QObject* fg, const QString& ColumnCaptionList,
                                         const QString& ListSeparator = DefaultSeparator);
    // The same from language-string identifiers.
    Q_INVOKABLE void SetFGColumnCaptionsLGS(QObject* fg, const QString& LGSKeyList,
                                            const QString& ListSeparator = DefaultSeparator);
    // For the grid's mouse-move handler: the displayed text of the cell under the mouse as the
    // tool tip when it is wider than its column in the form's font; empty otherwise.
    Q_INVOKABLE void SetFGToolTip(QObject* f, QObject* Grid);
};

}  // namespace korvex
