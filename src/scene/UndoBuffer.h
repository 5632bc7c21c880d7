// One of the two lists of undo and redo actions. The last entry is the most recent.
#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <vector>

using IdRenaming = std::function<uint32_t(uint32_t)>; // old object id to new

class CUndoAction;
class World;

class CUndoBuffer {
public:
    CUndoBuffer();
    ~CUndoBuffer();

    // Drops the oldest entry first if the list holds more than the front end's undo states: it holds one more than
    // them.
    void AddAction(std::unique_ptr<CUndoAction> new_action);
    // Puts an action that only selects behind a last one that does, as one entry. False, with nothing taken: neither.
    bool Fold(std::unique_ptr<CUndoAction>& next);
    // Runs the last action and puts its inverse into redo_buffer. False when the list is empty.
    bool UndoLastAction(World& world, CUndoBuffer& redo_buffer);
    std::unique_ptr<CUndoAction> RemoveLastAction(); // without running it; null when the list is empty
    void Empty();
    void RenameIDs(const IdRenaming& renamed);
    int GetActionCount() const { return static_cast<int>(buffer.size()); }
    std::string GetActionDescription(int i) const; // 0 is the oldest
    std::string DescribeUndoing(int i) const;

private:
    std::vector<std::unique_ptr<CUndoAction>> buffer;
};
