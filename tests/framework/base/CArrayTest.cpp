#include "framework/base/CArray.h"

#include "framework/base/CObjArray.h"
#include "framework/base/CString.h"
#include "platform/base/message_boxes.h"
#include "tests/framework/base/AllocationRefusal.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <cstdint>
#include <numeric>
#include <string>
#include <tuple>

namespace kelvo {
namespace {

using platform::MessageBoxRecorder;
using testing::ElementsAre;

TEST(ArrayGrowth, KeepsOneFreeSlot) {
    CArray<int> numbers;
    for (int i = 1; i <= 9; ++i) {
        EXPECT_EQ(numbers.Add(i), i);
        EXPECT_EQ(numbers.Capacity(), i <= 4 ? 5 : 10) << i;
    }
    numbers.Clear();
    EXPECT_EQ(numbers.Count(), 0);
    EXPECT_EQ(numbers.Capacity(), 0);
}

TEST(ArrayGrowth, TakesItsStepFromTheOwner) {
    CArray<int> one_by_one(1);
    for (int i = 0; i < 4; ++i) {
        EXPECT_EQ(one_by_one.Add(i), i + 1);
    }
    EXPECT_THAT(one_by_one.Items(), ElementsAre(0, 1, 2, 3));

    // An owner that raises the step with the count pays a handful of growths, not thousands.
    CArray<unsigned int> index(10000);
    int growths = 0;
    for (unsigned int i = 0; i < 2000000; ++i) {
        const std::int32_t before = index.Capacity();
        index.Add(i);
        growths += before != index.Capacity() ? 1 : 0;
        index.SetGrowthStep(std::max(10000, index.Count()));
    }
    EXPECT_LT(growths, 20);
    EXPECT_EQ(index[1999999], 1999999U);
}

TEST(ArrayElements, MoveDownWhenOneIsRemovedAndAreCopiedWithTheArray) {
    CArray<CString> names;
    for (const char* name : {"a", "b", "c", "d", "e"}) {
        names.Add(name);
    }
    names.RemoveAt(1);
    const CArray<CString> copy(names);
    names.RemoveAt(3);
    names[0] = "z";
    EXPECT_THAT(names.Items(), ElementsAre("z", "c", "d"));
    EXPECT_THAT(copy.Items(), ElementsAre("a", "c", "d", "e"));
}

TEST(ArrayElements, MayBeAddedFromTheArrayItself) {
    CArray<CString> names;
    names.Add("first, and long enough to be noticed when it is freed too early");
    for (int i = 0; i < 20; ++i) {
        names.Add(names[0]);
    }
    EXPECT_EQ(names[20], names[0]);
}

TEST(ArraySize, IsSetInBulk) {
    CArray<unsigned int> index;
    ASSERT_TRUE(index.ResizeForOverwrite(1000000));
    EXPECT_EQ(index.Capacity(), 1000001);
    std::iota(index.begin(), index.end(), 0U);
    ASSERT_TRUE(index.Resize(999999));
    ASSERT_TRUE(index.Resize(1000000));
    EXPECT_EQ(index[999998], 999998U);
    EXPECT_EQ(index[999999], 0U); // a new element
    EXPECT_FALSE(index.Resize(-1));
    EXPECT_EQ(index.Count(), 1000000);
}

TEST(ArrayWithoutMemory, ShowsTheBoxAndIsUnchanged) {
    CArray<int> numbers;
    for (int i = 0; i < 4; ++i) {
        numbers.Add(i);
    }
    const MessageBoxRecorder boxes;
    const AllocationRefusal refusal;
    EXPECT_EQ(numbers.Add(4), 0);
    EXPECT_FALSE(numbers.Resize(20));
    EXPECT_EQ(numbers.Capacity(), 5);
    EXPECT_THAT(numbers.Items(), ElementsAre(0, 1, 2, 3));
    EXPECT_THAT(boxes.Texts(),
                ElementsAre("CArray<Tipo>::AllocSpace() fallito (richiesti 10 elementi)",
                            "CArray<Tipo>::AllocSpace() fallito (richiesti 21 elementi)"));
    EXPECT_EQ(boxes.Boxes()[0].caption, "ERRORE");
    EXPECT_EQ(boxes.Boxes()[0].type, MB_ICONHAND | MB_TOPMOST);
}

/// Counts the living.
class Counted : public CObj {
public:
    Counted() : CObj(1010100) { ++living; }
    ~Counted() override { --living; }
    static inline int living = 0;
};

TEST(ObjectArray, DestroysWhatItOwns) {
    {
        CObjArray owner(CObjArray::kOwnsElements);
        CObjArray viewer;
        for (int i = 1; i <= 5; ++i) {
            auto* object = new Counted;
            EXPECT_EQ(owner.Add(object), i);
            viewer.Add(object);
        }
        EXPECT_EQ(owner.Capacity(), 10);
        EXPECT_EQ(owner.Remove(5), 0);
        EXPECT_EQ(owner.Remove(-1), 0);
        CObj* const third = owner.At(2);
        EXPECT_EQ(owner.Remove(0), 1);
        EXPECT_EQ(owner.At(1), third);
        EXPECT_EQ(Counted::living, 4);
        viewer.Clear();
        EXPECT_EQ(Counted::living, 4);
        EXPECT_EQ(owner.ClassId(), 20030100U);
    }
    EXPECT_EQ(Counted::living, 0);

    CObjArray viewer;
    viewer.Add(new Counted);
    viewer.DestroyAll();
    EXPECT_EQ(Counted::living, 0);
    EXPECT_EQ(viewer.Count(), 0);
}

TEST(ObjectArray, IsWalkedByItsCursor) {
    CObjArray array(CObjArray::kOwnsElements);
    EXPECT_EQ(array.First(), nullptr);
    EXPECT_EQ(array.Next(), nullptr);
    for (int i = 0; i < 3; ++i) {
        array.Add(new Counted);
        EXPECT_EQ(array.Cursor(), i);
    }
    EXPECT_EQ(array.Next(), nullptr);
    EXPECT_EQ(array.First(), array.At(0));
    EXPECT_EQ(array.Next(), array.At(1));
    EXPECT_EQ(array.Next(), array.At(2));
    EXPECT_EQ(array.Next(), nullptr);
    array.Remove(0);
    EXPECT_EQ(array.Cursor(), 1); // below the count
}

TEST(ObjectArray, GivesCapacityBackWhenToldSo) {
    Counted object;
    CObjArray array(CObjArray::kReturnsCapacity);
    EXPECT_EQ(array.Reserve(20), 1);
    EXPECT_EQ(array.Reserve(20), 0);
    for (int i = 0; i < 11; ++i) {
        array.Add(&object);
    }
    EXPECT_EQ(array.Capacity(), 20);
    EXPECT_EQ(array.Remove(0), 1);
    EXPECT_EQ(array.Capacity(), 15);
    while (array.Count() > 0) {
        array.Remove(0);
    }
    EXPECT_EQ(array.Capacity(), 5);

    const AllocationRefusal refusal;
    EXPECT_EQ(array.Reserve(100), 0);
}

TEST(AllocationHelpers, GiveABlockOrTheException4443) {
    EXPECT_EQ(MemCheck(0), nullptr);
    EXPECT_EQ(LumMemoryCheck(MemCheck(8), 0), nullptr);
    auto* block = static_cast<char*>(MemCheck(3));
    std::copy_n("ab", 3, block);
    block = static_cast<char*>(LumMemoryCheck(block, 100000));
    EXPECT_STREQ(block, "ab");
    const MemBlock zeroed = MakeMemBlock(1000);
    EXPECT_TRUE(
        std::all_of(zeroed.get(), zeroed.get() + 1000, [](auto byte) { return byte == 0; }));
    {
        const AllocationRefusal refusal;
        EXPECT_THROW(std::ignore = MemCheck(1), AllocationFailure);
        EXPECT_THROW(std::ignore = MakeMemBlock(1), AllocationFailure);
        try {
            std::ignore = LumMemoryCheck(block, 200000);
            FAIL() << "no exception";
        } catch (const AllocationFailure& failure) {
            EXPECT_EQ(failure.Code(), 4443);
            EXPECT_THAT(failure.Source(), testing::EndsWith("CArrayTest.cpp"));
            EXPECT_GT(failure.Line(), 0U);
        }
    }
    EXPECT_STREQ(block, "ab");
    MemRelease(block);
}

} // namespace
} // namespace kelvo
