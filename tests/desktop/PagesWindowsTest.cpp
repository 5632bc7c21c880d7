#include <atomic>

#include <QCheckBox>
#include <QComboBox>
#include <QLabel>
#include <QLineEdit>
#include <QListWidget>
#include <QPlainTextEdit>
#include <QRadioButton>
#include <QSignalSpy>
#include <QSpinBox>
#include <QTabWidget>
#include <QTreeWidget>

#include "desktop/ColorButton.h"
#include "desktop/EntityPage.h"
#include "desktop/LibraryFixture.h"
#include "desktop/PrefabPage.h"
#include "desktop/PreferencesPage.h"
#include "desktop/TexturePage.h"
#include "desktop/ToolWindows.h"
#include "files/FileObject.h"
#include "files/LibraryWriter.h"
#include "pages/ParameterText.h"
#include "scene/UndoBuffer.h"

namespace {

using PagesWindowsTest = LibraryTest;

QStringList Names(const QAbstractItemModel& model) {
    QStringList names;
    for (int row = 0; row < model.rowCount(); ++row)
        names.append(model.index(row, 0).data().toString());
    return names;
}

QLineEdit* FieldWith(QWidget* page, const QString& placeholder) {
    for (QLineEdit* field : page->findChildren<QLineEdit*>())
        if (field->placeholderText() == placeholder)
            return field;
    return nullptr;
}

void ClickRow(QAbstractItemView* list, int row, Qt::MouseButton button = Qt::LeftButton,
              Qt::KeyboardModifiers held = Qt::NoModifier) {
    const QPoint at = list->visualRect(list->model()->index(row, 0)).center();
    QTest::mouseClick(list->viewport(), button, held, at);
}

} // namespace

TEST_F(PagesWindowsTest, TheLibraryFollowsTheEditorsTab) {
    EXPECT_FALSE(library->isVisible());
    const auto before = std::filesystem::current_path();
    for (const CConsole::Tab& tab : CConsole::TABS) {
        editor->ShowLibraryTab(static_cast<LibraryTab>(tab.number));
        ProcessNews();
        EXPECT_TRUE(library->isVisible());
        auto* tabs = library->findChild<QTabWidget*>();
        EXPECT_EQ(tabs->tabText(tabs->currentIndex()).toStdString(), tab.text);
    }
    editor->ShowLibraryTab(TAB_UNDO); // a window of its own
    ProcessNews();
    EXPECT_TRUE(library->isVisible());
    EXPECT_EQ(editor->selected_tab, TAB_AI);
    library->findChild<QTabWidget*>()->setCurrentIndex(0);
    EXPECT_EQ(editor->selected_tab, TAB_TEXTURE);
    library->close();
    EXPECT_FALSE(editor->console_onscreen);
    editor->Console();
    ProcessNews();
    EXPECT_TRUE(library->isVisible());
    QTest::keyClick(library.get(), Qt::Key_E);
    ProcessNews();
    EXPECT_EQ(editor->selected_tab, TAB_ENTITY);
    EXPECT_EQ(std::filesystem::current_path(), before);
}

// --- Textures

TEST_F(PagesWindowsTest, MaterialsFilterAsOneTypesAndAreChosenAndPainted) {
    Open(TAB_TEXTURE);
    auto* list = library->texture->findChild<ThumbnailView*>();
    auto* search = FieldWith(library->texture, "Search all materials");
    QTest::keyClicks(search, "o");
    EXPECT_EQ(Names(*list->model()), QStringList({"oak", "stone", "roses"}));
    QTest::keyClicks(search, "n");
    EXPECT_EQ(Names(*list->model()), QStringList({"stone"}));
    search->clear();

    Brush* b = AddBox();
    SelectSurface(b, 2);
    ProcessNews();
    auto* tree = library->texture->findChild<QTreeWidget*>();
    tree->setCurrentItem(tree->topLevelItem(0)); // all
    ASSERT_EQ(Names(*list->model()), QStringList({"oak", "brick", "stone", "roses"}));
    list->resize(600, 300);
    ProcessNews();
    FindButton(*library->texture, "Paint on click")->click(); // off
    ClickRow(list, 1);
    EXPECT_EQ(pages->texture.material_name, "brick");
    EXPECT_EQ(b->surfaces[2].texture.index, 0);
    ClickRow(list, 2, Qt::LeftButton, Qt::AltModifier);
    EXPECT_EQ(pages->texture.material_name, "stone");
    ClickRow(list, 3, Qt::MiddleButton);
    EXPECT_EQ(pages->texture.material_name, "roses");
    EXPECT_EQ(b->surfaces[2].texture.index, 0);
    Press(*library->texture, "Apply");
    ASSERT_EQ(b->surfaces[2].texture.index, 1);
    EXPECT_EQ(Level().material[1].material_name, "roses");

    tree->setCurrentItem(tree->topLevelItem(1)); // used
    EXPECT_EQ(Names(*list->model()), QStringList({"roses"}));
    tree->setCurrentItem(tree->topLevelItem(0));
    EXPECT_EQ(Names(*list->model()).front(), "roses"); // used ones first
    const auto painted = [&] {
        return Level().material[static_cast<size_t>(b->surfaces[2].texture.index)].material_name;
    };
    list->setCurrentIndex(list->model()->index(2, 0));
    EXPECT_EQ(painted(), "roses") << "the keys walk without painting";
    QTest::keyClick(list, Qt::Key_Return);
    EXPECT_EQ(painted(), "brick");
    FindButton(*library->texture, "Paint on click")->click(); // on, as at first
    ClickRow(list, 1);
    EXPECT_EQ(painted(), "oak");
    ClickRow(list, 0, Qt::MiddleButton);
    EXPECT_EQ(painted(), "oak");
    EXPECT_EQ(pages->texture.material_name, "roses");
}

// A library of its own: its pictures come from several threads at once.
TEST_F(PagesWindowsTest, PicturesOfPackedMaterialsComeInTheBackground) {
    constexpr int PICTURES = 24;
    LibraryWriter writer;
    std::vector<ThumbnailRow> rows;
    for (int i = 0; i < PICTURES; ++i) {
        const std::string name = "p" + std::to_string(i);
        const std::string bytes = TargaBytes(64, 64, 24, static_cast<uint32_t>(0x030201 * i));
        ASSERT_TRUE(writer.Add("Textures\\packed\\" + name + ".tga", {bytes.begin(), bytes.end()}));
        ThumbnailRow row;
        row.key = QString::number(i);
        row.make = [name](Thumbnail& thumbnail) { return MakeThumbnail("packed", name, thumbnail); };
        rows.push_back(row);
    }
    std::string error;
    ASSERT_TRUE(writer.Write("packed.fs", false, error)) << error;
    ASSERT_EQ(FileObject::AddFileLibrary("packed.fs", 0), 1);
    ThumbnailModel model;
    QSignalSpy told(&model, &QAbstractItemModel::dataChanged);
    model.SetRows(std::move(rows));
    for (const double scale : {1.0, 1.25, 2.0}) {
        const bool known = scale == 2; // 1.25 has taken them from twice as many pixels
        for (int i = 0; i < PICTURES; ++i)
            EXPECT_EQ(model.Picture(i, scale).isNull(), !known) << "the window does not wait for it";
        for (int i = 0; i < PICTURES; ++i) {
            while (model.Picture(i, scale).isNull())
                ASSERT_TRUE(told.wait());
            const QImage picture = model.Picture(i, scale).toImage();
            EXPECT_EQ(picture.width(), scale == 1 ? 64 : 128);
            EXPECT_EQ(picture.pixel(32, 32), 0xFF000000u + static_cast<uint32_t>(0x030201 * i));
        }
    }
    FileObject::ResetFileLibrary();
}

TEST_F(PagesWindowsTest, AMaterialPickedInAViewIsShown) {
    Open(TAB_TEXTURE);
    editor->MaterialPicked("floor", "oak");
    ProcessNews();
    auto* list = library->texture->findChild<ThumbnailView*>();
    EXPECT_EQ(list->currentIndex().data().toString(), "oak");
}

TEST_F(PagesWindowsTest, TheMappingsFieldsFollowTheRecordAndWriteIt) {
    Open(TAB_TEXTURE);
    Brush* b = AddBox();
    SelectSurface(b, 1);
    pages->texture.SetMaterial("wall", "brick");
    pages->texture.Apply();
    const TEX_INFO& record = b->surfaces[1].texture;
    pages->texture.ChangeShift(3.5f, -2); // as the keys do
    pages->texture.ChangeRotation(30, false);
    ProcessNews();
    const auto field = [&](const char* name) { return Named<NumberField>(library->texture, name); };
    EXPECT_EQ(field("shift_u")->text(), "3.5");
    EXPECT_EQ(field("shift_v")->text(), "-2");
    EXPECT_EQ(field("rotation")->text(), "30");
    TypeNumber(field("shift_u"), "12.25");
    EXPECT_EQ(record.shift.u, 12.25f);
    EXPECT_EQ(record.shift.v, -2);
    QTest::keyClick(field("rotation"), Qt::Key_Up);
    EXPECT_EQ(record.rotation, 31);
    QTest::keyClick(field("scale_v"), Qt::Key_Down);
    EXPECT_NEAR(record.scale.v, 0.95f, 1e-6f);
    TypeNumber(field("scale_u"), "0"); // refused: the field goes back
    ProcessNews();
    EXPECT_EQ(record.scale.u, 1);
    EXPECT_EQ(field("scale_u")->text(), "1");
    Press(*library->texture, "Flip U");
    EXPECT_TRUE(record.flip_u);
    Press(*library->texture, "Copy");
    SelectSurface(b, 3);
    ProcessNews();
    EXPECT_EQ(field("shift_u")->text(), "0");
    Press(*library->texture, "Paste");
    EXPECT_EQ(b->surfaces[3].texture.shift.u, 12.25f);
    EXPECT_TRUE(b->surfaces[3].texture.flip_u);
}

TEST_F(PagesWindowsTest, OnlyPaintedRowsOfALongListMakePictures) {
    constexpr int MATERIALS = 5000;
    std::atomic<int> made = 0;
    ThumbnailModel model;
    ThumbnailView view(&model);
    std::vector<ThumbnailRow> rows(MATERIALS);
    for (int i = 0; i < MATERIALS; ++i) {
        rows[static_cast<size_t>(i)].name = QString("material %1").arg(i);
        rows[static_cast<size_t>(i)].key = QString::number(i);
        rows[static_cast<size_t>(i)].make = [&made](Thumbnail& thumbnail) {
            ++made;
            return MakeThumbnail("wall", "brick", thumbnail);
        };
    }
    view.resize(320, 400);
    model.SetRows(std::move(rows));
    EXPECT_EQ(model.rowCount(), MATERIALS);
    view.show();
    EXPECT_EQ(made, 0);
    QSignalSpy told(&model, &QAbstractItemModel::dataChanged);
    view.grab();
    ASSERT_TRUE(told.wait());
    view.scrollToBottom();
    view.grab();
    while (model.Picture(MATERIALS - 1, 1).isNull())
        ASSERT_TRUE(told.wait());
    EXPECT_EQ(model.index(MATERIALS - 1).data(ThumbnailModel::CaptionRole).toString(), "8 x 4");
    EXPECT_LT(made, 100);
}

// --- Entities

TEST_F(PagesWindowsTest, ParameterEditorsWriteAndShowEachType) {
    Entity* e = AddEntity("light");
    Level().ClearSelection();
    Level().entity_selection.AddItem(Level().GetEntityIndex(e));
    editor->SelectionChanged();
    Open(TAB_ENTITY);
    const auto field = [&](const char* name) { return Named<QWidget>(library->entity, name); };
    const auto number = [&](const char* name, int i) { return field(name)->findChildren<NumberField*>().at(i); };
    EXPECT_EQ(number("range", 0)->text(), "256");
    EXPECT_EQ(number("wind", 2)->text(), "3");
    field("dynamic")->findChild<QCheckBox*>()->click();
    TypeNumber(number("count", 0), "-7");
    TypeNumber(number("range", 0), "1.25");
    TypeNumber(number("pair", 1), "4");
    TypeNumber(number("wind", 0), "9.5");
    TypeNumber(number("color", 0), "100"); // its alpha
    desktop.color_answer = 0x010203;
    field("color")->findChild<CColorButton*>()->click();
    auto* mood = field("mood")->findChild<QComboBox*>();
    mood->setCurrentIndex(1);
    emit mood->textActivated("angry");
    auto* picture = field("picture")->findChild<QLineEdit*>();
    picture->selectAll();
    QTest::keyClicks(picture, "other.tga");
    QTest::keyClick(picture, Qt::Key_Return);
    ProcessNews();
    EXPECT_TRUE(e->GetParameterStr("dynamic")->p_bool);
    EXPECT_EQ(e->GetParameterStr("count")->p_int, -7);
    EXPECT_EQ(e->GetParameterStr("range")->p_float, 1.25f);
    EXPECT_EQ(e->GetParameterStr("pair")->p_vector2, (UVVector{1, 4}));
    EXPECT_EQ(e->GetParameterStr("wind")->p_vector3, (D3DVECTOR{9.5f, 2, 3}));
    EXPECT_EQ(e->GetParameterStr("color")->p_color.dw_color, 0x64010203u);
    EXPECT_EQ(e->GetParameterStr("mood")->p_text, "angry");
    EXPECT_EQ(e->GetParameterStr("picture")->p_text, "other.tga");
    EXPECT_EQ(number("range", 0)->text(), "1.25");
    number("range", 0)->setFocus();
    ProcessNews();
    const auto labels = library->entity->findChildren<QLabel*>();
    EXPECT_TRUE(std::any_of(labels.begin(), labels.end(), [](const QLabel* l) { return l->text() == "reach"; }));
}

TEST_F(PagesWindowsTest, AScriptParameterOpensTheScriptWindow) {
    Entity* e = AddEntity("light");
    Level().ClearSelection();
    Level().entity_selection.AddItem(Level().GetEntityIndex(e));
    editor->SelectionChanged();
    Open(TAB_ENTITY);
    WhenOpen([](QWidget& window) {
        window.findChild<QPlainTextEdit*>()->setPlainText("Wait 1\nWait 2");
        Press(window, "OK");
    });
    Press(*Named<QWidget>(library->entity, "script"), "...");
    EXPECT_EQ(e->GetParameterStr("script")->p_text, "Wait 1\r\nWait 2");
    ProcessNews();
    auto* line = Named<QWidget>(library->entity, "script")->findChild<QLineEdit*>();
    EXPECT_TRUE(line->isReadOnly()); // a line edit would join the lines
}

TEST_F(PagesWindowsTest, ATextWithoutATableOpensTheActorScriptWindow) {
    EXPECT_TRUE(pages->entity.SelectTemplate("soldier"));
    Entity* kind = pages->entity.SelectedTemplate();
    kind->GetParameterStr("conditions")->name = "remark";
    kind->GetParameterStr("remark")->p_text = "first";
    Open(TAB_ENTITY);
    const auto edit = [&](const char* typed, const char* button) {
        WhenOpen([=](QWidget& window) {
            EXPECT_EQ(window.windowTitle(), "Actor script");
            Press(window, "Check");
            Press(window, "Autocomplete");
            auto* script = window.findChild<QPlainTextEdit*>();
            script->moveCursor(QTextCursor::End);
            QTest::keyClicks(script, typed);
            QTest::keyClick(script, Qt::Key_Return);
            Press(window, button);
        });
        Press(*Named<QWidget>(library->entity, "remark"), "...");
        ProcessNews();
    };
    edit(" x", "Cancel");
    EXPECT_EQ(kind->GetParameterStr("remark")->p_text, "first");
    ASSERT_EQ(desktop.boxes.size(), 2u);
    EXPECT_EQ(desktop.boxes[0].title, "Check");
    EXPECT_EQ(desktop.boxes[1].text, "Pokus o autocomplete");
    edit(" y", "OK");
    EXPECT_EQ(kind->GetParameterStr("remark")->p_text, "first y\r\n");
}

TEST_F(PagesWindowsTest, TheTreeOfKindsFiltersAndChooses) {
    Open(TAB_ENTITY);
    auto* tree = library->entity->findChild<QTreeWidget*>();
    QTest::keyClicks(FieldWith(library->entity, "Filter"), "glow");
    EXPECT_TRUE(tree->topLevelItem(0)->isHidden()); // actors
    QTreeWidgetItem* lights = tree->topLevelItem(1);
    ASSERT_EQ(lights->childCount(), 2);
    EXPECT_FALSE(lights->child(0)->isHidden());
    EXPECT_TRUE(lights->child(1)->isHidden());
    tree->setCurrentItem(lights->child(0));
    ProcessNews();
    EXPECT_EQ(pages->entity.SelectedTemplate()->name, "glow");
    EXPECT_NE(Named<QWidget>(library->entity, "mood")->findChild<NumberField*>(), nullptr);
}

// --- Prefabs, preferences, AI

TEST_F(PagesWindowsTest, PrefabsAreChosenByTreeAndList) {
    for (const char* file : {"Marrowstead/Brushes/arches/gothic.msh", "Marrowstead/Brushes/arches/plain.msh",
                             "Marrowstead/Prefabs/rooms/cellar.mpf"})
        WriteBytes(file, "");
    pages->prefab.Refresh();
    Open(TAB_PREFAB);
    auto* tree = library->prefab->findChild<QTreeWidget*>();
    auto* list = library->prefab->findChild<ThumbnailView*>();
    tree->setCurrentItem(tree->topLevelItem(0)->child(0));
    EXPECT_EQ(Names(*list->model()), QStringList({"gothic", "plain"}));
    QTest::keyClicks(FieldWith(library->prefab, "Filter"), "pla");
    ASSERT_EQ(Names(*list->model()), QStringList({"plain"}));
    list->setCurrentIndex(list->model()->index(0, 0));
    EXPECT_EQ(editor->prefab_choice.file, "plain");
    EXPECT_FALSE(FindButton(*library->prefab, "New directory...")->isEnabled());
    FieldWith(library->prefab, "Filter")->clear();
    tree->setCurrentItem(tree->topLevelItem(1)->child(0));
    EXPECT_EQ(editor->prefab_choice.file, "cellar");
    EXPECT_FALSE(editor->prefab_choice.brushes_selected);
    EXPECT_TRUE(FindButton(*library->prefab, "New directory...")->isEnabled());
}

TEST_F(PagesWindowsTest, PreferencesTakeEffectAtOnceAndFollow) {
    Open(TAB_PREFERENCES);
    QWidget* page = library->preferences;
    FindButton(*page, "World Subdivision")->click();
    EXPECT_TRUE(editor->settings.subdivide_world);
    for (QSpinBox* spin : page->findChildren<QSpinBox*>())
        if (spin->toolTip().startsWith("How many steps can be undone"))
            spin->setValue(77);
    EXPECT_EQ(editor->settings.undo_states, 77);
    auto* game = page->findChild<QListWidget*>()->item(1);
    game->setCheckState(Qt::Checked);
    EXPECT_TRUE(pages->preferences.IsGameChosen("Teams"));
    std::string error;
    pages->preferences.Set("SmoothShadows", "1", error);
    ProcessNews();
    EXPECT_TRUE(FindButton(*page, "Smooth Shadows")->isChecked());
    EXPECT_EQ(page->findChild<QListWidget*>()->item(1)->checkState(), Qt::Checked);
    desktop.color_answer = 0x0A0B0C;
    page->findChildren<CColorButton*>().at(0)->click();
    EXPECT_EQ(Level().ambient_color.dw_color & 0xFFFFFF, 0x0A0B0Cu);
}

TEST_F(PagesWindowsTest, StancesOfAGroupAreSetByTheirButtons) {
    Open(TAB_AI);
    QWidget* page = library->findChild<QTabWidget*>()->currentWidget();
    FieldWith(page, "New name")->setText("Guards");
    Press(*page, "Create");
    ASSERT_EQ(Level().actor_groups.size(), 3u);
    EXPECT_EQ(page->findChild<QComboBox*>()->currentText(), "Guards");
    EXPECT_EQ(FieldWith(page, "New name")->text(), "");
    ProcessNews();
    const auto radios = page->findChildren<QRadioButton*>();
    ASSERT_EQ(radios.size(), 9);
    EXPECT_TRUE(radios[3]->isChecked()); // neutral to the bots
    radios[4]->click();
    page->findChildren<QCheckBox*>().at(2)->click();
    EXPECT_EQ(Level().actor_groups[2]->GetType(1), AGT_Enemy);
    EXPECT_TRUE(Level().actor_groups[2]->GetTurnToEnemy(2));
    EXPECT_TRUE(radios[0]->isChecked()); // each line on its own

    // A name in another encoding than ours.
    Level().actor_groups[2]->name = "Str\xE1\xBEi";
    editor->RefreshAIDlg();
    ProcessNews();
    EXPECT_EQ(page->findChild<QComboBox*>()->currentIndex(), -1);
    emit page->findChild<QComboBox*>()->activated(2);
    EXPECT_EQ(pages->ai.m_name, Level().actor_groups[2]->name);
    EXPECT_EQ(page->findChild<QComboBox*>()->currentIndex(), 2);
}

// --- Tool windows

TEST_F(PagesWindowsTest, TheUndoWindowFollowsTheListsAndWalks) {
    UndoWindow window(*frame, nullptr);
    window.show();
    auto* list = window.findChild<QListWidget*>();
    EXPECT_EQ(window.windowTitle(), "Undo Buffer (0 + 0)");
    Brush* b = AddBox();
    const float start = b->bbox[7].x;
    Level().undo_buffer.Empty();
    for (int i = 0; i < 4; ++i) {
        Level().MoveBrush({8, 0, 0});
        Level().undo_buffer.AddAction(std::make_unique<CUndoActionMove>(D3DVECTOR{-8, 0, 0}, false));
    }
    editor->UndoListsChanged();
    ProcessNews();
    EXPECT_EQ(window.windowTitle(), "Undo Buffer (4 + 0)");
    ASSERT_EQ(list->count(), 5);
    EXPECT_EQ(list->item(4)->text(), QString(63, '-'));
    emit list->itemActivated((list->setCurrentRow(0), list->item(0))); // just after the first move
    EXPECT_EQ(window.windowTitle(), "Undo Buffer (1 + 3)");
    EXPECT_FLOAT_EQ(b->bbox[7].x, start + 8);
    EXPECT_EQ(list->item(1)->text(), QString(63, '-'));
    emit list->itemActivated((list->setCurrentRow(3), list->item(3))); // the second of those to do again
    EXPECT_EQ(window.windowTitle(), "Undo Buffer (3 + 1)");
    EXPECT_FLOAT_EQ(b->bbox[7].x, start + 24);
    emit list->itemActivated((list->setCurrentRow(3), list->item(3))); // the line itself
    EXPECT_EQ(window.windowTitle(), "Undo Buffer (3 + 1)");
    editor->DeleteSelection();
    frame->OnEditUndo();
    ProcessNews();
    EXPECT_EQ(list->item(list->count() - 1)->text(), "Delete 1 object(s).") << "what it will do again";
    QTest::keyClick(&window, Qt::Key_Escape);
    EXPECT_FALSE(window.isVisible());
}

TEST_F(PagesWindowsTest, NamedObjectsFilterSortAndSelect) {
    AddBox()->name = "door";
    AddEntity("light", "lamp");
    AddEntity("glow", "none");
    NamedObjectsWindow window(*frame, nullptr);
    window.show();
    auto* list = window.findChild<QListView*>();
    EXPECT_EQ(Names(*list->model()), QStringList({"BRUSH [door]", "POINT_LIGHT [lamp]"}));
    FindButton(window, "Ignore objects\nwithout name")->click();
    EXPECT_EQ(list->model()->rowCount(), 3);
    QTest::keyClicks(FieldWith(&window, "Filter"), "LAM");
    EXPECT_EQ(Names(*list->model()), QStringList({"POINT_LIGHT [lamp]"}));
    emit list->activated(list->model()->index(0, 0));
    ASSERT_EQ(Level().entity_selection.GetItemCount(), 1);
    EXPECT_EQ(Level().brush_selection.GetItemCount(), 0);
    window.close();
    EXPECT_EQ(frame->named_objects_dlg, nullptr);
}

TEST_F(PagesWindowsTest, EntityTypesHideShowAndKeepTheirWindowsPlace) {
    Entity* light = AddEntity("light");
    Entity* glow = AddEntity("glow");
    Level().ClearSelection();
    frame->OnExtendedhide();
    ExtendedSelectWindow window(*frame, nullptr);
    window.setGeometry(40, 50, 300, 320);
    window.show();
    auto* list = window.findChild<QListWidget*>();
    ASSERT_EQ(list->count(), 2); // CORONA, POINT_LIGHT
    list->item(1)->setSelected(true);
    Press(window, "Hide");
    EXPECT_TRUE(light->is_hidden);
    EXPECT_FALSE(glow->is_hidden);
    Press(window, "Show");
    EXPECT_FALSE(light->is_hidden);
    Press(window, "Invert");
    EXPECT_TRUE(list->item(0)->isSelected());
    EXPECT_FALSE(list->item(1)->isSelected());
    const QPoint second = list->visualItemRect(list->item(1)).center();
    QTest::mouseDClick(list->viewport(), Qt::LeftButton, Qt::ControlModifier, second); // this type alone
    EXPECT_TRUE(glow->is_hidden);
    EXPECT_FALSE(light->is_hidden);
    frame->OnExtendedhide(); // the command again closes it
    EXPECT_FALSE(window.isVisible());
    RECT place;
    ASSERT_TRUE(DlgExtendedSelect::ReadPosition(place));
    EXPECT_EQ(place.left, window.geometry().left());
    EXPECT_EQ(place.Width(), 300);
    EXPECT_EQ(place.Height(), 320);
}
