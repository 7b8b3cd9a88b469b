// The in-memory string table behind clsLanguage: rows in file order with a cursor, looked up
// by key the way a recordset's Find does it (forward from the current row, wrapping once,
// letter case ignored), through hash indexes so that every caption lookup stays cheap.
#pragma once

#include <QHash>
#include <QString>

#include <array>
#include <vector>

namespace korvex {

struct LanguageRow {
    QString Key;
    // The text in the loaded language, falling back to English.
    QString Text;
    // Text0 to Text4: English, German, French, American, Dutch; each falls back to Text.
    std::array<QString, 5> Texts;
};

class LanguageTable {
public:
    // Appends a row at the end; returns true when a row with the same key (ignoring case) was
    // already there.
    bool Append(LanguageRow row);

    struct Match {
        const LanguageRow* row = nullptr;  // nullptr when no row has the key
        const QString* text = nullptr;     // the row's Text
    };

    // Searches forward from the current row, itself included, and once more from the first
    // row; the row found becomes current, so among duplicate keys the one at or after the
    // previous lookup wins. Not found leaves the cursor past the end.
    Match Find(const QString& key);

    void MoveFirst() { mCurrent = 0; }
    qsizetype RowCount() const { return static_cast<qsizetype>(mRows.size()); }

private:
    struct ExactEntry {
        // The key's only row (a number from 0), or, when the key has duplicates, its group
        // (-1 - group number).
        int target = 0;
        // The only row's Text, kept here as well so that the common lookup touches no row.
        QString text;
    };

    std::vector<LanguageRow> mRows;
    // One group per key ignoring case: its row numbers in ascending order.
    std::vector<std::vector<int>> mGroups;
    // Keys as written lead to their row or group without case folding; other spellings go
    // through the folded index to the group.
    QHash<QString, ExactEntry> mExactKeys;
    QHash<QString, int> mFoldedKeys;
    std::size_t mCurrent = 0;
};

}  // namespace korvex
