#include "desktop/DuplicateMaterialDialog.h"

#include <QComboBox>
#include <QDialogButtonBox>
#include <QGridLayout>
#include <QLabel>
#include <QLineEdit>

#include "definitions/MaterialScript.h"
#include "pages/TextureDlg.h"

namespace {

QComboBox* MakeChoice(const std::vector<std::string>& choices, const std::string& chosen) {
    auto* combo = new QComboBox;
    combo->setEditable(true);
    for (const std::string& choice : choices)
        combo->addItem(QString::fromStdString(choice));
    combo->setCurrentText(QString::fromStdString(chosen));
    return combo;
}

QLineEdit* MakeName(const std::string& text) {
    auto* line = new QLineEdit(QString::fromStdString(text));
    line->setMaxLength(static_cast<int>(MATERIAL_NAME_FIELD) - 1);
    return line;
}

} // namespace

DuplicateMaterialDialog::DuplicateMaterialDialog(TextureDlg& texture_page, DupMatName& asked, QWidget* parent)
    : QDialog(parent), page(texture_page), question(asked),
      directory(MakeChoice(asked.material_directories, asked.new_directory)), name(MakeName(asked.new_name)) {
    setWindowTitle(tr("Duplicate material"));
    auto* grid = new QGridLayout(this);
    grid->addWidget(new QLabel(tr("Directory and name:")), 0, 0);
    grid->addWidget(directory, 0, 1);
    grid->addWidget(name, 0, 2);
    directory->setToolTip(tr("The directory of the copy"));
    name->setToolTip(tr("The name of the copy"));
    for (size_t i = 0; i < question.maps.size(); ++i) {
        const DupMatName::Map& map = question.maps[i];
        const int row = static_cast<int>(i) + 1;
        texture_class[i] = MakeChoice(question.texture_classes, map.texture_class);
        texture_name[i] = MakeName(map.texture_name);
        grid->addWidget(new QLabel(QString(map.key) + ":"), row, 0);
        grid->addWidget(texture_class[i], row, 1);
        grid->addWidget(texture_name[i], row, 2);
        for (QWidget* field : {static_cast<QWidget*>(texture_class[i]), static_cast<QWidget*>(texture_name[i])}) {
            field->setEnabled(question.fields_enabled);
            field->setToolTip(question.fields_enabled ? tr("The image is copied where this differs from the source")
                                                      : tr("A procedural shader keeps its images"));
        }
    }
    auto* buttons = new QDialogButtonBox(QDialogButtonBox::Ok | QDialogButtonBox::Cancel);
    connect(buttons, &QDialogButtonBox::accepted, this, [this] { accept(); });
    connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);
    grid->addWidget(buttons, static_cast<int>(question.maps.size()) + 1, 0, 1, 3);
    grid->setColumnStretch(2, 1);
    name->setFocus();
    name->selectAll();
}

void DuplicateMaterialDialog::accept() {
    question.new_directory = directory->currentText().toStdString();
    question.new_name = name->text().toStdString();
    for (size_t i = 0; i < question.maps.size(); ++i) {
        question.maps[i].texture_class = texture_class[i]->currentText().toStdString();
        question.maps[i].texture_name = texture_name[i]->text().toStdString();
    }
    if (page.Duplicate(question))
        QDialog::accept();
}

bool RunDuplicateMaterial(QWidget* parent, TextureDlg& page) {
    if (page.material_name.empty())
        return false;
    DupMatName question(page.material_class, page.material_name);
    return DuplicateMaterialDialog(page, question, parent).exec() == QDialog::Accepted;
}
