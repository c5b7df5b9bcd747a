#pragma once

#include "Platform/Foundation/IndexSet.h"
#include "Platform/Foundation/Object.h"

#include <QAbstractListModel>
#include <QList>
#include <QString>

#include <optional>

namespace platform {

class RowChange;

/// Keeps an ordered list of model objects together with the selection among them, for the views that show and select
/// them: Qt's item views, to which it is a list model, and grids that are bound to "selectedObjects".
///
/// The **content** is the list as it was given. The **arranged objects** are what is shown: the content as
/// `arrangeObjects` filters and orders it; as long as that is not overridden, the content itself. Rows, and the
/// indexes of the selection, count the arranged objects. No object may be null. Objects are looked for by what they
/// stand for (`Object::isEqual`), and of several equal ones the first is found.
///
/// The **selection indexes** are kept as given, also where they reach beyond the objects; the **selected objects** are
/// those at the indexes that do not. When objects are inserted, removed, moved or arranged anew, the selection stays
/// with the objects that were selected: inserted ones are never selected by themselves, and the part of the selection
/// beyond the objects stays beyond them.
///
/// **Announcements.** An operation that changes something announces, in this order and each at most once:
/// 1. the signals of the model: rows inserted, rows removed, or layout changed (objects in another order). What is
///    none of these is a reset, and so is the removal of more than 32 separate ranges at once. Arranged objects and
///    selection change together: a slot of `rowsInserted` finds both as they will be announced. In these slots the
///    controller must not be changed;
/// 2. `arrangedObjectsChanged`, when other objects are shown or the same in another order;
/// 3. `selectionIndexesChanged`, then `selectedObjectsChanged`: both when the indexes changed or there are other
///    objects at them.
/// From 2 on, all is as it will be. A slot may then change the controller, which announces that in full before the
/// first operation's announcements go on, and it may destroy the controller.
///
/// **Cost.** Each operation is linear in the number of objects, in comparisons as well, provided that they have good
/// hashes. With the default arrangement, inserting or removing objects at either end costs nothing for the others.
/// At most 2^31 - 1 objects. Main thread.
class ArrayController : public QAbstractListModel
{
    Q_OBJECT
    Q_PROPERTY(QList<platform::ObjectPointer> arrangedObjects READ arrangedObjects NOTIFY arrangedObjectsChanged)
    Q_PROPERTY(platform::IndexSet selectionIndexes READ selectionIndexes WRITE setSelectionIndexes NOTIFY
                   selectionIndexesChanged)
    Q_PROPERTY(QList<platform::ObjectPointer> selectedObjects READ selectedObjects WRITE setSelectedObjects NOTIFY
                   selectedObjectsChanged)

public:
    /// Data of a row: the object, as `platform::ObjectPointer`.
    static constexpr int ObjectRole = Qt::UserRole;

    explicit ArrayController(QObject *parent = nullptr);
    ~ArrayController() override;

    QList<ObjectPointer> content() const { return m_content; }
    /// Replaces the content. Objects that are in the new content as well, or to which one there is equal, stay
    /// selected.
    void setContent(const QList<ObjectPointer> &content);
    /// The first index in the content at which there is an equal object; `IndexSet::NotFound` if there is none.
    qint64 indexOfObject(const ObjectPointer &object) const;

    QList<ObjectPointer> arrangedObjects() const { return m_arrangement ? *m_arrangement : m_content; }
    /// Asks `arrangeObjects` anew. To be called when it would answer otherwise than before.
    void rearrangeObjects();

    IndexSet selectionIndexes() const { return m_selection; }
    void setSelectionIndexes(const IndexSet &indexes);
    /// Selects one index alone.
    void setSelectionIndex(qint64 index) { setSelectionIndexes(IndexSet(index)); }

    /// In the order in which they are arranged.
    QList<ObjectPointer> selectedObjects() const;
    /// Selects those of the arranged objects that are equal to the given ones, and no others: for each given object
    /// one, so that an object which was given twice selects two equal ones. An empty list selects nothing. When none
    /// of the given objects is found, the selection stays as it is.
    /// @return whether the selection changed.
    bool setSelectedObjects(const QList<ObjectPointer> &objects);
    /// Selects the given objects in addition. What is not found is left out.
    void addSelectedObjects(const QList<ObjectPointer> &objects);
    /// Deselects the given objects: for each the first equal one among those that are selected.
    void removeSelectedObjects(const QList<ObjectPointer> &objects);

    /// Inserts objects in front of the arranged object at the index, or behind all when the index is their number.
    /// With an arrangement of its own the controller inserts at that place of the content, and where the objects show
    /// is up to `arrangeObjects`. Another index, or a null object, raises `platform::InternalInconsistency`; so it is
    /// with all that follow.
    void insertObjects(const QList<ObjectPointer> &objects, qint64 arrangedIndex);
    void insertObject(const ObjectPointer &object, qint64 arrangedIndex) { insertObjects({object}, arrangedIndex); }
    /// Inserts objects behind the whole content.
    void addObjects(const QList<ObjectPointer> &objects);
    void addObject(const ObjectPointer &object) { addObjects({object}); }

    /// Removes the arranged objects at the indexes, which must exist, from the content.
    void removeObjectsAtArrangedIndexes(const IndexSet &indexes);
    void removeObjectAtArrangedIndex(qint64 index) { removeObjectsAtArrangedIndexes(IndexSet(index)); }
    /// Removes for each given object the first equal one from the content. What is not found is left out.
    void removeObjects(const QList<ObjectPointer> &objects);
    void removeObject(const ObjectPointer &object);

    /// Moves for each given object the first equal one of the content, so that they stand side by side, in the order
    /// of the list, in front of the arranged object that was at the index before, or behind all when the index is the
    /// number of objects. In A B C D E, moving [D, B] to 0 gives D B A C E, and moving [B, D] to 5 gives A C E B D.
    /// What is not found is left out; an object is moved once, however often it is given.
    void moveObjects(const QList<ObjectPointer> &objects, qint64 arrangedIndex);

    int rowCount(const QModelIndex &parent = {}) const override;
    /// Qt::DisplayRole is the `displayText` of the object; `ObjectRole` is the object.
    QVariant data(const QModelIndex &index, int role = Qt::DisplayRole) const override;

Q_SIGNALS:
    void arrangedObjectsChanged();
    void selectionIndexesChanged();
    /// A host may emit it as well, to have the selection told again: a grid that is bound to "selectedObjects" then
    /// shows it, as is wanted after its cells were renewed.
    void selectedObjectsChanged();

protected:
    /// The objects to show, in their order: some or all of those of the content. Returns the content itself unless
    /// overridden. Called by each operation that changes the content, and by `rearrangeObjects`; it must neither
    /// change the controller nor throw. One that returned the content itself (not a copy with the same objects) is
    /// expected to do so again when objects are inserted or removed. Where it then does otherwise, the model tells of
    /// two changes, the second of which leads to the arranged objects.
    virtual QList<ObjectPointer> arrangeObjects(const QList<ObjectPointer> &content) const;
    /// The text of an object in an item view. The value of a `platform::String`, and the name of the class of any
    /// other object, unless overridden.
    virtual QString displayText(const Object &object) const;

private:
    class Operation;

    qint64 arrangedCount() const { return (m_arrangement ? *m_arrangement : m_content).size(); }
    IndexSet contentIndexes(const IndexSet &arrangedIndexes) const;
    qint64 contentIndex(qint64 arrangedIndex) const;
    IndexSet selectedRows() const;

    void insertIntoContent(const QList<ObjectPointer> &objects, qint64 index);
    void removeFromContent(const IndexSet &indexes);
    void removeContentRows(const IndexRange &rows);
    void replaceContent(const QList<ObjectPointer> &content, Operation &operation);
    template <class Apply>
    void showChange(const RowChange &change, Apply apply);

    QList<ObjectPointer> m_content;
    std::optional<QList<ObjectPointer>> m_arrangement; // absent while the content is shown as it is
    IndexSet m_selection;
};

} // namespace platform
