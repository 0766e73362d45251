#pragma once

#include "core/collection/CollectionListener.h"

#include <QoKernel/Views.h>

#include <string>
#include <vector>

namespace qo::host
{
/// The three panes over the loaded collection, what is selected in them, and the filter. What is
/// selected on the left decides what the middle shows, and both decide the right pane. The model
/// follows changes of the collection file by file; when too much changed at once it is built anew
/// and keeps the selection if that is still there. On the kernel's thread. To be gone before the
/// collection is emptied or loaded again, since items hold what they show.
class PaneModel final : public CollectionListener
{
public:
    using Item = CUVViewItem;
    using Items = CUVViewItemList;
    using View = CUVViewHelper::EViewType;

    struct Filter
    {
        CString text = {};
        CQoCollSubset::EFilterType field = CQoCollSubset::filterAll;
        CQoUtils::ShowFilterInfo shown = {};
    };

    /// left is one of the left panes, right rightFiles or rightTree. The filter is one for all
    /// models of a process: others must be given it as well.
    PaneModel(View left, View right, const Filter& filter);
    ~PaneModel() override;

    /// Nothing is selected afterwards.
    void show(View left, View right);
    /// The selection stays where it passes.
    void setFilter(const Filter& filter);

    const Items& left() const { return m_left; }
    const Items& middle() const { return m_middle; }
    const Items& right() const { return m_right; }
    View leftView() const { return m_leftView; }
    View rightView() const { return m_rightView; }
    View middleView() const { return m_middleView; }

    /// Items of the respective pane, or null for nothing.
    void selectLeft(Item* item);
    void selectMiddle(Item* item);
    Item* selectedLeft() const;
    Item* selectedMiddle() const { return m_middleItem; }

    /// What people see below an item: as in the paths of a friend's files, his first drive is left
    /// out.
    static const Items& shownBelow(const Item& item);
    /// The item at the end of a path of names with slashes between them ("Pop/ABBA"), apart from
    /// case and accents; null if there is none. Names may hold slashes themselves.
    static Item* find(const Items& items, const std::string& path);

    /// Checks all files behind an item of one of the panes, or takes their marks off.
    void setMark(Item& item, bool isChecked);

    void filesChanged(const Files& removed, const Files& added) override;
    void allChanged() override { buildAnew(); }

private:
    using Path = std::vector<std::pair<CUVViewItemType::EType, Item::Link>>;

    static const CQoCollSubset& subset() { return CQoCollSubset::getCrtSubset(); }
    void buildAll(AddFileInfo* add = nullptr);
    void buildMiddle(AddFileInfo* add = nullptr);
    void buildRight(AddFileInfo* add = nullptr);
    void buildAnew();
    void remove(const CQoUtils::File& file);
    CQoUtils::ParentItemsInfo ofLeft() const;
    CQoUtils::ParentItemsInfo ofBoth() const;
    static Path pathOf(const Item* item);
    static Item* follow(const Items& items, const Path& path);

    View m_leftView;
    View m_middleView = CUVViewHelper::viewNone;
    View m_rightView;
    Items m_left;
    Items m_middle;
    Items m_right;
    Item* m_leftItem = nullptr; ///< of a friend's root folder its drive, which is not shown
    Item* m_middleItem = nullptr;
};
} // namespace qo::host
