#include "desktop/EntityPage.h"

#include <QComboBox>
#include <QFormLayout>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QScrollArea>
#include <QSignalBlocker>
#include <QSplitter>
#include <QTimer>
#include <QToolButton>
#include <QTreeWidget>
#include <QVBoxLayout>

#include "desktop/ActorScriptWindow.h"
#include "desktop/FileChooserDialog.h"
#include "desktop/ScriptWindow.h"

static constexpr int ANGLE_STEP = 45;

EntityPage::EntityPage(CMainFrame& main_frame, QWidget* parent)
    : QWidget(parent), editor(main_frame.interface), page(main_frame.pages.entity), news([this] {
          if (isVisible())
              Refresh();
      }) {
    actions.choose = [this](int parameter) { ChooseParameter(parameter); };
    actions.write = [this](int parameter, const std::string& text, int part) { Write(parameter, text, part); };
    actions.browse = [this](int parameter) { Browse(parameter); };
    actions.edit_script = [this](int parameter) { EditScript(parameter); };
    auto* splitter = new QSplitter(Qt::Vertical);
    splitter->addWidget(MakeTree());
    splitter->addWidget(MakeParameters());
    splitter->setStretchFactor(0, 1);
    splitter->setStretchFactor(1, 2);
    auto* column = new QVBoxLayout(this);
    column->setContentsMargins(4, 4, 4, 4);
    column->addWidget(splitter);
    FillTree();
    Refresh();
    editor.AddListener(*this);
}

EntityPage::~EntityPage() { editor.RemoveListener(*this); }

void EntityPage::showEvent(QShowEvent* event) {
    Refresh();
    QWidget::showEvent(event);
}

QWidget* EntityPage::MakeTree() {
    auto* part = new QWidget;
    filter = new QLineEdit;
    filter->setPlaceholderText(tr("Filter"));
    filter->setClearButtonEnabled(true);
    filter->setToolTip(tr("Shows the kinds whose name holds this text"));
    tree = new QTreeWidget;
    tree->setHeaderHidden(true);
    tree->setUniformRowHeights(true);
    tree->setToolTip(tr("The kind of the next entity. With entities selected, another kind converts them."));
    auto* column = new QVBoxLayout(part);
    column->setContentsMargins(0, 0, 0, 0);
    column->addWidget(filter);
    column->addWidget(tree);
    connect(filter, &QLineEdit::textChanged, this, [this] { FilterTree(); });
    connect(tree, &QTreeWidget::currentItemChanged, this, [this](QTreeWidgetItem* item) { ChooseInTree(item); });
    return part;
}

QWidget* EntityPage::MakeParameters() {
    auto* part = new QWidget;
    headline = new QLabel;
    headline->setTextFormat(Qt::PlainText);
    headline->setWordWrap(true);
    helpline = new QLabel;
    helpline->setTextFormat(Qt::PlainText);
    helpline->setWordWrap(true);
    helpline->setMinimumHeight(2 * fontMetrics().height());
    helpline->setAlignment(Qt::AlignTop | Qt::AlignLeft);
    helpline->setToolTip(tr("What the parameter means"));
    name = new QLineEdit;
    name->setToolTip(tr("By this name scripts find the entity"));
    saved = new QComboBox;
    saved->setPlaceholderText(tr("Saved values"));
    saved->setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Fixed);
    saved->setToolTip(tr("Recalls a set of values"));
    auto* save = new QPushButton(tr("Sa&ve..."));
    save->setToolTip(tr("Stores these values as a set under a name"));
    scroll = new QScrollArea;
    scroll->setWidgetResizable(true);
    auto* angles = new QHBoxLayout;
    angles->setSpacing(1);
    angles->addWidget(new QLabel(tr("Angle:")));
    for (int degrees = 0; degrees < 360; degrees += ANGLE_STEP) {
        auto* button = new QToolButton;
        button->setText(QString::number(degrees));
        button->setToolTip(tr("Writes %1 into the number that was last in use").arg(degrees));
        angles->addWidget(button);
        angle_buttons.push_back(button);
        connect(button, &QToolButton::clicked, this, [this, degrees] {
            page.SetAngle(degrees);
            Refresh();
        });
    }
    angles->addStretch();
    auto* row = new QHBoxLayout;
    row->addWidget(saved);
    row->addWidget(save);
    auto* named = new QFormLayout;
    named->addRow(tr("Name:"), name);
    auto* column = new QVBoxLayout(part);
    column->setContentsMargins(0, 0, 0, 0);
    column->addWidget(headline);
    column->addLayout(named);
    column->addWidget(scroll, 1);
    column->addWidget(helpline);
    column->addLayout(angles);
    column->addLayout(row);
    connect(name, &QLineEdit::editingFinished, this, [this] {
        if (name->isModified())
            page.ChangeName(name->text().toStdString());
        name->setModified(false);
    });
    connect(save, &QPushButton::clicked, this, [this] {
        page.OnSavetemplate();
        Refresh();
    });
    connect(saved, &QComboBox::activated, this, [this](int index) {
        page.LoadSavedTemplate(index);
        Refresh();
    });
    return part;
}

// --- The tree. An item carries its template's name; a directory carries none.

void EntityPage::FillTree() {
    const QSignalBlocker blocker(tree);
    tree->clear();
    for (const EntityDlg::Directory& directory : page.entity_directory) {
        const QString title = QString::fromStdString(directory.name);
        auto* top = new QTreeWidgetItem(tree, {title.isEmpty() ? tr("(no directory)") : title});
        for (const int t : directory.templates) {
            const QString text = QString::fromStdString(page.entity_template[static_cast<size_t>(t)]);
            auto* item = new QTreeWidgetItem(top, {text});
            item->setData(0, Qt::UserRole, text);
        }
    }
    tree->setCurrentItem(nullptr);
}

void EntityPage::FilterTree() {
    for (int d = 0; d < tree->topLevelItemCount(); ++d) {
        QTreeWidgetItem* directory = tree->topLevelItem(d);
        const bool whole = QString::fromStdString(page.entity_directory[static_cast<size_t>(d)].name)
                               .contains(filter->text(), Qt::CaseInsensitive);
        bool any = false;
        for (int i = 0; i < directory->childCount(); ++i) {
            const bool shown = whole || directory->child(i)->text(0).contains(filter->text(), Qt::CaseInsensitive);
            directory->child(i)->setHidden(!shown);
            any |= shown;
        }
        directory->setHidden(!any);
        directory->setExpanded(!filter->text().isEmpty());
    }
    ShowChosenTemplate();
    if (tree->currentItem())
        tree->scrollToItem(tree->currentItem()); // which opens its directory
}

void EntityPage::ChooseInTree(QTreeWidgetItem* item) {
    if (!item)
        return;
    const QString chosen = item->data(0, Qt::UserRole).toString();
    if (chosen.isEmpty())
        page.SelectDirectory();
    else
        page.SelectTemplate(chosen.toStdString());
    QTimer::singleShot(0, this, [this] { Refresh(); }); // a box may have refused it: the tree goes back
}

void EntityPage::ShowChosenTemplate() {
    const Entity* chosen = page.SelectedTemplate();
    const QTreeWidgetItem* current = tree->currentItem();
    if (!chosen || (current && current->data(0, Qt::UserRole).toString().toStdString() == chosen->name))
        return;
    const QSignalBlocker blocker(tree);
    const QString wanted = QString::fromStdString(chosen->name);
    for (int d = 0; d < tree->topLevelItemCount(); ++d)
        for (int i = 0; i < tree->topLevelItem(d)->childCount(); ++i)
            if (tree->topLevelItem(d)->child(i)->text(0) == wanted) {
                tree->setCurrentItem(tree->topLevelItem(d)->child(i));
                tree->scrollToItem(tree->currentItem());
                return;
            }
}

// --- The parameters

void EntityPage::Refresh() {
    ShowChosenTemplate();
    const Entity* chosen = page.SelectedTemplate();
    headline->setText(QString::fromStdString(page.m_entity_type));
    if (!name->hasFocus() || !name->isModified())
        name->setText(QString::fromStdString(page.m_name));
    name->setEnabled(page.IsSelection());
    saved->clear();
    for (const std::string& file : page.saved_templates)
        saved->addItem(QString::fromStdString(file));
    saved->setCurrentIndex(-1);
    saved->setEnabled(saved->count() > 0);
    if (!chosen) {
        SetHolder(new QWidget);
        fields.clear();
        field_names.clear();
        field_choices.clear();
    } else {
        if (!FieldsFit(*chosen))
            MakeFields(*chosen);
        ShowValues(*chosen);
    }
    helpline->setText(QString::fromStdString(page.m_helpline).trimmed());
    const bool is_number = chosen && page.selected_parameter >= 0 &&
                           (chosen->parameter[static_cast<size_t>(page.selected_parameter)].type == EPT_INT ||
                            chosen->parameter[static_cast<size_t>(page.selected_parameter)].type == EPT_FLOAT);
    for (QToolButton* button : angle_buttons)
        button->setEnabled(is_number);
}

bool EntityPage::FieldsFit(const Entity& chosen) const {
    if (chosen.parameter.size() != fields.size())
        return false;
    const int before = page.selected_parameter;
    bool fit = true;
    for (size_t i = 0; fit && i < fields.size(); ++i) {
        fit = fields[i]->type == chosen.parameter[i].type && field_names[i] == chosen.parameter[i].name;
        if (fit && fields[i]->type == EPT_CONSTANT) {
            page.SelectParameter(static_cast<int>(i));
            fit = page.choices == field_choices[i];
        }
    }
    page.SelectParameter(before);
    return fit;
}

void EntityPage::MakeFields(const Entity& chosen) {
    auto* holder = new QWidget;
    auto* form = new QFormLayout(holder);
    form->setContentsMargins(4, 4, 4, 4);
    form->setVerticalSpacing(3);
    form->setFieldGrowthPolicy(QFormLayout::ExpandingFieldsGrow);
    fields.clear();
    field_names.clear();
    field_choices.clear();
    const int before = page.selected_parameter;
    for (size_t i = 0; i < chosen.parameter.size(); ++i) {
        const EntityParameter& parameter = chosen.parameter[i];
        page.SelectParameter(static_cast<int>(i));
        field_names.push_back(parameter.name);
        field_choices.push_back(page.choices);
        fields.push_back(new ParameterField(parameter, static_cast<int>(i), page.choices, actions));
        fields.back()->setObjectName(QString::fromStdString(parameter.name));
        form->addRow(QString::fromStdString(parameter.name) + ":", fields.back());
    }
    page.SelectParameter(before);
    SetHolder(holder);
}

// The old fields go later: one of them may have asked for this.
void EntityPage::SetHolder(QWidget* holder) {
    if (QWidget* old = scroll->takeWidget())
        old->deleteLater();
    scroll->setWidget(holder);
}

void EntityPage::ShowValues(const Entity& chosen) {
    for (size_t i = 0; i < fields.size(); ++i)
        fields[i]->ShowValue(chosen.parameter[i],
                             page.IsSelection() ? MixedParts(*editor.world, chosen.parameter[i]) : 0);
}

void EntityPage::ChooseParameter(int parameter) {
    page.SelectParameter(parameter);
    news.Request();
}

void EntityPage::Write(int parameter, const std::string& text, int part) {
    // A field that goes with another kind's fields may still give what was typed in it.
    const Entity* chosen = page.SelectedTemplate();
    const auto i = static_cast<size_t>(parameter);
    if (!chosen || i >= chosen->parameter.size() || i >= field_names.size() ||
        chosen->parameter[i].name != field_names[i])
        return;
    page.SelectParameter(parameter);
    page.TypeValue(text, part);
    news.Request(); // later: the editor that gave the value may have to go
}

void EntityPage::Browse(int parameter) {
    page.SelectParameter(parameter);
    const BrowseRule rule = page.GetBrowseRule();
    if (const auto path = RunFileChooser(this, rule.root, rule.default_dir, rule.pattern)) {
        page.SelectParameter(parameter);
        page.TakeFile(*path);
    }
    news.Request();
}

void EntityPage::EditScript(int parameter) {
    page.SelectParameter(parameter);
    std::string text = page.m_parameter;
    const ParameterEditor kind = page.EditorOfParameter();
    if (kind == ParameterEditor::Text ? RunActorScriptWindow(this, text)
                                      : RunScriptWindow(this, editor, page.ScriptSyntax(kind), text)) {
        page.SelectParameter(parameter);
        page.TakeScript(text);
    }
    news.Request();
}
