// LISTBOX: a list of texts, of which one or several can be selected.

#include "platform/desktop/controls/ItemTexts.h"
#include "platform/desktop/controls/StandardControls.h"

#include <QListWidget>
#include <QScrollBar>

#include <algorithm>

namespace kelvo::desktop {

namespace {

class ListBox final : public Control {
public:
    explicit ListBox(const ControlSetup& setup) : Control(setup) {
        list_ = MakeWidget<QListWidget>();
        list_->setEditTriggers(QAbstractItemView::NoEditTriggers);
        list_->setUniformItemSizes(true);
        list_->setSelectionMode(ModeFor(setup.style));
        const auto bar = [&](DWORD wanted) {
            return (setup.style & wanted) != 0 ? Qt::ScrollBarAsNeeded : Qt::ScrollBarAlwaysOff;
        };
        list_->setVerticalScrollBarPolicy(bar(WS_VSCROLL));
        list_->setHorizontalScrollBarPolicy(bar(WS_HSCROLL));
        const bool has_frame =
            (setup.style & WS_BORDER) != 0 || (setup.extended_style & WS_EX_CLIENTEDGE) != 0;
        if (!has_frame) list_->setFrameShape(QFrame::NoFrame);
        NameAfterLabel();
        QObject::connect(list_, &QListWidget::itemSelectionChanged, Connections(),
                         [this] { OnUser(LBN_SELCHANGE); });
        QObject::connect(list_, &QListWidget::itemDoubleClicked, Connections(),
                         [this] { OnUser(LBN_DBLCLK); });
    }

protected:
    std::optional<LRESULT> Handle(UINT message, WPARAM wparam, LPARAM lparam) override;
    UINT ColourMessage() const override { return WM_CTLCOLORLISTBOX; }

private:
    static QAbstractItemView::SelectionMode ModeFor(DWORD style);
    void OnUser(UINT code) {
        if ((Style() & LBS_NOTIFY) != 0) Notify(code);
    }
    bool SelectsSeveral() const {
        return list_->selectionMode() == QAbstractItemView::MultiSelection ||
               list_->selectionMode() == QAbstractItemView::ExtendedSelection;
    }
    LRESULT Add(LPARAM text);
    LRESULT Insert(LPARAM index, LPARAM text);
    LRESULT Delete(LPARAM index);
    LRESULT Current() const;
    LRESULT SetCurrent(LPARAM index);
    LRESULT SelectOne(LPARAM index, bool selected);
    LRESULT CopySelected(WPARAM capacity, LPARAM buffer) const;
    LRESULT RectOf(LPARAM index, LPARAM rect) const;
    std::optional<LRESULT> HandleItems(UINT message, WPARAM wparam, LPARAM lparam);
    std::optional<LRESULT> HandleSelection(UINT message, WPARAM wparam, LPARAM lparam);

    QPointer<QListWidget> list_;
    ItemTexts texts_;
};

QAbstractItemView::SelectionMode ListBox::ModeFor(DWORD style) {
    if ((style & LBS_NOSEL) != 0) return QAbstractItemView::NoSelection;
    if ((style & LBS_EXTENDEDSEL) != 0) return QAbstractItemView::ExtendedSelection;
    if ((style & LBS_MULTIPLESEL) != 0) return QAbstractItemView::MultiSelection;
    return QAbstractItemView::SingleSelection;
}

std::string TextFrom(LPARAM text) {
    return text == 0 ? std::string() : reinterpret_cast<const char*>(text);
}

LRESULT ListBox::Add(LPARAM text) {
    const bool is_sorted = (Style() & LBS_SORT) != 0;
    return Insert(is_sorted ? texts_.SortedPlace(TextFrom(text)) : texts_.Count(), text);
}

LRESULT ListBox::Insert(LPARAM index, LPARAM text) {
    if (index == -1) index = texts_.Count();
    if (index < 0 || index > texts_.Count()) return LB_ERR;
    const auto place = static_cast<int>(index);
    texts_.Insert(place, TextFrom(text));
    const QSignalBlocker quiet(list_);
    list_->insertItem(place, texts_.Shown(place));
    return index;
}

LRESULT ListBox::Delete(LPARAM index) {
    if (!texts_.Has(index)) return LB_ERR;
    const auto place = static_cast<int>(index);
    const bool was_current = Current() == index;
    texts_.Remove(place);
    const QSignalBlocker quiet(list_);
    delete list_->takeItem(place);
    if (was_current) list_->setCurrentRow(-1);
    return texts_.Count();
}

LRESULT ListBox::Current() const {
    const int row = list_->currentRow();
    if (SelectsSeveral()) return row;
    const QListWidgetItem* item = list_->item(row);
    return item != nullptr && item->isSelected() ? row : LB_ERR;
}

LRESULT ListBox::SetCurrent(LPARAM index) {
    const QSignalBlocker quiet(list_);
    if (!texts_.Has(index)) {
        list_->clearSelection();
        list_->setCurrentRow(-1);
        return LB_ERR;
    }
    list_->setCurrentRow(static_cast<int>(index));
    list_->scrollToItem(list_->currentItem());
    return index;
}

LRESULT ListBox::SelectOne(LPARAM index, bool selected) {
    if (!SelectsSeveral()) return LB_ERR;
    const QSignalBlocker quiet(list_);
    if (index == -1) {
        if (selected) {
            list_->selectAll();
        } else {
            list_->clearSelection();
        }
        return LB_OKAY;
    }
    if (!texts_.Has(index)) return LB_ERR;
    list_->item(static_cast<int>(index))->setSelected(selected);
    return LB_OKAY;
}

LRESULT ListBox::CopySelected(WPARAM capacity, LPARAM buffer) const {
    if (!SelectsSeveral() || buffer == 0) return LB_ERR;
    auto* const indices = reinterpret_cast<int*>(buffer);
    WPARAM written = 0;
    for (int row = 0; row < list_->count() && written < capacity; ++row) {
        if (list_->item(row)->isSelected()) indices[written++] = row;
    }
    return static_cast<LRESULT>(written);
}

LRESULT ListBox::RectOf(LPARAM index, LPARAM rect) const {
    if (!texts_.Has(index) || rect == 0) return LB_ERR;
    const QRect in_view = list_->visualItemRect(list_->item(static_cast<int>(index)));
    const QRect area = in_view.translated(list_->viewport()->mapTo(list_.data(), QPoint(0, 0)));
    *reinterpret_cast<RECT*>(rect) = {area.left(), area.top(), area.right() + 1, area.bottom() + 1};
    return LB_OKAY;
}

std::optional<LRESULT> ListBox::HandleItems(UINT message, WPARAM wparam, LPARAM lparam) {
    const LPARAM index = static_cast<std::int32_t>(wparam);
    switch (message) {
    case LB_ADDSTRING:
        return Add(lparam);
    case LB_INSERTSTRING:
        return Insert(index, lparam);
    case LB_DELETESTRING:
        return Delete(index);
    case LB_RESETCONTENT: {
        const QSignalBlocker quiet(list_);
        list_->clear();
        texts_.Clear();
        return LB_OKAY;
    }
    case LB_GETCOUNT:
        return texts_.Count();
    case LB_GETTEXT:
        return texts_.Copy(index, lparam);
    case LB_GETTEXTLEN:
        return texts_.Has(index) ? static_cast<LRESULT>(texts_.At(index).text.size()) : LB_ERR;
    case LB_GETITEMDATA:
        return texts_.Has(index) ? texts_.At(index).data : LB_ERR;
    case LB_SETITEMDATA:
        if (!texts_.Has(index)) return LB_ERR;
        texts_.At(index).data = lparam;
        return LB_OKAY;
    case LB_FINDSTRING:
        return texts_.Find(index, TextFrom(lparam), false);
    case LB_FINDSTRINGEXACT:
        return texts_.Find(index, TextFrom(lparam), true);
    case LB_GETITEMRECT:
        return RectOf(index, lparam);
    default:
        return HandleSelection(message, wparam, lparam);
    }
}

std::optional<LRESULT> ListBox::HandleSelection(UINT message, WPARAM wparam, LPARAM lparam) {
    const LPARAM index = static_cast<std::int32_t>(wparam);
    switch (message) {
    case LB_SETCURSEL:
        return SelectsSeveral() ? LB_ERR : SetCurrent(index);
    case LB_GETCURSEL:
        return Current();
    case LB_SELECTSTRING: {
        const int found = texts_.Find(index, TextFrom(lparam), false);
        return found < 0 ? LB_ERR : SetCurrent(found);
    }
    case LB_SETSEL:
        return SelectOne(static_cast<std::int32_t>(lparam), wparam != 0);
    case LB_GETSEL:
        if (!texts_.Has(index)) return LB_ERR;
        return list_->item(static_cast<int>(index))->isSelected() ? 1 : 0;
    case LB_GETSELCOUNT:
        return SelectsSeveral() ? list_->selectedItems().size() : LB_ERR;
    case LB_GETSELITEMS:
        return CopySelected(wparam, lparam);
    case LB_GETTOPINDEX: {
        const auto* top = list_->itemAt(0, 0);
        return top == nullptr ? 0 : list_->row(top);
    }
    case LB_SETTOPINDEX:
        if (!texts_.Has(index)) return LB_ERR;
        list_->scrollToItem(list_->item(static_cast<int>(index)), QListWidget::PositionAtTop);
        return LB_OKAY;
    default:
        return std::nullopt;
    }
}

std::optional<LRESULT> ListBox::Handle(UINT message, WPARAM wparam, LPARAM lparam) {
    if (!list_) return std::nullopt;
    switch (message) {
    case WM_GETDLGCODE:
        return DLGC_WANTARROWS | DLGC_WANTCHARS;
    case WM_SETFOCUS:
        OnUser(LBN_SETFOCUS);
        return std::nullopt;
    case WM_KILLFOCUS:
        OnUser(LBN_KILLFOCUS);
        return std::nullopt;
    default:
        return HandleItems(message, wparam, lparam);
    }
}

} // namespace

std::unique_ptr<Control> MakeListBox(const ControlSetup& setup) {
    return std::make_unique<ListBox>(setup);
}

} // namespace kelvo::desktop
