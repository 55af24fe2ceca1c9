// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "ui/MVBankRows.h"
#include "ui/MVLibrarianCommands.h"
#include "ui/MVLibrarianModel.h"

#include <functional>

namespace morvanelab
{

/** What a search has found, one patch a row: name, author, genre, and where it lies. Message thread. */
class MVBankResultView : public MVBankRows
{
public:
    static constexpr int heightOfRow = 26;

    /** Both must outlive the view. */
    MVBankResultView (MVLibrarianModel& modelToUse, MVLibrarianCommandTarget& targetToUse);

    /** Shows what the model holds now. */
    void update();

private:
    int rowCount() const override { return static_cast<int> (results.size()); }
    void paintRow (juce::Graphics& graphics, int row, juce::Rectangle<int> bounds, const RowLook& look) override;
    void rowChosen (int row) override;
    void rowActivated (int row) override;
    void menuWanted (int row) override;
    void dragWanted (int row) override;

    MVLibrarianModel& model;
    MVLibrarianCommandTarget& target;
    std::vector<MVPatchAddress> results;
    std::optional<MVPatchAddress> loaded;
};

} // namespace morvanelab
