#include "scene/UndoBuffer.h"

#include "scene/FrontEnd.h"
#include "scene/Undo.h"

CUndoBuffer::CUndoBuffer() = default;

CUndoBuffer::~CUndoBuffer() = default;

void CUndoBuffer::AddAction(std::unique_ptr<CUndoAction> new_action) {
    if (GetActionCount() > GetFrontEnd().UndoStates())
        buffer.erase(buffer.begin());
    buffer.push_back(std::move(new_action));
}

std::unique_ptr<CUndoAction> CUndoBuffer::RemoveLastAction() {
    if (buffer.empty())
        return nullptr;
    std::unique_ptr<CUndoAction> last = std::move(buffer.back());
    buffer.pop_back();
    return last;
}

bool CUndoBuffer::UndoLastAction(World& world, CUndoBuffer& redo_buffer) {
    const std::unique_ptr<CUndoAction> action = RemoveLastAction();
    if (!action)
        return false;
    std::unique_ptr<CUndoAction> inverse = action->MakeInverse();
    // A deletion is undone first: its objects must exist again before their ids can be looked up.
    const bool fill_after = action->type == CUndoAction::UA_DELETE;
    if (!fill_after)
        action->CreateRedo(*inverse, world);
    action->Undo(world);
    if (fill_after)
        action->CreateRedo(*inverse, world);
    redo_buffer.AddAction(std::move(inverse));
    GetFrontEnd().RefreshSelectionBox();
    return true;
}

void CUndoBuffer::Empty() { buffer.clear(); }

void CUndoBuffer::RenameIDs(const IdRenaming& renamed) {
    for (const auto& action : buffer)
        action->RenameIDs(renamed);
}

std::string CUndoBuffer::GetActionDescription(int i) const {
    return i >= 0 && i < GetActionCount() ? buffer[static_cast<size_t>(i)]->GetActionDescription() : std::string();
}

void World::AddUndoAction(std::unique_ptr<CUndoAction> action) {
    if (!action->IsEmpty()) {
        undo_buffer.AddAction(std::move(action));
        redo_buffer.Empty();
    }
    GetFrontEnd().UndoListsChanged();
}

void World::AddSelectionToUndo(CUndoAction& action) {
    for (const int b : brush_selection)
        action.AddObject(*brush[static_cast<size_t>(b)], *this);
    for (const int e : entity_selection)
        action.AddObject(*entity[static_cast<size_t>(e)], *this);
}
