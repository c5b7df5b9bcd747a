#include "Platform/Interface/ArrayController.h"

#include "Platform/Foundation/AssertionHandler.h"
#include "Platform/Foundation/ValueObjects.h"
#include "Support/IndexSets.h"
#include "Support/TestSupport.h"

#include <QAbstractItemModelTester>
#include <QListView>
#include <QMetaProperty>
#include <QPersistentModelIndex>
#include <QSignalSpy>

#include <algorithm>
#include <initializer_list>
#include <iterator>
#include <memory>
#include <random>
#include <utility>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace {

using platform::ArrayController;
using platform::IndexRange;
using platform::IndexSet;
using platform::InternalInconsistency;
using platform::Number;
using platform::ObjectPointer;
using testing::ElementsAre;
using testing::IsEmpty;
using testSupport::indexes;

using Objects = QList<ObjectPointer>;

/// An object for each character.
Objects letters(const QString &characters)
{
    Objects result;
    for (const QChar character : characters)
        result.append(std::make_shared<platform::String>(character));
    return result;
}

QString spelled(const Objects &objects)
{
    QString result;
    for (const ObjectPointer &object : objects)
        result += static_cast<const platform::String &>(*object).value();
    return result;
}

/// A controller whose model is checked after every change, and whose announcements are noted down.
template <class Controller>
class Watched : public Controller
{
public:
    explicit Watched(const QString &characters = {})
    {
        Controller::setContent(letters(characters));
        using Model = QAbstractItemModel;
        note(&Model::rowsInserted, "inserted");
        note(&Model::rowsRemoved, "removed");
        note(&Model::layoutChanged, "layout");
        note(&Model::modelReset, "reset");
        note(&ArrayController::arrangedObjectsChanged, "arranged");
        note(&ArrayController::selectionIndexesChanged, "indexes");
        note(&ArrayController::selectedObjectsChanged, "selected");
    }

    QString shown() const { return spelled(this->arrangedObjects()); }
    QString selected() const { return spelled(this->selectedObjects()); }
    /// What was announced since the last time.
    QStringList takeAnnouncements() { return std::exchange(m_announcements, {}); }

private:
    template <class Signal>
    void note(Signal signal, const char *name)
    {
        QObject::connect(this, signal, this, [this, name] { m_announcements.append(QLatin1String(name)); });
    }

    QAbstractItemModelTester m_tester{this, QAbstractItemModelTester::FailureReportingMode::Warning};
    QStringList m_announcements;
};

using Letters = Watched<ArrayController>;

/// Shows the letters from 'a' to `last` in alphabetic order.
class Alphabet : public ArrayController
{
public:
    QChar last = QLatin1Char('z');

protected:
    Objects arrangeObjects(const Objects &content) const override
    {
        const auto text = [](const ObjectPointer &object) { return spelled({object}); };
        Objects result;
        std::copy_if(content.cbegin(), content.cend(), std::back_inserter(result),
                     [&](const ObjectPointer &object) { return text(object) <= QString(last); });
        std::stable_sort(result.begin(), result.end(),
                         [&](const ObjectPointer &a, const ObjectPointer &b) { return text(a) < text(b); });
        return result;
    }
};

using WatchedAlphabet = Watched<Alphabet>;

QStringList announced(std::initializer_list<const char *> names)
{
    QStringList result;
    for (const char *name : names)
        result.append(QLatin1String(name));
    return result;
}

TEST(ArrayController, IsEmptyAtFirst)
{
    const Letters letters;
    EXPECT_THAT(letters.content(), IsEmpty());
    EXPECT_THAT(letters.arrangedObjects(), IsEmpty());
    EXPECT_THAT(letters.selectedObjects(), IsEmpty());
    EXPECT_TRUE(letters.selectionIndexes().isEmpty());
    EXPECT_EQ(letters.rowCount(), 0);
}

TEST(ArrayController, ShowsItsContentAsItIs)
{
    const Letters letters(QStringLiteral("cab"));
    EXPECT_EQ(letters.shown(), QStringLiteral("cab"));
    EXPECT_EQ(letters.arrangedObjects(), letters.content());
}

TEST(ArrayController, IsAModelWithATextAndAnObjectForEachRow)
{
    Letters controller(QStringLiteral("ab"));
    controller.addObject(std::make_shared<Number>(7));
    ASSERT_EQ(controller.rowCount(), 3);
    EXPECT_EQ(controller.index(1).data().toString(), QStringLiteral("b"));
    EXPECT_EQ(controller.index(2).data().toString(), QStringLiteral("platform::Number"));
    EXPECT_EQ(controller.index(1).data(ArrayController::ObjectRole).value<ObjectPointer>(), controller.content()[1]);
    EXPECT_FALSE(controller.index(1).data(Qt::DecorationRole).isValid());
    EXPECT_FALSE(controller.data({}).isValid());
    EXPECT_EQ(controller.rowCount(controller.index(0)), 0);
}

TEST(ArrayController, AHostGivesTheTextOfItsObjects)
{
    class Numbers : public ArrayController
    {
        QString displayText(const platform::Object &object) const override
        {
            return QStringLiteral("No. %1").arg(static_cast<const Number &>(object).toInteger());
        }
    } numbers;
    numbers.addObject(std::make_shared<Number>(7));
    EXPECT_EQ(numbers.index(0).data().toString(), QStringLiteral("No. 7"));
}

TEST(ArrayController, FindsTheFirstEqualObjectOfItsContent)
{
    const Letters controller(QStringLiteral("abcb"));
    EXPECT_EQ(controller.indexOfObject(letters(QStringLiteral("b")).first()), 1);
    EXPECT_EQ(controller.indexOfObject(letters(QStringLiteral("x")).first()), IndexSet::NotFound);
    EXPECT_EQ(controller.indexOfObject(nullptr), IndexSet::NotFound);
}

// Selection

TEST(ArrayController, SelectsIndexes)
{
    Letters controller(QStringLiteral("abcde"));
    controller.setSelectionIndexes(indexes({3, 1}));
    EXPECT_EQ(controller.selected(), QStringLiteral("bd"));
    controller.setSelectionIndex(4);
    EXPECT_EQ(controller.selectionIndexes(), indexes({4}));
    EXPECT_EQ(controller.selected(), QStringLiteral("e"));
}

TEST(ArrayController, KeepsSelectionIndexesBeyondItsObjectsAsGiven)
{
    Letters controller(QStringLiteral("abc"));
    const IndexSet far(IndexRange{1, 0x7fffffff});
    controller.setSelectionIndexes(far);
    EXPECT_EQ(controller.selectionIndexes(), far);
    EXPECT_EQ(controller.selected(), QStringLiteral("bc"));
    controller.setSelectionIndexes(IndexSet(IndexRange{5, 0x7fffffff}));
    EXPECT_EQ(controller.selected(), QString());
}

TEST(ArrayController, AnnouncesASelectionOnceAndOnlyWhenItChanges)
{
    Letters controller(QStringLiteral("abc"));
    controller.setSelectionIndexes(indexes({0, 2}));
    EXPECT_EQ(controller.takeAnnouncements(), announced({"indexes", "selected"}));
    controller.setSelectionIndexes(indexes({0, 2}));
    EXPECT_EQ(controller.takeAnnouncements(), announced({}));
}

TEST(ArrayController, SelectsGivenObjectsInTheOrderOfTheList)
{
    Letters controller(QStringLiteral("abcde"));
    EXPECT_TRUE(controller.setSelectedObjects(letters(QStringLiteral("db"))));
    EXPECT_EQ(controller.selected(), QStringLiteral("bd"));
    EXPECT_EQ(controller.selectedObjects().first(), controller.content()[1]) << "its own object, not the equal one";
    EXPECT_EQ(controller.takeAnnouncements(), announced({"indexes", "selected"}));
}

TEST(ArrayController, SaysWhetherTheSelectionChanged)
{
    Letters controller(QStringLiteral("abc"));
    EXPECT_TRUE(controller.setSelectedObjects(letters(QStringLiteral("b"))));
    EXPECT_FALSE(controller.setSelectedObjects(letters(QStringLiteral("b"))));
    EXPECT_TRUE(controller.setSelectedObjects({}));
    EXPECT_FALSE(controller.setSelectedObjects({}));
}

TEST(ArrayController, KeepsItsSelectionWhenNoneOfTheObjectsIsFound)
{
    Letters controller(QStringLiteral("abc"));
    controller.setSelectionIndex(1);
    controller.takeAnnouncements();
    EXPECT_FALSE(controller.setSelectedObjects({std::make_shared<Number>(1), nullptr}));
    controller.addSelectedObjects({std::make_shared<Number>(2)});
    controller.removeSelectedObjects({std::make_shared<Number>(1), nullptr});
    EXPECT_EQ(controller.selected(), QStringLiteral("b"));
    EXPECT_EQ(controller.takeAnnouncements(), announced({}));
}

TEST(ArrayController, LeavesOutObjectsThatAreNotFound)
{
    Letters controller(QStringLiteral("abc"));
    EXPECT_TRUE(controller.setSelectedObjects(letters(QStringLiteral("xcy"))));
    EXPECT_EQ(controller.selected(), QStringLiteral("c"));
}

TEST(ArrayController, SelectsForEachGivenObjectOne)
{
    Letters controller(QStringLiteral("abab"));
    controller.setSelectedObjects(letters(QStringLiteral("b")));
    EXPECT_EQ(controller.selectionIndexes(), indexes({1}));
    controller.setSelectedObjects(letters(QStringLiteral("bab")));
    EXPECT_EQ(controller.selectionIndexes(), indexes({0, 1, 3}));
}

TEST(ArrayController, SelectsAllAsOneRange)
{
    Letters controller(QStringLiteral("aaba"));
    EXPECT_TRUE(controller.setSelectedObjects(controller.arrangedObjects()));
    EXPECT_THAT(controller.selectionIndexes().ranges(), ElementsAre(IndexRange{0, 4}));
}

TEST(ArrayController, AddsObjectsToTheSelection)
{
    Letters controller(QStringLiteral("abcde"));
    controller.setSelectionIndexes(IndexSet(IndexRange{4, 0x7fffffff}));
    controller.takeAnnouncements();
    controller.addSelectedObjects(letters(QStringLiteral("ca")));
    EXPECT_EQ(controller.selected(), QStringLiteral("ace"));
    EXPECT_TRUE(controller.selectionIndexes().contains(0x7fffffff));
    EXPECT_EQ(controller.takeAnnouncements(), announced({"indexes", "selected"}));
    controller.addSelectedObjects(letters(QStringLiteral("e")));
    EXPECT_EQ(controller.takeAnnouncements(), announced({}));
}

TEST(ArrayController, RemovesObjectsFromTheSelection)
{
    Letters controller(QStringLiteral("abcde"));
    controller.setSelectionIndexes(indexes({0, 2, 3, 9}));
    controller.takeAnnouncements();
    controller.removeSelectedObjects(letters(QStringLiteral("dba")));
    EXPECT_EQ(controller.selectionIndexes(), indexes({2, 9}));
    EXPECT_EQ(controller.takeAnnouncements(), announced({"indexes", "selected"}));
}

TEST(ArrayController, DeselectsTheEqualObjectThatIsSelected)
{
    Letters controller(QStringLiteral("aaa"));
    controller.setSelectionIndexes(indexes({1, 2}));
    controller.removeSelectedObjects(letters(QStringLiteral("a")));
    EXPECT_EQ(controller.selectionIndexes(), indexes({2}));
}

// Insertion and removal

TEST(ArrayController, InsertsObjectsInFrontOfAnIndex)
{
    Letters controller(QStringLiteral("abc"));
    controller.insertObjects(letters(QStringLiteral("xy")), 1);
    EXPECT_EQ(controller.shown(), QStringLiteral("axybc"));
    EXPECT_EQ(controller.takeAnnouncements(), announced({"inserted", "arranged"}));
    controller.insertObject(letters(QStringLiteral("z")).first(), 5);
    EXPECT_EQ(controller.shown(), QStringLiteral("axybcz"));
    controller.addObjects(letters(QStringLiteral("pq")));
    controller.addObject(letters(QStringLiteral("r")).first());
    EXPECT_EQ(controller.shown(), QStringLiteral("axybczpqr"));
}

TEST(ArrayController, NamesTheInsertedRows)
{
    Letters controller(QStringLiteral("abc"));
    const QSignalSpy inserted(&controller, &QAbstractItemModel::rowsInserted);
    controller.insertObjects(letters(QStringLiteral("xy")), 1);
    ASSERT_EQ(inserted.size(), 1);
    EXPECT_EQ(inserted[0][1].toInt(), 1);
    EXPECT_EQ(inserted[0][2].toInt(), 2);
}

TEST(ArrayController, InsertedObjectsMoveTheSelectionAndAreNotInIt)
{
    Letters controller(QStringLiteral("abcd"));
    controller.setSelectionIndexes(indexes({0, 1, 2}));
    controller.takeAnnouncements();
    controller.insertObjects(letters(QStringLiteral("xy")), 1);
    EXPECT_EQ(controller.selected(), QStringLiteral("abc"));
    EXPECT_EQ(controller.selectionIndexes(), indexes({0, 3, 4}));
    EXPECT_EQ(controller.takeAnnouncements(), announced({"inserted", "arranged", "indexes", "selected"}));
}

TEST(ArrayController, AnObjectAddedWhereTheSelectionReachesIsNotSelected)
{
    Letters controller(QStringLiteral("ab"));
    controller.setSelectionIndexes(IndexSet(IndexRange{1, 0x7fffffff}));
    controller.addObject(letters(QStringLiteral("c")).first());
    EXPECT_EQ(controller.selected(), QStringLiteral("b"));
    EXPECT_EQ(controller.selectionIndexes().firstIndex(), 1);
    EXPECT_EQ(controller.selectionIndexes().count(), 0x7fffffff);
}

TEST(ArrayController, InsertsItsOwnContentAgain)
{
    Letters controller(QStringLiteral("ab"));
    controller.addObjects(controller.content());
    controller.insertObjects(controller.arrangedObjects(), 1);
    EXPECT_EQ(controller.shown(), QStringLiteral("aababbab"));
}

TEST(ArrayController, InsertingNothingAnnouncesNothing)
{
    Letters controller(QStringLiteral("ab"));
    controller.insertObjects({}, 1);
    controller.removeObjects({});
    controller.removeObjectsAtArrangedIndexes({});
    controller.removeObject(letters(QStringLiteral("x")).first());
    controller.moveObjects({}, 1);
    controller.rearrangeObjects();
    EXPECT_EQ(controller.takeAnnouncements(), announced({}));
}

TEST(ArrayController, RemovesObjectsAtIndexes)
{
    Letters controller(QStringLiteral("abcdef"));
    controller.removeObjectsAtArrangedIndexes(indexes({0, 2, 3}));
    EXPECT_EQ(controller.shown(), QStringLiteral("bef"));
    EXPECT_EQ(controller.takeAnnouncements(), announced({"removed", "removed", "arranged"}));
    controller.removeObjectAtArrangedIndex(2);
    EXPECT_EQ(controller.shown(), QStringLiteral("be"));
}

TEST(ArrayController, RemovesForEachGivenObjectTheFirstEqualOne)
{
    Letters controller(QStringLiteral("abcabc"));
    controller.removeObjects(letters(QStringLiteral("cxa")));
    EXPECT_EQ(controller.shown(), QStringLiteral("babc"));
    controller.removeObject(letters(QStringLiteral("b")).first());
    EXPECT_EQ(controller.shown(), QStringLiteral("abc"));
    controller.removeObjects(controller.content());
    EXPECT_EQ(controller.rowCount(), 0);
}

TEST(ArrayController, TheSelectionStaysWithTheObjectsThatAreLeft)
{
    Letters controller(QStringLiteral("abcdef"));
    controller.setSelectionIndexes(indexes({1, 2, 4, 7}));
    controller.takeAnnouncements();
    controller.removeObjects(letters(QStringLiteral("ac")));
    EXPECT_EQ(controller.selected(), QStringLiteral("be"));
    EXPECT_EQ(controller.selectionIndexes(), indexes({0, 2, 5}));
    EXPECT_EQ(controller.takeAnnouncements(), announced({"removed", "removed", "arranged", "indexes", "selected"}));
}

TEST(ArrayController, RemovingBehindTheSelectionLeavesItUnannounced)
{
    Letters controller(QStringLiteral("abc"));
    controller.setSelectionIndex(0);
    controller.takeAnnouncements();
    controller.removeObjectAtArrangedIndex(2);
    EXPECT_EQ(controller.takeAnnouncements(), announced({"removed", "arranged"}));
}

TEST(ArrayController, RemovesManyScatteredObjectsAtOnce)
{
    Letters controller(QString(200, QLatin1Char('a')));
    controller.setSelectionIndexes(IndexSet(IndexRange{0, 4}).unite(indexes({199, 300})));
    controller.takeAnnouncements();
    IndexSet even;
    for (int i = 0; i < 200; i += 2)
        even.addIndex(i);
    const Objects odd = [&] {
        Objects result;
        for (int i = 1; i < 200; i += 2)
            result.append(controller.content()[i]);
        return result;
    }();
    controller.removeObjectsAtArrangedIndexes(even);
    EXPECT_EQ(controller.content(), odd);
    EXPECT_EQ(controller.selectionIndexes(), indexes({0, 1, 99, 200}));
    EXPECT_EQ(controller.takeAnnouncements(), announced({"reset", "arranged", "indexes", "selected"}));
}

TEST(ArrayController, AnnouncesUpToThirtyTwoRangesOfRemovedRowsOneByOne)
{
    for (const int ranges : {32, 33}) {
        Letters controller(QString(100, QLatin1Char('a')));
        IndexSet removed;
        for (int i = 0; i < ranges; ++i)
            removed.addRange({3 * i, 2});
        controller.removeObjectsAtArrangedIndexes(removed);
        EXPECT_EQ(controller.rowCount(), 100 - 2 * ranges);
        const QStringList announcements = controller.takeAnnouncements();
        EXPECT_EQ(announcements.count(QStringLiteral("removed")), ranges == 32 ? 32 : 0);
        EXPECT_EQ(announcements.count(QStringLiteral("reset")), ranges == 32 ? 0 : 1);
        EXPECT_EQ(announcements.count(QStringLiteral("arranged")), 1);
    }
}

TEST(ArrayController, RefusesIndexesThatItDoesNotHaveAndObjectsThatAreNone)
{
    Letters controller(QStringLiteral("abc"));
    const ObjectPointer letter = letters(QStringLiteral("x")).first();
    EXPECT_THROW(controller.insertObject(letter, 4), InternalInconsistency);
    EXPECT_THROW(controller.insertObject(letter, -1), InternalInconsistency);
    EXPECT_THROW(controller.insertObjects({letter, nullptr}, 1), InternalInconsistency);
    EXPECT_THROW(controller.addObject(nullptr), InternalInconsistency);
    EXPECT_THROW(controller.setContent({letter, nullptr}), InternalInconsistency);
    EXPECT_THROW(controller.removeObjectAtArrangedIndex(3), InternalInconsistency);
    EXPECT_THROW(controller.moveObjects({letter}, 4), InternalInconsistency);
    EXPECT_THROW(controller.moveObjects({letter}, -1), InternalInconsistency);
    EXPECT_EQ(controller.shown(), QStringLiteral("abc"));
    EXPECT_EQ(controller.takeAnnouncements(), announced({}));
}

// Moves

struct Move {
    const char *moved;
    qint64 toIndex;
    const char *result;
};

class ArrayControllerMove : public testing::TestWithParam<Move>
{ };

TEST_P(ArrayControllerMove, PutsTheObjectsSideBySideInTheOrderOfTheList)
{
    Letters controller(QStringLiteral("ABCDE"));
    controller.moveObjects(letters(QLatin1String(GetParam().moved)), GetParam().toIndex);
    EXPECT_EQ(controller.shown(), QLatin1String(GetParam().result));
}

INSTANTIATE_TEST_SUITE_P(OfFive, ArrayControllerMove,
                         testing::Values(Move{"BD", 5, "ACEBD"}, Move{"DB", 0, "DBACE"}, Move{"B", 2, "ABCDE"},
                                         Move{"B", 1, "ABCDE"}, Move{"AE", 2, "BAECD"}, Move{"CBA", 3, "CBADE"},
                                         Move{"xD", 1, "ADBCE"}, Move{"CC", 0, "CABDE"}, Move{"x", 0, "ABCDE"}));

TEST(ArrayController, TheSelectionFollowsMovedObjects)
{
    Letters controller(QStringLiteral("abcde"));
    controller.setSelectionIndexes(indexes({1, 2, 8}));
    const QPersistentModelIndex second = controller.index(1);
    controller.takeAnnouncements();
    controller.moveObjects(letters(QStringLiteral("b")), 5);
    EXPECT_EQ(controller.shown(), QStringLiteral("acdeb"));
    EXPECT_EQ(controller.selectionIndexes(), indexes({1, 4, 8}));
    EXPECT_EQ(second.row(), 4);
    EXPECT_EQ(controller.takeAnnouncements(), announced({"layout", "arranged", "indexes", "selected"}));
}

TEST(ArrayController, AnnouncesSelectedObjectsInAnotherOrderAtTheSameIndexes)
{
    Letters controller(QStringLiteral("abc"));
    controller.setSelectionIndexes(indexes({0, 1}));
    controller.takeAnnouncements();
    controller.moveObjects(letters(QStringLiteral("b")), 0);
    EXPECT_EQ(controller.selected(), QStringLiteral("ba"));
    EXPECT_EQ(controller.takeAnnouncements(), announced({"layout", "arranged", "indexes", "selected"}));
}

// Content and arrangement

TEST(ArrayController, ANewContentIsAReset)
{
    Letters controller(QStringLiteral("abc"));
    controller.setContent(letters(QStringLiteral("xy")));
    EXPECT_EQ(controller.shown(), QStringLiteral("xy"));
    EXPECT_EQ(controller.takeAnnouncements(), announced({"reset", "arranged"}));
}

TEST(ArrayController, AContentThatOnlyGrewOrShrankIsNoReset)
{
    Letters controller(QStringLiteral("abcd"));
    Objects content = controller.content();
    content.remove(1, 2);
    controller.setContent(content);
    EXPECT_EQ(controller.takeAnnouncements(), announced({"removed", "arranged"}));
    content.append(letters(QStringLiteral("xyz")));
    controller.setContent(content);
    EXPECT_EQ(controller.takeAnnouncements(), announced({"inserted", "arranged"}));
    controller.setContent(Objects(content));
    EXPECT_EQ(controller.takeAnnouncements(), announced({}));
    controller.setContent({});
    EXPECT_EQ(controller.takeAnnouncements(), announced({"removed", "arranged"}));
}

TEST(ArrayController, EqualObjectsOfANewContentAreSelectedInTheirPlace)
{
    Letters controller(QStringLiteral("abcd"));
    controller.setSelectionIndexes(indexes({1, 3, 6}));
    controller.takeAnnouncements();
    controller.setContent(letters(QStringLiteral("xbycd")));
    EXPECT_EQ(controller.selected(), QStringLiteral("bd"));
    EXPECT_EQ(controller.selectionIndexes(), indexes({1, 4, 7}));
    EXPECT_EQ(controller.takeAnnouncements(), announced({"reset", "arranged", "indexes", "selected"}));
}

TEST(ArrayController, AnObjectThatStaysIsSelectedRatherThanAnEqualOne)
{
    Letters controller(QStringLiteral("aaa"));
    controller.setSelectionIndex(2);
    const Objects content = controller.content();
    controller.setContent({content[1], content[2], content[0]});
    EXPECT_EQ(controller.selectedObjects(), Objects({content[2]}));
    controller.setContent(letters(QStringLiteral("xa")) + Objects({content[2], content[1]}));
    EXPECT_EQ(controller.selectedObjects(), Objects({content[2]}));
}

TEST(ArrayController, ShowsWhatAHostArranges)
{
    WatchedAlphabet controller(QStringLiteral("dbxac"));
    EXPECT_EQ(controller.shown(), QStringLiteral("abcdx"));
    EXPECT_EQ(spelled(controller.content()), QStringLiteral("dbxac"));
    EXPECT_EQ(controller.rowCount(), 5);
    EXPECT_EQ(controller.index(0).data().toString(), QStringLiteral("a"));
}

TEST(ArrayController, FiltersAnew)
{
    WatchedAlphabet controller(QStringLiteral("dbxac"));
    controller.setSelectedObjects(letters(QStringLiteral("bdx")));
    controller.takeAnnouncements();
    controller.last = QLatin1Char('c');
    controller.rearrangeObjects();
    EXPECT_EQ(controller.shown(), QStringLiteral("abc"));
    EXPECT_EQ(controller.selected(), QStringLiteral("b"));
    EXPECT_EQ(controller.takeAnnouncements(), announced({"removed", "arranged", "indexes", "selected"}));
    controller.last = QLatin1Char('z');
    controller.rearrangeObjects();
    EXPECT_EQ(controller.shown(), QStringLiteral("abcdx"));
    EXPECT_EQ(controller.takeAnnouncements(), announced({"inserted", "arranged"}));
}

TEST(ArrayController, TheFirstObjectsAreArrangedBeforeTheyAreAnnounced)
{
    WatchedAlphabet controller;
    controller.addObjects(letters(QStringLiteral("zba")));
    EXPECT_EQ(controller.shown(), QStringLiteral("abz"));
    EXPECT_EQ(controller.takeAnnouncements(), announced({"inserted", "arranged"}));
}

TEST(ArrayController, InsertsIntoTheContentAtThePlaceOfTheArrangedObject)
{
    WatchedAlphabet controller(QStringLiteral("dbxac"));
    controller.setSelectedObjects(letters(QStringLiteral("cx")));
    controller.takeAnnouncements();
    controller.insertObject(letters(QStringLiteral("k")).first(), 1); // where b is
    EXPECT_EQ(spelled(controller.content()), QStringLiteral("dkbxac"));
    EXPECT_EQ(controller.shown(), QStringLiteral("abcdkx"));
    EXPECT_EQ(controller.selected(), QStringLiteral("cx"));
    EXPECT_EQ(controller.takeAnnouncements(), announced({"inserted", "arranged", "indexes", "selected"}));
    controller.insertObject(letters(QStringLiteral("e")).first(), 6);
    EXPECT_EQ(spelled(controller.content()), QStringLiteral("dkbxace"));
}

TEST(ArrayController, RemovesArrangedObjectsFromTheContent)
{
    WatchedAlphabet controller(QStringLiteral("dbxac"));
    controller.removeObjectsAtArrangedIndexes(indexes({0, 3}));
    EXPECT_EQ(spelled(controller.content()), QStringLiteral("bxc"));
    EXPECT_EQ(controller.shown(), QStringLiteral("bcx"));
}

TEST(ArrayController, RemovesAndMovesWhatTheArrangementHides)
{
    WatchedAlphabet controller(QStringLiteral("dbxac"));
    controller.last = QLatin1Char('c');
    controller.rearrangeObjects();
    controller.takeAnnouncements();
    controller.moveObjects(letters(QStringLiteral("x")), 0); // where a is
    EXPECT_EQ(spelled(controller.content()), QStringLiteral("dbxac"));
    controller.moveObjects(letters(QStringLiteral("d")), 3);
    EXPECT_EQ(spelled(controller.content()), QStringLiteral("bxacd"));
    controller.removeObject(letters(QStringLiteral("x")).first());
    EXPECT_EQ(spelled(controller.content()), QStringLiteral("bacd"));
    EXPECT_EQ(controller.takeAnnouncements(), announced({}));
}

TEST(ArrayController, AnArrangementMayCeaseToBeTheContent)
{
    // Shows the content itself while it is short, and its beginning when it is not.
    class FirstThree : public ArrayController
    {
        Objects arrangeObjects(const Objects &content) const override
        {
            return content.size() <= 3 ? content : content.first(3);
        }
    };
    Watched<FirstThree> controller(QStringLiteral("abc"));
    controller.setSelectionIndexes(indexes({0, 2}));
    controller.takeAnnouncements();
    controller.insertObjects(letters(QStringLiteral("x")), 1);
    EXPECT_EQ(controller.shown(), QStringLiteral("axb"));
    EXPECT_EQ(controller.selected(), QStringLiteral("a"));
    EXPECT_EQ(controller.takeAnnouncements(), announced({"inserted", "removed", "arranged", "indexes", "selected"}));
    controller.removeObjectAtArrangedIndex(0);
    EXPECT_EQ(controller.shown(), QStringLiteral("xbc"));
}

// Announcements

TEST(ArrayController, TellsViewsOfRowsAndSelectionTogether)
{
    Letters controller(QStringLiteral("abc"));
    controller.setSelectionIndex(2);
    QStringList selected;
    const auto note = [&] { selected.append(controller.selected()); };
    QObject::connect(&controller, &QAbstractItemModel::rowsInserted, &controller, note);
    QObject::connect(&controller, &QAbstractItemModel::rowsRemoved, &controller, note);
    controller.insertObjects(letters(QStringLiteral("xy")), 0);
    controller.removeObjects(letters(QStringLiteral("x")));
    EXPECT_EQ(selected, QStringList({QStringLiteral("c"), QStringLiteral("c")}));
}

TEST(ArrayController, ASlotMayChangeTheSelectionAgain)
{
    Letters controller(QStringLiteral("abc"));
    QObject::connect(&controller, &ArrayController::arrangedObjectsChanged, &controller,
                     [&] { controller.setSelectionIndex(0); });
    controller.addObjects(letters(QStringLiteral("x")));
    EXPECT_EQ(controller.selected(), QStringLiteral("a"));
    EXPECT_EQ(controller.takeAnnouncements(), announced({"inserted", "arranged", "indexes", "selected"}));
}

TEST(ArrayController, ASlotMayDestroyTheController)
{
    for (const auto signal : {&ArrayController::arrangedObjectsChanged, &ArrayController::selectionIndexesChanged,
                              &ArrayController::selectedObjectsChanged}) {
        auto controller = std::make_unique<ArrayController>();
        controller->setContent(letters(QStringLiteral("abc")));
        controller->setSelectionIndex(2);
        QObject context;
        QObject::connect(controller.get(), signal, &context, [&] { controller.reset(); });
        controller->removeObjects(letters(QStringLiteral("ab")));
        EXPECT_FALSE(controller);
    }
}

TEST(ArrayController, ItsPropertiesAreReadWrittenAndObservedByName)
{
    Letters controller(QStringLiteral("abc"));
    const QMetaObject *metaObject = controller.metaObject();
    for (const char *name : {"arrangedObjects", "selectionIndexes", "selectedObjects"}) {
        const QMetaProperty property = metaObject->property(metaObject->indexOfProperty(name));
        ASSERT_TRUE(property.isValid()) << name;
        EXPECT_EQ(property.notifySignal().name(), QByteArray(name) + "Changed");
    }
    EXPECT_TRUE(controller.setProperty("selectedObjects", QVariant::fromValue(letters(QStringLiteral("b")))));
    EXPECT_EQ(controller.property("selectionIndexes").value<IndexSet>(), indexes({1}));
    EXPECT_TRUE(controller.setProperty("selectionIndexes", QVariant::fromValue(indexes({2}))));
    EXPECT_EQ(spelled(controller.property("selectedObjects").value<Objects>()), QStringLiteral("c"));
    EXPECT_EQ(spelled(controller.property("arrangedObjects").value<Objects>()), QStringLiteral("abc"));
}

TEST(ArrayController, ShowsInAListView)
{
    Letters controller(QStringLiteral("abc"));
    QListView view;
    view.setModel(&controller);
    view.resize(200, 200);
    view.show();
    view.setCurrentIndex(controller.index(1));
    EXPECT_TRUE(view.visualRect(controller.index(2)).isValid());

    controller.insertObjects(letters(QStringLiteral("xy")), 0);
    EXPECT_EQ(view.currentIndex().data().toString(), QStringLiteral("b"));
    controller.moveObjects(letters(QStringLiteral("b")), 0);
    EXPECT_EQ(view.currentIndex().row(), 0);
    EXPECT_EQ(view.currentIndex().data().toString(), QStringLiteral("b"));
    controller.removeObjects(letters(QStringLiteral("abc")));
    ASSERT_TRUE(testSupport::waitUntil([&] { return !view.visualRect(controller.index(1)).isEmpty(); }));
    EXPECT_EQ(view.indexAt(view.visualRect(controller.index(1)).center()).data().toString(), QStringLiteral("y"));
}

/// Any operations in any order, beside a plain list and a note of what is selected.
TEST(ArrayController, KeepsTheSelectionWithItsObjectsThroughRandomOperations)
{
    std::mt19937 random(4711);
    const auto number = [&](qint64 limit) { return std::uniform_int_distribution<qint64>(0, limit)(random); };
    Letters controller(QStringLiteral("abcdefgh"));
    for (int step = 0; step < 2000; ++step) {
        const Objects before = controller.content();
        const Objects selected = controller.selectedObjects();
        const IndexSet some = [&] {
            IndexSet result;
            for (qint64 i = 0; i < before.size(); ++i) {
                if (number(3) == 0)
                    result.addIndex(i);
            }
            return result;
        }();
        Objects someObjects;
        for (const qint64 index : some)
            someObjects.append(before[index]);

        Objects expected = selected;
        switch (number(4)) {
        case 0:
            controller.insertObjects(letters(QStringLiteral("xyz")), number(before.size()));
            break;
        case 1:
            controller.removeObjectsAtArrangedIndexes(some);
            expected.removeIf([&](const ObjectPointer &object) { return someObjects.contains(object); });
            break;
        case 2: {
            Objects shuffled = before;
            std::shuffle(shuffled.begin(), shuffled.end(), random);
            controller.setContent(shuffled);
            break;
        }
        case 3:
            controller.setContent(someObjects + Objects({std::make_shared<platform::String>(QString::number(step))}));
            expected.removeIf([&](const ObjectPointer &object) { return !someObjects.contains(object); });
            break;
        default:
            controller.setSelectionIndexes(some);
            expected = someObjects;
        }
        const Objects now = controller.selectedObjects();
        ASSERT_TRUE(std::is_permutation(expected.cbegin(), expected.cend(), now.cbegin(), now.cend()))
            << "after step " << step << ": " << qPrintable(spelled(expected)) << " became "
            << qPrintable(controller.selected());
    }
}

} // namespace
