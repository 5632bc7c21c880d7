#include "desktop/ThumbnailList.h"

#include <QKeyEvent>
#include <QMouseEvent>
#include <QPainter>
#include <QtMath>
#include <algorithm>

namespace {

constexpr int MOST_PICTURES = 2048; // kept, of 16 KiB each at scale 1
constexpr int MOST_SCALE = 4;
constexpr int MARGIN = 6;
constexpr int TILE_WIDTH = THUMBNAIL_SIDE + 4 * MARGIN;

// A picture with the name below it and a caption in the last line.
class TileDelegate : public QStyledItemDelegate {
public:
    TileDelegate(ThumbnailModel* list, QObject* parent) : QStyledItemDelegate(parent), model(list) {}

    QSize sizeHint(const QStyleOptionViewItem& option, const QModelIndex&) const override {
        return {TILE_WIDTH, THUMBNAIL_SIDE + 2 * option.fontMetrics.height() + 3 * MARGIN};
    }

    void paint(QPainter* painter, const QStyleOptionViewItem& option, const QModelIndex& index) const override {
        painter->save();
        const bool selected = option.state.testFlag(QStyle::State_Selected);
        if (selected)
            painter->fillRect(option.rect, option.palette.highlight());
        const QRect field(option.rect.left() + (option.rect.width() - THUMBNAIL_SIDE) / 2, option.rect.top() + MARGIN,
                          THUMBNAIL_SIDE, THUMBNAIL_SIDE);
        const QPixmap picture = model->Picture(index.row(), painter->device()->devicePixelRatioF());
        painter->setRenderHint(QPainter::SmoothPixmapTransform); // where the scale is no whole number
        if (picture.isNull())
            painter->fillRect(field, option.palette.mid());
        else
            painter->drawPixmap(field, picture);
        if (option.state.testFlag(QStyle::State_HasFocus)) {
            painter->setPen(QPen(option.palette.color(QPalette::Highlight), 1, Qt::DotLine));
            painter->drawRect(option.rect.adjusted(0, 0, -1, -1));
        }
        const int line = option.fontMetrics.height();
        QRect text(option.rect.left() + 2, field.bottom() + MARGIN / 2, option.rect.width() - 4, line);
        painter->setPen(option.palette.color(selected ? QPalette::HighlightedText : QPalette::Text));
        const QString name = index.data(Qt::DisplayRole).toString();
        painter->drawText(text, Qt::AlignCenter, option.fontMetrics.elidedText(name, Qt::ElideMiddle, text.width()));
        text.translate(0, line);
        if (!selected)
            painter->setPen(option.palette.color(QPalette::PlaceholderText));
        painter->drawText(text, Qt::AlignCenter, index.data(ThumbnailModel::CaptionRole).toString());
        painter->restore();
    }

private:
    ThumbnailModel* model;
};

} // namespace

// --- Model

ThumbnailModel::ThumbnailModel(QObject* parent) : QAbstractListModel(parent), pictures(MOST_PICTURES) {
    connect(&pool, &ThumbnailPool::Ready, this, &ThumbnailModel::TakePicture);
}

void ThumbnailModel::SetRows(std::vector<ThumbnailRow> new_rows) {
    beginResetModel();
    rows = std::move(new_rows);
    pool.Forget();
    endResetModel();
}

void ThumbnailModel::SetRow(int row, ThumbnailRow changed) {
    rows[static_cast<size_t>(row)] = std::move(changed);
    emit dataChanged(index(row), index(row));
}

void ThumbnailModel::ForgetPictures() {
    pool.Forget();
    pictures.clear();
    sizes.clear();
    if (!rows.empty())
        emit dataChanged(index(0), index(rowCount() - 1));
}

int ThumbnailModel::rowCount(const QModelIndex& parent) const {
    return parent.isValid() ? 0 : static_cast<int>(rows.size());
}

QVariant ThumbnailModel::data(const QModelIndex& index, int role) const {
    if (!index.isValid() || index.row() >= rowCount())
        return {};
    const ThumbnailRow& row = rows[static_cast<size_t>(index.row())];
    switch (role) {
    case Qt::DisplayRole:
        return row.name;
    case Qt::ToolTipRole:
        return row.tool_tip;
    case CaptionRole:
        return row.caption.isEmpty() ? sizes.value(row.key) : row.caption;
    case UsedRole:
        return row.used;
    default:
        return {};
    }
}

QPixmap ThumbnailModel::Picture(int row, qreal scale) {
    const ThumbnailRow& r = rows[static_cast<size_t>(row)];
    const int whole = std::clamp(qCeil(scale), 1, MOST_SCALE);
    const QString key = QString::number(whole) + r.key;
    if (const QPixmap* picture = pictures.object(key))
        return *picture;
    pool.Request(key, [make = r.make, used = r.used, whole](Thumbnail& thumbnail) {
        thumbnail = Thumbnail(whole);
        const bool made = make(thumbnail);
        thumbnail.DrawFrame(used);
        return made;
    });
    return {};
}

void ThumbnailModel::TakePicture(const QString& key, const Thumbnail& thumbnail, bool made) {
    const QImage image(reinterpret_cast<const uchar*>(thumbnail.pixels.data()), thumbnail.Side(), thumbnail.Side(),
                       QImage::Format_RGB32);
    // A copy: the image only borrows the pixels. The empty field stands for what cannot be made.
    pictures.insert(key, new QPixmap(QPixmap::fromImage(image.copy())), thumbnail.scale * thumbnail.scale);
    const QString of_row = key.mid(1); // without the scale
    if (made && thumbnail.texture_size.cx > 0)
        sizes.insert(of_row, tr("%1 x %2").arg(thumbnail.texture_size.cx).arg(thumbnail.texture_size.cy));
    for (int row = 0; row < rowCount(); ++row)
        if (rows[static_cast<size_t>(row)].key == of_row)
            emit dataChanged(index(row), index(row));
}

// --- View

ThumbnailView::ThumbnailView(ThumbnailModel* model, QWidget* parent)
    : QListView(parent), shown(model), tiles(new TileDelegate(model, this)), lines(new QStyledItemDelegate(this)) {
    setModel(model);
    setUniformItemSizes(true);
    setResizeMode(QListView::Adjust);
    setMovement(QListView::Static);
    setEditTriggers(QAbstractItemView::NoEditTriggers);
    setVerticalScrollMode(QAbstractItemView::ScrollPerPixel);
    SetPlain(false);
    connect(this, &QListView::doubleClicked, this, [this](const QModelIndex& index) { emit Entered(index.row()); });
}

void ThumbnailView::SetPlain(bool plain) {
    setViewMode(plain ? QListView::ListMode : QListView::IconMode);
    setMovement(QListView::Static);
    setItemDelegate(plain ? lines : tiles);
    QStyleOptionViewItem option;
    option.fontMetrics = fontMetrics();
    setGridSize(plain ? QSize() : tiles->sizeHint(option, {}));
}

void ThumbnailView::SelectName(const QString& name) {
    for (int row = 0; row < shown->rowCount(); ++row)
        if (!name.isEmpty() &&
            shown->index(row).data(Qt::DisplayRole).toString().compare(name, Qt::CaseInsensitive) == 0) {
            setCurrentIndex(shown->index(row));
            scrollTo(shown->index(row));
            return;
        }
    setCurrentIndex({});
    clearSelection();
}

void ThumbnailView::keyPressEvent(QKeyEvent* event) {
    if ((event->key() == Qt::Key_Return || event->key() == Qt::Key_Enter) && currentIndex().isValid()) {
        emit Entered(currentIndex().row());
        event->accept();
        return;
    }
    QListView::keyPressEvent(event);
}

void ThumbnailView::mousePressEvent(QMouseEvent* event) {
    const bool picks = event->button() == Qt::MiddleButton ||
                       (event->button() == Qt::LeftButton && event->modifiers().testFlag(Qt::AltModifier));
    const QModelIndex at = indexAt(event->pos());
    if (picks && at.isValid()) {
        emit Picked(at.row());
        event->accept();
        return;
    }
    QListView::mousePressEvent(event);
}
