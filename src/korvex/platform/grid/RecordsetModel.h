// RecordsetModel: a Qt table model over any recordset, the bridge from the library's recordsets
// to every Qt view (QTableView, QListView, QComboBox, QCompleter). It never copies rows: a cell
// is read from the recordset at that row's position when a view asks for it, so a million rows
// cost what ten do. Rows added, deleted, filtered or sorted through the recordset or any of its
// clones reach the views by the model's own signals.
#pragma once

#include "korvex/platform/ado/Recordset.h"
#include "korvex/runtime/Variant.h"

#include <QAbstractTableModel>
#include <QLoggingCategory>

#include <cstdint>
#include <memory>
#include <utility>
#include <vector>

namespace korvex {

// Mistakes made with grids and models (an edit the recordset refused, a bad index from a view).
Q_DECLARE_LOGGING_CATEGORY(lcGrid)

class RecordsetModel : public QAbstractTableModel {
    Q_OBJECT

public:
    explicit RecordsetModel(QObject* parent = nullptr);
    explicit RecordsetModel(std::shared_ptr<ado::Recordset> recordset, QObject* parent = nullptr);
    ~RecordsetModel() override;

    // One column per field, one row per record in the recordset's own order (its Filter and
    // Sort). The recordset's cursor is left alone: reading a cell never moves it. Null or a
    // closed recordset shows nothing.
    void SetRecordset(std::shared_ptr<ado::Recordset> recordset);
    const std::shared_ptr<ado::Recordset>& Recordset() const noexcept { return mRS; }

    // Brings the model in step with the recordset now. It does so by itself after each move of
    // its recordset and, for changes made through clones, once events next run; call this when
    // a view must be right before that (after adding rows through a clone, say).
    void Refresh();

    // The value a row shows in a field (0-based row and field); Empty outside the rows.
    Variant Value(int row, int field) const;
    // The same as text, as views show it: Null and Empty as "".
    QString Text(int row, int field) const;
    // The row of the record a bookmark names, -1 when that record is not among the rows; the
    // bookmark of a row.
    int RowOfBookmark(const Variant& bookmark) const;
    Variant BookmarkOfRow(int row) const;

    int rowCount(const QModelIndex& parent = {}) const override;
    int columnCount(const QModelIndex& parent = {}) const override;
    // DisplayRole: the text; EditRole: the value; TextAlignmentRole: numbers to the right.
    QVariant data(const QModelIndex& index, int role = Qt::DisplayRole) const override;
    // Field names across, record numbers (from 1) down.
    QVariant headerData(int section, Qt::Orientation orientation, int role = Qt::DisplayRole) const override;
    Qt::ItemFlags flags(const QModelIndex& index) const override;
    // Writes the field of that record through the recordset (moving its cursor there) and
    // updates it; false when the recordset refuses, with the reason on korvex.grid.
    bool setData(const QModelIndex& index, const QVariant& value, int role = Qt::EditRole) override;

protected:
    // The text a cell shows; a grid lets its host change it on the way.
    virtual QString DisplayText(int row, int field) const { return Text(row, field); }

private:
    struct Stamp {
        const ado::RecordsetStore* store = nullptr;
        std::uint64_t generation = 0;
        std::uint64_t version = 0;
        std::uint64_t content = 0;
    };

    Stamp Current() const;
    void Watch();
    void Unwatch();
    void ScheduleRefresh();
    void Reset(const Stamp& stamp);
    // Rows only added at the end, or only removed, of an unsorted recordset are told to the views
    // row by row; false when the change needs a reset.
    bool AnnounceAdded(const std::vector<ado::RowId>& added, int count);
    bool AnnounceRemoved(const std::vector<ado::RowId>& removed, int count);
    std::size_t PositionOfNewRow(ado::RowId row, int count) const;

    std::shared_ptr<ado::Recordset> mRS;
    QMetaObject::Connection mMoveConnection;
    std::weak_ptr<ado::RecordsetStore> mWatched;
    std::uint64_t mWatchId = 0;
    bool mRefreshQueued = false;
    int mRows = 0;
    int mColumns = 0;
    Stamp mStamp;
    // While removals are being announced the views still see the rows they are told of: their
    // (row, record), ascending; the other rows read shifted past them.
    std::vector<std::pair<int, ado::RowId>> mLeaving;
};

}  // namespace korvex
