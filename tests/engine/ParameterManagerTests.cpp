// SPDX-License-Identifier: GPL-3.0-or-later
#include "control/MVControlManager.h"
#include "engine/MVParameterManager.h"
#include "foundation/MVChunks.h"

#include <gtest/gtest.h>

#include <cstring>
#include <vector>

namespace morvanelab::test
{

namespace
{

class ParameterManager : public testing::Test
{
protected:
    ParameterManager()
    {
        controls.resizeControls (20);
        for (int i = 0; i < 10; ++i)
            controls.acquireControl (i + 1);
    }

    double valueOf (int id)
    {
        controls.processAsyncValues();
        return controls.getControlValue (id);
    }

    /** A tree with the given version and one mapping and value of parameter 3. */
    static MVSmartPtr<MVRiffPacker> storedTree (std::uint32_t revision, const char (&valueTag)[5])
    {
        auto root = makeSmart<MVRiffPacker> (fourCC ("pmgr"));
        const std::uint32_t version[] { 1, 4, revision, 1 };
        root->addChild (makeSmart<MVRiffPacker> (fourCC ("ver "), version, 16));

        auto map = makeSmart<MVRiffPacker> (fourCC ("cmap"));
        for (int i = 0; i < 4; ++i)
            map->addChild (makeSmart<MVRiffPacker> (fourCC ("parm")));
        addChunk (*map->childAt (3), fourCC (valueTag), 0.75);
        addChunk (*map->childAt (3), fourCC ("pmap"), std::uint64_t { 0xFFFF0005 });
        root->addChild (map);
        return root;
    }

    MVControlManager controls { nullptr };
    MVParameterManager parameters { &controls, nullptr };
};

} // namespace

TEST_F (ParameterManager, writesEveryMappedControlOncePerNewValue)
{
    parameters.setControl (2, 4);
    parameters.addControl (2, 6);
    EXPECT_EQ (parameters.setValue (2, 0.25), 1);
    EXPECT_NEAR (valueOf (4), 0.25, 1e-9);
    EXPECT_NEAR (valueOf (6), 0.25, 1e-9);

    // The same value again does not put back what another route has changed.
    controls.setControlValue (4, 1.0);
    EXPECT_EQ (parameters.setValue (2, 0.25), 1);
    EXPECT_EQ (valueOf (4), 1.0);

    double value = 0.0;
    EXPECT_EQ (parameters.getValue (2, value), 1);
    EXPECT_EQ (value, 0.25);
    parameters.reset();
    parameters.getValue (2, value);
    EXPECT_EQ (value, 0.0);
}

TEST_F (ParameterManager, indicesOutsideAreRejectedQuietly)
{
    for (const int index : { -1, 32, 2147483647, -2147483647 - 1 })
    {
        double value = 7.0;
        EXPECT_EQ (parameters.setValue (index, 1.0), 13);
        EXPECT_EQ (parameters.getValue (index, value), 13);
        EXPECT_EQ (value, 7.0);
        EXPECT_EQ (parameters.setControl (index, 1), 13);
        EXPECT_EQ (parameters.addControl (index, 1), 13);
        EXPECT_FALSE (parameters.isMapped (index, 1));
    }
}

TEST_F (ParameterManager, removesEveryOccurrenceAndKeepsTheOrderOfTheRest)
{
    std::vector<std::uint16_t> kept;
    MVControlIdList list;
    for (std::uint16_t i = 0; i < 200; ++i)
        list.add (static_cast<std::uint16_t> (i % 7));
    list.removeIf ([] (std::uint16_t id) { return id == 3; });
    list.add (99);
    list.forEach ([&] (std::uint16_t id) { kept.push_back (id); });

    std::vector<std::uint16_t> expected;
    for (std::uint16_t i = 0; i < 200; ++i)
        if (i % 7 != 3)
            expected.push_back (static_cast<std::uint16_t> (i % 7));
    expected.push_back (99);
    EXPECT_EQ (kept, expected);

    parameters.addControl (5, 9);
    parameters.addControl (5, 9);
    parameters.addControl (8, 9);
    int index = 0;
    EXPECT_TRUE (parameters.findParameter (9, index));
    EXPECT_EQ (index, 5);
    parameters.removeControl (9);
    EXPECT_FALSE (parameters.isMapped (8, 9));
    EXPECT_FALSE (parameters.findParameter (9, index));
    EXPECT_EQ (index, -1);
}

TEST_F (ParameterManager, prunesControlsThatAreNotInUse)
{
    parameters.addControl (0, 3);
    parameters.addControl (0, 15);
    parameters.pruneInvalidControls();
    EXPECT_TRUE (parameters.isMapped (0, 3));
    EXPECT_FALSE (parameters.isMapped (0, 15));
}

TEST_F (ParameterManager, loadRestoresMappingsAndOnlyValuesUnderTheOldTag)
{
    double value = 0.0;
    parameters.addControl (1, 2);

    EXPECT_EQ (parameters.loadRiff (*storedTree (0, "pVal")), 1);
    EXPECT_FALSE (parameters.isMapped (1, 2));
    EXPECT_TRUE (parameters.isMapped (3, 5));
    parameters.getValue (3, value);
    EXPECT_EQ (value, 0.75);

    parameters.reset();
    EXPECT_EQ (parameters.loadRiff (*storedTree (0, "pval")), 1);
    parameters.getValue (3, value);
    EXPECT_EQ (value, 0.0);

    EXPECT_EQ (parameters.loadRiff (*storedTree (1, "pVal")), 1);
    EXPECT_FALSE (parameters.isMapped (3, 5));

    parameters.addControl (1, 2);
    EXPECT_EQ (parameters.loadRiff (MVRiffPacker (fourCC ("midm"))), 16);
    EXPECT_TRUE (parameters.isMapped (1, 2));
}

TEST_F (ParameterManager, savedTreeHoldsAllParametersAndComesBack)
{
    parameters.setControl (31, 7);
    parameters.addControl (31, 7);
    parameters.setValue (31, 0.5);
    const auto saved = parameters.saveRiff();
    const auto map = saved->findChild (fourCC ("cmap"));
    ASSERT_TRUE (map);
    EXPECT_EQ (map->countChildren (fourCC ("parm")), 32);

    const auto last = map->findChild (fourCC ("parm"), 31);
    EXPECT_EQ (childNumber<double> (*last, fourCC ("pval")), 0.5);
    EXPECT_EQ (last->countChildren (fourCC ("pmap")), 2);
    EXPECT_EQ (last->findChild (fourCC ("pmap"))->getPayloadSize(), 8);

    MVParameterManager other (&controls, nullptr);
    EXPECT_EQ (other.loadRiff (*saved), 1);
    EXPECT_TRUE (other.isMapped (31, 7));
}

} // namespace morvanelab::test
