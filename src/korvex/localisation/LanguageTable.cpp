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
    mGroups[static_cast<std::size_t>(group->second)].push_back(rowNumber);
    // A key with an apostrophe can never be found (see GroupOf), so only the folded index,
    // which checks for one first, knows it.
    if (!row.Key.contains(QLatin1Char('\'')))
        mExactKeys.try_emplace(row.Key, group->second);
    mRows.push_back(std::move(row));
    return !added;
}

int LanguageTable::GroupOf(const QString& key) const
{
    if (auto exact = mExactKeys.find(key); exact != mExactKeys.end())
        return exact->second;
    // Identifiers are matched as the quoted condition Key = '<identifier>', which cannot hold
    // an apostrophe: such an identifier finds no row.
    if (key.contains(QLatin1Char('\'')))
        return -1;
    if (auto folded = mFoldedKeys.find(key.toCaseFolded()); folded != mFoldedKeys.end())
        return folded->second;
    return -1;
}

const LanguageRow* LanguageTable::Find(const QString& key)
{
    const int group = GroupOf(key);
    if (group < 0) {
        mCurrent = mRows.size();
        return nullptr;
    }
    if (mCurrent >= mRows.size())
        mCurrent = 0;
    const std::vector<int>& rows = mGroups[static_cast<std::size_t>(group)];
    int found = rows.front();
    if (rows.size() > 1) {
        const auto at = std::lower_bound(rows.begin(), rows.end(), static_cast<int>(mCurrent));
        if (at != rows.end())
            found = *at;
    }
    mCurrent = static_cast<std::size_t>(found);
    return &mRows[mCurrent];
}

}  // namespace korvex
