// The preferences page of the library window: the settings, and what the level says of itself. All changes take effect
// at once.
#pragma once

#include <functional>
#include <vector>

#include <QWidget>

#include "commands/MainFrame.h"
#include "desktop/LazyRefresh.h"

class CColorButton;
class QFormLayout;
class QLineEdit;
class QListWidget;
class QVBoxLayout;

class PreferencesPage : public QWidget, public EditorListener {
public:
    PreferencesPage(CMainFrame& main_frame, QWidget* parent = nullptr);
    ~PreferencesPage() override;
    void Refresh();
    void AddSection(const QString& title, QWidget* section); // behind the others

    void SettingsChanged() override { news.Request(); }
    void WorldReplaced() override { news.Request(); }

protected:
    void showEvent(QShowEvent* event) override;

private:
    QWidget* MakeLevel();
    void MakeSettings();
    // Puts the editor of a row into the form.
    void AddSetting(QFormLayout* form, size_t row);
    void Set(size_t row, const std::string& value);

    CInterface& editor;
    PreferencesDlg& page;
    LazyRefresh news;
    QVBoxLayout* sections;
    std::vector<std::function<void(const std::string&)>> show_value; // by the table's rows
    QLineEdit *map_file, *map_name;
    QListWidget* games;
    CColorButton* ambient;
};
