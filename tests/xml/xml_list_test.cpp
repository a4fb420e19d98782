#include "xml/xml_list.h"

#include <gtest/gtest.h>

#include <utility>
#include <vector>

namespace velmora {
namespace {

struct Item {
    int number = 0;
    Item* next = nullptr;
};

using Numbers = std::vector<int>;

Numbers NumbersOf(const XmlList<Item>& list) {
    Numbers numbers;
    for (const Item& item : list) numbers.push_back(item.number);
    return numbers;
}

TEST(XmlList, IsEmptyAtFirst) {
    const XmlList<Item> list;
    EXPECT_TRUE(list.empty());
    EXPECT_EQ(list.size(), 0U);
    EXPECT_EQ(NumbersOf(list), Numbers());
}

TEST(XmlList, HoldsItemsInTheOrderInWhichTheyWereAppended) {
    Item items[] = {{1}, {2}, {3}};
    XmlList<Item> list;
    Numbers appended;
    for (Item& item : items) {
        list.append(item);
        appended.push_back(item.number);
        EXPECT_EQ(NumbersOf(list), appended);
        EXPECT_EQ(list.size(), appended.size());
        EXPECT_EQ(&list.front(), items);
    }
}

TEST(XmlList, LeavesItemsWhereTheyAre) {
    Item items[] = {{1}, {2}};
    XmlList<Item> list;
    for (Item& item : items) list.append(item);
    for (Item& item : list) item.number *= 10;
    EXPECT_EQ(items[0].number, 10);
    EXPECT_EQ(items[1].number, 20);
}

TEST(XmlList, TakesAllOfAnotherListBehindItsOwn) {
    for (int own = 0; own <= 2; ++own) {
        for (int others = 0; others <= 2; ++others) {
            SCOPED_TRACE(testing::Message() << own << " and " << others);
            std::vector<Item> items(4);
            XmlList<Item> list;
            XmlList<Item> other;
            Numbers expected;
            for (int index = 0; index < own + others; ++index) {
                Item& item = items[static_cast<size_t>(index)];
                item.number = index;
                (index < own ? list : other).append(item);
                expected.push_back(index);
            }
            list.appendAll(other);
            EXPECT_EQ(NumbersOf(list), expected);
            EXPECT_TRUE(other.empty());

            Item last = {9};
            list.append(last);
            expected.push_back(9);
            EXPECT_EQ(NumbersOf(list), expected);
        }
    }
}

TEST(XmlList, GivesItsItemsBackFromTheFront) {
    Item items[] = {{1}, {2}, {3}};
    XmlList<Item> list;
    for (Item& item : items) list.append(item);
    EXPECT_EQ(&list.takeFront(), &items[0]);
    EXPECT_EQ(NumbersOf(list), Numbers({2, 3}));
    EXPECT_EQ(&list.takeFront(), &items[1]);
    EXPECT_EQ(&list.takeFront(), &items[2]);
    EXPECT_TRUE(list.empty());
    list.append(items[1]);
    EXPECT_EQ(NumbersOf(list), Numbers({2}));
}

TEST(XmlList, LeavesNothingBehindWhenItMoves) {
    Item item = {1};
    XmlList<Item> list;
    list.append(item);
    const XmlList<Item> moved(std::move(list));
    EXPECT_EQ(NumbersOf(moved), Numbers({1}));
    EXPECT_TRUE(list.empty());  // NOLINT(bugprone-use-after-move): that is what is asked
}

}  // namespace
}  // namespace velmora
