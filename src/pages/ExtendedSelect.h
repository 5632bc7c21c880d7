// The window that selects, hides and shows the level's entities by their type.
#pragma once

#include <set>
#include <string>
#include <vector>

#include "editor/EditorListener.h"
#include "scene/ViewInfo.h"

class CInterface;

class DlgExtendedSelect : public EditorListener {
public:
    explicit DlgExtendedSelect(CInterface& controller);
    DlgExtendedSelect(const DlgExtendedSelect&) = delete;
    DlgExtendedSelect& operator=(const DlgExtendedSelect&) = delete;
    ~DlgExtendedSelect() override;

    // The type words in capitals, each once, sorted; and whether each is marked.
    struct TypeRow {
        std::string word;
        bool marked = false;
    };
    std::vector<TypeRow> m_elist;

    void UpdateETypesAdd(const std::string& type);
    void UpdateETypesRemove(const std::string& type); // unless an entity of that type remains
    void MarkETypesInSelection();

    void OnHide();
    void OnShow();
    void OnInvert();
    void OnAll(bool marked); // "All" and "None"
    // Without control: the first marked type is shown if any of its entities is hidden, else hidden. With control: the
    // row alone is shown.
    void OnDoubleClick(int row, bool control);

    // The window's place: that of its last closing.
    static bool ReadPosition(RECT& window);
    static void StorePosition(const RECT& window);

    void EntityTypesChanged() override;
    void SelectionChanged() override { MarkETypesInSelection(); }
    void WorldReplaced() override;

private:
    std::set<std::string> MarkedWords() const;
    void Hide(const std::set<std::string>& words, class ChangeRecord& record);
    void Show(const std::set<std::string>& words, ChangeRecord& record);
    void Finish();

    CInterface& editor;
    bool changing = false; // its own changes of the selection leave the marks
};
