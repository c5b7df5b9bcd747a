#include "ZRCommon/ZRArrayControllerExtensions.h"

#include "Platform/Foundation/ValueObjects.h"
#include "Support/IndexSets.h"

#include <memory>

#include <gtest/gtest.h>

namespace {

using namespace ZRArrayControllerExtensions;
using platform::IndexRange;
using platform::IndexSet;
using platform::Number;
using platform::ObjectPointer;
using testSupport::indexes;

ObjectPointer letter(QChar character)
{
    return std::make_shared<platform::String>(character);
}

ObjectPointer number(int value)
{
    return std::make_shared<Number>(value);
}

/// A list of the letters a to h, and one of the numbers 3, 2, 1, 0, among which an object's index is another object.
class ArrayControllerExtensions : public testing::Test
{
protected:
    ArrayControllerExtensions()
    {
        QList<ObjectPointer> content;
        for (char character = 'a'; character <= 'h'; ++character)
            content.append(letter(QLatin1Char(character)));
        letters.setContent(content);
        numbers.setContent({number(3), number(2), number(1), number(0)});
    }
    void click(char character) { adjustSelection(letters, letter(QLatin1Char(character)), false, false); }
    void shiftClick(char character) { adjustSelection(letters, letter(QLatin1Char(character)), true, false); }
    void commandClick(char character) { adjustSelection(letters, letter(QLatin1Char(character)), false, true); }

    platform::ArrayController letters, numbers;
    const ObjectPointer stranger = letter(u'z');
};

// Questions

TEST_F(ArrayControllerExtensions, AnObjectIsSelectedWhenItsIndexIs)
{
    letters.setSelectionIndexes(indexes({2, 5}));
    EXPECT_TRUE(selectionContainsObject(letters, letter(u'c'))); // an equal object will do
    EXPECT_FALSE(selectionContainsObject(letters, letter(u'd')));
    EXPECT_FALSE(selectionContainsObject(letters, stranger));
    letters.setSelectionIndexes(IndexSet(IndexSet::NotFound));
    EXPECT_FALSE(selectionContainsObject(letters, stranger));
}

// Clicks

TEST_F(ArrayControllerExtensions, APlainClickSelectsTheObjectAlone)
{
    click('c');
    EXPECT_EQ(letters.selectionIndexes(), indexes({2}));
    click('e');
    EXPECT_EQ(letters.selectionIndexes(), indexes({4}));
    letters.setSelectionIndexes(indexes({1, 4}));
    click('e');
    EXPECT_EQ(letters.selectionIndexes(), indexes({4}));
}

TEST_F(ArrayControllerExtensions, APlainClickOnTheSoleSelectedObjectChangesNothing)
{
    click('c');
    int announcements = 0;
    QObject::connect(&letters, &platform::ArrayController::selectionIndexesChanged, [&] { ++announcements; });
    click('c');
    EXPECT_EQ(announcements, 0);
    EXPECT_EQ(letters.selectionIndexes(), indexes({2}));
}

TEST_F(ArrayControllerExtensions, AShiftClickWithoutASelectionSelectsTheObjectAlone)
{
    shiftClick('d');
    EXPECT_EQ(letters.selectionIndexes(), indexes({3}));
}

TEST_F(ArrayControllerExtensions, AShiftClickExtendsTheSelection)
{
    click('c');
    shiftClick('f');
    EXPECT_EQ(letters.selectionIndexes(), IndexSet(IndexRange{2, 5}));
    shiftClick('c'); // the sole selected one no more
    EXPECT_EQ(letters.selectionIndexes(), IndexSet(IndexRange{2, 2}));
}

TEST_F(ArrayControllerExtensions, ACommandClickOnTheOnlySelectedObjectDeselectsIt)
{
    numbers.setSelectionIndex(1); // the object 2, at whose index 2 there is 1
    adjustSelection(numbers, number(2), false, true);
    EXPECT_EQ(numbers.selectionIndexes(), indexes({1})); // 1 was to be deselected, and was not selected
    numbers.setContent({number(0), number(1), number(2)});
    numbers.setSelectionIndex(1);
    adjustSelection(numbers, number(1), false, true);
    EXPECT_TRUE(numbers.selectionIndexes().isEmpty());
}

TEST_F(ArrayControllerExtensions, TheCommandKeyGoesBeforeTheShiftKey)
{
    numbers.setContent({number(0), number(1), number(2), number(3)});
    numbers.setSelectionIndexes(indexes({0}));
    adjustSelection(numbers, number(3), true, true);
    EXPECT_EQ(numbers.selectionIndexes(), indexes({0, 3}));
}

TEST_F(ArrayControllerExtensions, ACommandClickChangesNothingAmongObjectsThatAreNoNumbers)
{
    click('c');
    commandClick('e');
    commandClick('c');
    EXPECT_EQ(letters.selectionIndexes(), indexes({2}));
}

// Ranges

struct RangeRule {
    qint64 firstSelected, target;
    IndexRange expected;
};

TEST_F(ArrayControllerExtensions, ExtendingTakesTheLargerIndexAsTheLength)
{
    const RangeRule rules[] = {
        {2, 5, {2, 5}}, // 2 to 6
        {5, 2, {2, 5}}, // the same
        {3, 3, {3, 3}}, // 3 to 5
        {0, 0, {0, 0}}, // none
        {0, 4, {0, 4}}, {4, 0, {0, 4}}, {7, 6, {6, 7}}, // beyond the objects
    };
    for (const RangeRule &rule : rules) {
        letters.setSelectionIndexes(IndexSet(IndexRange{rule.firstSelected, 1}));
        extendSelectionToObject(letters, letters.content().at(rule.target));
        EXPECT_EQ(letters.selectionIndexes(), IndexSet(rule.expected)) << rule.firstSelected << " " << rule.target;
    }
}

TEST_F(ArrayControllerExtensions, ExtendingStartsAtTheLowestSelectedIndexAndReplacesTheOthers)
{
    letters.setSelectionIndexes(indexes({3, 6, 7}));
    extendSelectionToObject(letters, letter(u'e'));
    EXPECT_EQ(letters.selectionIndexes(), IndexSet(IndexRange{3, 4}));
}

TEST_F(ArrayControllerExtensions, ExtendingWithoutASelectionReachesAsFarAsTheIndexOfNothing)
{
    extendSelectionToObject(letters, letter(u'c'));
    EXPECT_EQ(letters.selectionIndexes(), IndexSet(IndexRange{2, 0x7fffffff}));
    EXPECT_EQ(letters.selectedObjects().size(), 6);
}

// The index as a number

TEST_F(ArrayControllerExtensions, WhatIsSelectedIsTheNumberOfTheIndex)
{
    EXPECT_TRUE(setSelectedObject(numbers, number(3))); // is at 0, so that 0 is selected, which is at 3
    EXPECT_EQ(numbers.selectionIndexes(), indexes({3}));
    EXPECT_FALSE(setSelectedObject(numbers, number(3))); // is so already
    addSelectedObject(numbers, number(2)); // at 1, where 1 is at 2
    EXPECT_EQ(numbers.selectionIndexes(), indexes({2, 3}));
    removeSelectedObject(numbers, number(3));
    EXPECT_EQ(numbers.selectionIndexes(), indexes({2}));
    toggleSelectionOfObject(numbers, number(0)); // at 3, not selected: adds 3, which is at 0
    EXPECT_EQ(numbers.selectionIndexes(), indexes({0, 2}));
    toggleSelectionOfObject(numbers, number(1)); // at 2, selected: removes 2, which is at 1
    EXPECT_EQ(numbers.selectionIndexes(), indexes({0, 2}));
    toggleSelectionOfObject(numbers, number(3)); // at 0, selected: removes 0, which is at 3
    EXPECT_EQ(numbers.selectionIndexes(), indexes({0, 2}));
}

TEST_F(ArrayControllerExtensions, ObjectsThatAreNoNumbersAreNeitherSelectedNorDeselected)
{
    letters.setSelectionIndexes(indexes({1}));
    EXPECT_FALSE(setSelectedObject(letters, letter(u'e')));
    addSelectedObject(letters, letter(u'e'));
    removeSelectedObject(letters, letter(u'b'));
    toggleSelectionOfObject(letters, letter(u'e'));
    toggleSelectionOfObject(letters, letter(u'b'));
    EXPECT_EQ(letters.selectionIndexes(), indexes({1}));
}

// What is not in the content

TEST_F(ArrayControllerExtensions, AnObjectThatIsNotInTheContentChangesNothing)
{
    for (const ObjectPointer &object : {stranger, ObjectPointer()}) {
        letters.setSelectionIndexes(indexes({1, 2}));
        EXPECT_FALSE(selectionContainsObject(letters, object));
        EXPECT_FALSE(setSelectedObject(letters, object));
        addSelectedObject(letters, object);
        removeSelectedObject(letters, object);
        toggleSelectionOfObject(letters, object);
        extendSelectionToObject(letters, object);
        for (const bool shiftDown : {false, true}) {
            for (const bool commandDown : {false, true})
                adjustSelection(letters, object, shiftDown, commandDown);
        }
        EXPECT_EQ(letters.selectionIndexes(), indexes({1, 2}));
    }
}

} // namespace
