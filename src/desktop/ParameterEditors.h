// Editors for the parameters of an entity, one kind for each type of parameter. Each can show that several entities
// differ; such a value stays until the user gives one.
#pragma once

#include <functional>
#include <string>
#include <vector>

#include <QDoubleSpinBox>

#include "scene/Entity.h"

class CColorButton;
class QCheckBox;
class QComboBox;
class QLineEdit;

// A number, written as shortly as it can be. With several values it shows a word instead, until one is given.
class NumberField : public QDoubleSpinBox {
    Q_OBJECT
public:
    explicit NumberField(int decimals, QWidget* parent = nullptr);
    void ShowValue(double number, bool mixed); // without a signal
    double Exact() const;                      // what was shown, with all its digits, or what the user gave since

signals:
    void Given(double number); // by the user

protected:
    QString textFromValue(double number) const override;
    double valueFromText(const QString& text) const override;
    QValidator::State validate(QString& text, int& at) const override;
    void stepBy(int steps) override;
    void wheelEvent(QWheelEvent* event) override; // only with the focus: else the list under the pointer scrolls

private:
    void Give();

    bool shown_mixed = false, is_mixed = false; // as it was shown; until the user types
    double exact = 0, last_given = 0;           // the second as the field rounds it
};

// What the editors ask of their page. parameter: its index.
struct ParameterActions {
    std::function<void(int parameter)> choose;                                   // it has the focus
    std::function<void(int parameter, const std::string& text, int part)> write; // or WHOLE_VALUE
    std::function<void(int parameter)> browse;                                   // for a file
    std::function<void(int parameter)> edit_script;                              // in the script window
};

// The editor of one parameter: a widget with one or more fields in a row.
class ParameterField : public QWidget {
public:
    ParameterField(const EntityParameter& parameter, int parameter_index, const std::vector<std::string>& choices,
                   const ParameterActions& page_actions);
    // mixed_parts: bits of the parts that differ. Of those the first value is shown, or a word.
    void ShowValue(const EntityParameter& shown, unsigned mixed_parts);

    const EntityParameterType type;

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    void MakeNumbers(int count, int decimals);
    void MakeColor();
    void MakeText(const EntityParameter& parameter);
    void AddButton(const QString& tip, const std::function<void(int)>& action);
    void Add(QWidget* field);
    void WriteNumbers(int part);

    const int index;
    const ParameterActions& actions;
    QCheckBox* box = nullptr;
    QComboBox* combo = nullptr;
    QLineEdit* line = nullptr;
    CColorButton* well = nullptr;
    std::vector<NumberField*> numbers; // of a colour: its alpha
    bool several_lines = false;        // of a script: too much for a line edit
};

// The parts of which a selected entity that has this parameter has another value than the first one that has it.
unsigned MixedParts(const class World& world, const EntityParameter& parameter);
