#include "desktop/PrefabPage.h"

#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QSignalBlocker>
#include <QSplitter>
#include <QTreeWidget>
#include <QVBoxLayout>

namespace {

constexpr int FAMILY_ROLE = Qt::UserRole, DIRECTORY_ROLE = Qt::UserRole + 1; // true: brushes; -1: the root

} // namespace

PrefabPage::PrefabPage(CMainFrame& main_frame, QWidget* parent)
    : QWidget(parent), page(main_frame.pages.prefab), list(new ThumbnailView(&model)), tree(new QTreeWidget),
      filter(new QLineEdit), description(new QLabel), save(new QPushButton(tr("Sa&ve..."))),
      make_directory(new QPushButton(tr("New &directory..."))) {
    tree->setHeaderHidden(true);
    filter->setPlaceholderText(tr("Filter"));
    filter->setClearButtonEnabled(true);
    description->setTextFormat(Qt::PlainText);
    description->setWordWrap(true);
    description->setMinimumHeight(3 * fontMetrics().height());
    description->setAlignment(Qt::AlignTop | Qt::AlignLeft);
    auto* refresh = new QPushButton(tr("&Refresh"));
    tree->setToolTip(tr("Custom brushes and prefabs by directory"));
    filter->setToolTip(tr("Shows the files whose name holds this text"));
    list->setToolTip(tr("The chosen one is placed by the custom brush tool"));
    description->setToolTip(tr("What the prefab's maker wrote of it"));
    save->setToolTip(tr("Saves the selection as a prefab of the directory"));
    make_directory->setToolTip(tr("Makes a directory of prefabs"));
    refresh->setToolTip(tr("Reads the directories anew"));
    auto* splitter = new QSplitter;
    splitter->addWidget(tree);
    splitter->addWidget(list);
    splitter->setStretchFactor(1, 2);
    splitter->setSizes({140, 300});
    auto* row = new QHBoxLayout;
    for (QPushButton* button : {save, make_directory, refresh})
        row->addWidget(button);
    auto* column = new QVBoxLayout(this);
    column->setContentsMargins(4, 4, 4, 4);
    column->addWidget(filter);
    column->addWidget(splitter, 1);
    column->addWidget(description);
    column->addLayout(row);
    connect(tree, &QTreeWidget::currentItemChanged, this, [this](const QTreeWidgetItem* item) { ChooseInTree(item); });
    connect(list->selectionModel(), &QItemSelectionModel::currentChanged, this, [this](const QModelIndex& index) {
        page.SelectFile(index.isValid() ? files[static_cast<size_t>(index.row())] : -1);
        ShowChosen();
    });
    connect(filter, &QLineEdit::textChanged, this, [this] { FillList(); });
    connect(save, &QPushButton::clicked, this, [this] { Save(); });
    connect(make_directory, &QPushButton::clicked, this, [this] {
        page.MakeDirectory();
        Refresh();
    });
    connect(refresh, &QPushButton::clicked, this, [this] {
        page.Refresh();
        model.ForgetPictures();
        Refresh();
    });
    Refresh();
}

void PrefabPage::showEvent(QShowEvent* event) {
    Refresh();
    QWidget::showEvent(event);
}

void PrefabPage::Refresh() {
    FillTree();
    FillList();
}

void PrefabPage::Save() {
    page.Save();
    Refresh();
}

void PrefabPage::FillTree() {
    const QSignalBlocker blocker(tree);
    tree->clear();
    for (const bool of_brushes : {true, false}) {
        const PrefabFamily& family = of_brushes ? page.brushes : page.prefabs;
        auto* root = new QTreeWidgetItem(tree, {QString::fromStdString(family.root)});
        root->setData(0, FAMILY_ROLE, of_brushes);
        root->setData(0, DIRECTORY_ROLE, -1);
        root->setExpanded(true);
        for (size_t d = 0; d < family.directory.size(); ++d) {
            auto* item = new QTreeWidgetItem(root, {QString::fromStdString(family.directory[d])});
            item->setData(0, FAMILY_ROLE, of_brushes);
            item->setData(0, DIRECTORY_ROLE, static_cast<int>(d));
        }
        if (of_brushes == page.brushes_selected)
            tree->setCurrentItem(page.selected_directory < 0 ? root : root->child(page.selected_directory));
    }
}

void PrefabPage::ChooseInTree(const QTreeWidgetItem* item) {
    if (!item)
        return;
    page.SelectDirectory(item->data(0, FAMILY_ROLE).toBool(), item->data(0, DIRECTORY_ROLE).toInt());
    FillList();
}

void PrefabPage::FillList() {
    const int chosen = page.selected_file;
    const std::string directory = page.GetSelectedDirectory();
    const std::vector<std::string>& names = page.ListedFiles();
    std::vector<ThumbnailRow> rows;
    int chosen_row = -1;
    files.clear();
    for (size_t i = 0; i < names.size(); ++i) {
        ThumbnailRow row;
        row.name = QString::fromStdString(names[i]);
        if (!row.name.contains(filter->text(), Qt::CaseInsensitive))
            continue;
        row.key = QString::fromStdString(directory + "\\" + names[i]);
        row.tool_tip = row.key;
        row.make = [directory, file = names[i]](Thumbnail& picture) {
            return PrefabDlg::LoadPicture(directory, file, picture);
        };
        if (static_cast<int>(i) == chosen)
            chosen_row = static_cast<int>(rows.size());
        files.push_back(static_cast<int>(i));
        rows.push_back(std::move(row));
    }
    const QSignalBlocker blocker(list->selectionModel());
    list->SetPlain(!page.brushes_selected);
    model.SetRows(std::move(rows));
    list->setCurrentIndex(model.index(chosen_row));
    ShowChosen();
}

void PrefabPage::ShowChosen() {
    description->setText(QString::fromStdString(page.m_desc));
    save->setEnabled(page.CanSave());
    make_directory->setEnabled(page.CanSave());
}
