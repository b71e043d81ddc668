#pragma once
// The items of list boxes and combo boxes: their texts byte for byte (a file's name need not be
// UTF-8), the number that the program keeps with each, searching and sorting.

#include "platform/base/types.h"

#include <QString>

#include <string>
#include <vector>

namespace kelvo::desktop {

class ItemTexts {
public:
    struct Item {
        std::string text;
        LPARAM data = 0;
    };

    int Count() const { return static_cast<int>(items_.size()); }
    bool Has(LPARAM index) const { return index >= 0 && index < Count(); }
    Item& At(LPARAM index) { return items_[static_cast<std::size_t>(index)]; }
    const Item& At(LPARAM index) const { return items_[static_cast<std::size_t>(index)]; }
    QString Shown(LPARAM index) const { return QString::fromStdString(At(index).text); }

    /// Where the text belongs in sorted order, behind its equals.
    int SortedPlace(const std::string& text) const;
    void Insert(int index, std::string text);
    void Remove(int index);
    void Clear() { items_.clear(); }
    /// The next item behind `after` (-1: from the first), round and round, that begins with the
    /// text, whatever the case of its letters. @return -1 when there is none.
    int Find(LPARAM after, const std::string& text, bool whole) const;
    /// Copies the text and its 0. @return its length.
    LRESULT Copy(LPARAM index, LPARAM buffer) const;

private:
    std::vector<Item> items_;
};

} // namespace kelvo::desktop
