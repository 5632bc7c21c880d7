#include "desktop/FileChooserDialog.h"

#include <QDialogButtonBox>
#include <QHeaderView>
#include <QLineEdit>
#include <QPushButton>
#include <QSplitter>
#include <QStyle>
#include <QTreeWidget>
#include <QVBoxLayout>

namespace {

struct PlaceText {
    QStyle::StandardPixmap icon;
    const char* text;
};
// By MyFileDialog::Place.
constexpr PlaceText PLACES[] = {
    {QStyle::SP_FileLinkIcon, "disk and library"}, {QStyle::SP_FileIcon, "disk"}, {QStyle::SP_DriveFDIcon, "library"}};

} // namespace

FileChooserDialog::FileChooserDialog(MyFileDialog& chooser, QWidget* parent)
    : QDialog(parent), dialog(chooser), folders(new QTreeWidget), files(new QTreeWidget), filter(new QLineEdit) {
    setWindowTitle(tr("Choose a file"));
    folders->setHeaderHidden(true);
    folders->setToolTip(tr("Folders on the disk and in the packed libraries"));
    files->setHeaderLabels({tr("File"), tr("Stands on")});
    files->setRootIsDecorated(false);
    files->setUniformRowHeights(true);
    files->setToolTip(tr("Files of the folder; a double click takes one"));
    filter->setPlaceholderText(tr("Filter"));
    filter->setClearButtonEnabled(true);
    filter->setToolTip(tr("Shows the files whose name holds this text"));
    auto* buttons = new QDialogButtonBox(QDialogButtonBox::Ok | QDialogButtonBox::Cancel);
    ok = buttons->button(QDialogButtonBox::Ok);
    auto* splitter = new QSplitter;
    splitter->addWidget(folders);
    splitter->addWidget(files);
    splitter->setStretchFactor(1, 2);
    auto* column = new QVBoxLayout(this);
    column->addWidget(filter);
    column->addWidget(splitter);
    column->addWidget(buttons);
    resize(640, 420);
    connect(buttons, &QDialogButtonBox::accepted, this, &QDialog::accept);
    connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);
    connect(filter, &QLineEdit::textChanged, this, [this] { FillFiles(); });
    connect(files, &QTreeWidget::itemSelectionChanged, this, [this] { TakeFile(); });
    connect(files, &QTreeWidget::itemActivated, this, [this] {
        TakeFile();
        if (dialog.IsOKEnabled())
            accept();
    });
    FillFolders();
    connect(folders, &QTreeWidget::currentItemChanged, this, [this](QTreeWidgetItem* item) {
        if (item) {
            dialog.SelectFolder(item->data(0, Qt::UserRole).toInt());
            FillFiles();
        }
    });
    FillFiles();
    files->header()->resizeSection(0, 240);
}

void FileChooserDialog::FillFolders() {
    std::vector<QTreeWidgetItem*> items;
    const QIcon icon = style()->standardIcon(QStyle::SP_DirIcon);
    for (size_t i = 0; i < dialog.folders.size(); ++i) {
        const MyFileDialog::Folder& folder = dialog.folders[i];
        const QStringList text{QString::fromStdString(folder.name)};
        QTreeWidgetItem* item = folder.parent < 0
                                    ? new QTreeWidgetItem(folders, text)
                                    : new QTreeWidgetItem(items[static_cast<size_t>(folder.parent)], text);
        item->setIcon(0, icon);
        item->setData(0, Qt::UserRole, static_cast<int>(i));
        items.push_back(item);
    }
    items.front()->setExpanded(true);
    QTreeWidgetItem* selected = items[static_cast<size_t>(dialog.selected_folder)];
    for (QTreeWidgetItem* above = selected->parent(); above; above = above->parent())
        above->setExpanded(true);
    folders->setCurrentItem(selected);
    folders->scrollToItem(selected);
}

void FileChooserDialog::FillFiles() {
    files->clear();
    for (const MyFileDialog::File& file : dialog.files) {
        const QString name = QString::fromStdString(file.name);
        if (!name.contains(filter->text(), Qt::CaseInsensitive))
            continue;
        const PlaceText& place = PLACES[static_cast<size_t>(file.place)];
        auto* item = new QTreeWidgetItem(files, {name, tr(place.text)});
        item->setIcon(0, style()->standardIcon(place.icon));
    }
    TakeFile();
}

void FileChooserDialog::TakeFile() {
    const QList<QTreeWidgetItem*> chosen = files->selectedItems();
    dialog.SelectFile(chosen.isEmpty() ? std::string() : chosen.front()->text(0).toStdString());
    ok->setEnabled(dialog.IsOKEnabled());
}

std::optional<std::string> RunFileChooser(QWidget* parent, const std::string& root, const std::string& default_dir,
                                          const std::string& pattern) {
    MyFileDialog chooser(root, default_dir, pattern);
    FileChooserDialog dialog(chooser, parent);
    if (dialog.exec() != QDialog::Accepted)
        return std::nullopt;
    return chooser.GetSelectedFile();
}
