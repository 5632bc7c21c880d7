#include "scene/UndoBuffer.h"

#include "scene/FrontEnd.h"
#include "scene/Undo.h"

namespace {

// Steps that only select, one behind the other, as one.
class SelectingSteps : public CUndoAction {
public:
    static constexpr size_t MOST = 100; // a day's selecting of whole levels is no step to keep

    explicit SelectingSteps(ESelecting of) : CUndoAction(UA_SELECT), kind(of) {}
    bool IsEmpty() const override { return steps.empty(); }
    std::string GetActionDescription() const override { return "Change the selection."; }
    ESelecting Selects() const override { return kind; }
    std::unique_ptr<CUndoAction> MakeInverse() const override { return std::make_unique<SelectingSteps>(kind); }
    // Filled by Undo: a step may keep what it finds when its turn comes.
    void CreateRedo(CUndoAction& redo, World&) override { inverse = static_cast<SelectingSteps*>(&redo); }
    void Undo(World& world) override {
        for (auto step = steps.rbegin(); step != steps.rend(); ++step) {
            std::unique_ptr<CUndoAction> reversed = (*step)->MakeInverse();
            (*step)->CreateRedo(*reversed, world);
            (*step)->Undo(world);
            if (inverse)
                inverse->steps.push_back(std::move(reversed));
        }
    }
    void RenameIDs(const IdRenaming& renamed) override {
        for (const auto& step : steps)
            step->RenameIDs(renamed);
    }

    std::vector<std::unique_ptr<CUndoAction>> steps;

private:
    ESelecting kind;
    SelectingSteps* inverse = nullptr;
};

bool IsFull(const CUndoAction& action) {
    const auto* steps = dynamic_cast<const SelectingSteps*>(&action);
    return steps && steps->steps.size() >= SelectingSteps::MOST;
}

std::unique_ptr<CUndoAction> Folded(std::unique_ptr<CUndoAction> last, std::unique_ptr<CUndoAction> next) {
    if (auto* steps = dynamic_cast<SelectingSteps*>(last.get())) {
        steps->steps.push_back(std::move(next));
        return last;
    }
    auto folded = std::make_unique<SelectingSteps>(last->Selects());
    folded->steps.push_back(std::move(last));
    folded->steps.push_back(std::move(next));
    return folded;
}

} // namespace

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

std::string CUndoBuffer::DescribeUndoing(int i) const {
    return i >= 0 && i < GetActionCount() ? buffer[static_cast<size_t>(i)]->DescribeUndoing() : std::string();
}

bool CUndoBuffer::Fold(std::unique_ptr<CUndoAction>& next) {
    if (buffer.empty() || next->Selects() == CUndoAction::SELECTS_NOTHING ||
        next->Selects() != buffer.back()->Selects() || IsFull(*buffer.back()))
        return false;
    buffer.back() = Folded(std::move(buffer.back()), std::move(next));
    return true;
}

void World::AddUndoAction(std::unique_ptr<CUndoAction> action) {
    if (!action->IsEmpty()) {
        if (!GetFrontEnd().IsFullUndo() || !undo_buffer.Fold(action))
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
