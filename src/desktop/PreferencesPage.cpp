#include "desktop/PreferencesPage.h"

#include <climits>

#include <QCheckBox>
#include <QComboBox>
#include <QEvent>
#include <QFormLayout>
#include <QGroupBox>
#include <QLineEdit>
#include <QListWidget>
#include <QPushButton>
#include <QScrollArea>
#include <QSignalBlocker>
#include <QSpinBox>
#include <QVBoxLayout>

#include "desktop/ColorButton.h"
#include "foundation/Strings.h"

namespace {

// A section begins at the setting of this name.
struct Section {
    const char* first;
    const char* title;
};
constexpr Section SECTIONS[] = {{"LightingMethod", "Compile"}, {"UndoStates", "Undo and safety"},
                                {"UseMetricUnits", "Editing"}, {"AutoLoadProject", "Projects"},
                                {"BgColor_3DView", "Colours"}, {"GameCommand", "Programs"}};

const SettingEntry* EntryOf(const char* name) {
    for (const SettingEntry& entry : SettingTable())
        if (EqualNoCase(entry.name, name))
            return &entry;
    return nullptr;
}

bool IsColor(const std::string& name) { return StartsWithNoCase(name, "BgColor"); }

// A wheel over the page scrolls it, and changes no setting on its way.
class CalmWheel : public QObject {
public:
    using QObject::QObject;
    bool eventFilter(QObject* watched, QEvent* event) override {
        const auto* widget = qobject_cast<QWidget*>(watched);
        if (event->type() != QEvent::Wheel || !widget || widget->hasFocus())
            return false;
        event->ignore();
        return true;
    }
};

} // namespace

PreferencesPage::PreferencesPage(CMainFrame& main_frame, QWidget* parent)
    : QWidget(parent), editor(main_frame.interface), page(main_frame.pages.preferences), news([this] {
          if (isVisible())
              Refresh();
      }) {
    auto* holder = new QWidget;
    sections = new QVBoxLayout(holder);
    sections->addWidget(MakeLevel());
    MakeSettings();
    sections->addStretch();
    auto* scroll = new QScrollArea;
    scroll->setWidget(holder);
    scroll->setWidgetResizable(true);
    scroll->setFrameShape(QFrame::NoFrame);
    auto* column = new QVBoxLayout(this);
    column->setContentsMargins(0, 0, 0, 0);
    column->addWidget(scroll);
    Refresh();
    editor.AddListener(*this);
}

PreferencesPage::~PreferencesPage() { editor.RemoveListener(*this); }

void PreferencesPage::showEvent(QShowEvent* event) {
    Refresh();
    QWidget::showEvent(event);
}

void PreferencesPage::AddSection(const QString& title, QWidget* section) {
    auto* group = new QGroupBox(title);
    auto* column = new QVBoxLayout(group);
    column->addWidget(section);
    for (auto* combo : section->findChildren<QComboBox*>()) {
        combo->setFocusPolicy(Qt::StrongFocus);
        combo->installEventFilter(new CalmWheel(combo));
    }
    sections->insertWidget(sections->count() - 1, group);
}

QWidget* PreferencesPage::MakeLevel() {
    auto* group = new QGroupBox(tr("Level"));
    auto* form = new QFormLayout(group);
    map_file = new QLineEdit;
    map_name = new QLineEdit;
    games = new QListWidget;
    games->setMaximumHeight(6 * fontMetrics().height());
    ambient = new CColorButton;
    map_file->setToolTip(tr("The compiled level is Maps\\<this name>.few"));
    map_name->setToolTip(tr("The name that players see"));
    games->setToolTip(tr("The multiplayer games that the level is made for"));
    form->addRow(tr("Map file:"), map_file);
    form->addRow(tr("Map name:"), map_name);
    form->addRow(tr("Ambient light:"), ambient);
    form->addRow(tr("Games:"), games);
    connect(map_file, &QLineEdit::editingFinished, this, [this] {
        if (map_file->isModified())
            page.SetMapFile(map_file->text().toStdString());
        map_file->setModified(false);
    });
    connect(map_name, &QLineEdit::editingFinished, this, [this] {
        if (map_name->isModified())
            page.SetMapName(map_name->text().toStdString());
        map_name->setModified(false);
    });
    connect(ambient, &CColorButton::Chosen, this, [this](uint32_t rgb) { page.SetAmbientColor(rgb); });
    connect(games, &QListWidget::itemChanged, this, [this](const QListWidgetItem* item) {
        page.ChooseGame(item->text().toStdString(), item->checkState() == Qt::Checked);
        news.Request();
    });
    return group;
}

void PreferencesPage::MakeSettings() {
    const std::vector<Preference>& table = PreferencesDlg::Table();
    QFormLayout* form = nullptr;
    for (size_t row = 0; row < table.size(); ++row) {
        for (const Section& section : SECTIONS)
            if (EqualNoCase(section.first, table[row].name) || (!form && &section == SECTIONS)) {
                auto* group = new QGroupBox(tr(section.title));
                form = new QFormLayout(group);
                form->setVerticalSpacing(3);
                sections->addWidget(group);
                break;
            }
        AddSetting(form, row);
        if (EqualNoCase(table[row].name, "UndoStates")) {
            auto* purge = new QPushButton(tr("&Purge the undo lists"));
            purge->setToolTip(tr("Forgets what can be undone and done again"));
            connect(purge, &QPushButton::clicked, this, [this] { page.OnUndoPurge(); });
            form->addRow(QString(), purge);
        }
    }
}

void PreferencesPage::AddSetting(QFormLayout* form, size_t row) {
    const Preference& preference = PreferencesDlg::Table()[row];
    const SettingEntry* entry = EntryOf(preference.name);
    QString label = tr(preference.label);
    if (label.endsWith(':'))
        label.chop(1);
    QWidget* field = nullptr;
    if (!preference.choices.empty()) {
        auto* combo = new QComboBox;
        for (const char* choice : preference.choices)
            combo->addItem(tr(choice));
        connect(combo, &QComboBox::activated, this, [this, row](int index) { Set(row, std::to_string(index)); });
        show_value.push_back(
            [combo](const std::string& v) { combo->setCurrentIndex(QString::fromStdString(v).toInt()); });
        field = combo;
    } else if (IsColor(preference.name)) {
        auto* well = new CColorButton;
        connect(well, &CColorButton::Chosen, this,
                [this, row](uint32_t rgb) { Set(row, std::to_string(static_cast<int>(rgb))); });
        show_value.push_back(
            [well](const std::string& v) { well->SetColor(static_cast<uint32_t>(QString::fromStdString(v).toInt())); });
        form->addRow(label + ":", well); // its tool tip tells the colour
        return;
    } else if (std::holds_alternative<bool EditorSettings::*>(entry->field)) {
        auto* box = new QCheckBox(label);
        connect(box, &QCheckBox::clicked, this, [this, row](bool on) { Set(row, on ? "1" : "0"); });
        show_value.push_back([box](const std::string& v) { box->setChecked(v == "1"); });
        box->setToolTip(tr(preference.help));
        form->addRow(box);
        return;
    } else if (std::holds_alternative<int EditorSettings::*>(entry->field)) {
        auto* spin = new QSpinBox;
        const bool any = entry->least == 0 && entry->most == 0;
        spin->setRange(any ? INT_MIN : entry->least, any ? INT_MAX : entry->most);
        spin->setKeyboardTracking(false);
        connect(spin, &QSpinBox::valueChanged, this, [this, row](int number) { Set(row, std::to_string(number)); });
        show_value.push_back([spin](const std::string& v) {
            const QSignalBlocker blocker(spin);
            spin->setValue(QString::fromStdString(v).toInt());
        });
        const QString range = tr(" (%1 to %2)").arg(spin->minimum()).arg(spin->maximum());
        spin->setToolTip(tr(preference.help) + (any ? QString() : range));
        field = spin;
    } else {
        auto* line = new QLineEdit;
        connect(line, &QLineEdit::editingFinished, this, [this, row, line] {
            if (line->isModified())
                Set(row, line->text().toStdString());
            line->setModified(false);
        });
        show_value.push_back([line](const std::string& v) {
            if (!line->isModified())
                line->setText(QString::fromStdString(v));
        });
        field = line;
    }
    if (field->toolTip().isEmpty())
        field->setToolTip(tr(preference.help));
    field->setFocusPolicy(Qt::StrongFocus);
    field->installEventFilter(new CalmWheel(field));
    form->addRow(label + ":", field);
}

void PreferencesPage::Set(size_t row, const std::string& value) {
    std::string error;
    if (!page.Set(PreferencesDlg::Table()[row].name, value, error))
        GetDesktop().MessageBox(error, "Marrowstead 2000");
    news.Request();
}

void PreferencesPage::Refresh() {
    page.InitData();
    for (size_t row = 0; row < show_value.size() && row < page.values.size(); ++row)
        show_value[row](page.values[row]);
    if (!map_file->isModified())
        map_file->setText(QString::fromStdString(page.map_file));
    if (!map_name->isModified())
        map_name->setText(QString::fromStdString(page.map_name));
    ambient->SetColor(page.ambient_color);
    const QSignalBlocker blocker(games);
    games->clear();
    for (const std::string& game : page.available_games) {
        auto* item = new QListWidgetItem(QString::fromStdString(game), games);
        item->setFlags(item->flags() | Qt::ItemIsUserCheckable);
        item->setCheckState(page.IsGameChosen(game) ? Qt::Checked : Qt::Unchecked);
    }
}
