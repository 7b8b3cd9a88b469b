// LanguageTable: rows, the two key indexes and the cursor rule for duplicate keys.
#include "korvex/localisation/LanguageTable.h"

#include <algorithm>

namespace korvex {

bool LanguageTable::Append(LanguageRow row)
{
    const int rowNumber = static_cast<int>(mRows.size());
    const QString folded = row.Key.toCaseFolded();
    int group = mFoldedKeys.value(folded, -1);
    const bool duplicate = group >= 0;
    if (!duplicate) {
        group = static_cast<int>(mGroups.size());
        mFoldedKeys.insert(folded, group);
        mGroups.emplace_back();
    }
    std::vector<int>& rows = mGroups[static_cast<std::size_t>(group)];
    rows.push_back(rowNumber);
    mRows.push_back(std::move(row));

    // A key with an apostrophe can never be found (see Find), so only the folded index, which
    // checks for one first, knows it.
    const LanguageRow& added = mRows.back();
    if (!added.Key.contains(QLatin1Char('\'')))
        mExactKeys.insert(added.Key, ExactEntry{rowNumber, added.Text});
    if (duplicate) {
        // The key's spellings lead to the group from now on instead of to a single row.
        for (int r : rows) {
            if (auto exact = mExactKeys.find(mRows[static_cast<std::size_t>(r)].Key); exact != mExactKeys.end())
                *exact = ExactEntry{-1 - group, {}};
        }
    }
    return duplicate;
}

LanguageTable::Match LanguageTable::Find(const QString& key)
{
    int group = -1;
    if (auto exact = mExactKeys.constFind(key); exact != mExactKeys.cend()) {
        if (exact->target >= 0) {
            mCurrent = static_cast<std::size_t>(exact->target);
            return {&mRows[mCurrent], &exact->text};
        }
        group = -1 - exact->target;
    } else if (!key.contains(QLatin1Char('\''))) {
        // Identifiers are matched as the quoted condition Key = '<identifier>', which cannot
        // hold an apostrophe: such an identifier finds no row.
        group = mFoldedKeys.value(key.toCaseFolded(), -1);
    }
    if (group < 0) {
        mCurrent = mRows.size();
        return {};
    }

    if (mCurrent >= mRows.size())
        mCurrent = 0;
    const std::vector<int>& rows = mGroups[static_cast<std::size_t>(group)];
    const auto at = std::lower_bound(rows.begin(), rows.end(), static_cast<int>(mCurrent));
    mCurrent = static_cast<std::size_t>(at != rows.end() ? *at : rows.front());
    return {&mRows[mCurrent], &mRows[mCurrent].Text};
}

}  // namespace korvex
