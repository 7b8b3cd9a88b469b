// The demo's generated items: a million rows of code, name and town made from fixed word lists
// by a counter-based generator, so that item i is the same on every machine and in every run
// (the demo database, its tests and the combo's benchmark all see the same rows).
#pragma once

#include <QString>

namespace demo {

// How many items the demo's combo form offers.
inline constexpr int ItemCount = 1000000;

struct Item {
    QString code;  // "K0000001" for item 0: unique, ordered like the items
    QString name;  // a first name and a surname, some with letters outside ASCII
    QString town;
};

// Item `index` (0 to ItemCount - 1, though any index gives an item).
Item MakeItem(int index);

}  // namespace demo
