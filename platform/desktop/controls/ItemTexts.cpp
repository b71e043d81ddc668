#include "platform/desktop/controls/ItemTexts.h"

#include <algorithm>
#include <cstring>
#include <utility>

namespace kelvo::desktop {

int ItemTexts::SortedPlace(const std::string& text) const {
    const QString wanted = QString::fromStdString(text);
    const auto place = std::ranges::find_if(items_, [&](const Item& item) {
        return QString::localeAwareCompare(QString::fromStdString(item.text), wanted) > 0;
    });
    return static_cast<int>(place - items_.begin());
}

void ItemTexts::Insert(int index, std::string text) {
    items_.insert(items_.begin() + index, Item{std::move(text), 0});
}

void ItemTexts::Remove(int index) {
    items_.erase(items_.begin() + index);
}

int ItemTexts::Find(LPARAM after, const std::string& text, bool whole) const {
    const QString wanted = QString::fromStdString(text);
    const int first = Has(after) ? static_cast<int>(after) + 1 : 0;
    for (int i = 0; i < Count(); ++i) {
        const int index = (first + i) % Count();
        const QString shown = Shown(index);
        const bool found = whole ? shown.compare(wanted, Qt::CaseInsensitive) == 0
                                 : shown.startsWith(wanted, Qt::CaseInsensitive);
        if (found) return index;
    }
    return -1;
}

LRESULT ItemTexts::Copy(LPARAM index, LPARAM buffer) const {
    if (!Has(index) || buffer == 0) return -1;
    const std::string& text = At(index).text;
    std::memcpy(reinterpret_cast<void*>(buffer), text.c_str(), text.size() + 1);
    return static_cast<LRESULT>(text.size());
}

} // namespace kelvo::desktop
