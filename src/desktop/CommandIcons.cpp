#include "desktop/CommandIcons.h"

#include <QApplication>
#include <QIconEngine>
#include <QPainter>
#include <QPainterPath>
#include <QPalette>
#include <algorithm>
#include <iterator>

namespace {

// The pictures are drawn on a field of this side: lines by the pen, areas by the brush, a faint tone of it.
constexpr qreal FIELD = 24;
using P = QPainter;

void Line(P& p, std::initializer_list<QPointF> points) {
    p.drawPolyline(points.begin(), static_cast<int>(points.size()));
}
void Area(P& p, std::initializer_list<QPointF> points) {
    p.drawPolygon(points.begin(), static_cast<int>(points.size()));
}
void ArrowHead(P& p, QPointF tip, QPointF along) { // along: of length 1
    const QPointF across(-along.y(), along.x());
    Line(p, {tip - along * 4 + across * 3, tip, tip - along * 4 - across * 3});
}
void Curve(P& p, QPointF from, QPointF a, QPointF b, QPointF to) {
    QPainterPath path(from);
    path.cubicTo(a, b, to);
    p.strokePath(path, p.pen());
}

void Cube(P& p) {
    Area(p, {{3, 9}, {14, 9}, {14, 21}, {3, 21}});
    Line(p, {{3, 9}, {9, 3}, {21, 3}, {14, 9}});
    Line(p, {{21, 3}, {21, 15}, {14, 21}});
}
void Rectangle(P& p) { Area(p, {{3, 6}, {21, 6}, {21, 18}, {3, 18}}); }
void Pyramid(P& p) {
    Area(p, {{12, 3}, {21, 17}, {12, 21}, {3, 17}});
    Line(p, {{12, 3}, {12, 21}});
}
void Prism(P& p) {
    Area(p, {{5, 8}, {12, 11}, {19, 8}, {19, 18}, {12, 21}, {5, 18}});
    Line(p, {{5, 8}, {12, 3}, {19, 8}});
    Line(p, {{12, 11}, {12, 21}});
}
void Patch(P& p) {
    Curve(p, {3, 17}, {8, 3}, {15, 21}, {21, 7});
    Curve(p, {3, 21}, {8, 7}, {15, 25}, {21, 11});
    Line(p, {{3, 17}, {3, 21}});
    Line(p, {{21, 7}, {21, 11}});
}
void Cylinder(P& p) {
    p.drawEllipse(QRectF(5, 3, 14, 5));
    Line(p, {{5, 5.5}, {5, 18.5}});
    Line(p, {{19, 5.5}, {19, 18.5}});
    p.drawArc(QRectF(5, 16, 14, 5), 180 * 16, 180 * 16);
}
void Cone(P& p) {
    Line(p, {{5, 18.5}, {12, 3}, {19, 18.5}});
    p.drawEllipse(QRectF(5, 16, 14, 5));
}
void SoftBlock(P& p) {
    Line(p, {{9, 4}, {20, 4}, {20, 20}, {4, 20}, {4, 9}});
    Curve(p, {4, 9}, {4, 6}, {6, 4}, {9, 4});
}
void QuarterBlock(P& p) {
    Line(p, {{20, 4}, {20, 20}, {4, 20}});
    Curve(p, {4, 20}, {4, 11}, {11, 4}, {20, 4});
}
void Elastic(P& p) {
    for (const int turn : {0, 90, 180, 270}) {
        p.save();
        p.translate(12, 12);
        p.rotate(turn);
        Curve(p, {-8, -8}, {-3, -4}, {3, -4}, {8, -8});
        p.restore();
    }
}
void Extrudable(P& p) {
    Area(p, {{4, 8}, {11, 4}, {20, 7}, {17, 20}, {7, 19}});
    for (const QPointF corner : {QPointF(4, 8), QPointF(11, 4), QPointF(20, 7), QPointF(17, 20), QPointF(7, 19)})
        p.fillRect(QRectF(corner.x() - 1.5, corner.y() - 1.5, 3, 3), p.pen().color());
}
void Portal(P& p) {
    Line(p, {{5, 21}, {5, 10}});
    p.drawArc(QRectF(5, 3, 14, 14), 0, 180 * 16);
    Line(p, {{19, 10}, {19, 21}, {5, 21}});
    Line(p, {{9, 13}, {15, 13}});
    ArrowHead(p, {16, 13}, {1, 0});
}
void Custom(P& p) {
    Area(p, {{3, 5}, {11, 5}, {11, 13}, {3, 13}});
    Area(p, {{13, 11}, {21, 11}, {21, 20}, {13, 20}});
    Line(p, {{16, 3}, {16, 9}});
    Line(p, {{13, 6}, {19, 6}});
}
void Occluder(P& p) {
    Area(p, {{8, 3}, {20, 3}, {20, 21}, {8, 21}});
    for (const int y : {8, 13, 18})
        Line(p, {{8, y + 0.0}, {13, y - 5.0}});
    Line(p, {{2, 12}, {6, 12}});
}
void NewFile(P& p) {
    Area(p, {{5, 3}, {14, 3}, {19, 8}, {19, 21}, {5, 21}});
    Line(p, {{14, 3}, {14, 8}, {19, 8}});
}
void OpenFile(P& p) {
    Line(p, {{3, 19}, {3, 5}, {9, 5}, {11, 8}, {19, 8}, {19, 11}});
    Area(p, {{3, 19}, {7, 11}, {22, 11}, {18, 19}});
}
void SaveFile(P& p) {
    Area(p, {{4, 4}, {17, 4}, {20, 7}, {20, 20}, {4, 20}});
    Line(p, {{8, 4}, {8, 9}, {15, 9}, {15, 4}});
    Line(p, {{7, 20}, {7, 13}, {17, 13}, {17, 20}});
}
void Undo(P& p) {
    p.drawArc(QRectF(5, 7, 14, 12), -60 * 16, 210 * 16);
    ArrowHead(p, {5, 13}, {-0.3, 0.95});
}
void Redo(P& p) {
    p.drawArc(QRectF(5, 7, 14, 12), 30 * 16, 210 * 16);
    ArrowHead(p, {19, 13}, {0.3, 0.95});
}
void RotateMode(P& p) {
    p.drawArc(QRectF(4, 4, 16, 16), 20 * 16, 290 * 16);
    ArrowHead(p, {19.5, 9}, {0.3, -0.95});
    p.drawEllipse(QRectF(11, 11, 2, 2));
}
void Shear(P& p) {
    Area(p, {{8, 6}, {21, 6}, {16, 18}, {3, 18}});
    Line(p, {{8, 3}, {15, 3}});
    ArrowHead(p, {16, 3}, {1, 0});
}
void Vertex(P& p) {
    Line(p, {{5, 19}, {8, 6}, {19, 5}, {18, 18}, {5, 19}});
    for (const QPointF corner : {QPointF(5, 19), QPointF(8, 6), QPointF(18, 18)})
        p.drawRect(QRectF(corner.x() - 1.5, corner.y() - 1.5, 3, 3));
    p.fillRect(QRectF(16.5, 2.5, 5, 5), p.pen().color());
}
void PickTexture(P& p) {
    Line(p, {{3, 21}, {4, 17}, {13, 8}, {16, 11}, {7, 20}, {3, 21}});
    Area(p, {{13, 4}, {20, 11}, {22, 8}, {16, 2}});
}
void TextureLock(P& p) {
    Area(p, {{5, 11}, {19, 11}, {19, 21}, {5, 21}});
    p.drawArc(QRectF(8, 3, 8, 14), 0, 180 * 16);
}
void SelectionLock(P& p) {
    p.drawRect(QRectF(3, 3, 12, 12));
    Area(p, {{11, 15}, {21, 15}, {21, 22}, {11, 22}});
    p.drawArc(QRectF(13, 10, 6, 10), 0, 180 * 16);
}
void Decal(P& p) {
    Rectangle(p);
    p.drawEllipse(QRectF(9, 9, 6, 6));
}
void Multiple(P& p) {
    Area(p, {{3, 3}, {13, 3}, {13, 13}, {3, 13}});
    Area(p, {{9, 9}, {19, 9}, {19, 19}, {9, 19}});
    Line(p, {{21, 17}, {21, 23}});
    Line(p, {{18, 20}, {24, 20}});
}
void Ungrouped(P& p) {
    p.drawRect(QRectF(3, 3, 18, 18));
    Area(p, {{6, 6}, {11, 6}, {11, 11}, {6, 11}});
    Area(p, {{13, 13}, {18, 13}, {18, 18}, {13, 18}});
}
void Clip(P& p) {
    Area(p, {{7, 7}, {17, 7}, {17, 17}, {7, 17}});
    Line(p, {{7, 2}, {7, 22}});
    Line(p, {{17, 2}, {17, 22}});
    Line(p, {{2, 7}, {22, 7}});
    Line(p, {{2, 17}, {22, 17}});
}
void Cordon(P& p) {
    p.save();
    QPen dashes = p.pen();
    dashes.setDashPattern({2, 1.5});
    p.setPen(dashes);
    p.drawRect(QRectF(4, 4, 16, 16));
    p.restore();
}
void Bounds(P& p) {
    Cordon(p);
    Line(p, {{12, 12}, {22, 12}});
    ArrowHead(p, {23, 12}, {1, 0});
}
void FullView(P& p) {
    p.drawRect(QRectF(3, 4, 18, 16));
    Line(p, {{12, 4}, {12, 20}});
    Line(p, {{3, 12}, {21, 12}});
    Area(p, {{3, 4}, {12, 4}, {12, 12}, {3, 12}});
}
void Library(P& p) {
    for (const int x : {3, 13})
        for (const int y : {3, 13})
            p.drawRect(QRectF(x, y, 8, 8));
    p.fillRect(QRectF(3, 3, 8, 8), p.brush());
}
void Compile(P& p) {
    p.drawEllipse(QRectF(7, 7, 10, 10));
    for (int tooth = 0; tooth < 8; ++tooth) {
        p.save();
        p.translate(12, 12);
        p.rotate(45 * tooth);
        Line(p, {{0, -6}, {0, -9}});
        p.restore();
    }
}
void RunGame(P& p) { Area(p, {{6, 3}, {20, 12}, {6, 21}}); }
void Segments(P& p) {
    p.drawEllipse(QRectF(3, 3, 18, 18));
    for (int k = 0; k < 3; ++k) {
        p.save();
        p.translate(12, 12);
        p.rotate(60 * k);
        Line(p, {{-9, 0}, {9, 0}});
        p.restore();
    }
}
void Angle(P& p) {
    Line(p, {{20, 20}, {3, 20}, {15, 4}});
    p.drawArc(QRectF(-7, 10, 20, 20), 0, 53 * 16);
}
void Color(P& p) {
    p.drawEllipse(QRectF(3, 4, 18, 16));
    const QColor dots[] = {{220, 60, 50}, {240, 180, 40}, {60, 160, 80}, {60, 110, 210}};
    for (int k = 0; k < 4; ++k)
        p.fillRect(QRectF(6 + 3.4 * k, k % 2 == 0 ? 10 : 7, 3, 3), dots[k]);
}

struct Picture {
    std::string_view command;
    void (*draw)(QPainter&);
};
constexpr Picture PICTURES[] = {
    {"OnBrushRectangle", Rectangle},
    {"OnBrushBox", Cube},
    {"OnBrushPyramid", Pyramid},
    {"OnBrushPrism", Prism},
    {"OnBrushPatch", Patch},
    {"OnBrushCylinder", Cylinder},
    {"OnBrushCone", Cone},
    {"OnBrushSftblock", SoftBlock},
    {"OnBrushQblock", QuarterBlock},
    {"OnBrushElasticbox", Elastic},
    {"OnBrushExtrudable", Extrudable},
    {"OnBrushPortal", Portal},
    {"OnBrushCustom", Custom},
    {"OnBrushOccluder", Occluder},
    {"OnBrushColor", Color},
    {"OnBrushSegments", Segments},
    {"OnRotationAngle", Angle},
    {"OnFileNew", NewFile},
    {"OnFileOpen", OpenFile},
    {"OnFileSave", SaveFile},
    {"OnEditUndo", Undo},
    {"OnEditRedo", Redo},
    {"OnRotate", RotateMode},
    {"OnSheering", Shear},
    {"OnVertexMode", Vertex},
    {"OnPickTexture", PickTexture},
    {"OnTexturelock", TextureLock},
    {"OnSelectionlock", SelectionLock},
    {"OnDecals", Decal},
    {"OnMultiselect", Multiple},
    {"OnIgnoregroups", Ungrouped},
    {"OnClipbox", Clip},
    {"OnCordonstate", Cordon},
    {"OnCordonbounds", Bounds},
    {"OnAutocenter", FullView},
    {"OnConsole", Library},
    {"OnCompile", Compile},
    {"OnGamemode", RunGame},
};

const Picture* FindPicture(std::string_view command) {
    const auto found = std::find_if(std::begin(PICTURES), std::end(PICTURES),
                                    [&](const Picture& picture) { return picture.command == command; });
    return found == std::end(PICTURES) ? nullptr : found;
}

void DrawOn(QPainter& painter, const QRect& rect, const Picture& picture, const QPen& pen, const QBrush& brush) {
    painter.save();
    painter.setRenderHint(QPainter::Antialiasing);
    painter.translate(rect.topLeft());
    painter.scale(rect.width() / FIELD, rect.height() / FIELD);
    painter.setPen(pen);
    painter.setBrush(brush);
    picture.draw(painter);
    painter.restore();
}

QPen RoundPen(const QColor& color, qreal width) { return {color, width, Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin}; }

class PictureEngine : public QIconEngine {
public:
    explicit PictureEngine(const Picture& shown) : picture(shown) {}

    void paint(QPainter* painter, const QRect& rect, QIcon::Mode mode, QIcon::State) override {
        const QPalette palette = QApplication::palette();
        const auto group = mode == QIcon::Disabled ? QPalette::Disabled : QPalette::Active;
        QColor tone = palette.color(group, QPalette::Highlight);
        tone.setAlphaF(mode == QIcon::Disabled ? 0.1f : 0.45f);
        DrawOn(*painter, rect, picture, RoundPen(palette.color(group, QPalette::ButtonText), 1.5), tone);
    }
    QPixmap pixmap(const QSize& size, QIcon::Mode mode, QIcon::State state) override {
        QPixmap drawn(size);
        drawn.fill(Qt::transparent);
        QPainter painter(&drawn);
        paint(&painter, QRect(QPoint(), size), mode, state);
        return drawn;
    }
    QIconEngine* clone() const override { return new PictureEngine(picture); }

private:
    const Picture& picture;
};

} // namespace

QIcon CommandIcon(std::string_view command) {
    const Picture* picture = FindPicture(command);
    return picture ? QIcon(new PictureEngine(*picture)) : QIcon();
}

QPixmap PointerPicture(std::string_view command, int side, qreal device_pixel_ratio) {
    const int pixels = qRound(side * device_pixel_ratio);
    QPixmap drawn(pixels, pixels);
    drawn.fill(Qt::transparent);
    drawn.setDevicePixelRatio(device_pixel_ratio);
    if (const Picture* picture = FindPicture(command)) {
        QPainter painter(&drawn);
        const QRect rect(0, 0, side, side);
        DrawOn(painter, rect, *picture, RoundPen(Qt::white, 4), Qt::NoBrush);
        DrawOn(painter, rect, *picture, RoundPen(Qt::black, 1.5), Qt::NoBrush);
    }
    return drawn;
}
