#include "ZRCommon/Typing.h"

#include <gtest/gtest.h>

using platform::ObjectPointer;
using platform::ObjectSet;
using Typing::containsAtLeastOneObjectOfType;
using Typing::containsOnlyObjectsOfType;
using Typing::subsetWithObjectsOfType;

namespace {

class Shape : public platform::Object
{
    ZR_OBJECT(Shape, platform::Object)
};

class Circle : public Shape
{
    ZR_OBJECT(Circle, Shape)
};

class Note : public platform::Object
{
    ZR_OBJECT(Note, platform::Object)
};

const ObjectPointer shape = std::make_shared<Shape>();
const ObjectPointer circle = std::make_shared<Circle>();
const ObjectPointer note = std::make_shared<Note>();

TEST(Typing, AnEmptySetContainsNeitherOnlyNorAtLeastOneObjectOfAType)
{
    EXPECT_FALSE(containsOnlyObjectsOfType({}, platform::Object::staticClass()));
    EXPECT_FALSE(containsAtLeastOneObjectOfType({}, platform::Object::staticClass()));
    EXPECT_TRUE(subsetWithObjectsOfType({}, platform::Object::staticClass()).empty());
}

TEST(Typing, ASetContainsOnlyObjectsOfATypeWhenEveryMemberIsOfIt)
{
    EXPECT_TRUE(containsOnlyObjectsOfType({shape}, Shape::staticClass()));
    EXPECT_TRUE(containsOnlyObjectsOfType({shape, circle}, Shape::staticClass())) << "a subclass counts";
    EXPECT_TRUE(containsOnlyObjectsOfType({shape, circle, note}, platform::Object::staticClass()));
    EXPECT_FALSE(containsOnlyObjectsOfType({shape, circle}, Circle::staticClass())) << "a superclass does not";
    EXPECT_FALSE(containsOnlyObjectsOfType({shape, note}, Shape::staticClass()));
}

TEST(Typing, ASetContainsAnObjectOfATypeWhenSomeMemberIsOfIt)
{
    EXPECT_TRUE(containsAtLeastOneObjectOfType({circle, note}, Shape::staticClass()));
    EXPECT_TRUE(containsAtLeastOneObjectOfType({circle, note}, Note::staticClass()));
    EXPECT_FALSE(containsAtLeastOneObjectOfType({shape, note}, Circle::staticClass()));
}

TEST(Typing, TheSubsetHoldsTheMembersOfTheTypeAndLeavesTheSetAlone)
{
    const ObjectSet set{shape, circle, note};
    EXPECT_EQ(subsetWithObjectsOfType(set, Shape::staticClass()), (ObjectSet{shape, circle}));
    EXPECT_EQ(subsetWithObjectsOfType(set, Circle::staticClass()), ObjectSet{circle});
    EXPECT_EQ(subsetWithObjectsOfType(set, platform::Object::staticClass()), set);
    EXPECT_TRUE(subsetWithObjectsOfType({shape, note}, Circle::staticClass()).empty());
    EXPECT_EQ(set.size(), 3u);
}

TEST(Typing, ANullPointerIsOfNoType)
{
    EXPECT_FALSE(containsOnlyObjectsOfType({nullptr}, platform::Object::staticClass()));
    EXPECT_FALSE(containsOnlyObjectsOfType({shape, nullptr}, platform::Object::staticClass()));
    EXPECT_FALSE(containsAtLeastOneObjectOfType({nullptr}, platform::Object::staticClass()));
    EXPECT_EQ(subsetWithObjectsOfType({shape, nullptr}, platform::Object::staticClass()), ObjectSet{shape});
}

} // namespace
