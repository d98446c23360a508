// SPDX-License-Identifier: MIT
// The impact results editor, the penetration and accuracy editors, the digit filter and Burst Shots.
#include "WepnEditor_Main.h"

#include "Latin1.h"
#include "Messages.h"
#include "NumberText.h"

#include <QCheckBox>
#include <QComboBox>
#include <QGroupBox>
#include <QLabel>
#include <QLineEdit>
#include <QListWidget>
#include <QPushButton>

#include <QTimer>

#include <algorithm>
#include <cmath>
#include <tuple>

namespace {

constexpr int kSpawnWeaponFire = 3;

// A field's text as a real; characters beyond Latin-1 can never be part of a number.
std::optional<double> readField(const QString &text)
{
    if (!Latin1::fits(text))
        return std::nullopt;
    return NumberText::readReal(Latin1::toBytes(text));
}

QString numberText(double value)
{
    return Latin1::toQString(NumberText::realText(value));
}

// Piece n of an entry, or the empty text when the entry has fewer pieces.
QString entryPiece(const std::vector<std::string> &entries, std::size_t i, std::size_t n)
{
    if (i >= entries.size())
        return {};
    const std::vector<std::string> pieces = EntryPieces(entries[i]);
    return n < pieces.size() ? Latin1::toQString(pieces[n]) : QString();
}

// label names the field as the user sees it; the family frames' fields are both "Value".
void notANumber(WepnEditor_Main &w, const QString &label, const QString &text)
{
    w.dialogs().message(Messages::fieldNotTaken(label, text, QStringLiteral("a number")), QString());
}

void digitFilter(int &KeyAscii)
{
    if (KeyAscii != 8 && (KeyAscii < '0' || KeyAscii > '9'))
        KeyAscii = 0;
}

// Read as the game reads it, a number field takes what the game reads in a number: digits, a
// point, a sign and an exponent. Control keys (copy, paste, Enter) work as in any field.
void gameNumberFilter(int &KeyAscii)
{
    static constexpr std::string_view kNumberCharacters = "0123456789.+-eE";
    if (KeyAscii >= 32 && kNumberCharacters.find(static_cast<char>(KeyAscii)) == std::string_view::npos)
        KeyAscii = 0;
    if (KeyAscii > 126)
        KeyAscii = 0;
}

// The record Add and Apply make from the fields; nothing, after a message, when a field cannot be
// taken (a pasted text that is no number, or a spawned effect a script cannot hold).
std::optional<WeaponResult> resultFromFields(WepnEditor_Main &w)
{
    for (QLineEdit *field : {w.txtMinEffect, w.txtMaxEffect}) {
        if (field->text().isEmpty())
            field->setText(QStringLiteral("0"));
    }

    WeaponResult result;
    result.sCondition = Latin1::toBytes(w.cboCondition->currentText());
    result.sEffect = Latin1::toBytes(w.cboEffect->currentText());
    for (auto [field, name, value] : {std::tuple{w.txtMinEffect, "txtMinEffect", &result.fMinEffect},
                                      std::tuple{w.txtMaxEffect, "txtMaxEffect", &result.fMaxEffect}}) {
        const std::optional<double> number = readField(field->text());
        if (!number) {
            notANumber(w, w.fieldLabel(name), field->text());
            return std::nullopt;
        }
        *value = *number;
    }
    result.sTarget = "Target";
    if (result.sEffect == "SpawnWeaponFire") {
        const QString spawned = w.txtSpawnedWeaponEffect->text();
        if (!Latin1::fits(spawned)) {
            w.dialogs().message(Messages::fieldNotTaken(w.fieldLabel("txtSpawnedWeaponEffect"), spawned,
                                                        QStringLiteral("only characters a script can hold")),
                                QString());
            return std::nullopt;
        }
        result.sSpawnedWeaponEffect = Latin1::toBytes(spawned);
    }
    return result;
}

} // namespace

// --- Impact results ---------------------------------------------------------------------------

void WepnEditor_Main::cboEffect_Click()
{
    const bool spawns = cboEffect->currentIndex() == kSpawnWeaponFire;
    txtSpawnedWeaponEffect->setEnabled(spawns);
    txtMinEffect->setEnabled(!spawns);
    txtMaxEffect->setEnabled(!spawns);
    if (spawns) {
        txtMinEffect->setText(QStringLiteral("0"));
        txtMaxEffect->setText(QStringLiteral("0"));
    }
}

void WepnEditor_Main::lstWeaponResults_Click()
{
    const std::optional<std::size_t> selected = selectedEntry(lstWeaponResults);
    if (!selected || *selected >= document.WeaponResults.size() || *selected >= document.lstWeaponResults.size())
        return;
    const std::size_t i = *selected;
    const WeaponResult r = document.WeaponResults[i];

    txtMinEffect->setText(numberText(r.fMinEffect));
    txtMaxEffect->setText(numberText(r.fMaxEffect));
    txtSpawnedWeaponEffect->setText(QString());

    if (r.sCondition == "Hit")
        cboCondition->setCurrentIndex(0);
    else if (r.sCondition == "Miss")
        cboCondition->setCurrentIndex(1);
    else
        dialogs().message(Messages::unknownCondition(Latin1::toQString(r.sCondition)), QString());

    int effect = -1;
    if (r.sEffect == "DamageHealth")
        effect = 0;
    else if (r.sEffect == "Disable")
        effect = 1;
    else if (r.sEffect == "Push")
        effect = 2;
    else if (r.sEffect == "SpawnWeaponFire")
        effect = kSpawnWeaponFire;
    if (effect < 0) {
        dialogs().message(Messages::unknownEffect(Latin1::toQString(r.sEffect)), QString());
    } else {
        // The rule runs on every choice, also of the item that is chosen already.
        if (cboEffect->currentIndex() == effect)
            cboEffect_Click();
        else
            cboEffect->setCurrentIndex(effect);
        if (effect == kSpawnWeaponFire)
            txtSpawnedWeaponEffect->setText(Latin1::toQString(r.sSpawnedWeaponEffect));
    }

    cmdApply->setEnabled(true);
    lstWeaponResults->setToolTip(Latin1::toQString(document.lstWeaponResults[i]));
}

void WepnEditor_Main::cmdAdd_Click()
{
    const std::optional<WeaponResult> result = resultFromFields(*this);
    if (!result)
        return;
    document.addResult(*result);
    // Appended, not refreshed: the selection stays as it was.
    lstWeaponResults->addItem(Latin1::toQString(document.lstWeaponResults.back()));
}

void WepnEditor_Main::cmdApply_Click()
{
    const std::optional<std::size_t> i = selectedEntry(lstWeaponResults);
    if (!i)
        return;
    std::optional<WeaponResult> result = resultFromFields(*this);
    if (!result)
        return;
    // The window has no target field. A script read as the game does keeps each result's own
    // target ("Owner" for a thruster that pushes its own ship); the editor's reading gives "Target".
    if (m_gameScript && *i < document.WeaponResults.size())
        result->sTarget = document.WeaponResults[*i].sTarget;
    if (!document.applyResult(*i, *result))
        return;
    setListEntry(lstWeaponResults, document.lstWeaponResults, *i);
}

void WepnEditor_Main::cmdRemove_Click()
{
    const std::optional<std::size_t> i = selectedEntry(lstWeaponResults);
    if (lstWeaponResults->count() == 0 || !i)
        return;
    std::vector<WeaponResult> kept = document.WeaponResults;
    if (const std::optional<std::string> reason = document.removeResult(*i)) {
        dialogs().message(Latin1::toQString(*reason), QString());
        return;
    }
    // The table is built again from the entry texts, which hold no target: read as the game does,
    // the results that stay keep their own.
    if (m_gameScript && *i < kept.size()) {
        kept.erase(kept.begin() + static_cast<std::ptrdiff_t>(*i));
        for (std::size_t k = 0; k < kept.size() && k < document.WeaponResults.size(); ++k)
            document.WeaponResults[k].sTarget = kept[k].sTarget;
    }
    refreshList(lstWeaponResults, document.lstWeaponResults);
}

// --- Penetration and accuracy -------------------------------------------------------------------

void WepnEditor_Main::lstArmorFamilies_Click()
{
    if (const std::optional<std::size_t> i = selectedEntry(lstArmorFamilies))
        txtPenetration->setText(entryPiece(document.lstArmorFamilies, *i, 1));
}

void WepnEditor_Main::lstAccuracy_Click()
{
    const std::optional<std::size_t> i = selectedEntry(lstAccuracy);
    if (!i)
        return;
    txtAccuracy->setText(entryPiece(document.lstAccuracy, *i, 1));
    const std::optional<double> flag = readField(entryPiece(document.lstAccuracy, *i, 2));
    chkAlwaysDMG->setChecked(flag && *flag == 1);
}

void WepnEditor_Main::cmdPenApply_Click()
{
    const std::optional<std::size_t> i = selectedEntry(lstArmorFamilies);
    if (!i)
        return;
    const QString typed = txtPenetration->text();
    const EditorDocument::ApplyOutcome outcome = Latin1::fits(typed)
                                                     ? document.applyPenetration(*i, Latin1::toBytes(typed))
                                                     : EditorDocument::ApplyOutcome::NotANumber;
    if (outcome == EditorDocument::ApplyOutcome::NotANumber)
        notANumber(*this, fraPenetration->title() + QLatin1Char(' ') + fieldLabel("txtPenetration"), typed);
    else if (outcome == EditorDocument::ApplyOutcome::Applied)
        setListEntry(lstArmorFamilies, document.lstArmorFamilies, *i);
}

void WepnEditor_Main::cmdAccApply_Click()
{
    const std::optional<std::size_t> i = selectedEntry(lstAccuracy);
    if (!i)
        return;
    const QString typed = txtAccuracy->text();
    const EditorDocument::ApplyOutcome outcome =
        Latin1::fits(typed) ? document.applyAccuracy(*i, Latin1::toBytes(typed), chkAlwaysDMG->isChecked())
                            : EditorDocument::ApplyOutcome::NotANumber;
    switch (outcome) {
    case EditorDocument::ApplyOutcome::Applied:
        setListEntry(lstAccuracy, document.lstAccuracy, *i);
        break;
    case EditorDocument::ApplyOutcome::OutOfRange:
        dialogs().message(Messages::accuracyOutOfRange(), QString());
        txtAccuracy->setText(QStringLiteral("1"));
        break;
    case EditorDocument::ApplyOutcome::NotANumber:
        notANumber(*this, fraAccuracy->title() + QLatin1Char(' ') + fieldLabel("txtAccuracy"), typed);
        break;
    case EditorDocument::ApplyOutcome::NoEntry:
        break;
    }
}

// --- Input rules ----------------------------------------------------------------------------------

void WepnEditor_Main::Value_Change(int index)
{
    if (index != 9 && index != 10)
        return;
    const std::optional<double> delay = readField(Value[9]->text());
    if (!delay || *delay == 0)
        return;
    const std::optional<double> length = readField(Value[10]->text());
    if (!length)
        return;
    const double shots = *length / *delay;
    if (std::isfinite(shots))
        Value[11]->setText(numberText(shots));
}

void WepnEditor_Main::txtMinEffect_KeyPress(int &KeyAscii)
{
    readsAsTheGame() ? gameNumberFilter(KeyAscii) : digitFilter(KeyAscii);
}

void WepnEditor_Main::txtMaxEffect_KeyPress(int &KeyAscii)
{
    readsAsTheGame() ? gameNumberFilter(KeyAscii) : digitFilter(KeyAscii);
}

void WepnEditor_Main::txtPenetration_KeyPress(int &KeyAscii)
{
    readsAsTheGame() ? gameNumberFilter(KeyAscii) : digitFilter(KeyAscii);
}

// A dropped character is never dropped silently: the field says what it takes, without a box
// that would stop the typing.
void WepnEditor_Main::showNumberHint(QLineEdit *field)
{
    QString hint = readsAsTheGame() ? Messages::numbersOnly() : Messages::wholeNumbersOnly();
    if (!readsAsTheGame() && !m_toldWhereDecimals) {
        hint += QLatin1Char('\n') + Messages::wholeNumbersHint();
        m_toldWhereDecimals = true;
    }
    lblNumberHint->setText(hint);
    lblNumberHint->adjustSize();
    QWidget *form = lblNumberHint->parentWidget();
    QPoint place = field->mapTo(form, QPoint(0, field->height() + 2));
    place.setX(std::clamp(place.x(), 0, std::max(0, form->width() - lblNumberHint->width())));
    if (place.y() + lblNumberHint->height() > form->height())
        place.setY(field->mapTo(form, QPoint(0, 0)).y() - lblNumberHint->height() - 2);
    lblNumberHint->move(place);
    lblNumberHint->show();
    lblNumberHint->raise();
    m_hintTimer->start();
}
