// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "ui/MVBankRows.h"
#include "ui/MVLibrarianCommands.h"
#include "ui/MVLibrarianModel.h"

namespace morvanelab
{

/** The banks, one a row: name, how many slots are used, and a mark at the one whose patch plays. Rows are re-ordered by
    dragging; patches dropped on a row are copied to its empty slots. Message thread. */
class MVBankListView : public MVBankRows, public juce::DragAndDropTarget
{
public:
    static constexpr const char* bankDragId = "MVBankItemSelectComponent_bankData";
    static constexpr int heightOfRow = 34;

    /** Both must outlive the view. */
    MVBankListView (MVLibrarianModel& modelToUse, MVLibrarianCommandTarget& targetToUse);

    /** Shows what the model holds now. */
    void update();

    bool isInterestedInDragSource (const SourceDetails& details) override;
    void itemDragMove (const SourceDetails& details) override;
    void itemDragExit (const SourceDetails& details) override;
    void itemDropped (const SourceDetails& details) override;

private:
    int rowCount() const override { return static_cast<int> (shown.size()); }
    void paintRow (juce::Graphics& graphics, int row, juce::Rectangle<int> bounds, const RowLook& look) override;
    void rowChosen (int row) override;
    void rowActivated (int row) override;
    void menuWanted (int row) override;
    void dragWanted (int row) override;
    void paintOverChildren (juce::Graphics& graphics) override;
    /** The place before which a dragged bank would be put down. */
    int gapAt (int y) const;

    struct Row
    {
        juce::String name;
        juce::String detail;
        bool readable = true;
        bool holdsLoaded = false;
    };

    MVLibrarianModel& model;
    MVLibrarianCommandTarget& target;
    std::vector<Row> shown;
    int draggedBank = noRow;
    int dropGap = noRow; ///< where a bank would go
    int dropRow = noRow; ///< the bank that patches would go to
};

} // namespace morvanelab
