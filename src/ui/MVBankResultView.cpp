// SPDX-License-Identifier: GPL-3.0-or-later
#include "ui/MVBankResultView.h"

#include "ui/MVBankItemSelectComponent.h"
#include "ui/MVIcons.h"
#include "ui/MVTheme.h"

#include <algorithm>

namespace morvanelab
{

namespace
{

using Command = MVLibrarianCommand;

} // namespace

MVBankResultView::MVBankResultView (MVLibrarianModel& modelToUse, MVLibrarianCommandTarget& targetToUse)
    : MVBankRows (heightOfRow), model (modelToUse), target (targetToUse)
{
    setComponentID ("librarian_results");
    setTitle ("Found patches");
}

void MVBankResultView::update()
{
    results = model.getResults();
    loaded = model.getLoadedPatch();
    rowsChanged();

    int current = noRow;
    const auto& slots = model.getSelectedSlots();
    for (int row = 0; row < rowCount() && slots.count() == 1; ++row)
    {
        const auto& address = results[static_cast<std::size_t> (row)];
        if (address.bank == model.getSelectedBank() && slots[static_cast<std::size_t> (address.slot)])
            current = row;
    }
    setCurrentRow (current);
}

void MVBankResultView::paintRow (juce::Graphics& graphics, int row, juce::Rectangle<int> bounds, const RowLook& look)
{
    const auto& address = results[static_cast<std::size_t> (row)];
    const auto& slot = model.getCatalogue().slot (address);
    const bool isLoaded = loaded && *loaded == address;

    const auto body = bounds.reduced (2, 1).toFloat();
    if (look.current || look.hovered || row % 2 != 0)
    {
        graphics.setColour (themeColour (look.current   ? MVThemeColour::selection
                                         : look.hovered ? MVThemeColour::controlHover
                                                        : MVThemeColour::fieldAlternate));
        graphics.fillRoundedRectangle (body, metrics::corner);
    }
    if (look.focused)
    {
        graphics.setColour (themeColour (MVThemeColour::focus));
        graphics.drawRoundedRectangle (body.reduced (0.5F), metrics::corner, metrics::hairline);
    }

    auto text = bounds.reduced (metrics::gap, 0);
    const auto mark = text.removeFromLeft (14).withSizeKeepingCentre (10, 10).toFloat();
    if (isLoaded)
        drawIcon (graphics, MVIcon::play, mark, themeColour (MVThemeColour::accent));

    const int width = text.getWidth();
    graphics.setColour (themeColour (isLoaded ? MVThemeColour::accent : MVThemeColour::text));
    graphics.setFont (themeFont (fontHeights::normal));
    graphics.drawText (slot.name, text.removeFromLeft (width * 42 / 100).withTrimmedRight (metrics::gap),
                       juce::Justification::centredLeft);

    graphics.setFont (themeFont (fontHeights::small));
    graphics.setColour (themeColour (MVThemeColour::textDim));
    const auto detail = slot.genre.isEmpty() ? slot.author : slot.genre;
    graphics.drawText (detail, text.removeFromLeft (width * 22 / 100).withTrimmedRight (metrics::gap),
                       juce::Justification::centredLeft);
    graphics.setColour (themeColour (MVThemeColour::textFaint));
    graphics.drawText (juce::String (address.slot + 1), text.removeFromRight (18), juce::Justification::centredRight);
    graphics.drawText (model.getCatalogue().bank (address.bank).name, text, juce::Justification::centredRight);
}

void MVBankResultView::rowChosen (int row)
{
    if (row != noRow)
        model.selectForLoading (results[static_cast<std::size_t> (row)]);
}

void MVBankResultView::rowActivated (int row)
{
    rowChosen (row);
    target.perform (Command::loadPatch);
}

void MVBankResultView::menuWanted (int row)
{
    if (row != noRow)
        showLibrarianMenu (
            *this, target,
            target.createMenu ({ Command::loadPatch, Command::editPatch, Command::none, Command::copy,
                                 Command::exportPatch, Command::clear, Command::none, Command::undo, Command::redo }));
}

void MVBankResultView::dragWanted (int row)
{
    // A load may have taken the selection file away since.
    rowChosen (row);
    if (auto* const container = juce::DragAndDropContainer::findParentDragContainerFor (this))
        container->startDragging (MVBankItemSelectComponent::patchDragId, this,
                                  juce::ScaledImage (createComponentSnapshot (boundsOfRow (row))));
}

} // namespace morvanelab
