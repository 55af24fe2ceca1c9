// SPDX-License-Identifier: GPL-3.0-or-later
#include "foundation/MVList.h"
#include "foundation/MVLog.h"
#include "foundation/MVMap.h"
#include "foundation/MVRiffPacker.h"
#include "foundation/MVSmartPtr.h"
#include "foundation/MVString.h"
#include "foundation/MVVector.h"
#include "support/AllocationWatch.h"
#include "support/TempFolder.h"

#include <gtest/gtest.h>

#include <string>
#include <thread>
#include <vector>

namespace morvanelab
{

namespace
{

std::vector<int> walk (MVList<int>& list)
{
    std::vector<int> items;
    for (int i = 0; list.itemAt (i) != nullptr; ++i)
        items.push_back (*list.itemAt (i));
    return items;
}

struct Counted
{
    explicit Counted (std::atomic<int>& alive) : count (alive) { ++count; }
    virtual ~Counted() { --count; }
    Counted (const Counted&) = delete;
    std::atomic<int>& count;
};

struct DerivedCounted : Counted
{
    using Counted::Counted;
};

/** What the log holds after action; the log then goes nowhere. */
template <typename Action>
std::string logged (Action&& action)
{
    const test::TempFolder folder;
    mvLogOpen (folder.file ("log.txt").c_str());
    action();
    const auto bytes = test::readFile (folder.file ("log.txt"));
    mvLogOpen ("/dev/null");
    return { bytes.begin(), bytes.end() };
}

} // namespace

TEST (Vector, readsOutsideYieldTheDefault)
{
    MVVector<int> numbers;
    numbers.add (5);
    EXPECT_EQ (numbers.itemAt (1), 0);
    EXPECT_EQ (numbers.itemAt (-1), 0);
    numbers.setDefault (7);
    EXPECT_EQ (numbers.itemAt (1), 7);
    numbers.setItem (3, 9);
    EXPECT_EQ (numbers.size(), 4);
    EXPECT_EQ (numbers.itemAt (2), 7);
    numbers.setItem (-1, 3);
    EXPECT_EQ (numbers.size(), 4);
}

TEST (Vector, takesValuesThatLiveInItself)
{
    MVVector<MVString> texts;
    texts.add ("a text that is long enough to be on the heap");
    for (int i = 0; i < 40; ++i)
        texts.add (texts[0]);
    texts.insert (0, texts[40]);
    texts.setItem (100, texts[0]);
    EXPECT_TRUE (texts[41].equals ("a text that is long enough to be on the heap"));
    EXPECT_TRUE (texts[100].equals (texts[0]));
}

TEST (Vector, growsByHalfAndRemovesTheFirstMatch)
{
    MVVector<int> numbers;
    numbers.reserve (10);
    for (int i = 0; i < 11; ++i)
        numbers.add (i % 4);
    EXPECT_EQ (numbers.capacity(), 15);
    EXPECT_TRUE (numbers.removeValue (3));
    EXPECT_FALSE (numbers.removeValue (9));
    EXPECT_EQ (numbers[3], 0);
    numbers.removeAt (10);
    EXPECT_EQ (numbers.size(), 10);
}

TEST (List, keepsOrderAndRejectsIndicesOutside)
{
    MVList<int> list;
    list.addTail (2);
    list.addHead (1);
    EXPECT_TRUE (list.insertAt (2, 4));
    EXPECT_TRUE (list.insertAt (2, 3));
    EXPECT_FALSE (list.insertAt (5, 9));
    EXPECT_FALSE (list.insertAt (-1, 9));
    EXPECT_EQ (walk (list), (std::vector { 1, 2, 3, 4 }));

    EXPECT_FALSE (list.removeAt (4));
    EXPECT_TRUE (list.removeAt (1));
    EXPECT_EQ (walk (list), (std::vector { 1, 3, 4 }));

    int value = 0;
    EXPECT_TRUE (list.popTail (value));
    EXPECT_EQ (value, 4);
    EXPECT_TRUE (list.popHead (value));
    EXPECT_TRUE (list.popHead (value));
    EXPECT_EQ (value, 3);
    EXPECT_FALSE (list.popTail (value));
    EXPECT_FALSE (list.removeAt (0));
    EXPECT_EQ (list.count(), 0);
}

TEST (List, recyclesItsNodes)
{
    MV_SKIP_WITHOUT_ALLOCATION_WATCH();

    MVList<int> list;
    for (int i = 0; i < 8; ++i)
        list.addHead (i);
    list.clear();

    const test::AllocationWatch watch;
    for (int round = 0; round < 3; ++round)
    {
        for (int i = 0; i < 8; ++i)
            list.insertAt (i / 2, i);
        list.clear();
    }
    EXPECT_EQ (watch.count(), 0);
    EXPECT_EQ (list.allocatedNodes(), 8);
}

TEST (List, removedValuesAreReleasedAtOnce)
{
    std::atomic<int> alive { 0 };
    MVList<MVSmartPtr<Counted>> list;
    list.addTail (makeSmart<Counted> (alive));
    list.addTail (makeSmart<Counted> (alive));
    EXPECT_TRUE (list.removeAt (0));
    EXPECT_EQ (alive, 1);
    list.clear();
    EXPECT_EQ (alive, 0);
}

TEST (Map, walksInKeyOrder)
{
    MVMap<MVString, int> map;
    map.insert ("b") = 2;
    map.insertOrReplace ("a", 1);
    map.insertOrReplace ("b", 3);
    EXPECT_EQ (map.count(), 2);
    EXPECT_EQ (*map.valueAt (0), 1);
    EXPECT_TRUE (map.keyAt (1)->equals ("b"));
    EXPECT_EQ (*map.find ("b"), 3);
    EXPECT_EQ (map.find ("c"), nullptr);
    EXPECT_EQ (map.valueAt (2), nullptr);
    EXPECT_EQ (map.valueAt (-1), nullptr);
    EXPECT_EQ (map.insert ("c"), 0);
}

TEST (SmartPtr, countsReferencesOverCopiesAndCasts)
{
    std::atomic<int> alive { 0 };
    MVSmartPtr<Counted> first (new DerivedCounted (alive));
    MVSmartPtr<Counted> second = first;
    EXPECT_EQ (first.referenceCount(), 2U);
    second = first;
    first = *&first;
    EXPECT_EQ (first.referenceCount(), 2U);

    MVSmartPtr<DerivedCounted> cast = first.castTo<DerivedCounted>();
    EXPECT_EQ (first.referenceCount(), 3U);
    EXPECT_TRUE (MVSmartPtr<Counted> (new Counted (alive)).castTo<DerivedCounted>() == nullptr);

    first.clear();
    second.clear();
    EXPECT_EQ (alive, 1);
    cast = MVSmartPtr<DerivedCounted>();
    EXPECT_EQ (alive, 0);

    const MVSmartPtr<Counted> null (nullptr);
    EXPECT_TRUE (null == nullptr);
    EXPECT_EQ (null.referenceCount(), 0U);
}

TEST (SmartPtr, lastOfTwoThreadsDestroysOnce)
{
    std::atomic<int> alive { 0 };

    for (int round = 0; round < 200; ++round)
    {
        MVSmartPtr<Counted> mine = makeSmart<Counted> (alive);
        MVSmartPtr<Counted> theirs = mine;
        std::thread other ([&theirs] { theirs.clear(); });
        mine.clear();
        other.join();
        ASSERT_EQ (alive, 0);
    }
}

TEST (Object, copiesAreObjectsOfTheirOwn)
{
    MVDataBlock block (4);
    block.setEnabled (true);
    const MVDataBlock copy (block);
    EXPECT_NE (block.getId(), copy.getId());
    EXPECT_TRUE (copy.isEnabled());
    EXPECT_TRUE (block.isClassNamed ("MVDataBlock"));
    EXPECT_FALSE (block.isClassNamed ("MVDataBloc"));
    EXPECT_EQ (block.typeId(), 0xC00003U);

    MVRiffPacker target (1);
    target.copyFrom (block);
    EXPECT_EQ (target.getId(), block.getId());
    EXPECT_FALSE (MVObject().isClassNamed ("MVObject"));
}

TEST (Log, boundsFailureNamesTheWholeContainer)
{
    const std::string text = logged (
        []
        {
            MVVector<MVSmartPtr<MVRiffPacker>> chunks;
            EXPECT_TRUE (chunks.itemAt (0) == nullptr);
            MVVector<int> numbers;
            numbers.add (1);
            numbers.itemAt (4);
            numbers.setDefault (3);
            numbers.itemAt (4);
        });

    EXPECT_EQ (text,
               "[ERROR] morvanelab::MVVector<class morvanelab::MVSmartPtr<class morvanelab::MVRiffPacker> >::itemAt "
               "Attempting to access item 0 out of range 0\n"
               "[ERROR] morvanelab::MVVector<int>::itemAt Attempting to access item 4 out of range 1\n");
}

TEST (Log, linesAreComposedAndCut)
{
    const std::string longText (3000, 'x');
    const std::string text = logged (
        [&longText]
        {
            mvLog ("LOAD", "f", "%d of %s", 3, "four");
            mvLog ("LOAD", "", "bare");
            mvLog ("LOAD", "f", nullptr);
            mvLog ("LOAD", nullptr, "%s", longText.c_str());
        });
    EXPECT_EQ (text, "[LOAD] f 3 of four\nbare\n[LOAD] f \n" + longText.substr (0, 2047) + "\n");
}

} // namespace morvanelab
