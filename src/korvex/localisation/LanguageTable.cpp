// LanguageTable: rows, the two key indexes and the cursor rule for duplicate keys.
#include "korvex/localisation/LanguageTable.h"

#include <algorithm>

namespace korvex {

bool LanguageTable::Append(LanguageRow row)
{
    const int rowNumber = static_cast<int>(mRows.size());
    const QString folded = row.Key.toCaseFolded();
    auto [group, added] = mFoldedKeys.try_emplace(folded, static_cast<int>(mGroups.size()));
    if (added)
        mGroups.emplace_back();
    std::vector<int>& rows = mGroups[static_cast<std::size_t>(group->second)];
    rows.push_back(rowNumber);
    mRows.push_back(std::move(row));

    // A key with an apostrophe can never be found (see GroupOf), so only the folded index,
    // which checks for one first, knows it.
    const QString& key = mRows.back().Key;
    if (!key.contains(QLatin1Char('\'')))
        mExactKeys.try_emplace(key, rowNumber);
    if (rows.size() == 2) {
        // From now on the key's spellings lead to the group instead of to a single row.
        for (int r : rows) {
            if (auto exact = mExactKeys.find(mRows[static_cast<std::size_t>(r)].Key); exact != mExactKeys.end())
                exact->second = -1 - group->second;
        }
    } else if (rows.size() > 2) {
        if (auto exact = mExactKeys.find(key); exact != mExactKeys.end())
            exact->second = -1 - group->second;
    }
    return !added;
}

const LanguageRow* LanguageTable::Find(const QString& key)
{
    int group = -1;
    if (auto exact = mExactKeys.find(key); exact != mExactKeys.end()) {
        if (exact->second >= 0) {
            mCurrent = static_cast<std::size_t>(exact->second);
            return &mRows[mCurrent];
        }
        group = -1 - exact->second;
    } else if (!key.contains(QLatin1Char('\''))) {
        // Identifiers are matched as the quoted condition Key = '<identifier>', which cannot
        // hold an apostrophe: such an identifier finds no row.
        if (auto folded = mFoldedKeys.find(key.toCaseFolded()); folded != mFoldedKeys.end())
            group = folded->second;
    }
    if (group < 0) {
        mCurrent = mRows.size();
        return nullptr;
    }

    if (mCurrent >= mRows.size())
        mCurrent = 0;
    const std::vector<int>& rows = mGroups[static_cast<std::size_t>(group)];
    const auto at = std::lower_bound(rows.begin(), rows.end(), static_cast<int>(mCurrent));
    mCurrent = static_cast<std::size_t>(at != rows.end() ? *at : rows.front());
    return &mRows[mCurrent];
}

}  // namespace korvex
