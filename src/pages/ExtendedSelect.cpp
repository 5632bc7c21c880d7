#include "pages/ExtendedSelect.h"

#include <algorithm>

#include "editor/Interface.h"
#include "foundation/Settings.h"
#include "foundation/Strings.h"
#include "pages/NamedObjects.h"

static constexpr const char* POSITION_VALUE = "ExtendedSelPos";
static constexpr const char *HIDE_STEP = "Hide entities by type.", *SHOW_STEP = "Show entities by type.";

static std::set<std::string> TypesOfLevel(const World& world) {
    std::set<std::string> words;
    for (const auto& e : world.entity)
        words.insert(ToUpper(e->str_type));
    return words;
}

DlgExtendedSelect::DlgExtendedSelect(CInterface& controller) : editor(controller) {
    WorldReplaced();
    editor.AddListener(*this);
}

DlgExtendedSelect::~DlgExtendedSelect() { editor.RemoveListener(*this); }

void DlgExtendedSelect::WorldReplaced() {
    m_elist.clear();
    EntityTypesChanged();
    MarkETypesInSelection();
}

void DlgExtendedSelect::EntityTypesChanged() {
    const std::set<std::string> words = TypesOfLevel(*editor.world);
    std::erase_if(m_elist, [&words](const TypeRow& row) { return words.count(row.word) == 0; });
    for (const std::string& word : words)
        UpdateETypesAdd(word);
}

void DlgExtendedSelect::UpdateETypesAdd(const std::string& type) {
    const std::string word = ToUpper(type);
    const auto place = std::lower_bound(m_elist.begin(), m_elist.end(), word,
                                        [](const TypeRow& row, const std::string& w) { return row.word < w; });
    if (place == m_elist.end() || place->word != word)
        m_elist.insert(place, {word, false});
}

void DlgExtendedSelect::UpdateETypesRemove(const std::string& type) {
    const std::string word = ToUpper(type);
    if (TypesOfLevel(*editor.world).count(word) == 0)
        std::erase_if(m_elist, [&word](const TypeRow& row) { return row.word == word; });
}

void DlgExtendedSelect::MarkETypesInSelection() {
    if (changing)
        return;
    std::set<std::string> selected;
    for (const int e : editor.world->entity_selection)
        selected.insert(ToUpper(editor.world->entity[static_cast<size_t>(e)]->str_type));
    for (TypeRow& row : m_elist)
        row.marked = selected.count(row.word) > 0;
}

std::set<std::string> DlgExtendedSelect::MarkedWords() const {
    std::set<std::string> words;
    for (const TypeRow& row : m_elist)
        if (row.marked)
            words.insert(row.word);
    return words;
}

void DlgExtendedSelect::Hide(const std::set<std::string>& words, ChangeRecord& record) {
    World& world = *editor.world;
    for (int i = 0; i < world.GetEntityCount(); ++i) {
        Entity& e = *world.entity[static_cast<size_t>(i)];
        if (words.count(ToUpper(e.str_type)) == 0)
            continue;
        record.AddObject(e);
        e.is_hidden = e.is_hidden_special = true;
        world.entity_selection.RemoveItem(i);
    }
}

void DlgExtendedSelect::Show(const std::set<std::string>& words, ChangeRecord& record) {
    for (const auto& e : editor.world->entity)
        if (words.count(ToUpper(e->str_type)) > 0) {
            record.AddObject(*e);
            e->is_hidden = e->is_hidden_special = false;
        }
}

void DlgExtendedSelect::Finish() {
    changing = true;
    editor.SelectionChanged();
    editor.UpdateSelectionBox();
    editor.RedrawAllViews();
    changing = false;
}

void DlgExtendedSelect::OnHide() {
    {
        ChangeRecord record(*editor.world, HIDE_STEP);
        Hide(MarkedWords(), record);
    }
    Finish();
}

void DlgExtendedSelect::OnShow() {
    {
        ChangeRecord record(*editor.world, SHOW_STEP);
        Show(MarkedWords(), record);
    }
    editor.RedrawAllViews();
}

void DlgExtendedSelect::OnInvert() {
    for (TypeRow& row : m_elist)
        row.marked = !row.marked;
}

void DlgExtendedSelect::OnAll(bool marked) {
    for (TypeRow& row : m_elist)
        row.marked = marked;
}

void DlgExtendedSelect::OnDoubleClick(int row, bool control) {
    if (control) {
        if (row < 0 || static_cast<size_t>(row) >= m_elist.size())
            return;
        std::set<std::string> others;
        for (size_t i = 0; i < m_elist.size(); ++i) {
            m_elist[i].marked = i == static_cast<size_t>(row);
            if (!m_elist[i].marked)
                others.insert(m_elist[i].word);
        }
        ChangeRecord record(*editor.world, SHOW_STEP);
        Hide(others, record);
        Show(MarkedWords(), record);
    } else {
        const auto first = std::find_if(m_elist.begin(), m_elist.end(), [](const TypeRow& r) { return r.marked; });
        if (first == m_elist.end())
            return;
        const auto& entities = editor.world->entity;
        const bool any_hidden = std::any_of(entities.begin(), entities.end(), [&first](const auto& e) {
            return e->is_hidden && ToUpper(e->str_type) == first->word;
        });
        ChangeRecord record(*editor.world, any_hidden ? SHOW_STEP : HIDE_STEP);
        if (any_hidden)
            Show({first->word}, record);
        else
            Hide({first->word}, record);
    }
    Finish();
}

bool DlgExtendedSelect::ReadPosition(RECT& window) {
    RegistryClass store;
    RECT stored;
    static_assert(sizeof stored == 16);
    if (!store.OpenKeyDirectory(SETTINGS_KEY) ||
        store.GetKeyValue(POSITION_VALUE, &stored, sizeof stored) != sizeof stored)
        return false;
    window = stored;
    return true;
}

void DlgExtendedSelect::StorePosition(const RECT& window) {
    RegistryClass store;
    if (store.OpenKeyDirectory(SETTINGS_KEY))
        store.SetKeyValue(POSITION_VALUE, &window, sizeof window);
}
