// SPDX-License-Identifier: MIT
#include "WepnEditor_Main.h"

#include "Latin1.h"
#include "Messages.h"
#include "NumberText.h"

#include <QComboBox>
#include <QLineEdit>
#include <QListWidget>

#include <variant>

namespace {

// A field of the record or of the document, and the control that shows it.
using Member = std::variant<std::string KorvathWeapon::*, double KorvathWeapon::*, std::int16_t KorvathWeapon::*,
                            std::int32_t KorvathWeapon::*, double EditorDocument::*, std::int32_t EditorDocument::*>;

struct Binding
{
    std::string_view control;
    Member member;
};

// In the order the controls are set and read.
const Binding kBindings[] = {
    {"Value_0", &KorvathWeapon::sWeaponType},
    {"Value_1", &KorvathWeapon::sWeaponFireType},
    {"cboWeaponEffects", &KorvathWeapon::sWeaponFireName},
    {"Value_3", &KorvathWeapon::fWeaponFireSpeed},
    {"Value_4", &KorvathWeapon::fWeaponFireRange},
    {"Value_5", &KorvathWeapon::fWeaponFireRadius},
    {"Value_6", &KorvathWeapon::fWeaponFireLifetime},
    {"Value_7", &KorvathWeapon::fWeaponFireMisc1},
    {"Value_8", &KorvathWeapon::iMaxEffectsSpawned},
    {"Value_9", &KorvathWeapon::fFireTime},
    {"Value_10", &KorvathWeapon::fBurstFireTime},
    {"Value_12", &KorvathWeapon::fBurstWaitTime},
    {"Value_13", &KorvathWeapon::fMaxAzimuthSpeed},
    {"Value_14", &KorvathWeapon::fMaxDeclinationSpeed},
    {"Value_15", &KorvathWeapon::fSpeedMultiplierWhenPointingAtTarget},
    {"Value_16", &KorvathWeapon::iInstantHitThreshold},
    {"cboActivation", &KorvathWeapon::sActivation},
    {"cboFireAxis", &KorvathWeapon::iWeaponFireAxis},
    {"cboVelocityPredict", &KorvathWeapon::iUseVelocityPred},
    {"cboCheckLOF", &KorvathWeapon::iCheckLineOfFire},
    {"cboShootSecondaries", &KorvathWeapon::iShootAtSecondaries},
    {"cboShootSurroundings", &KorvathWeapon::iShootAtSurroundings},
    {"cboTrackDistantTargets", &KorvathWeapon::iTrackTargetsOutsideRange},
    {"txtFiringArc", &EditorDocument::fFiringArc},
    {"txtLeftRot", &EditorDocument::fLeftRotation},
    {"txtRightRot", &EditorDocument::fRightRotation},
    {"txtDownRot", &EditorDocument::fDownRotation},
    {"txtUpRot", &EditorDocument::fUpRotation},
    {"txtBarrelRecoil", &EditorDocument::fBarrelRecoil},
    {"txtSlaveFireDelay", &EditorDocument::fSlaveFireDelay},
    {"txtFieldPenetration", &EditorDocument::iFieldPenetration},
    {"txtDefaultPenetration", &EditorDocument::fDefaultPenetration},
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

std::optional<QString> WepnEditor_Main::ShowDocument()
{
    for (const Binding &binding : kBindings) {
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
    for (const Binding &binding : kBindings) {
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
