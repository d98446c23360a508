// SPDX-License-Identifier: MIT
#include "WepnEditor_Main.h"

#include "Latin1.h"
#include "Messages.h"
#include "NamedValues.h"
#include "NumberText.h"

#include <QComboBox>
#include <QLineEdit>
#include <QListWidget>

#include <algorithm>
#include <variant>

namespace {

// The controls that show one value each, in the order they are set and read. The member a control
// edits is the named value under its label: the same list the command line's table and edits use,
// so "Firing Range" means one member everywhere.
constexpr std::string_view kBoundControls[] = {
    "Value_0",  "Value_1",  "cboWeaponEffects", "Value_3",  "Value_4",  "Value_5",  "Value_6",  "Value_7",
    "Value_8",  "Value_9",  "Value_10",         "Value_12", "Value_13", "Value_14", "Value_15", "Value_16",
    "cboActivation",       "cboFireAxis",       "cboVelocityPredict", "cboCheckLOF", "cboShootSecondaries",
    "cboShootSurroundings", "cboTrackDistantTargets", "txtFiringArc", "txtLeftRot", "txtRightRot", "txtDownRot",
    "txtUpRot", "txtBarrelRecoil", "txtSlaveFireDelay", "txtFieldPenetration", "txtDefaultPenetration",
};

struct Binding
{
    std::string_view control;
    NamedValues::Member member;
};

QString numberText(double value)
{
    return Latin1::toQString(NumberText::realText(value));
}

QString numberText(long long value)
{
    return Latin1::toQString(NumberText::intText(value));
}

// The text a control shows for a value; drop-downs show an item instead (below).
void showValue(QWidget *control, const std::string &value)
{
    if (auto *edit = qobject_cast<QLineEdit *>(control))
        edit->setText(Latin1::toQString(value));
    else if (auto *combo = qobject_cast<QComboBox *>(control); combo->isEditable())
        combo->setEditText(Latin1::toQString(value));
    else
        // An activation that is none of the items exactly shows no choice.
        combo->setCurrentIndex(combo->findText(Latin1::toQString(value), Qt::MatchExactly | Qt::MatchCaseSensitive));
}

template<typename Number>
void showValue(QWidget *control, Number value)
{
    if (auto *edit = qobject_cast<QLineEdit *>(control)) {
        if constexpr (std::is_floating_point_v<Number>)
            edit->setText(numberText(value));
        else
            edit->setText(numberText(static_cast<long long>(value)));
        return;
    }
    // A drop-down of positions; a value beyond its items shows no choice.
    auto *combo = qobject_cast<QComboBox *>(control);
    combo->setCurrentIndex(value >= 0 && value < combo->count() ? static_cast<int>(value) : -1);
}

template<typename Number>
std::optional<Number> readNumber(std::string_view text)
{
    if constexpr (std::is_same_v<Number, double>)
        return NumberText::readReal(text);
    else if constexpr (std::is_same_v<Number, std::int16_t>)
        return NumberText::readInt16(text);
    else
        return NumberText::readInt32(text);
}

template<typename Number>
QString expectedNumber()
{
    if constexpr (std::is_same_v<Number, double>)
        return QStringLiteral("a number");
    else
        return QStringLiteral("a number from ") + numberText(static_cast<long long>(std::numeric_limits<Number>::min()))
               + QStringLiteral(" to ") + numberText(static_cast<long long>(std::numeric_limits<Number>::max()));
}

} // namespace

// Every window has the same labels: the first one made gives the members.
static const std::vector<Binding> &bindings(const WepnEditor_Main &window)
{
    static const std::vector<Binding> kBindings = [&window] {
        std::vector<Binding> bound;
        for (const std::string_view control : kBoundControls) {
            const std::string label = Latin1::toBytes(window.fieldLabel(control));
            const auto &fields = NamedValues::fields();
            const auto field = std::find_if(fields.begin(), fields.end(), [&](const NamedValues::Field &f) {
                return f.name == label;
            });
            if (field != fields.end()) // every one does; the window tests show each control's member
                bound.push_back({control, field->member});
        }
        return bound;
    }();
    return kBindings;
}

std::optional<QString> WepnEditor_Main::ShowDocument()
{
    for (const Binding &binding : bindings(*this)) {
        QWidget *target = control(binding.control);
        std::visit([&](auto member) { showValue(target, fieldOf(document, member)); }, binding.member);
    }

    // The families still marked "N" get the default penetration, which txtDefaultPenetration now
    // shows, or an accuracy of 1; then both tables are built from the entries.
    const std::optional<std::string> problem = document.fillFamilyTables();
    refreshList(lstArmorFamilies, document.lstArmorFamilies);
    refreshList(lstAccuracy, document.lstAccuracy);
    if (problem)
        return Latin1::toQString(*problem);
    return std::nullopt;
}

std::optional<QString> WepnEditor_Main::CollectDocument()
{
    EditorDocument collected = document;
    for (const Binding &binding : bindings(*this)) {
        QWidget *source = control(binding.control);
        auto *combo = qobject_cast<QComboBox *>(source);
        if (combo && !combo->isEditable()) {
            // No choice shown: the value the drop-down could not show stays as it was.
            if (combo->currentIndex() < 0)
                continue;
            if (auto *text = std::get_if<std::string KorvathWeapon::*>(&binding.member))
                fieldOf(collected, *text) = Latin1::toBytes(combo->currentText());
            else
                fieldOf(collected, std::get<std::int16_t KorvathWeapon::*>(binding.member))
                    = static_cast<std::int16_t>(combo->currentIndex());
            continue;
        }

        const QString shown = combo ? combo->currentText() : qobject_cast<QLineEdit *>(source)->text();
        std::optional<QString> refusal;
        std::visit(
            [&](auto member) {
                using Value = std::remove_reference_t<decltype(fieldOf(collected, member))>;
                if constexpr (std::is_same_v<Value, std::string>) {
                    if (!Latin1::fits(shown))
                        refusal = Messages::fieldNotTaken(fieldLabel(binding.control), shown,
                                                          QStringLiteral("only characters a script can hold"));
                    else
                        fieldOf(collected, member) = Latin1::toBytes(shown);
                } else if (const std::optional<Value> number = readNumber<Value>(Latin1::toBytes(shown));
                           number && Latin1::fits(shown)) {
                    fieldOf(collected, member) = *number;
                } else {
                    refusal = Messages::fieldNotTaken(fieldLabel(binding.control), shown, expectedNumber<Value>());
                }
            },
            binding.member);
        if (refusal)
            return refusal;
    }
    document = std::move(collected);
    return std::nullopt;
}
