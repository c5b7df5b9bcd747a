#include "ZRCommon/Typing.h"

#include "Support/ModelObjects.h"

#include <gtest/gtest.h>

using platform::ObjectPointer;
using platform::ObjectSet;
using Typing::containsAtLeastOneObjectOfType;
using Typing::containsOnlyObjectsOfType;
using Typing::subsetWithObjectsOfType;

namespace {

const ObjectPointer song = std::make_shared<Song>();
const ObjectPointer protectedSong = std::make_shared<ProtectedSong>();
const ObjectPointer photo = std::make_shared<Photo>();

TEST(Typing, AnEmptySetContainsNeitherOnlyNorAtLeastOneObjectOfAType)
{
    EXPECT_FALSE(containsOnlyObjectsOfType({}, platform::Object::staticClass()));
    EXPECT_FALSE(containsAtLeastOneObjectOfType({}, platform::Object::staticClass()));
    EXPECT_TRUE(subsetWithObjectsOfType({}, platform::Object::staticClass()).empty());
}

TEST(Typing, ASetContainsOnlyObjectsOfATypeWhenEveryMemberIsOfIt)
{
    EXPECT_TRUE(containsOnlyObjectsOfType({song}, Song::staticClass()));
    EXPECT_TRUE(containsOnlyObjectsOfType({song, protectedSong}, Song::staticClass())) << "a subclass counts";
    EXPECT_TRUE(containsOnlyObjectsOfType({song, protectedSong, photo}, platform::Object::staticClass()));
    EXPECT_FALSE(containsOnlyObjectsOfType({song, protectedSong}, ProtectedSong::staticClass()))
        << "a superclass does not";
    EXPECT_FALSE(containsOnlyObjectsOfType({song, photo}, Song::staticClass()));
}

TEST(Typing, ASetContainsAnObjectOfATypeWhenSomeMemberIsOfIt)
{
    EXPECT_TRUE(containsAtLeastOneObjectOfType({protectedSong, photo}, Song::staticClass()));
    EXPECT_TRUE(containsAtLeastOneObjectOfType({protectedSong, photo}, Photo::staticClass()));
    EXPECT_FALSE(containsAtLeastOneObjectOfType({song, photo}, ProtectedSong::staticClass()));
}

TEST(Typing, TheSubsetHoldsTheMembersOfTheTypeAndLeavesTheSetAlone)
{
    const ObjectSet set{song, protectedSong, photo};
    EXPECT_EQ(subsetWithObjectsOfType(set, Song::staticClass()), (ObjectSet{song, protectedSong}));
    EXPECT_EQ(subsetWithObjectsOfType(set, ProtectedSong::staticClass()), ObjectSet{protectedSong});
    EXPECT_EQ(subsetWithObjectsOfType(set, platform::Object::staticClass()), set);
    EXPECT_TRUE(subsetWithObjectsOfType({song, photo}, ProtectedSong::staticClass()).empty());
    EXPECT_EQ(set.size(), 3u);
}

TEST(Typing, ANullPointerIsOfNoType)
{
    EXPECT_FALSE(containsOnlyObjectsOfType({nullptr}, platform::Object::staticClass()));
    EXPECT_FALSE(containsOnlyObjectsOfType({song, nullptr}, platform::Object::staticClass()));
    EXPECT_FALSE(containsAtLeastOneObjectOfType({nullptr}, platform::Object::staticClass()));
    EXPECT_EQ(subsetWithObjectsOfType({song, nullptr}, platform::Object::staticClass()), ObjectSet{song});
}

} // namespace
