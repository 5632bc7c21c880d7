// The windows of terrain and tracklists, driven as a person would.
#include <QComboBox>
#include <QDoubleSpinBox>
#include <QLabel>
#include <QLineEdit>
#include <QScrollBar>
#include <QSpinBox>

#include "desktop/TerrainWindows.h"
#include "desktop/TracksWindow.h"
#include "desktop/WindowSetup.h"

class LevelWindowsTest : public WindowsTest {};

TEST_F(LevelWindowsTest, TheTerrainGeneratorSaysWhatWillComeAndStaysUntilItCan) {
    WriteBytes("Textures/hill.tga", TargaBytes(4, 4, 8));
    TerrainDlg page(*editor);
    TerrainDialog dialog(page, nullptr);
    dialog.show();
    const QList<QSpinBox*> fields = dialog.findChildren<QSpinBox*>(); // size x, y, z, segments x, z, detail
    ASSERT_EQ(fields.size(), 6);
    const auto says = [&dialog](const QString& text) {
        const QList<QLabel*> labels = dialog.findChildren<QLabel*>();
        return std::any_of(labels.begin(), labels.end(), [&](const QLabel* l) { return l->text().contains(text); });
    };
    EXPECT_TRUE(says("64 brushes of 9 by 9 vertices")) << "8192 / 8 / 128 cells";
    fields[5]->setValue(2000);
    EXPECT_FALSE(says("brushes of")) << "a segment of 1024 has no cell of 2000";
    fields[0]->setValue(200);
    fields[2]->setValue(100);
    fields[3]->setValue(2);
    fields[4]->setValue(1);
    fields[5]->setValue(50);
    EXPECT_TRUE(says("2 brushes of 3 by 3 vertices"));
    Press(dialog, "OK");
    EXPECT_TRUE(dialog.isVisible());
    ASSERT_EQ(desktop.boxes.size(), 1u);
    EXPECT_EQ(desktop.boxes[0].text, "You must select a heightmap first");
    ASSERT_TRUE(page.SetHeightmap("Textures\\hill.tga"));
    Press(dialog, "OK");
    EXPECT_FALSE(dialog.isVisible());
    ASSERT_EQ(editor->world->GetBrushCount(), 2);
    EXPECT_EQ(editor->world->brush[0]->terrain_vertex_size, (SIZE{3, 3}));
}

TEST_F(LevelWindowsTest, TheToolsWindowWritesAndFollowsAndLeavesTheTool) {
    TerrainToolWindow window(*frame, nullptr);
    editor->EnableTerrainModifier(true);
    window.show();
    auto* const type = window.findChild<QComboBox*>();
    const QList<QDoubleSpinBox*> numbers = window.findChildren<QDoubleSpinBox*>();
    ASSERT_TRUE(type && numbers.size() == 2);
    type->setCurrentIndex(TERRAIN_FLATTEN);
    numbers[0]->setValue(40);
    EXPECT_EQ(editor->terrain_modifier.type, TERRAIN_FLATTEN);
    EXPECT_EQ(editor->terrain_modifier.radius, 40.0f);
    EXPECT_EQ(editor->terrain_modifier.intensity, 2.0f) << "untouched";
    EXPECT_FALSE(numbers[1]->isEnabled()) << "flattening has no intensity";
    editor->TurnTerrainWheel(true, false);
    ProcessNews();
    EXPECT_EQ(numbers[0]->value(), 48.0);
    window.close();
    EXPECT_NE(editor->editor_state, ES_TERRAIN);
}

// The fields show less than a file may hold.
TEST_F(LevelWindowsTest, AFileOfTracksKeepsWhatNobodyTouched) {
    TrackList list;
    list.m_max = 12.3456f;
    list.m_track_lines.push_back({{{2, 0x112233, "two\nlines", "OpenDoor a\r\nOpenDoor b"}}, "Camera", 0});
    std::string error;
    ASSERT_TRUE(SaveTrackList("kept.trk", list, error)) << error;
    CTrackDlg logic(*editor);
    logic.SetTrackName("kept.trk");
    logic.OnInitDialog();
    TracksWindow window(logic, *editor, nullptr);
    window.resize(900, 400);
    window.show();
    emit window.findChild<QDoubleSpinBox*>()->editingFinished();
    EXPECT_EQ(logic.m_total_time, 12.3456f);
    WhenOpen([](QWidget& key) { Press(key, "OK"); });
    QTest::mouseDClick(window.findChild<TimelineWidget*>(), Qt::LeftButton, {},
                       {logic.track.XAt(2), CTrack::ROW_HEIGHT / 2});
    const SKeyPoint& key = logic.track.list.m_track_lines[0].m_keyPoints[0];
    EXPECT_EQ(key.m_comment, "two\nlines");
    EXPECT_EQ(key.m_script, "OpenDoor a\r\nOpenDoor b");

    QScrollBar* across = nullptr;
    for (QScrollBar* bar : window.findChildren<QScrollBar*>())
        if (bar->orientation() == Qt::Horizontal)
            across = bar;
    ASSERT_NE(across, nullptr);
    across->setValue(across->maximum());
    EXPECT_EQ(logic.track.m_pos, 12.3456f);
    Press(window, "New");
    EXPECT_EQ(logic.track.m_pos, 0);
    EXPECT_EQ(across->value(), 0);
}

TEST_F(LevelWindowsTest, TheTimelineIsDrawnWhereTimesAreFarApart) {
    TrackList list;
    list.m_max = 1e9f;
    std::string error;
    ASSERT_TRUE(SaveTrackList("far.trk", list, error)) << error;
    CTrackDlg logic(*editor);
    logic.SetTrackName("far.trk");
    logic.OnInitDialog();
    TracksWindow window(logic, *editor, nullptr);
    window.resize(900, 400);
    logic.OnHScroll(logic.HScrollRange());
    EXPECT_FALSE(window.grab().isNull());
}

TEST_F(LevelWindowsTest, ATracklistIsMadeEditedAndSavedByTheMouse) {
    CTrackDlg logic(*editor);
    logic.OnInitDialog();
    TracksWindow window(logic, *editor, nullptr);
    window.resize(900, 400);
    window.show();
    auto* const timeline = window.findChild<TimelineWidget*>();
    ASSERT_NE(timeline, nullptr);
    ASSERT_EQ(logic.track.width, timeline->width());
    logic.track.m_selected = logic.track.CreateTrackLine("Camera", 0x112233);
    const auto at = [&](float time) { return QPoint(logic.track.XAt(time), CTrack::ROW_HEIGHT / 2); };
    const std::vector<SKeyPoint>& keys = logic.track.list.m_track_lines[0].m_keyPoints;
    QTest::mouseDClick(timeline, Qt::LeftButton, {}, at(2));
    ASSERT_EQ(keys.size(), 1u);
    EXPECT_NEAR(keys[0].m_time, 2, 0.02);
    EXPECT_EQ(keys[0].m_color, 0x112233u) << "of its row";
    QTest::mousePress(timeline, Qt::LeftButton, {}, at(2));
    QTest::mouseMove(timeline, at(3));
    QMouseEvent move(QEvent::MouseMove, QPointF(at(3)), timeline->mapToGlobal(QPointF(at(3))), Qt::NoButton,
                     Qt::LeftButton, Qt::NoModifier);
    QCoreApplication::sendEvent(timeline, &move);
    QTest::mouseRelease(timeline, Qt::LeftButton, {}, at(3));
    EXPECT_NEAR(keys[0].m_time, 3, 0.02);
    WhenOpen([](QWidget& key) {
        key.findChild<QLineEdit*>()->setText("lights out");
        Press(key, "OK");
    });
    QTest::mouseDClick(timeline, Qt::LeftButton, {}, at(3));
    ASSERT_EQ(keys.size(), 1u);
    EXPECT_EQ(keys[0].m_comment, "lights out");
    QTest::mouseDClick(timeline, Qt::RightButton, {}, at(keys[0].m_time));
    EXPECT_TRUE(keys.empty());
    desktop.answers.push_back(MessageAnswer::Cancel);
    Press(window, "Close");
    EXPECT_TRUE(window.isVisible());
    desktop.answers.push_back(MessageAnswer::No);
    QTest::keyClick(&window, Qt::Key_Escape);
    EXPECT_FALSE(window.isVisible());
}
