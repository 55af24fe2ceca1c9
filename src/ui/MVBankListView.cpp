// SPDX-License-Identifier: GPL-3.0-or-later
#include "ui/MVBankListView.h"

#include "ui/MVBankItemSelectComponent.h"
#include "ui/MVIcons.h"
#include "ui/MVTheme.h"

#include <algorithm>

namespace morvanelab
{

namespace
{

using Command = MVLibrarianCommand;

constexpr int markWidth = 3;

} // namespace

MVBankListView::MVBankListView (MVLibrarianModel& modelToUse, MVLibrarianCommandTarget& targetToUse)
    : MVBankRows (heightOfRow), model (modelToUse), target (targetToUse)
{
    setComponentID ("librarian_banks");
    setTitle ("Banks");
}

void MVBankListView::update()
{
    const auto& catalogue = model.getCatalogue();
    const auto loaded = model.getLoadedPatch();
    shown.clear();
    for (int i = 0; i < catalogue.bankCount(); ++i)
    {
        const auto& bank = catalogue.bank (i);
        const auto used = juce::String (bank.usedSlots) + " of " + juce::String (MVBankFile::maxPatchesPerBank);
        shown.push_back ({ bank.name, bank.readable ? used : juce::String ("file missing"), bank.readable,
                           loaded && loaded->bank == i });
    }
    rowsChanged();
    setCurrentRow (model.getSelectedBank());
}

void MVBankListView::paintRow (juce::Graphics& graphics, int row, juce::Rectangle<int> bounds, const RowLook& look)
{
    const auto& bank = shown[static_cast<std::size_t> (row)];
    const auto body = bounds.reduced (2, 1).toFloat();
    if (look.current || look.hovered || row == dropRow)
    {
        graphics.setColour (themeColour (look.current ? MVThemeColour::selection : MVThemeColour::controlHover)
                                .withMultipliedAlpha (look.current || row == dropRow ? 1.0F : 0.6F));
        graphics.fillRoundedRectangle (body, metrics::corner);
    }
    if (look.focused || row == dropRow)
    {
        graphics.setColour (themeColour (row == dropRow ? MVThemeColour::accent : MVThemeColour::focus));
        graphics.drawRoundedRectangle (body.reduced (0.5F), metrics::corner, metrics::hairline);
    }
    if (bank.holdsLoaded)
    {
        graphics.setColour (themeColour (MVThemeColour::accent));
        graphics.fillRoundedRectangle (body.withWidth (markWidth).reduced (0, 4), 1.5F);
    }

    auto text = bounds.reduced (metrics::margin, 3);
    const auto colour = ! bank.readable    ? MVThemeColour::textDisabled
                        : bank.holdsLoaded ? MVThemeColour::accent
                                           : MVThemeColour::text;
    graphics.setColour (themeColour (colour));
    graphics.setFont (themeFont (fontHeights::normal));
    graphics.drawText (bank.name, text.removeFromTop (16), juce::Justification::centredLeft);
    graphics.setColour (themeColour (bank.readable ? MVThemeColour::textFaint : MVThemeColour::warn));
    graphics.setFont (themeFont (fontHeights::tiny));
    graphics.drawText (bank.detail, text, juce::Justification::centredLeft);
}

void MVBankListView::paintOverChildren (juce::Graphics& graphics)
{
    if (dropGap == noRow)
        return;
    graphics.setColour (themeColour (MVThemeColour::accent));
    graphics.fillRect (2, std::clamp (dropGap * heightOfRow - 1, 0, getHeight() - 2), getWidth() - 4, 2);
}

void MVBankListView::rowChosen (int row)
{
    if (row != noRow)
        model.selectBank (row);
    else
        setCurrentRow (model.getSelectedBank());
}

void MVBankListView::rowActivated (int)
{
    if (auto* const list = findParentComponentOfClass<MVBankItemSelectComponent>())
        list->focusSlots();
}

void MVBankListView::menuWanted (int)
{
    auto menu = target.createMenu ({ Command::editBank, Command::moveBankUp, Command::moveBankDown, Command::removeBank,
                                     Command::none, Command::newBank, Command::addBank, Command::none, Command::undo,
                                     Command::redo });
    showLibrarianMenu (*this, target, std::move (menu));
}

void MVBankListView::dragWanted (int row)
{
    draggedBank = row;
    if (auto* const container = juce::DragAndDropContainer::findParentDragContainerFor (this))
        container->startDragging (bankDragId, this, juce::ScaledImage (createComponentSnapshot (boundsOfRow (row))));
}

int MVBankListView::gapAt (int y) const { return std::clamp ((y + heightOfRow / 2) / heightOfRow, 0, rowCount()); }

bool MVBankListView::isInterestedInDragSource (const SourceDetails& details)
{
    return details.description == juce::var (MVBankItemSelectComponent::patchDragId)
           || (details.description == juce::var (bankDragId) && details.sourceComponent == this);
}

void MVBankListView::itemDragMove (const SourceDetails& details)
{
    const bool isBank = details.description == juce::var (bankDragId);
    dropGap = isBank ? gapAt (details.localPosition.y) : noRow;
    dropRow = isBank ? noRow : rowAt (details.localPosition);
    repaint();
}

void MVBankListView::itemDragExit (const SourceDetails&)
{
    dropGap = noRow;
    dropRow = noRow;
    repaint();
}

void MVBankListView::itemDropped (const SourceDetails& details)
{
    const int gap = gapAt (details.localPosition.y);
    const int row = rowAt (details.localPosition);
    itemDragExit (details);

    if (details.description == juce::var (bankDragId))
        model.moveBank (draggedBank, gap > draggedBank ? gap - 1 : gap);
    else if (row != noRow && row != model.getSelectedBank())
        model.copyToEmptySlots (model.getSelectedBank(), model.getSelectedSlots(), row);
}

} // namespace morvanelab
