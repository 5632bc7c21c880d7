// The list of the level's objects by name or by type, for finding one.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

class CInterface;

enum NamedObjListSort { NOLSM_Name = 0, NOLSM_Type = 1 };

class DlgNamedObjList {
public:
    struct ObjListItem {
        std::string text;
        uint32_t object_id;
    };

    explicit DlgNamedObjList(CInterface& controller);

    std::string m_filter; // part of a line, any case
    NamedObjListSort last_sort_method = NOLSM_Type;
    bool ignore_no_name = true; // objects without a name, or with the name "none", are left out
    std::vector<ObjListItem> items;

    void UpdateList(NamedObjListSort method);
    void SelectRow(int row); // the object alone becomes selected

private:
    void AddItem(std::string text, uint32_t object_id);

    CInterface& editor;
};

// After a page has chosen what is selected: box, pivot, state, cursor and all views.
void ShowNewSelection(CInterface& editor);
// ASCII letters only.
std::string ToUpper(const std::string& text);
