#include "Platform/Interface/ArrayController.h"

#include "Platform/Foundation/AssertionHandler.h"
#include "Platform/Foundation/ValueObjects.h"
#include "Platform/Interface/RowChange_p.h"

#include <QPointer>

#include <algorithm>
#include <iterator>

namespace platform {

namespace {

// Each range that is removed by itself moves the objects behind it, so that many of them would cost quadratic time.
constexpr qsizetype rangesRemovedSingly = 32;

/// Whether one list is the other, not merely equal to it.
bool isSameList(const QList<ObjectPointer> &a, const QList<ObjectPointer> &b)
{
    return a.constData() == b.constData() && a.size() == b.size();
}

bool isWithin(const IndexSet &indexes, qint64 count)
{
    return indexes.isEmpty() || indexes.lastIndex() < count;
}

IndexSet indexesInList(const QList<ObjectPointer> &objects, const QList<ObjectPointer> &list)
{
    if (objects == list) // selecting everything, most often: needs no search
        return IndexSet(IndexRange{0, list.size()});
    return matchObjects(objects, list, ObjectMatching::Equal).found;
}

QList<ObjectPointer> objectsAt(const IndexSet &indexes, const QList<ObjectPointer> &list)
{
    QList<ObjectPointer> result;
    result.reserve(indexes.count());
    for (const IndexRange &range : indexes.ranges())
        std::copy_n(list.cbegin() + range.location, range.length, std::back_inserter(result));
    return result;
}

QList<ObjectPointer> objectsNotAt(const IndexSet &indexes, const QList<ObjectPointer> &list)
{
    return objectsAt(IndexSet(IndexRange{0, list.size()}).subtract(indexes), list);
}

void insertInto(QList<ObjectPointer> &list, qint64 index, const QList<ObjectPointer> &objects)
{
    list.insert(index, objects.size(), nullptr);
    std::copy(objects.cbegin(), objects.cend(), list.begin() + index);
}

} // namespace

/// One operation on the controller: notes what changes, and announces it at the end.
class ArrayController::Operation
{
public:
    explicit Operation(ArrayController *controller)
        : m_controller(controller)
        , m_selectionBefore(controller->m_selection)
    { }

    void noteArrangedObjectsChanged() { m_arrangedObjectsChanged = true; }
    void noteSelectedObjectsChanged() { m_selectedObjectsChanged = true; }

    /// @return whether the selection changed.
    bool announce()
    {
        const bool selectionChanged = m_selectedObjectsChanged || m_controller->m_selection != m_selectionBefore;
        // A slot may destroy the controller.
        if (m_arrangedObjectsChanged)
            Q_EMIT m_controller->arrangedObjectsChanged();
        if (m_controller && selectionChanged)
            Q_EMIT m_controller->selectionIndexesChanged();
        if (m_controller && selectionChanged)
            Q_EMIT m_controller->selectedObjectsChanged();
        return selectionChanged;
    }

private:
    QPointer<ArrayController> m_controller;
    const IndexSet m_selectionBefore;
    bool m_arrangedObjectsChanged = false;
    bool m_selectedObjectsChanged = false;
};

ArrayController::ArrayController(QObject *parent)
    : QAbstractListModel(parent)
{ }

ArrayController::~ArrayController() = default;

void ArrayController::setContent(const QList<ObjectPointer> &content)
{
    ZR_ASSERT_PARAMETER(this, !content.contains(nullptr));
    Operation operation(this);
    replaceContent(content, operation);
    operation.announce();
}

qint64 ArrayController::indexOfObject(const ObjectPointer &object) const
{
    const auto found = std::find_if(m_content.cbegin(), m_content.cend(),
                                    [&](const ObjectPointer &other) { return areEqual(other.get(), object.get()); });
    return found == m_content.cend() ? IndexSet::NotFound : found - m_content.cbegin();
}

void ArrayController::rearrangeObjects()
{
    Operation operation(this);
    replaceContent(m_content, operation);
    operation.announce();
}

void ArrayController::setSelectionIndexes(const IndexSet &indexes)
{
    Operation operation(this);
    m_selection = indexes;
    operation.announce();
}

IndexSet ArrayController::selectedRows() const
{
    return selectionIndexes().intersect(IndexSet(IndexRange{0, arrangedCount()}));
}

QList<ObjectPointer> ArrayController::selectedObjects() const
{
    return objectsAt(selectedRows(), arrangedObjects());
}

bool ArrayController::setSelectedObjects(const QList<ObjectPointer> &objects)
{
    const IndexSet found = indexesInList(objects, arrangedObjects());
    if (found.isEmpty() && !objects.isEmpty())
        return false;
    Operation operation(this);
    m_selection = found;
    return operation.announce();
}

void ArrayController::addSelectedObjects(const QList<ObjectPointer> &objects)
{
    setSelectionIndexes(selectionIndexes().unite(indexesInList(objects, arrangedObjects())));
}

void ArrayController::removeSelectedObjects(const QList<ObjectPointer> &objects)
{
    const IndexSet found = indexesInList(objects, selectedObjects());
    IndexSet removed;
    qint64 place = 0; // among the selected objects
    for (const qint64 row : selectedRows()) {
        if (found.contains(place++))
            removed.addIndex(row);
    }
    setSelectionIndexes(selectionIndexes().subtract(removed));
}

void ArrayController::insertObjects(const QList<ObjectPointer> &objects, qint64 arrangedIndex)
{
    ZR_ASSERT_PARAMETER(this, arrangedIndex >= 0 && arrangedIndex <= arrangedCount());
    insertIntoContent(objects, contentIndex(arrangedIndex));
}

void ArrayController::addObjects(const QList<ObjectPointer> &objects)
{
    insertIntoContent(objects, m_content.size());
}

void ArrayController::removeObjectsAtArrangedIndexes(const IndexSet &indexes)
{
    ZR_ASSERT_PARAMETER(this, isWithin(indexes, arrangedCount()));
    removeFromContent(contentIndexes(indexes));
}

void ArrayController::removeObjects(const QList<ObjectPointer> &objects)
{
    removeFromContent(indexesInList(objects, m_content));
}

void ArrayController::removeObject(const ObjectPointer &object)
{
    const qint64 index = indexOfObject(object);
    if (index != IndexSet::NotFound)
        removeFromContent(IndexSet(index));
}

void ArrayController::moveObjects(const QList<ObjectPointer> &objects, qint64 arrangedIndex)
{
    ZR_ASSERT_PARAMETER(this, arrangedIndex >= 0 && arrangedIndex <= arrangedCount());
    const qint64 index = contentIndex(arrangedIndex);
    const ObjectMatches matches = matchObjects(objects, m_content, ObjectMatching::Equal);
    QList<ObjectPointer> moved;
    for (const qint64 from : matches.indexes) {
        if (from >= 0)
            moved.append(m_content[from]);
    }
    QList<ObjectPointer> content = objectsNotAt(matches.found, m_content);
    IndexSet movedFromBefore = matches.found;
    insertInto(content, index - movedFromBefore.intersect(IndexSet(IndexRange{0, index})).count(), moved);

    Operation operation(this);
    replaceContent(content, operation);
    operation.announce();
}

int ArrayController::rowCount(const QModelIndex &parent) const
{
    return parent.isValid() ? 0 : int(arrangedCount());
}

QVariant ArrayController::data(const QModelIndex &index, int role) const
{
    if (!index.isValid() || !checkIndex(index, CheckIndexOption::ParentIsInvalid))
        return {};
    const ObjectPointer &object = (m_arrangement ? *m_arrangement : m_content)[index.row()];
    if (role == Qt::DisplayRole)
        return displayText(*object);
    return role == ObjectRole ? QVariant::fromValue(object) : QVariant();
}

QList<ObjectPointer> ArrayController::arrangeObjects(const QList<ObjectPointer> &content) const
{
    return content;
}

QString ArrayController::displayText(const Object &object) const
{
    const auto string = dynamic_cast<const String *>(&object);
    return string ? string->value() : object.objectClass().name();
}

/// Where the arranged objects are in the content.
IndexSet ArrayController::contentIndexes(const IndexSet &arrangedIndexes) const
{
    if (!m_arrangement)
        return arrangedIndexes;
    return matchObjects(objectsAt(arrangedIndexes, *m_arrangement), m_content, ObjectMatching::Identical).found;
}

/// Where the arranged object is in the content; behind all for the index behind all.
qint64 ArrayController::contentIndex(qint64 arrangedIndex) const
{
    return arrangedIndex == arrangedCount() ? m_content.size() : contentIndexes(IndexSet(arrangedIndex)).firstIndex();
}

void ArrayController::insertIntoContent(const QList<ObjectPointer> &objects, qint64 index)
{
    ZR_ASSERT_PARAMETER(this, !objects.contains(nullptr));
    if (objects.isEmpty())
        return;
    Operation operation(this);
    if (m_arrangement || m_content.isEmpty()) { // of nothing it does not show how it is arranged
        QList<ObjectPointer> content = m_content;
        insertInto(content, index, objects);
        replaceContent(content, operation);
    } else {
        beginInsertRows({}, int(index), int(index + objects.size() - 1));
        insertInto(m_content, index, objects);
        m_selection.insertSpace(index, objects.size());
        endInsertRows();
        operation.noteArrangedObjectsChanged();
        replaceContent(m_content, operation);
    }
    operation.announce();
}

void ArrayController::removeFromContent(const IndexSet &indexes)
{
    if (indexes.isEmpty())
        return;
    Operation operation(this);
    if (m_arrangement || indexes.ranges().size() > rangesRemovedSingly) {
        replaceContent(objectsNotAt(indexes, m_content), operation);
    } else {
        // From behind, so that the ranges in front keep their places.
        for (auto range = indexes.ranges().crbegin(); range != indexes.ranges().crend(); ++range)
            removeContentRows(*range);
        operation.noteArrangedObjectsChanged();
        replaceContent(m_content, operation);
    }
    operation.announce();
}

/// Removes neighbouring rows of a content that is shown as it is.
void ArrayController::removeContentRows(const IndexRange &rows)
{
    beginRemoveRows({}, int(rows.location), int(rows.end() - 1));
    m_content.remove(rows.location, rows.length);
    m_selection.removeSpace(rows.location, rows.length);
    endRemoveRows();
}

/// Arranges the content, and shows it in the place of what is shown.
void ArrayController::replaceContent(const QList<ObjectPointer> &content, Operation &operation)
{
    const QList<ObjectPointer> arranged = arrangeObjects(content);
    const bool isAsItIs = isSameList(arranged, content);
    if (isAsItIs && !m_arrangement && isSameList(content, m_content))
        return;
    const RowChange change(arrangedObjects(), arranged);
    const QList<ObjectPointer> selectedBefore = selectedObjects();
    showChange(change, [&] {
        m_content = content;
        m_arrangement = isAsItIs ? std::nullopt : std::optional(arranged);
        m_selection = change.indexesAfter(m_selection);
    });
    if (change.kind() != RowChange::Kind::None)
        operation.noteArrangedObjectsChanged();
    if (selectedObjects() != selectedBefore)
        operation.noteSelectedObjectsChanged();
}

/// Makes a change between the signals of the model that tell of it.
template <class Apply>
void ArrayController::showChange(const RowChange &change, Apply apply)
{
    switch (change.kind()) {
    case RowChange::Kind::None:
        apply();
        break;
    case RowChange::Kind::Insertion:
        beginInsertRows({}, int(change.first()), int(change.last()));
        apply();
        endInsertRows();
        break;
    case RowChange::Kind::Removal:
        beginRemoveRows({}, int(change.first()), int(change.last()));
        apply();
        endRemoveRows();
        break;
    case RowChange::Kind::Reorder: {
        Q_EMIT layoutAboutToBeChanged();
        apply();
        const QModelIndexList before = persistentIndexList();
        QModelIndexList after;
        for (const QModelIndex &index : before)
            after.append(this->index(int(change.rowAfter(index.row())), index.column()));
        changePersistentIndexList(before, after);
        Q_EMIT layoutChanged();
        break;
    }
    case RowChange::Kind::Replacement:
        beginResetModel();
        apply();
        endResetModel();
        break;
    }
}

} // namespace platform
