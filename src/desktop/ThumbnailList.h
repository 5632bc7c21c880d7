// Lists with pictures: a model of names whose pictures are made when a row is first painted, and the view on it.
#pragma once

#include <vector>

#include <QAbstractListModel>
#include <QCache>
#include <QListView>
#include <QPixmap>
#include <QStyledItemDelegate>

#include "desktop/ThumbnailPool.h"

struct ThumbnailRow {
    QString name, caption;
    QString key;               // of the picture; rows may share one
    bool used = false;         // framed
    ThumbnailPool::Maker make; // in a thread of its own
    QString tool_tip;
};

class ThumbnailModel : public QAbstractListModel {
    Q_OBJECT
public:
    enum { CaptionRole = Qt::UserRole, UsedRole };

    explicit ThumbnailModel(QObject* parent = nullptr);
    void SetRows(std::vector<ThumbnailRow> new_rows);
    void SetRow(int row, ThumbnailRow changed);
    void ForgetPictures(); // all are made anew
    // The picture of a row, for a screen of this scale. A null one is on its way, or cannot be made.
    QPixmap Picture(int row, qreal scale);

    int rowCount(const QModelIndex& parent = QModelIndex()) const override;
    QVariant data(const QModelIndex& index, int role) const override;

private:
    void TakePicture(const QString& key, const Thumbnail& thumbnail, bool made);

    std::vector<ThumbnailRow> rows;
    ThumbnailPool pool;
    QCache<QString, QPixmap> pictures;
    QHash<QString, QString> sizes; // captions that the pictures told
};

class ThumbnailView : public QListView {
    Q_OBJECT
public:
    ThumbnailView(ThumbnailModel* model, QWidget* parent = nullptr);
    void SelectName(const QString& name); // clears the choice where it is not listed
    void SetPlain(bool plain);            // one name a line, without pictures

signals:
    void Picked(int row);  // by the middle button or Alt and a click
    void Entered(int row); // by a double click or Enter, whatever the style calls activating

protected:
    void keyPressEvent(QKeyEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;

private:
    ThumbnailModel* shown;
    QStyledItemDelegate *tiles, *lines;
};
