#include "desktop/ToolWindows.h"

#include <algorithm>

#include <QCheckBox>
#include <QCloseEvent>
#include <QComboBox>
#include <QGridLayout>
#include <QKeyEvent>
#include <QLabel>
#include <QLineEdit>
#include <QListView>
#include <QListWidget>
#include <QPushButton>
#include <QSignalBlocker>
#include <QStringListModel>
#include <QVBoxLayout>

#include "desktop/StoredLayout.h"
#include "scene/UndoBuffer.h"

ToolWindow::ToolWindow(CMainFrame& main_frame, QWidget* parent)
    : QWidget(parent, Qt::Tool), frame(main_frame), editor(main_frame.interface), news([this] {
          if (isVisible())
              Refresh();
      }) {
    editor.AddListener(*this);
}

ToolWindow::~ToolWindow() { editor.RemoveListener(*this); }

void ToolWindow::keyPressEvent(QKeyEvent* event) {
    if (event->key() == Qt::Key_Escape)
        close();
    else
        QWidget::keyPressEvent(event);
}

static std::string PlaceName(const QWidget& window) { return window.objectName().toStdString() + "Place"; }

// Over the lower left view, where it hides neither menus nor the perspective view. A desktop would put it anywhere.
static void PlaceFirst(QWidget& window, const QWidget& main_window) {
    constexpr int FROM_LEFT = 16, FROM_BOTTOM = 96; // pixels
    const QRect room = main_window.frameGeometry();
    window.move(room.left() + FROM_LEFT, std::max(room.top(), room.bottom() - FROM_BOTTOM - window.height()));
}

void ToolWindow::showEvent(QShowEvent* event) {
    if (!was_placed && !event->spontaneous()) {
        was_placed = true;
        const bool restored = !objectName().isEmpty() && restoreGeometry(StoredLayout(PlaceName(*this).c_str()));
        if (!restored && !testAttribute(Qt::WA_Moved) && parentWidget())
            PlaceFirst(*this, *parentWidget()->window());
    }
    Refresh();
    QWidget::showEvent(event);
}

void ToolWindow::hideEvent(QHideEvent* event) {
    if (!objectName().isEmpty() && !event->spontaneous() && editor.store_settings)
        StoreLayout(PlaceName(*this).c_str(), saveGeometry());
    QWidget::hideEvent(event);
}

// --- Undo

static constexpr int PARTING_LENGTH = 63;

UndoWindow::UndoWindow(CMainFrame& main_frame, QWidget* parent)
    : ToolWindow(main_frame, parent), list(new QListWidget) {
    setObjectName("UndoWindow");
    list->setUniformItemSizes(true);
    list->setToolTip(tr("Above the line: what can be undone. Below it: what can be done again.\n"
                        "A double click goes to the level as it was just after that step."));
    auto* column = new QVBoxLayout(this);
    column->setContentsMargins(0, 0, 0, 0);
    column->addWidget(list);
    resize(360, 420);
    connect(list, &QListWidget::itemActivated, this, [this] { WalkTo(list->currentRow()); });
}

void UndoWindow::Refresh() {
    const CUndoBuffer &undo = editor.world->undo_buffer, &redo = editor.world->redo_buffer;
    setWindowTitle(tr("Undo Buffer (%1 + %2)").arg(undo.GetActionCount()).arg(redo.GetActionCount()));
    list->clear();
    for (int i = 0; i < undo.GetActionCount(); ++i)
        list->addItem(QString::fromStdString(undo.GetActionDescription(i)));
    auto* parting = new QListWidgetItem(QString(PARTING_LENGTH, '-'), list);
    for (int i = redo.GetActionCount() - 1; i >= 0; --i)
        list->addItem(QString::fromStdString(redo.DescribeUndoing(i)));
    list->setCurrentItem(parting);
    list->scrollToItem(parting);
}

void UndoWindow::WalkTo(int row) {
    const int undone = editor.world->undo_buffer.GetActionCount();
    if (row < 0 || row == undone)
        return;
    // Each step must move one entry, or the walk ends: a list may lose entries on the way.
    if (row < undone) {
        for (int before = undone; before > row + 1; --before) {
            frame.OnEditUndo();
            if (editor.world->undo_buffer.GetActionCount() != before - 1)
                break;
        }
    } else {
        for (int steps = row - undone; steps > 0 && editor.world->redo_buffer.GetActionCount() > 0; --steps)
            frame.OnEditRedo();
    }
    Refresh();
}

// --- Named objects

NamedObjectsWindow::NamedObjectsWindow(CMainFrame& main_frame, QWidget* parent)
    : ToolWindow(main_frame, parent), filter(new QLineEdit), sort(new QComboBox),
      ignore(new QCheckBox(tr("Ignore objects\nwithout name"))), list(new QListView),
      lines(new QStringListModel(this)) {
    setObjectName("NamedObjects");
    setWindowTitle(tr("Named objects"));
    sort->addItems({tr("Names"), tr("Type")}); // by NamedObjListSort
    filter->setPlaceholderText(tr("Filter"));
    filter->setClearButtonEnabled(true);
    list->setModel(lines);
    list->setUniformItemSizes(true);
    list->setEditTriggers(QAbstractItemView::NoEditTriggers);
    filter->setToolTip(tr("Shows the lines that hold this text"));
    sort->setToolTip(tr("By what the list is sorted"));
    ignore->setToolTip(tr("Leaves out what has no name"));
    list->setToolTip(tr("A double click selects the object"));
    auto* column = new QVBoxLayout(this);
    column->addWidget(filter);
    auto* row = new QHBoxLayout;
    row->addWidget(new QLabel(tr("Sort by:")));
    row->addWidget(sort);
    row->addWidget(ignore);
    row->addStretch();
    column->addLayout(row);
    column->addWidget(list);
    resize(340, 460);
    connect(filter, &QLineEdit::textChanged, this, [this] {
        Objects().m_filter = filter->text().toStdString();
        Refresh();
    });
    connect(sort, &QComboBox::activated, this, [this](int method) {
        Objects().UpdateList(static_cast<NamedObjListSort>(method));
        Refresh();
    });
    connect(ignore, &QCheckBox::clicked, this, [this](bool on) {
        Objects().ignore_no_name = on;
        Refresh();
    });
    connect(list, &QListView::activated, this, [this](const QModelIndex& index) { ChooseRow(index.row()); });
}

DlgNamedObjList& NamedObjectsWindow::Objects() {
    if (!frame.named_objects_dlg)
        frame.named_objects_dlg = std::make_unique<DlgNamedObjList>(editor);
    return *frame.named_objects_dlg;
}

void NamedObjectsWindow::Refresh() {
    DlgNamedObjList& objects = Objects();
    objects.m_filter = filter->text().toStdString();
    objects.UpdateList(objects.last_sort_method);
    sort->setCurrentIndex(objects.last_sort_method);
    ignore->setChecked(objects.ignore_no_name);
    QStringList texts;
    for (const DlgNamedObjList::ObjListItem& item : objects.items)
        texts.append(QString::fromStdString(item.text));
    if (texts != lines->stringList())
        lines->setStringList(texts);
}

void NamedObjectsWindow::ChooseRow(int row) { Objects().SelectRow(row); }

void NamedObjectsWindow::closeEvent(QCloseEvent* event) {
    event->accept();
    frame.named_objects_dlg.reset();
}

// --- Entity types

ExtendedSelectWindow::ExtendedSelectWindow(CMainFrame& main_frame, QWidget* parent)
    : ToolWindow(main_frame, parent), list(new QListWidget) {
    setWindowTitle(tr("Extended selection"));
    list->setSelectionMode(QAbstractItemView::ExtendedSelection);
    list->viewport()->installEventFilter(this);
    list->setToolTip(tr("Marked types are hidden or shown by the buttons. A double click hides the type or shows it, "
                        "with Ctrl it shows this type alone."));
    auto* grid = new QGridLayout(this);
    grid->addWidget(list, 0, 0, 1, 3);
    const auto add_button = [&](const QString& text, const QString& tip, int place, auto action) {
        auto* button = new QPushButton(text);
        button->setToolTip(tip);
        grid->addWidget(button, 1 + place / 3, place % 3);
        connect(button, &QPushButton::clicked, this, [this, action] {
            TakeMarks();
            action(Types());
            Refresh();
        });
    };
    add_button(tr("&Hide"), tr("Hides all entities of the marked types"), 0, [](auto& types) { types.OnHide(); });
    add_button(tr("&Show"), tr("Shows them again"), 1, [](auto& types) { types.OnShow(); });
    add_button(tr("&Invert"), tr("Marks the others"), 2, [](auto& types) { types.OnInvert(); });
    add_button(tr("&All"), tr("Marks all types"), 3, [](auto& types) { types.OnAll(true); });
    add_button(tr("&None"), tr("Marks no type"), 4, [](auto& types) { types.OnAll(false); });
    resize(260, 380);
}

DlgExtendedSelect& ExtendedSelectWindow::Types() {
    if (!frame.pages.extended_sel_dlg)
        frame.pages.extended_sel_dlg = std::make_unique<DlgExtendedSelect>(editor);
    return *frame.pages.extended_sel_dlg;
}

void ExtendedSelectWindow::Refresh() {
    const std::vector<DlgExtendedSelect::TypeRow>& rows = Types().m_elist;
    bool same = list->count() == static_cast<int>(rows.size());
    for (size_t i = 0; same && i < rows.size(); ++i)
        same = list->item(static_cast<int>(i))->text() == QString::fromStdString(rows[i].word);
    if (!same) {
        list->clear();
        for (const DlgExtendedSelect::TypeRow& row : rows)
            list->addItem(QString::fromStdString(row.word));
    }
    for (size_t i = 0; i < rows.size(); ++i)
        list->item(static_cast<int>(i))->setSelected(rows[i].marked);
}

void ExtendedSelectWindow::TakeMarks() {
    std::vector<DlgExtendedSelect::TypeRow>& rows = Types().m_elist;
    for (size_t i = 0; i < rows.size() && static_cast<int>(i) < list->count(); ++i)
        rows[i].marked = list->item(static_cast<int>(i))->isSelected();
}

// The list's own signal of a double click does not tell whether Ctrl is held, and its click has changed the marks.
bool ExtendedSelectWindow::eventFilter(QObject* watched, QEvent* event) {
    if (event->type() == QEvent::MouseButtonDblClick) {
        const auto* mouse = static_cast<QMouseEvent*>(event);
        const int row = list->row(list->itemAt(mouse->pos()));
        TakeMarks();
        Types().OnDoubleClick(row, mouse->modifiers().testFlag(Qt::ControlModifier));
        Refresh();
        return true;
    }
    return ToolWindow::eventFilter(watched, event);
}

void ExtendedSelectWindow::LibraryWindowChanged() {
    if (!frame.pages.extended_sel_dlg && isVisible())
        close();
}

void ExtendedSelectWindow::showEvent(QShowEvent* event) {
    RECT place;
    if (DlgExtendedSelect::ReadPosition(place) && place.Width() > 0 && place.Height() > 0)
        setGeometry(place.left, place.top, place.Width(), place.Height());
    ToolWindow::showEvent(event);
}

void ExtendedSelectWindow::closeEvent(QCloseEvent* event) {
    event->accept();
    const QRect place = geometry();
    DlgExtendedSelect::StorePosition(
        {place.left(), place.top(), place.left() + place.width(), place.top() + place.height()});
    frame.pages.extended_sel_dlg.reset();
}
