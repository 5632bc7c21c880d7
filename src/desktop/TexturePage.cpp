#include "desktop/TexturePage.h"

#include <algorithm>

#include <QCheckBox>
#include <QGridLayout>
#include <QGroupBox>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QSignalBlocker>
#include <QSplitter>
#include <QTreeWidget>
#include <QVBoxLayout>

#include "desktop/DuplicateMaterialDialog.h"
#include "desktop/ParameterEditors.h"

namespace {

// What an item of the tree stands for; a class also carries its name.
enum NodeKind { NODE_GROUP, NODE_CLASS, NODE_USED, NODE_ALL };
constexpr int KIND_ROLE = Qt::UserRole, CLASS_ROLE = Qt::UserRole + 1;

QTreeWidgetItem* AddNode(QTreeWidget* tree, QTreeWidgetItem* parent, const QString& text, NodeKind kind,
                         const QString& name = {}) {
    auto* item = parent ? new QTreeWidgetItem(parent, {text}) : new QTreeWidgetItem(tree, {text});
    item->setData(0, KIND_ROLE, kind);
    item->setData(0, CLASS_ROLE, name);
    return item;
}

} // namespace

TexturePage::TexturePage(CMainFrame& main_frame, QWidget* parent)
    : QWidget(parent), editor(main_frame.interface), page(main_frame.pages.texture), news([this] {
          if (isVisible())
              Refresh();
      }) {
    page.read_sizes = false; // the pictures tell them
    auto* column = new QVBoxLayout(this);
    column->setContentsMargins(4, 4, 4, 4);
    column->addWidget(MakeLibrary(), 1);
    column->addWidget(MakeChosen());
    column->addWidget(MakeMapping());
    FillTree();
    editor.AddListener(*this);
}

TexturePage::~TexturePage() { editor.RemoveListener(*this); }

void TexturePage::MaterialPicked(const std::string&, const std::string&) {
    was_picked = true;
    news.Request();
}

void TexturePage::WorldReplaced() {
    list_is_old = true;
    news.Request();
}

// The keys of the mapping work on the record too; the perspective view is drawn anew after each.
void TexturePage::ViewChanged(int view) {
    if (view == VIEW_PERSPECTIVE)
        news.Request();
}

void TexturePage::showEvent(QShowEvent* event) {
    Refresh();
    QWidget::showEvent(event);
}

// --- The parts

QPushButton* TexturePage::MakeButton(const QString& text, const QString& tip, std::function<void()> action) {
    auto* button = new QPushButton(text);
    button->setToolTip(tip);
    button->setMinimumWidth(button->fontMetrics().horizontalAdvance(text) + 12);
    connect(button, &QPushButton::clicked, this, [this, action = std::move(action)] {
        action();
        Refresh();
    });
    return button;
}

QWidget* TexturePage::MakeLibrary() {
    auto* part = new QWidget;
    search = new QLineEdit;
    search->setPlaceholderText(tr("Search all materials"));
    search->setClearButtonEnabled(true);
    search->setToolTip(tr("Shows the materials whose name or class holds this text"));
    tree = new QTreeWidget;
    tree->setHeaderHidden(true);
    tree->setUniformRowHeights(true);
    tree->setToolTip(tr("Directories of materials"));
    list = new ThumbnailView(&model);
    list->setToolTip(tr("A click chooses a material and paints what is selected, as the box below says.\n"
                        "The middle button, or Alt and a click, choose without painting.\n"
                        "A double click or Enter paints in any case."));
    auto* splitter = new QSplitter;
    splitter->addWidget(tree);
    splitter->addWidget(list);
    splitter->setStretchFactor(0, 1);
    splitter->setStretchFactor(1, 3);
    splitter->setSizes({120, 320});
    auto* column = new QVBoxLayout(part);
    column->setContentsMargins(0, 0, 0, 0);
    column->addWidget(search);
    column->addWidget(splitter, 1);
    connect(search, &QLineEdit::textChanged, this, [this](const QString& text) {
        page.filter = text.toStdString();
        FillList();
    });
    connect(tree, &QTreeWidget::currentItemChanged, this, [this](const QTreeWidgetItem* item) { ChooseInTree(item); });
    connect(list, &QListView::clicked, this, [this](const QModelIndex& index) {
        Choose(index.row());
        if (page.paint_on_click)
            Apply();
    });
    connect(list, &ThumbnailView::Picked, this, [this](int row) {
        Choose(row);
        list->setCurrentIndex(model.index(row));
    });
    connect(list->selectionModel(), &QItemSelectionModel::currentChanged, this,
            [this](const QModelIndex& index) { Choose(index.row()); });
    connect(list, &ThumbnailView::Entered, this, [this](int row) {
        Choose(row);
        Apply();
    });
    return part;
}

QWidget* TexturePage::MakeChosen() {
    auto* part = new QWidget;
    chosen = new QLabel;
    chosen->setTextFormat(Qt::PlainText);
    chosen->setTextInteractionFlags(Qt::TextSelectableByMouse);
    chosen->setToolTip(tr("The chosen material"));
    paint_on_click = new QCheckBox(tr("Paint on click"));
    paint_on_click->setChecked(page.paint_on_click);
    paint_on_click->setToolTip(tr("A click on a material also puts it on the selected surface, or on the selected "
                                  "brushes"));
    connect(paint_on_click, &QCheckBox::toggled, this, [this](bool on) { page.SetPaintOnClick(on); });
    auto* row = new QHBoxLayout;
    row->addWidget(chosen, 1);
    row->addWidget(paint_on_click);
    auto* grid = new QGridLayout;
    grid->setSpacing(2);
    mask = MakeButton(tr("&Mask"), tr("Shows the selected surface in the mask colour"), [this] { page.ToggleMask(); });
    mask->setCheckable(true);
    QPushButton* const buttons[] = {
        MakeButton(tr("Ap&ply"), tr("Puts the material on the selected surface, or on the selected brushes"),
                   [this] { Apply(); }),
        MakeButton(tr("Replace"), tr("Puts it wherever the level has the selected surface's material"),
                   [this] {
                       page.ReplaceMaterial(false);
                       list_is_old = true;
                   }),
        MakeButton(tr("In selection"), tr("The same, on the selected brushes only"),
                   [this] {
                       page.ReplaceMaterial(true);
                       list_is_old = true;
                   }),
        MakeButton(tr("Remove"), tr("Takes the material off what is selected, or the chosen one off the whole level"),
                   [this] { page.RemoveMaterial(); }),
        mask,
        MakeButton(tr("Script"), tr("Opens the script of the material"), [this] { page.ShowCurMaterialScript(); }),
        MakeButton(tr("Duplicate..."), tr("Copies the material under another name"),
                   [this] { list_is_old = RunDuplicateMaterial(this, page) || list_is_old; }),
        MakeButton(tr("Reload"), tr("Loads all textures anew from their files"),
                   [this] {
                       page.ReloadTextures();
                       model.ForgetPictures();
                   }),
        MakeButton(tr("Refresh"), tr("Scans the chosen directories anew"),
                   [this] {
                       const std::string before = page.selected_class;
                       for (const std::string& name : classes) {
                           page.selected_class = name;
                           page.RefreshClass();
                       }
                       page.selected_class = before;
                       model.ForgetPictures();
                       list_is_old = true;
                   }),
    };
    constexpr int COLUMNS = 5;
    for (int i = 0; QPushButton * button : buttons) {
        grid->addWidget(button, i / COLUMNS, i % COLUMNS);
        ++i;
    }
    auto* column = new QVBoxLayout(part);
    column->setContentsMargins(0, 0, 0, 0);
    column->addLayout(row);
    column->addLayout(grid);
    return part;
}

QWidget* TexturePage::MakeMapping() {
    auto* group = new QGroupBox(tr("Mapping"));
    auto* grid = new QGridLayout(group);
    grid->setSpacing(3);
    const auto add = [&](NumberField*& field, const char* field_name, double step, int row, int column,
                         const QString& tip, std::function<void()> given) {
        constexpr int DECIMALS = 4;
        field = new NumberField(DECIMALS);
        field->setObjectName(field_name);
        field->setSingleStep(step);
        field->setToolTip(tip);
        grid->addWidget(field, row, column);
        connect(field, &NumberField::Given, this, [this, given = std::move(given)] {
            given();
            Refresh();
        });
    };
    const auto value = [](const NumberField* field) { return static_cast<float>(field->Exact()); };
    surface = new QLabel;
    surface->setTextFormat(Qt::PlainText);
    surface->setToolTip(tr("The material of the selected surface"));
    grid->addWidget(new QLabel(tr("Surface:")), 0, 0);
    grid->addWidget(surface, 0, 1, 1, 4);
    grid->addWidget(new QLabel(tr("Shift:")), 1, 0);
    const auto shift = [this, value] { page.SetShift(value(shift_u), value(shift_v)); };
    add(shift_u, "shift_u", 1, 1, 1, tr("Along u, texels"), shift);
    add(shift_v, "shift_v", 1, 1, 2, tr("Along v, texels"), shift);
    grid->addWidget(new QLabel(tr("Scale:")), 2, 0);
    const auto scale = [this, value] { page.SetScale(value(scale_u), value(scale_v)); };
    const auto scale_step = static_cast<double>(TextureDlg::SCALE_STEP);
    add(scale_u, "scale_u", scale_step, 2, 1, tr("Along u"), scale);
    add(scale_v, "scale_v", scale_step, 2, 2, tr("Along v"), scale);
    grid->addWidget(new QLabel(tr("Rotation:")), 3, 0);
    add(rotation, "rotation", static_cast<double>(TextureDlg::ROTATION_STEP), 3, 1, tr("Degrees"),
        [this, value] { page.SetRotation(value(rotation)); });
    grid->addWidget(new QLabel(tr("Fit:")), 4, 0);
    const auto fit = [this, value] { page.Fit(value(fit_u), value(fit_v)); };
    add(fit_u, "fit_u", 1, 4, 1, tr("How often the texture repeats along u"), fit);
    add(fit_v, "fit_v", 1, 4, 2, tr("How often the texture repeats along v"), fit);
    locked = new QCheckBox(tr("Locked"));
    locked->setToolTip(tr("The texture follows the surface through edits"));
    grid->addWidget(locked, 3, 2);
    connect(locked, &QCheckBox::clicked, this, [this](bool on) {
        page.SetLocked(on);
        Refresh();
    });
    flip_u = MakeButton(tr("Flip &U"), tr("Mirrors the texture along u"), [this] { page.FlipU(); });
    flip_v = MakeButton(tr("Flip &V"), tr("Mirrors the texture along v"), [this] { page.FlipV(); });
    for (QPushButton* flip : {flip_u, flip_v})
        flip->setCheckable(true);
    paste =
        MakeButton(tr("Paste"), tr("Gives the copied mapping to what is selected"), [this] { page.PasteMapping(); });
    grid->addWidget(flip_u, 1, 3);
    grid->addWidget(flip_v, 1, 4);
    grid->addWidget(MakeButton(tr("Copy"), tr("Remembers this mapping"), [this] { page.CopyMapping(); }), 2, 3);
    grid->addWidget(paste, 2, 4);
    grid->addWidget(MakeButton(tr("Fit 1 x 1"), tr("One texture over the whole surface"), [this] { page.FitOnce(); }),
                    4, 3);
    grid->addWidget(MakeButton(tr("Fit"), tr("Fits with these counts"), fit), 4, 4);
    grid->setColumnStretch(1, 1);
    grid->setColumnStretch(2, 1);
    return group;
}

// --- The library

void TexturePage::FillTree() {
    const QSignalBlocker blocker(tree);
    tree->clear();
    AddNode(tree, nullptr, tr("All materials"), NODE_ALL);
    AddNode(tree, nullptr, tr("Used materials"), NODE_USED);
    QTreeWidgetItem* first = nullptr;
    for (const MaterialGroup& group : page.Tree()) {
        QTreeWidgetItem* parent =
            group.name.empty() ? nullptr : AddNode(tree, nullptr, QString::fromStdString(group.name), NODE_GROUP);
        for (const std::string& name : group.classes) {
            const QString text = QString::fromStdString(name);
            QTreeWidgetItem* item = AddNode(tree, parent, text, NODE_CLASS, text);
            if (!first || name == page.selected_class)
                first = item;
        }
        if (parent)
            parent->setExpanded(group.expanded);
    }
    if (first) {
        page.selected_class = first->data(0, CLASS_ROLE).toString().toStdString();
        tree->setCurrentItem(first);
        classes = {page.selected_class};
    }
    FillList();
}

void TexturePage::ChooseInTree(const QTreeWidgetItem* item) {
    if (!item)
        return;
    const int kind = item->data(0, KIND_ROLE).toInt();
    const auto class_of = [](const QTreeWidgetItem* node) {
        return node->data(0, CLASS_ROLE).toString().toStdString();
    };
    shown = kind == NODE_USED ? Shown::Used : kind == NODE_ALL ? Shown::All : Shown::Classes;
    if (kind == NODE_CLASS)
        classes = {class_of(item)};
    else if (kind == NODE_GROUP) {
        classes.clear();
        for (int i = 0; i < item->childCount(); ++i)
            classes.push_back(class_of(item->child(i)));
    }
    if (!classes.empty())
        page.selected_class = classes.front();
    FillList();
}

ThumbnailRow TexturePage::RowOf(const MaterialItem& item) const {
    ThumbnailRow row;
    row.name = QString::fromStdString(item.name);
    row.caption = QString::fromStdString(item.SizeText());
    row.key = QString::fromStdString(item.texture_class + "\\" + item.texture_name) + (item.used ? "+" : "");
    row.used = item.used;
    row.make = [texture_class = item.texture_class, texture_name = item.texture_name](Thumbnail& thumbnail) {
        return MakeThumbnail(texture_class, texture_name, thumbnail);
    };
    row.tool_tip = QString::fromStdString(item.material_class + "\\" + item.name);
    return row;
}

void TexturePage::FillList() {
    list_is_old = false;
    // A search goes through all classes, unless only the used materials are wanted.
    if (shown == Shown::Used)
        items = page.ListUsed();
    else if (shown == Shown::All || !page.filter.empty())
        items = page.ListClass("");
    else {
        items.clear();
        for (const std::string& name : classes)
            for (MaterialItem& item : page.ListClass(name))
                items.push_back(std::move(item));
    }
    std::stable_sort(items.begin(), items.end(),
                     [](const MaterialItem& a, const MaterialItem& b) { return a.used && !b.used; });
    std::vector<ThumbnailRow> rows;
    rows.reserve(items.size());
    for (const MaterialItem& item : items)
        rows.push_back(RowOf(item));
    model.SetRows(std::move(rows));
    ShowChosen();
}

void TexturePage::Choose(int row) {
    if (row < 0 || static_cast<size_t>(row) >= items.size())
        return;
    const MaterialItem& item = items[static_cast<size_t>(row)];
    const std::string class_shown = page.selected_class;
    page.SetMaterial(item.material_class, item.name);
    page.selected_class = class_shown; // the tree keeps its place
    chosen->setText(QString::fromStdString(page.material_class + "\\" + page.material_name));
}

void TexturePage::Apply() {
    if (!page.Apply())
        return;
    for (size_t i = 0; i < items.size(); ++i) // where it stands, so that the list does not move under the pointer
        if (!items[i].used && items[i].material_class == page.material_class && items[i].name == page.material_name) {
            items[i].used = true;
            model.SetRow(static_cast<int>(i), RowOf(items[i]));
        }
}

// --- Following

void TexturePage::Refresh() {
    if (was_picked.exchange(false) && page.filter.empty() && shown == Shown::Classes)
        FillTree();
    else if (list_is_old)
        FillList();
    else
        ShowChosen();
    ShowMapping();
}

void TexturePage::ShowChosen() {
    const QString text = page.material_name.empty()
                             ? tr("No material chosen")
                             : QString::fromStdString(page.material_class + "\\" + page.material_name);
    chosen->setText(text);
    const auto at = std::find_if(items.begin(), items.end(), [this](const MaterialItem& item) {
        return item.material_class == page.material_class && item.name == page.material_name;
    });
    const QSignalBlocker blocker(list->selectionModel());
    const QModelIndex wanted = at == items.end() ? QModelIndex() : model.index(static_cast<int>(at - items.begin()));
    if (list->currentIndex() == wanted)
        return;
    list->setCurrentIndex(wanted);
    list->viewport()->update();
    if (wanted.isValid())
        list->scrollTo(wanted);
}

void TexturePage::ShowMapping() {
    const TEX_INFO& record = page.tex_info;
    surface->setText(page.surface_material.empty() ? tr("none") : QString::fromStdString(page.surface_material));
    const auto show = [](NumberField* field, float number) {
        if (static_cast<float>(field->Exact()) != number)
            field->ShowValue(static_cast<double>(number), false);
    };
    show(shift_u, record.shift.u);
    show(shift_v, record.shift.v);
    show(scale_u, record.scale.u);
    show(scale_v, record.scale.v);
    show(rotation, record.rotation);
    show(fit_u, page.fit_u);
    show(fit_v, page.fit_v);
    locked->setChecked(record.locked);
    flip_u->setChecked(record.flip_u);
    flip_v->setChecked(record.flip_v);
    mask->setChecked(editor.mask_enabled);
}
