#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "vekdll/platform/c_list.h"

namespace {

template <class T>
std::vector<T> Contents(CList<T, T>& list)
{
    std::vector<T> out;
    for (POSITION pos = list.GetHeadPosition(); pos != nullptr;) out.push_back(list.GetNext(pos));
    return out;
}

TEST(CListTest, KeepsInsertionOrderAndCounts)
{
    CList<int, int> list;
    EXPECT_TRUE(list.IsEmpty());
    EXPECT_EQ(list.GetHeadPosition(), nullptr);
    list.AddTail(2);
    list.AddTail(3);
    list.AddHead(1);
    POSITION three = list.Find(3);
    list.InsertBefore(three, 25);
    list.InsertAfter(three, 4);
    EXPECT_EQ(Contents(list), (std::vector<int>{1, 2, 25, 3, 4}));
    EXPECT_EQ(list.GetCount(), 5);
    EXPECT_EQ(list.GetHead(), 1);
    EXPECT_EQ(list.GetTail(), 4);
    EXPECT_EQ(list.GetAt(list.FindIndex(2)), 25);
    EXPECT_EQ(list.FindIndex(5), nullptr);

    std::vector<int> backwards;
    for (POSITION pos = list.GetTailPosition(); pos != nullptr;) backwards.push_back(list.GetPrev(pos));
    EXPECT_EQ(backwards, (std::vector<int>{4, 3, 25, 2, 1}));

    EXPECT_EQ(list.RemoveHead(), 1);
    EXPECT_EQ(list.RemoveTail(), 4);
    EXPECT_EQ(Contents(list), (std::vector<int>{2, 25, 3}));
}

TEST(CListTest, RemovingTheElementJustWalkedPastIsSafe)
{
    CList<int, int> list(3);
    for (int i = 0; i < 20; ++i) list.AddTail(i);
    for (POSITION pos = list.GetHeadPosition(); pos != nullptr;) {
        POSITION current = pos;
        if (list.GetNext(pos) % 3 != 0) list.RemoveAt(current);
    }
    EXPECT_EQ(Contents(list), (std::vector<int>{0, 3, 6, 9, 12, 15, 18}));
    EXPECT_EQ(list.GetCount(), 7);

    // Removing everything while walking leaves an empty, reusable list.
    for (POSITION pos = list.GetHeadPosition(); pos != nullptr;) {
        POSITION current = pos;
        list.GetNext(pos);
        list.RemoveAt(current);
    }
    EXPECT_TRUE(list.IsEmpty());
    EXPECT_EQ(list.GetHeadPosition(), nullptr);
    EXPECT_EQ(list.GetTailPosition(), nullptr);
    list.AddTail(7);
    EXPECT_EQ(Contents(list), (std::vector<int>{7}));
}

TEST(CListTest, PositionsStayStableAndFreedNodesAreReused)
{
    CList<int, int> list(4);
    std::vector<POSITION> positions;
    for (int i = 0; i < 10; ++i) positions.push_back(list.AddTail(i));
    // Growing the pool by further blocks moves no node.
    for (int i = 0; i < 100; ++i) list.AddTail(1000 + i);
    for (int i = 0; i < 10; ++i) EXPECT_EQ(list.GetAt(positions[i]), i);

    // The most recently freed node is handed out first.
    list.RemoveAt(positions[3]);
    list.RemoveAt(positions[7]);
    EXPECT_EQ(list.AddTail(-1), positions[7]);
    EXPECT_EQ(list.AddHead(-2), positions[3]);
    EXPECT_EQ(list.GetCount(), 110);
}

TEST(CListTest, HoldsNonTrivialElementsWithoutLeaks)
{
    CList<std::string> list(2);
    for (int i = 0; i < 9; ++i) list.AddTail(std::string(40, static_cast<char>('a' + i)));
    list.RemoveAt(list.FindIndex(4));
    EXPECT_EQ(list.RemoveHead(), std::string(40, 'a'));
    EXPECT_EQ(list.GetCount(), 7);
    list.RemoveAll();
    EXPECT_TRUE(list.IsEmpty());
    list.AddTail("again");
    EXPECT_EQ(list.GetHead(), "again");
}

TEST(CListTest, PointerListsAndTypedPointerLists)
{
    int a = 1, b = 2;
    CPtrList untyped;
    untyped.AddTail(&a);
    untyped.AddTail(&b);
    EXPECT_EQ(static_cast<int*>(untyped.GetTail()), &b);

    CTypedPtrList<CPtrList, int*> typed;
    typed.AddTail(&a);
    typed.AddTail(&b);
    POSITION pos = typed.GetHeadPosition();
    typed.GetNext(pos) = &b; // elements are writable through the reference
    EXPECT_EQ(*typed.GetHead(), 2);
    EXPECT_EQ(typed.GetAt(pos), &b);

    CList<int, int> other;
    other.AddTail(5);
    other.AddTail(6);
    CList<int, int> joined;
    joined.AddTail(4);
    joined.AddTail(&other);
    EXPECT_EQ(Contents(joined), (std::vector<int>{4, 5, 6}));
}

} // namespace
