#include <algorithm>

#include <QDialogButtonBox>
#include <QLabel>
#include <QTreeWidget>
#include <QVBoxLayout>

#include "desktop/ToolWindows.h"

namespace {

// Moves all views so that the box stands in their middle, the camera as far back as shows it whole.
void FrameBox(CInterface& editor, const Box& box) {
    constexpr float LEAST_RADIUS = 64, DISTANCE_BY_RADIUS = 2.5f;
    const D3DVECTOR middle = (BoxMin(box) + BoxMax(box)) * 0.5f, half = BoxMax(box) - middle;
    for (const int view : {VIEW_TOP, VIEW_FRONT, VIEW_LEFT})
        editor.CenterViewToPoint(middle, view);
    const float radius = std::max(Magnitude(half), LEAST_RADIUS);
    VIEWINFO& camera = editor.View(VIEW_PERSPECTIVE);
    D3DVECTOR direction, normal, right;
    CInterface::ComputeCameraVectors(camera.camera_rotation, direction, normal, right);
    camera.camera_position = middle - direction * (radius * DISTANCE_BY_RADIUS);
    editor.RedrawAllViews();
}

void TakeSelected(CInterface& editor) {
    editor.older_editor_state = editor.old_editor_state;
    editor.old_editor_state = editor.editor_state;
    ShowNewSelection(editor);
}

} // namespace

ProblemsWindow::ProblemsWindow(CMainFrame& main_frame, QWidget* parent)
    : ToolWindow(main_frame, parent), tree(new QTreeWidget) {
    setObjectName("Problems");
    setWindowTitle(tr("Problem solver"));
    tree->setHeaderHidden(true);
    tree->setExpandsOnDoubleClick(false);
    tree->setToolTip(tr("A double click on an object selects it and brings it into the views"));
    auto* legend = new QLabel(tr(PORTAL_MARKS_LEGEND));
    auto* buttons = new QDialogButtonBox(QDialogButtonBox::Ok);
    connect(buttons, &QDialogButtonBox::accepted, this, &QWidget::close);
    auto* column = new QVBoxLayout(this);
    column->addWidget(tree);
    column->addWidget(legend);
    column->addWidget(buttons);
    resize(380, 460);
    connect(tree, &QTreeWidget::itemActivated, this, [this](QTreeWidgetItem* item) {
        if (!Jump(*items[item->data(0, Qt::UserRole).toUInt()]))
            item->setExpanded(!item->isExpanded());
    });
}

void ProblemsWindow::Open(CMainFrame& main_frame, QWidget* parent) {
    ProblemsWindow* window = nullptr;
    if (parent)
        for (QObject* child : parent->children())
            if (auto* found = dynamic_cast<ProblemsWindow*>(child); found && found->isVisible())
                window = found;
    if (!window) {
        window = new ProblemsWindow(main_frame, parent);
        window->setAttribute(Qt::WA_DeleteOnClose);
    }
    window->Refresh();
    window->show();
    window->raise();
    window->activateWindow();
}

void ProblemsWindow::Refresh() {
    findings = editor.problem_solver.Tree();
    tree->clear();
    items.clear();
    AddItems(findings, nullptr);
    for (int i = 0; i < tree->topLevelItemCount(); ++i)
        tree->topLevelItem(i)->setExpanded(true);
}

void ProblemsWindow::AddItems(const std::vector<ProblemItem>& list, QTreeWidgetItem* parent) {
    for (const ProblemItem& problem : list) {
        const QStringList text{QString::fromStdString(problem.text)};
        auto* item = parent ? new QTreeWidgetItem(parent, text) : new QTreeWidgetItem(tree, text);
        item->setData(0, Qt::UserRole, static_cast<uint>(items.size()));
        items.push_back(&problem);
        AddItems(problem.children, item);
    }
}

bool ProblemsWindow::Jump(const ProblemItem& item) {
    World& world = *editor.world;
    if (item.kind == ProblemItem::Kind::Portal) {
        Brush* portal = world.GetBrushFromID(item.object_id);
        if (!portal)
            return false;
        const ChangeRecord record(world, "Select a problem.");
        world.ClearSelection();
        world.SetBrushSelection(world.GetBrushIndex(portal), true);
        world.first_selected_id = item.object_id;
        TakeSelected(editor);
        FrameBox(editor, portal->bbox);
        return true;
    }
    if (item.kind != ProblemItem::Kind::Entity && item.kind != ProblemItem::Kind::Eye)
        return false;
    Entity* entity = world.GetEntityFromID(item.object_id);
    if (!entity)
        return false;
    const ChangeRecord record(world, "Select a problem.");
    world.entity_selection.ClearList();
    world.entity_selection.AddItem(world.GetEntityIndex(entity));
    world.RefreshFirstSelected();
    TakeSelected(editor);
    FrameBox(editor, MakeBox(entity->position - entity->model_size, entity->position + entity->model_size));
    return true;
}
