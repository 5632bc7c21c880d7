// Undo and redo: two lists of small actions. An action stores the one thing that reverses one step: a displacement, a
// list of ids, copies of deleted objects. Moves and rotations act on the current selection, which is itself undoable,
// so that the list brings it back before a move is reversed.
//
// With full undo on, steps that have no action of their own (scaling, textures, links, groups, ...) and all drags are
// recorded as CUndoActionChange: the touched objects as they were, whatever the modes and the pivot of now.
#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "foundation/Vector.h"
#include "scene/BaseObject.h"
#include "scene/World.h"

class CUndoAction {
public:
    enum EType { UA_NONE, UA_DELETE, UA_MOVE, UA_ROTATE, UA_CREATE, UA_SELECT, UA_DESELECT, UA_CHANGE };
    enum ESelecting { SELECTS_NOTHING, SELECTS_OBJECTS, SELECTS_VERTICES };

    explicit CUndoAction(EType action_type) : type(action_type) {}
    virtual ~CUndoAction() = default;
    CUndoAction(const CUndoAction&) = delete;
    CUndoAction& operator=(const CUndoAction&) = delete;

    virtual bool IsEmpty() const = 0;
    virtual std::string GetActionDescription() const = 0; // the step that it reverses
    virtual std::string DescribeUndoing() const { return GetActionDescription(); } // what Undo does
    virtual ESelecting Selects() const { return SELECTS_NOTHING; } // when it does nothing else
    virtual void Undo(World& world) = 0;
    // The action that reverses this one, still to be filled; made before Undo runs.
    virtual std::unique_ptr<CUndoAction> MakeInverse() const = 0;
    virtual void CreateRedo(CUndoAction& redo, World& world) = 0; // fills it
    virtual void AddObject(BaseObject&, World&) {}
    virtual void AddID(uint32_t, World&) {}
    virtual void RenameIDs(const IdRenaming&) {} // all objects have got new ids

    const EType type;
};

class ObjectCopy;
class SceneRelations;

class CUndoActionDelete : public CUndoAction {
public:
    CUndoActionDelete();
    ~CUndoActionDelete() override;
    bool IsEmpty() const override { return objects.empty(); }
    std::string GetActionDescription() const override;
    std::string DescribeUndoing() const override;
    void Undo(World& world) override;
    std::unique_ptr<CUndoAction> MakeInverse() const override;
    void CreateRedo(CUndoAction& redo, World& world) override;
    void AddObject(BaseObject& object, World& world) override;
    void AddID(uint32_t id, World& world) override;
    void RenameIDs(const IdRenaming& renamed) override;

private:
    std::vector<std::unique_ptr<ObjectCopy>> objects;
    std::unique_ptr<SceneRelations> relations; // with full undo: what the deletion takes from the objects that stay
};

class CUndoActionMove : public CUndoAction {
public:
    CUndoActionMove(const D3DVECTOR& reversing_delta, bool of_vertices)
        : CUndoAction(UA_MOVE), delta(reversing_delta), vertex(of_vertices) {}
    bool IsEmpty() const override { return false; }
    std::string GetActionDescription() const override;
    void Undo(World& world) override;
    std::unique_ptr<CUndoAction> MakeInverse() const override;
    void CreateRedo(CUndoAction&, World&) override {}

private:
    D3DVECTOR delta; // reverses the step
    bool vertex;
};

class CUndoActionRotate : public CUndoAction {
public:
    CUndoActionRotate(float reversing_angle, int of_view)
        : CUndoAction(UA_ROTATE), angle(reversing_angle), view(of_view) {}
    bool IsEmpty() const override { return false; }
    std::string GetActionDescription() const override;
    void Undo(World& world) override;
    std::unique_ptr<CUndoAction> MakeInverse() const override;
    void CreateRedo(CUndoAction&, World&) override {}

private:
    float angle; // radians, reverses the step
    int view;
};

// Actions that hold ids. With `vertex` set they are indices into the world's so_vertex.
class CUndoActionCommon : public CUndoAction {
public:
    using CUndoAction::CUndoAction;
    bool IsEmpty() const override { return objects.empty(); }
    void CreateRedo(CUndoAction& redo, World& world) override;
    void AddObject(BaseObject& object, World& world) override;
    void AddID(uint32_t id, World& world) override;
    void RenameIDs(const IdRenaming& renamed) override;

protected:
    std::vector<uint32_t> objects;
};

class CUndoActionCreate : public CUndoActionCommon {
public:
    CUndoActionCreate() : CUndoActionCommon(UA_CREATE) {}
    std::string GetActionDescription() const override;
    std::string DescribeUndoing() const override;
    void Undo(World& world) override;
    std::unique_ptr<CUndoAction> MakeInverse() const override;
};

class CUndoActionSelect : public CUndoActionCommon {
public:
    explicit CUndoActionSelect(bool of_vertices) : CUndoActionCommon(UA_SELECT), vertex(of_vertices) {}
    std::string GetActionDescription() const override;
    std::string DescribeUndoing() const override;
    ESelecting Selects() const override { return vertex ? SELECTS_VERTICES : SELECTS_OBJECTS; }
    void Undo(World& world) override;
    std::unique_ptr<CUndoAction> MakeInverse() const override;
    void RenameIDs(const IdRenaming& renamed) override;

private:
    bool vertex;
};

class CUndoActionDeselect : public CUndoActionCommon {
public:
    explicit CUndoActionDeselect(bool of_vertices) : CUndoActionCommon(UA_DESELECT), vertex(of_vertices) {}
    std::string GetActionDescription() const override;
    std::string DescribeUndoing() const override;
    ESelecting Selects() const override { return vertex ? SELECTS_VERTICES : SELECTS_OBJECTS; }
    void Undo(World& world) override;
    std::unique_ptr<CUndoAction> MakeInverse() const override;
    void RenameIDs(const IdRenaming& renamed) override;

private:
    bool vertex;
};

// What a command is about to touch, taken before it runs. Does nothing unless full undo is on.
enum class ChangeScope { Selection, AllObjects, Added }; // Added: only what AddObject names
class ChangeRecord {
public:
    // description: a sentence for the undo list, such as "Scale objects."
    ChangeRecord(World& world, std::string description, ChangeScope scope = ChangeScope::Selection);
    ~ChangeRecord(); // commits
    ChangeRecord(const ChangeRecord&) = delete;
    ChangeRecord& operator=(const ChangeRecord&) = delete;

    void AddObject(const BaseObject& object); // an object that is about to be touched, too; one made since is not kept
    // Adds the action, if anything differs: also objects made or deleted since, groups, and the selection with them.
    void Commit();
    void Discard(); // nothing will be added

private:
    struct State;
    World& world;
    std::unique_ptr<State> before; // null: off, committed or discarded
    std::string description;
};
